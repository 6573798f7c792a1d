// The library itself, through its public interface.

#include <stdexcept>

#include <renderer/core/BitmapRenderTarget.h>

#include "Peer.h"

namespace Benchmarks {

namespace {

using Renderer::BlendOptions;
using Renderer::FillBlendMode;
using Renderer::RenderTarget;

class RendererPeer final : public Peer
{
public:
    explicit RendererPeer(const Scene& scene)
        : m_scene(scene), m_target(Renderer::BitmapRenderTarget::Create(Raster::Format::RGBA8, {}))
    {
        if (!m_target->CreateBuffer(scene.width, scene.height))
            throw std::runtime_error("no memory for the page");
        m_target->SetDeviceExpansionTolerance(Tolerance);
        m_target->SetLogToDevTransform(scene.logicalToDevice);
    }

    void Draw() override
    {
        RenderTarget& target = *m_target;
        const Overloaded play{
            [&](const DrawPath& draw) {
                target.DrawPolyCurve(draw.path, draw.opacity, FillBlendMode::Normal,
                                     BlendOptions::Identity(), draw.fill, {}, draw.lineFill,
                                     draw.lineStyle, draw.winding, true, true);
            },
            [&](const DrawBitmap& draw) {
                target.SetUpResamplerType(draw.resampler);
                target.SetDownResamplerType(draw.resampler);
                target.DrawBitmap(draw.dest, draw.bitmap, draw.opacity, FillBlendMode::Normal,
                                  BlendOptions::Identity(), true);
            },
            [&](const PushTransform& push) {
                target.PushTransform(push.transform,
                                     RenderTarget::TransformScalarMode::Concatenate);
            },
            [&](const PopTransform&) { target.PopTransform(); },
            [&](const PushClip& push) { target.PushClipCurvesPath(push.path, push.winding); },
            [&](const PopClip&) { target.PopClipPath(); },
            [&](const PushGroup& push) {
                target.PushComposite(RenderTarget::CompositeInit::Clear, FillBlendMode::Normal,
                                     BlendOptions::Identity(), push.opacity);
            },
            [&](const PopGroup&) { target.PopCompositeAsFill({}, {}); },
        };
        for (const Command& command : m_scene.commands)
            std::visit(play, command);
    }

    Picture GetPicture() const override
    {
        const auto buffer = m_target->GetBuffer();
        Picture picture;
        for (unsigned y = 0; y < m_scene.height; ++y) {
            const unsigned char* row = buffer->GetRow(y);
            for (unsigned x = 0; x < m_scene.width; ++x, row += 4)
                picture.push_back({row[0], row[1], row[2], row[3]});
        }
        return picture;
    }

private:
    const Scene& m_scene;
    Kernel::Counted<Renderer::BitmapRenderTarget> m_target;
};

} // namespace

std::unique_ptr<Peer> MakeRendererPeer(const Scene& scene)
{
    return std::make_unique<RendererPeer>(scene);
}

} // namespace Benchmarks
