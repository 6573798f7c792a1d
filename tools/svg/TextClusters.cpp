#include "TextClusters.h"

#include <algorithm>
#include <iterator>

#include <kernel/FormatException.h>

namespace Svg {

using Geometry::FontSelection;
using Geometry::ShapedGlyph;
using Fonts = Kernel::Counted<const FontSelection>;

namespace {

/// Small capitals are large ones at this size, where the font has none of its own.
constexpr double SmallCapsScale = 0.8;

/// A piece of text that is shaped at once: of one direction, one element and one chunk.
struct Piece
{
    std::size_t first = 0; ///< of the characters
    std::size_t last = 0;  ///< exclusive
    std::uint8_t level = 0;
};

/// Makes the clusters of a text element.
class ClusterMaker
{
public:
    ClusterMaker(Context& context, const TextContent& content)
        : m_context(context), m_content(content), m_characters(content.GetCharacters())
    {}

    TextClusters Make()
    {
        const auto direction = m_content.GetSpans().front().style->text.rightToLeft
                                   ? Geometry::TextDirection::RightToLeft
                                   : Geometry::TextDirection::LeftToRight;
        std::size_t character = 0;
        for (const auto& run : Geometry::FindBidiRuns(m_content.GetText(), direction)) {
            while (character < m_characters.size() && m_characters[character].offset < run.end)
                character = AddPiece(FindPiece(character, run));
        }
        return std::move(m_result);
    }

private:
    static bool StartsChunk(const TextCharacter& c) { return c.x || c.y; }

    Piece FindPiece(std::size_t first, const Geometry::BidiRun& run) const
    {
        const TextCharacter& head = m_characters[first];
        const auto belongs = [&](const TextCharacter& c) {
            return c.offset < run.end && c.span == head.span && c.isSmall == head.isSmall &&
                   (!StartsChunk(c) || !Geometry::BeginsCluster(c.code));
        };
        const auto begin = m_characters.begin() + std::ptrdiff_t(first);
        const auto end = std::find_if_not(begin + 1, m_characters.end(), belongs);
        return {first, std::size_t(end - m_characters.begin()), run.level};
    }

    /// \return where the next piece begins.
    std::size_t AddPiece(const Piece& piece)
    {
        const std::size_t firstCluster = m_result.clusters.size();
        const Fonts& fonts = FindFonts(m_characters[piece.first].span);
        AddClusters(piece, Shape(piece, *fonts), fonts);
        if (m_result.clusters.size() > firstCluster)
            m_result.runs.push_back({firstCluster, m_result.clusters.size(), piece.level});
        return piece.last;
    }

    const Fonts& FindFonts(std::size_t span)
    {
        if (span == m_fontSpan && !m_result.fonts.empty())
            return m_result.fonts.back();
        m_fontSpan = span;
        m_language = FindLanguage(span);
        m_result.fonts.push_back(
            m_context.GetFonts().Find(m_content.GetSpans()[span].style->text, m_language));
        return m_result.fonts.back();
    }

    std::string FindLanguage(std::size_t span) const
    {
        for (const Element* e = m_content.GetSpans()[span].element; e; e = e->parent) {
            for (const char* name : {"xml:lang", "lang"}) {
                if (e->Has(name))
                    return std::string(
                        e->Get(name).substr(0, Geometry::ShapeOptions::MaxLanguageLength));
            }
        }
        return {};
    }

    std::size_t GetOffset(std::size_t character) const
    {
        return character < m_characters.size() ? m_characters[character].offset
                                               : m_content.GetText().size();
    }

    /// The glyphs of a piece; none where the file of a font is damaged.
    std::vector<ShapedGlyph> Shape(const Piece& piece, const FontSelection& fonts)
    {
        const std::size_t span = m_characters[piece.first].span;
        const TextStyle& style = m_content.GetSpans()[span].style->text;
        Geometry::ShapeOptions options;
        options.language = m_language;
        options.kerning = style.kerning;
        // Letters that are spaced out don't join in ligatures (CSS Text 3, 8.2).
        options.ligatures = style.ligatures && style.letterSpacing.value == 0.0;
        if (style.features)
            options.features = *style.features;
        try {
            return Geometry::ShapeRun(m_content.GetText(), GetOffset(piece.first),
                                      GetOffset(piece.last), piece.level % 2 != 0, fonts, options);
        } catch (const Kernel::FormatException& error) {
            // Once for the file, whichever of its glyphs it was.
            const std::string message = error.what();
            m_context.GetNotices().AddFirst(message.substr(0, message.find(": glyph")),
                                            "; text in it is left out");
            return {};
        }
    }

    void AddClusters(const Piece& piece, std::vector<ShapedGlyph> glyphs, const Fonts& fonts)
    {
        if (glyphs.empty())
            return;
        // From the order on the line to that of the text, glyphs of one cluster side by side as
        // they are.
        const auto isSooner = [](const ShapedGlyph& a, const ShapedGlyph& b) {
            return a.cluster < b.cluster;
        };
        std::ranges::stable_sort(glyphs, isSooner);
        std::size_t character = piece.first;
        for (auto glyph = glyphs.begin(); glyph != glyphs.end();) {
            const auto isOther = [&](const ShapedGlyph& g) { return g.cluster != glyph->cluster; };
            const auto next = std::find_if(glyph, glyphs.end(), isOther);
            const std::size_t end = next == glyphs.end() ? GetOffset(piece.last) : next->cluster;
            TextCluster& cluster = m_result.clusters.emplace_back();
            cluster.first = character;
            while (character < piece.last && GetOffset(character) < end)
                ++character;
            cluster.last = character;
            cluster.glyphs.assign(std::make_move_iterator(glyph), std::make_move_iterator(next));
            cluster.face = fonts->GetFace().Get();
            Complete(cluster);
            glyph = next;
        }
    }

    void Complete(TextCluster& cluster) const
    {
        const TextCharacter& head = m_characters[cluster.first];
        const TextSpan& span = m_content.GetSpan(head);
        const LengthContext lengths = m_content.GetLengths(span);
        cluster.span = head.span;
        cluster.startsChunk = StartsChunk(head);
        cluster.size = span.style->fontSize * (head.isSmall ? SmallCapsScale : 1.0);
        for (const ShapedGlyph& glyph : cluster.glyphs)
            cluster.advance += cluster.size * glyph.advance;
        if (head.isControl)
            return;
        const TextStyle& style = span.style->text;
        cluster.advance += style.letterSpacing.Resolve(lengths, LengthAxis::Horizontal);
        if (head.code == ' ' || head.code == 0xA0)
            cluster.advance += style.wordSpacing.Resolve(lengths, LengthAxis::Horizontal);
    }

    Context& m_context;
    const TextContent& m_content;
    const std::vector<TextCharacter>& m_characters;
    TextClusters m_result;
    std::size_t m_fontSpan = 0; ///< whose fonts are the last, and whose language this is
    std::string m_language;
};

} // namespace

TextClusters MakeClusters(Context& context, const TextContent& content)
{
    if (!context.CountCharacters(content.GetCharacters().size()))
        return {};
    return ClusterMaker(context, content).Make();
}

} // namespace Svg
