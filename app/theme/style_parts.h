// The pieces of MorvaneStyle: one drawing function a control, measures beside them. Private to this folder.
#pragma once

#include <QRect>
#include <QSize>

class QPainter;
class QStyleOption;
class QStyleOptionButton;
class QStyleOptionComboBox;
class QStyleOptionFrame;
class QStyleOptionHeader;
class QStyleOptionMenuItem;
class QStyleOptionSlider;
class QWidget;

namespace morvane::stylePart {

// Buttons and inputs (style_controls.cpp).
void drawPushButton(const QStyleOptionButton& option, QPainter& painter, const QWidget* widget);
void drawToolButton(const QStyleOption& option, QPainter& painter, const QWidget* widget);
QSize pushButtonSize(const QStyleOptionButton& option, const QSize& text, const QWidget* widget);
void drawCheckIndicator(const QStyleOption& option, QPainter& painter, const QWidget* widget);
void drawCheckBox(const QStyleOptionButton& option, QPainter& painter, const QWidget* widget);
QRect checkIndicatorRect(const QRect& box);
QSize checkBoxSize(const QSize& text);
void drawLineEdit(const QStyleOptionFrame& option, QPainter& painter, const QWidget* widget);
void drawComboBox(const QStyleOptionComboBox& option, QPainter& painter, const QWidget* widget);
void drawComboLabel(const QStyleOptionComboBox& option, QPainter& painter, const QWidget* widget);
QRect comboTextRect(const QStyleOptionComboBox& option);
QSize comboBoxSize(const QSize& contents);
void drawSlider(const QStyleOptionSlider& option, QPainter& painter, const QWidget* widget);
QRect sliderHandleRect(const QStyleOptionSlider& option);

// Menus, headers, scroll bars, separators (style_chrome.cpp).
void drawMenuPanel(const QStyleOption& option, QPainter& painter);
void drawMenuItem(const QStyleOptionMenuItem& option, QPainter& painter, const QWidget* widget);
QSize menuItemSize(const QStyleOptionMenuItem& option, const QSize& contents);
void drawMenuBarItem(const QStyleOptionMenuItem& option, QPainter& painter, const QWidget* widget);
QSize menuBarItemSize(const QStyleOptionMenuItem& option, const QSize& contents, const QWidget* widget);
void drawHeaderSection(const QStyleOption& option, QPainter& painter);
void drawHeaderLabel(const QStyleOptionHeader& option, QPainter& painter, const QWidget* widget);
void drawScrollBar(const QStyleOptionSlider& option, QPainter& painter);
QRect scrollThumbRect(const QStyleOptionSlider& option);
void drawSplitter(const QStyleOption& option, QPainter& painter);
void drawToolTip(const QStyleOption& option, QPainter& painter);
void drawBranch(const QStyleOption& option, QPainter& painter);
void drawFrameLine(const QStyleOptionFrame& option, QPainter& painter);

}  // namespace morvane::stylePart
