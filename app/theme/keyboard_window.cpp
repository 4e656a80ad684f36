#include "app/theme/keyboard_window.h"

#include "app/theme/file_table.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace morvane {

namespace {

template <class... Kinds>
bool isOneOf(const QObject* object) {
    return ((qobject_cast<const Kinds*>(object) != nullptr) || ...);
}

/// Widgets that have a use of their own for the space bar.
bool keepsSpace(const QObject* widget) {
    return isOneOf<QLineEdit, QTextEdit, QPlainTextEdit, QAbstractSpinBox, QAbstractButton, QComboBox,
                   FileTable>(widget);
}

}  // namespace

KeyboardWindow::KeyboardWindow(QWidget* parent) : QMainWindow(parent) {
    // Lists and trees take the space bar for themselves before the window hears of it.
    qApp->installEventFilter(this);
}

bool KeyboardWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !watched->isWidgetType())
        return QMainWindow::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    const auto* widget = static_cast<QWidget*>(watched);
    if (key->key() != Qt::Key_Space || widget->window() != this || keepsSpace(widget))
        return QMainWindow::eventFilter(watched, event);
    if (onSpace && !key->isAutoRepeat())
        onSpace();
    return true;
}

}  // namespace morvane
