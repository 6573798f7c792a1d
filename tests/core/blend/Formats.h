#pragma once

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
Tables GetTables();

} // namespace BlendTests
