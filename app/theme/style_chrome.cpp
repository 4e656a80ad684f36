#include "app/theme/paint.h"
#include "app/theme/style_parts.h"
#include "app/theme/symbols.h"
#include "app/theme/theme.h"

#include <QComboBox>
#include <QMenuBar>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <algorithm>
#include <cmath>

namespace morvane::stylePart {

namespace {

bool has(const QStyleOption& option, QStyle::StateFlag flag) {
    return option.state.testFlag(flag);
}

constexpr qreal menuRadius = 10;
constexpr qreal menuItemRadius = 6;
constexpr int menuItemHeight = 28;
constexpr int menuItemPadding = 10;
constexpr int menuCheckRoom = 20;  // a check mark of 12 and its gap
constexpr int menuCheckSide = 12;
constexpr int menuShortcutGap = 32;
constexpr int menuSeparatorHeight = 9;
constexpr int menuBarItemHeight = 22;
constexpr int menuBarItemPadding = 8;

}  // namespace

// --- Menus

void drawMenuPanel(const QStyleOption& option, QPainter& painter) {
    paintBox(painter, option.rect, {menuRadius, MRVTheme::sheet(), MRVTheme::sheetLine()});
}

void drawMenuItem(const QStyleOptionMenuItem& option, QPainter& painter, const QWidget* widget) {
    if (qobject_cast<const QComboBox*>(widget) != nullptr)  // its list fills each row in the window's colour
        painter.fillRect(option.rect, MRVTheme::sheet());
    if (option.menuItemType == QStyleOptionMenuItem::Separator) {
        QRectF line = QRectF(option.rect).adjusted(menuItemPadding, 0, -menuItemPadding, 0);
        const int middle = option.rect.top() + menuSeparatorHeight / 2;  // a whole pixel
        line.setTop(middle);
        paintHairline(painter, line, Qt::TopEdge, MRVTheme::sheetLine());
        return;
    }
    const bool enabled = has(option, QStyle::State_Enabled);
    if (enabled && has(option, QStyle::State_Selected))
        paintBox(painter, option.rect, {menuItemRadius, MRVTheme::accentSoft(), QColor()});
    QRect text = option.rect.adjusted(menuItemPadding, 0, -menuItemPadding, 0);
    if (option.menuHasCheckableItems) {
        if (option.checked) {
            const QRectF mark(text.left(), text.center().y() + 0.5 - menuCheckSide / 2.0, menuCheckSide,
                              menuCheckSide);
            paintSymbol(painter, mark, QStringLiteral("checkmark"),
                        enabled ? MRVTheme::accent() : MRVTheme::disabledText());
        }
        text.setLeft(text.left() + menuCheckRoom);
    }
    painter.setFont(option.font);
    const int flags = Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextHideMnemonic | Qt::TextDontClip;
    const qsizetype tab = option.text.indexOf(QLatin1Char('\t'));
    const QString label = tab < 0 ? option.text : option.text.left(tab);
    painter.setPen(enabled ? MRVTheme::ink() : MRVTheme::disabledText());
    painter.drawText(text, flags | Qt::AlignLeft, label);
    if (option.menuItemType == QStyleOptionMenuItem::SubMenu) {
        const QRectF arrow(text.right() + 1 - menuCheckSide, text.center().y() + 0.5 - menuCheckSide / 2.0,
                           menuCheckSide, menuCheckSide);
        paintSymbol(painter, arrow, QStringLiteral("chevron.right"), MRVTheme::faint());
    } else if (tab >= 0) {
        painter.setPen(enabled ? MRVTheme::faint() : MRVTheme::disabledText());
        painter.drawText(text, flags | Qt::AlignRight, option.text.mid(tab + 1));
    }
}

QSize menuItemSize(const QStyleOptionMenuItem& option, const QSize& contents) {
    if (option.menuItemType == QStyleOptionMenuItem::Separator)
        return {contents.width(), menuSeparatorHeight};
    int width = contents.width() + 2 * menuItemPadding;
    if (option.menuHasCheckableItems)
        width += menuCheckRoom;
    if (option.text.contains(QLatin1Char('\t')) || option.menuItemType == QStyleOptionMenuItem::SubMenu)
        width += menuShortcutGap;
    return {width, menuItemHeight};
}

namespace {

/// The first menu carries the product's name.
QFont menuBarFont(const QStyleOptionMenuItem& option, const QWidget* widget) {
    const auto* bar = qobject_cast<const QMenuBar*>(widget);
    const bool first =
        bar != nullptr && !bar->actions().isEmpty() && bar->actions().first()->text() == option.text;
    return first ? MRVTheme::boldFont(12) : MRVTheme::font(12);
}

}  // namespace

void drawMenuBarItem(const QStyleOptionMenuItem& option, QPainter& painter, const QWidget* widget) {
    painter.fillRect(option.rect, MRVTheme::background());
    const bool enabled = has(option, QStyle::State_Enabled);
    const bool open = enabled && has(option, QStyle::State_Sunken);
    if (open)
        paintBox(painter, option.rect, {menuItemRadius, MRVTheme::raised(), QColor()});
    const QFont font = menuBarFont(option, widget);
    painter.setFont(font);
    if (!enabled)
        painter.setPen(MRVTheme::disabledText());
    else if (open || font.bold() || has(option, QStyle::State_Selected))
        painter.setPen(MRVTheme::ink());
    else
        painter.setPen(MRVTheme::muted());
    painter.drawText(option.rect,
                     Qt::AlignCenter | Qt::TextSingleLine | Qt::TextHideMnemonic | Qt::TextDontClip,
                     option.text);
}

QSize menuBarItemSize(const QStyleOptionMenuItem& option, const QSize& contents, const QWidget* widget) {
    if (contents.isEmpty())
        return contents;
    const QFontMetrics metrics(menuBarFont(option, widget));
    const int text = metrics.size(Qt::TextSingleLine | Qt::TextShowMnemonic, option.text).width();
    return {text + 2 * menuBarItemPadding, menuBarItemHeight};
}

void drawToolTip(const QStyleOption& option, QPainter& painter) {
    paintBox(painter, option.rect, {menuItemRadius, MRVTheme::sheet(), MRVTheme::sheetLine()});
}

// --- Lists and trees

void drawHeaderSection(const QStyleOption& option, QPainter& painter) {
    painter.fillRect(option.rect, MRVTheme::tableHead());
    paintHairline(painter, option.rect, Qt::TopEdge, MRVTheme::line());
    paintHairline(painter, option.rect, Qt::BottomEdge, MRVTheme::line());
}

void drawHeaderLabel(const QStyleOptionHeader& option, QPainter& painter, const QWidget* widget) {
    const QFont font = widget != nullptr ? widget->font() : painter.font();
    painter.setFont(font);
    painter.setPen(has(option, QStyle::State_Enabled) ? MRVTheme::muted() : MRVTheme::disabledText());
    const QString text = QFontMetrics(font).elidedText(option.text, Qt::ElideRight, option.rect.width());
    painter.drawText(option.rect,
                     static_cast<int>(option.textAlignment | Qt::AlignVCenter) | Qt::TextSingleLine, text);
}

void drawBranch(const QStyleOption& option, QPainter& painter) {
    constexpr int chevron = 11;
    if (!has(option, QStyle::State_Children))
        return;
    QRectF square(0, 0, chevron, chevron);
    square.moveCenter(QRectF(option.rect).center());
    paintSymbol(
        painter, square,
        has(option, QStyle::State_Open) ? QStringLiteral("chevron.down") : QStringLiteral("chevron.right"),
        has(option, QStyle::State_Enabled) ? MRVTheme::faint() : MRVTheme::disabledText());
}

// --- Scroll bars

namespace {

constexpr int thumbThickness = 6;
constexpr int thumbFromEdge = 2;
constexpr int thumbEndGap = 4;
constexpr int thumbShortest = 32;

}  // namespace

QRect scrollThumbRect(const QStyleOptionSlider& option) {
    const bool vertical = option.orientation == Qt::Vertical;
    const int length = (vertical ? option.rect.height() : option.rect.width()) - 2 * thumbEndGap;
    const qint64 range = qint64(option.maximum) - option.minimum;
    int thumb = length;
    if (range > 0) {
        const qint64 all = range + option.pageStep;
        thumb = static_cast<int>(qint64(length) * option.pageStep / std::max<qint64>(1, all));
        thumb = std::clamp(thumb, std::min(thumbShortest, length), std::max(0, length));
    }
    const int start =
        thumbEndGap + QStyle::sliderPositionFromValue(option.minimum, option.maximum, option.sliderPosition,
                                                      length - thumb, option.upsideDown);
    if (vertical)
        return {option.rect.left(), option.rect.top() + start, option.rect.width(), thumb};
    return {option.rect.left() + start, option.rect.top(), thumb, option.rect.height()};
}

void drawScrollBar(const QStyleOptionSlider& option, QPainter& painter) {
    if (option.maximum <= option.minimum)
        return;
    QRect thumb = scrollThumbRect(option);
    if (option.orientation == Qt::Vertical)
        thumb = {thumb.right() + 1 - thumbFromEdge - thumbThickness, thumb.top(), thumbThickness,
                 thumb.height()};
    else
        thumb = {thumb.left(), thumb.bottom() + 1 - thumbFromEdge - thumbThickness, thumb.width(),
                 thumbThickness};
    const bool lit = has(option, QStyle::State_Enabled) &&
                     (has(option, QStyle::State_MouseOver) || has(option, QStyle::State_Sunken)) &&
                     option.activeSubControls.testFlag(QStyle::SC_ScrollBarSlider);
    paintBox(painter, thumb,
             {thumbThickness / 2.0, lit ? MRVTheme::scrollThumbHover() : MRVTheme::scrollThumb(), QColor()});
}

// --- Separators

void drawSplitter(const QStyleOption& option, QPainter& painter) {
    const bool lit = has(option, QStyle::State_MouseOver) || has(option, QStyle::State_Sunken);
    const bool upright = has(option, QStyle::State_Horizontal);
    paintHairline(painter, option.rect, upright ? Qt::LeftEdge : Qt::TopEdge,
                  lit ? MRVTheme::accentLine() : MRVTheme::line());
}

void drawFrameLine(const QStyleOptionFrame& option, QPainter& painter) {
    const bool upright = option.frameShape == QFrame::VLine;
    paintHairline(painter, option.rect, upright ? Qt::LeftEdge : Qt::TopEdge, MRVTheme::line());
}

}  // namespace morvane::stylePart
