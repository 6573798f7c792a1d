#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include <kernel/Format.h>
#include <kernel/Localise.h>

using Kernel::FormatVT;
using Kernel::String;
using Kernel::ToString;

namespace {

TEST(Format, Placeholders)
{
    EXPECT_EQ(FormatVT("R:%1 G:%2 B:%3", "255", String("0"), std::string("7")), "R:255 G:0 B:7");
    EXPECT_EQ(FormatVT("%2%1%2", "a", "b"), "bab");
    EXPECT_EQ(FormatVT("%1 A:%2%%", "x", "50"), "x A:50%");
    EXPECT_EQ(FormatVT("%1%2", "%2", "%%"), "%2%%"); // arguments are not formats
    EXPECT_EQ(FormatVT("%12", "a"), "a2");
    EXPECT_EQ(FormatVT("%2 %0 %x %", "a"), "%2 %0 %x %");
    EXPECT_EQ(FormatVT("%%1", "a"), "%1");
    EXPECT_EQ(FormatVT("%1%%"), "%1%");
    EXPECT_EQ(FormatVT("%9", "1", "2", "3", "4", "5", "6", "7", "8", "nine"), "nine");

    String text = "begin ";
    Kernel::AppendFormatVT(text, "%1", "end");
    EXPECT_EQ(text, "begin end");
}

TEST(Format, Numbers)
{
    struct Case
    {
        double value;
        int minIntegerDigits, minDecimals, maxDecimals;
        const char* text;
    };
    const Case cases[] = {
        {0.5, 1, 0, 0, "0.5"},
        {1.0, 1, 0, 0, "1"},
        {100.0, 1, 0, 0, "100"}, // only zeros behind the separator go
        {128.0 / 255.0, 1, 0, 0, "0.501961"},
        {1.0 / 3.0, 1, 0, 3, "0.333"},
        {2.0 / 3.0, 1, 0, 3, "0.667"},
        {0.9999999, 1, 0, 0, "1"},
        {-0.0, 1, 0, 0, "0"},
        {-0.0000001, 1, 0, 0, "0"},
        {-0.0000001, 1, 2, 2, "0.00"},
        {-1.25, 1, 0, 0, "-1.25"},
        {0.125, 1, 0, 2, "0.12"}, // an exact tie goes to the even digit
        {0.375, 1, 0, 2, "0.38"},
        {1.005, 1, 0, 2, "1"}, // lies below the tie
        {2.5, 3, 2, 4, "002.50"},
        {-2.5, 3, 0, 0, "-002.5"},
        {0.25, 0, 0, 0, ".25"},
        {-0.25, 0, 0, 0, "-.25"},
        {0.0, 0, 0, 0, "0"},
        {1.5, 1, 4, 2, "1.5000"},
        {1e15, 1, 0, 0, "1000000000000000"},
        {1e-300, 1, 0, 0, "0"},
        {std::nan(""), 1, 0, 0, "0"},
        {-std::numeric_limits<double>::infinity(), 1, 1, 0, "0.0"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(ToString(c.value, c.minIntegerDigits, c.minDecimals, c.maxDecimals), c.text);

    const String largest = ToString(-std::numeric_limits<double>::max());
    EXPECT_EQ(largest.GetLength(), 310U);
    EXPECT_EQ(std::stod(largest.GetStdString()), -std::numeric_limits<double>::max());
    EXPECT_EQ(ToString(0.4F), "0.4");
    EXPECT_EQ(ToString(1.5, 1 << 30, -5, 1 << 30).GetLength(), 1002U); // absurd demands are bounded
}

TEST(Format, Integers)
{
    EXPECT_EQ(ToString(0), "0");
    EXPECT_EQ(ToString(-26), "-26");
    EXPECT_EQ(ToString(7, 3), "007");
    EXPECT_EQ(ToString(-7, 3), "-007");
    EXPECT_EQ(ToString(std::uint8_t{255}), "255"); // a number, not a character
    EXPECT_EQ(ToString(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(ToString(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
}

TEST(Localise, HookComesBeforeTheFallback)
{
    EXPECT_EQ(Kernel::Localise("Registration", "Registration Colour"), "Registration Colour");
    Kernel::SetLocaliseHook([](std::string_view key) -> std::optional<String> {
        if (key == "Registration")
            return Kernel::Localise("Other", "Passermarken"); // a hook may localise, too
        return std::nullopt;
    });
    EXPECT_EQ(Kernel::Localise("Registration", "Registration Colour"), "Passermarken");
    EXPECT_EQ(Kernel::Localise("Unknown", "fallback"), "fallback");
    Kernel::SetLocaliseHook({});
    EXPECT_EQ(Kernel::Localise("Registration", "fallback"), "fallback");
}

} // namespace
