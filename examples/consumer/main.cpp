// The smallest program that uses the installed library: it lists the blend modes.
#include <cstdio>

#include <kernel/Format.h>
#include <renderer/paint/FillBlendMode.h>

using Renderer::FillBlendMode;

int main()
{
    for (int number = 0; number < FillBlendMode::SpanModeCount; ++number) {
        const auto mode = static_cast<FillBlendMode::BlendMode>(number);
        const Kernel::String line = Kernel::FormatVT("%1 %2", Kernel::ToString(number, 2),
                                                     FillBlendMode::ToString(mode, false));
        std::puts(line.GetCString());
    }
}
