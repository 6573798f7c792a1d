#include <raster/DynamicBuffer.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include <raster/Pixel.h>

namespace Raster {

namespace {

constexpr std::uint64_t RowMultiple = 16;
constexpr std::size_t StartAlignment = 64;

/// Leaves room in an int for coordinates a little beyond the last pixel.
constexpr std::uint64_t MaxSide = std::numeric_limits<std::int32_t>::max() - (RowMultiple - 1);
/// More than any machine has; allocators need not be asked.
constexpr std::uint64_t MaxBytes = std::uint64_t{1} << 39;

/// Zeroed memory whose start is aligned for vector loads. calloc gets large blocks from the system
/// already zeroed, so pages cost nothing until they are touched; std::aligned_alloc would not give
/// that. The address of the block is kept just before the aligned start.
unsigned char* AllocateZeroed(std::size_t size) noexcept
{
    void* const block = std::calloc(size + StartAlignment, 1);
    if (!block)
        return nullptr;
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const std::size_t offset = StartAlignment - address % StartAlignment;
    static_assert(alignof(std::max_align_t) >= sizeof(void*));
    unsigned char* const start = static_cast<unsigned char*>(block) + offset;
    std::memcpy(start - sizeof(block), &block, sizeof(block));
    return start;
}

} // namespace

void DynamicBuffer::FreeMemory::operator()(unsigned char* memory) const noexcept
{
    void* block = nullptr;
    std::memcpy(&block, memory - sizeof(block), sizeof(block));
    std::free(block);
}

DynamicBuffer::DynamicBuffer(std::nothrow_t, Format format, unsigned width,
                             unsigned height) noexcept
    : m_format(format),
      m_width(width),
      m_height(height),
      m_pixelSize(unsigned(Raster::GetPixelSize(format)))
{
    const std::uint64_t rowBytes = std::uint64_t{m_pixelSize} * width;
    if (rowBytes == 0 || rowBytes > MaxSide || height == 0 || height > MaxSide)
        return;
    const std::uint64_t stride = (rowBytes + RowMultiple - 1) / RowMultiple * RowMultiple;
    if (stride > MaxBytes / height)
        return;
    m_stride = static_cast<std::ptrdiff_t>(stride);
    m_data.reset(AllocateZeroed(stride * height));
}

DynamicBuffer::DynamicBuffer(Format format, unsigned width, unsigned height)
    : DynamicBuffer(std::nothrow, format, width, height)
{
    if (!m_data)
        throw std::bad_alloc();
}

DynamicBuffer::~DynamicBuffer() = default;

Kernel::Counted<DynamicBuffer> DynamicBuffer::Create(Format format, unsigned width, unsigned height)
{
    const Kernel::Counted<DynamicBuffer> buffer(
        new (std::nothrow) DynamicBuffer(std::nothrow, format, width, height));
    return buffer && buffer->m_data ? buffer : nullptr;
}

} // namespace Raster
