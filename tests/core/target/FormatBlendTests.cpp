// Every format, blend mode, paint and road to the blend functions, judged by double precision.

#include "../blend/OracleMatch.h"
#include "FormatFixture.h"
#include <raster/DynamicBitmap.h>

namespace Renderer {
namespace {

using BlendTests::Composite;
using BlendTests::OracleInput;
using BlendTests::ToReal;

using AllPixels =
    testing::Types<Raster::PixelRGBA8, Raster::PixelRGBA16, Raster::PixelIA8, Raster::PixelIA16,
                   Raster::PixelCMYKA8, Raster::PixelLABA16, Raster::PixelRGBAUF>;

/// How a source comes to be blended.
enum class Road
{
    Shape,
    HalfCovered,
    UnderClip,
    Group,
    GroupUnderClip,
};

template<class P>
class FormatBlend : public testing::Test
{
protected:
    static constexpr int Columns = 16; ///< a backdrop each
    static constexpr Kernel::RectT<double> Page{0, 0, Columns, 1};

    /// Solid, gradient, bitmap, and a gradient scaled by the alpha of another.
    static constexpr int PaintCount = 5;

    static void Paint(RenderTarget& target, int paint, FillBlendMode::BlendMode mode, Road road)
    {
        const Raster::AffineTransform::Params frame{Columns, 0, 0, 0, Columns, 0};
        const auto solid = FillDescriptorConst::CreateSolid({{230, 120, 40, 255}});
        const auto veil = FillDescriptorConst::CreateSolid({{30, 160, 90, 140}});
        const auto gradient =
            MakeGradient(FillGradient::Linear,
                         {{{250, 20, 60, 255}}, {{20, 90, 200, 90}}, {{128, 128, 128, 0}}}, frame);
        const auto fade =
            MakeGradient(FillGradient::Radial, {{{0, 0, 0, 40}}, {{0, 0, 0, 255}}}, frame);
        const FillDescriptorConst bitmap(
            FillDescriptorConst::CreateBitmap(MakeBitmap(), Raster::ExtendType::Clamp,
                                              Raster::ResamplerType::Bilinear),
            frame);
        const FillDescriptorConst* const fills[] = {&solid, &veil, &gradient, &bitmap, &gradient};
        Kernel::RectT<double> area = Page;
        if (road == Road::HalfCovered)
            area.bottom = 0.5;
        auto path = Kernel::MakeCounted<PolyPolygon>(area);
        target.DrawPolyPolygon(path, 1.0F, mode, BlendOptions::Identity(), *fills[paint],
                               paint == 4 ? fade : FillDescriptorConst(),
                               Geometry::WindingOrderMode::NonZero, true, true);
    }

    static Kernel::Counted<const Raster::DynamicBitmap> MakeBitmap()
    {
        RGBA8Buffer view;
        EXPECT_TRUE(view.Create(4, 1));
        view.GetRow(0)[0] = {{200, 10, 30, 255}};
        view.GetRow(0)[1] = {{10, 100, 30, 120}};
        view.GetRow(0)[2] = {{90, 90, 90, 90}};
        return Kernel::MakeCounted<Raster::DynamicBitmap>(view.GetDynamicBuffer());
    }

    static void DrawBackdrops(RenderTarget& target)
    {
        for (int x = 0; x < Columns; ++x) {
            const auto level = [&](int step) { return std::uint8_t(x * step % 256); };
            const PixelRGBA8 colour{{level(77), level(41), level(23), std::uint8_t(x % 4 * 85)}};
            target.DrawRectangle({double(x), 0.0, x + 1.0, 1.0}, 1.0F,
                                 FillDescriptorConst::CreateSolid(colour), {}, {});
        }
    }

    static void Draw(RenderTarget& target, int paint, FillBlendMode::BlendMode mode, Road road)
    {
        const bool clipped = road == Road::UnderClip || road == Road::GroupUnderClip;
        const bool grouped = road == Road::Group || road == Road::GroupUnderClip;
        if (clipped)
            target.PushClipPath(
                Kernel::MakeCounted<PolyPolygon>(Kernel::RectT<double>{0, 0, Columns, 0.5}),
                Geometry::WindingOrderMode::NonZero);
        if (grouped) {
            target.PushComposite(RenderTarget::CompositeInit::Clear, mode, BlendOptions::Identity(),
                                 1.0F);
            Paint(target, paint, FillBlendMode::Normal, Road::Shape);
            target.PopCompositeAsFill({}, {});
        } else {
            Paint(target, paint, mode, road);
        }
        if (clipped)
            target.PopClipPath();
    }

    void Check(int paint, FillBlendMode::BlendMode mode, Road road, const std::vector<P>& sources,
               const std::vector<P>& backdrops)
    {
        const auto target = MakeTarget(Raster::FormatOfPixel<P>, Columns, 1);
        DrawBackdrops(*target);
        Draw(*target, paint, mode, road);
        const auto results = PixelsOf<P>(target);
        const bool half = road != Road::Shape && road != Road::Group;
        for (std::size_t i = 0; i < results.size(); ++i) {
            const OracleInput input{mode,
                                    ToReal(sources[i]),
                                    ToReal(backdrops[i]),
                                    static_cast<unsigned char>(half ? 128 : 255),
                                    -1,
                                    1.0};
            const auto ours = ToReal(results[i]);
            const auto exact = Composite(m_format, input);
            ASSERT_TRUE(BlendTests::Matches<P>(input, exact, ours) ||
                        (BlendTests::IsDiscontinuous(mode) &&
                         BlendTests::MatchesNearby<P>(m_format, input, ours)))
                << "paint " << paint << " road " << int(road) << " column " << i << ' '
                << BlendTests::Describe(input, ours, exact, P::Max);
        }
    }

    BlendTests::OracleFormat m_format = BlendTests::MakeFormat<P>();
};
TYPED_TEST_SUITE(FormatBlend, AllPixels);

TYPED_TEST(FormatBlend, EveryModePaintAndRoadAgreesWithDoublePrecision)
{
    using P = TypeParam;
    const auto clean = MakeTarget(Raster::FormatOfPixel<P>, this->Columns, 1);
    this->DrawBackdrops(*clean);
    const auto backdrops = PixelsOf<P>(clean);
    for (int paint = 0; paint < this->PaintCount; ++paint) {
        clean->Clear();
        this->Paint(*clean, paint, FillBlendMode::Normal, Road::Shape);
        const auto sources = PixelsOf<P>(clean);
        ASSERT_NE(sources[0], P{});
        for (int mode = 0; mode <= FillBlendMode::Nameless; ++mode) {
            for (const Road road : {Road::Shape, Road::HalfCovered, Road::UnderClip, Road::Group,
                                    Road::GroupUnderClip}) {
                const bool grouped = road == Road::Group || road == Road::GroupUnderClip;
                if (mode >= FillBlendMode::SpanModeCount && !grouped)
                    continue;
                this->Check(paint, static_cast<FillBlendMode::BlendMode>(mode), road, sources,
                            backdrops);
                ASSERT_FALSE(this->HasFatalFailure());
            }
        }
    }
}

} // namespace
} // namespace Renderer
