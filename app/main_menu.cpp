#include "app/main_menu.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMetaObject>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWidget>

namespace morvane {
namespace {

const char* slotOf(MenuCommand command) {
    switch (command) {
        case MenuCommand::Cut:
            return "cut";
        case MenuCommand::Paste:
            return "paste";
        case MenuCommand::SelectAll:
            return "selectAll";
        default:
            return nullptr;
    }
}

}  // namespace

void buildMainMenu(QMenuBar& bar, std::function<void(MenuCommand)> chosen) {
    bar.setNativeMenuBar(false);
    QMenu* menu = nullptr;
    for (const MenuEntry& entry : mainMenuEntries) {
        const QString menuTitle = QString::fromUtf8(entry.menu);
        if (menu == nullptr || menu->title() != menuTitle)
            menu = bar.addMenu(menuTitle);
        if (entry.command == MenuCommand::Separator) {
            menu->addSeparator();
            continue;
        }
        QAction* action = menu->addAction(QString::fromUtf8(entry.title));
        if (entry.key != 0)
            action->setShortcut(QKeySequence(static_cast<int>(Qt::CTRL) | entry.key));
        QObject::connect(action, &QAction::triggered, &bar,
                         [chosen, command = entry.command] { chosen(command); });
    }
}

void sendToFocus(MenuCommand command) {
    QWidget* focus = QApplication::focusWidget();
    const char* slot = slotOf(command);
    if (focus == nullptr || slot == nullptr)
        return;
    const QByteArray signature = QByteArray(slot) + "()";
    if (focus->metaObject()->indexOfMethod(signature) >= 0)
        QMetaObject::invokeMethod(focus, slot);
}

bool copyFromFocusedText() {
    QWidget* focus = QApplication::focusWidget();
    const auto* label = qobject_cast<QLabel*>(focus);
    if (label != nullptr && label->textInteractionFlags().testAnyFlags(Qt::TextSelectableByMouse |
                                                                       Qt::TextSelectableByKeyboard)) {
        if (label->hasSelectedText())
            QApplication::clipboard()->setText(label->selectedText());
        return true;
    }
    const bool isText = qobject_cast<QLineEdit*>(focus) != nullptr ||
                        qobject_cast<QTextEdit*>(focus) != nullptr ||
                        qobject_cast<QPlainTextEdit*>(focus) != nullptr;
    if (isText)
        QMetaObject::invokeMethod(focus, "copy");
    return isText;
}

}  // namespace morvane
