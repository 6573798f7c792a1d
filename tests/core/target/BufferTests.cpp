// Buffers: states that move between targets, spare ones, mattes, and a host's copies.

#include <functional>
#include <new>
#include <random>
#include <string>

#include <raster/AffineTransform.h>
#include <renderer/paint/FillBuffer.h>

#include "FormatFixture.h"

namespace Renderer {
namespace {

using CompositeInit = RenderTarget::CompositeInit;
using Kernel::Counted;
using Kernel::RectT;
using Raster::DynamicBuffer;

class BufferTest : public TargetTest
{
protected:
    static void FillOn(const Counted<BitmapRenderTarget>& on, const RectT<double>& rect,
                       const PixelRGBA8& colour)
    {
        on->DrawPolyCurve(Kernel::MakeCounted<Geometry::PolyCurveDbl>(rect), 0.8F,
                          FillBlendMode::Normal, BlendOptions::Identity(), Solid(colour), {}, {},
                          {}, Geometry::WindingOrderMode::EvenOdd, true, true);
    }

    static Counted<const DynamicBuffer> MakeMask()
    {
        auto mask = DynamicBuffer::Create(Format::M8, 30, 30);
        for (unsigned y = 0; y < 30; ++y)
            std::memset(mask->GetRow(y), int(y * 8), 30);
        return mask;
    }

    static constexpr int Levels = 4;

    static void Open(const Counted<BitmapRenderTarget>& on, int level)
    {
        const double inset = 2.25 * (level + 1);
        on->PushLogicalDeviceClip({inset, inset, Width - inset, Height - inset / 2});
        on->PushClipCurvesPath(Rectangle(inset, 0, Width - inset, Height - inset),
                               Geometry::WindingOrderMode::EvenOdd);
        on->PushClippingMask({2, 1, 32, 31}, MakeMask());
        if (level > 0)
            on->PushComposite(level == 2 ? CompositeInit::CopyBackdrop : CompositeInit::Clear,
                              FillBlendMode::Multiply, BlendOptions::Identity(), 0.9F);
        FillOn(on, {inset, 3, inset + 20, 20.5}, {{9, 90, 200, 255}});
    }
    static void Close(const Counted<BitmapRenderTarget>& on, int level)
    {
        FillOn(on, {5, 10, 22.5, 14.5}, {{200, 10, 20, 255}});
        if (level > 0)
            on->PopCompositeAsFill({}, {});
        on->PopClippingMask();
        on->PopClipPath();
        on->PopDeviceClip();
    }
};

TEST_F(BufferTest, StatesMoveWithAllThatIsOpen)
{
    const auto plain = Make();
    for (int level = 0; level < Levels; ++level)
        Open(plain, level);
    for (int level = Levels; level-- > 0;)
        Close(plain, level);

    const auto aside = DynamicBuffer::Create(Format::RGBA8, 50, 50);
    for (int leave = 0; leave < Levels; ++leave) { // how deep the target is left
        for (const bool elsewhere : {false, true}) {
            SCOPED_TRACE(testing::Message() << leave << elsewhere);
            target->Clear();
            for (int level = 0; level <= leave; ++level)
                Open(target, level);
            const BufferState state = target->GetBufferState();
            const auto clip = target->GetDeviceClip();

            ASSERT_TRUE(target->AttachBuffer(aside, {-900, 70, -860, 100}));
            EXPECT_FALSE(target->HasClipPaths());
            EXPECT_FALSE(target->GetCurrentMaskBuffer());
            FillOn(target, {-1000, 0, 0, 1000}, Blue);
            Open(target, 1);

            Counted<BitmapRenderTarget> back = elsewhere ? Make(1, 1) : target;
            ASSERT_TRUE(back->SetBufferState(state));
            EXPECT_EQ(back->GetDeviceClip(), clip);
            for (int level = leave + 1; level < Levels; ++level)
                Open(back, level);
            for (int level = Levels; level-- > 0;)
                Close(back, level);
            ASSERT_EQ(BytesOf(back), BytesOf(plain));
            EXPECT_EQ(back->GetDeviceClip(), (RectT<int>{0, 0, Width, Height}));
            if (elsewhere) {
                ASSERT_TRUE(target->SetBufferState({state.buffer, state.rect, state.rect, {}}));
            }
        }
    }
}

TEST_F(BufferTest, StatesThatCannotBeTakenChangeNothing)
{
    Open(target, 1);
    const auto current = target->GetCurrentBuffer();
    BufferState moved = target->GetBufferState();
    moved.buffer = DynamicBuffer::Create(Format::RGBA8, Width, Height);
    const auto other = MakeTarget(Format::IA8, 40, 30);
    BufferState tooLarge = target->GetBufferState();
    tooLarge.rect.right += 1;
    for (const BufferState& state : {moved, tooLarge, other->GetBufferState()}) {
        EXPECT_FALSE(target->SetBufferState(state));
        EXPECT_EQ(target->GetCurrentBuffer(), current);
        EXPECT_TRUE(target->GetCurrentBuffer() != target->GetBuffer());
    }
    EXPECT_FALSE(other->SetBufferState(target->GetBufferState()));
    EXPECT_TRUE(target->SetBufferState({}));
    EXPECT_FALSE(target->GetBuffer());
}

TEST_F(BufferTest, SpareBuffersAreTakenOnceNobodyNeedsThem)
{
    const auto give = [&](Format format, bool shared) {
        auto buffer = DynamicBuffer::Create(format, 64, 64);
        for (unsigned y = 0; y < 64; ++y)
            std::memset(buffer->GetRow(y), 255, 64 * buffer->GetPixelSize());
        const auto holder = shared ? buffer : nullptr;
        const void* const address = buffer.Get();
        const bool taken = target->TransferBitmapToSpareComposites(std::move(buffer));
        EXPECT_TRUE(!holder || holder->GetRow(63)[3] == 255);
        return taken ? address : nullptr;
    };
    EXPECT_EQ(give(Format::RGBA8, true), nullptr);
    EXPECT_EQ(give(Format::IA16, false), nullptr);
    EXPECT_FALSE(target->TransferBitmapToSpareComposites({}));
    const void* const spare = give(Format::RGBA8, false);
    ASSERT_NE(spare, nullptr);
    target->PushComposite(CompositeInit::Clear, FillBlendMode::Normal, BlendOptions::Identity(),
                          1.0F);
    EXPECT_EQ(target->GetCurrentBuffer().Get(), spare);
    target->PopCompositeAsFill({}, {});
    EXPECT_EQ(Area(), 0);
    int taken = 0; // there is an end to it
    while (taken < 1000 && give(Format::RGBA8, false))
        ++taken;
    EXPECT_LT(taken, 1000);
}

TEST_F(BufferTest, MatteIsThePictureOverTheColour)
{
    std::mt19937 random(7);
    for (const Format format : AllFormats) {
        const auto matted = MakeTarget(format, 300, 9), expected = MakeTarget(format, 300, 9);
        const auto paint = [&](const auto& on) {
            on->DrawPolyPolygon(
                Kernel::MakeCounted<PolyPolygon>(RectT<double>{0, 0, 290.5, 8.5}), 1.0F,
                MakeGradient(FillGradient::Linear, {{{255, 0, 9, 0}}, {{0, 255, 30, 255}}, Nothing},
                             {280, 5, 3, -9, 50, 1}));
        };
        const auto pixel = [&] { return static_cast<unsigned char>(random()); };
        for (const bool opaque : {true, false}) {
            SCOPED_TRACE(testing::Message() << int(format) << opaque);
            const FillDescriptorConst colour = Solid(
                {{pixel(), pixel(), pixel(), opaque ? static_cast<unsigned char>(255) : pixel()}});
            matted->Clear();
            paint(matted);
            const auto before = Raster::ConvertBuffer(matted->GetBuffer(), {}, format, {});
            const auto copy = DynamicBuffer::Create(format, 300, 9);
            for (unsigned y = 0; y < 9; ++y)
                std::copy_n(before->GetRow(y), 300 * copy->GetPixelSize(), copy->GetRow(y));
            expected->Clear();
            expected->Blend(1.0F, FillBlendMode::Normal, BlendOptions::Identity(), colour, {});
            expected->DrawBuffer({0, 0, 300, 9}, copy, 1.0F, FillBlendMode::Normal,
                                 BlendOptions::Identity());
            matted->PushClipRectanglePath({4, 4, 5, 5}); // mattes do not look at these
            matted->PushClippingMask({4, 4, 5, 5}, MakeMask());
            matted->Matte(colour.GetFill()->GetColour());
            matted->PopClippingMask();
            matted->PopClipPath();
            EXPECT_EQ(BytesOf(matted), BytesOf(expected));
            // Within the device clip.
            expected->PushLogicalDeviceClip({10, 2, 90, 6});
            expected->Clear();
            expected->Matte(colour.GetFill()->GetColour());
            expected->PopDeviceClip();
            EXPECT_EQ(
                std::memcmp(expected->GetBuffer()->GetRow(1), matted->GetBuffer()->GetRow(1), 9),
                0);
        }
    }
}

/// A buffer that writes down what a host with a copy of its own would be told.
class HostBuffer : public DynamicBuffer
{
public:
    HostBuffer(unsigned width, unsigned height) : DynamicBuffer(Format::RGBA8, width, height) {}

    void SyncHostCache() const override
    {
        if (m_fails)
            throw std::bad_alloc();
        m_calls += "sync ";
    }
    void InvalidateHardwareCache(const RectT<int>& r) override
    {
        m_calls += std::to_string(r.left) + "," + std::to_string(r.top) + "," +
                   std::to_string(r.right) + "," + std::to_string(r.bottom) + " ";
    }
    std::string Take() const { return std::exchange(m_calls, {}); }
    void SetFails(bool fails) { m_fails = fails; }

private:
    bool m_fails = false;
    mutable std::string m_calls;
};

TEST_F(BufferTest, HostsLearnWhatIsWritten)
{
    const auto buffer = Kernel::MakeCounted<HostBuffer>(16U, 12U);
    ASSERT_TRUE(target->AttachBuffer(buffer, {1000, 2000, 1016, 2012}));
    EXPECT_EQ(buffer->Take(), "sync 0,0,16,12 "); // the host's copy ends
    const RectT<double> shape{1001, 2001, 1003, 2004};
    const auto group = [&](CompositeInit init) {
        target->PushComposite(init, FillBlendMode::Normal, BlendOptions::Identity(), 1.0F);
    };
    const auto red = Solid(Red);
    struct Case
    {
        const char* name;
        std::function<void()> call;
        const char* whole;   ///< what is said without a device clip
        const char* clipped; ///< and with one of (1002, 2003, 1006, 2008)
    };
    const char* const all = "sync 0,0,16,12 ";
    const char* const part = "sync 2,3,6,8 ";
    const std::vector<Case> cases{
        {"shape", [&] { Fill(shape, Red); }, all, part},
        {"stroke",
         [&] { target->DrawRectangle(shape, 1.0F, {}, red, LineStyleDescriptorConst(1.0)); }, all,
         part},
        {"flood",
         [&] { target->Blend(1.0F, FillBlendMode::Normal, BlendOptions::Identity(), red, {}); },
         all, part},
        {"Clear", [&] { target->Clear(); }, all, part},
        {"Matte", [&] { target->Matte(red.GetFill()->GetColour()); }, all, part},
        {"group",
         [&] {
             group(CompositeInit::Clear);
             Fill(shape, Red);
             target->Clear();
             Fill({1000, 2000, 1016, 2012}, Red);
             EXPECT_EQ(buffer->Take(), "");
             target->PopCompositeAsFill({}, {});
         },
         all, part},
        {"group that begins with the backdrop",
         [&] {
             group(CompositeInit::CopyBackdrop);
             EXPECT_EQ(buffer->Take(), "sync "); // it is read
             target->PopCompositeAsFill({}, {});
         },
         all, part},
        {"fill and stroke as one",
         [&] { target->DrawRectangle(shape, 0.5F, red, red, LineStyleDescriptorConst(2.0)); },
         "sync 0,0,5,5 ", "sync 2,3,5,5 "},
        {"nothing",
         [&] {
             Fill({0, 0, 9, 9}, Red);
             Fill(shape, Red, 0.0F);
             target->DrawRectangle(shape, 1.0F, {}, {}, {});
             group(CompositeInit::Clear);
             target->PopCompositeAsFill({}, {});
             target->SetAbort(true);
             Fill(shape, Red);
             target->Matte(red.GetFill()->GetColour());
             target->SetAbort(false);
         },
         "", ""}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        c.call();
        EXPECT_EQ(buffer->Take(), c.whole);
        target->PushLogicalDeviceClip({1002, 2003, 1006, 2008});
        c.call();
        EXPECT_EQ(buffer->Take(), c.clipped);
        target->PopDeviceClip();
    }
}

TEST_F(BufferTest, AGroupThatCannotBeginChangesNothing)
{
    const auto buffer = Kernel::MakeCounted<HostBuffer>(16U, 12U);
    ASSERT_TRUE(target->AttachBuffer(buffer, {0, 0, 16, 12}));
    target->PushClipCurvesPath(Rectangle(2.5, 2.5, 8.5, 8.5), Geometry::WindingOrderMode::NonZero);
    buffer->SetFails(true);
    EXPECT_THROW(target->PushComposite(CompositeInit::CopyBackdrop, FillBlendMode::Normal,
                                       BlendOptions::Identity(), 1.0F),
                 std::bad_alloc);
    buffer->SetFails(false);
    EXPECT_TRUE(target->HasClipPaths());
    Fill({0, 0, 16, 12}, Red);
    EXPECT_EQ(At(12, 5), Nothing);
    EXPECT_EQ(At(5, 5), Red);
}

TEST_F(BufferTest, PaintsItselfAsItWas)
{
    for (int x = 0; x < Width; ++x)
        Fill({double(x), 0, x + 1.0, Height}, {{(unsigned char)(6 * x), 90, 30, 255}});
    const auto picture = target->GetBuffer();
    const auto copy = DynamicBuffer::Create(Format::RGBA8, Width, Height);
    for (unsigned y = 0; y < Height; ++y)
        std::memcpy(copy->GetRow(y), picture->GetRow(y), 4 * Width);
    const auto other = Make();
    for (const auto& [on, from] : {std::pair(target, picture), std::pair(other, copy)})
        on->Blend(1.0F, FillBlendMode::Normal, BlendOptions::Identity(),
                  FillDescriptorConst(FillBuffer::Create(from, Raster::ExtendType::Wrap,
                                                         Raster::ResamplerType::NearestNeighbour),
                                      {Width, 0, 7, 0, Height, 0}),
                  {});
    EXPECT_EQ(BytesOf(target), BytesOf(other));
}

} // namespace
} // namespace Renderer
