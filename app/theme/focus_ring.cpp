#include "app/theme/focus_ring.h"

#include <QApplication>
#include <QEvent>
#include <QFocusEvent>
#include <QWidget>

namespace morvane {

namespace {

bool movedByKeyboard = false;

class FocusTracker : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        switch (event->type()) {
            case QEvent::MouseButtonPress:
                pointerLast_ = true;
                break;
            case QEvent::KeyPress:
            case QEvent::Shortcut:
                pointerLast_ = false;
                break;
            case QEvent::FocusIn:
                if (watched->isWidgetType())
                    focusMoved(static_cast<QFocusEvent*>(event)->reason());
                break;
            default:
                break;
        }
        return false;
    }

private:
    void focusMoved(Qt::FocusReason reason) const {
        // The toolkit also names Tab as the reason when the focused widget hides or is disabled, which a
        // click may have brought about.
        if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
            reason == Qt::ShortcutFocusReason)
            movedByKeyboard = !pointerLast_;
        else if (reason == Qt::MouseFocusReason)
            movedByKeyboard = false;
    }

    bool pointerLast_ = false;
};

}  // namespace

bool focusRingShown(const QWidget* widget) {
    return widget != nullptr && movedByKeyboard && widget->hasFocus();
}

void trackKeyboardFocus(QApplication& application) {
    movedByKeyboard = false;
    application.installEventFilter(new FocusTracker(&application));
}

}  // namespace morvane
