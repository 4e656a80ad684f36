#include "library_ui/library_layout.h"

#include "library_ui/empty_list.h"
#include "library_ui/row_range.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(FitPanes, DividersStandAt240And955) {
    const PaneWidths widths = fitPanes(1340, {});
    EXPECT_EQ(widths.tree, 240);
    EXPECT_EQ(widths.tree + 1 + widths.list, 955);
    EXPECT_EQ(widths.preview, 384);
}

TEST(FitPanes, NarrowingTakesFromListThenPreviewThenListThenTree) {
    const struct {
        int total;
        PaneWidths widths;
    } rows[] = {
        {1800, {240, 1174, 384}}, {1340, {240, 714, 384}}, {1200, {240, 574, 384}}, {1135, {240, 509, 384}},
        {1134, {240, 509, 383}},  {1100, {240, 509, 349}}, {1071, {240, 509, 320}}, {1070, {240, 508, 320}},
        {1012, {240, 450, 320}},  {1011, {239, 450, 320}}, {972, {200, 450, 320}},  {900, {200, 378, 320}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(fitPanes(row.total, {}), row.widths) << row.total;
}

TEST(FitPanes, WhatTheUserWantsIsKeptWithinTheLimits) {
    EXPECT_EQ(fitPanes(1340, {.treeWidth = 100, .previewWidth = 600}), (PaneWidths{200, 658, 480}));
    EXPECT_EQ(fitPanes(1340, {.treeWidth = 300, .previewWidth = 100}), (PaneWidths{300, 718, 320}));
    // Widening again gives back what narrowing took.
    const LibraryLayout wanted{.treeWidth = 300, .previewWidth = 450};
    EXPECT_EQ(fitPanes(1300, wanted).preview, 450);
    EXPECT_LT(fitPanes(1150, wanted).preview, 450);
}

TEST(FitColumns, TheLastOneTakesWhatIsLeft) {
    EXPECT_EQ(fitColumns(509, {}), (ColumnWidths{260, 150, 75}));
    EXPECT_EQ(fitColumns(714, {}), (ColumnWidths{260, 150, 280}));
    EXPECT_EQ(fitColumns(450, {}), (ColumnWidths{260, 106, 60}));
    EXPECT_EQ(fitColumns(380, {}), (ColumnWidths{236, 60, 60}));
    EXPECT_EQ(fitColumns(100, {}), (ColumnWidths{140, 60, 60}));
    EXPECT_EQ(fitColumns(714, {.nameWidth = 10, .folderWidth = 10}), (ColumnWidths{140, 60, 490}));
}

TEST(ActionRows, AClickedRowOutsideTheSelectionStandsAlone) {
    const std::vector<RowRange> selected = {{1, 3}, {7, 7}};
    EXPECT_EQ(actionRows(-1, selected), selected);
    EXPECT_EQ(actionRows(2, selected), selected);
    EXPECT_EQ(actionRows(7, selected), selected);
    EXPECT_EQ(actionRows(0, selected), (std::vector<RowRange>{{0, 0}}));
    EXPECT_EQ(actionRows(5, {}), (std::vector<RowRange>{{5, 5}}));
    EXPECT_TRUE(actionRows(-1, {}).empty());
}

TEST(EmptyState, SaysWhatToDoOnlyOnceTheCatalogIsRead) {
    EXPECT_EQ(emptyStateFor({.isLoading = true, .searchText = {}}), EmptyState::None);
    EXPECT_EQ(emptyStateFor({.isLoading = true, .roots = 2, .searchText = "word"}), EmptyState::None);
    EXPECT_EQ(emptyStateFor({.searchText = {}}), EmptyState::FirstStart);
    EXPECT_EQ(emptyStateFor({.searchText = "word"}), EmptyState::FirstStart);
    EXPECT_EQ(emptyStateFor({.assets = 9, .roots = 2, .searchText = "word"}), EmptyState::NoResult);
    EXPECT_EQ(emptyStateFor({.assets = 9, .roots = 2, .searchText = "  "}), EmptyState::NoResultBare);
    EXPECT_EQ(emptyStateFor({.assets = 9, .roots = 2, .rows = 5, .searchText = "word"}), EmptyState::None);
    EXPECT_EQ(emptyStateFor({.assets = 9, .rows = 5, .searchText = {}}), EmptyState::None);
}

TEST(EmptyState, SaysNothingWhileTheFirstIndexIsBuilt) {
    ListFacts facts{.isScanning = true, .roots = 1, .searchText = {}};
    EXPECT_EQ(emptyStateFor(facts), EmptyState::None);
    facts.isScanning = false;
    EXPECT_EQ(emptyStateFor(facts), EmptyState::NoResultBare) << "the folders hold nothing";
    facts.isScanning = true;
    facts.assets = 9;
    facts.searchText = "word";
    EXPECT_EQ(emptyStateFor(facts), EmptyState::NoResult) << "the index of before is still searched";
    EXPECT_EQ(emptyStateFor({.isScanning = true, .searchText = {}}), EmptyState::FirstStart);
}

}  // namespace
}  // namespace morvane
