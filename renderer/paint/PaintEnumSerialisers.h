#pragma once

#include <kernel/EnumSerialiserOf.h>
#include <renderer/Export.h>

namespace Renderer {

/// The values of FillGradient::FillGradientType in files.
class RENDERER_EXPORT FillGradientTypeEnumSerialiser final
    : public Kernel::EnumSerialiserOf<FillGradientTypeEnumSerialiser>
{
    friend class Kernel::EnumSerialiserOf<FillGradientTypeEnumSerialiser>;
    FillGradientTypeEnumSerialiser() { RegisterCount(4); }
};

/// The values of FillGradient::Spread in files.
class RENDERER_EXPORT FillGradientSpreadEnumSerialiser final
    : public Kernel::EnumSerialiserOf<FillGradientSpreadEnumSerialiser>
{
    friend class Kernel::EnumSerialiserOf<FillGradientSpreadEnumSerialiser>;
    FillGradientSpreadEnumSerialiser() { RegisterCount(3); }
};

} // namespace Renderer
