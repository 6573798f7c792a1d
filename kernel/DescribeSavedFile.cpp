#include <kernel/DescribeSavedFile.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <kernel/ClassPropertiesBase.h>

#include <kernel/SavedParser.h>

namespace Kernel {
namespace {

using Kind = CborItem::Kind;

template<class Number, class... Base>
std::string ToText(Number number, Base... base)
{
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, number, base...).ptr};
}

std::string DescribeDouble(std::uint64_t bits)
{
    const auto number = std::bit_cast<double>(bits);
    return std::isnan(number) ? "NaN 0x" + ToText(bits, 16) : ToText(number);
}

/// The bytes of the character that begins a text; 0 for control characters and what is not UTF-8.
std::size_t GetShownLength(std::string_view text)
{
    const auto at = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = at(0), second = at(1);
    if (first < 0x80)
        return first >= 0x20 && first != 0x7f ? 1 : 0;
    if (first < 0xc2 || first > 0xf4)
        return 0;
    const std::size_t length = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    for (std::size_t i = 1; i < length; ++i)
        if ((at(i) & 0xc0U) != 0x80)
            return 0;
    const bool isControl = first == 0xc2 && second < 0xa0;
    const bool isTooLong = (first == 0xe0 && second < 0xa0) || (first == 0xf0 && second < 0x90);
    const bool isNone = (first == 0xed && second >= 0xa0) || (first == 0xf4 && second >= 0x90);
    return isControl || isTooLong || isNone ? 0 : length;
}

/// Text in quotes: what cannot be shown is escaped, long texts are cut.
std::string DescribeText(std::string_view text)
{
    constexpr std::size_t MaxShown = 120;
    std::size_t shown = std::min(text.size(), MaxShown);
    while (shown < text.size() && shown > 0 && (text[shown] & 0xc0) == 0x80)
        --shown; // whole characters
    std::string quoted = "\"";
    for (std::size_t i = 0; i < shown;) {
        const std::size_t length = GetShownLength(text.substr(i, shown - i));
        const auto byte = static_cast<unsigned char>(text[i]);
        if (length == 0)
            quoted += {'\\', 'x', "0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15U]};
        else if (byte == '"' || byte == '\\')
            quoted += {'\\', text[i]};
        else
            quoted += text.substr(i, length);
        i += std::max(length, std::size_t{1});
    }
    quoted += '"';
    return shown == text.size() ? quoted : quoted + "… of " + ToText(text.size()) + " bytes";
}

std::string DescribeBytes(const unsigned char* bytes, std::size_t size)
{
    constexpr std::size_t MaxShown = 20;
    std::string text = ToText(size) + " bytes";
    for (std::size_t i = 0; i < std::min(size, MaxShown); ++i) {
        text += i == 0 ? ": " : " ";
        text += "0123456789abcdef"[bytes[i] >> 4U];
        text += "0123456789abcdef"[bytes[i] & 15U];
    }
    return size > MaxShown ? text + " …" : text;
}

std::string DescribeDoubles(const unsigned char* bytes, std::size_t count)
{
    constexpr std::size_t MaxShown = 8;
    std::string text = ToText(count) + " doubles";
    for (std::size_t i = 0; i < std::min(count, MaxShown); ++i) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, bytes + i * sizeof bits, sizeof bits);
        text += (i == 0 ? ": " : ", ") + DescribeDouble(bits);
    }
    return count > MaxShown ? text + ", …" : text;
}

/// Writes a line for each value.
class Describer
{
public:
    Describer(const FileStore& store, OutStream& out) noexcept : m_store(store), m_out(out) {}

    void BeginItem(IDTag tag, std::size_t) { m_label = tag.ToString() + "  "; }

    void Value(const CborItem& item, std::size_t)
    {
        m_out.Write(std::string(2 * m_indent, ' ') + m_label);
        m_label.clear();
        m_out.Write(Describe(item));
        if (item.kind == Kind::Object || item.kind == Kind::Structure)
            return; // the class follows
        m_out.Write("\n");
        if (IsContainer(item))
            ++m_indent;
    }
    void EndContainer() noexcept { --m_indent; }

    void BeginObject(const SavedClass& head)
    {
        m_open.push_back(m_isComplete.size() - 1);
        BeginStructure(head);
    }
    void EndObject(std::size_t)
    {
        m_isComplete[m_open.back()] = true;
        m_open.pop_back();
        --m_indent;
    }
    void BeginStructure(const SavedClass& head)
    {
        const ClassPropertiesBase* const record = ClassPropertiesBase::Find(head.uid);
        std::string line = head.uid.ToString() + " version " + ToText(head.version);
        if (record)
            line += std::string(", ") + record->GetName();
        if (record && record->GetVersion() != 0 && head.version > record->GetVersion())
            line += ", newer than version " + ToText(record->GetVersion()) + ", which is known";
        m_out.Write(line + "\n");
        ++m_indent;
    }

    struct Behind
    {
        std::size_t position;
        std::size_t nextObject;
    };
    Behind SkipObject(std::size_t, std::size_t)
    {
        m_isComplete.push_back(false);
        return {0, 0};
    }
    bool CheckReference(std::uint64_t index) const
    {
        return index < m_isComplete.size() && m_isComplete[static_cast<std::size_t>(index)];
    }
    bool CheckPayload(std::uint64_t index) const noexcept
    {
        return index < m_store.GetPayloadCount() || m_store.GetDamage();
    }

private:
    /// Whether the parser tells of an end.
    static bool IsContainer(const CborItem& item) noexcept
    {
        return item.kind == Kind::Array || item.kind == Kind::Map || item.kind == Kind::Tag;
    }

    std::string DescribePayload(std::uint64_t index) const
    {
        const std::string text = "payload " + ToText(index) + ", ";
        if (index >= m_store.GetPayloadCount())
            return text + "which is missing";
        return text + ToText(m_store.GetPayloadSize(static_cast<std::size_t>(index))) + " bytes";
    }

    std::string Describe(const CborItem& item) const
    {
        const auto size = static_cast<std::size_t>(item.value);
        switch (item.kind) {
        case Kind::Unsigned:
            return ToText(item.value);
        case Kind::Negative:
            return item.value == ~std::uint64_t{0} ? "-18446744073709551616"
                                                   : "-" + ToText(item.value + 1);
        case Kind::Double:
            return DescribeDouble(item.value);
        case Kind::Bool:
            return item.value != 0 ? "true" : "false";
        case Kind::Null:
            return "null";
        case Kind::Text:
            return DescribeText({reinterpret_cast<const char*>(item.data), size});
        case Kind::Bytes:
            return DescribeBytes(item.data, size);
        case Kind::Doubles:
            return DescribeDoubles(item.data, size / sizeof(double));
        case Kind::Array:
            return "array of " + ToText(item.value);
        case Kind::Object:
            return "#" + ToText(item.value) + " ";
        case Kind::Reference:
            return "-> #" + ToText(item.value);
        case Kind::Payload:
            return DescribePayload(item.value);
        case Kind::Structure:
            return "";
        case Kind::Tag:
            return "tag " + ToText(item.value) + " (of no meaning here)";
        default:
            return "(of no meaning here)";
        }
    }

    const FileStore& m_store;
    OutStream& m_out;
    std::string m_label;
    std::size_t m_indent = 0;
    std::vector<bool> m_isComplete; // by object
    std::vector<std::size_t> m_open;
};

} // namespace

void DescribeSavedFile(const FileStore& store, OutStream& out)
{
    std::vector<unsigned char> memory;
    Describer describer(store, out);
    SavedParser<Describer> parser(store.ReadObjects(memory), describer);
    parser.ParseRoot(SavedFormat::HeaderSize);
    if (store.GetDamage())
        throw *store.GetDamage();
    out.Write(ToText(store.GetFileSize()) + " bytes, " + ToText(store.GetPayloadCount()) +
              " payloads\n");
}

} // namespace Kernel
