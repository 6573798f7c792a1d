#include <renderer/paint/FillBlendMode.h>

#include <array>

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
    std::vector<std::int32_t> values{0,  1,  3,  4,  6,  8,  9,  10, 11, 12, 13, 14, 15, 17,
                                     18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 30, 31, 32};
    Register(values);
    for (const std::vector<std::int32_t>& added :
         {std::vector<std::int32_t>{2, 7, 16}, {29}, {5}}) {
        values.insert(values.end(), added.begin(), added.end());
        Register(values);
    }
}

Kernel::String FillBlendMode::ToString(BlendMode mode, bool restricted)
{
    const auto index = static_cast<unsigned>(mode);
    if (index >= Rows.size() || (restricted && !Rows[index].common))
        return {};
    return Rows[index].name;
}

} // namespace Renderer
