#include "app/theme/focus_ring.h"
#include "app/theme/paint.h"
#include "app/theme/push_button.h"
#include "app/theme/style_parts.h"
#include "app/theme/symbols.h"
#include "app/theme/theme.h"

#include <QComboBox>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QStyleOption>
#include <algorithm>
#include <cmath>

namespace morvane::stylePart {

namespace {

constexpr qreal controlRadius = 8;
constexpr qreal largeRadius = 9;
constexpr int ring = 2;

bool has(const QStyleOption& option, QStyle::StateFlag flag) {
    return option.state.testFlag(flag);
}

// --- Push button

constexpr int buttonHeight = 32;
constexpr int largeButtonHeight = 36;
constexpr int largeButtonWidth = 176;
constexpr int buttonPadding = 12;
constexpr int leastPadding = 4;  // what a squeezed button keeps beside its elided text
constexpr int buttonSymbol = 16;
constexpr int buttonSymbolGap = 7;

struct ButtonLook {
    PushButton::Role role = PushButton::Role::Secondary;
    PushButton::Size size = PushButton::Size::Regular;
    PushButton::SymbolTone tone = PushButton::SymbolTone::Standard;
    QString symbol;
    int padding = buttonPadding;
};

/// Buttons that are not ours (file dialogs) are secondary, their default one primary.
ButtonLook lookOf(const QStyleOptionButton& option, const QWidget* widget) {
    if (const auto* button = qobject_cast<const PushButton*>(widget))
        return {button->role(), button->buttonSize(), button->symbolTone(), button->symbol(),
                button->padding()};
    ButtonLook look;
    if (option.features.testFlag(QStyleOptionButton::DefaultButton))
        look.role = PushButton::Role::Primary;
    return look;
}

Box buttonBox(const QStyleOptionButton& option, const ButtonLook& look) {
    Box box;
    box.radius = look.size == PushButton::Size::Large ? largeRadius : controlRadius;
    const bool down = has(option, QStyle::State_Sunken) || has(option, QStyle::State_On);
    const bool over = has(option, QStyle::State_MouseOver);
    if (look.role == PushButton::Role::Quiet) {
        if (has(option, QStyle::State_Enabled) && (down || over))
            box.fill = down ? MRVTheme::raisedPressed() : MRVTheme::raised();
        return box;
    }
    if (!has(option, QStyle::State_Enabled)) {
        box.fill = MRVTheme::disabledFill();
        box.border = MRVTheme::disabledLine();
    } else if (look.role == PushButton::Role::Primary) {
        box.fill = down ? MRVTheme::accentPressed() : over ? MRVTheme::accentHover() : MRVTheme::accent();
    } else {
        box.fill = down ? MRVTheme::raisedPressed() : over ? MRVTheme::raisedHover() : MRVTheme::raised();
        box.border = over && !down ? MRVTheme::controlLineHover() : MRVTheme::controlLine();
    }
    return box;
}

void paintButtonBox(QPainter& painter, const QRectF& rect, Box box, const ButtonLook& look, bool focused) {
    if (!focused) {
        paintBox(painter, rect, box);
    } else if (look.role == PushButton::Role::Primary) {
        paintBox(painter, rect, {box.radius, QColor(), MRVTheme::ink(), ring});
        const qreal shrink = 2 * ring;
        box.radius -= shrink;
        paintBox(painter, rect.adjusted(shrink, shrink, -shrink, -shrink), box);
    } else {
        box.border = MRVTheme::accent();
        box.borderWidth = ring;
        paintBox(painter, rect, box);
    }
}

QColor buttonTextColor(const QStyleOptionButton& option, const ButtonLook& look) {
    if (!has(option, QStyle::State_Enabled))
        return MRVTheme::disabledText();
    switch (look.role) {
        case PushButton::Role::Primary:
            return MRVTheme::onAccent();
        case PushButton::Role::Quiet:
            return has(option, QStyle::State_MouseOver) ? MRVTheme::ink() : MRVTheme::muted();
        case PushButton::Role::Secondary:
            break;
    }
    return MRVTheme::ink();
}

QColor buttonSymbolColor(const QStyleOptionButton& option, const ButtonLook& look) {
    if (!has(option, QStyle::State_Enabled) || look.role == PushButton::Role::Primary)
        return buttonTextColor(option, look);
    return look.tone == PushButton::SymbolTone::Accent ? MRVTheme::accent() : MRVTheme::muted();
}

/// "&Open" without its mark; "&&" is one "&".
QString withoutMnemonic(const QString& text) {
    QString shown;
    for (qsizetype index = 0; index < text.size(); ++index) {
        if (text[index] == QLatin1Char('&') && index + 1 < text.size())
            ++index;
        shown += text[index];
    }
    return shown;
}

/// Dark text on the accent, filled as outlines: the glyph cache blends for light text and would thin it.
void fillText(QPainter& painter, const QPoint& baseline, const QFont& font, const QString& text,
              const QColor& color) {
    QPainterPath outlines;
    outlines.addText(baseline, font, text);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(outlines, color);
    painter.restore();
}

}  // namespace

void drawPushButton(const QStyleOptionButton& option, QPainter& painter, const QWidget* widget) {
    const ButtonLook look = lookOf(option, widget);
    paintButtonBox(painter, option.rect, buttonBox(option, look), look, focusRingShown(widget));

    const QRect all = option.rect;
    const QString title = withoutMnemonic(option.text);
    const int gap = title.isEmpty() ? 0 : buttonSymbolGap;
    const int symbolRoom = look.symbol.isEmpty() ? 0 : buttonSymbol + gap;
    const bool enabled = has(option, QStyle::State_Enabled);
    QFont font = widget != nullptr ? widget->font() : painter.font();
    const bool accented = enabled && look.role == PushButton::Role::Primary;
    font.setWeight(accented ? QFont::Bold : QFont::Normal);  // Bold belongs to the accent fill
    const QFontMetrics metrics(font);
    const int textRoom = all.width() - 2 * std::min(look.padding, leastPadding) - symbolRoom;
    const QString text = metrics.elidedText(title, Qt::ElideRight, textRoom);
    const int textWidth = metrics.horizontalAdvance(text);
    const int left = all.left() + (all.width() - symbolRoom - textWidth) / 2;
    if (symbolRoom > 0) {
        const QRectF symbol(left, all.top() + (all.height() - buttonSymbol) / 2.0, buttonSymbol,
                            buttonSymbol);
        paintSymbol(painter, symbol, look.symbol, buttonSymbolColor(option, look));
    }
    const QPoint baseline(left + symbolRoom,
                          all.top() + (all.height() - metrics.height()) / 2 + metrics.ascent());
    if (accented) {
        fillText(painter, baseline, font, text, MRVTheme::onAccent());
        return;
    }
    painter.setFont(font);
    painter.setPen(buttonTextColor(option, look));
    painter.drawText(baseline, text);
}

QSize pushButtonSize(const QStyleOptionButton& option, const QSize& text, const QWidget* widget) {
    const ButtonLook look = lookOf(option, widget);
    int width = 2 * look.padding + text.width();
    if (!look.symbol.isEmpty())
        width += option.text.isEmpty() ? buttonSymbol - text.width() : buttonSymbol + buttonSymbolGap;
    if (option.text.isEmpty())
        width = std::min(width, buttonHeight);
    if (look.size == PushButton::Size::Large)
        return {std::max(width, largeButtonWidth), largeButtonHeight};
    return {width, buttonHeight};
}

void drawToolButton(const QStyleOption& option, QPainter& painter, const QWidget* widget) {
    constexpr qreal radius = 6;
    const bool down = has(option, QStyle::State_Sunken) || has(option, QStyle::State_On);
    const bool over = has(option, QStyle::State_Enabled) && has(option, QStyle::State_MouseOver);
    if (down || over)
        paintBox(painter, option.rect,
                 {radius, down ? MRVTheme::raised() : MRVTheme::raisedHover(), QColor()});
    if (focusRingShown(widget))
        paintBox(painter, option.rect, {radius, QColor(), MRVTheme::accent(), ring});
}

// --- Check box

namespace {

constexpr int checkSide = 16;
constexpr qreal checkRadius = 4;
constexpr int checkGap = 8;
constexpr int checkHeight = 24;
constexpr int checkRingRoom = 4;  // 2 of gap and 2 of ring around the box
constexpr int checkGlyph = 12;

}  // namespace

QRect checkIndicatorRect(const QRect& box) {
    return {box.left() + checkRingRoom, box.top() + (box.height() - checkSide) / 2, checkSide, checkSide};
}

QSize checkBoxSize(const QSize& text) {
    const int label = text.width() > 0 ? checkGap + text.width() + 1 : checkRingRoom;
    return {checkRingRoom + checkSide + label, std::max(checkHeight, text.height())};
}

void drawCheckIndicator(const QStyleOption& option, QPainter& painter, const QWidget* widget) {
    const bool enabled = has(option, QStyle::State_Enabled);
    const bool on = has(option, QStyle::State_On) || has(option, QStyle::State_NoChange);
    const bool down = has(option, QStyle::State_Sunken);
    const bool over = has(option, QStyle::State_MouseOver);
    Box box{checkRadius, MRVTheme::field(), MRVTheme::edge()};
    if (!enabled) {
        box.fill = on ? MRVTheme::progressTrack() : MRVTheme::disabledFill();
        box.border = on ? QColor() : MRVTheme::line();
    } else if (on) {
        box.fill = down ? MRVTheme::accentPressed() : over ? MRVTheme::accentHover() : MRVTheme::accent();
        box.border = QColor();
    } else {
        box.fill = down ? MRVTheme::raised() : MRVTheme::field();
        box.border = over ? MRVTheme::edgeHover() : MRVTheme::edge();
    }
    const QRectF rect = option.rect;
    if (focusRingShown(widget))
        paintBox(painter, rect.adjusted(-checkRingRoom, -checkRingRoom, checkRingRoom, checkRingRoom),
                 {checkRadius + checkRingRoom, QColor(), MRVTheme::accent(), ring});
    paintBox(painter, rect, box);
    if (on) {
        const QString glyph =
            has(option, QStyle::State_NoChange) ? QStringLiteral("minus") : QStringLiteral("checkmark");
        const qreal inset = (checkSide - checkGlyph) / 2.0;
        paintSymbol(painter, rect.adjusted(inset, inset, -inset, -inset), glyph,
                    enabled ? MRVTheme::onAccent() : MRVTheme::disabledText());
    }
}

void drawCheckBox(const QStyleOptionButton& option, QPainter& painter, const QWidget* widget) {
    QStyleOption indicator = option;
    indicator.rect = checkIndicatorRect(option.rect);
    drawCheckIndicator(indicator, painter, widget);
    painter.setFont(widget != nullptr ? widget->font() : painter.font());
    painter.setPen(has(option, QStyle::State_Enabled) ? MRVTheme::ink() : MRVTheme::disabledText());
    const QRect label = option.rect.adjusted(checkRingRoom + checkSide + checkGap, 0, 0, 0);
    painter.drawText(label, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextHideMnemonic,
                     option.text);
}

// --- Line edit

void drawLineEdit(const QStyleOptionFrame& option, QPainter& painter, const QWidget* widget) {
    Box box{controlRadius, MRVTheme::field(), MRVTheme::edge()};
    if (!has(option, QStyle::State_Enabled)) {
        box.border = MRVTheme::line();
    } else if (widget != nullptr && widget->hasFocus()) {
        box.border = MRVTheme::accent();
        box.borderWidth = ring;
    } else if (has(option, QStyle::State_MouseOver)) {
        box.border = MRVTheme::edgeHover();
    }
    paintBox(painter, option.rect, box);
}

// --- Pop-up

namespace {

constexpr int comboHeight = 30;
constexpr int comboLeading = 12;
constexpr int comboTrailing = 8;
constexpr int comboChevron = 14;
constexpr int comboGap = 8;

}  // namespace

void drawComboBox(const QStyleOptionComboBox& option, QPainter& painter, const QWidget* widget) {
    const bool enabled = has(option, QStyle::State_Enabled);
    const bool down = has(option, QStyle::State_On) || has(option, QStyle::State_Sunken);
    const bool over = has(option, QStyle::State_MouseOver);
    Box box{controlRadius, MRVTheme::raised(), MRVTheme::controlLine()};
    if (!enabled)
        box = {controlRadius, MRVTheme::disabledFill(), MRVTheme::disabledLine()};
    else if (down)
        box.fill = MRVTheme::raisedPressed();
    else if (over)
        box = {controlRadius, MRVTheme::raisedHover(), MRVTheme::controlLineHover()};
    if (enabled && focusRingShown(widget)) {
        box.border = MRVTheme::accent();
        box.borderWidth = ring;
    }
    paintBox(painter, option.rect, box);
    const QRectF chevron(option.rect.right() + 1 - comboTrailing - comboChevron,
                         option.rect.top() + (option.rect.height() - comboChevron) / 2.0, comboChevron,
                         comboChevron);
    paintSymbol(painter, chevron, QStringLiteral("chevron.up.chevron.down"),
                enabled ? MRVTheme::muted() : MRVTheme::disabledText());
}

QRect comboTextRect(const QStyleOptionComboBox& option) {
    return option.rect.adjusted(comboLeading, 0, -(comboTrailing + comboChevron + comboGap), 0);
}

void drawComboLabel(const QStyleOptionComboBox& option, QPainter& painter, const QWidget* widget) {
    if (option.editable)
        return;
    const QFont font = widget != nullptr ? widget->font() : painter.font();
    const QRect rect = comboTextRect(option);
    painter.setFont(font);
    painter.setPen(has(option, QStyle::State_Enabled) ? MRVTheme::ink() : MRVTheme::disabledText());
    painter.drawText(rect, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     QFontMetrics(font).elidedText(option.currentText, Qt::ElideMiddle, rect.width()));
}

QSize comboBoxSize(const QSize& contents) {
    return {comboLeading + contents.width() + 1 + comboGap + comboChevron + comboTrailing, comboHeight};
}

// --- Slider

namespace {

constexpr int trackHeight = 4;
constexpr int knobSide = 14;
constexpr int knobShadowAlpha = 102;  // 40 %

}  // namespace

QRect sliderHandleRect(const QStyleOptionSlider& option) {
    const int room = option.rect.width() - knobSide;
    const int left = QStyle::sliderPositionFromValue(option.minimum, option.maximum, option.sliderPosition,
                                                     room, option.upsideDown);
    return {option.rect.left() + left, option.rect.top() + (option.rect.height() - knobSide) / 2, knobSide,
            knobSide};
}

void drawSlider(const QStyleOptionSlider& option, QPainter& painter, const QWidget* widget) {
    const bool enabled = has(option, QStyle::State_Enabled);
    const QRectF knob = sliderHandleRect(option);
    QRectF track(option.rect.left(), 0, option.rect.width(), trackHeight);
    track.moveTop(knob.center().y() - trackHeight / 2.0);
    paintBox(painter, track, {trackHeight / 2.0, MRVTheme::track(), QColor()});
    if (enabled) {
        QRectF filled = track;
        filled.setRight(knob.center().x());
        paintBox(painter, filled, {trackHeight / 2.0, MRVTheme::accent(), QColor()});
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (enabled) {
        QColor shadow = MRVTheme::background();
        shadow.setAlpha(knobShadowAlpha);
        painter.setBrush(shadow);
        painter.drawEllipse(knob.adjusted(-1, -1, 1, 1));
    }
    painter.setBrush(enabled ? MRVTheme::ink() : MRVTheme::disabledKnob());
    painter.drawEllipse(knob);
    if (enabled && focusRingShown(widget)) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(MRVTheme::accent(), ring));
        painter.drawEllipse(knob.adjusted(-ring, -ring, ring, ring));
    }
    painter.restore();
}

}  // namespace morvane::stylePart
