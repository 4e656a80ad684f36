// The library workspace as the user works with it: searching, choosing, favourites, renaming, folders.
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

#include <sqlite3.h>

#include <gmock/gmock.h>

#include "app/theme/elided_label.h"
#include "app/theme/file_table.h"
#include "app/theme/keyboard_window.h"
#include "app/theme/push_button.h"
#include "app/theme/search_field.h"
#include "app/theme/segmented_control.h"
#include "app/theme/sheet.h"
#include "library_ui/asset_table_model.h"
#include "library_ui/category_tree_model.h"
#include "tests/app/controller_fixture.h"

namespace morvane {
namespace {

using test::waitUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Library : public test::ControllerTest {
protected:
    void SetUp() override { startWithMedia(); }

    Controller& app() { return *controller_; }
    /// ASCII only: the test library's keys know no other.
    void type(const QString& text) { QTest::keyClicks(&app().frame().search(), text); }
    void clickCategory(const QString& title) {
        QTreeView& outline = app().libraryView().outline();
        const QModelIndexList found = outline.model()->match(outline.model()->index(0, 0), Qt::DisplayRole,
                                                             title, 1, Qt::MatchExactly | Qt::MatchRecursive);
        ASSERT_EQ(found.size(), 1) << title.toStdString();
        outline.scrollTo(found[0]);
        QTest::mouseClick(outline.viewport(), Qt::LeftButton, {}, outline.visualRect(found[0]).center());
    }
    bool listBecomes(const std::vector<std::string>& names) {
        return waitUntil([&] { return listed() == names; });
    }
    QString title(int row) {
        const auto* model = app().libraryView().table().model();
        return model->index(row, 0).data(Qt::DisplayRole).toString();
    }
    void shownBecomes(const std::string& name) {
        clickRow(name);
        ASSERT_TRUE(app().selected());
        EXPECT_EQ(app().selected()->name(), name);
        ASSERT_TRUE(waitUntil([&] { return app().previewPane().fileButtons.rename->isEnabled(); }));
    }
    void renameTo(const QString& baseName) {
        ASSERT_TRUE(waitUntil([this] { return sheetMessage() == "重命名原文件"; }));
        auto* field = app().frame().window()->findChild<Sheet*>()->findChild<QLineEdit*>();
        ASSERT_NE(field, nullptr);
        field->setText(baseName);
        answerSheet(0);
    }
};

TEST_F(Library, TypingFiltersOnceAfterTheLastKey) {
    const std::int64_t before = app().filter().filterGeneration();
    type("clip");
    EXPECT_EQ(app().filter().filterGeneration(), before);
    EXPECT_TRUE(listBecomes({"clip.mov"}));
    EXPECT_EQ(app().filter().filterGeneration(), before + 1);
    EXPECT_EQ(app().libraryView().resultCount().text(), "1 项");
    EXPECT_EQ(status(), "1 个素材文件夹 · 4 个素材");
}

TEST_F(Library, NothingFoundSaysSo) {
    type("no such thing");
    EXPECT_TRUE(listBecomes({}));
    EXPECT_EQ(status(), "未找到素材 · 尝试缩短关键词、切换分类或添加文件夹");
    EXPECT_EQ(app().libraryView().resultCount().text(), "0 项");
    QTest::keyClick(&app().frame().search(), Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([this] { return listed().size() == 4; }));
    EXPECT_EQ(status(), "1 个素材文件夹 · 4 个素材");
}

TEST_F(Library, TheKindControlAndTheTreeNarrowTheList) {
    app().libraryView().kindControl().choose(1);
    EXPECT_TRUE(listBecomes({"Take 2.wav", "Take 10.wav"}));
    app().libraryView().kindControl().choose(0);
    EXPECT_TRUE(waitUntil([this] { return listed().size() == 4; }));
    clickCategory("b");
    EXPECT_EQ(app().filter().filterKey(), media_ + "/b");
    EXPECT_TRUE(listBecomes({"clip.mov", "still.png"}));
    clickCategory("全部素材");
    EXPECT_TRUE(waitUntil([this] { return listed().size() == 4; }));
}

TEST_F(Library, RebuildingTheTreeKeepsTheSelectionAndFiltersNothing) {
    clickCategory("b");
    ASSERT_TRUE(listBecomes({"clip.mov", "still.png"}));
    const std::int64_t before = app().filter().filterGeneration();
    QSignalSpy rebuilt(&app().categoryTree(), &CategoryTree::rebuilt);
    app().rebuildCategories();
    ASSERT_TRUE(waitUntil([&] { return rebuilt.size() == 1; }));
    EXPECT_EQ(app().filter().filterGeneration(), before);
    EXPECT_EQ(app().libraryView().outline().currentIndex().data(CategoryTreeModel::KeyRole).toByteArray(),
              QByteArray::fromStdString(media_ + "/b"));
}

TEST_F(Library, ASelectedAssetStaysSelectedWhileItMatches) {
    shownBecomes("clip.mov");
    type("clip");
    ASSERT_TRUE(listBecomes({"clip.mov"}));
    EXPECT_EQ(app().libraryView().selectedCount(), 1U);
    EXPECT_EQ(app().previewPane().text.previewTitle->text(), "clip.mov");
    type("x");
    ASSERT_TRUE(listBecomes({}));
    EXPECT_FALSE(app().selected());
    EXPECT_EQ(app().previewPane().text.previewTitle->text(), "选择一个素材");
}

TEST_F(Library, SeveralSelectedRowsAreCounted) {
    clickRow("clip.mov");
    clickRow("still.png", Qt::ControlModifier);
    EXPECT_TRUE(waitUntil(
        [this] { return app().previewPane().text.notice->text() == "已选择 2 个文件，可一起拖出或复制。"; }));
}

TEST_F(Library, FavouritesChangeListTreeAndFile) {
    clickRow("clip.mov");
    app().toggleFavorite();
    EXPECT_TRUE(waitUntil([this] { return topCategories()[1] == "我的收藏 1"; }));
    EXPECT_TRUE(waitUntil([this] { return title(0) == "★ clip.mov"; }));
    EXPECT_EQ(app().previewPane().fileButtons.favorite->text(), "已收藏");

    clickRow("still.png", Qt::ControlModifier);  // a mixed selection: all become favourites
    app().toggleFavorite();
    EXPECT_THAT(app().settings().favorites,
                UnorderedElementsAre(media_ + "/b/clip.mov", media_ + "/b/still.png"));
    clickCategory("我的收藏");
    EXPECT_TRUE(listBecomes({"clip.mov", "still.png"}));
    app().libraryView().table().selectAll();
    app().toggleFavorite();
    EXPECT_TRUE(listBecomes({}));
    EXPECT_THAT(app().settings().favorites, IsEmpty());
    stop();
    EXPECT_THAT(storedSettings().favorites, IsEmpty());
}

TEST_F(Library, RememberingUpdatesOnlyTheCountOfTheRecentRow) {
    const std::int64_t generation = app().categoryTree().categoryGeneration();
    app().remember(media_ + "/b/clip.mov");
    app().remember(media_ + "/Take 2.wav");
    app().remember(media_ + "/b/clip.mov");
    EXPECT_EQ(topCategories()[2], "最近使用 2");
    EXPECT_EQ(app().categoryTree().categoryGeneration(), generation);
    clickCategory("最近使用");
    EXPECT_TRUE(listBecomes({"clip.mov", "Take 2.wav"}));
    stop();
    EXPECT_THAT(storedSettings().recent, ElementsAre(media_ + "/b/clip.mov", media_ + "/Take 2.wav"));
}

TEST_F(Library, CopyingPutsTheFilesOnTheClipboard) {
    clickRow("clip.mov");
    clickRow("still.png", Qt::ControlModifier);
    app().libraryView().table().setFocus();
    QTest::keyClick(app().frame().window(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(waitUntil([this] { return status() == "已复制 2 个文件 · 在 Finder 中按 ⌘V 粘贴"; }));
    EXPECT_EQ(QApplication::clipboard()->mimeData()->urls().size(), 2);
    app().copyPath();
    EXPECT_EQ(status(), "已复制完整文件路径");
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(),
              media_ + "/b/clip.mov\n" + media_ + "/b/still.png");
}

TEST_F(Library, CopyInTheSearchFieldCopiesItsText) {
    clickRow("clip.mov");
    QTest::keyClick(app().frame().window(), Qt::Key_F, Qt::ControlModifier);
    ASSERT_EQ(QApplication::focusWidget(), &app().frame().search());
    type("take");
    app().frame().search().selectAll();
    app().copySmart();
    EXPECT_EQ(QApplication::clipboard()->text(), "take");
}

TEST_F(Library, SpaceTypesInTheSearchFieldAndStartsNothing) {
    clickRow("clip.mov");
    app().frame().search().setFocus();
    type("a b");
    EXPECT_EQ(app().frame().search().text(), "a b");
    EXPECT_THAT(app().settings().recent, IsEmpty());
    app().libraryView().table().setFocus();
    QTest::keyClick(&app().libraryView().table(), Qt::Key_Space);  // nothing playable is shown
    EXPECT_EQ(app().frame().search().text(), "a b");
}

TEST_F(Library, RenamingMovesTheFileAndEverythingFollows) {
    shownBecomes("clip.mov");
    app().toggleFavorite();
    app().remember(media_ + "/b/clip.mov");
    app().renameFile();
    renameTo("  湖边 日落 ");
    EXPECT_TRUE(waitUntil([this] { return status() == "已同步重命名原文件：湖边 日落.mov"; }));
    const std::string renamed = media_ + "/b/湖边 日落.mov";
    EXPECT_TRUE(std::filesystem::exists(renamed));
    EXPECT_FALSE(std::filesystem::exists(media_ + "/b/clip.mov"));
    EXPECT_TRUE(
        waitUntil([this] { return listed().back() == "湖边 日落.mov" || listed()[0] == "湖边 日落.mov"; }));
    EXPECT_EQ(app().selected()->path, renamed);
    EXPECT_EQ(app().selected()->relative, "b/湖边 日落.mov");
    EXPECT_EQ(app().libraryView().selectedCount(), 1U);
    EXPECT_EQ(status(), "已同步重命名原文件：湖边 日落.mov");
    EXPECT_THAT(app().settings().favorites, UnorderedElementsAre(renamed));
    EXPECT_THAT(app().settings().recent, ElementsAre(renamed));
    app().frame().search().setText("日落");
    EXPECT_TRUE(listBecomes({"湖边 日落.mov"}));
    stop();
    EXPECT_THAT(storedSettings().favorites, UnorderedElementsAre(renamed));
    start();
    EXPECT_EQ(listed().size(), 4U);
    EXPECT_TRUE(app().index().assets()->rowOf(renamed));
}

TEST_F(Library, WhatWasSaidOfAnUnsavedRenameGivesWayToTheNextSearch) {
    shownBecomes("clip.mov");
    app().renameFile();
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open((store_ + "/catalog.sqlite").c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "DROP TABLE assets", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(other);
    renameTo("湖边");
    ASSERT_TRUE(waitUntil([this] { return status() == "文件已改名，但索引保存失败，请刷新重试。"; }));
    waitForFilter();
    app().frame().search().setText("nowhere");
    EXPECT_TRUE(waitUntil([this] { return listed().empty(); }));
    EXPECT_EQ(status(), "未找到素材 · 尝试缩短关键词、切换分类或添加文件夹");
}

TEST_F(Library, ARefusedRenameChangesNothingAndSaysWhy) {
    shownBecomes("clip.mov");
    test::writeFile(media_ + "/b/taken.mov", "other");
    for (const auto& [name, reason] :
         {std::pair("taken", "同一文件夹内已存在该名称，请换一个名称；不会覆盖已有文件。"),
          std::pair("a/b", "名称不能为空、以点开头，或包含 /、:、换行等特殊字符。"),
          std::pair(".hidden", "名称不能为空、以点开头，或包含 /、:、换行等特殊字符。")}) {
        app().renameFile();
        renameTo(name);
        ASSERT_TRUE(waitUntil([this] { return sheetMessage() == "未能重命名"; })) << name;
        EXPECT_EQ(app().frame().window()->findChild<Sheet*>()->content().informative, reason);
        answerSheet(0);
        EXPECT_EQ(app().selected()->name(), "clip.mov");
    }
    EXPECT_EQ(test::readAll(media_ + "/b/taken.mov"), "other");
    EXPECT_EQ(test::readAll(media_ + "/b/clip.mov"), "clip");
}

TEST_F(Library, RenamingNeedsExactlyOneFileThatIsThere) {
    app().libraryView().table().clearSelection();
    app().renameFile();
    EXPECT_EQ(status(), "请选择一个在线文件后重命名");
    clickRow("clip.mov");
    clickRow("still.png", Qt::ControlModifier);
    app().workspaceChanged();
    app().renameFile();
    EXPECT_EQ(status(), "请选择一个在线文件后重命名");
    clickRow("clip.mov");
    std::filesystem::remove(media_ + "/b/clip.mov");
    app().workspaceChanged();
    app().renameFile();
    EXPECT_TRUE(waitUntil([this] { return status() == "请选择一个在线文件后重命名"; }));
    EXPECT_EQ(sheetMessage(), "");
}

TEST_F(Library, RenamingWaitsForTheRefresh) {
    shownBecomes("clip.mov");
    app().refresh();
    ASSERT_TRUE(app().index().scanning());
    EXPECT_FALSE(app().previewPane().fileButtons.rename->isEnabled());
    app().renameFile();
    EXPECT_EQ(status(), "请等索引刷新完成后再改名");
    waitForRefresh();
    EXPECT_TRUE(app().previewPane().fileButtons.rename->isEnabled());
}

TEST_F(Library, RenamingWaitsForTheRenameBefore) {
    shownBecomes("clip.mov");
    app().renameFile();
    app().renameFile();
    QList<Sheet*> sheets;
    ASSERT_TRUE(waitUntil([&] {
        sheets = app().frame().window()->findChildren<Sheet*>();
        return sheets.size() == 2;
    }));
    sheets[0]->findChild<QLineEdit*>()->setText("first");
    sheets[1]->findChild<QLineEdit*>()->setText("second");
    sheets[0]->button(0)->click();
    ASSERT_TRUE(app().index().renaming());
    sheets[1]->button(0)->click();
    EXPECT_EQ(status(), "请等索引刷新完成后再改名");
    EXPECT_TRUE(waitUntil([this] { return status() == "已同步重命名原文件：first.mov"; }));
    waitForFilter();
    EXPECT_THAT(listed(), testing::Contains("first.mov"));
    EXPECT_TRUE(std::filesystem::exists(media_ + "/b/first.mov"));
    EXPECT_FALSE(std::filesystem::exists(media_ + "/b/second.mov"));
}

TEST_F(Library, ARefreshSaysWhatItDoes) {
    QTest::mouseClick(&app().frame().refreshButton(), Qt::LeftButton);
    EXPECT_EQ(status(), "正在建立索引…素材文件保持原位置。");
    EXPECT_FALSE(app().frame().refreshButton().isEnabled());
    EXPECT_EQ(app().settings().pendingRefresh, true);
    waitForRefresh();
    EXPECT_TRUE(app().frame().refreshButton().isEnabled());
    EXPECT_EQ(app().settings().pendingRefresh, false);
}

TEST_F(Library, TwoQuickRefreshesMakeExactlyOneMoreWalk) {
    QSignalSpy started(&app().index(), &LibraryIndex::refreshStarted);
    QSignalSpy finished(&app().index(), &LibraryIndex::refreshFinished);
    app().refresh();
    app().refresh();
    app().refresh();
    EXPECT_TRUE(waitUntil([&] { return finished.size() == 2; }));
    waitForRefresh();
    EXPECT_EQ(started.size(), 2);
    EXPECT_EQ(finished.size(), 2);
    EXPECT_EQ(app().settings().pendingRefresh, false);
}

TEST_F(Library, AnOfflineFolderKeepsItsRowsAndIsNamed) {
    shownBecomes("clip.mov");
    std::filesystem::rename(media_, folder_ / "unplugged");
    app().refresh();
    waitForRefresh();
    EXPECT_EQ(status(), "离线：media · 已保留索引，连接硬盘后刷新");
    EXPECT_EQ(app().frame().statusGlyph(), StatusGlyph::OfflineRoot);
    EXPECT_EQ(listed().size(), 4U);
    clickRow("still.png");
    EXPECT_TRUE(waitUntil([this] {
        return app().previewPane().text.notice->text() ==
               "文件暂不可用：请连接素材硬盘；若文件已移动，请刷新索引。";
    }));
    EXPECT_FALSE(app().previewPane().fileButtons.copy->isEnabled());
    EXPECT_TRUE(app().previewPane().fileButtons.favorite->isEnabled());
}

TEST_F(Library, RemovingAFolderTakesItsRowsAndShowsEverything) {
    clickCategory("b");
    ASSERT_TRUE(listBecomes({"clip.mov", "still.png"}));
    app().manageRoots();
    ASSERT_EQ(sheetMessage(), "管理素材库");
    answerSheet(1);
    waitForRefresh();
    EXPECT_TRUE(listBecomes({}));
    EXPECT_THAT(app().settings().roots, IsEmpty());
    EXPECT_EQ(app().filter().filterKey(), "all");
    EXPECT_TRUE(std::filesystem::exists(media_ + "/Take 2.wav"));
    stop();
    EXPECT_THAT(storedSettings().roots, IsEmpty());
}

TEST_F(Library, ClosingTheFolderSheetRemovesNothing) {
    app().manageRoots();
    answerSheet(0);
    EXPECT_THAT(app().settings().roots, ElementsAre(media_));
    EXPECT_FALSE(app().index().scanning());
}

TEST_F(Library, AutoplayIsSavedAtOnce) {
    app().autoChanged(true);
    stop();
    EXPECT_TRUE(storedSettings().autoplay);
    start();
    EXPECT_TRUE(app().settings().autoplay);
}

}  // namespace
}  // namespace morvane
