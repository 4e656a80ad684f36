// Whether keyboard focus is shown. Rings appear only after keyboard navigation, never because of a click.
#pragma once

class QApplication;
class QWidget;

namespace morvane {

/// True when `widget` has the keyboard focus and focus last moved by Tab, Shift+Tab or a shortcut. Focus
/// moved by the program keeps what held before; a click ends it.
bool focusRingShown(const QWidget* widget);

/// Watches the focus of the whole application from now on. Called by MRVTheme::install.
void trackKeyboardFocus(QApplication& application);

}  // namespace morvane
