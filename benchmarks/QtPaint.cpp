#include "QtPaint.h"

#include <algorithm>

#include <QConicalGradient>
#include <QLinearGradient>
#include <QRadialGradient>

#include <renderer/paint/FillBitmap.h>
#include <renderer/paint/FillGradient.h>
#include <renderer/paint/FillSolid.h>

namespace Benchmarks {

namespace {

using Renderer::Fill;
using Renderer::FillGradient;

QColor GetColour(const Renderer::Colour& colour)
{
    Raster::PixelRGBAF pixel;
    colour.GetColour(pixel, true, {});
    return QColor::fromRgbF(pixel[0], pixel[1], pixel[2], pixel.Alpha());
}

QGradient::Spread MapSpread(FillGradient::Spread spread)
{
    switch (spread) {
    case FillGradient::Reflect:
        return QGradient::ReflectSpread;
    case FillGradient::Repeat:
        return QGradient::RepeatSpread;
    case FillGradient::Pad:
        break;
    }
    return QGradient::PadSpread;
}

/// In the unit frame.
QGradient MakeGradient(const FillGradient& fill)
{
    switch (fill.GetType()) {
    case FillGradient::Linear:
        return QLinearGradient(0.0, 0.0, 1.0, 0.0);
    case FillGradient::Conical:
        return QConicalGradient(0.0, 0.0, 0.0);
    default:
        return QRadialGradient(QPointF(0.0, 0.0), 1.0, {fill.GetFocus().x, fill.GetFocus().y});
    }
}

QBrush MakeGradientBrush(const FillGradient& fill, const QTransform& frame)
{
    QGradient gradient = MakeGradient(fill);
    gradient.setSpread(MapSpread(fill.GetSpread()));
    gradient.setInterpolationMode(QGradient::ComponentInterpolation); // as SVG mixes colours
    // A second stop at one position would replace the first: they are told apart by a hair.
    const auto& stops = fill.GetGradient()->GetColours();
    const double gap = 1e-6;
    double last = -gap;
    for (std::size_t i = 0; i < stops.size(); ++i) {
        const double most = 1.0 - gap * double(stops.size() - 1 - i);
        last = std::clamp(stops[i].position, last + gap, most);
        gradient.setColorAt(last, GetColour(*stops[i].colour));
    }
    QBrush brush(gradient);
    // Angles of conical gradients grow against the clock.
    const bool turnsBack = fill.GetType() == FillGradient::Conical;
    brush.setTransform(turnsBack ? QTransform::fromScale(1.0, -1.0) * frame : frame);
    return brush;
}

/// Textures repeat for ever; around one that does not, its edge goes on for a while.
QBrush MakeBitmapBrush(const Renderer::FillBitmap& fill, const QTransform& frame)
{
    const QImage image = MakeQtImage(*fill.GetBitmap());
    const QTransform toFrame =
        QTransform::fromScale(1.0 / image.width(), 1.0 / image.height()) * frame;
    const int margin = fill.GetExtendType() == Raster::ExtendType::Wrap ? 0 : 16;
    QImage wide(image.width() + 2 * margin, image.height() + 2 * margin, image.format());
    for (int y = 0; y < wide.height(); ++y)
        for (int x = 0; x < wide.width(); ++x)
            wide.setPixel(x, y,
                          image.pixel(std::clamp(x - margin, 0, image.width() - 1),
                                      std::clamp(y - margin, 0, image.height() - 1)));
    QBrush brush(wide);
    brush.setTransform(QTransform::fromTranslate(-margin, -margin) * toFrame);
    return brush;
}

} // namespace

QTransform MakeQtTransform(const Transform& t)
{
    return {t.m00, t.m10, t.m01, t.m11, t.m02, t.m12};
}

QImage MakeQtImage(const Raster::DynamicBitmap& bitmap)
{
    const auto& buffer = *bitmap.GetBuffer();
    QImage image(int(bitmap.GetWidth()), int(bitmap.GetHeight()),
                 QImage::Format_ARGB32_Premultiplied);
    for (unsigned y = 0; y < bitmap.GetHeight(); ++y) {
        const unsigned char* from = buffer.GetRow(y);
        auto* to = reinterpret_cast<QRgb*>(image.scanLine(int(y)));
        for (unsigned x = 0; x < bitmap.GetWidth(); ++x, from += 4)
            to[x] = qRgba(from[0], from[1], from[2], from[3]);
    }
    return image;
}

QBrush MakeQtBrush(const Renderer::FillDescriptorConst& descriptor)
{
    if (descriptor.IsFillNone())
        return {};
    const Fill& fill = *descriptor.GetFill();
    const QTransform frame = MakeQtTransform(descriptor.GetTransform());
    switch (fill.GetKind()) {
    case Fill::Kind::Solid:
        return GetColour(*fill.GetColour());
    case Fill::Kind::Gradient:
        return MakeGradientBrush(static_cast<const FillGradient&>(fill), frame);
    case Fill::Kind::Bitmap:
        return MakeBitmapBrush(static_cast<const Renderer::FillBitmap&>(fill), frame);
    default:
        return {};
    }
}

} // namespace Benchmarks
