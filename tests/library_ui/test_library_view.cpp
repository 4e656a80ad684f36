#include "library_ui/library_view.h"

#include "app/theme/elided_label.h"
#include "app/theme/file_table.h"
#include "app/theme/push_button.h"
#include "app/theme/segmented_control.h"
#include "library_ui/asset_table.h"
#include "library_ui/category_tree_view.h"
#include "tests/library_ui/library_fixture.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QSplitter>
#include <QTest>
#include <QTreeView>

#include <numeric>

namespace morvane::test {
namespace {

struct Chosen {
    std::string path;
    std::size_t rows = 0;
};

/// What the list reported, in order.
class Choices {
public:
    explicit Choices(LibraryView& view) {
        QObject::connect(&view, &LibraryView::assetChosen, [this](const Asset& asset, std::size_t rows) {
            list.push_back({asset.path, rows});
        });
    }
    std::vector<Chosen> list;
};

void showSamples(Workspace& space) {
    space.view->setFavoriteTest(isSampleFavorite);
    space.view->showRows(rowsOf(sampleAssets()), std::nullopt, ListPosition::Top);
}

FilterResult manyRows(std::uint32_t count) {
    AssetList::Builder builder;
    builder.reserve(count, std::size_t{count} * 24);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::string relative = "d/clip" + std::to_string(i) + ".mov";
        builder.add("/r/" + relative, "/r", relative, i, 1);
    }
    FilterResult all;
    all.assets = builder.finish();
    all.rows.resize(count);
    std::iota(all.rows.begin(), all.rows.end(), 0U);
    return all;
}

/// Opens the context menu on `row` with a real right click and returns it.
QMenu* openMenu(Workspace& space, int row) {
    FileTable& table = space.view->table();
    const QPoint middle = table.visualRect(table.model()->index(row, 0)).center();
    QTest::mouseClick(table.viewport(), Qt::RightButton, Qt::NoModifier, middle);
    QContextMenuEvent event(QContextMenuEvent::Mouse, middle, table.viewport()->mapToGlobal(middle));
    QApplication::sendEvent(table.viewport(), &event);
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

void trigger(QMenu* menu, const QString& title) {
    for (QAction* action : menu->actions()) {
        if (action->text() == title) {
            QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(action).center());
            return;
        }
    }
    FAIL() << "no menu item " << title.toStdString();
}

std::vector<std::string> pathsOf(const std::vector<Asset>& assets) {
    std::vector<std::string> paths;
    for (const Asset& asset : assets)
        paths.push_back(asset.path);
    return paths;
}

TEST(LibraryView, IsAbsentUntilBuilt) {
    useTheme();
    FileChecker checker;
    LibraryView view(checker);
    EXPECT_EQ(view.managementView(), nullptr);
    EXPECT_FALSE(view.suppressSelection());
    EXPECT_EQ(view.resultCount().text(), "");
    EXPECT_EQ(view.kindControl().selectedSegment(), 0);
    view.buildManagementView(new PreviewPane);
    EXPECT_EQ(view.managementView(), &view);
}

TEST(LibraryView, PanesColumnsAndRowsHaveTheirMeasures) {
    Workspace space;
    showSamples(space);
    auto* splitter = space.view->findChild<QSplitter*>();
    EXPECT_EQ(splitter->sizes(), (QList<int>{240, 714, 384}));
    EXPECT_EQ(splitter->handleWidth(), 1);
    const QHeaderView* header = space.view->table().horizontalHeader();
    EXPECT_EQ(header->sectionSize(0), 260 + 8);
    EXPECT_EQ(header->sectionSize(1), 150 + 8);
    EXPECT_EQ(header->length(), 714);
    EXPECT_EQ(space.view->table().rowHeight(0), 48);
    EXPECT_EQ(space.view->table().selectionMode(), QAbstractItemView::ExtendedSelection);
    EXPECT_FALSE(space.view->table().alternatingRowColors());
    EXPECT_EQ(space.view->outline().indentation(), 13);
    EXPECT_TRUE(space.view->outline().isHeaderHidden());
    QStringList kinds;
    for (int i = 0; i < space.view->kindControl().count(); ++i)
        kinds << space.view->kindControl().label(i);
    EXPECT_EQ(kinds, (QStringList{"全部", "音频", "视频", "图片", "其他"}));
}

TEST(LibraryView, NarrowsAndWidensByTheRule) {
    Workspace space;
    auto* splitter = space.view->findChild<QSplitter*>();
    const struct {
        int width;
        QList<int> sizes;
    } steps[] = {
        {1100, {240, 509, 349}}, {1020, {240, 458, 320}}, {1340, {240, 714, 384}}, {1600, {240, 974, 384}}};
    for (const auto& step : steps) {
        space.window->resize(step.width, 548);
        EXPECT_TRUE(waitUntil([&] { return splitter->sizes() == step.sizes; })) << step.width;
    }
}

TEST(LibraryView, TheUsersWidthsAreReportedAndRestored) {
    Workspace space;
    showSamples(space);
    QSignalSpy changed(space.view, &LibraryView::libraryLayoutChanged);
    auto* splitter = space.view->findChild<QSplitter*>();
    QWidget* handle = splitter->handle(1);
    QTest::mousePress(handle, Qt::LeftButton, Qt::NoModifier, QPoint(0, 200));
    QTest::mouseMove(handle, QPoint(60, 200));
    QTest::mouseRelease(handle, Qt::LeftButton, Qt::NoModifier, QPoint(60, 200));
    EXPECT_GT(space.view->libraryLayout().treeWidth, 240);
    EXPECT_GE(changed.count(), 1);

    const LibraryLayout wanted{.treeWidth = 260, .previewWidth = 400, .nameWidth = 300, .folderWidth = 120};
    space.view->setLibraryLayout(wanted);
    EXPECT_EQ(space.view->libraryLayout(), wanted);
    EXPECT_EQ(splitter->sizes(), (QList<int>{260, 678, 400}));
    EXPECT_TRUE(waitUntil([&] { return space.view->table().horizontalHeader()->sectionSize(0) == 308; }));
    EXPECT_EQ(space.view->table().horizontalHeader()->sectionSize(1), 128);

    changed.clear();
    space.view->table().horizontalHeader()->resizeSection(0, 60);
    EXPECT_EQ(space.view->libraryLayout().nameWidth, 140) << "a column stops at its least width";
    EXPECT_EQ(changed.count(), 1);
}

TEST(LibraryView, AccessibleNamesAreSet) {
    Workspace space;
    EXPECT_EQ(space.view->table().accessibleName(), "素材文件列表");
    EXPECT_EQ(space.view->outline().accessibleName(), "素材分类");
    EXPECT_EQ(space.view->kindControl().accessibleName(), "素材类型");
}

TEST(LibraryView, AClickShowsItsRow) {
    Workspace space;
    showSamples(space);
    const Choices choices(*space.view);
    space.clickRow(6);
    ASSERT_EQ(choices.list.size(), 1U);
    EXPECT_EQ(choices.list[0].path, sampleAssets()[6].path);
    EXPECT_EQ(choices.list[0].rows, 1U);
}

TEST(LibraryView, SeveralRowsAreCounted) {
    Workspace space;
    showSamples(space);
    const Choices choices(*space.view);
    space.clickRow(1);
    space.clickRow(4, Qt::ShiftModifier);
    EXPECT_EQ(choices.list.back().rows, 4U);
    space.clickRow(7, Qt::ControlModifier);
    EXPECT_EQ(choices.list.back().rows, 5U);
    EXPECT_EQ(choices.list.back().path, sampleAssets()[7].path);
    EXPECT_EQ(space.selectedRows(), (std::vector<int>{1, 2, 3, 4, 7}));
    EXPECT_EQ(space.view->selectedCount(), 5U);
    const auto paths = pathsOf(space.view->actionAssets());
    ASSERT_EQ(paths.size(), 5U);
    EXPECT_EQ(paths[0], sampleAssets()[1].path);
    EXPECT_EQ(paths[4], sampleAssets()[7].path);
}

TEST(LibraryView, ArrowKeysShowOneRowAfterAnother) {
    Workspace space;
    showSamples(space);
    const Choices choices(*space.view);
    space.clickRow(0);
    QTest::keyClick(&space.view->table(), Qt::Key_Down);
    QTest::keyClick(&space.view->table(), Qt::Key_Down);
    ASSERT_EQ(choices.list.size(), 3U);
    EXPECT_EQ(choices.list[1].path, sampleAssets()[1].path);
    EXPECT_EQ(choices.list[2].path, sampleAssets()[2].path);
    QTest::keyClick(&space.view->table(), Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(choices.list.back().path, sampleAssets()[3].path);
    EXPECT_EQ(choices.list.back().rows, 2U);
}

TEST(LibraryView, TypingJumpsToAName) {
    Workspace space;
    showSamples(space);
    const Choices choices(*space.view);
    space.clickRow(0);
    QTest::keyClicks(&space.view->table(), "dsc");
    EXPECT_EQ(choices.list.back().path, sampleAssets()[4].path);
}

TEST(LibraryView, SpaceGoesToTheOwnerOfTheWindow) {
    Workspace space;
    showSamples(space);
    int spaces = 0;
    space.view->table().onSpace = [&] { ++spaces; };
    space.clickRow(0);
    QTest::keyClick(&space.view->table(), Qt::Key_Space);
    EXPECT_EQ(spaces, 1);
    EXPECT_EQ(space.selectedRows(), (std::vector<int>{0}));
}

TEST(LibraryView, ADoubleClickPlays) {
    Workspace space;
    showSamples(space);
    QSignalSpy played(space.view, &LibraryView::playToggled);
    FileTable& table = space.view->table();
    const QPoint middle = table.visualRect(table.model()->index(2, 0)).center();
    QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier, middle);
    QTest::mouseDClick(table.viewport(), Qt::LeftButton, Qt::NoModifier, middle);
    EXPECT_EQ(played.count(), 1);
    QTest::mouseDClick(table.viewport(), Qt::RightButton, Qt::NoModifier, middle);
    EXPECT_EQ(played.count(), 1);
}

TEST(LibraryView, ANewResultKeepsTheShownAssetSelectedWithoutASignal) {
    Workspace space;
    showSamples(space);
    space.clickRow(6);
    const Choices choices(*space.view);
    FilterResult some = rowsOf(sampleAssets());
    some.rows = {12, 6, 2};
    EXPECT_TRUE(space.view->showRows(some, sampleAssets()[6].path, ListPosition::Top));
    EXPECT_EQ(space.selectedRows(), (std::vector<int>{1}));
    EXPECT_EQ(space.view->resultCount().text(), "3 项");
    some.rows = {12, 2};
    EXPECT_FALSE(space.view->showRows(some, sampleAssets()[6].path, ListPosition::Top));
    EXPECT_TRUE(space.selectedRows().empty());
    EXPECT_TRUE(choices.list.empty());
    EXPECT_FALSE(space.view->suppressSelection());
}

TEST(LibraryView, TheCountIsGrouped) {
    Workspace space;
    space.view->showRows(manyRows(12486), std::nullopt, ListPosition::Top);
    EXPECT_EQ(space.view->resultCount().text(), "12,486 项");
    space.view->showRows({}, std::nullopt, ListPosition::Top);
    EXPECT_EQ(space.view->resultCount().text(), "0 项");
}

TEST(LibraryView, ARefreshKeepsThePlaceAndAnotherQuestionBeginsAtTheTop) {
    Workspace space;
    space.view->showRows(manyRows(500), std::nullopt, ListPosition::Top);
    QScrollBar* bar = space.view->table().verticalScrollBar();
    ASSERT_TRUE(waitUntil([&] { return bar->maximum() > 5000; }));
    bar->setValue(4800);
    space.view->showRows(manyRows(501), std::nullopt, ListPosition::Keep);
    EXPECT_EQ(bar->value(), 4800);
    space.view->showRows(manyRows(502), std::nullopt, ListPosition::Top);
    EXPECT_EQ(bar->value(), 0);
}

TEST(LibraryView, AReselectedRowOutOfSightDoesNotMoveTheList) {
    Workspace space;
    space.view->showRows(manyRows(500), std::nullopt, ListPosition::Top);
    space.clickRow(1);
    QScrollBar* bar = space.view->table().verticalScrollBar();
    bar->setValue(9600);
    EXPECT_TRUE(space.view->showRows(manyRows(500), "/r/d/clip1.mov", ListPosition::Keep));
    EXPECT_EQ(bar->value(), 9600);
    EXPECT_EQ(space.selectedRows(), (std::vector<int>{1}));
}

TEST(LibraryView, ARebuiltTreeStaysWhereItWasScrolledTo) {
    Workspace space(1340, 300);
    space.view->showCategories(sampleCategories(), "all");
    QScrollBar* bar = space.view->outline().verticalScrollBar();
    ASSERT_TRUE(waitUntil([&] { return bar->maximum() > 100; }));
    bar->setValue(100);
    space.view->showCategories(sampleCategories(), "all");
    EXPECT_EQ(bar->value(), 100);
}

TEST(LibraryView, AColumnEdgeIsDraggedByHand) {
    Workspace space;
    showSamples(space);
    QHeaderView* header = space.view->table().horizontalHeader();
    const QPoint edge(header->sectionViewportPosition(1), header->height() / 2);
    QTest::mousePress(header->viewport(), Qt::LeftButton, Qt::NoModifier, edge);
    QTest::mouseMove(header->viewport(), edge + QPoint(40, 0));
    QTest::mouseRelease(header->viewport(), Qt::LeftButton, Qt::NoModifier, edge + QPoint(40, 0));
    EXPECT_NEAR(space.view->libraryLayout().nameWidth, 300, 2);
    EXPECT_EQ(header->length(), 714) << "the last column gives way";
}

TEST(LibraryView, TheContextMenuHasItsItemsInOrder) {
    Workspace space;
    showSamples(space);
    QMenu* menu = openMenu(space, 3);
    ASSERT_NE(menu, nullptr);
    QStringList titles;
    for (const QAction* action : menu->actions())
        titles << action->text();
    EXPECT_EQ(titles, (QStringList{"播放 / 暂停", "在 Finder 中显示", "复制文件", "复制完整路径",
                                   "收藏 / 取消收藏", "重命名原文件…"}));
    const QPointer<QMenu> opened = menu;
    menu->close();
    EXPECT_TRUE(waitUntil([&] { return opened.isNull(); })) << "a closed menu is gone";
}

TEST(LibraryView, AMenuOnAnUnselectedRowActsOnThatRowAlone) {
    Workspace space;
    showSamples(space);
    space.clickRow(0);
    space.clickRow(2, Qt::ShiftModifier);
    std::vector<std::string> actedOn;
    QObject::connect(space.view, &LibraryView::copyPathRequested, [&] {
        actedOn = pathsOf(space.view->actionAssets());
        EXPECT_EQ(space.view->actionCount(), actedOn.size());
    });
    trigger(openMenu(space, 9), "复制完整路径");
    EXPECT_EQ(actedOn, (std::vector<std::string>{sampleAssets()[9].path}));
    EXPECT_EQ(space.selectedRows(), (std::vector<int>{0, 1, 2})) << "a right click selects nothing";
    EXPECT_EQ(space.view->actionAssets().size(), 3U) << "the clicked row is forgotten after its action";
    trigger(openMenu(space, 1), "复制完整路径");
    EXPECT_EQ(actedOn.size(), 3U);
}

TEST(LibraryView, EveryMenuItemReportsItsOwnRequest) {
    Workspace space;
    showSamples(space);
    QStringList requests;
    const auto note = [&](const char* name) { return [&requests, name] { requests << name; }; };
    QObject::connect(space.view, &LibraryView::playToggled, note("play"));
    QObject::connect(space.view, &LibraryView::revealRequested, note("reveal"));
    QObject::connect(space.view, &LibraryView::copyRequested, note("copy"));
    QObject::connect(space.view, &LibraryView::copyPathRequested, note("path"));
    QObject::connect(space.view, &LibraryView::favoriteToggled, note("favorite"));
    QObject::connect(space.view, &LibraryView::renameRequested, note("rename"));
    for (const char* title :
         {"播放 / 暂停", "在 Finder 中显示", "复制文件", "复制完整路径", "收藏 / 取消收藏", "重命名原文件…"})
        trigger(openMenu(space, 1), title);
    EXPECT_EQ(requests, (QStringList{"play", "reveal", "copy", "path", "favorite", "rename"}));
}

TEST(LibraryView, NoMenuBesideTheRowsWithoutASelection) {
    Workspace space;
    showSamples(space);
    space.view->showRows(rowsOf({sampleAssets()[0]}), std::nullopt, ListPosition::Top);
    FileTable& table = space.view->table();
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(50, 400),
                            table.viewport()->mapToGlobal(QPoint(50, 400)));
    QApplication::sendEvent(table.viewport(), &event);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST(LibraryView, TheTreeExpandsItsTopAndFollowsTheKey) {
    Workspace space;
    std::vector<std::string> chosen;
    QObject::connect(space.view, &LibraryView::categoryChosen,
                     [&](const std::string& key) { chosen.push_back(key); });
    space.view->showCategories(sampleCategories(), "favorites");
    QTreeView& tree = space.view->outline();
    const auto selectedKey = [&] {
        const QModelIndexList rows = tree.selectionModel()->selectedIndexes();
        return rows.isEmpty() ? QString() : rows[0].data(Qt::ToolTipRole).toString();
    };
    EXPECT_EQ(selectedKey(), "favorites");
    const QModelIndex root = tree.model()->index(3, 0);
    EXPECT_TRUE(tree.isExpanded(root));
    EXPECT_FALSE(tree.isExpanded(tree.model()->index(1, 0, root))) << "deeper levels stay collapsed";
    space.view->showCategories(sampleCategories(), "/run/media/lin/影像素材A/2026 秋日旅拍");
    EXPECT_EQ(selectedKey(), "/run/media/lin/影像素材A/2026 秋日旅拍");
    space.view->showCategories(sampleCategories(), "/gone");
    EXPECT_EQ(selectedKey(), "") << "a folder that is gone leaves no row selected";
    EXPECT_TRUE(chosen.empty()) << "a rebuild never asks for a filter";
}

TEST(LibraryView, AClickInTheTreeChoosesItsKey) {
    Workspace space;
    space.view->showCategories(sampleCategories(), "all");
    std::vector<std::string> chosen;
    QObject::connect(space.view, &LibraryView::categoryChosen,
                     [&](const std::string& key) { chosen.push_back(key); });
    QTreeView& tree = space.view->outline();
    const QRect row = tree.visualRect(tree.model()->index(1, 0));
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::NoModifier, {120, row.center().y()});
    EXPECT_EQ(chosen, (std::vector<std::string>{"favorites"}));
    QTest::keyClick(&tree, Qt::Key_Down);
    EXPECT_EQ(chosen.back(), "recent");
}

TEST(LibraryView, OneEntryOfTheTreeStaysSelected) {
    Workspace space;
    space.view->showCategories(sampleCategories(), "favorites");
    QSignalSpy chosen(space.view, &LibraryView::categoryChosen);
    auto& tree = static_cast<CategoryTreeView&>(space.view->outline());
    for (int row = 3; row < tree.model()->rowCount(); ++row)
        tree.collapse(tree.model()->index(row, 0));
    const QModelIndex favorites = tree.model()->index(1, 0);
    const QPoint below(120, tree.viewport()->height() - 3);
    ASSERT_FALSE(tree.indexAt(below).isValid());
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::NoModifier, below);
    EXPECT_TRUE(tree.selectionModel()->isSelected(favorites)) << "the filter has not changed either";
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::ControlModifier,
                      {120, tree.visualRect(favorites).center().y()});
    EXPECT_TRUE(tree.selectionModel()->isSelected(favorites));
    EXPECT_EQ(chosen.count(), 0);
}

TEST(LibraryView, TheChevronOpensWithoutChoosing) {
    Workspace space;
    space.view->showCategories(sampleCategories(), "all");
    QSignalSpy chosen(space.view, &LibraryView::categoryChosen);
    auto& tree = static_cast<CategoryTreeView&>(space.view->outline());
    const QModelIndex trip = tree.model()->index(1, 0, tree.model()->index(3, 0));
    const QRect slot = tree.chevronSlot(trip);
    EXPECT_EQ(slot.left(), 8 + 13);
    EXPECT_EQ(slot.width(), 16);
    EXPECT_EQ(tree.visualRect(trip).height(), 35);
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::NoModifier, slot.center());
    EXPECT_TRUE(tree.isExpanded(trip));
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::NoModifier, slot.center());
    EXPECT_FALSE(tree.isExpanded(trip));
    EXPECT_EQ(chosen.count(), 0);
    EXPECT_TRUE(tree.chevronSlot(tree.model()->index(0, 0)).isEmpty()) << "nothing to open";
    EXPECT_TRUE(tree.chevronSlot(trip).isValid());
}

TEST(LibraryView, ACountChangesInPlaceWithoutATreeReset) {
    Workspace space;
    const CategoryList tree = sampleCategories();
    space.view->showCategories(tree, "all");
    tree[2]->count = 1;
    QSignalSpy reset(space.view->outline().model(), &QAbstractItemModel::modelReset);
    space.view->categoryCountChanged(2);
    EXPECT_EQ(reset.count(), 0);
}

TEST(LibraryView, TheKindControlReportsTheUsersChoice) {
    Workspace space;
    QSignalSpy chosen(space.view, &LibraryView::kindChosen);
    SegmentedControl& kinds = space.view->kindControl();
    QTest::mouseClick(&kinds, Qt::LeftButton, Qt::NoModifier, kinds.segmentRect(2).center());
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen[0][0].toInt(), 2);
}

TEST(LibraryView, EmptyStatesOfferWhatHelps) {
    Workspace space;
    space.view->showRows({}, std::nullopt, ListPosition::Top);
    QSignalSpy add(space.view, &LibraryView::addFolderRequested);
    QSignalSpy clear(space.view, &LibraryView::clearSearchRequested);
    const auto button = [&](const QString& title) -> PushButton* {
        for (auto* each : space.view->table().findChildren<PushButton*>()) {
            if (each->text() == title && each->isVisible())
                return each;
        }
        return nullptr;
    };
    EXPECT_EQ(button("添加文件夹…"), nullptr);
    space.view->setEmptyState(EmptyState::FirstStart);
    ASSERT_NE(button("添加文件夹…"), nullptr);
    EXPECT_EQ(button("添加文件夹…")->role(), PushButton::Role::Primary);
    EXPECT_EQ(button("清除搜索"), nullptr);
    QTest::mouseClick(button("添加文件夹…"), Qt::LeftButton);
    EXPECT_EQ(add.count(), 1);
    space.view->setEmptyState(EmptyState::NoResult);
    ASSERT_NE(button("清除搜索"), nullptr);
    EXPECT_EQ(button("清除搜索")->role(), PushButton::Role::Secondary);
    QTest::mouseClick(button("清除搜索"), Qt::LeftButton);
    EXPECT_EQ(clear.count(), 1);
    space.view->setEmptyState(EmptyState::NoResultBare);
    EXPECT_EQ(button("清除搜索"), nullptr);
    space.view->setEmptyState(EmptyState::None);
    EXPECT_EQ(button("添加文件夹…"), nullptr);
}

TEST(LibraryView, NeighboursAreNearestFirst) {
    Workspace space;
    showSamples(space);
    EXPECT_TRUE(space.view->neighbours(2).empty());
    space.clickRow(5);
    const auto samples = sampleAssets();
    EXPECT_EQ(pathsOf(space.view->neighbours(2)),
              (std::vector<std::string>{samples[6].path, samples[4].path, samples[7].path, samples[3].path}));
    space.clickRow(0);
    EXPECT_EQ(space.view->neighbours(2).size(), 2U);
}

TEST(LibraryView, AMillionRowsSelectActAndScrollAtOnce) {
    Workspace space;
    space.view->showRows(manyRows(1'000'000), std::nullopt, ListPosition::Top);
    const Choices choices(*space.view);
    space.clickRow(0);
    QTest::keyClick(&space.view->table(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(choices.list.back().rows, 1'000'000U);
    EXPECT_EQ(space.view->selectedCount(), 1'000'000U);
    EXPECT_EQ(space.view->actionCount(), 1'000'000U);
    EXPECT_EQ(space.view->actionFiles().size(), 1'000'000U);
    QTest::keyClick(&space.view->table(), Qt::Key_End);
    EXPECT_EQ(choices.list.back().path, "/r/d/clip999999.mov");
    EXPECT_EQ(choices.list.back().rows, 1U);
    space.clickRow(999'999);
    EXPECT_EQ(space.selectedRows(), (std::vector<int>{999'999}));
}

TEST(LibraryView, TabWalksInTheAgreedOrder) {
    Workspace space;
    showSamples(space);
    PreviewPane& pane = *space.preview;
    pane.showAsset(sampleAssets()[6], Favorite::No);
    pane.showFileState(FileState::Present);
    pane.showReady(10);
    space.window->activateWindow();
    space.view->outline().setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(waitUntil([&] { return space.view->outline().hasFocus(); }));
    std::vector<QWidget*> order = {&space.view->outline()};
    for (int i = 0; i < 12; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        order.push_back(QApplication::focusWidget());
    }
    const std::vector<QWidget*> agreed = {
        &space.view->outline(),  &space.view->kindControl(), &space.view->table(),  pane.transport.play,
        pane.transport.seek,     pane.transport.volume,      pane.transport.auto_,  pane.fileButtons.favorite,
        pane.fileButtons.reveal, pane.fileButtons.copy,      pane.fileButtons.open, pane.fileButtons.rename,
        pane.text.pathLabel};
    for (std::size_t i = 0; i < agreed.size(); ++i)
        EXPECT_EQ(order[i], agreed[i]) << "place " << i;
}

TEST(DragPicture, NamesOneFileAndCountsSeveral) {
    useTheme();
    const QPixmap one = dragPicture("a.mov", "film", 1, 2.0);
    EXPECT_EQ(one.devicePixelRatio(), 2.0);
    EXPECT_EQ(one.height(), 64);
    EXPECT_EQ(one.toImage().pixelColor(0, 0).alpha(), 0) << "rounded corners";
    EXPECT_EQ(one.toImage().pixelColor(one.width() - 10, 32), QColor(0x25, 0x1D, 0x30));
    EXPECT_LE(dragPicture(QString(300, 'x'), "film", 1, 1.0).width(), 260) << "a long name is elided";
    EXPECT_NE(dragPicture("a.mov", "film", 2, 1.0).toImage(), dragPicture("a.mov", "film", 3, 1.0).toImage());
}

TEST(LibraryView, SelectedRowsAreFilledAndCarryTheTick) {
    Workspace space;
    showSamples(space);
    space.clickRow(2);
    const QImage picture = space.picture();
    FileTable& table = space.view->table();
    const QRect row = table.visualRect(table.model()->index(2, 1));
    const QPoint inside =
        table.viewport()->mapTo(space.window.get(), QPoint(row.right() - 20, row.top() + 6));
    EXPECT_EQ(picture.pixelColor(inside), QColor(0x25, 0x1D, 0x30));
    const QPoint tick = table.viewport()->mapTo(space.window.get(), QPoint(4, row.center().y()));
    EXPECT_EQ(picture.pixelColor(tick), QColor(0xB9, 0xA2, 0xEE));
}

}  // namespace
}  // namespace morvane::test
