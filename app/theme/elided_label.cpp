#include "app/theme/elided_label.h"

#include "app/theme/plain_tool_tip.h"
#include "app/theme/theme.h"

#include <QAccessible>
#include <QEvent>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>
#include <QTextOption>
#include <QToolTip>
#include <algorithm>
#include <cmath>

namespace morvane {

namespace {}  // namespace

ElidedLabel::ElidedLabel(int px, QColor color, Weight weight, QWidget* parent)
    : QWidget(parent), color_(color), lineHeight_(MRVTheme::lineHeight(px)) {
    setFont(weight == Weight::Bold ? MRVTheme::boldFont(px) : MRVTheme::font(px));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString& text) {
    if (text_ == text)
        return;
    text_ = text;
    textChanged();
    if (QAccessible::isActive()) {
        QAccessibleEvent event(this, QAccessible::NameChanged);
        QAccessible::updateAccessibility(&event);
    }
}

void ElidedLabel::setColor(const QColor& color) {
    color_ = color;
    update();
}

void ElidedLabel::setElideMode(Qt::TextElideMode mode) {
    mode_ = mode;
    update();
}

void ElidedLabel::setBreakAnywhere(bool anywhere) {
    breakAnywhere_ = anywhere;
    textChanged();
}

void ElidedLabel::setMaximumLines(int lines) {
    maximumLines_ = std::max(1, lines);
    alignment_ = Qt::AlignLeft | (maximumLines_ > 1 ? Qt::AlignTop : Qt::AlignVCenter);
    updatePolicy();
}

void ElidedLabel::setReserveLines(bool reserve) {
    reserve_ = reserve;
    updatePolicy();
}

void ElidedLabel::updatePolicy() {
    // A layout never gives a widget of fixed policy more than its hint, which cannot know the width.
    QSizePolicy policy = sizePolicy();
    policy.setVerticalPolicy(hasHeightForWidth() ? QSizePolicy::Preferred : QSizePolicy::Fixed);
    policy.setHeightForWidth(hasHeightForWidth());
    setSizePolicy(policy);
    textChanged();
}

void ElidedLabel::setAlignment(Qt::Alignment alignment) {
    alignment_ = alignment;
    update();
}

void ElidedLabel::setLineHeight(int height) {
    lineHeight_ = height;
    textChanged();
}

void ElidedLabel::textChanged() {
    updateGeometry();
    update();
}

ElidedLabel::Lines ElidedLabel::layOut(int width) const {
    Lines lines;
    const QFontMetricsF metrics(font());
    const QStringList paragraphs = text_.split(QLatin1Char('\n'));
    QTextOption option;
    option.setWrapMode(maximumLines_ == 1 ? QTextOption::NoWrap
                       : breakAnywhere_   ? QTextOption::WrapAnywhere
                                          : QTextOption::WrapAtWordBoundaryOrAnywhere);
    for (qsizetype index = 0; index < paragraphs.size(); ++index) {
        const QString& paragraph = paragraphs[index];
        QTextLayout layout(paragraph, font());
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(std::max(1, width));
            if (lines.shown.size() < maximumLines_ - 1) {
                lines.shown << paragraph.mid(line.textStart(), line.textLength());
                continue;
            }
            QString rest = paragraph.mid(line.textStart());
            const bool linesBelow = index + 1 < paragraphs.size();
            if (linesBelow)
                rest += QChar(0x2026);  // stands for them
            lines.shown << metrics.elidedText(rest, mode_, width);
            lines.elided = linesBelow || lines.shown.last() != rest;
            layout.endLayout();
            return lines;
        }
        layout.endLayout();
    }
    return lines;
}

bool ElidedLabel::isElided() const {
    return layOut(width()).elided;
}

QSize ElidedLabel::sizeHint() const {
    const QFontMetricsF metrics(font());
    qreal widest = 0;
    const QStringList paragraphs = text_.split(QLatin1Char('\n'));
    for (const QString& paragraph : paragraphs)
        widest = std::max(widest, metrics.horizontalAdvance(paragraph));
    const auto needed = std::clamp(static_cast<int>(paragraphs.size()), 1, maximumLines_);
    return {static_cast<int>(std::ceil(widest)) + 1, lineHeight_ * (reserve_ ? maximumLines_ : needed)};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {std::min(sizeHint().width(), 24), reserve_ ? lineHeight_ * maximumLines_ : lineHeight_};
}

bool ElidedLabel::hasHeightForWidth() const {
    return maximumLines_ > 1 && !reserve_;
}

int ElidedLabel::heightForWidth(int width) const {
    if (!hasHeightForWidth())
        return sizeHint().height();
    return lineHeight_ * std::max<int>(1, static_cast<int>(layOut(width).shown.size()));
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip || !toolTip().isEmpty())
        return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    if (isElided()) {
        QToolTip::showText(help->globalPos(), plainToolTip(text_), this);
    } else {
        QToolTip::hideText();
        event->ignore();
    }
    return true;
}

void ElidedLabel::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange || event->type() == QEvent::EnabledChange)
        textChanged();
    QWidget::changeEvent(event);
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setFont(font());
    painter.setPen(isEnabled() ? color_ : MRVTheme::disabledText());
    const QStringList lines = layOut(width()).shown;
    const int block = lineHeight_ * static_cast<int>(lines.size());
    int top = 0;
    if (alignment_.testFlag(Qt::AlignVCenter))
        top = (height() - block) / 2;
    else if (alignment_.testFlag(Qt::AlignBottom))
        top = height() - block;
    const int flags = static_cast<int>((alignment_ & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter) |
                      Qt::TextSingleLine | Qt::TextDontClip;
    for (const QString& line : lines) {
        painter.drawText(QRect(0, top, width(), lineHeight_), flags, line);
        top += lineHeight_;
    }
}

}  // namespace morvane
