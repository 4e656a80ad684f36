#include "app/theme/spinner.h"

#include "app/theme/symbols.h"
#include "app/theme/theme.h"

#include <QPainter>

namespace morvane {

namespace {

constexpr int turnMilliseconds = 900;
constexpr double strokeShare = 1.75 / 16;  // of the size
constexpr double thinnestStroke = 1.5;
constexpr int arcDegrees = 270;
constexpr int sixteenths = 16;  // of a degree, the painter's unit

}  // namespace

Spinner::Spinner(int size, QColor color, QWidget* parent) : QWidget(parent), size_(size), color_(color) {
    setFixedSize(size, size);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    turn_.setStartValue(0.0);
    turn_.setEndValue(360.0);
    turn_.setDuration(turnMilliseconds);
    turn_.setLoopCount(-1);
    connect(&turn_, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
}

void Spinner::setColor(const QColor& color) {
    color_ = color;
    update();
}

void Spinner::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!MRVTheme::reducedMotion())
        turn_.start();
}

void Spinner::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    turn_.stop();
}

void Spinner::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (turn_.state() != QAbstractAnimation::Running) {
        paintSymbol(painter, rect(), QStringLiteral("ellipsis"), color_);
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    const double stroke = std::max(thinnestStroke, size_ * strokeShare);
    const double inset = stroke / 2 + size_ / 16.0;
    painter.setPen(QPen(color_, stroke, Qt::SolidLine, Qt::RoundCap));
    const double start = 90 - turn_.currentValue().toDouble();
    painter.drawArc(QRectF(rect()).adjusted(inset, inset, -inset, -inset), qRound(start * sixteenths),
                    -arcDegrees * sixteenths);
}

}  // namespace morvane
