#pragma once

#include <QBrush>
#include <QImage>
#include <QTransform>

#include "Scene.h"

namespace Benchmarks {

QTransform MakeQtTransform(const Transform& transform);

/// The pixels in Qt's own order of bytes.
QImage MakeQtImage(const Raster::DynamicBitmap& bitmap);

/// The brush of a fill, in the logical coordinates that the fill is used in. No brush for no paint.
QBrush MakeQtBrush(const Renderer::FillDescriptorConst& fill);

} // namespace Benchmarks
