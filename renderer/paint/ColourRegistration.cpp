#include <renderer/paint/ColourRegistration.h>

#include <kernel/Localise.h>
#include <renderer/paint/ColourOfBody.h>

namespace Renderer {

/// All inks in full, or no light; never through profiles.
template<class P>
void MakePixel(const ColourRegistration&, P& pixel, bool /*applyTint*/,
               const Colour::ICCProfileSet&)
{
    for (std::size_t c = 0; c < P::ColourCount; ++c) {
        if (P::Roles[c] == Raster::ChannelRole::Subtractive)
            pixel[c] = P::Max;
        else if (P::Roles[c] == Raster::ChannelRole::Opponent)
            pixel[c] =
                ColourConversion::PaperWhite<typename P::ChannelType>(P::Roles[c]); // neutral
        else
            pixel[c] = 0;
    }
    pixel.Alpha() = P::Max;
}

Kernel::Consolidated<ColourRegistration>
ColourRegistration::Create(double tint, double intensity, const Kernel::String& globalName)
{
    return Share(Make(tint, intensity, globalName));
}

Kernel::Counted<ColourRegistration>
ColourRegistration::CreateFakeTemporary(double tint, double intensity,
                                        const Kernel::String& globalName)
{
    return Make(tint, intensity, globalName);
}

void ColourRegistration::AccumulateHash(Kernel::HashAccumulator& hash) const
{
    Colour::AccumulateHash(hash);
}

bool ColourRegistration::CompareMembers(const Kernel::SharedSerialisable& other) const
{
    return Colour::CompareMembers(other);
}

Kernel::String ColourRegistration::GetDefaultName() const
{
    return Colour::GetDefaultName(Kernel::Localise("Registration", "Registration Colour"));
}

void ColourRegistration::SetAlphaF(double) {}

bool ColourRegistration::AreUntintedColoursEqual(const Colour& other) const
{
    return other.GetType() == Registration;
}

template class ColourOf<ColourRegistration>;

namespace {

[[maybe_unused]] const auto& registration = ColourRegistration::GetTypeSharedClassProperties();

} // namespace

} // namespace Renderer
