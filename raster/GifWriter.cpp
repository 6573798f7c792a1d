#include <raster/Codecs.h>

#include <algorithm>
#include <array>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gif_lib.h>

#include <raster/ICCManager.h>

namespace Raster {

namespace {

constexpr unsigned MaxSide = 65535;
/// Entries of less alpha than this become transparent.
constexpr unsigned HalfAlpha = 128;

/// Where giflib's output goes. An exception of the stream must not cross giflib: it is kept and
/// thrown again outside.
struct GifOutput
{
    Kernel::OutStream* out;
    std::exception_ptr thrown;
};

int WriteBytes(GifFileType* gif, const GifByteType* data, int count)
{
    auto* output = static_cast<GifOutput*>(gif->UserData);
    try {
        output->out->Write(data, static_cast<std::size_t>(count));
        return count;
    } catch (...) {
        output->thrown = std::current_exception();
        return 0;
    }
}

/// Throws what went wrong.
[[noreturn]] void Fail(const GifOutput& output, int error)
{
    if (output.thrown)
        std::rethrow_exception(output.thrown);
    const char* message = GifErrorString(error);
    throw Kernel::OutStream::WriteException(std::string("cannot write GIF: ") +
                                            (message ? message : "unknown error"));
}

struct GifCloser
{
    void operator()(GifFileType* gif) const noexcept
    {
        int error = 0;
        EGifCloseFile(gif, &error); // only after an error: nothing is reported twice
    }
};
using GifFile = std::unique_ptr<GifFileType, GifCloser>;

struct MapFreer
{
    void operator()(ColorMapObject* map) const noexcept { GifFreeMapObject(map); }
};

/// The palette's colours in sRGB, which is what GIF files mean.
std::vector<PixelRGBA8> ListColours(const PalettisedBitmap& bitmap)
{
    std::vector<PixelRGBA8> colours;
    for (unsigned i = 0; i < bitmap.GetPalette().GetSize(); ++i)
        colours.push_back(bitmap.GetPalette().Get<PixelRGBA8>(i));
    ICCManager::ICCProfileSet profiles;
    profiles.SetRGB(bitmap.GetProfile());
    // Without a transform they are in sRGB already.
    ICCManager::GetInstance().DoTransform(Format::RGBA8, profiles, colours.data(), Format::RGBA8,
                                          {}, colours.data(), colours.size());
    return colours;
}

/// A colour table of a power of two of entries, at least two; those too many are black.
std::unique_ptr<ColorMapObject, MapFreer> MakeColourMap(const std::vector<PixelRGBA8>& colours)
{
    int size = 2;
    while (size < int(colours.size()))
        size *= 2;
    std::unique_ptr<ColorMapObject, MapFreer> map(GifMakeMapObject(size, nullptr));
    if (!map)
        throw std::bad_alloc();
    std::fill_n(map->Colors, size, GifColorType{});
    std::ranges::transform(colours, map->Colors, [](const PixelRGBA8& colour) {
        return GifColorType{colour[0], colour[1], colour[2]};
    });
    return map;
}

/// Where each index goes in the file: those of transparent entries go to the first such entry, the
/// only one that a file can have.
struct IndexMap
{
    std::array<GifByteType, DynamicPalette::MaxIndexed> indices;
    std::optional<int> transparent;
};

IndexMap MapIndices(const std::vector<PixelRGBA8>& colours)
{
    IndexMap map{};
    for (std::size_t i = 0; i < colours.size(); ++i) {
        map.indices[i] = static_cast<GifByteType>(i);
        if (colours[i].Alpha() >= HalfAlpha)
            continue;
        if (!map.transparent)
            map.transparent = int(i);
        map.indices[i] = static_cast<GifByteType>(*map.transparent);
    }
    return map;
}

bool PutTransparency(GifFileType* gif, int index)
{
    const GraphicsControlBlock control{DISPOSAL_UNSPECIFIED, false, 0, index};
    GifByteType bytes[4];
    const std::size_t size = EGifGCBToExtension(&control, bytes);
    return EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, int(size), bytes) == GIF_OK;
}

bool PutPicture(GifFileType* gif, const PalettisedBitmap& bitmap)
{
    const auto colours = ListColours(bitmap);
    const auto colourMap = MakeColourMap(colours);
    const IndexMap indexMap = MapIndices(colours);
    const int width = int(bitmap.GetWidth());
    const int height = int(bitmap.GetHeight());
    EGifSetGifVersion(gif, indexMap.transparent.has_value());
    constexpr int bitsOfSource = 8;
    if (EGifPutScreenDesc(gif, width, height, bitsOfSource, 0, colourMap.get()) != GIF_OK)
        return false;
    if (indexMap.transparent && !PutTransparency(gif, *indexMap.transparent))
        return false;
    if (EGifPutImageDesc(gif, 0, 0, width, height, false, nullptr) != GIF_OK)
        return false;
    std::vector<GifByteType> row(bitmap.GetWidth());
    for (unsigned y = 0; y < bitmap.GetHeight(); ++y) {
        const std::uint8_t* indices = bitmap.GetRow(y);
        std::transform(indices, indices + width, row.begin(),
                       [&](std::uint8_t index) { return indexMap.indices[index]; });
        if (EGifPutLine(gif, row.data(), width) != GIF_OK)
            return false;
    }
    return true;
}

} // namespace

void WriteGIF(Kernel::OutStream& out, const PalettisedBitmap& bitmap)
{
    if (bitmap.GetWidth() > MaxSide || bitmap.GetHeight() > MaxSide)
        throw std::invalid_argument("a GIF file has at most 65535 pixels a side");
    GifOutput output{&out, nullptr};
    int error = E_GIF_SUCCEEDED;
    GifFile gif(EGifOpen(&output, WriteBytes, &error));
    if (!gif)
        Fail(output, error);
    if (!PutPicture(gif.get(), bitmap))
        Fail(output, gif->Error);
    if (EGifCloseFile(gif.release(), &error) != GIF_OK || output.thrown)
        Fail(output, error);
}

} // namespace Raster
