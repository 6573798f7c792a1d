#pragma once

#include <kernel/Countable.h>
#include <kernel/Counted.h>

namespace Renderer {

/// One step of the span pipeline: a colour populator writes or changes the scratch pixels of a
/// span, a transparency populator scales their alpha.
struct SpanPopulator
{
    /// \param context what the populator was made with.
    /// \param scratch the span's pixels, premultiplied, in the format of the target.
    /// \param x, y the page's device pixel where the span begins.
    using Function = void (*)(void* context, void* scratch, int x, int y, unsigned length);

    Function function = nullptr;
    void* context = nullptr;
    /// Keeps the context alive; empty when the maker does.
    Kernel::Counted<const Kernel::Countable> owner;
    /// Whether the outcome is the same everywhere, given a scratch that is.
    bool isUniform = false;
    /// Whether every pixel that it writes has full alpha. Only for those that write the scratch.
    bool isOpaque = false;
    /// Whether several threads may call it at once.
    bool isConcurrent = false;
};

/// The step of the span pipeline between the two kinds: scales pixels by what it finds in the paint
/// that the colour populators made. Several threads may call it at once.
struct SpanScaler
{
    /// \param paint the span's pixels, premultiplied, in the format of the target.
    /// \param pixels what is scaled: the paint itself or pixels beside it.
    using Function = void (*)(const void* context, const void* paint, void* pixels, int x, int y,
                              unsigned length);

    Function function = nullptr;
    const void* context = nullptr;
};

} // namespace Renderer
