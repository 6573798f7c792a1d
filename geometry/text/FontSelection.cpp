#include <geometry/text/FontSelection.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <vector>

#include <geometry/text/FontCatalogue.h>
#include <geometry/text/FontFamilies.h>
#include <kernel/FormatException.h>

namespace Geometry {

namespace {

using Face = Kernel::Counted<const FontFace>;

/// A table that starts afresh when it is full. Who holds what was in it keeps it.
template<class Key, class Value, std::size_t MaxSize>
class BoundedTable
{
public:
    /// The value for a key, made by \p make() where it is not there.
    template<class Make>
    Value Get(const Key& key, const Make& make)
    {
        const std::lock_guard lock(m_mutex);
        if (const auto found = m_values.find(key); found != m_values.end())
            return found->second;
        Value value = make();
        if (m_values.size() >= MaxSize)
            m_values.clear();
        return m_values.emplace(key, std::move(value)).first->second;
    }

private:
    std::mutex m_mutex;
    std::map<Key, Value> m_values;
};

/// The face of a candidate, or null when its file is damaged.
Face LoadFace(const FontCandidate& candidate)
{
    using Key = std::tuple<std::string, unsigned, double, bool>;
    // Never destroyed: other static objects may draw text when the program ends.
    static auto& faces = *new BoundedTable<Key, Face, 256>;
    const FontSynthesis& synthesis = candidate.synthesis;
    return faces.Get({candidate.path, candidate.index, synthesis.slant, synthesis.bold},
                     [&]() -> Face {
                         try {
                             return FontFace::Load(candidate.path, candidate.index, synthesis);
                         } catch (const Kernel::FormatException&) {
                             return {};
                         }
                     });
}

} // namespace

struct FontSelection::Contents
{
    Kernel::Font font;
    std::string language;
    Face face;
    Kernel::String missingFamily;
    bool isAlone = false;

    std::mutex mutex; ///< of what follows
    std::optional<std::vector<FontCandidate>> others;
    std::unordered_map<char32_t, Face> known; ///< for characters that the face lacks

    const std::vector<FontCandidate>& GetOthers()
    {
        if (!others)
            others = ListFaces(font, language);
        return *others;
    }
    void FindNearest();
    Face FindOther(char32_t character);
};

void FontSelection::Contents::FindNearest()
{
    FontCandidate nearest = FindNearestFace(font, language);
    if (!nearest.path.empty())
        face = LoadFace(nearest);
    for (std::size_t i = 0; !face && i < GetOthers().size(); ++i) {
        nearest = (*others)[i];
        face = LoadFace(nearest);
    }
    const std::vector<std::string> wanted = SplitFamilies(font.GetFamily());
    if (wanted.empty() || IsGenericFamily(wanted.front()))
        return;
    const auto isWanted = [&](const std::string& name) {
        return IsSameFamily(name, wanted.front());
    };
    if (!face || std::ranges::none_of(nearest.families, isWanted))
        missingFamily = wanted.front();
}

Face FontSelection::Contents::FindOther(char32_t character)
{
    for (const FontCandidate& other : GetOthers()) {
        if (!other.HasCharacter(character))
            continue;
        if (Face found = LoadFace(other); found && found->FindGlyph(character) != 0)
            return found;
    }
    return face;
}

FontSelection::FontSelection(std::unique_ptr<Contents> contents) : m_contents(std::move(contents))
{}

FontSelection::FontSelection(Face face) : m_contents(std::make_unique<Contents>())
{
    m_contents->face = std::move(face);
    m_contents->isAlone = true;
}

FontSelection::~FontSelection() = default;

Kernel::Counted<const FontSelection> FontSelection::Find(const Kernel::Font& font,
                                                         const std::string& language)
{
    using Selection = Kernel::Counted<const FontSelection>;
    using Key = std::tuple<std::string, int, int, bool, std::string>;
    static auto& selections = *new BoundedTable<Key, Selection, 256>;
    return selections.Get({font.GetFamily().GetStdString(), font.GetWeight(), font.GetStretch(),
                           font.IsItalic(), language},
                          [&] {
                              auto contents = std::make_unique<Contents>();
                              contents->font = font;
                              contents->language = language;
                              contents->FindNearest();
                              return Selection(new FontSelection(std::move(contents)));
                          });
}

const Face& FontSelection::GetFace() const noexcept
{
    return m_contents->face;
}

const Kernel::String& FontSelection::GetMissingFamily() const noexcept
{
    return m_contents->missingFamily;
}

const Face& FontSelection::FindFace(char32_t character) const
{
    Contents& contents = *m_contents;
    if (contents.isAlone || !contents.face || contents.face->FindGlyph(character) != 0)
        return contents.face;
    const std::lock_guard lock(contents.mutex);
    const auto found = contents.known.find(character);
    if (found != contents.known.end())
        return found->second;
    return contents.known.emplace(character, contents.FindOther(character)).first->second;
}

} // namespace Geometry
