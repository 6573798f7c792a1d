#include <raster/RasterBrush.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <span>
#include <utility>

#include <kernel/EnumSerialiserOf.h>
#include <kernel/FormatException.h>
#include <kernel/SavedItems.h>
#include <raster/CompressedRasterData.h>

namespace Raster {

namespace {

/// Hands each number to \p visit, with what it may be. The one list of them.
template<class Settings, class Visit>
void ForEachNumber(Settings& settings, const Visit& visit)
{
    visit(Kernel::IDTag("Spac"), settings.spacing, 0.01, 100.0);
    visit(Kernel::IDTag("Rota"), settings.rotation, -1000.0, 1000.0);
    visit(Kernel::IDTag("Opac"), settings.opacity, 0.0, 1.0);
    visit(Kernel::IDTag("JPos"), settings.positionJitter, 0.0, 100.0);
    visit(Kernel::IDTag("JAng"), settings.angleJitter, 0.0, std::numbers::pi);
    visit(Kernel::IDTag("JSiz"), settings.sizeJitter, 0.0, 1.0);
    visit(Kernel::IDTag("JOpa"), settings.opacityJitter, 0.0, 1.0);
    visit(Kernel::IDTag("PSiz"), settings.sizeByPressure, 0.0, 1.0);
    visit(Kernel::IDTag("POpa"), settings.opacityByPressure, 0.0, 1.0);
}

/// The numbers in the order of ForEachNumber.
using Numbers = std::array<double, 9>;

Numbers GetNumbers(const BrushSettings& settings)
{
    Numbers numbers;
    auto next = numbers.begin();
    ForEachNumber(settings, [&](Kernel::IDTag, double value, double, double) { *next++ = value; });
    return numbers;
}

BrushSettings BringIntoRange(BrushSettings settings)
{
    const Numbers defaults = GetNumbers({});
    auto standard = defaults.begin();
    ForEachNumber(settings, [&](Kernel::IDTag, double& value, double least, double most) {
        value = std::isfinite(value) ? std::clamp(value, least, most) : *standard;
        ++standard;
    });
    return settings;
}

/// Whether both are the same bytes, which are read piece by piece.
bool AreSameBytes(const Kernel::DelayLoadHolder& a, const Kernel::DelayLoadHolder& b)
{
    if (a == b || a.GetSize() != b.GetSize())
        return a == b;
    try {
        std::array<unsigned char, 4096> some, others;
        for (std::uint64_t at = 0; at < a.GetSize(); at += some.size()) {
            const auto count = std::min<std::uint64_t>(some.size(), a.GetSize() - at);
            const auto size = static_cast<std::size_t>(count);
            a.Read(at, std::span(some).first(size));
            b.Read(at, std::span(others).first(size));
            if (std::memcmp(some.data(), others.data(), size) != 0)
                return false;
        }
        return true;
    } catch (const Kernel::FormatException&) { // the document was cut short
        return false;
    }
}

/// Tips are compared by their compressed form, since line styles are compared while a document is
/// loaded, and what is equal must not change when a tip is decoded.
bool AreSameTips(const DynamicBitmap& a, const DynamicBitmap& b)
{
    return a.GetFormat() == b.GetFormat() && a.GetWidth() == b.GetWidth() &&
           a.GetHeight() == b.GetHeight() && a.GetProfile() == b.GetProfile() &&
           AreSameBytes(a.GetCompressedData()->GetBytes(), b.GetCompressedData()->GetBytes());
}

} // namespace

bool operator==(const BrushSettings& a, const BrushSettings& b) noexcept
{
    return a.mode == b.mode && a.tipUse == b.tipUse && a.overlap == b.overlap &&
           a.followsPath == b.followsPath && a.seed == b.seed &&
           std::ranges::equal(GetNumbers(a), GetNumbers(b), Kernel::SavedItems::AreClose);
}

RasterBrush::RasterBrush(Kernel::Counted<const DynamicBitmap> tip, const Settings& settings)
    : m_tip(std::move(tip)), m_settings(BringIntoRange(settings))
{}

RasterBrush::~RasterBrush() = default;

const Kernel::ClassProperties& RasterBrush::GetTypeClassProperties()
{
    static const auto& record = *new Kernel::ClassProperties(
        "RBru", &CreateObject, 1, __GetDefaultSerialisation(), nullptr, "RasterBrush");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = RasterBrush::GetTypeClassProperties();

} // namespace

namespace {

/// The values of an enum whose last one is \p last.
template<class Enum, Enum Last>
class EnumValues final : public Kernel::EnumSerialiserOf<EnumValues<Enum, Last>>
{
    friend class Kernel::EnumSerialiserOf<EnumValues<Enum, Last>>;
    EnumValues() { this->RegisterCount(static_cast<std::int32_t>(Last) + 1); }
};
using Modes = EnumValues<BrushSettings::Mode, BrushSettings::Mode::Stretched>;
using TipUses = EnumValues<BrushSettings::TipUse, BrushSettings::TipUse::OwnColours>;
using Overlaps = EnumValues<BrushSettings::Overlap, BrushSettings::Overlap::BuildUp>;

} // namespace

template<class Self, class Items>
void RasterBrush::ListItems(Self& self, Items&& items)
{
    items.OptionalObject("Tip_", self.m_tip);
    items.Enum("Mode", Modes::GetInstance(), self.m_settings.mode);
    items.Enum("TipU", TipUses::GetInstance(), self.m_settings.tipUse);
    items.Enum("Ovlp", Overlaps::GetInstance(), self.m_settings.overlap);
    items.Optional("Foll", self.m_settings.followsPath, true);
    const Numbers defaults = GetNumbers({});
    auto standard = defaults.begin();
    ForEachNumber(self.m_settings, [&](Kernel::IDTag tag, auto& number, double, double) {
        items.Optional(tag, number, *standard++);
    });
}

void RasterBrush::Save(Kernel::OutSerialiser& out) const
{
    ListItems(*this, Kernel::SavedItems::Writer(out));
    if (m_settings.seed != 0)
        out.SaveTypeI("Seed", static_cast<std::int32_t>(m_settings.seed));
}

bool RasterBrush::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    ListItems(*this, Kernel::SavedItems::Reader(in));
    std::int32_t seed = 0;
    if (in.LoadTypeI("Seed", seed))
        m_settings.seed = static_cast<std::uint32_t>(seed);
    m_settings = BringIntoRange(m_settings);
    return static_cast<bool>(m_tip);
}

void RasterBrush::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.Add(m_settings.mode);
    hash.Add(m_settings.tipUse);
    hash.Add(m_settings.overlap);
    hash.Add(m_settings.followsPath);
    hash.Add(m_settings.seed);
    for (const double number : GetNumbers(m_settings))
        hash.Add(number);
    if (m_tip) {
        hash.Add(m_tip->GetFormat());
        hash.Add(m_tip->GetWidth());
        hash.Add(m_tip->GetHeight());
        hash.Add(m_tip->GetCompressedData()->GetHash());
    }
}

Kernel::Counted<RasterBrush> RasterBrush::Clone() const
{
    return Kernel::MakeCounted<RasterBrush>(*this);
}

double RasterBrush::GetTipLength() const noexcept
{
    return m_tip ? double(m_tip->GetWidth()) / double(m_tip->GetHeight()) : 0.0;
}

double RasterBrush::GetReach() const noexcept
{
    if (m_settings.mode != Settings::Mode::Stamped)
        return 0.5;
    return 0.5 * std::hypot(1.0, GetTipLength()) + m_settings.positionJitter;
}

bool operator==(const RasterBrush& a, const RasterBrush& b)
{
    if (!(a.m_settings == b.m_settings))
        return false;
    if (a.m_tip == b.m_tip || !a.m_tip || !b.m_tip)
        return a.m_tip == b.m_tip;
    return AreSameTips(*a.m_tip, *b.m_tip);
}

} // namespace Raster
