#include <geometry/text/FontTables.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include <kernel/FormatException.h>

namespace Geometry {

namespace {

constexpr std::uint32_t MakeTag(const char (&text)[5]) noexcept
{
    std::uint32_t tag = 0;
    for (int i = 0; i < 4; ++i)
        tag = tag << 8 | static_cast<unsigned char>(text[i]);
    return tag;
}

/// Reads big-endian numbers, which must lie within the file.
class Reader
{
public:
    explicit Reader(std::span<const unsigned char> bytes) : m_bytes(bytes) {}

    std::uint32_t Read(std::uint64_t offset, unsigned size) const
    {
        if (offset + size > m_bytes.size())
            throw Kernel::FormatException("it ends too early", m_bytes.size());
        std::uint32_t value = 0;
        for (unsigned i = 0; i < size; ++i)
            value = value << 8 | m_bytes[std::size_t(offset) + i];
        return value;
    }
    std::uint32_t ReadTag(std::uint64_t offset) const { return Read(offset, 4); }
    std::size_t GetSize() const { return m_bytes.size(); }

private:
    std::span<const unsigned char> m_bytes;
};

std::string DescribeTag(std::uint32_t tag)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto c = static_cast<unsigned char>(tag >> shift);
        text += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
    }
    return text;
}

/// Where the directory of a face begins.
std::uint32_t FindDirectory(const Reader& reader, unsigned face)
{
    if (reader.ReadTag(0) != MakeTag("ttcf")) {
        if (face != 0)
            throw Kernel::FormatException("it has no face number " + std::to_string(face));
        return 0;
    }
    if (face >= reader.Read(8, 4))
        throw Kernel::FormatException("it has no face number " + std::to_string(face));
    return reader.Read(12 + 4ULL * face, 4);
}

} // namespace

void CheckFontTables(std::span<const unsigned char> bytes, unsigned index)
{
    const Reader reader(bytes);
    const std::uint64_t directory = FindDirectory(reader, index & 0xFFFF);
    const std::uint32_t version = reader.ReadTag(directory);
    if (version != 0x00010000 && version != MakeTag("OTTO") && version != MakeTag("true"))
        throw Kernel::FormatException("it is no TrueType or OpenType font");
    std::vector<std::uint32_t> found;
    const unsigned count = reader.Read(directory + 4, 2);
    for (unsigned i = 0; i < count; ++i) {
        const std::uint64_t record = directory + 12 + 16ULL * i;
        const std::uint32_t tag = reader.ReadTag(record);
        const std::uint64_t end =
            std::uint64_t{reader.Read(record + 8, 4)} + reader.Read(record + 12, 4);
        if (end > reader.GetSize())
            throw Kernel::FormatException(
                "its table " + DescribeTag(tag) + " reaches beyond the end of the file", record);
        found.push_back(tag);
    }
    for (const std::uint32_t tag :
         {MakeTag("cmap"), MakeTag("head"), MakeTag("hhea"), MakeTag("hmtx"), MakeTag("maxp")}) {
        if (std::ranges::find(found, tag) == found.end())
            throw Kernel::FormatException("it has no table " + DescribeTag(tag));
    }
}

} // namespace Geometry
