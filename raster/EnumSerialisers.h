#pragma once

#include <kernel/EnumSerialiserOf.h>
#include <raster/Export.h>

namespace Raster {

/// The values of Format in files: those that store pixels.
class RASTER_EXPORT FormatEnumSerialiser final
    : public Kernel::EnumSerialiserOf<FormatEnumSerialiser>
{
    friend class Kernel::EnumSerialiserOf<FormatEnumSerialiser>;
    FormatEnumSerialiser() { Register({0, 1, 2, 3, 4, 5, 6, 7, 9, 10}); }
};

/// The values of ExtendType in files.
class RASTER_EXPORT ExtendTypeEnumSerialiser final
    : public Kernel::EnumSerialiserOf<ExtendTypeEnumSerialiser>
{
    friend class Kernel::EnumSerialiserOf<ExtendTypeEnumSerialiser>;
    ExtendTypeEnumSerialiser() { RegisterCount(5); }
};

/// The values of ResamplerType in files.
class RASTER_EXPORT ResamplerTypeEnumSerialiser final
    : public Kernel::EnumSerialiserOf<ResamplerTypeEnumSerialiser>
{
    friend class Kernel::EnumSerialiserOf<ResamplerTypeEnumSerialiser>;
    ResamplerTypeEnumSerialiser() { RegisterCount(4); }
};

/// The values of blend modes in files, of four generations.
class RASTER_EXPORT BlendModeTypeEnumSerialiser final
    : public Kernel::EnumSerialiserOf<BlendModeTypeEnumSerialiser>
{
    friend class Kernel::EnumSerialiserOf<BlendModeTypeEnumSerialiser>;
    BlendModeTypeEnumSerialiser();
};

} // namespace Raster
