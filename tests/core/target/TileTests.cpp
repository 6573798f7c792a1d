// Work on whole buffers, which goes tile by tile on several threads: the same bytes however the
// page is cut and whoever works on it.

#include <algorithm>
#include <atomic>
#include <functional>
#include <limits>
#include <random>
#include <stdexcept>

#include <kernel/Dispatch.h>
#include <kernel/Tiles.h>
#include <raster/adjustments/BrightnessContrastAdjustment.h>
#include <renderer/paint/FillBackBuffer.h>

#include "FormatFixture.h"

namespace Renderer {
namespace {

using CompositeInit = RenderTarget::CompositeInit;
using Kernel::RectT;
using Target = Kernel::Counted<BitmapRenderTarget>;

class TileTest : public TargetTest
{
protected:
    // Several tiles both ways, none whole at the edges.
    static constexpr int PageWidth = 600;
    static constexpr int PageHeight = 310;

    ~TileTest() override { Kernel::Dispatch::SetThreadLimit(0); }

    static void Ellipse(const Target& page, const RectT<double>& bounds,
                        const FillDescriptorConst& fill)
    {
        auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
        path->AddEllipse({(bounds.left + bounds.right) / 2, (bounds.top + bounds.bottom) / 2},
                         bounds.Width() / 2, bounds.Height() / 2);
        page->DrawPolyCurve(path, 1.0F, FillBlendMode::Normal, BlendOptions::Identity(), fill, {},
                            {}, {}, Geometry::WindingOrderMode::EvenOdd, true, true);
    }

    static FillDescriptorConst Picture(const Raster::AffineTransform::Params& frame)
    {
        static const auto buffer = [] {
            const auto noise = Raster::DynamicBuffer::Create(Format::RGBA8, 40, 30);
            std::mt19937 random(5);
            for (unsigned y = 0; y < 30; ++y)
                for (unsigned x = 0; x < 160; ++x)
                    noise->GetRow(y)[x] = static_cast<unsigned char>(random() | (x % 4 / 3 * 255U));
            return noise;
        }();
        static const auto bitmap = Kernel::MakeCounted<Raster::DynamicBitmap>(buffer);
        return {FillDescriptorConst::CreateBitmap(bitmap, Raster::ExtendType::Mirror,
                                                  Raster::ResamplerType::Bicubic),
                frame};
    }

    /// Everything that goes in tiles: backdrops, groups, clears and mattes; under clip paths, with
    /// colour transforms, with paint that several threads can share and paint that they cannot.
    static void Draw(const Target& page)
    {
        const auto ramp = MakeGradient(FillGradient::Radial, {Red, {{9, 99, 9, 60}}, Blue},
                                       {400, 0, 300, 0, 400, 100});
        const FillDescriptorConst paints[]{{},
                                           Solid({{10, 200, 30, 130}}),
                                           ramp,
                                           Picture({90, 20, 11, -20, 80, 7}),
                                           Picture({300, 0, 11.3, 0, 210, 7.7}),
                                           FillDescriptorConst(FillBackBuffer::Create())};
        const auto adjustment = Kernel::MakeCounted<Raster::BrightnessContrastAdjustment>(
            Raster::BrightnessContrastSettings{0.1F, 0.3F});
        const auto clip = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
        clip->AddEllipse({310, 160}, 290, 150);
        Ellipse(page, {-50, -90, 500, 400}, ramp);
        for (unsigned mode = 0; mode < 33; ++mode) {
            if (mode % 3 == 1)
                page->PushClipCurvesPath(clip, Geometry::WindingOrderMode::NonZero);
            page->PushComposite(CompositeInit(mode % 4), FillBlendMode::BlendMode(mode),
                                BlendOptions::Identity(), mode % 2 ? 1.0F : 0.6F);
            Ellipse(page, {12.0 * mode, 5.5, 12.0 * mode + 300, 300}, paints[1 + mode % 5]);
            if (mode % 5 == 4)
                page->Matte(ColourRGB::Create(PixelRGBA8{{200, 220, 40, 200}}));
            page->PushColourTransform(adjustment);
            if (mode % 7 == 6)
                page->PopCompositeAsTransparency(paints[2 + mode % 4], {});
            else
                page->PopCompositeAsFill(paints[mode / 2 % 6], paints[mode / 3 % 5]);
            page->PopColourTransform();
            if (mode % 3 == 1)
                page->PopClipPath();
        }
        page->PushLogicalDeviceClip({20, 250, 590, 290});
        page->Clear();
        page->PopDeviceClip();
    }
};

TEST_F(TileTest, ThreadsAndPiecesGiveTheSameBytes)
{
    for (const Format format : AllFormats) {
        SCOPED_TRACE(int(format));
        const Target pages[]{MakeTarget(format, PageWidth, PageHeight),
                             MakeTarget(format, PageWidth, PageHeight),
                             MakeTarget(format, PageWidth, PageHeight)};
        Kernel::Dispatch::SetThreadLimit(1);
        Draw(pages[0]);
        // In pieces that do not end where tiles do.
        for (int y = 0; y < PageHeight; y += 103) {
            for (int x = 0; x < PageWidth; x += 203) {
                pages[1]->PushLogicalDeviceClip({double(x), double(y), x + 203.0, y + 103.0});
                Draw(pages[1]);
                pages[1]->PopDeviceClip();
            }
        }
        Kernel::Dispatch::SetThreadLimit(8);
        Draw(pages[2]);
        const auto bytes = BytesOf(pages[0]);
        EXPECT_GT(std::ranges::count_if(bytes, [](unsigned char byte) { return byte != 0; }),
                  std::ptrdiff_t(bytes.size() / 4));
        EXPECT_EQ(BytesOf(pages[1]), bytes);
        EXPECT_EQ(BytesOf(pages[2]), bytes);
    }
}

/// Calls back after some blocks of pixels, on whatever thread that is.
class Trap final : public Raster::ColourTransform
{
public:
    Trap(int patience, std::function<void()> spring)
        : m_patience(patience), m_spring(std::move(spring))
    {}
    void Apply(Raster::PixelRGBAF*, std::size_t, const Profiles&) const override
    {
        if (m_patience-- == 0)
            m_spring();
    }
    bool IsIdentity() const override { return false; }
    std::uint64_t GetHash() const override { return 1; }
    bool IsEqual(const ColourTransform&) const override { return false; }

private:
    mutable std::atomic<int> m_patience;
    std::function<void()> m_spring;
};

TEST_F(TileTest, FailureAndAbortInATileLeaveTheTargetUsable)
{
    Kernel::Dispatch::SetThreadLimit(8);
    const Target page = Make(PageWidth, PageHeight), fresh = Make(PageWidth, PageHeight);
    Draw(fresh);
    const auto pop = [&](Kernel::Counted<Raster::ColourTransform> transform) {
        page->PushComposite(CompositeInit::Clear, FillBlendMode::Normal, BlendOptions::Identity(),
                            1.0F);
        Ellipse(page, {0, 0, 600, 310}, Solid(Red));
        page->PushColourTransform(std::move(transform));
        page->PopCompositeAsTransparency(Picture({90, 20, 11, -20, 80, 7}), {});
    };
    const auto countDrawn = [&] {
        const auto bytes = BytesOf(page);
        return std::ranges::count_if(bytes, [](unsigned char byte) { return byte != 0; });
    };
    pop(Kernel::MakeCounted<Trap>(-1, [] {}));
    const auto all = countDrawn();
    page->PopColourTransform();
    page->Clear();

    EXPECT_THROW(pop(Kernel::MakeCounted<Trap>(300, [] { throw std::runtime_error("stop"); })),
                 std::runtime_error);
    page->PopColourTransform();
    page->Clear();
    EXPECT_EQ(countDrawn(), 0);

    pop(Kernel::MakeCounted<Trap>(300, [&] { page->SetAbort(true); }));
    page->PopColourTransform();
    page->Matte(ColourRGB::Create(Red));
    EXPECT_GT(countDrawn(), 0);
    EXPECT_LT(countDrawn(), all / 2); // rows that were begun end
    page->SetAbort(false);
    page->Clear();
    EXPECT_EQ(countDrawn(), 0);

    Draw(page);
    EXPECT_EQ(BytesOf(page), BytesOf(fresh));
}

TEST(TileGrid, CutsAtMultiplesOfTheSideWhereverItLies)
{
    constexpr int low = std::numeric_limits<int>::min(), high = std::numeric_limits<int>::max();
    const RectT<int> rects[]{
        {0, 0, 1, 1},           {0, 0, 256, 256},        {255, 255, 257, 513},
        {-1, -257, 300, 3},     {low, -3, low + 300, 5}, {high - 300, 7, high, 9},
        {-700, 1000, 900, 1001}};
    for (const RectT<int>& rect : rects) {
        SCOPED_TRACE(testing::Message() << rect.left << ' ' << rect.top);
        std::int64_t area = 0;
        const Kernel::TileGrid grid(rect);
        for (unsigned i = 0; i < grid.GetCount(); ++i) {
            const RectT<int> part = grid.GetPart(i);
            ASSERT_FALSE(part.IsEmpty());
            EXPECT_TRUE(rect.Contains(part));
            EXPECT_EQ(part.left >> 8, (part.right - 1) >> 8);
            EXPECT_EQ(part.top >> 8, (part.bottom - 1) >> 8);
            for (unsigned j = 0; j < i; ++j)
                EXPECT_TRUE(part.Intersect(grid.GetPart(j)).IsEmpty());
            area += std::int64_t{part.Width()} * part.Height();
        }
        EXPECT_EQ(area, std::int64_t{rect.Width()} * rect.Height());
    }
}

} // namespace
} // namespace Renderer
