#include <geometry/text/ShapeText.h>

#include <algorithm>
#include <iterator>
#include <string>

#include <geometry/text/FaceShaper.h>
#include <geometry/text/Utf8.h>

namespace Geometry {

namespace {

using Face = Kernel::Counted<const FontFace>;

/// A run of one face and script.
struct Item
{
    std::size_t begin = 0;
    std::size_t end = 0;
    std::uint32_t script = 0; ///< 0 while it holds nothing that has one
    Face face;
    int marks = 0; ///< one behind the other at its end
};

/// Items with more marks on one letter are cut: shaping takes time by the square of their number.
constexpr int MaxMarks = 256;

/// Characters that need no glyph of their own, so that any face will do.
bool IsIgnorable(char32_t c) noexcept
{
    return c == 0xAD || c == 0x34F || c == 0x61C || (c >= 0x200B && c <= 0x200F) ||
           (c >= 0x202A && c <= 0x202E) || (c >= 0x2060 && c <= 0x206F) ||
           (c >= 0xFE00 && c <= 0xFE0F) || c == 0xFEFF || (c >= 0xE0000 && c <= 0xE0FFF);
}

/// Cuts a piece of text into items.
class Itemiser
{
public:
    explicit Itemiser(const FontSelection& fonts) : m_fonts(fonts) {}

    std::vector<Item> Split(std::string_view text, std::size_t begin, std::size_t end)
    {
        for (std::size_t offset = begin; offset < end;) {
            const std::size_t start = offset;
            const char32_t c = NextCharacter(text, offset);
            Add(start, std::min(offset, end), c);
        }
        return std::move(m_items);
    }

private:
    /// What follows a letter stays with it where its face can draw it: marks and blanks above all.
    Face FindFace(char32_t c) const
    {
        if (m_items.empty())
            return m_fonts.FindFace(c);
        const Face& last = m_items.back().face;
        const bool follows = IsIgnorable(c) || ExtendsCluster(c);
        if (follows && (IsIgnorable(c) || last->FindGlyph(c) != 0))
            return last;
        return m_fonts.FindFace(c);
    }

    void Add(std::size_t begin, std::size_t end, char32_t c)
    {
        const std::uint32_t script = FindScript(c);
        Face face = FindFace(c);
        if (!m_items.empty()) {
            Item& last = m_items.back();
            const bool sameScript = script == 0 || last.script == 0 || script == last.script;
            if (sameScript && face == last.face && last.marks < MaxMarks) {
                last.end = end;
                last.marks = ExtendsCluster(c) ? last.marks + 1 : 0;
                if (last.script == 0)
                    last.script = script;
                return;
            }
        }
        m_items.push_back({begin, end, script, std::move(face)});
    }

    const FontSelection& m_fonts;
    std::vector<Item> m_items;
};

/// The part of a text that a run is shaped in: enough of what is around it for letters to join, its
/// controls as blanks, which fonts have glyphs for.
class Window
{
public:
    Window(std::string_view text, std::size_t begin, std::size_t end)
        : m_start(begin - std::min(begin, Reach))
    {
        // A character that is cut would count as another.
        while (m_start < begin && IsInside(text[m_start]))
            ++m_start;
        std::size_t stop = std::min(text.size(), end + Reach);
        while (stop < text.size() && stop > end && IsInside(text[stop]))
            --stop;
        m_text = text.substr(m_start, stop - m_start);
        for (char& c : m_text) {
            if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
                c = ' ';
        }
    }

    std::string_view GetText() const { return m_text; }
    std::size_t GetStart() const { return m_start; }

private:
    static constexpr std::size_t Reach = 64; ///< HarfBuzz looks at five characters

    static bool IsInside(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

    std::size_t m_start;
    std::string m_text;
};

void AppendItem(const Window& window, const Item& item, bool rightToLeft,
                const ShapeOptions& options, std::vector<ShapedGlyph>& out)
{
    const ShapeItem shape{window.GetText(), item.begin, item.end, item.script, rightToLeft};
    for (const FaceGlyph& glyph : item.face->GetShaper().Shape(shape, options)) {
        out.push_back({item.face->GetGlyph(glyph.index),
                       item.face,
                       std::uint32_t(glyph.cluster + window.GetStart()),
                       rightToLeft,
                       glyph.advance,
                       {glyph.offsetX, glyph.offsetY}});
    }
}

} // namespace

std::vector<ShapedGlyph> ShapeRun(std::string_view text, std::size_t begin, std::size_t end,
                                  bool rightToLeft, const FontSelection& fonts,
                                  const ShapeOptions& options)
{
    std::vector<ShapedGlyph> glyphs;
    if (!fonts.GetFace())
        return glyphs;
    const Window window(text, begin, end);
    std::vector<Item> items =
        Itemiser(fonts).Split(window.GetText(), begin - window.GetStart(), end - window.GetStart());
    if (rightToLeft)
        std::ranges::reverse(items);
    for (const Item& item : items)
        AppendItem(window, item, rightToLeft, options, glyphs);
    return glyphs;
}

ShapedText ShapeText(std::string_view text, const FontSelection& fonts, const ShapeOptions& options,
                     TextDirection direction)
{
    const std::vector<BidiRun> runs = FindBidiRuns(text, direction);
    std::vector<std::uint8_t> levels;
    std::ranges::transform(runs, std::back_inserter(levels), &BidiRun::level);
    ShapedText shaped;
    for (const std::size_t i : FindVisualOrder(levels)) {
        auto glyphs =
            ShapeRun(text, runs[i].begin, runs[i].end, runs[i].IsRightToLeft(), fonts, options);
        std::ranges::move(glyphs, std::back_inserter(shaped.glyphs));
    }
    for (const ShapedGlyph& glyph : shaped.glyphs)
        shaped.advance += glyph.advance;
    return shaped;
}

bool BeginsCluster(char32_t character) noexcept
{
    return !ExtendsCluster(character);
}

} // namespace Geometry
