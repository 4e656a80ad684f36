#include "library_ui/library_folder_sheets.h"

#include "app/theme/push_button.h"
#include "app/theme/sheet.h"
#include "app/theme/text_field.h"
#include "tests/library_ui/library_fixture.h"

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QItemSelectionModel>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <optional>

namespace morvane::test {
namespace {

class Sheets : public testing::Test {
protected:
    Sheets() {
        useTheme();
        window_.resize(1100, 700);
        window_.show();
    }
    Sheet* sheet() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* found = qobject_cast<Sheet*>(widget);
            if (found != nullptr && found->isVisible())
                return found;
        }
        return nullptr;
    }
    void press(int button) {
        const QPointer<Sheet> pressed = sheet();
        QTest::mouseClick(pressed->button(button), Qt::LeftButton);
        EXPECT_TRUE(waitUntil([&] { return pressed.isNull(); }));
    }
    QWidget window_;
};

TEST_F(Sheets, RenameAsksForTheNameWithoutItsExtension) {
    std::optional<std::string> name;
    presentRename(window_, assetAt("/r", "同期声/Take 2.x.WAV"),
                  [&](std::string typed) { name = std::move(typed); });
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(sheet()->content().message, "重命名原文件");
    EXPECT_EQ(
        sheet()->content().informative,
        "硬盘上的文件会同步改名，扩展名 .wav 保持。收藏会跟随新名称。\n已有剪辑工程可能需要重新链接此素材。");
    EXPECT_EQ(sheet()->content().buttons, (QStringList{"保存名称", "取消"}));
    auto* field = sheet()->findChild<TextField*>();
    EXPECT_EQ(field->size(), QSize(440, 28));
    EXPECT_EQ(field->accessibleName(), "新文件名称");
    EXPECT_EQ(field->text(), "Take 2.x");
    EXPECT_EQ(field->selectedText(), "Take 2.x");
    QTest::keyClicks(field, " Take 3 ");
    press(0);
    EXPECT_EQ(name, " Take 3 ") << "trimming is the rename's own";
}

TEST_F(Sheets, RenameIsConfirmedByReturnAndCancelledByEscape) {
    std::vector<std::string> names;
    const Asset asset = assetAt("/r", "a.mov");
    presentRename(window_, asset, [&](const std::string& typed) { names.push_back(typed); });
    QPointer<Sheet> shown = sheet();
    QTest::keyClicks(shown->findChild<TextField*>(), "b");
    QTest::keyClick(shown->findChild<TextField*>(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return shown.isNull(); }));
    EXPECT_EQ(names, std::vector<std::string>{"b"});
    presentRename(window_, asset, [&](const std::string& typed) { names.push_back(typed); });
    shown = sheet();
    QTest::keyClick(shown->findChild<TextField*>(), Qt::Key_Escape);
    ASSERT_TRUE(waitUntil([&] { return shown.isNull(); }));
    EXPECT_EQ(names.size(), 1U);
}

TEST_F(Sheets, ManagingRemovesTheChosenFolder) {
    std::vector<std::string> removed;
    const std::vector<std::string> roots = {"/media/盘 A", "/media/b"};
    presentManageRoots(window_, roots, [&](const std::string& root) { removed.push_back(root); });
    EXPECT_EQ(sheet()->content().message, "管理素材库");
    EXPECT_EQ(sheet()->content().informative, "选择不再显示的素材库。移除索引不会删除文件。");
    EXPECT_EQ(sheet()->content().buttons, (QStringList{"关闭", "移除所选素材库"}));
    auto* list = sheet()->findChild<QComboBox*>();
    EXPECT_EQ(list->size(), QSize(460, 28));
    ASSERT_EQ(list->count(), 2);
    EXPECT_EQ(list->itemText(0), "/media/盘 A");
    list->setCurrentIndex(1);
    press(1);
    EXPECT_EQ(removed, std::vector<std::string>{"/media/b"});
    presentManageRoots(window_, roots, [&](const std::string& root) { removed.push_back(root); });
    press(0);
    EXPECT_EQ(removed.size(), 1U);
}

TEST_F(Sheets, ManagingWithoutFoldersRemovesNothing) {
    bool removed = false;
    presentManageRoots(window_, {}, [&](const std::string&) { removed = true; });
    press(1);
    EXPECT_FALSE(removed);
}

TEST_F(Sheets, AFailedRenameIsExplained) {
    presentRenameFailed(window_, "同一文件夹内已存在该名称，请换一个名称；不会覆盖已有文件。");
    EXPECT_EQ(sheet()->content().message, "未能重命名");
    EXPECT_EQ(sheet()->content().informative, "同一文件夹内已存在该名称，请换一个名称；不会覆盖已有文件。");
    EXPECT_EQ(sheet()->content().buttons, QStringList{"好"});
    press(0);
}

TEST_F(Sheets, AboutNamesVersionAndWorkspaces) {
    presentAbout(window_);
    EXPECT_EQ(sheet()->content().message, "MORVANE 素材助手 1.2.0 测试版");
    EXPECT_EQ(sheet()->content().informative,
              "本地素材管理与拍摄项目整理。\n\n管理素材：搜索、试听、预览、收藏与拖入剪辑软件。\n"
              "整理素材：目录模板、复制校验、分类预演与 FCPXML "
              "交接。\n个人设置与收藏沿用旧版，索引迁移至本机数据库。");
    EXPECT_TRUE(sheet()->content().useAppIcon);
    press(0);
}

TEST_F(Sheets, SeveralFoldersAreAddedAtOnce) {
    const TemporaryFolder folder;
    makeTree(folder.path(), {{"影像 A/", ""}, {"b/", ""}, {"c/", ""}, {"file.mov", "x"}});
    std::vector<std::string> chosen;
    presentAddRoot(window_, [&](std::vector<std::string> folders) { chosen = std::move(folders); });
    auto* panel = window_.findChild<QFileDialog*>();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->windowTitle(), "选择素材库文件夹");
    EXPECT_EQ(panel->windowModality(), Qt::WindowModal);
    EXPECT_EQ(panel->labelText(QFileDialog::Accept), "添加素材库");
    panel->setDirectory(QString::fromStdString(folder.path()));
    auto* list = panel->findChild<QAbstractItemView*>("listView");
    const auto row = [&](const QString& name) {
        for (int i = 0; i < list->model()->rowCount(list->rootIndex()); ++i) {
            const QModelIndex index = list->model()->index(i, 0, list->rootIndex());
            if (index.data().toString() == name)
                return index;
        }
        return QModelIndex();
    };
    ASSERT_TRUE(waitUntil([&] { return row("影像 A").isValid() && row("c").isValid(); }));
    EXPECT_FALSE(row("file.mov").isValid()) << "folders only";
    panel->activateWindow();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                      list->visualRect(row("影像 A")).center());
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                      list->visualRect(row("c")).center());
    const QPointer<QFileDialog> open = panel;
    for (QPushButton* button : panel->findChildren<QPushButton*>()) {
        if (button->text().remove('&') == "添加素材库")
            QTest::mouseClick(button, Qt::LeftButton);
    }
    ASSERT_TRUE(waitUntil([&] { return open.isNull(); }));
    std::sort(chosen.begin(), chosen.end());
    EXPECT_EQ(chosen, (std::vector<std::string>{folder / "c", folder / "影像 A"}));
}

TEST_F(Sheets, ACancelledPanelAddsNothing) {
    bool chosen = false;
    presentAddRoot(window_, [&](const std::vector<std::string>&) { chosen = true; });
    const QPointer<QFileDialog> panel = window_.findChild<QFileDialog*>();
    panel->reject();
    ASSERT_TRUE(waitUntil([&] { return panel.isNull(); }));
    EXPECT_FALSE(chosen);
}

}  // namespace
}  // namespace morvane::test
