#pragma once

#include <functional>
#include <random>
#include <vector>

#include <raster/adjustments/InvertAdjustment.h>
#include <renderer/core/PixelRenderTarget.h>

#include <core/target/FormatFixture.h>

namespace Renderer {

/// A long row of random calls on a target: pushes and pops of every kind, with drawing between. All
/// that was pushed is popped in the end, whatever failed on the way: a push that throws has pushed
/// nothing, a pop that throws has popped.
class RandomSession
{
public:
    using Target = Kernel::Counted<RenderTarget>;
    using Rect = Kernel::RectT<double>;

    RandomSession(Target target, unsigned seed) : m_random(seed)
    {
        m_open.reserve(512);
        m_targets.reserve(512);
        m_targets.push_back(std::move(target));
    }

    void Play(int count)
    {
        while (count-- > 0)
            Survive([&] { Step(); });
        while (!m_open.empty())
            Close();
    }

private:
    using CloseCall = void (*)(RandomSession&);

    template<class Call>
    static void Survive(const Call& call)
    {
        try {
            call();
        } catch (const std::bad_alloc&) {
        }
    }

    RenderTarget& Now() { return *m_targets.back(); }
    unsigned Pick(unsigned count) { return unsigned(m_random() % count); }
    float Opacity() { return Pick(2) ? 1.0F : float(Pick(101)) / 100.0F; }
    Rect Place()
    {
        const double x = -9.0 + Pick(200) / 4.0, y = -9.0 + Pick(160) / 4.0;
        return {x, y, x + Pick(140) / 4.0, y + Pick(140) / 4.0};
    }
    Kernel::Counted<const Geometry::PolyCurveDbl> Path()
    {
        const Rect place = Place();
        auto path = Kernel::MakeCounted<Geometry::PolyCurveDbl>(place);
        if (Pick(2))
            path->AddEllipse({place.left, place.top}, place.Width() / 2, place.Height() / 3);
        return path;
    }
    FillDescriptorConst Paint()
    {
        const auto byte = [&] { return static_cast<unsigned char>(m_random()); };
        const PixelRGBA8 colour{{byte(), byte(), byte(), Pick(2) ? byte() : Byte(255)}};
        const Raster::AffineTransform::Params frame{20, 4, double(Pick(9)), -3, 15, 2};
        switch (Pick(5)) {
        case 0:
            return MakeGradient(FillGradient::FillGradientType(Pick(4)),
                                {colour, {{0, 9, 200, 255}}}, frame);
        case 1: {
            const auto pixels = Raster::DynamicBuffer::Create(Format::RGBA8, 7, 5);
            if (!pixels)
                return {};
            std::memset(pixels->GetRow(Pick(5)), int(Pick(256)), 28);
            return {FillDescriptorConst::CreateBitmap(
                        Kernel::MakeCounted<Raster::DynamicBitmap>(pixels),
                        Raster::ExtendType(Pick(5)), Raster::ResamplerType(Pick(4))),
                    frame};
        }
        default:
            return FillDescriptorConst::CreateSolid(colour);
        }
    }
    Kernel::Consolidated<Colour> MatteColour()
    {
        const FillDescriptorConst paint = Paint(); // none when there was no memory for a bitmap
        return paint.GetFill() ? paint.GetFill()->GetColour() : Kernel::Consolidated<Colour>();
    }
    static unsigned char Byte(int value) { return static_cast<unsigned char>(value); }
    FillDescriptorConst Perhaps(const FillDescriptorConst& paint)
    {
        return Pick(3) ? FillDescriptorConst() : paint;
    }
    Kernel::Counted<const Raster::DynamicBuffer> MaskPixels()
    {
        constexpr Format formats[]{Format::M8, Format::M8, Format::M16, Format::IA8, Format::RGBA8};
        const auto pixels = Raster::DynamicBuffer::Create(formats[Pick(5)], 12, 12);
        for (unsigned y = 0; pixels && y < 12; ++y)
            std::memset(pixels->GetRow(y), int(Pick(256)), 12 * pixels->GetPixelSize());
        return pixels;
    }

    void Step()
    {
        const unsigned choice = Pick(10);
        if (choice < 4)
            Draw();
        else if (choice < 7)
            Push();
        else if (!m_open.empty())
            Close();
    }

    void Draw()
    {
        const auto path = Path();
        const bool smooth = Pick(4) != 0;
        const auto mode = Pick(2) ? FillBlendMode::Normal : FillBlendMode::BlendMode(Pick(30));
        switch (Pick(12)) {
        case 0:
            if (Pick(4) == 0)
                Now().Clear();
            break;
        case 1:
            Now().Matte(MatteColour());
            break;
        case 2:
            Now().Interpolate(Opacity(), mode, BlendOptions::Identity(), Paint(), Perhaps(Paint()));
            break;
        case 3:
            Now().Blend(Opacity(), mode, BlendOptions::Identity(), Paint(), Perhaps(Paint()));
            break;
        case 4:
            if (const auto pixels = MaskPixels())
                Now().DrawBuffer(Place(), pixels, Opacity(), mode, BlendOptions::Identity(), true);
            break;
        default:
            Now().DrawPolyCurve(path, Opacity(), mode, BlendOptions::Identity(),
                                Perhaps(Paint()).IsFillNone() ? Paint() : FillDescriptorConst(),
                                Perhaps(Paint()), Perhaps(Paint()),
                                LineStyleDescriptorConst(0.5 + Pick(9)),
                                Geometry::WindingOrderMode(Pick(2)), smooth, smooth);
        }
    }

    void Push()
    {
        using enum RenderTarget::TransformScalarMode;
        constexpr RenderTarget::TransformScalarMode modes[]{Concatenate, Inherit, Reset};
        switch (Pick(14)) {
        case 0:
        case 1: {
            const Raster::AffineTransform::Params map{Pick(9) ? 1.1 : 0.0,
                                                      Pick(2) ? 0.0 : 0.3,
                                                      double(Pick(5)),
                                                      Pick(2) ? 0.0 : -0.2,
                                                      0.9,
                                                      0.25 * Pick(9)};
            Now().PushTransform(map, modes[Pick(3)]);
            return Opened([](RandomSession& s) { s.Now().PopTransform(); });
        }
        case 2:
            Now().PushLogicalDeviceClip(Place());
            return Opened([](RandomSession& s) { s.Now().PopDeviceClip(); });
        case 3: {
            const int x = int(Pick(30)), y = int(Pick(30));
            static_cast<PixelRenderTarget&>(Now()).PushAbsoluteDeviceClip({x, y, x + 30, y + 25});
            return Opened([](RandomSession& s) { s.Now().PopDeviceClip(); });
        }
        case 4:
            PushClip();
            return Opened([](RandomSession& s) { s.Now().PopClipPath(); });
        case 5:
            Now().PushClipPathGroup();
            return Opened([](RandomSession& s) {
                // Paths of the group stay until it is popped as one.
                Survive([&] { s.PushClip(); });
                Survive([&] { s.PushClip(); });
                Survive([&] { s.Now().PopClipPathGroup(); });
                s.Now().PopClipPath();
            });
        case 6:
        case 7:
        case 8:
            Now().PushComposite(RenderTarget::CompositeInit(Pick(4)),
                                FillBlendMode::BlendMode(Pick(33)), BlendOptions::Identity(),
                                Opacity());
            return Opened([](RandomSession& s) { s.PopComposite(); });
        case 9: {
            const Rect bounds = Place();
            const auto sub = Now().PushSubRender(bounds, AllFormats[Pick(7)], {});
            if (!sub)
                return;
            m_targets.push_back(sub);
            return Opened([](RandomSession& s) {
                s.m_targets.pop_back();
                Kernel::Consolidated<Colour> matte;
                if (s.Pick(2))
                    Survive([&] { matte = s.MatteColour(); });
                s.Now().PopSubRender(matte);
            });
        }
        case 10:
            Now().PushColourTransform(Kernel::MakeCounted<Raster::InvertAdjustment>());
            return Opened([](RandomSession& s) { s.Now().PopColourTransform(); });
        case 11:
            Now().PushAlphaChannelOnly();
            return Opened([](RandomSession& s) { s.Now().PopAlphaChannelOnly(); });
        case 12: {
            const Rect bounds = Place();
            Now().PushClippingMask(Pick(3) ? bounds : Rect{3, 4, 15, 16}, MaskPixels());
            return Opened([](RandomSession& s) { s.Now().PopClippingMask(); });
        }
        default:
            static_cast<BitmapRenderTarget&>(Now()).PushLiveFilters(
                {int(Pick(9)), 3, 10 + int(Pick(9)), 20});
            return Opened([](RandomSession& s) {
                static_cast<BitmapRenderTarget&>(s.Now()).PopLiveFilters();
            });
        }
    }

    void PushClip()
    {
        const auto path = Path();
        if (Pick(2))
            return Now().PushClipCurvesPath(path, Geometry::WindingOrderMode(Pick(2)));
        const auto set = Kernel::MakeCounted<ConstPolyPolyCurve>();
        set->Add(path, {0.9, 0.1, 2, 0, 1, 1});
        Now().PushClipPolyCurvesPath(set, Geometry::WindingOrderMode(Pick(2)));
    }

    void PopComposite()
    {
        // Made first: what throws here must not keep the group from being closed.
        FillDescriptorConst paint, transparency;
        Survive([&] {
            paint = Paint();
            transparency = Perhaps(Paint());
        });
        switch (Pick(5)) {
        case 0:
            return Now().PopCompositeAsTransparency(paint, transparency);
        case 1:
            return Now().PopCompositeAsFillAndInterpolate(paint);
        case 2:
            return Now().PopCompositeAsTransparencyAndInterpolate(paint);
        default:
            return Now().PopCompositeAsFill(Perhaps(paint), transparency);
        }
    }

    void Opened(CloseCall close) { m_open.push_back(close); }

    void Close()
    {
        const CloseCall close = m_open.back();
        m_open.pop_back();
        Survive([&] { close(*this); });
    }

    std::mt19937 m_random;
    std::vector<Target> m_targets; // the innermost sub-render last
    std::vector<CloseCall> m_open;
};

} // namespace Renderer
