#include "app/theme/edge_progress.h"

#include "app/theme/paint.h"
#include "app/theme/theme.h"

#include <QAccessible>
#include <QLinearGradient>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace morvane {

namespace {

constexpr int barHeight = 4;
constexpr int reportMilliseconds = 120;
constexpr int crossMilliseconds = 1600;
constexpr double bandShare = 0.36;

QColor toneColor(EdgeProgress::Tone tone) {
    switch (tone) {
        case EdgeProgress::Tone::Success:
            return MRVTheme::success();
        case EdgeProgress::Tone::Partial:
            return MRVTheme::accentLine();
        case EdgeProgress::Tone::Accent:
            break;
    }
    return MRVTheme::accent();
}

}  // namespace

EdgeProgress::EdgeProgress(QWidget* parent) : QWidget(parent) {
    setFixedHeight(barHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    fill_.setDuration(reportMilliseconds);
    connect(&fill_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        shown_ = value.toDouble();
        update();
    });
    band_.setStartValue(-bandShare);
    band_.setEndValue(1.0);
    band_.setDuration(crossMilliseconds);
    band_.setLoopCount(-1);
    connect(&band_, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
}

void EdgeProgress::setMode(Mode mode) {
    mode_ = mode;
    const bool moves = mode_ == Mode::Indeterminate && tone_ != Tone::Partial;
    if (moves && isVisible() && !MRVTheme::reducedMotion())
        band_.start();
    else
        band_.stop();
    update();
}

void EdgeProgress::setNone() {
    fill_.stop();
    fraction_ = 0;
    shown_ = 0;
    setMode(Mode::None);
}

void EdgeProgress::setIndeterminate() {
    fill_.stop();
    fraction_ = 0;
    shown_ = 0;
    setMode(Mode::Indeterminate);
}

void EdgeProgress::setFraction(double fraction) {
    fraction_ = std::clamp(fraction, 0.0, 1.0);
    fill_.stop();
    // Going back is a new run, not progress: it jumps.
    if (!isVisible() || MRVTheme::reducedMotion() || mode_ != Mode::Fraction || fraction_ < shown_) {
        shown_ = fraction_;
    } else if (fraction_ > shown_) {
        fill_.setStartValue(shown_);
        fill_.setEndValue(fraction_);
        fill_.start();
    }
    setMode(Mode::Fraction);
    if (QAccessible::isActive()) {
        QAccessibleValueChangeEvent event(this, static_cast<int>(std::floor(fraction_ * 100)));
        QAccessible::updateAccessibility(&event);
    }
}

void EdgeProgress::setTone(Tone tone) {
    tone_ = tone;
    setMode(mode_);
}

void EdgeProgress::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    setMode(mode_);
}

void EdgeProgress::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    band_.stop();
    fill_.stop();
    shown_ = fraction_;
}

void EdgeProgress::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (mode_ == Mode::None) {
        paintHairline(painter, rect(), Qt::TopEdge, MRVTheme::line());
        return;
    }
    const QRectF bar = snapToDevice(painter, rect());
    painter.fillRect(bar, MRVTheme::progressTrack());
    if (mode_ == Mode::Fraction) {
        QRectF filled = bar;
        filled.setWidth(bar.width() * shown_);
        painter.fillRect(snapToDevice(painter, filled), toneColor(tone_));
        return;
    }
    if (band_.state() != QAbstractAnimation::Running) {
        painter.fillRect(bar, MRVTheme::accentLine());
        return;
    }
    QRectF band = bar;
    band.setLeft(bar.left() + bar.width() * band_.currentValue().toDouble());
    band.setWidth(bar.width() * bandShare);
    QColor clear = MRVTheme::accent();
    clear.setAlpha(0);
    QLinearGradient gradient(band.topLeft(), band.topRight());
    gradient.setColorAt(0, clear);
    gradient.setColorAt(0.5, MRVTheme::accent());
    gradient.setColorAt(1, clear);
    painter.fillRect(band, gradient);
}

}  // namespace morvane
