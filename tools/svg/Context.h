#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Document.h"
#include "Images.h"
#include "Notices.h"
#include "PaintServers.h"
#include "StyleResolver.h"
#include "TextFonts.h"
#include "TextPathCache.h"
#include "TileCache.h"

namespace Svg {

/// The paints of the shape whose marker is drawn, for `context-fill` and `context-stroke`.
struct ContextPaints
{
    Renderer::FillDescriptorConst fill;
    Renderer::FillDescriptorConst stroke;
    Transform toDevice; ///< from the coordinates of the shape, which the paints are in
};

/// What is counted while a picture is drawn, so that hostile drawings end. Drawings that it shows
/// as images count on.
struct Counts
{
    int depth = 0; ///< of the elements that are being drawn, those of patterns and masks included
    int offscreenDepth = 0; ///< pictures beside the target that are being drawn, one for another
    int masks = 0;          ///< in force at once
    int drawings = 0;       ///< that are being drawn, one as an image in another
    long usedElements = 0;
    long markers = 0;
    long characters = 0;
    double fitted = 0.0;       ///< clusters that elements with a length of text went over
    double pathSegments = 0.0; ///< of paths that were measured for text
    double pixels = 0.0;       ///< that may still be drawn beside the target
};

/// What all parts of the reader share while a document is drawn.
class Context
{
public:
    /// Elements that references may show in all; more is an attack, not a drawing.
    static constexpr long MaxUsedElements = 1'000'000;

    /// Markers in all, above which they are left out.
    static constexpr long MaxMarkers = 200'000;

    /// Characters laid out in all, above which text is left out.
    static constexpr long MaxCharacters = 2'000'000;

    /// Clusters gone over in all to fit text to lengths, above which it keeps its own.
    static constexpr double MaxFitted = 1e7;
    /// Segments of paths measured in all, above which text along others is left out.
    static constexpr double MaxPathSegments = 1e6;

    /// Masks in force at once, above which what is masked is left out: each may be a whole picture.
    static constexpr int MaxMasks = 32;
    /// Drawings that are images in one another.
    static constexpr int MaxDrawings = 8;
    /// Pixels and samples beside the target: so many for each of the picture, and some more.
    static constexpr double PixelsPerPixel = 512.0;
    static constexpr double MorePixels = 1 << 26;

    /// \param folder of the drawing, where its images may lie; may be empty.
    Context(const Document& document, const std::filesystem::path& folder);

    const Document& GetDocument() const noexcept { return m_document; }
    const StyleResolver& GetStyles() const noexcept { return m_styles; }
    const PaintServers& GetPaintServers() const noexcept { return m_paintServers; }
    Images& GetImages() noexcept { return m_images; }
    TextFonts& GetFonts() noexcept { return m_fonts; }
    Notices& GetNotices() noexcept { return m_notices; }
    const Notices& GetNotices() const noexcept { return m_notices; }

    /// Null outside markers.
    const ContextPaints*& GetContextPaints() noexcept { return m_contextPaints; }

    TileCache& GetTiles() noexcept { return m_tiles; }
    TextPathCache& GetTextPaths() noexcept { return m_textPaths; }

    /// The patterns, masks and markers that are being drawn, outermost first.
    std::vector<const Element*>& GetActive() noexcept { return m_active; }
    /// Whether one of them is being drawn, so that drawing it again would not end.
    bool IsActive(const Element& element) const;
    /// How deep the elements that are being drawn nest, those of patterns and masks included.
    int& GetDepth() noexcept { return m_counts.depth; }
    /// How many masks are in force at once.
    int& GetMaskDepth() noexcept { return m_counts.masks; }
    /// How many pictures beside the target are being drawn, one for another.
    int& GetOffscreenDepth() noexcept { return m_counts.offscreenDepth; }

    Counts& GetCounts() noexcept { return m_counts; }

    /// Starts all counts afresh, for a picture of so many pixels, and forgets the tiles of the last
    /// one, which may have been given up half way.
    void StartPicture(double pixels);
    /// Counts pixels that are drawn beside the target. \return false when there are too many.
    bool SpendPixels(double pixels);

    /// Counts a marker that is drawn. \return false when there are too many.
    bool CountMarker();

    /// Counts characters that are laid out. \return false when there are too many.
    bool CountCharacters(std::size_t count);

    /// Counts clusters that are gone over to fit text to a length. \return false when there are too
    /// many.
    bool CountFitted(std::size_t clusters);

    /// Whether paths of text may still be measured; if not, that is noted.
    bool HasPathSegments();
    void CountPathSegments(std::size_t count) { m_counts.pathSegments += double(count); }

    /// What a use element shows. \param active the use elements that are being followed.
    /// \return null, which is noted, where it is missing or holds the use element itself or one of
    ///         those, so that showing it would not end: such references are in error and left out.
    const Element* FindShown(const Element& use, const std::vector<const Element*>& active);

    /// Counts an element that is shown once more. \throws Kernel::FormatException beyond the limit.
    void CountUsedElement();

private:
    const Document& m_document;
    Notices m_notices;
    StyleResolver m_styles;
    PaintServers m_paintServers;
    Images m_images;
    TextFonts m_fonts;
    TileCache m_tiles;
    TextPathCache m_textPaths;
    std::vector<const Element*> m_active;
    const ContextPaints* m_contextPaints = nullptr;
    Counts m_counts{.pixels = MorePixels};
};

/// A reference that is being followed, for as long as the object lives.
class ActiveReference
{
public:
    static constexpr std::size_t MaxNesting = 200;

    /// \param active the elements that stand for those which are followed, outermost first.
    /// \pre \p element is not among them.
    /// \throws Kernel::FormatException when there are too many.
    ActiveReference(std::vector<const Element*>& active, const Element& element);
    ~ActiveReference() { m_active.pop_back(); }
    ActiveReference(const ActiveReference&) = delete;
    ActiveReference& operator=(const ActiveReference&) = delete;

private:
    std::vector<const Element*>& m_active;
};

/// Whether an element's conditions let it be shown (SVG 1.1, 5.8): features of SVG 1 count as
/// there, extensions don't, and the language of the user is English.
bool PassesConditions(const Element& element);

/// The child of a switch that is shown, or null.
const Element* ChooseChild(const Element& switchElement);

} // namespace Svg
