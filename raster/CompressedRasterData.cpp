#include <raster/CompressedRasterData.h>

#include <algorithm>
#include <optional>
#include <span>

#include <kernel/FormatException.h>
#include <kernel/HashAccumulator.h>
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

std::uint64_t CompressedRasterData::GetHash() const
{
    if (const std::uint64_t known = m_hash.load(std::memory_order_relaxed))
        return known;
    Kernel::HashAccumulator hash(Kernel::HashAccumulator::GetProcessSeed());
    const std::uint64_t size = m_bytes.GetSize();
    hash.Add(size);
    std::vector<unsigned char> part(static_cast<std::size_t>(std::min(size, std::uint64_t{65536})));
    try {
        for (std::uint64_t at = 0; at < size; at += part.size()) {
            const std::uint64_t count = std::min<std::uint64_t>(part.size(), size - at);
            m_bytes.Read(at, std::span(part).first(static_cast<std::size_t>(count)));
            hash.AddToHash(part.data(), static_cast<std::size_t>(count));
        }
    } catch (const Kernel::FormatException&) { // the document was cut short
    }
    const std::uint64_t found = hash.GetHash() != 0 ? hash.GetHash() : 1;
    m_hash.store(found, std::memory_order_relaxed);
    return found;
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
