#include "app/theme/style.h"

#include "app/theme/file_table.h"
#include "app/theme/focus_ring.h"
#include "app/theme/paint.h"
#include "app/theme/style_parts.h"
#include "app/theme/symbols.h"
#include "app/theme/theme.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSlider>
#include <QSplitterHandle>
#include <QStyleOption>
#include <QTextEdit>
#include <algorithm>

namespace morvane {

namespace {

constexpr int toolTipDelay = 500;  // ms
constexpr int lineEditPadding = 12;
constexpr int lineEditHeight = 28;
constexpr int lineEditOwnMargin = 2;  // the toolkit's, inside the contents rectangle
constexpr int textFrameRadius = 8;
constexpr int focusRing = 2;
constexpr int menuPadding = 6;
// How far the list of a pop-up reaches beyond it, so that the texts of both stand one above the other.
constexpr int comboListLeft = 24;
constexpr int comboListRight = 8;

bool isTextView(const QWidget* widget) {
    return qobject_cast<const QPlainTextEdit*>(widget) != nullptr ||
           qobject_cast<const QTextEdit*>(widget) != nullptr;
}

bool isPopupPanel(const QWidget* widget) {
    if (widget == nullptr)
        return false;
    return qobject_cast<const QMenu*>(widget) != nullptr || widget->inherits("QComboBoxPrivateContainer") ||
           widget->inherits("QTipLabel");
}

bool reactsToHover(const QWidget* widget) {
    return qobject_cast<const QAbstractButton*>(widget) != nullptr ||
           qobject_cast<const QLineEdit*>(widget) != nullptr ||
           qobject_cast<const QComboBox*>(widget) != nullptr ||
           qobject_cast<const QAbstractSlider*>(widget) != nullptr ||
           qobject_cast<const QSplitterHandle*>(widget) != nullptr;
}

}  // namespace

MorvaneStyle::MorvaneStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

void MorvaneStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    if (reactsToHover(widget))
        widget->setAttribute(Qt::WA_Hover);
    if (qobject_cast<QScrollBar*>(widget) != nullptr)
        widget->setAttribute(Qt::WA_OpaquePaintEvent, false);  // it lies over the content
    if (isPopupPanel(widget))
        widget->setAttribute(Qt::WA_TranslucentBackground);  // round corners
    if (widget->inherits("QTipLabel"))
        widget->setContentsMargins(2, 0, 2, 0);
    if (auto* text = qobject_cast<QPlainTextEdit*>(widget))
        text->viewport()->setAutoFillBackground(false);
    if (widget->inherits("QComboBoxListView"))
        static_cast<QAbstractItemView*>(widget)->viewport()->setAutoFillBackground(false);
}

void MorvaneStyle::polish(QPalette& palette) {
    palette = MRVTheme::palette();
}

QPalette MorvaneStyle::standardPalette() const {
    return MRVTheme::palette();
}

void MorvaneStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const {
    switch (element) {
        case PE_PanelLineEdit:
        case PE_FrameLineEdit: {
            const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
            const bool inside =
                widget != nullptr && qobject_cast<QComboBox*>(widget->parentWidget()) != nullptr;
            if (frame != nullptr && frame->lineWidth > 0 && !inside)
                stylePart::drawLineEdit(*frame, *painter, widget);
            return;
        }
        case PE_IndicatorCheckBox:
        case PE_IndicatorItemViewItemCheck:
            stylePart::drawCheckIndicator(*option, *painter,
                                          element == PE_IndicatorCheckBox ? widget : nullptr);
            return;
        case PE_PanelMenu:
            stylePart::drawMenuPanel(*option, *painter);
            return;
        case PE_PanelTipLabel:
            stylePart::drawToolTip(*option, *painter);
            return;
        case PE_IndicatorBranch:
            stylePart::drawBranch(*option, *painter);
            return;
        case PE_PanelButtonTool:
            stylePart::drawToolButton(*option, *painter, widget);
            return;
        case PE_PanelMenuBar:
        case PE_FrameMenu:
        case PE_FrameFocusRect:
        case PE_PanelScrollAreaCorner:
        case PE_PanelItemViewRow:
            return;
        case PE_PanelItemViewItem: {
            if (qobject_cast<const FileTable*>(widget) != nullptr)
                return;  // it has painted the row whole
            const auto* item = qstyleoption_cast<const QStyleOptionViewItem*>(option);
            if (item != nullptr && item->backgroundBrush.style() != Qt::NoBrush)
                painter->fillRect(option->rect, item->backgroundBrush);
            if (option->state & State_Selected)
                painter->fillRect(option->rect, MRVTheme::accentSoft());
            else if (option->state & State_MouseOver)
                painter->fillRect(option->rect, MRVTheme::rowHover());
            return;
        }
        case PE_Frame:
            if (isPopupPanel(widget))
                return;
            if (isTextView(widget) && focusRingShown(widget))
                paintBox(*painter, option->rect,
                         {textFrameRadius, MRVTheme::panel(), MRVTheme::accent(), focusRing});
            else if (isTextView(widget))
                paintBox(*painter, option->rect, {textFrameRadius, MRVTheme::panel(), MRVTheme::line()});
            else
                paintBox(*painter, option->rect, {0, QColor(), MRVTheme::line()});
            return;
        default:
            QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void MorvaneStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    const auto* header = qstyleoption_cast<const QStyleOptionHeader*>(option);
    const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    if (element == CE_PushButton && button != nullptr)
        stylePart::drawPushButton(*button, *painter, widget);
    else if (element == CE_CheckBox && button != nullptr)
        stylePart::drawCheckBox(*button, *painter, widget);
    else if (element == CE_ComboBoxLabel && combo != nullptr)
        stylePart::drawComboLabel(*combo, *painter, widget);
    else if (element == CE_MenuItem && item != nullptr)
        stylePart::drawMenuItem(*item, *painter, widget);
    else if (element == CE_MenuBarItem && item != nullptr)
        stylePart::drawMenuBarItem(*item, *painter, widget);
    else if (element == CE_MenuBarEmptyArea)
        painter->fillRect(option->rect, MRVTheme::background());
    else if (element == CE_HeaderSection || element == CE_HeaderEmptyArea)
        stylePart::drawHeaderSection(*option, *painter);
    else if (element == CE_HeaderLabel && header != nullptr)
        stylePart::drawHeaderLabel(*header, *painter, widget);
    else if (element == CE_Splitter)
        stylePart::drawSplitter(*option, *painter);
    else if (element == CE_ShapedFrame && frame != nullptr &&
             (frame->frameShape == QFrame::HLine || frame->frameShape == QFrame::VLine))
        stylePart::drawFrameLine(*frame, *painter);
    else
        QProxyStyle::drawControl(element, option, painter, widget);
}

void MorvaneStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                      QPainter* painter, const QWidget* widget) const {
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (control == CC_ComboBox && combo != nullptr)
        stylePart::drawComboBox(*combo, *painter, widget);
    else if (control == CC_ScrollBar && slider != nullptr)
        stylePart::drawScrollBar(*slider, *painter);
    else if (control == CC_Slider && slider != nullptr && slider->orientation == Qt::Horizontal)
        stylePart::drawSlider(*slider, *painter, widget);
    else
        QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QRect MorvaneStyle::subElementRect(SubElement element, const QStyleOption* option,
                                   const QWidget* widget) const {
    switch (element) {
        case SE_LineEditContents: {
            const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
            if (frame == nullptr || frame->lineWidth <= 0)
                return option->rect;
            const int inset = lineEditPadding - lineEditOwnMargin;
            return option->rect.adjusted(inset, 0, -inset, 0);
        }
        case SE_CheckBoxIndicator:
            return stylePart::checkIndicatorRect(option->rect);
        case SE_CheckBoxClickRect:
        case SE_CheckBoxFocusRect:
            return option->rect;
        case SE_CheckBoxLayoutItem:
            // The room for the focus ring hangs over the layout's edge, so that the box itself is aligned.
            return option->rect.adjusted(
                stylePart::checkIndicatorRect(option->rect).left() - option->rect.left(), 0, 0, 0);
        case SE_PushButtonLayoutItem:
        case SE_ComboBoxLayoutItem:
        case SE_SliderLayoutItem:
            return option->rect;
        default:
            return QProxyStyle::subElementRect(element, option, widget);
    }
}

QRect MorvaneStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                                   const QWidget* widget) const {
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (control == CC_ScrollBar && slider != nullptr) {
        const QRect thumb = stylePart::scrollThumbRect(*slider);
        const QRect all = slider->rect;
        const bool upright = slider->orientation == Qt::Vertical;
        switch (part) {
            case SC_ScrollBarSlider:
                return thumb;
            case SC_ScrollBarGroove:
                return all;
            case SC_ScrollBarSubPage:
                return upright ? QRect(all.left(), all.top(), all.width(), thumb.top() - all.top())
                               : QRect(all.left(), all.top(), thumb.left() - all.left(), all.height());
            case SC_ScrollBarAddPage:
                return upright ? QRect(QPoint(all.left(), thumb.bottom() + 1), all.bottomRight())
                               : QRect(QPoint(thumb.right() + 1, all.top()), all.bottomRight());
            default:
                return {};
        }
    }
    if (control == CC_Slider && slider != nullptr && slider->orientation == Qt::Horizontal) {
        if (part == SC_SliderHandle)
            return stylePart::sliderHandleRect(*slider);
        if (part == SC_SliderGroove)
            return slider->rect;
    }
    if (control == CC_ComboBox && combo != nullptr && part == SC_ComboBoxEditField)
        return stylePart::comboTextRect(*combo);
    if (control == CC_ComboBox && combo != nullptr && part == SC_ComboBoxListBoxPopup)
        return combo->rect.adjusted(-comboListLeft, 0, comboListRight, 0);
    return QProxyStyle::subControlRect(control, option, part, widget);
}

QSize MorvaneStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                                     const QWidget* widget) const {
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    switch (type) {
        case CT_PushButton:
            if (button != nullptr)
                return stylePart::pushButtonSize(*button, contents, widget);
            break;
        case CT_CheckBox:
            return stylePart::checkBoxSize(contents);
        case CT_LineEdit: {
            const QSize size = QProxyStyle::sizeFromContents(type, option, contents, widget);
            return {size.width(), std::max(size.height(), lineEditHeight)};
        }
        case CT_ComboBox:
            return stylePart::comboBoxSize(contents);
        case CT_MenuItem:
            if (item != nullptr)
                return stylePart::menuItemSize(*item, contents);
            break;
        case CT_MenuBarItem:
            if (item != nullptr)
                return stylePart::menuBarItemSize(*item, contents, widget);
            break;
        default:
            break;
    }
    return QProxyStyle::sizeFromContents(type, option, contents, widget);
}

QIcon MorvaneStyle::standardIcon(StandardPixmap icon, const QStyleOption* option,
                                 const QWidget* widget) const {
    switch (icon) {  // what the toolkit's own file dialog shows
        case SP_ArrowBack:
        case SP_ArrowLeft:
        case SP_FileDialogBack:
            return symbolIcon(QStringLiteral("chevron.right"), SymbolTurn::Mirrored);
        case SP_ArrowForward:
        case SP_ArrowRight:
            return symbolIcon(QStringLiteral("chevron.right"));
        case SP_FileDialogToParent:
        case SP_ArrowUp:
            return symbolIcon(QStringLiteral("chevron.down"), SymbolTurn::UpsideDown);
        case SP_FileDialogNewFolder:
            return symbolIcon(QStringLiteral("folder.badge.plus"));
        case SP_FileDialogListView:
            return symbolIcon(QStringLiteral("line.3.horizontal"));
        case SP_FileDialogDetailedView:
            return symbolIcon(QStringLiteral("list.bullet.rectangle"));
        case SP_DirIcon:
        case SP_DirOpenIcon:
        case SP_DirClosedIcon:
        case SP_DirHomeIcon:
            return symbolIcon(QStringLiteral("folder"));
        case SP_FileIcon:
            return symbolIcon(QStringLiteral("doc"));
        case SP_DriveHDIcon:
        case SP_ComputerIcon:
            return symbolIcon(QStringLiteral("externaldrive"));
        default:
            return QProxyStyle::standardIcon(icon, option, widget);
    }
}

int MorvaneStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
        case PM_ButtonShiftHorizontal:
        case PM_ButtonShiftVertical:
        case PM_ButtonDefaultIndicator:
        case PM_MenuPanelWidth:
        case PM_MenuBarPanelWidth:
        case PM_MenuBarItemSpacing:
        case PM_ScrollView_ScrollBarSpacing:
        case PM_MenuDesktopFrameWidth:
            return 0;
        case PM_DefaultFrameWidth:
            return isPopupPanel(widget) ? menuPadding : 1;
        case PM_SplitterWidth:
        case PM_TextCursorWidth:
            return 1;
        case PM_IndicatorWidth:
        case PM_IndicatorHeight:
        case PM_SmallIconSize:
            return 16;
        case PM_CheckBoxLabelSpacing:
            return 8;
        case PM_ScrollBarExtent:
        case PM_ScrollView_ScrollBarOverlap:
            return 10;
        case PM_ScrollBarSliderMin:
            return 32;
        case PM_SliderThickness:
        case PM_SliderControlThickness:
            return 20;
        case PM_SliderLength:
            return 14;
        case PM_MenuHMargin:
        case PM_MenuVMargin:  // the list of a pop-up has its padding as a frame
            return qobject_cast<const QComboBox*>(widget) != nullptr ? 0 : menuPadding;
        case PM_MenuBarHMargin:
            return 12;
        case PM_MenuBarVMargin:
            return 3;
        case PM_ToolTipLabelFrameWidth:
            return 5;  // the toolkit adds one
        case PM_HeaderMargin:
            return 4;
        case PM_TreeViewIndentation:
            return 13;
        default:
            return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int MorvaneStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                            QStyleHintReturn* data) const {
    switch (hint) {
        case SH_ToolTip_WakeUpDelay:
            return toolTipDelay;
        case SH_Button_FocusPolicy:
            return Qt::TabFocus;
        case SH_Slider_AbsoluteSetButtons:
            return Qt::LeftButton;
        case SH_ToolTipLabel_Opacity:
            return 255;
        case SH_Widget_Animation_Duration:
        case SH_Widget_Animate:
        case SH_ScrollBar_Transient:
        case SH_EtchDisabledText:
        case SH_DitherDisabledText:
        case SH_ItemView_ActivateItemOnSingleClick:
            return 0;
        case SH_ComboBox_PopupFrameStyle:
            return static_cast<int>(QFrame::StyledPanel) | static_cast<int>(QFrame::Plain);
        default:
            return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

}  // namespace morvane
