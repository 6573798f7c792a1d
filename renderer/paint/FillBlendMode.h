#pragma once

#include <kernel/EnumSerialiserOf.h>
#include <kernel/String.h>
#include <renderer/Export.h>

namespace Renderer {

/// Names and numbers of the blend modes.
struct RENDERER_EXPORT FillBlendMode
{
    /// How paint combines with what lies below. The numbers are saved in documents. Modes from
    /// Erase on exist for composite groups only.
    enum BlendMode
    {
        Normal = 0,
        Darken = 1,
        DarkerColor = 2,
        Multiply = 3,
        ColorBurn = 4,
        LinearBurn = 5,
        Lighten = 6,
        LighterColor = 7,
        Screen = 8,
        ColorDodge = 9,
        Add = 10,
        Overlay = 11,
        SoftLight = 12,
        HardLight = 13,
        VividLight = 14,
        PinLight = 15,
        LinearLight = 16,
        HardMix = 17,
        Difference = 18,
        Exclusion = 19,
        Subtract = 20,
        Hue = 21,
        Saturation = 22,
        Luminosity = 23,
        Color = 24,
        Average = 25,
        Negation = 26,
        Reflect = 27,
        Glow = 28,
        ContrastInvert = 29,
        Erase = 30,
        Mask = 31,
        Nameless = 32, ///< composites as Normal; has no name
    };

    /// How many modes have a span blend function: Normal to ContrastInvert.
    static constexpr int SpanModeCount = 30;

    /// The mode's name, or the empty string for 32 and unknown values.
    /// \param restricted leaves out the modes that documents of other programs do not know.
    static Kernel::String ToString(BlendMode mode, bool restricted);

    /// The values in files, of four generations.
    class RENDERER_EXPORT BlendModeEnumSerialiser final
        : public Kernel::EnumSerialiserOf<BlendModeEnumSerialiser>
    {
        friend class Kernel::EnumSerialiserOf<BlendModeEnumSerialiser>;
        BlendModeEnumSerialiser();
    };
};

} // namespace Renderer
