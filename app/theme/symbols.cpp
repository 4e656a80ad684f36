#include "app/theme/symbols.h"

#include "app/theme/paint.h"
#include "app/theme/theme.h"

#include <QCache>
#include <QFile>
#include <QHash>
#include <QPainter>
#include <QSvgRenderer>
#include <QTransform>
#include <algorithm>
#include <cmath>

// Outside any namespace, as the macro demands: the resources live in a static library, so nothing else pulls
// them in.
static void initialiseResources() {
    Q_INIT_RESOURCE(theme);
}

namespace morvane {

namespace {

constexpr int thinBelow = 16;            // px; drawings are made to be crisp from here on
constexpr double thinnestStroke = 1.25;  // px
constexpr double grid = 24;
constexpr int largestNudged = 48;  // device pixels
constexpr double worthNudging = 1.08;
constexpr int cachedKilobytes = 16 * 1024;

const QByteArray& drawing(const QString& name) {
    static QHash<QString, QByteArray> drawings;
    auto found = drawings.find(name);
    if (found == drawings.end()) {
        initialiseResources();
        QFile file(QStringLiteral(":/symbols/%1.svg").arg(name));
        found = drawings.insert(name, file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
    }
    return *found;
}

QImage renderShape(QSvgRenderer& renderer, int pixels, QPointF offset) {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(offset, QSizeF(pixels, pixels)));
    return image;
}

/// The same ink in fewer pixels gives more.
double sharpness(const QImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const double coverage = qAlpha(line[x]) / 255.0;
            sum += coverage * coverage;
        }
    }
    return sum;
}

/// The symbol in `color`. A stroke in the middle of the grid lies between two pixels at some sizes and would
/// blur into both: a small drawing is moved by half a pixel where that makes it clearly sharper.
QImage renderSymbol(QByteArray svg, int size, int pixels, const QColor& color) {
    if (size < thinBelow) {
        const QByteArray stroke = QByteArray::number(thinnestStroke * grid / size, 'f', 3);
        svg.replace("stroke-width=\"1.5\"", "stroke-width=\"" + stroke + "\"");
    }
    QSvgRenderer renderer(svg);
    QImage image = renderShape(renderer, pixels, {0, 0});
    if (pixels <= largestNudged) {
        double best = sharpness(image) * worthNudging;
        for (const QPointF offset : {QPointF(0.5, 0), QPointF(0, 0.5), QPointF(0.5, 0.5)}) {
            const QImage nudged = renderShape(renderer, pixels, offset);
            const double sharp = sharpness(nudged);
            if (sharp > best) {
                best = sharp;
                image = nudged;
            }
        }
    }
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    return image;
}

}  // namespace

bool hasSymbol(const QString& name) {
    return !drawing(name).isEmpty();
}

QPixmap symbolPixmap(const QString& name, int size, const QColor& color, qreal ratio) {
    static QCache<QString, QPixmap> cache(cachedKilobytes);
    const QString key =
        QStringLiteral("%1|%2|%3|%4").arg(name).arg(size).arg(color.rgba(), 0, 16).arg(ratio, 0, 'f', 3);
    if (const QPixmap* known = cache.object(key))
        return *known;
    const QByteArray& svg = drawing(name);
    if (svg.isEmpty() || size <= 0)
        return {};
    const int pixels = std::max(1, static_cast<int>(std::lround(size * ratio)));
    auto pixmap = std::make_unique<QPixmap>(QPixmap::fromImage(renderSymbol(svg, size, pixels, color)));
    pixmap->setDevicePixelRatio(ratio);
    QPixmap result = *pixmap;
    cache.insert(key, pixmap.release(), std::max(1, pixels * pixels * 4 / 1024));
    return result;
}

void paintSymbol(QPainter& painter, const QRectF& rect, const QString& name, const QColor& color) {
    const int size = static_cast<int>(std::min(rect.width(), rect.height()));
    const QTransform transform = painter.deviceTransform();
    const qreal ratio = std::hypot(transform.m11(), transform.m12());
    const QPixmap pixmap = symbolPixmap(name, size, color, ratio);
    if (pixmap.isNull())
        return;
    QRectF square(0, 0, size, size);
    square.moveCenter(rect.center());
    square = snapToDevice(painter, square);
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawPixmap(square.topLeft(), pixmap);
    painter.restore();
}

QIcon symbolIcon(const QString& name, SymbolTurn turn) {
    const QTransform turned =
        QTransform::fromScale(turn == SymbolTurn::Mirrored ? -1 : 1, turn == SymbolTurn::UpsideDown ? -1 : 1);
    QIcon icon;
    const auto add = [&](int size, const QColor& color, QIcon::Mode mode) {
        icon.addPixmap(symbolPixmap(name, size, color, 1).transformed(turned), mode);
    };
    for (const int size : {16, 20, 24, 32, 48, 64}) {
        add(size, MRVTheme::muted(), QIcon::Normal);
        add(size, MRVTheme::ink(), QIcon::Active);
        add(size, MRVTheme::ink(), QIcon::Selected);
        add(size, MRVTheme::disabledText(), QIcon::Disabled);
    }
    return icon;
}

}  // namespace morvane
