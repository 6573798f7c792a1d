// Qt's raster engine on an image, as a program would use it.

#include <utility>

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPen>

#include <renderer/paint/FillBitmap.h>

#include "Peer.h"
#include "QtPaint.h"

namespace Benchmarks {

namespace {

using Renderer::LineStyle;

/// What is made once per command.
struct PreparedCommand
{
    QBrush fill;
    QPen pen;
    QImage image;
    bool isSmooth = false;     ///< whether the fill's pixels are interpolated
    bool isLineSmooth = false; ///< the same of the line's fill
};

Qt::PenCapStyle MapCap(LineStyle::LineCap cap)
{
    switch (cap) {
    case LineStyle::RoundCap:
        return Qt::RoundCap;
    case LineStyle::SquareCap:
        return Qt::SquareCap;
    case LineStyle::ButtCap:
        break;
    }
    return Qt::FlatCap;
}

Qt::PenJoinStyle MapJoin(LineStyle::LineJoin join)
{
    switch (join) {
    case LineStyle::RoundJoin:
        return Qt::RoundJoin;
    case LineStyle::BevelJoin:
        return Qt::BevelJoin;
    default:
        return Qt::SvgMiterJoin;
    }
}

QPen MakePen(const DrawPath& draw)
{
    if (!draw.HasStroke())
        return Qt::NoPen;
    const LineStyle& style = *draw.lineStyle.GetLineStyle();
    QPen pen(MakeQtBrush(draw.lineFill), style.GetWeight(), Qt::SolidLine, MapCap(style.GetCap()),
             MapJoin(style.GetJoin()));
    pen.setMiterLimit(style.GetMiterLimit());
    if (style.GetType() != LineStyle::Dashed || style.GetDashPattern().empty())
        return pen;
    QList<qreal> dashes; // in weights, an even number
    const auto& pattern = style.GetDashPattern();
    for (std::size_t i = 0; i < pattern.size() * (1 + pattern.size() % 2); ++i)
        dashes.push_back(pattern[i % pattern.size()] / style.GetWeight());
    pen.setDashPattern(dashes);
    pen.setDashOffset(style.GetDashPhase() / style.GetWeight());
    return pen;
}

bool IsInterpolated(const Renderer::FillDescriptorConst& descriptor)
{
    if (descriptor.IsFillNone() || descriptor.GetFill()->GetKind() != Renderer::Fill::Kind::Bitmap)
        return false;
    const auto& fill = static_cast<const Renderer::FillBitmap&>(*descriptor.GetFill());
    return fill.GetUpSampler() != Raster::ResamplerType::NearestNeighbour;
}

PreparedCommand Prepare(const Command& command)
{
    if (const auto* path = std::get_if<DrawPath>(&command))
        return {MakeQtBrush(path->fill),
                MakePen(*path),
                {},
                IsInterpolated(path->fill),
                IsInterpolated(path->lineFill)};
    if (const auto* draw = std::get_if<DrawBitmap>(&command))
        return {{},
                Qt::NoPen,
                MakeQtImage(*draw->bitmap),
                draw->resampler != Raster::ResamplerType::NearestNeighbour};
    return {};
}

QPainterPath MakePath(const Geometry::PolyCurveDbl& path, Geometry::WindingOrderMode winding)
{
    QPainterPath result;
    result.setFillRule(winding == Geometry::WindingOrderMode::EvenOdd ? Qt::OddEvenFill
                                                                      : Qt::WindingFill);
    for (const Geometry::CurveDbl& curve : path.GetCurves()) {
        const auto& points = curve.GetPoints();
        if (points.empty())
            continue;
        result.moveTo(points[0].x, points[0].y);
        for (std::size_t i = 0; i < curve.GetSegmentCount(); ++i) {
            const Geometry::Point* p = &points[3 * i + 1];
            if (curve.GetSegment(i) == Geometry::CurveDbl::Segment::Line)
                result.lineTo(p[2].x, p[2].y);
            else
                result.cubicTo(p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y);
        }
        if (curve.IsClosed())
            result.closeSubpath();
    }
    return result;
}

/// A page, or a group's picture of a part of it, with its painter.
class Layer
{
public:
    Layer(const QSize& size, const QPoint& origin, double opacity)
        : m_image(size, QImage::Format_ARGB32_Premultiplied), m_origin(origin), m_opacity(opacity)
    {
        m_image.fill(0);
        painter.begin(&m_image);
        painter.setRenderHint(QPainter::Antialiasing);
    }

    /// A layer of what the clip leaves of this one.
    std::unique_ptr<Layer> MakeGroup(double opacity)
    {
        QRect bounds = m_image.rect();
        if (painter.hasClipping())
            bounds &= painter.transform().mapRect(painter.clipBoundingRect()).toAlignedRect();
        auto group = std::make_unique<Layer>(bounds.size(), bounds.topLeft(), opacity);
        group->painter.setTransform(painter.transform() *
                                    QTransform::fromTranslate(-bounds.left(), -bounds.top()));
        return group;
    }

    void Add(Layer& group)
    {
        group.painter.end();
        painter.save();
        painter.resetTransform();
        painter.setOpacity(group.m_opacity);
        painter.drawImage(group.m_origin, group.m_image);
        painter.restore();
    }

    const QImage& GetImage() const { return m_image; }

private:
    QImage m_image;
    QPoint m_origin; // within the layer below
    double m_opacity;

public:
    QPainter painter; // ends before its image does
};

/// Keeps Qt to one thread, like the others: large fills go to a pool of threads, which there is
/// none of once an application has ended.
void StayOnOneThread()
{
    static const bool done = [] {
        int count = 1;
        char name[] = "benchmark";
        char* arguments[] = {name, nullptr};
        const QCoreApplication application(count, arguments);
        return true;
    }();
    static_cast<void>(done);
}

class QtPeer final : public Peer
{
public:
    explicit QtPeer(const Scene& scene) : m_scene(scene)
    {
        StayOnOneThread();
        m_layers.push_back(
            std::make_unique<Layer>(QSize(int(scene.width), int(scene.height)), QPoint(), 1.0));
        Now().painter.setTransform(MakeQtTransform(scene.logicalToDevice));
        for (const Command& command : scene.commands)
            m_prepared.push_back(Prepare(command));
    }

    void Draw() override
    {
        for (std::size_t i = 0; i < m_scene.commands.size(); ++i)
            Play(m_scene.commands[i], m_prepared[i]);
    }

    Picture GetPicture() const override
    {
        const QImage& image = m_layers.front()->GetImage();
        Picture picture;
        for (int y = 0; y < image.height(); ++y) {
            const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
            for (int x = 0; x < image.width(); ++x)
                picture.push_back({static_cast<unsigned char>(qRed(row[x])),
                                   static_cast<unsigned char>(qGreen(row[x])),
                                   static_cast<unsigned char>(qBlue(row[x])),
                                   static_cast<unsigned char>(qAlpha(row[x]))});
        }
        return picture;
    }

private:
    Layer& Now() { return *m_layers.back(); }

    void Play(const Command& command, const PreparedCommand& prepared)
    {
        std::visit(Overloaded{
                       [&](const DrawPath& draw) { Paint(draw, prepared); },
                       [&](const DrawBitmap& draw) {
                           QPainter& painter = Now().painter;
                           painter.setOpacity(double(draw.opacity));
                           painter.setRenderHint(QPainter::SmoothPixmapTransform,
                                                 prepared.isSmooth);
                           painter.drawImage(QRectF(draw.dest.left, draw.dest.top,
                                                    draw.dest.Width(), draw.dest.Height()),
                                             prepared.image);
                       },
                       [&](const PushTransform& push) {
                           Now().painter.save();
                           Now().painter.setTransform(MakeQtTransform(push.transform), true);
                       },
                       [&](const PopTransform&) { Now().painter.restore(); },
                       [&](const PushClip& push) {
                           Now().painter.save();
                           Now().painter.setClipPath(MakePath(*push.path, push.winding),
                                                     Qt::IntersectClip);
                       },
                       [&](const PopClip&) { Now().painter.restore(); },
                       [&](const PushGroup& push) { OpenGroup(double(push.opacity)); },
                       [&](const PopGroup&) { CloseGroup(); },
                   },
                   command);
    }

    void OpenGroup(double opacity) { m_layers.push_back(Now().MakeGroup(opacity)); }

    void CloseGroup()
    {
        const auto group = std::move(m_layers.back());
        m_layers.pop_back();
        Now().Add(*group);
    }

    void Paint(const DrawPath& draw, const PreparedCommand& prepared)
    {
        if (draw.IsGroup())
            OpenGroup(double(draw.opacity));
        QPainter& painter = Now().painter;
        painter.setOpacity(draw.IsGroup() ? 1.0 : double(draw.opacity));
        const QPainterPath path = MakePath(*draw.path, draw.winding);
        const auto stroke = [&] {
            if (!draw.HasStroke())
                return;
            painter.setRenderHint(QPainter::SmoothPixmapTransform, prepared.isLineSmooth);
            painter.strokePath(path, prepared.pen);
        };
        const bool behind = draw.lineStyle.GetBehind();
        if (behind)
            stroke();
        if (draw.HasFill()) {
            painter.setRenderHint(QPainter::SmoothPixmapTransform, prepared.isSmooth);
            painter.fillPath(path, prepared.fill);
        }
        if (!behind)
            stroke();
        if (draw.IsGroup())
            CloseGroup();
    }

    const Scene& m_scene;
    std::vector<PreparedCommand> m_prepared;
    std::vector<std::unique_ptr<Layer>> m_layers;
};

} // namespace

std::unique_ptr<Peer> MakeQtPeer(const Scene& scene)
{
    return std::make_unique<QtPeer>(scene);
}

} // namespace Benchmarks
