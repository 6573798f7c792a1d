#include <kernel/EncodingOutStream.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Kernel {

std::size_t Base64Code::Encode(const unsigned char* group, std::size_t size, char* out) noexcept
{
    static constexpr char Alphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const unsigned bits = group[0] * 65536U + group[1] * 256U + group[2];
    for (unsigned i = 0; i < 4; ++i)
        out[i] = i <= size ? Alphabet[bits >> (18 - 6 * i) & 63U] : '=';
    return 4;
}

std::size_t Base85Code::Encode(const unsigned char* group, std::size_t size, char* out) noexcept
{
    std::uint32_t value = group[0] * 16777216U + group[1] * 65536U + group[2] * 256U + group[3];
    if (value == 0 && size == BytesPerGroup) {
        out[0] = 'z';
        return 1;
    }
    char digits[MaxCharactersPerGroup];
    for (std::size_t i = MaxCharactersPerGroup; i-- > 0; value /= 85)
        digits[i] = static_cast<char>('!' + value % 85);
    std::memcpy(out, digits, size + 1); // n bytes are told by their first n + 1 digits
    return size + 1;
}

template<class Code>
EncodingOutStreamT<Code>::EncodingOutStreamT(OutStream& target, std::size_t lineLength)
    : m_target(target), m_lineLength(lineLength)
{}

template<class Code>
EncodingOutStreamT<Code>::~EncodingOutStreamT() = default;

template<class Code>
void EncodingOutStreamT<Code>::Write(const void* data, std::size_t size)
{
    if (m_closed)
        throw WriteException("cannot write: the encoded data has ended");
    const auto* bytes = static_cast<const unsigned char*>(data);
    if (m_pendingSize != 0) {
        const std::size_t taken = std::min(size, Code::BytesPerGroup - m_pendingSize);
        std::copy_n(bytes, taken, m_pending.begin() + static_cast<std::ptrdiff_t>(m_pendingSize));
        m_pendingSize += taken;
        bytes += taken;
        size -= taken;
        if (m_pendingSize < Code::BytesPerGroup)
            return;
        m_pendingSize = 0;
        EncodeGroup(m_pending.data(), Code::BytesPerGroup);
    }
    for (; size >= Code::BytesPerGroup; size -= Code::BytesPerGroup, bytes += Code::BytesPerGroup)
        EncodeGroup(bytes, Code::BytesPerGroup);
    std::copy_n(bytes, size, m_pending.begin());
    m_pendingSize = size;
}

template<class Code>
void EncodingOutStreamT<Code>::Close()
{
    if (m_closed)
        return;
    if (m_pendingSize != 0) {
        std::fill(m_pending.begin() + static_cast<std::ptrdiff_t>(m_pendingSize), m_pending.end(),
                  static_cast<unsigned char>(0));
        EncodeGroup(m_pending.data(), m_pendingSize);
        m_pendingSize = 0;
    }
    const std::string_view mark = Code::EndMark;
    if (m_lineLength != 0 && m_column + mark.size() > m_lineLength && m_column != 0)
        m_text[m_textSize++] = '\n'; // the mark must not be broken; Flush() leaves room for this
    Flush();
    m_target.Write(mark);
    m_closed = true;
}

template<class Code>
void EncodingOutStreamT<Code>::EncodeGroup(const unsigned char* group, std::size_t size)
{
    // With a line break after each character, a group takes at most twice its characters.
    if (m_textSize + 2 * Code::MaxCharactersPerGroup + 1 > m_text.size())
        Flush();
    if (m_lineLength == 0) {
        m_textSize += Code::Encode(group, size, m_text.data() + m_textSize);
        return;
    }
    char characters[Code::MaxCharactersPerGroup];
    const std::size_t count = Code::Encode(group, size, characters);
    for (std::size_t i = 0; i < count; ++i)
        PutCharacter(characters[i]);
}

template<class Code>
void EncodingOutStreamT<Code>::PutCharacter(char character)
{
    if (m_column == m_lineLength) {
        m_text[m_textSize++] = '\n';
        m_column = 0;
    }
    m_text[m_textSize++] = character;
    ++m_column;
}

template<class Code>
void EncodingOutStreamT<Code>::Flush()
{
    m_target.Write(m_text.data(), m_textSize);
    m_textSize = 0;
}

template class EncodingOutStreamT<Base64Code>;
template class EncodingOutStreamT<Base85Code>;

} // namespace Kernel
