// The space bar: who plays with it, who types it, who presses with it.
#include "app/theme/file_table.h"
#include "app/theme/keyboard_window.h"
#include "app/theme/push_button.h"
#include "app/theme/search_field.h"
#include "app/theme/segmented_control.h"
#include "app/theme/theme.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QSlider>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace morvane {
namespace {

class SpaceKey : public testing::Test {
protected:
    SpaceKey() {
        static const bool installed = [] {
            MRVTheme::install(*qApp);
            return true;
        }();
        EXPECT_TRUE(installed);
        auto* page = new QWidget;
        column_ = new QVBoxLayout(page);
        window_.setCentralWidget(page);
        window_.onSpace = [this] { ++plays_; };
    }

    template <class Control>
    Control* add(Control* control) {
        column_->addWidget(control);
        window_.show();
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
        control->show();
        control->setFocus(Qt::OtherFocusReason);
        EXPECT_TRUE(control->hasFocus());
        return control;
    }

    static FileTable* tableOfThree() {
        auto* table = new FileTable;
        auto* model = new QStandardItemModel(3, 1, table);
        for (int row = 0; row < 3; ++row)
            model->setItem(row, 0, new QStandardItem(QStringLiteral("a%1").arg(row)));
        table->setModel(model);
        return table;
    }

    KeyboardWindow window_;
    QVBoxLayout* column_ = nullptr;
    int plays_ = 0;
};

TEST_F(SpaceKey, TypesIntoASearchField) {
    auto* search = add(new SearchField);
    QTest::keyClicks(search, QStringLiteral("a b"));
    EXPECT_EQ(search->text(), QStringLiteral("a b"));
    EXPECT_EQ(plays_, 0);
}

TEST_F(SpaceKey, IsLeftToTextViewsEvenReadOnlyOnes) {
    auto* text = add(new QPlainTextEdit);
    QTest::keyClick(text, Qt::Key_Space, {}, 0);
    EXPECT_EQ(text->toPlainText(), QStringLiteral(" "));
    text->setReadOnly(true);
    QTest::keyClick(text, Qt::Key_Space);
    EXPECT_EQ(plays_, 0);
}

TEST_F(SpaceKey, PlaysFromATree) {
    auto* tree = new QTreeWidget;
    new QTreeWidgetItem(tree, {QStringLiteral("全部素材")});
    add(tree);
    QTest::keyClick(tree, Qt::Key_Space);
    EXPECT_EQ(plays_, 1);
    EXPECT_TRUE(tree->selectedItems().isEmpty());  // the tree never heard of it
}

TEST_F(SpaceKey, PlaysFromSegmentsSlidersAndTheBareWindow) {
    auto* segments = add(new SegmentedControl({QStringLiteral("全部"), QStringLiteral("音频")},
                                              SegmentedControl::Size::Small));
    QTest::keyClick(segments, Qt::Key_Space);
    EXPECT_EQ(plays_, 1);
    EXPECT_EQ(segments->selectedSegment(), 0);
    auto* slider = add(new QSlider(Qt::Horizontal));
    QTest::keyClick(slider, Qt::Key_Space);
    EXPECT_EQ(plays_, 2);
    QTest::keyClick(&window_, Qt::Key_Space);
    EXPECT_EQ(plays_, 3);
}

TEST_F(SpaceKey, PressesFocusedButtonsChecksAndPopUps) {
    auto* button = add(new PushButton(QStringLiteral("收藏")));
    QSignalSpy clicked(button, &QPushButton::clicked);
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_EQ(clicked.count(), 1);
    auto* box = add(new QCheckBox(QStringLiteral("自动")));
    QTest::keyClick(box, Qt::Key_Space);
    EXPECT_TRUE(box->isChecked());
    auto* popup = new QComboBox;
    popup->addItems({QStringLiteral("25 帧"), QStringLiteral("30 帧")});
    add(popup);
    QTest::keyClick(popup, Qt::Key_Space);
    EXPECT_TRUE(popup->view()->isVisible());
    popup->hidePopup();
    EXPECT_EQ(plays_, 0);
}

TEST_F(SpaceKey, IsSwallowedWithoutACallback) {
    window_.onSpace = nullptr;
    auto* tree = new QTreeWidget;
    new QTreeWidgetItem(tree, {QStringLiteral("全部素材")});
    add(tree);
    QTest::keyClick(tree, Qt::Key_Space);
    EXPECT_TRUE(tree->selectedItems().isEmpty());
}

TEST_F(SpaceKey, AHeldKeyPlaysOnce) {
    auto* tree = add(new QTreeWidget);
    for (const bool repeated : {false, true, true}) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "), repeated);
        QApplication::sendEvent(tree, &press);
    }
    EXPECT_EQ(plays_, 1);
}

TEST_F(SpaceKey, OtherKeysGoTheirWay) {
    auto* tree = new QTreeWidget;
    new QTreeWidgetItem(tree, {QStringLiteral("甲")});
    auto* second = new QTreeWidgetItem(tree, {QStringLiteral("乙")});
    add(tree);
    tree->setCurrentItem(tree->topLevelItem(0));
    QTest::keyClick(tree, Qt::Key_Down);
    EXPECT_EQ(tree->currentItem(), second);
    EXPECT_EQ(plays_, 0);
}

TEST_F(SpaceKey, OtherWindowsAreNotTheWindowsBusiness) {
    QDialog dialog(&window_);
    auto* inside = new QTreeWidget(&dialog);
    new QTreeWidgetItem(inside, {QStringLiteral("甲")});
    dialog.show();
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClick(inside, Qt::Key_Space);
    EXPECT_EQ(plays_, 0);
}

TEST_F(SpaceKey, AFileTableHasACallbackOfItsOwn) {
    auto* table = add(tableOfThree());
    int tablePlays = 0;
    table->onSpace = [&tablePlays] { ++tablePlays; };
    QTest::keyClick(table, Qt::Key_Space);
    EXPECT_EQ(tablePlays, 1);
    EXPECT_EQ(plays_, 0);
    table->onSpace = nullptr;
    QTest::keyClick(table, Qt::Key_Space);
    EXPECT_EQ(plays_, 0);  // swallowed: the window does not get it either
    EXPECT_FALSE(table->selectionModel()->hasSelection());
}

TEST_F(SpaceKey, ArrowsAndTypingStillSelectInAFileTable) {
    auto* table = add(tableOfThree());
    table->selectRow(0);
    QTest::keyClick(table, Qt::Key_Down);
    EXPECT_EQ(table->currentIndex().row(), 1);
    QTest::keyClicks(table, QStringLiteral("a2"));
    EXPECT_EQ(table->currentIndex().row(), 2);
}

}  // namespace
}  // namespace morvane
