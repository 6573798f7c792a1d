#pragma once

#include <renderer/core/blend/BlendTableBody.h>

#include "Formats.h"

template<class PixelT>
BlendTests::Tables BlendTests::GetTables()
{
    using namespace Renderer::Blending;
    return {&Renderer::GetSpanBlendTable<PixelT>(), &SpanBlendTableOf<PixelT, BaselineCode>,
            HasWideCode() ? &SpanBlendTableOf<PixelT, WideCode> : nullptr};
}
