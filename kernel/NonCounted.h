#pragma once

#include <cassert>
#include <type_traits>

namespace Kernel {

/// A pointer that is never null and says nothing about lifetime: the caller keeps the object alive
/// for the duration of the call.
template<class T>
class NonCounted
{
public:
    /// \pre \p object is not null.
    NonCounted(T* object) noexcept : m_object(object) { assert(object); }
    NonCounted(T& object) noexcept : m_object(&object) {}

    template<class U>
    requires std::is_convertible_v<U*, T*> NonCounted(const NonCounted<U>& other)
    noexcept : m_object(other.Get()) {}

    T* Get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }

    friend bool operator==(const NonCounted&, const NonCounted&) noexcept = default;

private:
    T* m_object;
};

} // namespace Kernel
