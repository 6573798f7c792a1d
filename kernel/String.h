#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace Kernel {

/// Tag of the UTF-8 encoding.
struct TEncUtf8
{};

/// A string in the given encoding. The bytes are kept as they come; nothing is validated or
/// normalised on the way.
template<class Encoding>
class StringT
{
public:
    StringT() = default;
    StringT(const char* text) : m_text(text ? text : "") {}
    StringT(std::string text) : m_text(std::move(text)) {}
    StringT(std::string_view text) : m_text(text) {}

    bool IsEmpty() const noexcept { return m_text.empty(); }
    /// Length in bytes.
    std::size_t GetLength() const noexcept { return m_text.size(); }
    const char* GetCString() const noexcept { return m_text.c_str(); }
    const std::string& GetStdString() const noexcept { return m_text; }
    operator std::string_view() const noexcept { return m_text; }

    StringT& operator+=(std::string_view text)
    {
        m_text += text;
        return *this;
    }
    friend StringT operator+(StringT a, std::string_view b) { return a += b; }

    friend bool operator==(const StringT&, const StringT&) = default;
    friend bool operator==(const StringT& a, const char* b) { return a.m_text == b; }
    friend std::strong_ordering operator<=>(const StringT& a, const StringT& b)
    {
        return a.m_text <=> b.m_text;
    }

private:
    std::string m_text;
};

/// The string of names and messages.
using String = StringT<TEncUtf8>;

} // namespace Kernel

template<class Encoding>
struct std::hash<Kernel::StringT<Encoding>>
{
    std::size_t operator()(const Kernel::StringT<Encoding>& text) const noexcept
    {
        return std::hash<std::string>()(text.GetStdString());
    }
};
