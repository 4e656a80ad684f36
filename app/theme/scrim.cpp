#include "app/theme/scrim.h"

#include "app/theme/theme.h"

#include <QImage>
#include <QPainter>
#include <QTransform>
#include <QVariantAnimation>
#include <cstring>

namespace morvane {

namespace {

constexpr int fadeMilliseconds = 120;

// The shadow of a sheet: 24 below it, blurred by 64 (a deviation of 32), black at 69 %.
constexpr int shadowDrop = 24;
constexpr int shadowReach = 96;
constexpr int shadowAlpha = 176;
constexpr int coarse = 8;     // it is drawn at an eighth and smoothed up
constexpr int boxRadius = 4;  // three box passes of 9 make a deviation of 32 / 8

/// One box pass along the lines of `image`, clamped to nothing outside.
QImage blurLines(const QImage& image) {
    QImage blurred(image.size(), QImage::Format_Alpha8);
    for (int y = 0; y < image.height(); ++y) {
        const uchar* from = image.constScanLine(y);
        uchar* to = blurred.scanLine(y);
        int sum = 0;
        for (int x = -boxRadius; x < image.width(); ++x) {
            if (x + boxRadius < image.width())
                sum += from[x + boxRadius];
            if (x - boxRadius - 1 >= 0)
                sum -= from[x - boxRadius - 1];
            if (x >= 0)
                to[x] = static_cast<uchar>(sum / (2 * boxRadius + 1));
        }
    }
    return blurred;
}

/// The shadow of a box of `size`, at an eighth, with its reach on all sides.
QImage shadowOf(const QSize& size) {
    const QSize all = (size + QSize(2 * shadowReach, 2 * shadowReach)) / coarse;
    QImage image(all, QImage::Format_Alpha8);
    image.fill(0);
    const int margin = shadowReach / coarse;
    for (int y = margin; y < all.height() - margin; ++y)
        std::memset(image.scanLine(y) + margin, shadowAlpha,
                    static_cast<std::size_t>(all.width() - 2 * margin));
    const QTransform turn(0, 1, 1, 0, 0, 0);  // lines become columns
    for (int pass = 0; pass < 3; ++pass)
        image = blurLines(image);
    image = image.transformed(turn);
    for (int pass = 0; pass < 3; ++pass)
        image = blurLines(image);
    return image.transformed(turn);
}

}  // namespace

Scrim::Scrim(QWidget* window, QObject* owner) : QWidget(window) {
    connect(owner, &QObject::destroyed, this, &QObject::deleteLater);
    setAttribute(Qt::WA_NoSystemBackground);
    if (MRVTheme::reducedMotion())
        return;
    shown_ = 0;
    auto* fade = new QVariantAnimation(this);
    fade->setStartValue(0.0);
    fade->setEndValue(1.0);
    fade->setDuration(fadeMilliseconds);
    connect(fade, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        shown_ = value.toDouble();
        update();
    });
    fade->start(QAbstractAnimation::DeleteWhenStopped);
}

void Scrim::cover(const QRect& sheet) {
    if (sheet_.size() != sheet.size())
        shadow_ = shadowOf(sheet.size());
    sheet_ = sheet;
    setGeometry(parentWidget()->rect());
    raise();
    show();
    update();
}

void Scrim::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setOpacity(shown_);
    painter.fillRect(rect(), MRVTheme::scrim());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(
        sheet_.adjusted(-shadowReach, -shadowReach, shadowReach, shadowReach).translated(0, shadowDrop),
        shadow_);
}

}  // namespace morvane
