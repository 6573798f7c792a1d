#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace Svg {

/// What the reader left out of a drawing, once per kind, in the order in which it came up.
class Notices
{
public:
    void Add(std::string_view text)
    {
        if (std::ranges::find(m_texts, text) == m_texts.end())
            m_texts.emplace_back(text);
    }
    /// Adds \p subject and \p rest, but only the first time that it is about the subject.
    void AddFirst(const std::string& subject, std::string_view rest)
    {
        const auto isAbout = [&](const std::string& text) { return text.starts_with(subject); };
        if (std::ranges::none_of(m_texts, isAbout))
            m_texts.push_back(subject + std::string(rest));
    }
    const std::vector<std::string>& Get() const noexcept { return m_texts; }

private:
    std::vector<std::string> m_texts;
};

} // namespace Svg
