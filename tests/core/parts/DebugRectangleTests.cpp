// The outlines that are drawn for debugging.

#include <renderer/core/formats/PixProcessor.h>
#include <renderer/core/TypedBitmapRenderTarget.h>

#include <core/target/TargetFixture.h>

namespace Renderer {
namespace {

/// Lets the test call what is for derived targets.
class DebuggedTarget : public TargetOf<PixelRGBA8>
{
public:
    DebuggedTarget() : TargetOf<PixelRGBA8>(Raster::ICCManager::ICCProfileSet{}) {}
    using PixelRenderTarget::DebugShowDeviceRectangle;
};

TEST(DebugRectangle, IsALineOfDashesWithinTheClip)
{
    const auto target = Kernel::MakeCounted<DebuggedTarget>();
    ASSERT_TRUE(target->CreateBuffer(40, 30));
    target->PushLogicalDeviceClip({2, 0, 40, 12});
    constexpr Kernel::RectT<int> shown{5, 3, 30, 20}, beyond{-1000, -7, 1 << 30, 6};
    const auto isOutline = [](const Kernel::RectT<int>& rect, int x, int y) {
        return x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom &&
               (x == rect.left || x == rect.right - 1 || y == rect.top || y == rect.bottom - 1);
    };
    target->DebugShowDeviceRectangle(shown);
    target->DebugShowDeviceRectangle(beyond);
    target->DebugShowDeviceRectangle({9, 9, 9, 20});
    const auto view = target->GetBitmap();
    int black = 0, white = 0;
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 40; ++x) {
            const bool expected =
                x >= 2 && y < 12 && (isOutline(shown, x, y) || isOutline(beyond, x, y));
            const PixelRGBA8 pixel = view.GetRow(unsigned(y))[x];
            ASSERT_EQ(pixel.Alpha(), expected ? 255 : 0) << x << ", " << y;
            black += expected && pixel[0] == 0;
            white += expected && pixel[0] == 255;
        }
    }
    EXPECT_NEAR(black, white, 8); // whatever lies below, half of the line can be told from it
}

} // namespace
} // namespace Renderer
