#include "library_ui/asset_table_model.h"

#include "tests/library_ui/library_fixture.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QTextDocumentFragment>

#include <numeric>

namespace morvane::test {
namespace {

QString text(const AssetTableModel& model, int row, int column, int role = Qt::DisplayRole) {
    return model.data(model.index(row, column), role).toString();
}

TEST(AssetTableModel, CellsShowNameFolderAndSize) {
    AssetTableModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setFavoriteTest(isSampleFavorite);
    model.setRows(rowsOf(sampleAssets()));
    ASSERT_EQ(model.rowCount(), 14);
    ASSERT_EQ(model.columnCount(), 3);
    EXPECT_EQ(text(model, 0, 0), "A001_C0012_清晨湖面.MOV");
    EXPECT_EQ(text(model, 2, 0), "★ B002_C0004_山路跟拍.MP4");
    EXPECT_EQ(text(model, 2, 0, AssetTableModel::SubtitleRole), "视频 · MP4");
    EXPECT_EQ(text(model, 2, 0, Qt::ToolTipRole),
              "/run/media/lin/影像素材A/2026 秋日旅拍/B机 Day 1/B002_C0004_山路跟拍.MP4");
    EXPECT_EQ(text(model, 2, 1), "2026 秋日旅拍/B机 Day 1");
    EXPECT_EQ(text(model, 2, 1, Qt::ToolTipRole), "2026 秋日旅拍/B机 Day 1");
    EXPECT_EQ(text(model, 2, 2), "1.36 GB");
    EXPECT_EQ(text(model, 2, 2, Qt::ToolTipRole), "2026 秋日旅拍/B机 Day 1");
    EXPECT_EQ(text(model, 2, 0, Qt::AccessibleTextRole),
              "B002_C0004_山路跟拍.MP4，视频 · MP4，2026 秋日旅拍/B机 Day 1，1.36 GB，已收藏");
}

TEST(AssetTableModel, ToolTipsShowSignsOfMarkupAsTheyAre) {
    AssetTableModel model;
    model.setRows(rowsOf({assetAt("/r", "<b>a</b>/<i>b.wav")}));
    const auto shown = [&model](int column) {
        const QString tip = text(model, 0, column, Qt::ToolTipRole);
        return Qt::mightBeRichText(tip) ? QTextDocumentFragment::fromHtml(tip).toPlainText() : tip;
    };
    EXPECT_EQ(shown(0), "/r/<b>a</b>/<i>b.wav");
    EXPECT_EQ(shown(1), "<b>a</b>");
    EXPECT_EQ(shown(2), "<b>a</b>");
}

TEST(AssetTableModel, OnlyAudioIsTintedInTheAccent) {
    AssetTableModel model;
    model.setRows(rowsOf(sampleAssets()));
    const struct {
        int row;
        const char* symbol;
        bool audio;
    } rows[] = {{0, "film", false}, {4, "photo", false}, {6, "waveform", true}, {12, "doc", false}};
    for (const auto& row : rows) {
        EXPECT_EQ(text(model, row.row, 0, AssetTableModel::SymbolRole), row.symbol);
        EXPECT_EQ(model.data(model.index(row.row, 0), AssetTableModel::AudioRole).toBool(), row.audio);
    }
}

TEST(AssetTableModel, ColumnsAreNamedAndTitled) {
    const AssetTableModel model;
    const struct {
        const char* identifier;
        const char* title;
    } columns[] = {{"name", "素材名称"}, {"folder", "分类"}, {"size", "大小"}};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(model.headerData(i, Qt::Horizontal, AssetTableModel::IdentifierRole).toString(),
                  columns[i].identifier);
        EXPECT_EQ(model.headerData(i, Qt::Horizontal, Qt::DisplayRole).toString(), columns[i].title);
    }
}

TEST(AssetTableModel, AStarGoesWithItsFavourite) {
    AssetTableModel model;
    bool favorite = true;
    model.setFavoriteTest([&](const std::string&) { return favorite; });
    model.setRows(rowsOf({assetAt("/r", "a.wav")}));
    EXPECT_EQ(text(model, 0, 0), "★ a.wav");
    favorite = false;
    EXPECT_EQ(text(model, 0, 0), "a.wav");
}

TEST(AssetTableModel, RowsAreASelectionOfTheList) {
    AssetTableModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    FilterResult some = rowsOf(sampleAssets());
    some.rows = {6, 2, 9};
    model.setRows(some);
    EXPECT_EQ(model.rowCount(), 3);
    EXPECT_EQ(text(model, 0, 0), "Take 2_溪流近景.WAV");
    EXPECT_EQ(model.rowOfPath(sampleAssets()[2].path), 1);
    EXPECT_EQ(model.rowOfPath(sampleAssets()[0].path), -1);
    EXPECT_EQ(model.rowOfPath("/nowhere"), -1);
    model.setRows({});
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.rowOfPath(sampleAssets()[2].path), -1);
}

TEST(AssetTableModel, TypingFindsTheNextNameThatBeginsSo) {
    AssetTableModel model;
    model.setFavoriteTest([](const std::string&) { return true; });
    model.setRows(rowsOf({assetAt("/r", "alpha.wav"), assetAt("/r", "Beta.mov"), assetAt("/r", "素材1.mov"),
                          assetAt("/r", "beta2.mov")}));
    EXPECT_EQ(model.rowBeginningWith("b", 0), 1);
    EXPECT_EQ(model.rowBeginningWith("be", 2), 3);
    EXPECT_EQ(model.rowBeginningWith("B", 4), 1);
    EXPECT_EQ(model.rowBeginningWith("素材", 0), 2);
    EXPECT_EQ(model.rowBeginningWith("z", 0), -1);
    EXPECT_EQ(model.rowBeginningWith("", 0), -1);
}

TEST(AssetTableModel, AMillionRowsCostNothingPerRow) {
    AssetList::Builder builder;
    constexpr std::uint32_t count = 1'000'000;
    builder.reserve(count, std::size_t{count} * 24);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::string relative = "d" + std::to_string(i / 50) + "/clip" + std::to_string(i) + ".mov";
        builder.add("/r/" + relative, "/r", relative, i, 1);
    }
    FilterResult all;
    all.assets = builder.finish();
    all.rows.resize(count);
    std::iota(all.rows.begin(), all.rows.end(), 0U);
    const long uses = all.assets.use_count();
    AssetTableModel model;
    model.setRows(all);
    EXPECT_EQ(all.assets.use_count(), uses + 1) << "the list itself is shared, not copied";
    EXPECT_EQ(model.rowCount(), 1'000'000);
    EXPECT_EQ(text(model, 999'999, 0), "clip999999.mov");
    EXPECT_EQ(text(model, 999'999, 1), "d19999");
    EXPECT_EQ(model.rowOfPath("/r/d19999/clip999999.mov"), 999'999);
}

}  // namespace
}  // namespace morvane::test
