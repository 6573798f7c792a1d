#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace Kernel {

/// Owning reference to a Countable; may be empty.
///
/// Converts to `Counted<const T>` and to references to bases, never back. The object behind it
/// lives at least as long as the reference.
template<class T>
class Counted
{
public:
    Counted() noexcept = default;
    Counted(std::nullptr_t) noexcept {}

    /// Takes part in the ownership of \p object, which may be null. A raw pointer from a `Create`
    /// function goes straight into a Counted.
    Counted(T* object) noexcept : m_object(object)
    {
        if (m_object)
            m_object->Retain();
    }

    Counted(const Counted& other) noexcept : Counted(other.m_object) {}
    Counted(Counted&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}

    template<class U>
    requires std::is_convertible_v<U*, T*> Counted(const Counted<U>& other)
    noexcept : Counted(static_cast<T*>(other.Get())) {}

    template<class U>
    requires std::is_convertible_v<U*, T*> Counted(Counted<U>&& other)
    noexcept : m_object(other.Detach()) {}

    ~Counted()
    {
        if (m_object)
            m_object->Release();
    }

    Counted& operator=(Counted other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }

    /// The object, or null.
    T* Get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

    /// Drops the object.
    void Reset() noexcept { Counted().Swap(*this); }
    void Swap(Counted& other) noexcept { std::swap(m_object, other.m_object); }

    /// Gives the reference away without releasing it: the caller now owes one Release.
    T* Detach() noexcept { return std::exchange(m_object, nullptr); }

    /// Takes over a reference that is already counted, such as one from TryRetain.
    static Counted Adopt(T* object) noexcept
    {
        Counted result;
        result.m_object = object;
        return result;
    }

private:
    T* m_object = nullptr;
};

template<class T>
Counted(T*) -> Counted<T>;

/// References are equal when they refer to the same object.
template<class T, class U>
bool operator==(const Counted<T>& a, const Counted<U>& b) noexcept
{
    return a.Get() == b.Get();
}

template<class T>
bool operator==(const Counted<T>& a, std::nullptr_t) noexcept
{
    return a.Get() == nullptr;
}

/// Makes an object and its first reference at once.
template<class T, class... Args>
Counted<T> MakeCounted(Args&&... args)
{
    return Counted<T>(new T(std::forward<Args>(args)...));
}

} // namespace Kernel

template<class T>
struct std::hash<Kernel::Counted<T>>
{
    std::size_t operator()(const Kernel::Counted<T>& counted) const noexcept
    {
        return std::hash<T*>()(counted.Get());
    }
};
