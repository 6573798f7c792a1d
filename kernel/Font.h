#pragma once

#include <algorithm>
#include <utility>

#include <kernel/String.h>

namespace Kernel {

/// Names a font face by its properties; which file that is, is for the font look-up to find out.
class Font
{
public:
    static constexpr int NormalWeight = 400;
    static constexpr int BoldWeight = 700;
    static constexpr int NormalStretch = 5;

    /// \param family its name, such as "DejaVu Sans", or several with commas, the preferred first.
    /// \param weight 1 to 1000, 400 is normal and 700 bold; values outside are clamped.
    /// \param stretch width class from 1 (ultra-condensed) over 5 (normal) to 9 (ultra-expanded);
    ///        values outside are clamped.
    explicit Font(String family = {}, int weight = NormalWeight, bool italic = false,
                  int stretch = NormalStretch)
        : m_family(std::move(family)),
          m_weight(std::clamp(weight, 1, 1000)),
          m_stretch(std::clamp(stretch, 1, 9)),
          m_italic(italic)
    {}

    const String& GetFamily() const noexcept { return m_family; }
    int GetWeight() const noexcept { return m_weight; }
    int GetStretch() const noexcept { return m_stretch; }
    bool IsItalic() const noexcept { return m_italic; }

    friend bool operator==(const Font&, const Font&) = default;

private:
    String m_family;
    int m_weight;
    int m_stretch;
    bool m_italic;
};

} // namespace Kernel
