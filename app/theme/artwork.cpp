#include "app/theme/artwork.h"

#include "app/theme/paint.h"
#include "app/theme/symbols.h"
#include "app/theme/theme.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <numbers>

namespace morvane {

namespace {

constexpr double degreesBelowHorizontal = 35;
constexpr int symbolSide = 58;

/// From the top left corner's side to the opposite one, along the direction, touching both corners.
QLinearGradient gradientOver(const QRectF& rect) {
    const double angle = degreesBelowHorizontal * std::numbers::pi / 180;
    const QPointF direction(std::cos(angle), std::sin(angle));
    const double half = (rect.width() * direction.x() + rect.height() * direction.y()) / 2;
    QLinearGradient gradient(rect.center() - direction * half, rect.center() + direction * half);
    gradient.setColorAt(0, MRVTheme::accentSoft());
    gradient.setColorAt(1, MRVTheme::panel());
    return gradient;
}

}  // namespace

Artwork::Artwork(QWidget* parent) : QWidget(parent) {}

void Artwork::setMode(const QString& mode) {
    if (mode_ == mode)
        return;
    mode_ = mode;
    update();
}

void Artwork::setCornerRadius(int radius) {
    radius_ = radius;
    update();
}

void Artwork::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRectF bounds = snapToDevice(painter, rect());
    if (radius_ > 0) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(gradientOver(bounds));
        painter.drawRoundedRect(bounds, radius_, radius_);
        paintBox(painter, bounds, {qreal(radius_), QColor(), MRVTheme::line()});
    } else {
        painter.fillRect(bounds, gradientOver(bounds));
    }
    QRectF symbol(0, 0, symbolSide, symbolSide);
    symbol.moveCenter(bounds.center());
    paintSymbol(painter, symbol, mode_, MRVTheme::accent());
}

}  // namespace morvane
