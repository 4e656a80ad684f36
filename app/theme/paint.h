// Drawing helpers that keep lines and edges on the device pixel grid at every scale.
#pragma once

#include <QColor>
#include <QPainter>
#include <QRectF>

namespace morvane {

/// Thickness of a hairline in logical pixels: 1 device pixel below a scale of 1.75, else 2.
qreal hairlineWidth(const QPainter& painter);

/// `rect` with its edges moved to the nearest device pixels. Unchanged under a rotated painter.
QRectF snapToDevice(const QPainter& painter, const QRectF& rect);

/// `length` logical pixels rounded to whole device pixels, one at least: the same wherever it lies.
qreal wholePixels(const QPainter& painter, qreal length);

/// A rounded box: the fill and, where `border` is valid, an inner border of `borderWidth` logical pixels
/// (0 = a hairline). An invalid `fill` leaves the inside as it is.
struct Box {
    qreal radius = 0;
    QColor fill;
    QColor border;
    qreal borderWidth = 0;
};
void paintBox(QPainter& painter, const QRectF& rect, const Box& box);

/// A hairline inside `rect` along one of its edges.
void paintHairline(QPainter& painter, const QRectF& rect, Qt::Edge edge, const QColor& color);

}  // namespace morvane
