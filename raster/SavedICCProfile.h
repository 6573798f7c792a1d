#pragma once

#include <kernel/Consolidated.h>
#include <kernel/Counted.h>
#include <kernel/SavedClass.h>
#include <raster/ICCProfile.h>

namespace Raster {

/// A colour profile as a saved value, so that bitmaps of one profile share it in a file.
class SavedICCProfile final : public Kernel::SharedSavedClass<SavedICCProfile>
{
public:
    /// \pre \p profile is not null.
    static Kernel::Consolidated<SavedICCProfile>
    Create(const Kernel::Counted<const ICCProfile>& profile);
    SavedICCProfile() = default;

    void Save(Kernel::OutSerialiser& out) const override;
    /// Fails without the bytes of a profile that can be used.
    bool Load(const Kernel::InSerialiser& in, Kernel::FileStore& store,
              unsigned short version) override;
    void AccumulateHash(Kernel::HashAccumulator& hash) const override;
    static const Kernel::SharedClassProperties& GetTypeSharedClassProperties();

    const Kernel::Counted<const ICCProfile>& GetProfile() const noexcept { return m_profile; }

protected:
    bool CompareMembers(const Kernel::SharedSerialisable& other) const override;

private:
    Kernel::Counted<const ICCProfile> m_profile;
};

} // namespace Raster
