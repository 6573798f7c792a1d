#include <raster/CompressedRasterData.h>

#include <algorithm>
#include <optional>

#include <raster/Codecs.h>
#include <raster/DeflatedPixels.h>
#include <raster/DynamicBitmap.h>

namespace Raster {

CompressedRasterData::CompressedRasterData(const DynamicBuffer& buffer)
    : CompressedRasterData(DeflatedPixels::Write(buffer))
{}

CompressedRasterData::~CompressedRasterData() = default;

bool CompressedRasterData::IsDeflated() const
{
    return DeflatedPixels::IsHere(m_bytes);
}

Kernel::Counted<const DynamicBitmap>
CompressedRasterData::DecodePlain(const DynamicBitmap* expected) const
{
    if (IsDeflated()) {
        std::optional<DeflatedPixels::Shape> shape;
        if (expected)
            shape = {expected->GetFormat(), expected->GetWidth(), expected->GetHeight()};
        return Kernel::MakeCounted<DynamicBitmap>(DeflatedPixels::Read(m_bytes, shape));
    }
    const std::uint64_t pixels =
        expected ? std::uint64_t{expected->GetWidth()} * expected->GetHeight() : MaxDecodedPixels;
    std::vector<unsigned char> file(static_cast<std::size_t>(m_bytes.GetSize()));
    m_bytes.Read(0, file); // what is decoded need not be in memory twice
    return ReadImage(file, std::min(pixels, MaxDecodedPixels));
}

Kernel::Counted<const DynamicBitmap>
CompressedRasterData::GetDecoded(const DynamicBitmap& expected) const
{
    return m_bytes.GetDecoded<DynamicBitmap>([&] { return DecodePlain(&expected); });
}

Kernel::Counted<const DynamicBitmap> CompressedRasterData::Decode() const
{
    const auto plain = DecodePlain(nullptr);
    return Kernel::MakeCounted<DynamicBitmap>(
        plain->GetBuffer(), plain->GetProfile(),
        Kernel::MakeCounted<const CompressedRasterData>(m_bytes));
}

} // namespace Raster
