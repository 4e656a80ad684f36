// The main menu: its table against the described one, its keys, and the items that go to the focus.
#include "app/main_menu.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

namespace morvane {
namespace {

struct Expected {
    const char* menu;
    const char* title;
    MenuCommand command;
    const char* key;
};

const std::vector<Expected> expected = {
    {"MORVANE", "关于MORVANE 素材助手", MenuCommand::About, ""},
    {"MORVANE", "退出MORVANE 素材助手", MenuCommand::Quit, "Ctrl+Q"},
    {"编辑", "剪切", MenuCommand::Cut, "Ctrl+X"},
    {"编辑", "复制", MenuCommand::CopySmart, "Ctrl+C"},
    {"编辑", "粘贴", MenuCommand::Paste, "Ctrl+V"},
    {"编辑", "全选", MenuCommand::SelectAll, "Ctrl+A"},
    {"编辑", "搜索素材", MenuCommand::FocusSearch, "Ctrl+F"},
    {"素材库", "添加素材文件夹…", MenuCommand::AddRoot, "Ctrl+O"},
    {"素材库", "刷新索引", MenuCommand::Refresh, "Ctrl+R"},
    {"素材库", "管理素材库…", MenuCommand::ManageRoots, ""},
    {"素材库", "重命名所选文件…", MenuCommand::RenameFile, ""},
};

class MainMenu : public testing::Test {
protected:
    MainMenu() {
        buildMainMenu(*window_.menuBar(), [this](MenuCommand command) { chosen_.push_back(command); });
        window_.setCentralWidget(new QWidget);
        window_.show();
    }
    void SetUp() override { ASSERT_TRUE(QTest::qWaitForWindowActive(&window_)); }

    QMainWindow window_;
    std::vector<MenuCommand> chosen_;
};

TEST_F(MainMenu, HoldsTheItemsInOrderWithTheirKeys) {
    std::size_t row = 0;
    int separators = 0;
    for (QAction* top : window_.menuBar()->actions()) {
        for (QAction* action : top->menu()->actions()) {
            if (action->isSeparator()) {
                ++separators;
                EXPECT_EQ(row, 1U);  // between about and quit
                continue;
            }
            ASSERT_LT(row, expected.size());
            EXPECT_EQ(top->text(), QString::fromUtf8(expected[row].menu));
            EXPECT_EQ(action->text(), QString::fromUtf8(expected[row].title));
            EXPECT_EQ(action->shortcut().toString(), QString::fromUtf8(expected[row].key));
            action->trigger();
            ASSERT_EQ(chosen_.size(), row + 1);
            EXPECT_EQ(chosen_.back(), expected[row].command);
            ++row;
        }
    }
    EXPECT_EQ(row, expected.size());
    EXPECT_EQ(separators, 1);
    EXPECT_EQ(window_.menuBar()->actions().size(), 3);
}

TEST_F(MainMenu, KeysReachTheItems) {
    QTest::keyClick(&window_, Qt::Key_R, Qt::ControlModifier);
    QTest::keyClick(&window_, Qt::Key_F, Qt::ControlModifier);
    QTest::keyClick(&window_, Qt::Key_O, Qt::ControlModifier);
    EXPECT_EQ(chosen_, (std::vector{MenuCommand::Refresh, MenuCommand::FocusSearch, MenuCommand::AddRoot}));
}

TEST_F(MainMenu, CopyInATextFieldCopiesItsText) {
    auto* field = new QLineEdit("abc def", window_.centralWidget());
    field->show();
    field->setFocus();
    ASSERT_EQ(QApplication::focusWidget(), field);
    field->setSelection(0, 3);
    EXPECT_TRUE(copyFromFocusedText());
    EXPECT_EQ(QApplication::clipboard()->text(), "abc");
}

TEST_F(MainMenu, CopyElsewhereIsLeftToTheFiles) {
    auto* table = new QTableView(window_.centralWidget());
    table->show();
    table->setFocus();
    QApplication::clipboard()->setText("before");
    EXPECT_FALSE(copyFromFocusedText());
    EXPECT_EQ(QApplication::clipboard()->text(), "before");
}

TEST_F(MainMenu, CutPasteAndSelectAllGoToTheFocus) {
    auto* field = new QLineEdit("text", window_.centralWidget());
    field->show();
    field->setFocus();
    sendToFocus(MenuCommand::SelectAll);
    EXPECT_EQ(field->selectedText(), "text");
    sendToFocus(MenuCommand::Cut);
    EXPECT_EQ(field->text(), "");
    sendToFocus(MenuCommand::Paste);
    sendToFocus(MenuCommand::Paste);
    EXPECT_EQ(field->text(), "texttext");
}

TEST_F(MainMenu, AFocusThatKnowsNoSuchActionIsLeftAlone) {
    auto* plain = new QWidget(window_.centralWidget());
    plain->setFocusPolicy(Qt::StrongFocus);
    plain->show();
    plain->setFocus();
    sendToFocus(MenuCommand::Cut);
    sendToFocus(MenuCommand::SelectAll);
    EXPECT_EQ(QApplication::focusWidget(), plain);
}

}  // namespace
}  // namespace morvane
