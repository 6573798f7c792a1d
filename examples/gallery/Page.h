#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include <renderer/core/BitmapRenderTarget.h>

namespace Gallery {

/// Width and height of every picture.
inline constexpr unsigned PictureWidth = 128;
inline constexpr unsigned PictureHeight = 96;

using Target = Kernel::Counted<Renderer::BitmapRenderTarget>;
using DrawFunction = std::function<void(Renderer::RenderTarget&)>;

/// A transparent target of a picture's size that draws curves finely.
Target MakeTarget(Raster::Format format = Raster::Format::RGBA8, unsigned width = PictureWidth,
                  unsigned height = PictureHeight);

/// A page of pictures in Markdown: collects the text and writes each picture as it comes. The code
/// that it shows is read from the gallery's sources, so that it is what drew the pictures.
class Page
{
public:
    /// Writes into \p folder: gallery.md, and the pictures in its folder pictures.
    explicit Page(std::filesystem::path folder);

    void Chapter(std::string_view title, std::string_view text);
    void Text(std::string_view text);

    /// Shows the function of that name.
    /// \throws std::logic_error when the sources don't define it.
    void Code(std::string_view function);

    /// A picture with a short caption, usually the call of a function that Code showed. Tiles that
    /// follow each other stand in rows.
    void Tile(std::string_view name, std::string_view caption, const DrawFunction& draw);
    void Tile(std::string_view name, std::string_view caption, const Target& drawn);

    /// A picture beside the function that drew it.
    void Sample(std::string_view name, std::string_view function, const DrawFunction& draw);

    /// Writes the text. \throws Kernel::OutStream::WriteException
    void Close();

private:
    void WritePicture(std::string_view name, const Target& drawn);
    void EndRow();

    std::filesystem::path m_folder;
    std::string m_text;
    std::string m_rowPictures;
    std::string m_rowCaptions;
    int m_rowLength = 0;
    bool m_inGrid = false;
};

} // namespace Gallery
