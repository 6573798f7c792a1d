#include <raster/EnumSerialisers.h>

namespace Raster {

BlendModeTypeEnumSerialiser::BlendModeTypeEnumSerialiser()
{
    std::vector<std::int32_t> values{0,  1,  3,  4,  6,  8,  9,  10, 11, 12, 13, 14, 15, 17,
                                     18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 30, 31, 32};
    Register(values);
    for (const std::vector<std::int32_t>& added :
         {std::vector<std::int32_t>{2, 7, 16}, {29}, {5}}) {
        values.insert(values.end(), added.begin(), added.end());
        Register(values);
    }
}

} // namespace Raster
