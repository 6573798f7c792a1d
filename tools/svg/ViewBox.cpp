#include "ViewBox.h"

#include <algorithm>
#include <array>

#include "Scanner.h"

namespace Svg {

std::optional<Kernel::RectT<double>> ParseViewBox(std::string_view text)
{
    Scanner scanner(Trim(text));
    std::array<double, 4> values{};
    for (double& value : values) {
        const auto number = scanner.Number();
        if (!number)
            return std::nullopt;
        value = *number;
        scanner.SkipCommaSpace();
    }
    const auto [left, top, width, height] = values;
    if (!scanner.AtEnd() || width < 0.0 || height < 0.0)
        return std::nullopt;
    return Kernel::RectT<double>{left, top, left + width, top + height};
}

AspectRatio AspectRatio::Parse(std::string_view text)
{
    AspectRatio ratio;
    Scanner scanner(Trim(text));
    if (scanner.AcceptWord("defer"))
        scanner.SkipSpace();
    const std::string_view align = scanner.Word();
    if (align == "none") {
        ratio.uniform = false;
        return ratio;
    }
    const auto position = [](std::string_view name) {
        return name == "Min" ? 0.0 : name == "Max" ? 1.0 : 0.5;
    };
    if (align.size() == 8 && align[0] == 'x' && align[4] == 'Y') {
        ratio.alignX = position(align.substr(1, 3));
        ratio.alignY = position(align.substr(5, 3));
    }
    scanner.SkipSpace();
    ratio.slice = scanner.AcceptWord("slice");
    return ratio;
}

Transform FitBox(const Kernel::RectT<double>& box, const Kernel::RectT<double>& viewport,
                 const AspectRatio& ratio)
{
    double scaleX = viewport.Width() / box.Width();
    double scaleY = viewport.Height() / box.Height();
    if (ratio.uniform)
        scaleX = scaleY = ratio.slice ? std::max(scaleX, scaleY) : std::min(scaleX, scaleY);
    const double x = viewport.left + ratio.alignX * (viewport.Width() - box.Width() * scaleX);
    const double y = viewport.top + ratio.alignY * (viewport.Height() - box.Height() * scaleY);
    return {scaleX, 0.0, x - box.left * scaleX, 0.0, scaleY, y - box.top * scaleY};
}

} // namespace Svg
