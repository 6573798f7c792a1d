#pragma once

#include <atomic>
#include <mutex>

#include <kernel/Counted.h>
#include <kernel/Serialisable.h>
#include <raster/DynamicBuffer.h>
#include <raster/ICCProfile.h>

namespace Raster {

class CompressedRasterData;

/// An immutable picture: a buffer that is not written any more, and the profile of its colours
/// (none means the default of its format). Safe from many threads.
///
/// It is saved with its pixels compressed. Those of a bitmap that was loaded stay in the document's
/// file until they are asked for.
class RASTER_EXPORT DynamicBitmap : public DynamicBase, public Kernel::Serialisable
{
public:
    /// \pre \p buffer is not null and nobody writes to it any more.
    explicit DynamicBitmap(Kernel::Counted<const DynamicBuffer> buffer,
                           Kernel::Counted<const ICCProfile> profile = {});
    /// \param data what decodes to these pixels: they are saved in this form.
    DynamicBitmap(Kernel::Counted<const DynamicBuffer> buffer,
                  Kernel::Counted<const ICCProfile> profile,
                  Kernel::Counted<const CompressedRasterData> data);
    ~DynamicBitmap() override;

    void Save(Kernel::OutSerialiser& out) const override;
    /// Fails without a format, a size or pixels; the pixels are not looked at.
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    const Kernel::ClassProperties& GetObjectClassProperties() const override;
    static const Kernel::ClassProperties& GetTypeClassProperties();
    /// An object for the loader.
    static Kernel::Counted<Kernel::Serialisable> CreateObject();

    /// The pixels. Those of a loaded bitmap are decoded by the first call; empty when that is not
    /// possible because they are damaged or there is no memory for them.
    const Kernel::Counted<const DynamicBuffer>& GetBuffer() const noexcept
    {
        return IsDecoded() ? m_pixels->buffer : Decode();
    }
    /// The same where pixels are indispensable.
    /// \throws Kernel::FormatException when they cannot be decoded.
    const DynamicBuffer& GetPixels() const;
    /// Whether the pixels need not be decoded any more.
    bool IsDecoded() const noexcept { return m_pixels->isDecoded.load(std::memory_order_acquire); }
    const Kernel::Counted<const ICCProfile>& GetProfile() const noexcept { return m_profile; }
    Format GetFormat() const noexcept { return m_format; }
    unsigned GetWidth() const noexcept { return m_width; }
    unsigned GetHeight() const noexcept { return m_height; }

    /// The same pixels in the colours of another profile. They are neither decoded for it nor
    /// compressed once more.
    Kernel::Counted<const DynamicBitmap>
    WithProfile(Kernel::Counted<const ICCProfile> profile) const;

    /// The compressed form: what the bitmap was decoded from, otherwise its pixels deflated, which
    /// is done by the first call and kept. \throws std::bad_alloc
    Kernel::Counted<const CompressedRasterData> GetCompressedData() const;

private:
    DynamicBitmap();
    const Kernel::Counted<const DynamicBuffer>& Decode() const noexcept;
    void DecodeOnce() const;

    /// Pixels in one form or both, shared by bitmaps that differ in their profiles.
    struct Pixels : Kernel::Countable
    {
        std::mutex mutex; // guards what follows, of which the buffer is set before isDecoded
        std::atomic<bool> isDecoded{true};
        Kernel::Counted<const DynamicBuffer> buffer;
        Kernel::Counted<const CompressedRasterData> data;
    };

    Format m_format = Format::None;
    unsigned m_width = 0;
    unsigned m_height = 0;
    Kernel::Counted<const ICCProfile> m_profile;
    Kernel::Counted<Pixels> m_pixels; // never empty
};

} // namespace Raster
