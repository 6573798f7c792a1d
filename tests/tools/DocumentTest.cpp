#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <zlib.h>

#include <kernel/FormatException.h>

#include <svg/Document.h>
#include <svg/Encoding.h>
#include <svg/Entities.h>
#include <svg/Images.h>

#include "TestDrawing.h"

using namespace Svg;
using namespace std::string_literals;

namespace {

std::string Wide(std::string_view text, std::size_t width, bool bigEndian)
{
    std::string wide;
    for (const char c : text) {
        wide.append(bigEndian ? width - 1 : 0, '\0');
        wide += c;
        wide.append(bigEndian ? 0 : width - 1, '\0');
    }
    return wide;
}

TEST(Encoding, BringsFilesToUtf8)
{
    const std::string plain = "<svg/>";
    EXPECT_EQ(ConvertToUtf8("\xEF\xBB\xBF" + plain), plain);
    EXPECT_EQ(ConvertToUtf8(Wide(plain, 2, false)), plain);
    EXPECT_EQ(ConvertToUtf8("\xFE\xFF" + Wide(plain, 2, true)), plain);
    EXPECT_EQ(ConvertToUtf8("\xFF\xFE\0\0"s + Wide(plain, 4, false)), plain);
    EXPECT_EQ(ConvertToUtf8(Wide(plain, 4, true)), plain);

    const std::vector<std::pair<std::string, std::string>> bytes{
        {"utf-8", "\xC3\xA9"},    {"ISO-8859-1", "\xE9"},   {"iso-8859-15", "\xE9"},
        {"windows-1252", "\xE9"}, {"Windows-1250", "\xE9"},
    };
    for (const auto& [name, text] : bytes) {
        const std::string declaration = "<?xml version='1.0' encoding='" + name + "'?>";
        EXPECT_EQ(ConvertToUtf8(declaration + text), declaration + "\xC3\xA9") << name;
    }
    const std::string latin9 = "<?xml version=\"1.0\" encoding = \"ISO-8859-15\"?>";
    EXPECT_EQ(ConvertToUtf8(latin9 + "\xA4"), latin9 + "\xE2\x82\xAC"); // the euro sign
    const std::string japanese = "<?xml version='1.0' encoding='shift_jis'?>";
    EXPECT_EQ(ConvertToUtf8(japanese + "a\xFF<"), japanese + "a\xEF\xBF\xBD<");
    EXPECT_THROW(ConvertToUtf8("<?xml version='1.0' encoding='x-klingon'?>"),
                 Kernel::FormatException);
}

std::string Gzip(const std::string& text)
{
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 9, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string packed(text.size() / 100 + 1000, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

TEST(Gunzip, UnpacksWholeFilesOnly)
{
    const std::string text(100000, 'x');
    const std::string packed = Gzip(text);
    EXPECT_EQ(Gunzip(packed), text);
    EXPECT_EQ(Gunzip("<svg/>"), "<svg/>");
    EXPECT_THROW(Gunzip(packed.substr(0, packed.size() / 2)), Kernel::FormatException);
    EXPECT_THROW(Gunzip("\x1F\x8Bnonsense"), Kernel::FormatException);
    EXPECT_THROW(Gunzip(Gzip(std::string((std::size_t{1} << 28) + 1, ' '))),
                 Kernel::FormatException);
}

TEST(Entities, ExpandsInternalOnes)
{
    const struct
    {
        std::string_view subset;
        std::string_view content;
        std::string_view expanded;
    } cases[] = {
        {"<!ENTITY a 'x'>", "<g>&a;&a;</g>", "<g>xx</g>"},
        {"<!ENTITY a \"x&b;z\"><!ENTITY b 'y'>", "<g k='&a;'/>", "<g k='xyz'/>"},
        {"<!ENTITY a '<path/>'>", "<g>&a;</g>", "<g><path/></g>"},
        {"<!ENTITY c 'r\"d'><!ENTITY a '<g k=\"1\" l=\"&c;\">'>", "&a;<p q='&c;'/></g>",
         "<g k=\"1\" l=\"r&quot;d\"><p q='r\"d'/></g>"},
        // A quote from an entity does not end the attribute.
        {"<!ENTITY a '\"'>", "<g k=\"&a;\" l='&a;'/>", "<g k=\"&quot;\" l='\"'/>"},
        {"<!ENTITY a '&#60;&#x62;'>", "<g>&a;</g>", "<g><b</g>"},
        {"<!ENTITY a 'first'><!ENTITY a 'second'>", "&a;", "first"},
        {"<!ENTITY a 'x'>", "&lt;&b;&#65;& &a", "&lt;&b;&#65;& &a"},
        {"<!ENTITY a 'x'>", "<!-- &a; --><![CDATA[&a;]]><?p &a;?>&a;",
         "<!-- &a; --><![CDATA[&a;]]><?p &a;?>x"},
        {"<!ENTITY % a 'x'><!ENTITY b SYSTEM 'file'><!-- ]> --><!ELEMENT g (#PCDATA)>", "&a;&b;",
         "&a;&b;"},
        {"<?p ]> ?><!ATTLIST g k CDATA ']>'><!ENTITY a 'x'>", "&a;", "x"},
    };
    for (const auto& c : cases) {
        const std::string head =
            "<?xml version='1.0'?><!-- <!DOCTYPE --><!DOCTYPE svg PUBLIC 'x>[' \"y\" [" +
            std::string(c.subset) + "]>";
        EXPECT_EQ(ExpandEntities(head + std::string(c.content)), head + std::string(c.expanded))
            << c.content;
    }
}

TEST(Entities, RefusesBombs)
{
    std::string doubling = "<!DOCTYPE svg [<!ENTITY e0 'lollollollol'>";
    for (int i = 1; i < 30; ++i) {
        const std::string former = "&e" + std::to_string(i - 1) + ";";
        doubling += "<!ENTITY e" + std::to_string(i) + " '" + former + former + "'>";
    }
    EXPECT_THROW(ExpandEntities(doubling + "]><svg>&e29;</svg>"), Kernel::FormatException);
    EXPECT_THROW(ExpandEntities("<!DOCTYPE s [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><s>&a;</s>"),
                 Kernel::FormatException);
    std::string quadratic = "<!DOCTYPE s [<!ENTITY a '" + std::string(100000, 'x') + "'>]><s>";
    for (int i = 0; i < 1000; ++i)
        quadratic += "&a;";
    EXPECT_THROW(ExpandEntities(quadratic + "</s>"), Kernel::FormatException);
    // Unfinished declarations neither crash nor hang.
    for (const char* text :
         {"<!DOCTYPE", "<!DOCTYPE s [", "<!DOCTYPE s [<!ENTITY", "<!DOCTYPE s [<!ENTITY a '",
          "<!DOCTYPE s [<!ENTITY a 'x'>", "<!DOCTYPE s [<!--", "<"})
        EXPECT_EQ(ExpandEntities(text), text);
}

TEST(Document, KeepsSvgOnly)
{
    const Document document("<?xml version='1.0'?><s:svg xmlns:s='http://www.w3.org/2000/svg' "
                            "xmlns='http://example.com'><rect id='a'/><s:g id='b'><s:path id='c' "
                            "xmlns:s='http://example.com'/><s:rect id='d'/></s:g></s:svg>");
    EXPECT_FALSE(document.FindById("a"));
    EXPECT_FALSE(document.FindById("c"));
    ASSERT_TRUE(document.FindById("b"));
    ASSERT_TRUE(document.FindByReference(" #d "));
    EXPECT_EQ(document.FindByReference("#d")->tag, Tag::Rect);
    EXPECT_EQ(document.FindById("b")->firstChild, document.FindById("d"));
    EXPECT_FALSE(document.FindByReference("other.svg#d"));
    EXPECT_EQ(Document("<svg><svg:rect id='a'/></svg>").GetRoot().firstChild->tag, Tag::Rect);
}

TEST(Document, RefusesWhatIsNoDrawing)
{
    const std::vector<std::string> files{
        "",
        "hello",
        "<html/>",
        "<svg>",
        "<svg><g></svg>",
        "<svg",
        "<rect xmlns='http://www.w3.org/2000/svg'/>",
        "<svg xmlns='http://example.com'/>",
        std::string(1000, '\0'),
        "\xFF\xFE",
    };
    for (const std::string& file : files)
        EXPECT_THROW(Document{file}, Kernel::FormatException) << file;
}

TEST(Document, BoundsNesting)
{
    const auto nest = [](int depth) {
        std::string text = "<svg>";
        for (int i = 0; i < depth; ++i)
            text += "<g>";
        for (int i = 0; i < depth; ++i)
            text += "</g>";
        return text + "</svg>";
    };
    EXPECT_NO_THROW(Document(nest(900)));
    EXPECT_THROW(Document(nest(1001)), Kernel::FormatException);
    EXPECT_THROW(Document(nest(300000)), Kernel::FormatException);
}

TEST(DataAddress, DecodesBothForms)
{
    const auto decode = [](std::string_view address) {
        const auto bytes = DecodeDataAddress(address);
        return std::string(bytes.begin(), bytes.end());
    };
    EXPECT_EQ(decode("data:image/png;base64,aGVsbG8="), "hello");
    EXPECT_EQ(decode(" data:;BASE64,aGVs\n\tbG8gIQ"), "hello !");
    EXPECT_EQ(decode("data:;base64,%61GVsbG8%3D"), "hello");
    EXPECT_EQ(decode("data:,a%20b%2"), "a b%2");
    EXPECT_EQ(decode("image.png"), "");
}

} // namespace
