#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <raster/ColourTransform.h>

namespace Raster {

/// What an OpenColorIO configuration is asked for.
struct OpenColorIOSettings
{
    std::filesystem::path configuration; ///< the file, `config.ocio`
    std::string source;                  ///< the colour space or role that the pixels are in
    std::string destination; ///< the one that they are brought into; not used with a display
    std::string display;     ///< a display of the configuration, or empty
    std::string view;        ///< a view of that display
};

/// Brings colours from one colour space of an OpenColorIO configuration into another, or to a view
/// of a display. The pixels are taken for what the configuration calls the source space: profiles
/// play no part. Two are equal when they compute the same, wherever their configurations came from.
/// OpenColorIO keeps the tables that it has read, by their files' names, until the process ends.
class RASTER_EXPORT OpenColorIOAdjustment final : public ColourTransform
{
public:
    /// Reads the configuration and the tables that the transform needs.
    /// \throws Kernel::FormatException when they cannot be read, or lack what is asked for.
    static Kernel::Counted<OpenColorIOAdjustment> Create(const OpenColorIOSettings& settings);

    ~OpenColorIOAdjustment() override;

    void Apply(PixelRGBAF* pixels, std::size_t count,
               const ICCManager::ICCProfileSet& profiles) const override;
    bool IsIdentity() const override;
    std::uint64_t GetHash() const override;
    bool IsEqual(const ColourTransform& other) const override;

private:
    struct Processor;

    explicit OpenColorIOAdjustment(std::unique_ptr<const Processor> processor) noexcept;

    std::unique_ptr<const Processor> m_processor;
};

} // namespace Raster
