#include "Page.h"

#include <fstream>
#include <iterator>
#include <span>
#include <stdexcept>

#include <kernel/FileOutStream.h>
#include <raster/Codecs.h>

namespace Gallery {

namespace {

constexpr int TilesPerRow = 5;

std::string ReadText(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The definition of a function that begins a line with its return type and ends with a brace that
/// is a line of its own.
std::string FindFunction(std::string_view name)
{
    const std::string head = "\nvoid " + std::string(name) + '(';
    for (const auto& entry : std::filesystem::directory_iterator(GALLERY_SOURCES)) {
        if (entry.path().extension() != ".cpp")
            continue;
        const std::string source = ReadText(entry.path());
        const std::size_t place = source.find(head);
        const std::size_t end = source.find("\n}\n", place);
        if (place == std::string::npos || end == std::string::npos)
            continue;
        // The line before may name the parameters of a template.
        const std::size_t before = source.rfind('\n', place - 1) + 1;
        const bool isTemplate = source.compare(before, 9, "template<") == 0;
        const std::size_t begin = isTemplate ? before : place + 1;
        return source.substr(begin, end + 3 - begin);
    }
    throw std::logic_error("no source defines " + std::string(name));
}

std::string MakeCodeBlock(std::string_view function)
{
    return "```cpp\n" + FindFunction(function) + "```\n";
}

std::string MakeImage(std::string_view name)
{
    return "![](pictures/" + std::string(name) + ".png)";
}

} // namespace

Target MakeTarget(Raster::Format format, unsigned width, unsigned height)
{
    Target target(Renderer::BitmapRenderTarget::Create(format, {}));
    if (!target || !target->CreateBuffer(width, height))
        throw std::bad_alloc();
    target->SetDeviceExpansionTolerance(0.05);
    return target;
}

Page::Page(std::filesystem::path folder) : m_folder(std::move(folder))
{
    std::filesystem::create_directories(m_folder / "pictures");
}

void Page::Chapter(std::string_view title, std::string_view text)
{
    Text("## " + std::string(title));
    Text(text);
}

void Page::Text(std::string_view text)
{
    EndRow();
    if (m_inGrid)
        m_text += '\n';
    m_inGrid = false;
    m_text.append(text).append("\n\n");
}

void Page::Code(std::string_view function)
{
    Text(MakeCodeBlock(function));
    m_text.pop_back();
}

void Page::Tile(std::string_view name, std::string_view caption, const DrawFunction& draw)
{
    const Target target = MakeTarget();
    draw(*target);
    Tile(name, caption, target);
}

void Page::Tile(std::string_view name, std::string_view caption, const Target& drawn)
{
    WritePicture(name, drawn);
    m_rowPictures += "| " + MakeImage(name) + ' ';
    m_rowCaptions += "| `" + std::string(caption) + "` ";
    if (++m_rowLength == TilesPerRow)
        EndRow();
}

void Page::Sample(std::string_view name, std::string_view function, const DrawFunction& draw)
{
    const Target target = MakeTarget();
    draw(*target);
    WritePicture(name, target);
    Text("<table><tr><td><img src=\"pictures/" + std::string(name) + ".png\" width=\"" +
         std::to_string(PictureWidth) + "\"></td><td>\n\n" + MakeCodeBlock(function) +
         "\n</td></tr></table>");
}

void Page::Close()
{
    EndRow();
    while (m_text.ends_with("\n\n"))
        m_text.pop_back();
    Kernel::FileOutStream file((m_folder / "gallery.md").string());
    file.Write(m_text.data(), m_text.size());
    file.Close();
}

void Page::WritePicture(std::string_view name, const Target& drawn)
{
    Kernel::FileOutStream file((m_folder / "pictures" / name).string() + ".png");
    Raster::WritePNG(file, Raster::DynamicBitmap(drawn->GetBuffer()), 9);
    file.Close();
}

void Page::EndRow()
{
    if (m_rowLength == 0)
        return;
    m_text += m_rowPictures + "|\n";
    // The first row of a table is its head.
    if (!m_inGrid) {
        for (int i = 0; i < m_rowLength; ++i)
            m_text += "|---";
        m_text += "|\n";
    }
    m_text += m_rowCaptions + "|\n";
    m_inGrid = true;
    m_rowPictures.clear();
    m_rowCaptions.clear();
    m_rowLength = 0;
}

} // namespace Gallery
