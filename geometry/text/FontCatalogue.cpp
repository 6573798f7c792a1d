#include <geometry/text/FontCatalogue.h>

#include <array>
#include <mutex>

#include <fontconfig/fontconfig.h>

#include <geometry/text/FontFamilies.h>

namespace Geometry {

namespace {

struct PatternDestroyer
{
    void operator()(FcPattern* pattern) const noexcept { FcPatternDestroy(pattern); }
};
struct FontSetDestroyer
{
    void operator()(FcFontSet* set) const noexcept { FcFontSetDestroy(set); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDestroyer>;
using FontSet = std::unique_ptr<FcFontSet, FontSetDestroyer>;

/// Fontconfig is asked by one thread at a time.
std::mutex& GetMutex()
{
    static std::mutex mutex;
    return mutex;
}

/// Widths of fontconfig for stretches from 1 to 9.
constexpr std::array<int, 9> Widths{
    FC_WIDTH_ULTRACONDENSED, FC_WIDTH_EXTRACONDENSED, FC_WIDTH_CONDENSED,
    FC_WIDTH_SEMICONDENSED,  FC_WIDTH_NORMAL,         FC_WIDTH_SEMIEXPANDED,
    FC_WIDTH_EXPANDED,       FC_WIDTH_EXTRAEXPANDED,  FC_WIDTH_ULTRAEXPANDED};

const FcChar8* ToChars(const std::string& text)
{
    return reinterpret_cast<const FcChar8*>(text.c_str());
}

Pattern MakePattern(const Kernel::Font& font, std::string_view language)
{
    Pattern pattern(FcPatternCreate());
    for (const std::string& family : SplitFamilies(font.GetFamily()))
        FcPatternAddString(pattern.get(), FC_FAMILY, ToChars(family));
    FcPatternAddDouble(pattern.get(), FC_WEIGHT, FcWeightFromOpenTypeDouble(font.GetWeight()));
    FcPatternAddInteger(pattern.get(), FC_SLANT,
                        font.IsItalic() ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddInteger(pattern.get(), FC_WIDTH, Widths[std::size_t(font.GetStretch() - 1)]);
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    // Named instances of variable fonts have a shape of their own; the fonts themselves don't.
    FcPatternAddBool(pattern.get(), FC_VARIABLE, FcFalse);
    // Otherwise the language would be that of the environment, and so would the face.
    FcPatternAddString(pattern.get(), FC_LANG,
                       ToChars(language.empty() ? "en" : std::string(language)));
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    return pattern;
}

bool IsOpenType(FcPattern* pattern)
{
    FcChar8* format = nullptr;
    if (FcPatternGetString(pattern, FC_FONTFORMAT, 0, &format) != FcResultMatch)
        return false;
    const std::string_view name(reinterpret_cast<const char*>(format));
    return name == "TrueType" || name == "CFF";
}

FontCandidate MakeCandidate(FcPattern* pattern)
{
    FontCandidate candidate;
    FcChar8* text = nullptr;
    if (!IsOpenType(pattern) || FcPatternGetString(pattern, FC_FILE, 0, &text) != FcResultMatch)
        return candidate;
    candidate.path = reinterpret_cast<const char*>(text);
    int index = 0;
    if (FcPatternGetInteger(pattern, FC_INDEX, 0, &index) == FcResultMatch)
        candidate.index = unsigned(index);
    if (candidate.index >> 16 == 0x8000) // a variable font as such: its default shape
        candidate.index &= 0xFFFF;
    for (int i = 0; FcPatternGetString(pattern, FC_FAMILY, i, &text) == FcResultMatch; ++i)
        candidate.families.emplace_back(reinterpret_cast<const char*>(text));
    FcBool embolden = FcFalse;
    FcPatternGetBool(pattern, FC_EMBOLDEN, 0, &embolden);
    candidate.synthesis.bold = embolden == FcTrue;
    FcMatrix* matrix = nullptr;
    if (FcPatternGetMatrix(pattern, FC_MATRIX, 0, &matrix) == FcResultMatch && matrix->yy != 0.0)
        candidate.synthesis.slant = matrix->xy / matrix->yy;
    FcCharSet* characters = nullptr;
    if (FcPatternGetCharSet(pattern, FC_CHARSET, 0, &characters) == FcResultMatch) {
        candidate.characters =
            std::shared_ptr<const void>(FcCharSetCopy(characters), [](const void* set) {
                FcCharSetDestroy(static_cast<FcCharSet*>(const_cast<void*>(set)));
            });
    }
    return candidate;
}

} // namespace

bool FontCandidate::HasCharacter(char32_t character) const
{
    return characters &&
           FcCharSetHasChar(static_cast<const FcCharSet*>(characters.get()), character);
}

FontCandidate FindNearestFace(const Kernel::Font& font, std::string_view language)
{
    const std::lock_guard lock(GetMutex());
    const Pattern pattern = MakePattern(font, language);
    FcResult result = FcResultMatch;
    const Pattern match(FcFontMatch(nullptr, pattern.get(), &result));
    return match ? MakeCandidate(match.get()) : FontCandidate();
}

std::vector<FontCandidate> ListFaces(const Kernel::Font& font, std::string_view language)
{
    const std::lock_guard lock(GetMutex());
    std::vector<FontCandidate> candidates;
    const Pattern pattern = MakePattern(font, language);
    FcResult result = FcResultMatch;
    const FontSet sorted(FcFontSort(nullptr, pattern.get(), FcTrue, nullptr, &result));
    for (int i = 0; sorted && i < sorted->nfont; ++i) {
        const Pattern full(FcFontRenderPrepare(nullptr, pattern.get(), sorted->fonts[i]));
        FontCandidate candidate = full ? MakeCandidate(full.get()) : FontCandidate();
        if (!candidate.path.empty())
            candidates.push_back(std::move(candidate));
    }
    return candidates;
}

} // namespace Geometry
