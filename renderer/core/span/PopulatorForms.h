#pragma once

#include <algorithm>

#include <renderer/core/blend/ScaleSpan.h>
#include <renderer/core/span/SpanPopulator.h>

namespace Renderer {

/// What a populator's paint does to the scratch span.
enum class PopulatorRole
{
    Colour,       ///< writes the scratch
    ColourOver,   ///< is composited Normal over the scratch: the further paints of a stack
    ColourAtop,   ///< is painted over the scratch within its alpha, which stays
    Transparency, ///< scales the scratch by the paint's alpha
};

/// Turns a populator class into the functions of its roles.
///
/// \tparam PopulatorT has `using Processor`, `Populate(x, y, length, Pixel* out)`, and, where its
///         paint is the same everywhere, `GetUniformPixel()`; and, where it can be known,
///         `IsOpaque()`. Where Populate is not const, `IsConcurrent()` tells whether several
///         threads may call it all the same.
template<class PopulatorT>
struct PopulatorForms
{
    using Processor = typename PopulatorT::Processor;
    using Pixel = typename Processor::Pixel;

    static constexpr bool IsUniform = requires(const PopulatorT& populator)
    {
        populator.GetUniformPixel();
    };

    /// The populator that plays \p role; \p populator must outlive it.
    static SpanPopulator Make(PopulatorT& populator, PopulatorRole role)
    {
        switch (role) {
        case PopulatorRole::Colour:
            return Make(&Write, populator, IsOpaque(populator));
        case PopulatorRole::ColourOver:
            return Make(&Composite, populator);
        case PopulatorRole::ColourAtop:
            return Make(&PaintAtop, populator);
        case PopulatorRole::Transparency:
            break;
        }
        return Make(&ScaleByAlpha, populator);
    }

private:
    static SpanPopulator Make(SpanPopulator::Function function, PopulatorT& populator,
                              bool isOpaque = false)
    {
        return {function, &populator, {}, IsUniform, isOpaque, IsConcurrent(populator)};
    }

    static bool IsConcurrent(const PopulatorT& populator)
    {
        // What is const throughout remembers nothing from span to span.
        if constexpr (requires(Pixel * out) { populator.Populate(0, 0, 1U, out); })
            return true;
        else
            return populator.IsConcurrent();
    }

    static bool IsOpaque(const PopulatorT& populator)
    {
        if constexpr (requires { populator.IsOpaque(); })
            return populator.IsOpaque();
        else
            return false;
    }

    static void Write(void* context, void* scratch, int x, int y, unsigned length)
    {
        static_cast<PopulatorT*>(context)->Populate(x, y, length, static_cast<Pixel*>(scratch));
    }

    static void Composite(void* context, void* scratch, int x, int y, unsigned length)
    {
        ForBlocks(context, scratch, x, y, length,
                  [](const Pixel* paint, Pixel* block, unsigned count) {
                      for (unsigned i = 0; i < count; ++i)
                          block[i] = Processor::Over(paint[i], block[i]);
                  });
    }

    static void PaintAtop(void* context, void* scratch, int x, int y, unsigned length)
    {
        ForBlocks(context, scratch, x, y, length,
                  [](const Pixel* paint, Pixel* block, unsigned count) {
                      for (unsigned i = 0; i < count; ++i)
                          block[i] = Processor::Atop(paint[i], block[i]);
                  });
    }

    static void ScaleByAlpha(void* context, void* scratch, int x, int y, unsigned length)
    {
        auto* pixels = static_cast<Pixel*>(scratch);
        if constexpr (IsUniform) {
            const auto alpha = static_cast<PopulatorT*>(context)->GetUniformPixel().Alpha();
            if constexpr (Blending::HasWordNormal<Pixel>)
                return Blending::ScaleSpan(pixels, alpha, length);
            for (unsigned i = 0; i < length; ++i)
                pixels[i] = Processor::Scale(pixels[i], alpha);
        } else {
            ForBlocks(context, scratch, x, y, length,
                      [](const Pixel* paint, Pixel* block, unsigned count) {
                          if constexpr (Blending::HasWordNormal<Pixel>)
                              return Blending::ScaleSpanByAlpha(block, paint, count);
                          for (unsigned i = 0; i < count; ++i)
                              block[i] = Processor::Scale(block[i], paint[i].Alpha());
                      });
        }
    }

    /// Paints block by block aside and combines each with the scratch by
    /// \p combine(paint, block, count).
    template<class Combine>
    static void ForBlocks(void* context, void* scratch, int x, int y, unsigned length,
                          Combine combine)
    {
        auto* pixels = static_cast<Pixel*>(scratch);
        while (length > 0) {
            Pixel paint[Processor::BlockLength];
            const unsigned count = std::min(length, Processor::BlockLength);
            static_cast<PopulatorT*>(context)->Populate(x, y, count, paint);
            combine(paint, pixels, count);
            pixels += count;
            x += static_cast<int>(count);
            length -= count;
        }
    }
};

} // namespace Renderer
