// A first program: draws a picture and writes it as a PNG file.
#include <kernel/FileOutStream.h>
#include <raster/Codecs.h>
#include <renderer/core/BitmapRenderTarget.h>

int main()
{
    using namespace Renderer;
    const Kernel::Counted<BitmapRenderTarget> target(
        BitmapRenderTarget::Create(Raster::Format::RGBA8, {}));
    if (!target->CreateBuffer(400, 300))
        return 1;

    const auto orange = FillDescriptorConst::CreateSolid({{255, 140, 0, 255}});
    const auto ink = FillDescriptorConst::CreateSolid({{20, 30, 80, 255}});
    target->DrawEllipse({50, 50, 350, 250}, 1.0F, orange, ink, LineStyleDescriptorConst(12.0));
    target->PushTransform(Raster::AffineTransform::Rotation(0.3),
                          RenderTarget::TransformScalarMode::Concatenate);
    target->DrawRectangle(180, 60, 300, 100, 0.5F, ink, {}, {});
    target->PopTransform();

    Kernel::FileOutStream file("picture.png");
    Raster::WritePNG(file, Raster::DynamicBitmap(target->GetBuffer(), target->GetProfile()));
    file.Close();
}
