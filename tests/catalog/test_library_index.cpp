#include "catalog/library_index.h"

#include <filesystem>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalog/sqlite.h"
#include "tests/catalog/catalog_fixture.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using namespace morvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

struct DecisionCase {
    std::optional<bool> pending;
    bool hasRoots;
    std::size_t assets;
    AfterLoad wanted;
};

class Decision : public testing::TestWithParam<DecisionCase> {};

TEST_P(Decision, AfterTheLoad) {
    Settings settings;
    settings.pendingRefresh = GetParam().pending;
    if (GetParam().hasRoots)
        settings.roots = {"/r"};
    EXPECT_EQ(decideAfterLoad(settings, GetParam().assets), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(States, Decision,
                         testing::Values(DecisionCase{std::nullopt, false, 0, AfterLoad::AskForFolder},
                                         DecisionCase{std::nullopt, false, 5, AfterLoad::AskForFolder},
                                         DecisionCase{std::nullopt, true, 0, AfterLoad::Refresh},
                                         DecisionCase{std::nullopt, true, 5, AfterLoad::Nothing},
                                         DecisionCase{false, true, 5, AfterLoad::Nothing},
                                         DecisionCase{true, true, 5, AfterLoad::Refresh},
                                         DecisionCase{true, true, 0, AfterLoad::Refresh},
                                         DecisionCase{true, false, 0, AfterLoad::Refresh}));

class Index : public testing::Test {
protected:
    Index() { remake(); }

    void remake() {
        index_.reset();
        index_ = std::make_unique<LibraryIndex>(settings_, store_.path());
        QObject::connect(index_.get(), &LibraryIndex::loaded, [this] { ++loads_; });
        QObject::connect(index_.get(), &LibraryIndex::refreshStarted, [this] { ++starts_; });
        QObject::connect(index_.get(), &LibraryIndex::progress,
                         [this](const std::string& text) { progress_.push_back(text); });
        QObject::connect(index_.get(), &LibraryIndex::refreshFinished, [this](const RefreshReport& report) {
            reports_.push_back(report);
            summaries_.push_back(index_->scanSummary());
        });
        QObject::connect(index_.get(), &LibraryIndex::renamed,
                         [this](const RenameReport& report) { renames_.push_back(report); });
        QObject::connect(index_.get(), &LibraryIndex::renameSaved,
                         [this](bool saved) { saves_.push_back(saved); });
    }
    bool load() {
        const int before = loads_;
        index_->load();
        return waitUntil([&] { return loads_ > before; });
    }
    bool refresh() {
        const std::size_t before = reports_.size();
        index_->refresh();
        return waitUntil([&] { return reports_.size() > before; });
    }
    std::vector<std::string> relatives() const { return relativesOf(*index_->assets()); }
    // A folder in the catalog's place cannot be opened as one, whoever runs the test.
    void takeCatalogAway() const {
        fs::rename(store_ / "catalog.sqlite", store_ / "away");
        fs::create_directory(store_ / "catalog.sqlite");
    }
    void bringCatalogBack() const {
        fs::remove(store_ / "catalog.sqlite");
        fs::rename(store_ / "away", store_ / "catalog.sqlite");
    }
    /// A catalog with a file of each of two folders, of which "Drive" is offline since.
    void makeHalfOfflineLibrary() {
        writeFile(media_ / "Drive/kept.mov", "");
        writeFile(media_ / "here/1.mov", "");
        settings_.roots = {media_ / "Drive", media_ / "here"};
        ASSERT_TRUE(refresh());
        fs::rename(media_ / "Drive", media_ / "unplugged");
        remake();
    }
    void makeNewerCatalog() const { Connection(store_ / "catalog.sqlite").execute("PRAGMA user_version=2"); }

    TemporaryFolder store_;
    TemporaryFolder media_;
    Settings settings_;
    std::unique_ptr<LibraryIndex> index_;
    int loads_ = 0;
    int starts_ = 0;
    std::vector<std::string> progress_;
    std::vector<RefreshReport> reports_;
    std::vector<std::string> summaries_;
    std::vector<RenameReport> renames_;
    std::vector<bool> saves_;
};

TEST_F(Index, BeginsEmpty) {
    EXPECT_EQ(index_->assets()->size(), 0U);
    EXPECT_EQ(index_->keys()->size(), 0U);
    EXPECT_FALSE(index_->scanning());
    EXPECT_FALSE(index_->pendingScan());
    EXPECT_EQ(index_->scanSummary(), "");
    EXPECT_FALSE(index_->catalogRecovery());
    EXPECT_EQ(index_->catalog().directory(), store_.path());
    EXPECT_THAT(listTree(store_.path()), IsEmpty());
}

TEST_F(Index, LoadsAnEmptyLibraryOnTheFirstStart) {
    ASSERT_TRUE(load());
    EXPECT_EQ(index_->scanSummary(), "0 个素材文件夹 · 0 个素材");
    EXPECT_FALSE(index_->catalogRecovery());
    EXPECT_EQ(decideAfterLoad(settings_, index_->assets()->size()), AfterLoad::AskForFolder);
}

TEST_F(Index, ARefreshIsThereAgainAtTheNextLoad) {
    makeTree(media_.path(), {{"a/Take 10.wav", ""}, {"a/Take 2.wav", ""}});
    settings_.roots = {media_.path()};
    ASSERT_TRUE(refresh());
    EXPECT_EQ(starts_, 1);
    EXPECT_TRUE(reports_[0].saved);
    EXPECT_FALSE(reports_[0].followUp);
    EXPECT_FALSE(index_->scanning());
    EXPECT_EQ(index_->scanSummary(), "1 个素材文件夹 · 2 个素材");
    EXPECT_EQ(index_->keys()->size(), 2U);
    remake();
    ASSERT_TRUE(load());
    EXPECT_THAT(relatives(), ElementsAre("a/Take 2.wav", "a/Take 10.wav"));
    EXPECT_EQ(index_->scanSummary(), "1 个素材文件夹 · 2 个素材");
    EXPECT_TRUE(index_->catalog().isSynchronized());
}

TEST_F(Index, TwoQuickRefreshesMakeExactlyOneMoreWalk) {
    writeFile(media_ / "1.mov", "");
    settings_.roots = {media_.path()};
    QObject::connect(index_.get(), &LibraryIndex::refreshFinished, [this](const RefreshReport& report) {
        if (report.followUp)
            index_->refresh();
    });
    index_->refresh();
    EXPECT_TRUE(index_->scanning());
    index_->refresh();
    index_->refresh();
    EXPECT_TRUE(index_->pendingScan());
    ASSERT_TRUE(waitUntil([this] { return !index_->scanning() && reports_.size() >= 2; }));
    EXPECT_EQ(starts_, 2);
    EXPECT_EQ(reports_.size(), 2U);
    EXPECT_TRUE(reports_[0].followUp);
    EXPECT_FALSE(reports_[1].followUp);
    EXPECT_FALSE(index_->pendingScan());
}

TEST_F(Index, FoldersChangedMeanwhileAskForAFollowUp) {
    writeFile(media_ / "a/1.mov", "");
    writeFile(media_ / "b/2.mov", "");
    settings_.roots = {media_ / "a"};
    index_->refresh();
    settings_.roots = {media_ / "b"};
    ASSERT_TRUE(waitUntil([this] { return !reports_.empty(); }));
    EXPECT_TRUE(reports_[0].followUp);
    EXPECT_FALSE(index_->pendingScan());
    EXPECT_THAT(relatives(), ElementsAre("1.mov")) << "the folders as they were at the start";
    EXPECT_EQ(summaries_[0], "1 个素材文件夹 · 1 个素材");
    ASSERT_TRUE(refresh());
    EXPECT_FALSE(reports_[1].followUp);
    EXPECT_THAT(relatives(), ElementsAre("2.mov"));
}

TEST_F(Index, AnOfflineFolderKeepsItsAssets) {
    writeFile(media_ / "Drive/1.mov", "");
    settings_.roots = {media_ / "Drive"};
    ASSERT_TRUE(refresh());
    fs::rename(media_ / "Drive", media_ / "unplugged");
    ASSERT_TRUE(refresh());
    EXPECT_THAT(relatives(), ElementsAre("1.mov"));
    EXPECT_THAT(reports_[1].offline, ElementsAre("Drive"));
    EXPECT_EQ(index_->scanSummary(), "离线：Drive · 已保留索引，连接硬盘后刷新");
}

TEST_F(Index, AnOfflineFolderKeepsItsAssetsAfterALoadThatFailed) {
    makeHalfOfflineLibrary();
    takeCatalogAway();
    ASSERT_TRUE(load());
    EXPECT_TRUE(index_->catalogRecovery());
    EXPECT_THAT(relatives(), IsEmpty());
    bringCatalogBack();
    writeFile(media_ / "here/2.mov", "");
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(reports_.back().saved);
    EXPECT_FALSE(index_->catalogRecovery());
    EXPECT_THAT(relatives(), ElementsAre("1.mov", "2.mov", "kept.mov"));
    EXPECT_EQ(index_->keys()->size(), 3U);
    EXPECT_EQ(index_->scanSummary(), "离线：Drive · 已保留索引，连接硬盘后刷新");
    remake();
    ASSERT_TRUE(load());
    EXPECT_THAT(relatives(), ElementsAre("1.mov", "2.mov", "kept.mov"));
}

TEST_F(Index, NothingIsSavedWhileTheRowsOfAnOfflineFolderCannotBeRead) {
    makeHalfOfflineLibrary();
    takeCatalogAway();
    writeFile(store_ / "index.json",
              encodeAssets(*listOf({assetBelow(media_ / "Drive", "old copy.mov")})).dump());
    ASSERT_TRUE(load());
    ASSERT_TRUE(refresh());
    EXPECT_FALSE(reports_.back().saved);
    EXPECT_TRUE(index_->catalogRecovery());
    EXPECT_THAT(relatives(), ElementsAre("1.mov", "old copy.mov")) << "in memory until the program ends";
    EXPECT_EQ(index_->scanSummary(),
              "离线：Drive · 已保留索引，连接硬盘后刷新 · 索引保存失败，本次使用内存结果，请刷新重试");
    bringCatalogBack();
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(reports_.back().saved);
    EXPECT_THAT(relatives(), ElementsAre("1.mov", "kept.mov")) << "the catalog's rows, not the old copy's";
}

TEST_F(Index, AFailedLoadNeedsNoCatalogWhereNoFolderIsOffline) {
    makeHalfOfflineLibrary();
    fs::rename(media_ / "unplugged", media_ / "Drive");
    takeCatalogAway();
    ASSERT_TRUE(load());
    ASSERT_TRUE(refresh());
    EXPECT_FALSE(reports_.back().saved);
    EXPECT_THAT(relatives(), ElementsAre("1.mov", "kept.mov"));
    fs::rename(media_ / "Drive", media_ / "unplugged");
    ASSERT_TRUE(refresh());
    EXPECT_THAT(relatives(), ElementsAre("1.mov", "kept.mov")) << "kept from the whole walk before";
}

TEST_F(Index, TellsProgressBeforeTheEnd) {
    for (int number = 0; number < 4100; ++number)
        writeFile(media_ / (std::to_string(number % 40) + "/" + std::to_string(number) + ".mov"), "");
    settings_.roots = {media_.path()};
    std::size_t toldBeforeEnd = 0;
    QObject::connect(index_.get(), &LibraryIndex::refreshFinished,
                     [&](const RefreshReport&) { toldBeforeEnd = progress_.size(); });
    ASSERT_TRUE(refresh());
    EXPECT_THAT(progress_,
                ElementsAre("正在建立索引…已找到 2,000 个素材", "正在建立索引…已找到 4,000 个素材"));
    EXPECT_EQ(toldBeforeEnd, 2U);
}

TEST_F(Index, RecoveryShowsTheOlderIndexAndEndsWithASave) {
    makeNewerCatalog();
    writeFile(store_ / "index.json", encodeAssets(*listOf({assetBelow("/r", "old.mov")})).dump());
    settings_.roots = {media_.path()};
    writeFile(media_ / "new.mov", "");
    ASSERT_TRUE(load());
    EXPECT_TRUE(index_->catalogRecovery());
    EXPECT_THAT(relatives(), ElementsAre("old.mov"));
    EXPECT_EQ(index_->scanSummary(), "1 个素材文件夹 · 1 个素材 · 索引恢复模式，旧副本已保留");

    ASSERT_TRUE(refresh());
    EXPECT_FALSE(reports_[0].saved);
    EXPECT_TRUE(index_->catalogRecovery());
    EXPECT_THAT(relatives(), ElementsAre("new.mov")) << "in memory until the program ends";
    EXPECT_EQ(index_->scanSummary(),
              "1 个素材文件夹 · 1 个素材 · 索引保存失败，本次使用内存结果，请刷新重试");

    fs::remove(store_ / "catalog.sqlite");
    fs::remove(store_ / "index.json");
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(reports_[1].saved);
    EXPECT_FALSE(index_->catalogRecovery());
    EXPECT_EQ(index_->scanSummary(), "1 个素材文件夹 · 1 个素材");
}

TEST_F(Index, GoesWhileAWalkRuns) {
    for (int number = 0; number < 3000; ++number)
        writeFile(media_ / (std::to_string(number % 300) + "/" + std::to_string(number) + ".mov"), "");
    settings_.roots = {media_.path()};
    index_->refresh();
    index_.reset();
    QCoreApplication::processEvents();
    EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(Index, ARefreshAskedForDuringTheLoadStartsWithTheLoadedList) {
    writeFile(media_ / "Drive/1.mov", "");
    settings_.roots = {media_ / "Drive"};
    ASSERT_TRUE(refresh());
    fs::rename(media_ / "Drive", media_ / "unplugged");
    remake();
    index_->load();
    index_->refresh();
    EXPECT_FALSE(index_->scanning());
    EXPECT_TRUE(index_->pendingScan());
    ASSERT_TRUE(waitUntil([this] { return reports_.size() == 2; }));
    EXPECT_EQ(loads_, 1);
    EXPECT_FALSE(reports_[1].followUp);
    EXPECT_THAT(relatives(), ElementsAre("1.mov")) << "the offline folder keeps what the catalog held";
}

TEST_F(Index, TheDecisionAfterTheLoadTakesTheWaitingRefresh) {
    settings_.roots = {media_.path()};
    QObject::connect(index_.get(), &LibraryIndex::loaded, [this] { index_->refresh(); });
    index_->load();
    index_->refresh();
    ASSERT_TRUE(waitUntil([this] { return !reports_.empty(); }));
    EXPECT_FALSE(reports_[0].followUp) << "one walk, not two";
    EXPECT_EQ(starts_, 1);
}

TEST_F(Index, AStoppedRefreshOfTheCommandLineChangesNothing) {
    writeFile(media_ / "1.mov", "");
    CatalogRepository catalog(store_.path());
    ScanRequest request;
    request.roots = {media_.path()};
    refreshLibrary(catalog, request);
    writeFile(media_ / "2.mov", "");
    std::stop_source stop;
    stop.request_stop();
    request.stop = stop.get_token();
    EXPECT_THROW(refreshLibrary(catalog, request), ScanStopped);
    EXPECT_EQ(catalog.load().assets->size(), 1U);
}

TEST_F(Index, RefreshesSynchronouslyForTheCommandLine) {
    writeFile(media_ / "1.mov", "");
    CatalogRepository catalog(store_.path());
    ScanRequest request;
    request.roots = {media_.path(), media_ / "absent"};
    const RefreshedLibrary library = refreshLibrary(catalog, request);
    EXPECT_EQ(library.notice, "");
    EXPECT_THAT(relativesOf(*library.scan.assets), ElementsAre("1.mov"));
    EXPECT_EQ(library.keys->size(), 1U);
    EXPECT_THAT(library.scan.offline, ElementsAre("absent"));
    EXPECT_EQ(CatalogRepository(store_.path()).load().assets->size(), 1U);
}

// --- renaming

TEST_F(Index, ARenamedFileIsFollowedByListAndCatalog) {
    makeTree(media_.path(), {{"1.mov", ""}, {"2.mov", ""}});
    settings_.roots = {media_.path()};
    ASSERT_TRUE(refresh());
    ASSERT_TRUE(index_->rename(index_->assets()->asset(0), "9"));
    EXPECT_TRUE(index_->renaming());
    EXPECT_FALSE(index_->canRename());
    EXPECT_FALSE(index_->rename(index_->assets()->asset(1), "8")) << "one at a time";
    ASSERT_TRUE(waitUntil([this] { return saves_.size() == 1; }));
    ASSERT_EQ(renames_.size(), 1U);
    EXPECT_EQ(renames_[0].error, "");
    EXPECT_EQ(renames_[0].oldPath, media_ / "1.mov");
    EXPECT_EQ(renames_[0].asset.path, media_ / "9.mov");
    EXPECT_TRUE(saves_[0]);
    EXPECT_THAT(relatives(), ElementsAre("2.mov", "9.mov"));
    EXPECT_THAT(listTree(media_.path()), ElementsAre("2.mov", "9.mov"));
    remake();
    ASSERT_TRUE(load());
    EXPECT_THAT(relatives(), ElementsAre("2.mov", "9.mov"));
}

TEST_F(Index, AFailedRenameLeavesEverything) {
    makeTree(media_.path(), {{"1.mov", ""}, {"2.mov", ""}});
    settings_.roots = {media_.path()};
    ASSERT_TRUE(refresh());
    const SharedAssets before = index_->assets();
    ASSERT_TRUE(index_->rename(before->asset(0), "2"));
    ASSERT_TRUE(waitUntil([this] { return !renames_.empty(); }));
    EXPECT_EQ(renames_[0].error, "同一文件夹内已存在该名称，请换一个名称；不会覆盖已有文件。");
    EXPECT_EQ(renames_[0].asset.path, media_ / "1.mov");
    EXPECT_EQ(index_->assets(), before);
    EXPECT_THAT(saves_, IsEmpty());
    fs::remove(media_ / "1.mov");
    ASSERT_TRUE(index_->rename(before->asset(0), "3"));
    ASSERT_TRUE(waitUntil([this] { return renames_.size() == 2; }));
    EXPECT_EQ(renames_[1].error, "No such file or directory");
}

TEST_F(Index, ARenameWhoseListCannotBeSavedSaysSo) {
    writeFile(media_ / "1.mov", "");
    settings_.roots = {media_.path()};
    ASSERT_TRUE(refresh());
    Connection(store_ / "catalog.sqlite").execute("DROP TABLE assets");
    ASSERT_TRUE(index_->rename(index_->assets()->asset(0), "2"));
    ASSERT_TRUE(waitUntil([this] { return !saves_.empty(); }));
    EXPECT_FALSE(saves_[0]);
    EXPECT_THAT(relatives(), ElementsAre("2.mov"));
    EXPECT_THAT(listTree(media_.path()), ElementsAre("2.mov"));
}

TEST_F(Index, ARenameAfterALoadThatFailedLeavesTheCatalog) {
    makeHalfOfflineLibrary();
    takeCatalogAway();
    writeFile(store_ / "index.json", encodeAssets(*listOf({assetBelow(media_ / "here", "1.mov")})).dump());
    ASSERT_TRUE(load());
    bringCatalogBack();
    ASSERT_TRUE(index_->rename(index_->assets()->asset(0), "2"));
    ASSERT_TRUE(waitUntil([this] { return !saves_.empty(); }));
    EXPECT_FALSE(saves_[0]);
    EXPECT_THAT(relatives(), ElementsAre("2.mov"));
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(reports_.back().saved);
    EXPECT_THAT(relatives(), ElementsAre("2.mov", "kept.mov"));
}

TEST_F(Index, NoRenameWhileARefreshRunsAndNoRefreshWhileARenameRuns) {
    writeFile(media_ / "1.mov", "");
    settings_.roots = {media_.path()};
    ASSERT_TRUE(refresh());
    ASSERT_TRUE(index_->rename(index_->assets()->asset(0), "2"));
    index_->refresh();
    EXPECT_FALSE(index_->scanning());
    EXPECT_TRUE(index_->pendingScan());
    ASSERT_TRUE(waitUntil([this] { return !renames_.empty(); }));
    EXPECT_TRUE(index_->scanning()) << "it starts as soon as the rename is done";
    EXPECT_FALSE(index_->rename(index_->assets()->asset(0), "3"));
    ASSERT_TRUE(waitUntil([this] { return reports_.size() == 2; }));
    EXPECT_FALSE(reports_[1].followUp);
    EXPECT_THAT(relatives(), ElementsAre("2.mov"));
}

}  // namespace
}  // namespace morvane
