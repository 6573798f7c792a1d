#include <array>

#include <zlib.h>

#include <kernel/FormatException.h>

#include "Encoding.h"

namespace Svg {

namespace {

constexpr std::size_t MaxUnpackedSize = std::size_t{1} << 28;
constexpr int GzipWindowBits = 15 + 16; // the largest window; 16 selects the gzip wrapper

/// A decompressor that frees its memory.
class Inflater
{
public:
    explicit Inflater(std::string& packed)
    {
        m_stream.next_in = reinterpret_cast<Bytef*>(packed.data());
        m_stream.avail_in = static_cast<uInt>(packed.size());
        if (inflateInit2(&m_stream, GzipWindowBits) != Z_OK)
            throw Kernel::FormatException("the compressed file cannot be unpacked");
    }
    ~Inflater() { inflateEnd(&m_stream); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    std::string Run()
    {
        std::string result;
        std::array<char, 65536> chunk;
        for (int status = Z_OK; status != Z_STREAM_END;) {
            m_stream.next_out = reinterpret_cast<Bytef*>(chunk.data());
            m_stream.avail_out = static_cast<uInt>(chunk.size());
            status = inflate(&m_stream, Z_NO_FLUSH);
            if (status != Z_OK && status != Z_STREAM_END)
                throw Kernel::FormatException("the compressed file is damaged", m_stream.total_in);
            result.append(chunk.data(), chunk.size() - m_stream.avail_out);
            if (result.size() > MaxUnpackedSize)
                throw Kernel::FormatException("the compressed file unpacks to more than 256 MiB");
        }
        return result;
    }

private:
    z_stream m_stream{};
};

} // namespace

std::string Gunzip(std::string bytes)
{
    return bytes.starts_with("\x1F\x8B") ? Inflater(bytes).Run() : std::move(bytes);
}

} // namespace Svg
