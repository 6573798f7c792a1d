// One drawing in all pixel formats, and what passes from one format to another.

#include <cstdlib>

#include "../../raster/icc/TestProfiles.h"
#include "FormatFixture.h"
#include <raster/DynamicBitmap.h>
#include <renderer/paint/ColourCMYK.h>
#include <renderer/paint/LineStyle.h>

namespace Renderer {
namespace {

using Geometry::WindingOrderMode;

constexpr int Side = 64;

/// A drawing of everything that depends on the format.
class Scene
{
public:
    /// \param grey draws in greys alone.
    explicit Scene(bool grey) : m_grey(grey) {}

    /// Solids on whole pixels, each over another.
    void DrawOpaque(RenderTarget& target) const
    {
        for (int i = 0; i < 16; ++i) {
            const double x = i % 4 * 14.0;
            const double y = i / 4 * 14.0;
            target.DrawRectangle(
                {x, y, x + 20, y + 20}, 1.0F,
                Solid(std::uint8_t(i * 17), std::uint8_t(255 - i * 13), std::uint8_t(i * 91), 255),
                {}, {});
        }
    }

    /// Translucency, edges, strokes, gradients, a bitmap, clips and groups.
    void DrawSoft(RenderTarget& target) const
    {
        const Raster::AffineTransform::Params frame{40, 10, 5, -10, 40, 8};
        target.DrawEllipse({3.3, 2.1, 60.2, 50.7}, 1.0F, Solid(200, 60, 30, 255), {}, {});
        target.DrawEllipse({20, 15, 63.5, 62}, 0.6F, Solid(20, 90, 220, 200), Solid(0, 0, 0, 255),
                           LineStyleDescriptorConst(2.5));
        for (const auto type : {FillGradient::Linear, FillGradient::Radial,
                                FillGradient::Elliptical, FillGradient::Conical}) {
            const double y = 4.0 + 14.0 * int(type);
            target.DrawRectangle({30.5, y, 60.5, y + 11}, 1.0F,
                                 MakeGradient(type,
                                              {Tone(250, 230, 20, 255), Tone(10, 120, 60, 255),
                                               Tone(120, 0, 200, 60)},
                                              frame),
                                 {}, {});
        }
        target.PushClipCurvesPath(Ellipse({0, 20, 40, 64}), WindingOrderMode::EvenOdd);
        target.PushComposite(RenderTarget::CompositeInit::Clear, FillBlendMode::Normal,
                             BlendOptions::Identity(), 0.75F);
        target.DrawRectangle({2, 22, 38, 60}, 1.0F, Solid(240, 240, 250, 255), {}, {});
        target.DrawBitmap({6.5, 26, 30.5, 56}, MakePicture(), 0.8F, FillBlendMode::Normal,
                          BlendOptions::Identity(), true);
        target.PopCompositeAsFill({}, {});
        target.PopClipPath();
    }

private:
    PixelRGBA8 Tone(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a) const
    {
        return m_grey ? PixelRGBA8{{g, g, g, a}} : PixelRGBA8{{r, g, b, a}};
    }
    FillDescriptorConst Solid(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a) const
    {
        return FillDescriptorConst::CreateSolid(Tone(r, g, b, a));
    }
    static Kernel::Counted<const Geometry::PolyCurveDbl> Ellipse(const Kernel::RectT<double>& rect)
    {
        auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
        path->AddEllipse({(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2},
                         rect.Width() / 2, rect.Height() / 2);
        return path;
    }
    Kernel::Counted<const Raster::DynamicBitmap> MakePicture() const
    {
        RGBA8Buffer view;
        EXPECT_TRUE(view.Create(6, 5));
        for (unsigned y = 0; y < 5; ++y)
            for (unsigned x = 0; x < 6; ++x)
                view.GetRow(y)[x] = Tone(std::uint8_t(40 * x), std::uint8_t(50 * y), 90, 255);
        return Kernel::MakeCounted<Raster::DynamicBitmap>(view.GetDynamicBuffer());
    }

    bool m_grey;
};

int GetLargestDifference(const std::vector<PixelRGBA8>& a, const std::vector<PixelRGBA8>& b)
{
    int largest = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t c = 0; c < 4; ++c)
            largest = std::max(largest, std::abs(int(a[i][c]) - int(b[i][c])));
    return largest;
}

/// By value: floats have two zeros.
bool HaveEqualPixels(const Raster::DynamicBuffer& a, const Raster::DynamicBuffer& b)
{
    return Raster::WithPixelOfFormat(a.GetFormat(), false, [&](auto pixel) {
        return PixelsOf<decltype(pixel)>(a) == PixelsOf<decltype(pixel)>(b);
    });
}

bool IsGrey(Format format)
{
    return format == Format::IA8 || format == Format::IA16;
}

TEST(Formats, EachHasATargetAndOthersHaveNone)
{
    for (int value = -1; value < 16; ++value) {
        const auto format = static_cast<Format>(value);
        const Kernel::Counted<BitmapRenderTarget> target(BitmapRenderTarget::Create(format, {}));
        const bool drawn = std::ranges::find(AllFormats, format) != std::end(AllFormats);
        ASSERT_EQ(bool(target), drawn) << value;
        if (!drawn)
            continue;
        EXPECT_EQ(target->GetColourFormat(), format);
        ASSERT_TRUE(target->CreateBuffer(3, 2));
        EXPECT_EQ(target->GetBuffer()->GetFormat(), format);
        for (const Format other : AllFormats)
            EXPECT_EQ(
                target->AttachBuffer(Raster::DynamicBuffer::Create(other, 3, 2), {0, 0, 3, 2}),
                other == format);
    }
}

TEST(Formats, OpaqueAreasShowTheSameInAll)
{
    for (const Format format : AllFormats) {
        const Scene scene(IsGrey(format));
        const auto reference = MakeTarget(Format::RGBA8, Side, Side);
        const auto target = MakeTarget(format, Side, Side);
        scene.DrawOpaque(*reference);
        scene.DrawOpaque(*target);
        // Inks of 8 bits multiply: half a step each of an ink and of black makes one of light.
        EXPECT_LE(GetLargestDifference(DisplayOf(reference), DisplayOf(target)),
                  format == Format::CMYKA8 ? 1 : 0)
            << int(format);
    }
}

TEST(Formats, SoftDrawingsShowTheSameWhereSpacesAgree)
{
    for (const Format format : {Format::RGBA16, Format::RGBAUF, Format::IA8, Format::IA16}) {
        const Scene scene(IsGrey(format));
        const auto reference = MakeTarget(Format::RGBA8, Side, Side);
        const auto target = MakeTarget(format, Side, Side);
        for (const auto& drawn : {reference, target}) {
            scene.DrawOpaque(*drawn);
            scene.DrawSoft(*drawn);
        }
        // The steps that 8 bits round at each of some ten layers.
        EXPECT_LE(GetLargestDifference(DisplayOf(reference), DisplayOf(target)), 3) << int(format);
    }
}

TEST(Formats, DeepFormatsAgreeFarBelowAStepOf8Bits)
{
    for (const bool grey : {false, true}) {
        const Scene scene(grey);
        const auto words = MakeTarget(grey ? Format::IA16 : Format::RGBA16, Side, Side);
        const auto floats = MakeTarget(Format::RGBAUF, Side, Side);
        for (const auto& drawn : {words, floats}) {
            scene.DrawOpaque(*drawn);
            scene.DrawSoft(*drawn);
        }
        const auto exact = PixelsOf<Raster::PixelRGBAUF>(floats);
        const auto wide = Raster::ConvertBuffer(words->GetBuffer(), {}, Format::RGBAUF, {});
        const auto ours = PixelsOf<Raster::PixelRGBAUF>(*wide);
        // Opacities are bytes in every format, so that only storage rounds.
        for (std::size_t i = 0; i < exact.size(); ++i)
            for (std::size_t c = 0; c < 4; ++c)
                ASSERT_NEAR(ours[i][c], exact[i][c], 8.0 / 65535) << i << ' ' << c;
    }
}

TEST(Formats, TilesOfAPageAreThePage)
{
    for (const Format format : AllFormats) {
        const auto page = MakeTarget(format, Side, Side);
        const auto tiled = MakeTarget(format, Side, Side);
        const Scene scene(false);
        scene.DrawOpaque(*page);
        scene.DrawSoft(*page);
        const auto buffer = tiled->GetBuffer();
        for (const auto& tile :
             {Kernel::RectT<int>{0, 0, 23, 37}, {23, 0, 64, 37}, {0, 37, 64, 64}}) {
            ASSERT_TRUE(tiled->AttachBuffer(buffer, tile));
            scene.DrawOpaque(*tiled);
            scene.DrawSoft(*tiled);
        }
        for (unsigned y = 0; y < Side; ++y)
            ASSERT_EQ(std::memcmp(page->GetBuffer()->GetRow(y), buffer->GetRow(y),
                                  Side * buffer->GetPixelSize()),
                      0)
                << int(format) << " row " << y;
    }
}

TEST(Formats, BitmapsOfEachAreBroughtIntoEach)
{
    const Profiles none;
    const Profiles full = RasterTest::MakeFullSet();
    for (const Profiles& profiles : {none, full}) {
        for (const Format from : AllFormats) {
            const auto painter = MakeTarget(from, Side, Side, profiles);
            Scene(false).DrawSoft(*painter);
            const auto buffer = painter->GetBuffer();
            const auto profile = profiles.GetProfile(from);
            const auto bitmap = Kernel::MakeCounted<Raster::DynamicBitmap>(buffer, profile);
            for (const Format to : AllFormats) {
                const auto target = MakeTarget(to, Side, Side, profiles);
                target->DrawBitmap({0, 0, Side, Side}, bitmap, 1.0F, FillBlendMode::Normal,
                                   BlendOptions::Identity());
                const auto expected = Raster::ConvertBuffer(buffer, profile, to, profiles);
                ASSERT_TRUE(HaveEqualPixels(*target->GetBuffer(), *expected))
                    << int(from) << " to " << int(to);
            }
        }
    }
}

TEST(Formats, ColoursGoThroughTheProfilesOfTheTarget)
{
    const Profiles profiles = RasterTest::MakeFullSet();
    const auto paint = [&](Format format, const FillDescriptorConst& fill) {
        const auto target = MakeTarget(format, 1, 1, profiles);
        target->DrawRectangle({0, 0, 1, 1}, 1.0F, fill, {}, {});
        return target;
    };
    // Inks stay as they are where the target is of inks, and are seen through its profile
    // elsewhere.
    const Raster::PixelCMYKA8 inks{{10, 200, 60, 30, 255}};
    const FillDescriptorConst ink(FillSolid::Create(ColourCMYK::Create(inks)));
    EXPECT_EQ(PixelsOf<Raster::PixelCMYKA8>(paint(Format::CMYKA8, ink))[0], inks);
    PixelRGBA8 seen;
    ASSERT_TRUE(Raster::ICCManager::GetInstance().DoTransform(Format::CMYKA8, profiles, &inks,
                                                              Format::RGBA8, profiles, &seen, 1));
    EXPECT_EQ(PixelsOf<PixelRGBA8>(paint(Format::RGBA8, ink))[0], seen);

    const FillDescriptorConst orange = FillDescriptorConst::CreateSolid({{220, 130, 40, 255}});
    const auto shown = DisplayOf(paint(Format::RGBA8, orange))[0];
    // Lab holds every colour; inks of 8 bits and their tables come close to those that they can
    // print.
    const auto lab = DisplayOf(paint(Format::LABA16, orange))[0];
    for (std::size_t c = 0; c < 3; ++c)
        EXPECT_NEAR(shown[c], lab[c], 1) << c;
    EXPECT_NE(PixelsOf<Raster::PixelCMYKA8>(paint(Format::CMYKA8, orange))[0],
              PixelsOf<Raster::PixelCMYKA8>([&] {
                  const auto target = MakeTarget(Format::CMYKA8, 1, 1);
                  target->DrawRectangle({0, 0, 1, 1}, 1.0F, orange, {}, {});
                  return target;
              }())[0]);
}

TEST(Formats, SubRendersOfEachComeBackIntoEach)
{
    for (const Format outer : AllFormats) {
        for (const Format inner : AllFormats) {
            const auto target = MakeTarget(outer, Side, Side);
            const bool grey = IsGrey(outer) || IsGrey(inner);
            const Scene scene(grey);
            const auto sub = target->PushSubRender({0, 0, Side, Side}, inner, {});
            ASSERT_TRUE(sub);
            scene.DrawOpaque(*sub);
            target->PopSubRender({});
            const auto reference = MakeTarget(Format::RGBA8, Side, Side);
            scene.DrawOpaque(*reference);
            EXPECT_LE(GetLargestDifference(DisplayOf(reference), DisplayOf(target)), 2)
                << int(inner) << " in " << int(outer);
        }
    }
}

} // namespace
} // namespace Renderer
