#include "organizer_ui/panel_parts.h"

#include <QLabel>
#include <QPainter>

#include "app/theme/focus_ring.h"
#include "app/theme/paint.h"
#include "app/theme/symbols.h"
#include "app/theme/theme.h"

namespace morvane {

namespace {

QLabel* label(const QFont& font, int lineHeight, const QColor& color, QWidget* parent) {
    auto* made = new QLabel(parent);
    made->setTextFormat(Qt::PlainText);
    made->setFont(font);
    made->setMinimumHeight(lineHeight);
    QPalette palette = made->palette();
    palette.setColor(QPalette::WindowText, color);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, color);
    made->setPalette(palette);
    return made;
}

constexpr int badgeSize = 22;
constexpr int chevronSize = 14;
constexpr int disclosureHeight = 28;

}  // namespace

QLabel* makeLabel(int px, const QColor& color, QWidget* parent) {
    return label(MRVTheme::font(px), MRVTheme::lineHeight(px), color, parent);
}

QLabel* makeBoldLabel(int px, const QColor& color, QWidget* parent) {
    return label(MRVTheme::boldFont(px), MRVTheme::lineHeight(px), color, parent);
}

Card::Card(int radius, QWidget* parent) : QWidget(parent), radius_(radius) {}

void Card::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBox(painter, rect(), {static_cast<qreal>(radius_), MRVTheme::panel(), MRVTheme::line()});
}

Rule::Rule(Qt::Orientation orientation, QWidget* parent) : QWidget(parent), orientation_(orientation) {
    if (orientation == Qt::Horizontal)
        setFixedHeight(1);
    else
        setFixedWidth(1);
}

void Rule::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintHairline(painter, rect(), orientation_ == Qt::Horizontal ? Qt::TopEdge : Qt::LeftEdge,
                  MRVTheme::line());
}

StepBadge::StepBadge(int number, QWidget* parent) : QWidget(parent), number_(number) {
    setFixedSize(badgeSize, badgeSize);
    setAccessibleName(QStringLiteral("第 %1 步").arg(number));
}

void StepBadge::setDone(bool done) {
    if (done_ == done)
        return;
    done_ = done;
    setAccessibleDescription(done ? QStringLiteral("已完成") : QString());
    update();
}

void StepBadge::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Box box{badgeSize / 2.0, done_ ? MRVTheme::accentSoft() : QColor(),
                  done_ ? MRVTheme::accentLine() : MRVTheme::edge()};
    paintBox(painter, rect(), box);
    if (done_) {
        paintSymbol(painter, QRectF(4.5, 4.5, 13, 13), QStringLiteral("checkmark"), MRVTheme::accent());
        return;
    }
    painter.setFont(MRVTheme::boldFont(11));
    painter.setPen(MRVTheme::muted());
    painter.drawText(rect(), Qt::AlignCenter, QString::number(number_));
}

DisclosureButton::DisclosureButton(const QString& title, QWidget* parent) : QAbstractButton(parent) {
    setText(title);
    setFont(MRVTheme::font(12));
    setFocusPolicy(Qt::TabFocus);
    setFixedHeight(disclosureHeight);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void DisclosureButton::setSymbol(const QString& name) {
    symbol_ = name;
    update();
}

QSize DisclosureButton::sizeHint() const {
    return {chevronSize + 6 + fontMetrics().horizontalAdvance(text()) + 8, disclosureHeight};
}

void DisclosureButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (focusRingShown(this))
        paintBox(painter, rect(), {6, QColor(), MRVTheme::accent(), 2});
    const bool lit = underMouse() || isDown();
    const QRectF chevron(0, (height() - chevronSize) / 2.0, chevronSize, chevronSize);
    paintSymbol(painter, chevron, symbol_, lit ? MRVTheme::ink() : MRVTheme::muted());
    painter.setPen(MRVTheme::ink());
    painter.drawText(rect().adjusted(chevronSize + 6, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, text());
}

}  // namespace morvane
