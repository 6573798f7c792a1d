#include <raster/CompressedRasterData.h>

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

Kernel::Counted<const DynamicBitmap> CompressedRasterData::DecodePlain() const
{
    if (IsDeflated())
        return Kernel::MakeCounted<DynamicBitmap>(DeflatedPixels::Read(m_bytes));
    std::vector<unsigned char> file(static_cast<std::size_t>(m_bytes.GetSize()));
    m_bytes.Read(0, file); // what is decoded need not be in memory twice
    return ReadImage(file);
}

Kernel::Counted<const DynamicBitmap> CompressedRasterData::GetDecoded() const
{
    return m_bytes.GetDecoded<DynamicBitmap>([this] { return DecodePlain(); });
}

Kernel::Counted<const DynamicBitmap> CompressedRasterData::Decode() const
{
    const auto plain = DecodePlain();
    return Kernel::MakeCounted<DynamicBitmap>(
        plain->GetBuffer(), plain->GetProfile(),
        Kernel::MakeCounted<const CompressedRasterData>(m_bytes));
}

} // namespace Raster
