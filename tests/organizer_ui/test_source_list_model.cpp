#include "organizer_ui/source_list_model.h"

#include <unistd.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/test_support.h"

namespace morvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<FileUrl> files(const std::vector<std::string>& paths) {
    std::vector<FileUrl> urls;
    for (const std::string& path : paths)
        urls.push_back(fileLocation(path));
    return urls;
}

std::vector<std::string> paths(const std::vector<FileUrl>& urls) {
    std::vector<std::string> result;
    for (const FileUrl& url : urls)
        result.push_back(url.path);
    return result;
}

TEST(NewSources, KeepsOrderAndDropsWhatIsThere) {
    EXPECT_THAT(paths(newSources(files({"/a"}), files({"/c", "/a", "/b", "/c"}))), ElementsAre("/c", "/b"));
}

TEST(NewSources, ComparesStandardizedPaths) {
    const std::vector<FileUrl> present = {*parseUrl("file:///cards/A/")};
    EXPECT_THAT(newSources(present, {*parseUrl("file:///cards/A"), *parseUrl("file:///cards/./A/"),
                                     *parseUrl("file:///cards/B/../A"), fileLocation("/cards//A")}),
                IsEmpty());
    EXPECT_THAT(paths(newSources({}, {fileLocation("/cards/x/../B/")})), ElementsAre("/cards/B"));
    EXPECT_THAT(paths(newSources(present, files({"/cards/a", "/cards/A/x"}))),
                ElementsAre("/cards/a", "/cards/A/x"));
}

TEST(NewSources, KeepsBytesThatAreNoText) {
    const std::string path = "/cards/\xff\xfe";
    EXPECT_THAT(paths(newSources({}, files({path, path}))), ElementsAre(path));
}

TEST(SourceListModel, KeepsTheRulesOfModels) {
    SourceListModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    EXPECT_EQ(model.append(files({"/m/A", "/m/B", "/m/A"})).size(), 2u);
    EXPECT_TRUE(model.append(files({"/m/B"})).empty());
    EXPECT_EQ(model.rowCount(), 2);
    model.remove({0});
    EXPECT_THAT(paths(model.sources()), ElementsAre("/m/B"));
}

TEST(SourceListModel, RemovesExactlyTheGivenRows) {
    SourceListModel model;
    model.append(files({"/1", "/2", "/3", "/4"}));
    model.remove({0, 2});
    EXPECT_THAT(paths(model.sources()), ElementsAre("/2", "/4"));
    model.remove({7, -1, 1, 1});
    EXPECT_THAT(paths(model.sources()), ElementsAre("/2"));
}

TEST(SourceListModel, TakesTenThousandAtOnce) {
    std::vector<FileUrl> many;
    for (int i = 0; i < 10'000; ++i)
        many.push_back(fileLocation("/cards/" + std::to_string(i)));
    SourceListModel model;
    EXPECT_EQ(model.append(many).size(), 10'000u);
    EXPECT_TRUE(model.append(many).empty());
}

TEST(SourceListModel, ShowsWhatWasFound) {
    SourceListModel model;
    model.append(files({"/m/CARD", "/m/夹", "/m/a.mov", "/m/gone"}));
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    model.setKinds({{"/m/CARD", SourceKind::cameraCard},
                    {"/m/夹", SourceKind::folder},
                    {"/m/a.mov", SourceKind::file},
                    {"/m/gone", SourceKind::missing},
                    {"/m/removed meanwhile", SourceKind::file}});
    EXPECT_EQ(changes.count(), 4);
    const auto symbol = [&model](int row) {
        return model.index(row).data(SourceListModel::SymbolRole).toString().toStdString();
    };
    EXPECT_EQ(symbol(0), "sdcard");
    EXPECT_EQ(symbol(1), "folder");
    EXPECT_EQ(symbol(2), "doc");
    EXPECT_EQ(symbol(3), "exclamationmark.triangle");
    EXPECT_TRUE(model.index(3).data(SourceListModel::MissingRole).toBool());
    EXPECT_EQ(model.index(3).data(SourceListModel::PathRole).toString(), QStringLiteral("找不到 · /m"));
    EXPECT_EQ(model.index(1).data(Qt::DisplayRole).toString(), QStringLiteral("夹"));
    EXPECT_EQ(model.index(1).data(SourceListModel::PathRole).toString(), QStringLiteral("/m"));
    EXPECT_EQ(model.index(1).data(Qt::ToolTipRole).toString(), QStringLiteral("/m/夹"));
}

TEST(FindSourceKind, LooksAtTheDisk) {
    const test::TemporaryFolder folder;
    test::makeTree(folder.path(),
                   {{"CARD/PRIVATE/x", ""}, {"DCIM only/DCIM/", ""}, {"AVCHD/", ""}, {"a.mov", "x"}});
    ASSERT_EQ(::symlink((folder / "CARD").c_str(), (folder / "link").c_str()), 0);
    const auto kind = [&folder](const char* name) { return findSourceKind(fileLocation(folder / name)); };
    EXPECT_EQ(kind("CARD"), SourceKind::cameraCard);
    EXPECT_EQ(kind("AVCHD"), SourceKind::cameraCard);
    EXPECT_EQ(kind("DCIM only"), SourceKind::folder);
    EXPECT_EQ(kind("a.mov"), SourceKind::file);
    EXPECT_EQ(kind("none"), SourceKind::missing);
    EXPECT_EQ(kind("link"), SourceKind::folder) << "links are not looked into";
    EXPECT_EQ(findSourceKind(*parseUrl("https://example.org/a.mov")), SourceKind::notLocal);
}

}  // namespace
}  // namespace morvane
