#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <kernel/Progress.h>
#include <renderer/core/RenderTarget.h>

namespace Svg {

class Context;

/// An SVG drawing that was read from a file and can be drawn on any target.
class Drawing
{
public:
    /// \param bytes the file, which may be compressed with gzip.
    /// \param folder where the file lies: images in it, and in the folders in it, are shown. None
    /// are
    ///        without it.
    /// \throws Kernel::FormatException when the file is not an SVG drawing, or has no extent.
    explicit Drawing(std::string bytes, std::filesystem::path folder = {});
    ~Drawing();
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    /// The extent that the drawing asks for, in pixels of 1/96 inch: the `width` and `height` of
    /// the root. A percentage and what is missing come from the view box; without one a width of
    /// 300 and a height of 150 take their place, as in CSS. Both are positive and finite.
    double GetWidth() const noexcept { return m_width; }
    double GetHeight() const noexcept { return m_height; }

    /// Draws from (0, 0) to (width, height) of the target's logical coordinates.
    /// \param progress may be null.
    /// \throws Kernel::FormatException when elements nest or multiply without end; what came
    ///         before is drawn then.
    void Draw(Renderer::RenderTarget& target, Kernel::Progress* progress = nullptr);

    /// Draws as an image within another drawing, whose counts go on and whose notices take in its
    /// own. \throws Kernel::FormatException as Draw.
    void DrawWithin(Renderer::RenderTarget& target, Context& outer);
    /// Whether blend modes are named anywhere, so that they must be kept from what is below.
    bool NamesBlendModes() const noexcept;

    /// What was left out so far, as texts for the user, each once.
    const std::vector<std::string>& GetNotices() const noexcept;

private:
    struct Contents;

    void FindExtent();

    std::unique_ptr<Contents> m_contents;
    double m_width = 0.0;
    double m_height = 0.0;
};

} // namespace Svg
