#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>

#include <kernel/Counted.h>

namespace Kernel {

/// Owning reference to a consolidated value: an immutable object of which one instance stands for
/// every equal value. May be empty. Compares by address, which here means by value.
template<class T>
class Consolidated
{
public:
    Consolidated() noexcept = default;
    Consolidated(std::nullptr_t) noexcept {}

    /// Takes a canonical instance, as the class's factory functions return it.
    explicit Consolidated(Counted<const T> canonical) noexcept : m_object(std::move(canonical)) {}

    template<class U>
    requires std::is_convertible_v<const U*, const T*> Consolidated(const Consolidated<U>& other)
    noexcept : m_object(other.GetCounted()) {}

    const T* Get() const noexcept { return m_object.Get(); }
    const T* operator->() const noexcept { return m_object.Get(); }
    const T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return static_cast<bool>(m_object); }

    /// The same object as a plain counted reference.
    const Counted<const T>& GetCounted() const noexcept { return m_object; }
    operator Counted<const T>() const noexcept { return m_object; }

    friend bool operator==(const Consolidated& a, const Consolidated& b) noexcept
    {
        return a.Get() == b.Get();
    }
    friend bool operator==(const Consolidated& a, std::nullptr_t) noexcept { return !a.Get(); }

private:
    Counted<const T> m_object;
};

} // namespace Kernel

template<class T>
struct std::hash<Kernel::Consolidated<T>>
{
    std::size_t operator()(const Kernel::Consolidated<T>& value) const noexcept
    {
        return std::hash<const T*>()(value.Get());
    }
};
