#include <renderer/paint/FillBlendMode.h>

#include <array>

#include <raster/EnumSerialisers.h>

namespace Renderer {

namespace {

struct Row
{
    const char* name;
    bool common; // known to other programs' documents
};

constexpr std::array<Row, 32> Rows{{
    {"Normal", true},     {"Darken", true},       {"DarkerColor", true},
    {"Multiply", true},   {"ColorBurn", true},    {"LinearBurn", true},
    {"Lighten", true},    {"LighterColor", true}, {"Screen", true},
    {"ColorDodge", true}, {"Add", false},         {"Overlay", true},
    {"SoftLight", true},  {"HardLight", true},    {"VividLight", false},
    {"PinLight", false},  {"LinearLight", false}, {"HardMix", false},
    {"Difference", true}, {"Exclusion", true},    {"Subtract", false},
    {"Hue", true},        {"Saturation", true},   {"Luminosity", true},
    {"Color", true},      {"Average", false},     {"Negation", false},
    {"Reflect", false},   {"Glow", false},        {"ContrastInvert", false},
    {"Erase", false},     {"Mask", false},
}};

} // namespace

FillBlendMode::BlendModeEnumSerialiser::BlendModeEnumSerialiser()
{
    const auto& same = Raster::BlendModeTypeEnumSerialiser::GetInstance();
    for (std::size_t i = 0; i < same.GetGenerationCount(); ++i)
        Register({same.GetGeneration(i).begin(), same.GetGeneration(i).end()});
}

Kernel::String FillBlendMode::ToString(BlendMode mode, bool restricted)
{
    const auto index = static_cast<unsigned>(mode);
    if (index >= Rows.size() || (restricted && !Rows[index].common))
        return {};
    return Rows[index].name;
}

} // namespace Renderer
