// What groups may leave out: nothing of it may show.

#include <random>

#include "TargetFixture.h"

namespace Renderer {
namespace {

using Geometry::WindingOrderMode;
using CompositeInit = RenderTarget::CompositeInit;
using Kernel::RectT;

/// Plays the same random calls on targets.
class RandomCalls
{
public:
    /// \param whole whether groups are told that anything in them may have been written to, so that
    ///        they are painted and cleared as a whole.
    RandomCalls(Kernel::Counted<BitmapRenderTarget> target, unsigned seed, bool whole)
        : m_target(std::move(target)), m_random(seed), m_whole(whole)
    {}

    void Play(int count)
    {
        while (count-- > 0)
            Call();
        while (!m_open.empty())
            Close();
    }

private:
    enum class Open
    {
        Group,
        Clip,
        DeviceClip,
        AlphaOnly,
    };

    unsigned Pick(unsigned count) { return unsigned(m_random() % count); }
    double Place() { return -4.0 + double(Pick(200)) / 4.0; }
    RectT<double> Rect()
    {
        const double x = Place(), y = Place();
        return {x, y, x + 1 + double(Pick(60)) / 4.0, y + 1 + double(Pick(60)) / 4.0};
    }
    Kernel::Counted<const Geometry::PolyCurveDbl> Path()
    {
        auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>();
        const RectT<double> rect = Rect();
        if (Pick(2))
            path->AddEllipse({rect.left, rect.top}, rect.Width() / 2, rect.Height() / 2);
        else
            *path = Geometry::PolyCurveDbl(rect);
        return path;
    }
    FillDescriptorConst Paint()
    {
        const auto channel = [&] { return static_cast<unsigned char>(m_random()); };
        return FillDescriptorConst::CreateSolid(
            PixelRGBA8{{channel(), channel(), channel(), Pick(2) ? channel() : Opaque}});
    }
    FillBlendMode::BlendMode Mode(unsigned count)
    {
        return Pick(2) ? FillBlendMode::Normal : FillBlendMode::BlendMode(Pick(count));
    }
    float Opacity() { return Pick(2) ? 1.0F : float(Pick(101)) / 100.0F; }

    void Call()
    {
        switch (Pick(9)) {
        case 0: {
            constexpr CompositeInit inits[]{CompositeInit::Clear, CompositeInit::ClearOnTouch,
                                            CompositeInit::CopyBackdrop};
            const CompositeInit init = inits[Pick(3)];
            m_target->PushComposite(init, Mode(33), BlendOptions::Identity(), Opacity());
            if (m_whole)
                m_target->GetCurrentBuffer();
            m_open.push_back(Open::Group);
            break;
        }
        case 1:
            m_target->PushClipCurvesPath(Path(), WindingOrderMode::EvenOdd);
            m_open.push_back(Open::Clip);
            break;
        case 2:
            m_target->PushLogicalDeviceClip(Rect());
            m_open.push_back(Open::DeviceClip);
            break;
        case 3:
        case 4:
            Close();
            break;
        case 5:
            if (Pick(8) == 0)
                m_target->Clear();
            break;
        case 6:
            m_target->PushAlphaChannelOnly();
            m_open.push_back(Open::AlphaOnly);
            break;
        default: {
            const auto path = Path();
            const bool smooth = Pick(4) != 0;
            const FillDescriptorConst stroke = Pick(2) ? Paint() : FillDescriptorConst();
            m_target->DrawPolyCurve(path, Opacity(), Mode(30), BlendOptions::Identity(), Paint(),
                                    {}, stroke, LineStyleDescriptorConst(1.5),
                                    WindingOrderMode::NonZero, smooth, smooth);
        }
        }
    }

    void Close()
    {
        if (m_open.empty())
            return;
        const Open open = m_open.back();
        m_open.pop_back();
        if (open == Open::Clip)
            m_target->PopClipPath();
        else if (open == Open::AlphaOnly)
            m_target->PopAlphaChannelOnly();
        else if (open == Open::DeviceClip)
            m_target->PopDeviceClip();
        else if (!Pick(4))
            m_target->PopCompositeAsFillAndInterpolate(Pick(3) ? FillDescriptorConst() : Paint());
        else if (!Pick(6))
            m_target->PopCompositeAsTransparencyAndInterpolate(Paint());
        else if (Pick(3))
            m_target->PopCompositeAsFill(Pick(3) ? FillDescriptorConst() : Paint(),
                                         Pick(3) ? FillDescriptorConst() : Paint());
        else
            m_target->PopCompositeAsTransparency(Paint(), {});
    }

    static constexpr unsigned char Opaque = 255;

    Kernel::Counted<BitmapRenderTarget> m_target;
    std::mt19937 m_random;
    bool m_whole;
    std::vector<Open> m_open;
};

using GroupTest = TargetTest;

TEST_F(GroupTest, ResultsDoNotDependOnWhatIsLeftOut)
{
    const auto whole = Make();
    for (unsigned seed = 0; seed < 400; ++seed) {
        // One target keeps its buffers from case to case: they must come back transparent.
        target->Clear();
        whole->Clear();
        RandomCalls(target, seed, false).Play(30);
        RandomCalls(whole, seed, true).Play(30);
        const auto fresh = Make();
        RandomCalls(fresh, seed, false).Play(30);
        ASSERT_EQ(BytesOf(target), BytesOf(whole)) << seed;
        ASSERT_EQ(BytesOf(target), BytesOf(fresh)) << seed;
    }
}

TEST_F(GroupTest, PixelsThatTheApplicationWritesCount)
{
    for (const bool keep : {true, false}) {
        target->Clear();
        target->PushComposite(CompositeInit::Clear, FillBlendMode::Normal, BlendOptions::Identity(),
                              1.0F);
        auto buffer = target->GetCurrentBuffer();
        RGBA8Buffer view;
        ASSERT_TRUE(view.Attach(buffer));
        view.GetRow(20)[30] = Red;
        view = {};
        const auto kept = keep ? buffer : nullptr;
        buffer.Reset();
        target->PopCompositeAsFill({}, {});
        EXPECT_EQ(At(30, 20), Red);
        if (kept) { // its pixels stay as they are
            ASSERT_TRUE(view.Attach(kept));
            EXPECT_EQ(view.GetRow(20)[30], Red);
        }
        target->Clear();
        target->PushComposite(CompositeInit::Clear, FillBlendMode::Normal, BlendOptions::Identity(),
                              1.0F);
        Fill({0, 0, Width, Height}, Blue, 0.0F);
        Fill({2, 2, 3, 3}, Blue);
        target->PopCompositeAsFill({}, {});
        EXPECT_EQ(Area(), 1);
    }
}

TEST_F(GroupTest, PixelsOfABufferBeyondItsGroupAreClearedToo)
{
    const auto push = [&] {
        target->PushComposite(CompositeInit::Clear, FillBlendMode::Normal, BlendOptions::Identity(),
                              1.0F);
    };
    push();
    target->PopCompositeAsFill({}, {}); // leaves a buffer of the whole size
    target->PushLogicalDeviceClip({0, 0, 10, 10});
    push();
    {
        const auto buffer = target->GetCurrentBuffer();
        ASSERT_GT(buffer->GetWidth(), 20U);
        for (unsigned y = 0; y < buffer->GetHeight(); ++y)
            std::memset(buffer->GetRow(y), 255, buffer->GetWidth() * buffer->GetPixelSize());
    }
    target->PopCompositeAsFill({}, {});
    target->PopDeviceClip();
    target->Clear();
    push();
    target->GetCurrentBuffer(); // so that all of the group is painted
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(Area(), 0);
}

TEST_F(GroupTest, SmallGroupsShareALargeBuffer)
{
    const auto push = [&](const RectT<double>& clip) {
        target->PushLogicalDeviceClip(clip);
        target->PushComposite(CompositeInit::Clear, FillBlendMode::Normal, BlendOptions::Identity(),
                              1.0F);
    };
    const auto pop = [&] {
        target->PopCompositeAsFill({}, {});
        target->PopDeviceClip();
    };
    push({0, 0, Width, Height});
    const void* const large = target->GetCurrentBuffer().Get();
    pop();
    push({5, 5, 10, 10});
    EXPECT_EQ(target->GetCurrentBuffer().Get(), large);
    push({6, 6, 8, 8});
    const void* const small = target->GetCurrentBuffer().Get();
    EXPECT_NE(small, large);
    Fill({0, 0, Width, Height}, Red);
    pop();
    EXPECT_EQ(target->GetCurrentBuffer().Get(), large);
    pop();
    EXPECT_EQ(Area(), 4);
    push({0, 0, 2, 2});
    EXPECT_EQ(target->GetCurrentBuffer().Get(), small);
    pop();
}

TEST_F(GroupTest, BuffersTakeMemoryForTheirGroupsOnly)
{
    constexpr int side = 8000;
    const auto page = Make(side, side);
    const auto bytesOf = [](const auto& buffer) {
        return std::size_t(buffer->GetStride()) * buffer->GetHeight();
    };
    const std::size_t pageBytes = bytesOf(page->GetBuffer());
    const auto open = [&](const RectT<double>& rect) {
        page->PushLogicalDeviceClip(rect);
        page->PushComposite(CompositeInit::Clear, FillBlendMode::Normal, BlendOptions::Identity(),
                            1.0F);
        return bytesOf(page->GetCurrentBuffer());
    };
    const auto close = [&] {
        page->PopCompositeAsFill({}, {});
        page->PopDeviceClip();
    };
    std::size_t bytes = 0;
    for (int depth = 0; depth < 10; ++depth)
        bytes += open({3000.0 + depth, 100, 3600, 700});
    EXPECT_LT(bytes, pageBytes / 10);
    for (int depth = 0; depth < 10; ++depth)
        close();
    // A wide one and a tall one share memory for either, not for both sides.
    for (int round = 0; round < 2; ++round) {
        for (const RectT<double>& rect : {RectT<double>{0, 50, side, 80}, {50, 0, 80, side}}) {
            EXPECT_LT(open(rect), pageBytes / 100);
            close();
        }
    }
}

} // namespace
} // namespace Renderer
