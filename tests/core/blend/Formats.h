#pragma once

#include <gtest/gtest.h>

#include <renderer/core/blend/BlendTable.h>

namespace BlendTests {

/// The blend functions of a format: those that this machine uses, and both builds of them (null
/// where the machine cannot run one).
struct Tables
{
    const Renderer::SpanBlendTable* used;
    const Renderer::SpanBlendTable* baseline;
    const Renderer::SpanBlendTable* wide;
};

template<class PixelT>
Tables GetTables()
{
    using Blender = Renderer::RenderTargetBlender<PixelT>;
    const auto* const wide = Blender::GetWideBlends(false);
    return {&Blender::GetTable(), &Blender::GetBaselineBlends(false).modes,
            wide ? &wide->modes : nullptr};
}

/// The pixels of all bitmap targets.
using AllPixels =
    testing::Types<Raster::PixelRGBA8, Raster::PixelRGBA16, Raster::PixelIA8, Raster::PixelIA16,
                   Raster::PixelCMYKA8, Raster::PixelLABA16, Raster::PixelRGBAUF>;

} // namespace BlendTests
