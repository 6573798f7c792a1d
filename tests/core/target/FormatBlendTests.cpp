// Every format, blend mode, paint and road to the blend functions, judged by double precision.

#include "../blend/OracleMatch.h"
#include "PaintedFormat.h"

namespace Renderer {
namespace {

using BlendTests::Composite;
using BlendTests::OracleInput;
using BlendTests::ToReal;

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
class FormatBlend : public PaintedFormat
{
protected:
    static void Paint(RenderTarget& target, int paint, FillBlendMode::BlendMode mode, Road road)
    {
        Kernel::RectT<double> area = Page;
        if (road == Road::HalfCovered)
            area.bottom = 0.5;
        const auto [fill, transparency] = GetPaint(paint);
        target.DrawPolyPolygon(Kernel::MakeCounted<PolyPolygon>(area), 1.0F, mode,
                               BlendOptions::Identity(), fill, transparency,
                               Geometry::WindingOrderMode::NonZero, true, true);
    }

    static void Draw(RenderTarget& target, int paint, FillBlendMode::BlendMode mode, Road road)
    {
        const bool clipped = road == Road::UnderClip || road == Road::GroupUnderClip;
        const bool grouped = road == Road::Group || road == Road::GroupUnderClip;
        if (clipped)
            PushHalfClip(target);
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
