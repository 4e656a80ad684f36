// The window in which the space bar plays.
#pragma once

#include <QMainWindow>
#include <functional>

namespace morvane {

/// Space anywhere in the window calls onSpace and goes no further, even when onSpace is not set. Exempt: text
/// inputs and text views (they type it), buttons, check boxes and pop-ups (they press with it), and a
/// FileTable, which has its own onSpace. A held key calls once.
class KeyboardWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit KeyboardWindow(QWidget* parent = nullptr);

    std::function<void()> onSpace;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace morvane
