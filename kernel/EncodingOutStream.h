#pragma once

#include <array>
#include <cstddef>

#include <kernel/OutStream.h>

namespace Kernel {

/// Base64 with padding (RFC 4648, section 4): three bytes become four characters.
struct Base64Code
{
    static constexpr std::size_t BytesPerGroup = 3;
    static constexpr std::size_t MaxCharactersPerGroup = 4;
    static constexpr const char* EndMark = "";
    /// Encodes the first \p size bytes of \p group, whose other bytes are 0.
    /// \return the number of characters written to \p out.
    static std::size_t Encode(const unsigned char* group, std::size_t size, char* out) noexcept;
};

/// ASCII base 85 as PostScript and PDF read it (ISO 32000-1, 7.4.3): four bytes become five
/// characters, four zeros one "z"; the data ends with "~>".
struct Base85Code
{
    static constexpr std::size_t BytesPerGroup = 4;
    static constexpr std::size_t MaxCharactersPerGroup = 5;
    static constexpr const char* EndMark = "~>";
    static std::size_t Encode(const unsigned char* group, std::size_t size, char* out) noexcept;
};

/// Encodes bytes as text and passes the text on to another stream.
///
/// Close() writes the last, incomplete group and the end mark. It leaves the other stream open,
/// since encoded data is usually a part of a larger document. A stream that is not closed loses its
/// end. \tparam Code Base64Code or Base85Code.
template<class Code>
class EncodingOutStreamT : public OutStream
{
public:
    /// \param target receives the text; must live until Close().
    /// \param lineLength characters after which a line break is written, or 0 for none.
    explicit EncodingOutStreamT(OutStream& target, std::size_t lineLength = 0);
    ~EncodingOutStreamT() override;

    using OutStream::Write;
    void Write(const void* data, std::size_t size) override;
    void Close() override;

private:
    void EncodeGroup(const unsigned char* group, std::size_t size);
    void PutCharacter(char character);
    void Flush();

    OutStream& m_target;
    std::size_t m_lineLength;
    std::size_t m_column = 0;
    std::array<unsigned char, Code::BytesPerGroup> m_pending{}; // start of an incomplete group
    std::size_t m_pendingSize = 0;
    std::array<char, 4096> m_text{};
    std::size_t m_textSize = 0;
    bool m_closed = false;
};

extern template class KERNEL_EXPORT EncodingOutStreamT<Base64Code>;
extern template class KERNEL_EXPORT EncodingOutStreamT<Base85Code>;

using Base64OutStream = EncodingOutStreamT<Base64Code>;
using Base85OutStream = EncodingOutStreamT<Base85Code>;

} // namespace Kernel
