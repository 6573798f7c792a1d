#include <raster/ICCManager.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include <kernel/HashAccumulator.h>
#include <raster/ICCTransforms.h>

namespace Raster {

namespace {

using Profile = Kernel::Counted<const ICCProfile>;
using Transform = Kernel::Counted<const ICCTransform>;

/// The key of a cached transform keeps its profiles alive, so their addresses stay theirs.
struct TransformKey
{
    ICCSide from;
    ICCSide to;

    friend bool operator==(const TransformKey& a, const TransformKey& b) noexcept
    {
        return a.from.profile == b.from.profile && a.to.profile == b.to.profile &&
               a.from.layout == b.from.layout && a.to.layout == b.to.layout;
    }
};

struct TransformKeyHash
{
    std::size_t operator()(const TransformKey& key) const noexcept
    {
        Kernel::HashAccumulator hash;
        for (const ICCSide* side : {&key.from, &key.to}) {
            hash.AddAddress(side->profile.Get());
            hash.Add(side->layout.space);
            hash.Add(side->layout.depth);
        }
        return hash.GetHash();
    }
};

/// A place in the cache; whoever comes first makes the transform while others wait for it.
struct TransformSlot
{
    std::once_flag once;
    Transform transform;
    std::atomic<std::uint64_t> lastUse{0};
};

ColourSpace GetSpace(Format format)
{
    const auto layout = GetICCLayout(format);
    return layout ? layout->space : ColourSpace::HSL;
}

} // namespace

ICCTransform::~ICCTransform() = default;

/// The transforms in use, the least recently used thrown out, and the gammas of profiles. A
/// document needs some twenty transforms; a table of CMYK takes up to two megabytes.
struct ICCManager::Cache
{
    static constexpr std::size_t MaxTransforms = 64;
    static constexpr std::size_t MaxGammas = 64;

    std::shared_mutex mutex;
    std::unordered_map<TransformKey, std::shared_ptr<TransformSlot>, TransformKeyHash> transforms;
    std::atomic<std::uint64_t> clock{0};
    std::mutex gammaMutex;
    struct Gamma
    {
        Profile profile; ///< keeps its address from being used again
        double value;
    };
    std::unordered_map<const ICCProfile*, Gamma> gammas;

    Transform Get(const TransformKey& key)
    {
        const std::shared_ptr<TransformSlot> slot = GetSlot(key);
        std::call_once(slot->once, [&] { slot->transform = MakeICCTransform(key.from, key.to); });
        return slot->transform;
    }

private:
    std::shared_ptr<TransformSlot> GetSlot(const TransformKey& key)
    {
        const std::uint64_t now = clock.fetch_add(1, std::memory_order_relaxed);
        {
            const std::shared_lock lock(mutex);
            if (const auto found = transforms.find(key); found != transforms.end()) {
                found->second->lastUse.store(now, std::memory_order_relaxed);
                return found->second;
            }
        }
        std::shared_ptr<TransformSlot> dropped; // destroyed outside the lock
        const std::unique_lock lock(mutex);
        auto& slot = transforms[key];
        if (!slot)
            slot = std::make_shared<TransformSlot>();
        slot->lastUse.store(now, std::memory_order_relaxed);
        auto result = slot;
        if (transforms.size() > MaxTransforms)
            dropped = DropOldest();
        return result;
    }

    std::shared_ptr<TransformSlot> DropOldest()
    {
        const auto oldest = std::ranges::min_element(transforms, {}, [](const auto& entry) {
            return entry.second->lastUse.load(std::memory_order_relaxed);
        });
        auto slot = std::move(oldest->second);
        transforms.erase(oldest);
        return slot;
    }
};

ICCManager::ICCManager() : m_cache(std::make_unique<Cache>()) {}

ICCManager::~ICCManager() = default;

ICCManager& ICCManager::GetInstance()
{
    // Never destroyed: colours in other static objects may still convert while the process ends.
    static ICCManager& instance = *new ICCManager;
    return instance;
}

namespace {

/// The transform between two sides of which either profile may be empty, or null by the rules of
/// ICCManager::GetTransform.
template<class Cache>
Transform Find(Cache& cache, ICCSide from, ICCSide to)
{
    if (!from.profile && !to.profile)
        return nullptr;
    for (ICCSide* side : {&from, &to}) {
        if (!side->profile && side->layout.space == ColourSpace::RGB)
            side->profile = ICCManager::GetInstance().GetDefaultProfileForFormat(Format::RGBA8);
        if (!side->profile)
            return nullptr;
    }
    if (from.profile == to.profile && from.layout == to.layout)
        return nullptr;
    return cache.Get({std::move(from), std::move(to)});
}

const Profile& GetSlotOfSpace(const ICCManager::ICCProfileSet& profiles, ColourSpace space)
{
    static const Profile none;
    switch (space) {
    case ColourSpace::RGB:
        return profiles.GetRGB();
    case ColourSpace::Grey:
        return profiles.GetGrey();
    case ColourSpace::CMYK:
        return profiles.GetCMYK();
    case ColourSpace::LAB:
        return profiles.GetLAB();
    case ColourSpace::HSL:
        break;
    }
    return none;
}

} // namespace

Transform ICCManager::GetTransform(Format from, const ICCProfileSet& fromSet, Format to,
                                   const ICCProfileSet& toSet)
{
    const auto fromLayout = GetICCLayout(from);
    const auto toLayout = GetICCLayout(to);
    if (!fromLayout || !toLayout)
        return nullptr;
    return Find(*m_cache, {fromSet.GetProfile(from), *fromLayout},
                {toSet.GetProfile(to), *toLayout});
}

Transform ICCManager::GetFloatTransform(ColourSpace from, const ICCProfileSet& fromSet,
                                        ColourSpace to, const ICCProfileSet& toSet)
{
    return Find(*m_cache, {GetSlotOfSpace(fromSet, from), {from, ICCDepth::Float}},
                {GetSlotOfSpace(toSet, to), {to, ICCDepth::Float}});
}

bool ICCManager::DoTransform(Format from, const ICCProfileSet& fromSet, const void* source,
                             Format to, const ICCProfileSet& toSet, void* destination,
                             std::size_t count)
{
    const Transform transform = GetTransform(from, fromSet, to, toSet);
    if (!transform)
        return false;
    transform->Apply(source, destination, count);
    return true;
}

Profile ICCManager::GetDefaultProfileForFormat(Format format)
{
    switch (GetSpace(format)) {
    case ColourSpace::RGB: {
        static const Profile& rgb =
            *new Profile(ICCProfile::Create(MakeDefaultICCProfile(ColourSpace::RGB)));
        return rgb;
    }
    case ColourSpace::Grey: {
        static const Profile& grey =
            *new Profile(ICCProfile::Create(MakeDefaultICCProfile(ColourSpace::Grey)));
        return grey;
    }
    case ColourSpace::LAB: {
        static const Profile& lab =
            *new Profile(ICCProfile::Create(MakeDefaultICCProfile(ColourSpace::LAB)));
        return lab;
    }
    case ColourSpace::CMYK:
    case ColourSpace::HSL:
        break;
    }
    return nullptr;
}

Profile ICCManager::GetLinearRGBProfile()
{
    static const Profile& linear =
        *new Profile(ICCProfile::Create(MakeLinearICCProfile(SRGBChromaticities)));
    return linear;
}

double ICCManager::GetGammaForProfile(const Profile& profile)
{
    constexpr double none = 2.2;
    if (!profile)
        return none;
    {
        const std::scoped_lock lock(m_cache->gammaMutex);
        const auto known = m_cache->gammas.find(profile.Get());
        if (known != m_cache->gammas.end())
            return known->second.value;
    }
    const double gamma = EstimateICCGamma(*profile);
    const std::scoped_lock lock(m_cache->gammaMutex);
    if (m_cache->gammas.size() >= Cache::MaxGammas)
        m_cache->gammas.clear();
    m_cache->gammas.emplace(profile.Get(), Cache::Gamma{profile, gamma});
    return gamma;
}

} // namespace Raster
