#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <kernel/Base64OutStream.h>
#include <kernel/Base85OutStream.h>
#include <kernel/MemoryOutStream.h>

namespace {

using namespace std::string_view_literals;

/// Encodes \p data in pieces of \p step bytes.
template<class Encoder>
std::string Encode(std::string_view data, std::size_t step = 1000, std::size_t lineLength = 0)
{
    Kernel::MemoryOutStream memory;
    Encoder encoder(memory, lineLength);
    for (std::size_t i = 0; i < data.size(); i += step)
        encoder.Write(data.substr(i, step));
    encoder.Close();
    encoder.Close(); // must not write the end twice
    return std::string(memory.GetText());
}

std::string MakeBytes(std::size_t count)
{
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes += static_cast<char>(i * i * 7 + i / 256);
    return bytes;
}

TEST(Base64, KnownVectors)
{
    // RFC 4648, section 10.
    const std::pair<std::string_view, std::string_view> vectors[] = {{"", ""},
                                                                     {"f", "Zg=="},
                                                                     {"fo", "Zm8="},
                                                                     {"foo", "Zm9v"},
                                                                     {"foob", "Zm9vYg=="},
                                                                     {"fooba", "Zm9vYmE="},
                                                                     {"foobar", "Zm9vYmFy"},
                                                                     {"\xfb\xff\xfe"sv, "+//+"}};
    for (const auto& [data, text] : vectors)
        EXPECT_EQ(Encode<Kernel::Base64OutStream>(data), text);
}

TEST(Base85, KnownVectors)
{
    const std::pair<std::string_view, std::string_view> vectors[] = {
        {"", "~>"},
        {"Man ", "9jqo^~>"},
        {"Man is distinguished", "9jqo^BlbD-BleB1DJ+*+F(f,q~>"},
        {"pleasure.", "E,9)oF*2M7/c~>"},
        {"\0\0\0\0"sv, "z~>"},
        {"\0\0\0\0\0\0"sv, "z!!!~>"}, // an incomplete group of zeros is never "z"
        {"\0\0\0"sv, "!!!!~>"},
        {"\xff\xff\xff\xff"sv, "s8W-!~>"},
    };
    for (const auto& [data, text] : vectors)
        EXPECT_EQ(Encode<Kernel::Base85OutStream>(data), text);
}

TEST(EncodingOutStream, PiecesOfAnySizeGiveTheSameText)
{
    const std::string data = MakeBytes(20011); // several flushes of the text, incomplete last group
    const std::string whole64 = Encode<Kernel::Base64OutStream>(data, data.size());
    const std::string whole85 = Encode<Kernel::Base85OutStream>(data, data.size());
    EXPECT_EQ(whole64.size(), 26684U);
    for (const std::size_t step : {1U, 2U, 3U, 4U, 5U, 7U, 4096U}) {
        EXPECT_EQ(Encode<Kernel::Base64OutStream>(data, step), whole64);
        EXPECT_EQ(Encode<Kernel::Base85OutStream>(data, step), whole85);
    }
}

TEST(EncodingOutStream, LinesAreFullAndTheMarkIsWhole)
{
    for (const std::size_t length : {2U, 5U, 72U, 255U}) {
        for (std::size_t size = 5000; size < 5100; ++size) { // the text may end anywhere in a line
            const std::string data = MakeBytes(size);
            const std::string plain = Encode<Kernel::Base85OutStream>(data);
            std::string expected;
            for (std::size_t at = 0; at + 2 < plain.size(); at += length)
                expected += plain.substr(at, std::min(length, plain.size() - 2 - at)) + '\n';
            if ((plain.size() - 2) % length != 0 && (plain.size() - 2) % length + 2 <= length)
                expected.pop_back();
            ASSERT_EQ(Encode<Kernel::Base85OutStream>(data, 1000, length), expected + "~>") << size;
        }
    }
}

TEST(EncodingOutStream, NothingMayFollowTheEnd)
{
    Kernel::MemoryOutStream memory;
    Kernel::Base64OutStream encoder(memory);
    encoder.Close();
    EXPECT_THROW(encoder.Write("a"), Kernel::OutStream::WriteException);
    memory.Write("still open");
    EXPECT_EQ(memory.TakeData().size(), 10U);
    EXPECT_EQ(memory.GetText(), "");
}

} // namespace
