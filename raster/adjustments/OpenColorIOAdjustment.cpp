#include <raster/adjustments/OpenColorIOAdjustment.h>

#include <cmath>

#include <OpenColorIO/OpenColorIO.h>

#include <kernel/FormatException.h>
#include <kernel/HashAccumulator.h>

namespace Raster {

namespace OCIO = OCIO_NAMESPACE;

namespace {

/// Nothing that costs precision but powers by polynomials, which give the same bits on every
/// processor.
constexpr auto Optimization = static_cast<OCIO::OptimizationFlags>(
    OCIO::OPTIMIZATION_LOSSLESS | OCIO::OPTIMIZATION_FAST_LOG_EXP_POW);

OCIO::ConstProcessorRcPtr MakeProcessor(const OpenColorIOSettings& settings)
{
    const OCIO::ConstConfigRcPtr configuration =
        OCIO::Config::CreateFromFile(settings.configuration.c_str());
    if (settings.display.empty())
        return configuration->getProcessor(settings.source.c_str(), settings.destination.c_str());
    return configuration->getProcessor(settings.source.c_str(), settings.display.c_str(),
                                       settings.view.c_str(), OCIO::TRANSFORM_DIR_FORWARD);
}

} // namespace

/// Shared by threads: applying it changes nothing.
struct OpenColorIOAdjustment::Processor
{
    OCIO::ConstCPUProcessorRcPtr cpu;
    std::string identity; ///< tells what is computed
};

Kernel::Counted<OpenColorIOAdjustment>
OpenColorIOAdjustment::Create(const OpenColorIOSettings& settings)
{
    try {
        auto processor = std::make_unique<Processor>();
        processor->cpu = MakeProcessor(settings)->getOptimizedCPUProcessor(
            OCIO::BIT_DEPTH_F32, OCIO::BIT_DEPTH_F32, Optimization);
        processor->identity = processor->cpu->getCacheID();
        return Kernel::Counted<OpenColorIOAdjustment>(
            new OpenColorIOAdjustment(std::move(processor)));
    } catch (const OCIO::Exception& error) {
        throw Kernel::FormatException("colour configuration: " + std::string(error.what()));
    }
}

OpenColorIOAdjustment::OpenColorIOAdjustment(std::unique_ptr<const Processor> processor) noexcept
    : m_processor(std::move(processor))
{}

OpenColorIOAdjustment::~OpenColorIOAdjustment() = default;

void OpenColorIOAdjustment::Apply(PixelRGBAF* pixels, std::size_t count,
                                  const ICCManager::ICCProfileSet&) const
{
    if (count == 0 || IsIdentity())
        return;
    for (std::size_t i = 0; i < count; ++i) {
        for (float& channel : pixels[i].channels)
            channel = std::isfinite(channel) ? channel : 0.0f; // tables are looked up by them
    }
    OCIO::PackedImageDesc image(pixels, long(count), 1, 4);
    m_processor->cpu->apply(image);
}

bool OpenColorIOAdjustment::IsIdentity() const
{
    return m_processor->cpu->isNoOp();
}

std::uint64_t OpenColorIOAdjustment::GetHash() const
{
    Kernel::HashAccumulator hash;
    hash.Add(std::string_view(m_processor->identity));
    return hash.GetHash();
}

bool OpenColorIOAdjustment::IsEqual(const ColourTransform& other) const
{
    const auto* same = dynamic_cast<const OpenColorIOAdjustment*>(&other);
    return same && same->m_processor->identity == m_processor->identity;
}

} // namespace Raster
