#include <renderer/paint/FillSolid.h>

#include <kernel/Format.h>
#include <kernel/SavedItems.h>
#include <renderer/paint/ColourRGB.h>
#include <renderer/paint/ColourVisitor.h>

namespace Renderer {

FillSolid::FillSolid() : FillSolid(nullptr) {}

FillSolid::FillSolid(const Kernel::Consolidated<Colour>& colour) : m_colour(colour)
{
    if (!m_colour)
        m_colour = ColourRGB::Create(Raster::PixelRGBAUF{0, 0, 0, 1});
}

Kernel::Consolidated<FillSolid> FillSolid::Create(const Kernel::Consolidated<Colour>& colour)
{
    return Share(Kernel::MakeCounted<FillSolid>(colour));
}

const Kernel::SharedClassProperties& FillSolid::GetTypeSharedClassProperties()
{
    static const auto& record =
        *new Kernel::SharedClassProperties("FilS", &CreateObject, 1, __GetDefaultSerialisation(),
                                           &Fill::GetTypeSharedClassProperties(), "FillSolid");
    return record;
}

namespace {

[[maybe_unused]] const auto& registration = FillSolid::GetTypeSharedClassProperties();

} // namespace

template<class Self, class Items>
void FillSolid::ListItems(Self& self, Items&& items)
{
    items.Required("Colr", self.m_colour);
}

void FillSolid::Save(Kernel::OutSerialiser& out) const
{
    ListItems(*this, Kernel::SavedItems::Writer(out));
}

bool FillSolid::Load(const Kernel::InSerialiser& in, Kernel::FileStore&, unsigned short)
{
    Kernel::SavedItems::Reader items(in);
    ListItems(*this, items);
    return items.IsComplete();
}

void FillSolid::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    hash.AddAddress(m_colour.Get());
}

bool FillSolid::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    return m_colour == static_cast<const FillSolid&>(other).m_colour;
}

Kernel::String FillSolid::GetCSSAttributes(const Raster::AffineTransform::Params&) const
{
    const Kernel::String colour = m_colour->GetCSSAttributes();
    return colour.IsEmpty() ? colour : Kernel::FormatVT("background-color: %1;", colour);
}

Kernel::Counted<const Fill> FillSolid::Accept(ColourVisitor& visitor) const
{
    const auto answer = m_colour->Accept(visitor);
    if (!answer || answer == m_colour.GetCounted())
        return Kernel::Counted<const Fill>(this);
    return Create(Colour::Consolidate(answer)).GetCounted();
}

void FillSolid::ChangeColours(ColourChange change, double value)
{
    m_colour = Colour::Modify(*m_colour, [&](Colour& colour) { change(colour, value); });
}

} // namespace Renderer
