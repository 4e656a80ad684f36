#include "library_ui/thumbnail_loader.h"

#include "tests/media_maker.h"
#include "tests/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <utility>

namespace morvane::test {
namespace {

/// What the loader reported, in order.
struct Reports {
    explicit Reports(ThumbnailLoader& loader) {
        QObject::connect(&loader, &ThumbnailLoader::finished,
                         [this](const Asset& asset, const QImage& picture) {
                             list.emplace_back(asset.relative, picture);
                         });
    }
    std::vector<std::pair<std::string, QImage>> list;
};

/// Whether any process has the file open.
bool isOpenSomewhere(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    for (const auto& process : fs::directory_iterator("/proc", ignored)) {
        for (fs::directory_iterator each(process.path() / "fd", ignored), end; each != end;
             each.increment(ignored)) {
            if (fs::read_symlink(each->path(), ignored) == path)
                return true;
        }
    }
    return false;
}

testing::AssertionResult isPlain(const QImage& picture, const QColor& colour) {
    const QColor found = picture.pixelColor(picture.width() / 2, picture.height() / 2);
    const int off = std::max({std::abs(found.red() - colour.red()), std::abs(found.green() - colour.green()),
                              std::abs(found.blue() - colour.blue())});
    return off <= 4 ? testing::AssertionSuccess() : testing::AssertionFailure() << found.name().toStdString();
}

class Thumbnails : public testing::Test {
protected:
    /// A plain picture of `colour`.
    Asset make(const std::string& name, const std::string& colour = "red",
               const std::string& size = "400x300") {
        ffmpeg({"-f", "lavfi", "-i", "color=" + colour + ":size=" + size, "-frames:v", "1", folder_ / name});
        return asset(name);
    }
    Asset asset(const std::string& name, double modified = 1) const {
        return {.path = folder_ / name,
                .root = folder_.path(),
                .relative = name,
                .size = 1,
                .modified = modified};
    }
    const TemporaryFolder folder_;
};

TEST_F(Thumbnails, TheKeyHoldsPathAndTime) {
    EXPECT_EQ(
        ThumbnailLoader::keyOf({.path = "/r/a.png", .root = "/r", .relative = "a.png", .modified = 1.5}),
        "/r/a.png|1.5");
    EXPECT_NE(ThumbnailLoader::keyOf(asset("a.png", 1700000000.001)),
              ThumbnailLoader::keyOf(asset("a.png", 1700000000.002)));
}

TEST_F(Thumbnails, AreReportedOnceAndCached) {
    ThumbnailLoader loader;
    const Reports reports(loader);
    EXPECT_EQ(loader.thumbnailQueue().label(), "com.morvane.library.thumbnails");
    EXPECT_EQ(loader.costLimit(), 67'108'864);
    const Asset wide = make("wide.png", "red", "2400x1200");
    EXPECT_TRUE(loader.cached(wide).isNull());
    loader.request(wide);
    EXPECT_TRUE(reports.list.empty()) << "never from inside the call";
    ASSERT_TRUE(waitUntil([&] { return reports.list.size() == 1; }));
    EXPECT_EQ(reports.list[0].second.size(), QSize(1200, 600));
    EXPECT_TRUE(isPlain(reports.list[0].second, Qt::red));
    EXPECT_EQ(loader.cached(wide).size(), QSize(1200, 600));
}

TEST_F(Thumbnails, AChangedFileHasAnotherPicture) {
    ThumbnailLoader loader;
    const Reports reports(loader);
    const Asset before = make("a.png", "red");
    loader.request(before);
    ASSERT_TRUE(waitUntil([&] { return reports.list.size() == 1; }));
    make("a.png", "blue");
    const Asset after = asset("a.png", 2);
    EXPECT_TRUE(loader.cached(after).isNull());
    loader.request(after);
    ASSERT_TRUE(waitUntil([&] { return reports.list.size() == 2; }));
    EXPECT_TRUE(isPlain(reports.list[1].second, Qt::blue));
}

TEST_F(Thumbnails, WhatCannotBeDecodedIsANullPicture) {
    ThumbnailLoader loader;
    const Reports reports(loader);
    writeFile(folder_ / "broken.jpg", "this is no picture");
    loader.request(asset("broken.jpg"));
    ASSERT_TRUE(waitUntil([&] { return reports.list.size() == 1; }));
    EXPECT_TRUE(reports.list[0].second.isNull());
    loader.request(asset("gone.jpg"));
    ASSERT_TRUE(waitUntil([&] { return reports.list.size() == 2; }));
    EXPECT_TRUE(reports.list[1].second.isNull());
    loader.request(make("fine.jpg"));
    ASSERT_TRUE(waitUntil([&] { return reports.list.size() == 3; }));
    EXPECT_FALSE(reports.list[2].second.isNull());
}

TEST_F(Thumbnails, OfTwoHundredFastSelectionsTheLastAloneIsReported) {
    ThumbnailLoader loader;
    const Reports reports(loader);
    make("picture.png");
    std::vector<Asset> assets;
    for (int i = 0; i < 200; ++i) {
        const std::string name = std::to_string(i) + ".png";
        std::filesystem::copy_file(folder_ / "picture.png", folder_ / name);
        assets.push_back(asset(name));
    }
    for (const Asset& each : assets) {
        loader.request(each);
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(waitUntil([&] { return !reports.list.empty() && reports.list.back().first == "199.png"; }));
    int made = 0;
    for (const Asset& each : assets)
        made += loader.cached(each).isNull() ? 0 : 1;
    EXPECT_LT(made, 200) << "what was passed over quickly is not decoded";
    // Every report was of the picture wanted at that time: none is reported twice.
    for (std::size_t i = 1; i < reports.list.size(); ++i)
        EXPECT_LT(std::stoi(reports.list[i - 1].first), std::stoi(reports.list[i].first));
}

TEST_F(Thumbnails, ALatePictureIsCachedButNotReported) {
    ThumbnailLoader loader;
    const Reports reports(loader);
    const Asset first = make("first.png");
    const Asset late = make("late.png", "green", "3000x2000");
    loader.request(first);
    ASSERT_TRUE(waitUntil([&] { return reports.list.size() == 1; }));
    loader.request(late);
    ASSERT_TRUE(waitUntil([&] { return isOpenSomewhere(late.path); })) << "the helper has begun";
    loader.cancel();
    ASSERT_TRUE(waitUntil([&] { return !loader.cached(late).isNull(); }));
    EXPECT_EQ(reports.list.size(), 1U);
}

TEST_F(Thumbnails, TheCacheIsLimitedByDecodedBytes) {
    ThumbnailLoader loader;
    const Reports reports(loader);
    loader.setCostLimit(2 * 400 * 300 * 4);
    const std::vector<Asset> assets = {make("1.png"), make("2.png"), make("3.png")};
    for (std::size_t i = 0; i < assets.size(); ++i) {
        loader.request(assets[i]);
        ASSERT_TRUE(waitUntil([&] { return reports.list.size() == i + 1; }));
    }
    EXPECT_TRUE(loader.cached(assets[0]).isNull());
    EXPECT_FALSE(loader.cached(assets[1]).isNull());
    EXPECT_FALSE(loader.cached(assets[2]).isNull());
}

TEST_F(Thumbnails, NeighboursArePreparedWhileIdle) {
    ThumbnailLoader loader;
    const Reports reports(loader);
    const Asset shown = make("1.png");
    const Asset next = make("2.png");
    const Asset previous = make("0.png");
    Asset elsewhere = make("else.png");
    elsewhere.root = "/another/drive";
    writeFile(folder_ / "clip.mov", "not a picture");
    loader.request(shown);
    loader.prefetch(shown, {next, asset("clip.mov"), elsewhere, previous});
    ASSERT_TRUE(waitUntil([&] { return !loader.cached(previous).isNull(); }));
    EXPECT_FALSE(loader.cached(next).isNull());
    EXPECT_TRUE(loader.cached(elsewhere).isNull()) << "a drive that was not asked may not answer";
    EXPECT_EQ(reports.list.size(), 1U) << "what was prepared ahead is not reported";
}

TEST_F(Thumbnails, APicturePreparedAheadIsUnseenUntilItIsShown) {
    ThumbnailLoader loader;
    const Reports reports(loader);
    const Asset shown = make("1.png");
    const Asset next = make("2.png");
    EXPECT_EQ(loader.present(shown).cached, PictureCached::No);
    EXPECT_TRUE(loader.present(shown).image.isNull());
    loader.request(shown);
    loader.prefetch(shown, {next});
    ASSERT_TRUE(waitUntil([&] { return !loader.cached(next).isNull(); }));
    EXPECT_EQ(loader.present(shown).cached, PictureCached::Seen) << "it was reported";
    EXPECT_EQ(loader.present(next).cached, PictureCached::Unseen);
    const CachedPicture again = loader.present(next);
    EXPECT_EQ(again.cached, PictureCached::Seen);
    EXPECT_EQ(again.image.size(), loader.cached(next).size());
}

TEST_F(Thumbnails, PreparingAheadCanBeSwitchedOff) {
    ThumbnailLoader loader;
    const Reports reports(loader);
    const Asset shown = make("1.png");
    const Asset next = make("2.png");
    loader.setPrefetching(false);
    loader.prefetch(shown, {next});
    loader.request(shown);
    ASSERT_TRUE(waitUntil([&] { return reports.list.size() == 1; }));
    loader.prefetch(shown, {next});
    // Two more pictures take longer than the pause before preparing ahead would begin.
    for (const char* name : {"3.png", "4.png"}) {
        const std::size_t before = reports.list.size();
        loader.request(make(name, "red", "3000x3000"));
        ASSERT_TRUE(waitUntil([&] { return reports.list.size() > before; }));
    }
    EXPECT_TRUE(loader.cached(next).isNull());
}

TEST_F(Thumbnails, EndingDoesNotWaitForASlowPicture) {
    auto loader = std::make_unique<ThumbnailLoader>();
    loader->request(make("slow.png", "green", "9000x9000"));
    loader.reset();
    ThumbnailLoader next;
    const Reports reports(next);
    next.request(make("a.png"));
    EXPECT_TRUE(waitUntil([&] { return reports.list.size() == 1; }));
}

}  // namespace
}  // namespace morvane::test
