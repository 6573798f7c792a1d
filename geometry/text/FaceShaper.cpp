#include <geometry/text/FaceShaper.h>

#include <algorithm>
#include <limits>
#include <mutex>
#include <system_error>
#include <unordered_map>

#include <hb-ot.h>
#include <hb.h>

#include <kernel/FormatException.h>

namespace Geometry {

namespace {

template<class T, void (*Destroy)(T*)>
struct Destroyer
{
    void operator()(T* object) const noexcept { Destroy(object); }
};

template<class T, void (*Destroy)(T*)>
using Handle = std::unique_ptr<T, Destroyer<T, Destroy>>;

using Blob = Handle<hb_blob_t, hb_blob_destroy>;
using Face = Handle<hb_face_t, hb_face_destroy>;
using Font = Handle<hb_font_t, hb_font_destroy>;
using Buffer = Handle<hb_buffer_t, hb_buffer_destroy>;

/// The bytes of a regular file, mapped where the system can.
Blob OpenFile(const std::filesystem::path& path)
{
    std::error_code error;
    const auto size =
        std::filesystem::is_regular_file(path, error) ? std::filesystem::file_size(path, error) : 0;
    if (error || size == 0 || size > std::numeric_limits<unsigned>::max())
        throw Kernel::FormatException("the font file " + path.string() + " cannot be read");
    Blob blob(hb_blob_create_from_file_or_fail(path.c_str()));
    if (!blob)
        throw Kernel::FormatException("the font file " + path.string() + " cannot be read");
    return blob;
}

/// HarfBuzz keeps every language that it ever saw, in a list that it goes through: it is asked once
/// for each. \return none for more languages than there are documents of at once.
hb_language_t FindLanguage(const std::string& language)
{
    constexpr std::size_t maxLanguages = 500;
    static std::mutex mutex;
    // Never destroyed: other static objects may draw text when the program ends.
    static auto& known = *new std::unordered_map<std::string, hb_language_t>;
    if (language.empty())
        return HB_LANGUAGE_INVALID;
    const std::string tag = language.substr(0, ShapeOptions::MaxLanguageLength);
    const std::lock_guard lock(mutex);
    if (const auto found = known.find(tag); found != known.end())
        return found->second;
    if (known.size() >= maxLanguages)
        return HB_LANGUAGE_INVALID;
    return known.emplace(tag, hb_language_from_string(tag.data(), int(tag.size()))).first->second;
}

std::vector<hb_feature_t> MakeFeatures(const ShapeOptions& options)
{
    std::vector<hb_feature_t> features;
    const auto add = [&](std::string_view text) {
        hb_feature_t feature;
        if (hb_feature_from_string(text.data(), int(text.size()), &feature))
            features.push_back(feature);
    };
    if (!options.ligatures) {
        for (const char* tag : {"-liga", "-clig", "-dlig", "-hlig"})
            add(tag);
    }
    if (!options.kerning)
        add("-kern");
    const std::size_t count = std::min(options.features.size(), ShapeOptions::MaxFeatures);
    for (std::size_t i = 0; i < count; ++i)
        add(options.features[i]);
    return features;
}

} // namespace

struct FaceShaper::Contents
{
    Blob blob;
    Face face;
    Font font;
    double scale = 1.0; ///< units of the em per unit of the font

    double GetMetric(hb_ot_metrics_tag_t tag) const
    {
        hb_position_t value = 0;
        hb_ot_metrics_get_position_with_fallback(font.get(), tag, &value);
        return scale * value;
    }

    /// A baseline of the font's own table, y downwards, or \p fallback.
    double GetBaseline(hb_ot_layout_baseline_tag_t tag, double fallback) const
    {
        hb_position_t value = 0;
        return hb_ot_layout_get_baseline(font.get(), tag, HB_DIRECTION_LTR,
                                         HB_TAG('D', 'F', 'L', 'T'), HB_TAG_NONE, &value)
                   ? -scale * value
                   : fallback;
    }
};

FaceShaper::FaceShaper(const std::filesystem::path& path) : m_contents(std::make_unique<Contents>())
{
    m_contents->blob = OpenFile(path);
}

FaceShaper::~FaceShaper() = default;

std::span<const unsigned char> FaceShaper::GetBytes() const noexcept
{
    unsigned length = 0;
    const char* const data = hb_blob_get_data(m_contents->blob.get(), &length);
    return {reinterpret_cast<const unsigned char*>(data), length};
}

void FaceShaper::SelectFace(unsigned index, double slant)
{
    Contents& contents = *m_contents;
    contents.face.reset(hb_face_create(contents.blob.get(), index & 0xFFFF));
    hb_face_make_immutable(contents.face.get());
    contents.font.reset(hb_font_create(contents.face.get()));
    if (const unsigned instance = index >> 16; instance > 0)
        hb_font_set_var_named_instance(contents.font.get(), instance - 1);
    if (slant != 0.0)
        hb_font_set_synthetic_slant(contents.font.get(), float(slant));
    hb_font_make_immutable(contents.font.get());
    contents.scale = 1.0 / hb_face_get_upem(contents.face.get());
}

unsigned FaceShaper::GetUnitsPerEm() const noexcept
{
    return hb_face_get_upem(m_contents->face.get());
}

FontMetrics FaceShaper::MakeMetrics() const
{
    const Contents& contents = *m_contents;
    FontMetrics metrics;
    metrics.ascent = std::max(0.0, contents.GetMetric(HB_OT_METRICS_TAG_HORIZONTAL_ASCENDER));
    metrics.descent = std::max(0.0, -contents.GetMetric(HB_OT_METRICS_TAG_HORIZONTAL_DESCENDER));
    metrics.xHeight = contents.GetMetric(HB_OT_METRICS_TAG_X_HEIGHT);
    metrics.capHeight = contents.GetMetric(HB_OT_METRICS_TAG_CAP_HEIGHT);
    metrics.underlineTop = -contents.GetMetric(HB_OT_METRICS_TAG_UNDERLINE_OFFSET);
    metrics.underlineThickness = contents.GetMetric(HB_OT_METRICS_TAG_UNDERLINE_SIZE);
    metrics.strikeoutTop = -contents.GetMetric(HB_OT_METRICS_TAG_STRIKEOUT_OFFSET);
    metrics.strikeoutThickness = contents.GetMetric(HB_OT_METRICS_TAG_STRIKEOUT_SIZE);
    metrics.subscriptShift = contents.GetMetric(HB_OT_METRICS_TAG_SUBSCRIPT_EM_Y_OFFSET);
    metrics.superscriptShift = -contents.GetMetric(HB_OT_METRICS_TAG_SUPERSCRIPT_EM_Y_OFFSET);
    const double middle = (metrics.descent - metrics.ascent) / 2.0;
    metrics.hangingBaseline =
        contents.GetBaseline(HB_OT_LAYOUT_BASELINE_TAG_HANGING, -0.8 * metrics.ascent);
    metrics.ideographicBaseline =
        contents.GetBaseline(HB_OT_LAYOUT_BASELINE_TAG_IDEO_EMBOX_BOTTOM_OR_LEFT, metrics.descent);
    metrics.mathematicalBaseline =
        contents.GetBaseline(HB_OT_LAYOUT_BASELINE_TAG_MATH, -0.5 * metrics.ascent);
    metrics.centralBaseline =
        contents.GetBaseline(HB_OT_LAYOUT_BASELINE_TAG_IDEO_EMBOX_CENTRAL, middle);
    return metrics;
}

std::uint32_t FaceShaper::FindGlyph(char32_t character) const noexcept
{
    hb_codepoint_t glyph = 0;
    return hb_font_get_nominal_glyph(m_contents->font.get(), character, &glyph) ? glyph : 0;
}

double FaceShaper::GetAdvance(std::uint32_t glyph) const noexcept
{
    return m_contents->scale * hb_font_get_glyph_h_advance(m_contents->font.get(), glyph);
}

std::vector<FaceGlyph> FaceShaper::Shape(const ShapeItem& item, const ShapeOptions& options) const
{
    const Contents& contents = *m_contents;
    const Buffer buffer(hb_buffer_create());
    hb_buffer_add_utf8(buffer.get(), item.text.data(), int(item.text.size()), unsigned(item.begin),
                       int(item.end - item.begin));
    hb_buffer_set_direction(buffer.get(), item.rightToLeft ? HB_DIRECTION_RTL : HB_DIRECTION_LTR);
    hb_buffer_set_script(buffer.get(),
                         item.script ? hb_script_from_iso15924_tag(item.script) : HB_SCRIPT_COMMON);
    if (const hb_language_t language = FindLanguage(options.language))
        hb_buffer_set_language(buffer.get(), language);
    unsigned flags = HB_BUFFER_FLAG_DEFAULT;
    if (item.begin == 0)
        flags |= HB_BUFFER_FLAG_BOT;
    if (item.end == item.text.size())
        flags |= HB_BUFFER_FLAG_EOT;
    hb_buffer_set_flags(buffer.get(), hb_buffer_flags_t(flags));
    const std::vector<hb_feature_t> features = MakeFeatures(options);
    hb_shape(contents.font.get(), buffer.get(), features.data(), unsigned(features.size()));

    unsigned count = 0;
    const hb_glyph_info_t* const infos = hb_buffer_get_glyph_infos(buffer.get(), &count);
    const hb_glyph_position_t* const positions =
        hb_buffer_get_glyph_positions(buffer.get(), nullptr);
    std::vector<FaceGlyph> glyphs(count);
    for (unsigned i = 0; i < count; ++i) {
        glyphs[i] = {infos[i].codepoint, infos[i].cluster, contents.scale * positions[i].x_advance,
                     contents.scale * positions[i].x_offset,
                     -contents.scale * positions[i].y_offset};
    }
    return glyphs;
}

std::uint32_t FindScript(char32_t character) noexcept
{
    const hb_script_t script = hb_unicode_script(hb_unicode_funcs_get_default(), character);
    const bool isOwn =
        script != HB_SCRIPT_COMMON && script != HB_SCRIPT_INHERITED && script != HB_SCRIPT_UNKNOWN;
    return isOwn ? hb_script_to_iso15924_tag(script) : 0;
}

bool ExtendsCluster(char32_t character) noexcept
{
    const auto category = hb_unicode_general_category(hb_unicode_funcs_get_default(), character);
    switch (category) {
    case HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK:
        return true;
    default:
        break;
    }
    const bool isJoiner = character == 0x200C || character == 0x200D;
    const bool isSelector = (character >= 0xFE00 && character <= 0xFE0F) ||
                            (character >= 0xE0100 && character <= 0xE01EF);
    const bool isSkinTone = character >= 0x1F3FB && character <= 0x1F3FF;
    return isJoiner || isSelector || isSkinTone;
}

} // namespace Geometry
