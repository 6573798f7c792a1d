#include <renderer/core/blend/CoverageWeights.h>

#include <renderer/core/blend/IntegerArithmetic.h>

namespace Renderer::Blending {

namespace {

/// How coverage and mask bytes become weights of a type.
template<class Weight>
struct WeightUnit;

template<>
struct WeightUnit<float>
{
    static float OfCover(unsigned char cover) { return static_cast<float>(cover) / 255.0f; }
    static float OfGamma(const CoverageGamma& gamma, unsigned char cover)
    {
        return gamma.fractions[cover];
    }
    static float Masked(float weight, unsigned char mask) { return weight * OfCover(mask); }
};

template<>
struct WeightUnit<std::uint16_t>
{
    static std::uint16_t OfCover(unsigned char cover)
    {
        return static_cast<std::uint16_t>(cover * 257);
    }
    static std::uint16_t OfGamma(const CoverageGamma& gamma, unsigned char cover)
    {
        return gamma.words[cover];
    }
    static std::uint16_t Masked(std::uint16_t weight, unsigned char mask)
    {
        using Words = IntegerArithmetic<std::uint16_t>;
        return Words::DivideByMax(Words::Scale(weight, OfCover(mask)));
    }
};

template<>
struct WeightUnit<unsigned char>
{
    static unsigned char OfCover(unsigned char cover) { return cover; }
    static unsigned char OfGamma(const CoverageGamma&, unsigned char cover) { return cover; }
    static unsigned char Masked(unsigned char weight, unsigned char) { return weight; }
};

} // namespace

template<class Weight, class Covers>
void FillWeights(Weight* __restrict weights, Covers covers, const unsigned char* __restrict mask,
                 const CoverageGamma* gamma, unsigned count)
{
    using Unit = WeightUnit<Weight>;
    if (gamma) {
        for (unsigned i = 0; i < count; ++i)
            weights[i] = Unit::OfGamma(*gamma, covers[i]);
    } else {
        for (unsigned i = 0; i < count; ++i)
            weights[i] = Unit::OfCover(covers[i]);
    }
    if (mask) {
        for (unsigned i = 0; i < count; ++i)
            weights[i] = Unit::Masked(weights[i], mask[i]);
    }
}

template void FillWeights(float*, const unsigned char*, const unsigned char*, const CoverageGamma*,
                          unsigned);
template void FillWeights(float*, OneCover, const unsigned char*, const CoverageGamma*, unsigned);
template void FillWeights(std::uint16_t*, const unsigned char*, const unsigned char*,
                          const CoverageGamma*, unsigned);
template void FillWeights(std::uint16_t*, OneCover, const unsigned char*, const CoverageGamma*,
                          unsigned);
template void FillWeights(unsigned char*, const unsigned char*, const unsigned char*,
                          const CoverageGamma*, unsigned);
template void FillWeights(unsigned char*, OneCover, const unsigned char*, const CoverageGamma*,
                          unsigned);

} // namespace Renderer::Blending
