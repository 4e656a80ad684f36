#include "library_ui/picture_view.h"

#include "app/theme/paint.h"
#include "app/theme/theme.h"

#include <QEvent>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace morvane {

namespace {

constexpr int cornerRadius = 10;

QRectF fitted(const QSizeF& picture, const QRectF& room, qreal largestScale) {
    const qreal scale =
        std::min({room.width() / picture.width(), room.height() / picture.height(), largestScale});
    const QSizeF size = picture * scale;
    return {room.x() + (room.width() - size.width()) / 2, room.y() + (room.height() - size.height()) / 2,
            size.width(), size.height()};
}

void paintOnBlack(QPainter& painter, const QRectF& bounds, const QImage& image, qreal largestScale) {
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    QPainterPath shape;
    shape.addRoundedRect(bounds, cornerRadius, cornerRadius);
    painter.save();
    painter.setClipPath(shape);
    painter.fillRect(bounds, Qt::black);
    if (!image.isNull())
        painter.drawImage(snapToDevice(painter, fitted(image.size(), bounds, largestScale)), image);
    painter.restore();
    paintBox(painter, bounds, {.radius = cornerRadius, .fill = {}, .border = MRVTheme::line()});
}

}  // namespace

PictureView::PictureView(QWidget* parent) : QWidget(parent) {}

void PictureView::setPicture(const QImage& picture) {
    picture_ = picture;
    update();
}

void PictureView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    // A small picture is shown at most at its own size in logical pixels: enlarged further it would only
    // blur.
    paintOnBlack(painter, rect(), picture_, 1.0);
}

PlayerView::PlayerView(QWidget* parent) : QWidget(parent) {}

void PlayerView::setFrame(const QImage& frame) {
    frame_ = frame;
    update();
}

QSize PlayerView::framePixels() const {
    const qreal ratio = devicePixelRatioF();
    return {static_cast<int>(std::lround(width() * ratio)), static_cast<int>(std::lround(height() * ratio))};
}

void PlayerView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    paintOnBlack(painter, rect(), frame_, 1e6);
}

void PlayerView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    Q_EMIT framePixelsChanged(framePixels());
}

bool PlayerView::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::ScreenChangeInternal || event->type() == QEvent::Show)
        Q_EMIT framePixelsChanged(framePixels());
    return handled;
}

}  // namespace morvane
