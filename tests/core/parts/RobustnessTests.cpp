// Whatever was called, aborted or failed: a target whose pushes are popped is as it was.

#include <atomic>
#include <thread>

#include <renderer/core/formats/PixProcessor.h>
#include <renderer/core/TypedBitmapRenderTarget.h>
#include <support/AllocationCount.h>

#include "RandomSession.h"

namespace Renderer {
namespace {

using Kernel::Counted;
using Kernel::RectT;

class RobustnessTest : public TargetTest
{
protected:
    /// What pushes and pops change.
    struct State
    {
        Raster::AffineTransform::Params world, scalar, logToDev;
        RectT<int> deviceClip;
        RenderTarget::ColourTransforms colours;
        Counted<Raster::DynamicBuffer> current;
        bool isClipped, isMasked, isNested;

        bool operator==(const State&) const = default;
    };

    static State StateOf(const Counted<BitmapRenderTarget>& of)
    {
        return {of->GetWorldTransform(),
                of->GetScalarTransform(),
                of->GetLogToDevTransform(),
                of->GetDeviceClip(),
                of->GetColourTransforms(),
                of->GetCurrentBuffer(),
                of->HasClipPaths(),
                static_cast<bool>(of->GetCurrentMaskBuffer()),
                static_cast<bool>(of->GetBufferState().nesting)};
    }

    /// A drawing that depends on everything that could be left behind.
    static std::vector<unsigned char> DrawAfresh(const Counted<BitmapRenderTarget>& on)
    {
        on->Clear();
        RandomSession(on, 4711).Play(60);
        return BytesOf(on);
    }

    /// Compares a target that went through something with one that is new.
    void ExpectAsNew()
    {
        EXPECT_TRUE(StateOf(target) == before);
        const auto fresh = Make(Side, Side);
        ASSERT_EQ(DrawAfresh(target), DrawAfresh(fresh));
    }

    static constexpr unsigned Side = 48;

    RobustnessTest()
    {
        target = Make(Side, Side);
        before = StateOf(target);
    }

    State before;
};

TEST_F(RobustnessTest, CallsThatBalanceLeaveNothingBehind)
{
    for (unsigned seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE(seed);
        RandomSession(target, seed).Play(40);
        ASSERT_TRUE(StateOf(target) == before);
        if (seed % 10 == 0)
            ExpectAsNew();
        if (HasFatalFailure())
            return;
    }
}

TEST_F(RobustnessTest, TheSameCallsGiveTheSamePixels)
{
    for (unsigned seed = 0; seed < 100; ++seed) {
        const auto fresh = Make(Side, Side);
        target->Clear();
        RandomSession(target, seed).Play(60);
        RandomSession(fresh, seed).Play(60);
        ASSERT_EQ(BytesOf(target), BytesOf(fresh)) << seed;
    }
}

TEST_F(RobustnessTest, AnAbortAtAnyMomentLeavesTheTargetUsable)
{
    std::mt19937 random(1);
    for (unsigned seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(seed);
        std::atomic<unsigned> left = unsigned(random() % 100000);
        std::thread aborter([&] {
            while (left > 0)
                --left;
            target->SetAbort(true);
        });
        // Whenever the other thread comes to it, this one is drawing.
        for (unsigned round = 0; !target->IsAborting(); ++round)
            RandomSession(target, seed + 1000 * round).Play(40);
        aborter.join();
        target->SetAbort(false);
        ExpectAsNew();
        if (HasFatalFailure())
            return;
    }
}

TEST_F(RobustnessTest, MemoryThatRunsOutAtAnyMomentLeavesTheTargetUsable)
{
    std::mt19937 random(2);
    int failures = 0;
    for (unsigned seed = 0; seed < 600; ++seed) {
        SCOPED_TRACE(seed);
        // Targets that are new ask for more.
        if (seed % 2)
            target = Make(Side, Side);
        before = StateOf(target);
        RandomSession session(target, seed);
        TestSupport::FailAllocationAfter(long(random() % 1500));
        session.Play(60);
        failures += TestSupport::HasAllocationFailed();
        TestSupport::FailAllocationAfter(-1);
        ExpectAsNew();
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(failures, 200);
}

} // namespace
} // namespace Renderer