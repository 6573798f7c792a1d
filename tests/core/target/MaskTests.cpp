// Clipping masks: where they lie, what they scale, how they nest.

#include <functional>
#include <limits>

#include <raster/AffineTransform.h>

#include "FormatFixture.h"

namespace Renderer {
namespace {

using CompositeInit = RenderTarget::CompositeInit;
using Kernel::Counted;
using Kernel::RectT;
using Raster::AffineTransform;
using Raster::DynamicBuffer;
using Raster::ResamplerType;
using enum RenderTarget::TransformScalarMode;

unsigned char Product(int a, int b)
{
    return static_cast<unsigned char>((a * b + 127) / 255);
}

class MaskTest : public TargetTest
{
protected:
    /// A byte per pixel, with both extremes and all between.
    static unsigned char ValueAt(unsigned x, unsigned y)
    {
        return static_cast<unsigned char>(x * 31 + y * y * 7);
    }

    static Counted<DynamicBuffer> MakeMask(unsigned width, unsigned height)
    {
        auto mask = DynamicBuffer::Create(Format::M8, width, height);
        for (unsigned y = 0; y < height; ++y)
            for (unsigned x = 0; x < width; ++x)
                mask->GetRow(y)[x] = ValueAt(x, y);
        return mask;
    }

    /// The same as white paint of that alpha.
    static Counted<DynamicBuffer> MakePaint(const DynamicBuffer& mask)
    {
        auto paint = DynamicBuffer::Create(Format::RGBA8, mask.GetWidth(), mask.GetHeight());
        for (unsigned y = 0; y < mask.GetHeight(); ++y)
            for (unsigned x = 0; x < mask.GetWidth(); ++x)
                std::memset(paint->GetRow(y) + 4 * x, mask.GetRow(y)[x], 4);
        return paint;
    }

    void PushGroup(float opacity = 1.0F, FillBlendMode::BlendMode mode = FillBlendMode::Normal)
    {
        target->PushComposite(CompositeInit::Clear, mode, BlendOptions::Identity(), opacity);
    }

    void FillAll() { Fill({-9, -9, Width + 9, Height + 9}, Red); }

    int AlphaAt(int x, int y) const { return At(x, y).Alpha(); }
};

TEST_F(MaskTest, ScaleWhateverIsDrawn)
{
    const auto mask = MakeMask(20, 15);
    const RectT<double> place{3, 4, 23, 19};
    const FillDescriptorConst red = Solid(Red);
    const LineStyleDescriptorConst wide(500.0);
    struct Case
    {
        const char* name;
        std::function<void()> draw;
        float opacity = 1.0F;
    };
    const auto picture = DynamicBuffer::Create(Format::RGBA8, 1, 1);
    std::memset(picture->GetData(), 255, 4);
    const auto curve = [&](float opacity, const FillDescriptorConst& fill) {
        target->DrawPolyCurve(Rectangle(-9, -9, 90, 90), opacity, FillBlendMode::Normal,
                              BlendOptions::Identity(), fill, {}, red, wide,
                              Geometry::WindingOrderMode::EvenOdd, true, true);
    };
    const std::vector<Case> cases{
        {"shape", [&] { FillAll(); }},
        {"stroke", [&] { curve(1.0F, {}); }},
        {"fill and stroke are one object", [&] { curve(1.0F, red); }},
        {"translucent fill and stroke", [&] { curve(0.5F, red); }, 0.5F},
        {"flood",
         [&] { target->Blend(1.0F, FillBlendMode::Normal, BlendOptions::Identity(), red, {}); }},
        {"buffer",
         [&] {
             target->DrawBuffer({-9, -9, 90, 90}, picture, 1.0F, FillBlendMode::Normal,
                                BlendOptions::Identity(), true);
         }},
        {"bitmap",
         [&] {
             target->DrawBitmap({-9, -9, 90, 90},
                                Kernel::MakeCounted<Raster::DynamicBitmap>(picture), 1.0F,
                                FillBlendMode::Normal, BlendOptions::Identity(), true);
         }},
        {"group",
         [&] {
             PushGroup(0.5F);
             EXPECT_FALSE(target->GetCurrentMaskBuffer()); // out of force inside
             FillAll();
             FillAll();
             target->PopCompositeAsFill({}, {});
         },
         0.5F},
        {"group as transparency",
         [&] {
             PushGroup();
             FillAll();
             target->PopCompositeAsTransparency(red, {});
         }},
        {"sub-render",
         [&] {
             const auto sub = target->PushSubRender({0, 0, Width, Height}, Format::RGBA8, {});
             sub->DrawRectangle({0, 0, Width, Height}, 1.0F, red, {}, {});
             target->PopSubRender({});
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        target->Clear();
        target->PushClippingMask(place, mask);
        c.draw();
        target->PopClippingMask();
        for (int y = 0; y < Height; ++y) {
            for (int x = 0; x < Width; ++x) {
                const bool inside = x >= 3 && x < 23 && y >= 4 && y < 19;
                const double full =
                    inside ? ValueAt(unsigned(x - 3), unsigned(y - 4)) * c.opacity : 0.0;
                ASSERT_NEAR(AlphaAt(x, y), full, c.opacity < 1.0F ? 1.0 : 0.0) << x << ", " << y;
            }
        }
    }
    FillAll();
    EXPECT_EQ(Area(), Width * Height);
}

/// A mask lets through what the same pixels as paint would cover.
TEST_F(MaskTest, LieWhereTheSamePaintWould)
{
    const auto mask = MakeMask(9, 7);
    const auto paint = MakePaint(*mask);
    const auto painted = Make();
    const AffineTransform::Params maps[]{{1, 0, 0, 0, 1, 0},       {1, 0, 0.5, 0, 1, 0.25},
                                         {2.5, 0, -3, 0, 1.75, 2}, {0.4, 0, 9, 0, 0.6, 8},
                                         {-1, 0, 30, 0, 1, 3},     {0, 1, 4, -1, 0, 25},
                                         {1.6, 0.7, 2, -0.6, 2, 9}};
    for (const auto& map : maps) {
        for (const auto up : {ResamplerType::NearestNeighbour, ResamplerType::Bilinear,
                              ResamplerType::Bicubic, ResamplerType::Lanczos3}) {
            for (const auto down : {ResamplerType::NearestNeighbour, ResamplerType::Bilinear}) {
                SCOPED_TRACE(testing::Message()
                             << map.m00 << ' ' << map.m01 << ' ' << int(up) << ' ' << int(down));
                const RectT<double> place{2, 3, 14, 10};
                for (const auto& t : {target, painted}) {
                    t->Clear();
                    t->SetUpResamplerType(up);
                    t->SetDownResamplerType(down);
                    t->PushTransform(map, Concatenate);
                }
                target->PushClippingMask(place, mask);
                painted->DrawBuffer(place, paint, 1.0F, FillBlendMode::Normal,
                                    BlendOptions::Identity());
                for (const auto& t : {target, painted})
                    t->PopTransform();
                FillAll();
                const auto force = target->GetCurrentMaskBuffer();
                target->PopClippingMask();
                for (int y = 0; y < Height; ++y) {
                    for (int x = 0; x < Width; ++x) {
                        ASSERT_NEAR(AlphaAt(x, y), PixelOf(painted, x, y).Alpha(), 1)
                            << x << ", " << y;
                        ASSERT_EQ(AlphaAt(x, y), force->GetRow(unsigned(y))[x]);
                    }
                }
            }
        }
    }
}

TEST_F(MaskTest, MultiplyWithEachOtherAndWithClips)
{
    const auto mask = MakeMask(20, 20);
    const auto expect = [&](const char* step, auto&& value) {
        target->Clear();
        FillAll();
        for (int y = 0; y < Height; ++y)
            for (int x = 0; x < Width; ++x)
                ASSERT_EQ(AlphaAt(x, y), value(x, y)) << step << " at " << x << ", " << y;
    };
    const auto at = [&](int x, int y, int left, int top) -> int {
        const bool inside = x >= left && x < left + 20 && y >= top && y < top + 20;
        return inside ? ValueAt(unsigned(x - left), unsigned(y - top)) : 0;
    };
    const auto one = [&](int x, int y) { return at(x, y, 2, 3); };
    const auto two = [&](int x, int y) { return Product(one(x, y), at(x, y, 8, 6)); };

    target->PushClippingMask({2, 3, 22, 23}, mask);
    expect("one", one);
    target->PushClippingMask({8, 6, 28, 26}, mask);
    expect("two", two);
    target->PushClipRectanglePath({0, 10, 40, 17});
    expect("clipped", [&](int x, int y) { return y >= 10 && y < 17 ? two(x, y) : 0; });
    target->PushClippingMask({9, 12, 29, 32}, mask); // within what the clip leaves
    expect("three", [&](int x, int y) {
        return y >= 12 && y < 17 ? Product(two(x, y), at(x, y, 9, 12)) : 0;
    });
    target->PopClippingMask();
    target->PopClipPath();
    expect("two again", two);

    // Inside a group other masks may be in force, and they end with it.
    PushGroup();
    target->PushClippingMask({8, 6, 28, 26}, mask);
    FillAll();
    target->PushClippingMask({0, 0, 1, 1}, mask);
    FillAll();
    target->Clear();
    FillAll();
    target->PopCompositeAsFill({}, {});
    expect("after a group", two);
    PushGroup();
    target->PopClippingMask(); // that is not the group's
    target->PopCompositeAsFill({}, {});
    target->PopClippingMask();
    expect("one again", one);
    target->PopClippingMask();
    target->PopClippingMask();
    expect("none", [](int, int) { return 255; });
}

TEST_F(MaskTest, ComeInAnyFormat)
{
    const struct
    {
        Format format;
        int expected; // of the pixel below
    } cases[]{{Format::M8, 100},     {Format::M16, 100},    {Format::MF, 100},
              {Format::IA8, 100},    {Format::IA16, 100},   {Format::RGBA8, 200},
              {Format::RGBA16, 200}, {Format::CMYKA8, 200}, {Format::LABA16, 200},
              {Format::RGBAUF, 200}};
    for (const auto& c : cases) {
        const auto mask = DynamicBuffer::Create(c.format, 2, 1);
        Raster::WithPixelOfFormat(c.format, false, [&]<class P>(P) {
            auto* const pixels = reinterpret_cast<P*>(mask->GetRow(0));
            constexpr bool isFloat = std::is_floating_point_v<typename P::ChannelType>;
            constexpr double unit = isFloat ? 1.0 / 255 : double(P::Max) / 255;
            P pixel;
            pixel.channels.fill(typename P::ChannelType(100 * unit));
            if (P::ColourCount > 0)
                pixel.Alpha() = typename P::ChannelType(200 * unit);
            pixels[0] = pixel;
            pixel = {};
            if constexpr (isFloat)
                pixel.channels.fill(std::numeric_limits<float>::quiet_NaN());
            pixels[1] = pixel;
            return true;
        });
        target->Clear();
        target->PushClippingMask({5, 5, 7, 6}, mask);
        FillAll();
        target->PopClippingMask();
        EXPECT_EQ(AlphaAt(5, 5), c.expected) << int(c.format);
        EXPECT_EQ(AlphaAt(6, 5), 0) << int(c.format);
    }
}

TEST_F(MaskTest, WhatCannotBeShownLetsNothingThrough)
{
    const auto mask = MakeMask(4, 4);
    constexpr double nan = std::numeric_limits<double>::quiet_NaN(), huge = 1e300,
                     infinity = std::numeric_limits<double>::infinity();
    const AffineTransform::Params identity;
    const struct
    {
        RectT<double> rect;
        Counted<const DynamicBuffer> mask;
        AffineTransform::Params map;
    } cases[]{{{0, 0, 9, 9}, {}, identity},
              {{9, 0, 9, 9}, mask, identity},
              {{9, 9, 0, 0}, mask, identity},
              {RectT<double>::MakeUnset(), mask, identity},
              {{nan, 0, 9, 9}, mask, identity},
              {{0, 0, infinity, 9}, mask, identity},
              {{-huge, -huge, -1e299, huge}, mask, identity},
              {{50, 50, 60, 60}, mask, identity},
              {{0, 0, 9, 9}, mask, {1, 2, 0, 2, 4, 0}},
              {{0, 0, 9, 9}, mask, {0, 0, 0, 0, 0, 0}},
              {{0, 0, 9, 9}, mask, {nan, 0, 0, 0, 1, 0}},
              {{0, 0, 9, 9}, mask, {1e300, 0, 1e300, 0, 1e300, 1e300}}};
    int index = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(index++);
        target->Clear();
        target->PushTransform(c.map, Concatenate);
        target->PushClippingMask(c.rect, c.mask);
        target->PopTransform();
        FillAll();
        PushGroup();
        FillAll();
        target->PushClippingMask({0, 0, 4, 4}, mask);
        FillAll();
        target->PopClippingMask();
        target->PopCompositeAsFill({}, {});
        EXPECT_EQ(Area(), 0);
        target->PopClippingMask();
        FillAll();
        EXPECT_EQ(Area(), Width * Height);
    }
    target->DetachBuffer();
    target->PushClippingMask({0, 0, 4, 4}, mask);
    EXPECT_FALSE(target->GetCurrentMaskBuffer());
    FillAll();
    target->PopClippingMask();
}

TEST_F(MaskTest, OnWholePixelsBytesAreNotCopied)
{
    const auto mask = MakeMask(8, 8);
    for (const auto& map : {AffineTransform::Translation(3, -2), AffineTransform::Scaling(2, 2)}) {
        const double side = 8 / map.m00;
        target->PushTransform(map, Concatenate);
        target->PushClippingMask({4, 4, 4 + side, 4 + side}, mask);
        EXPECT_EQ(mask->GetReferenceCount(), 2U);
        target->PopClippingMask();
        target->PushClippingMask({4.5, 4, 4.5 + side, 4 + side}, mask);
        EXPECT_EQ(mask->GetReferenceCount(), map.m00 == 2 ? 2U : 1U);
        target->PopClippingMask();
        target->PopTransform();
    }
}

} // namespace
} // namespace Renderer
