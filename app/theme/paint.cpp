#include "app/theme/paint.h"

#include <QPainterPath>
#include <QTransform>
#include <algorithm>
#include <cmath>

namespace morvane {

namespace {

qreal scaleOf(const QPainter& painter) {
    const QTransform transform = painter.deviceTransform();
    return std::hypot(transform.m11(), transform.m12());
}

void fillRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color) {
    if (rect.isEmpty())
        return;
    painter.setBrush(color);
    if (radius <= 0)
        painter.fillRect(rect, color);
    else
        painter.drawRoundedRect(rect, radius, radius);
}

}  // namespace

qreal hairlineWidth(const QPainter& painter) {
    const qreal scale = scaleOf(painter);
    return (scale < 1.75 ? 1.0 : 2.0) / scale;
}

QRectF snapToDevice(const QPainter& painter, const QRectF& rect) {
    const QTransform transform = painter.deviceTransform();
    if (transform.type() > QTransform::TxScale)
        return rect;
    // Edge by edge, as the toolkit rounds the clip of a widget: a border along a widget's edge is never cut
    // off.
    const QRectF device = transform.mapRect(rect);
    const QRectF snapped(QPointF(std::round(device.left()), std::round(device.top())),
                         QPointF(std::round(device.right()), std::round(device.bottom())));
    return transform.inverted().mapRect(snapped);
}

qreal wholePixels(const QPainter& painter, qreal length) {
    const qreal scale = scaleOf(painter);
    return std::max(1.0, std::round(length * scale)) / scale;
}

void paintBox(QPainter& painter, const QRectF& rect, const Box& box) {
    const QRectF outer = snapToDevice(painter, rect);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (!box.border.isValid()) {
        if (box.fill.isValid())
            fillRounded(painter, outer, box.radius, box.fill);
        painter.restore();
        return;
    }
    const qreal width = box.borderWidth > 0 ? box.borderWidth : hairlineWidth(painter);
    const QRectF inner = outer.adjusted(width, width, -width, -width);
    const qreal innerRadius = std::max(0.0, box.radius - width);
    if (box.fill.isValid()) {
        // Fill over border, not border over fill: the corners then blend into what lies behind once only.
        fillRounded(painter, outer, box.radius, box.border);
        fillRounded(painter, inner, innerRadius, box.fill);
    } else {
        QPainterPath ring;
        ring.setFillRule(Qt::OddEvenFill);
        ring.addRoundedRect(outer, box.radius, box.radius);
        ring.addRoundedRect(inner, innerRadius, innerRadius);
        painter.fillPath(ring, box.border);
    }
    painter.restore();
}

void paintHairline(QPainter& painter, const QRectF& rect, Qt::Edge edge, const QColor& color) {
    const qreal width = hairlineWidth(painter);
    QRectF strip = snapToDevice(painter, rect);
    switch (edge) {
        case Qt::TopEdge:
            strip.setHeight(width);
            break;
        case Qt::LeftEdge:
            strip.setWidth(width);
            break;
        case Qt::BottomEdge:
            strip.setTop(strip.bottom() - width);
            break;
        case Qt::RightEdge:
            strip.setLeft(strip.right() - width);
            break;
    }
    painter.fillRect(strip, color);
}

}  // namespace morvane
