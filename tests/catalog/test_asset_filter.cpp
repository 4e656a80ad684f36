#include "catalog/asset_filter.h"

#include <algorithm>
#include <random>

#include <QElapsedTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/catalog/catalog_fixture.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using namespace morvane::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

FilterRequest requestFor(const SharedAssets& assets) {
    FilterRequest request;
    request.assets = assets;
    request.keys = keysOf(assets);
    return request;
}

std::vector<std::string> namesOf(const FilterResult& result) {
    std::vector<std::string> names;
    for (std::size_t index = 0; index < result.size(); ++index)
        names.emplace_back(result.at(index).name());
    return names;
}

std::vector<std::string> pathsOf(const FilterResult& result) {
    std::vector<std::string> paths;
    for (std::size_t index = 0; index < result.size(); ++index)
        paths.emplace_back(result.at(index).path);
    return paths;
}

class InMemory : public testing::Test {
protected:
    std::vector<std::string> names(FolderRule rule = FolderRule::Plain) const {
        return namesOf(filterInMemory(request_, rule));
    }

    FilterRequest request_ =
        requestFor(listOf({assetBelow("/m/A", "雨 夜.mov"), assetBelow("/m/A", "夜.wav"),
                           assetBelow("/m/A", "Café 50%_off.png"), assetBelow("/m/B", "x/ＦULL.cube"),
                           assetBelow("/m/A_C", "雨.pdf"), assetBelow("/m/a", "small.wav")}));
};

TEST_F(InMemory, EverythingIsInTheListsOrder) {
    EXPECT_THAT(names(), SizeIs(6));
    EXPECT_EQ(names().front(), "雨 夜.mov");
}

TEST_F(InMemory, EveryWordMustBeContained) {
    request_.words = searchWords("夜 雨");
    EXPECT_THAT(names(), ElementsAre("雨 夜.mov"));
    request_.words = searchWords("CAFE\u0301");
    EXPECT_THAT(names(), ElementsAre("Café 50%_off.png"));
    request_.words = searchWords("50%_");
    EXPECT_THAT(names(), ElementsAre("Café 50%_off.png"));
    request_.words = searchWords("f\uFF35ll.cube");
    EXPECT_THAT(names(), ElementsAre("ＦULL.cube"));
    request_.words = searchWords("   ");
    EXPECT_THAT(names(), SizeIs(6)) << "spaces alone are no word";
    request_.words = searchWords("夜 absent");
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(InMemory, AWordNeverMatchesAcrossTwoAssets) {
    request_.words = {"a夜"};  // one key ends with the folder's "a", the next begins with "夜"
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(InMemory, KindsAreTested) {
    request_.kind = MediaKind::Other;
    EXPECT_THAT(names(), ElementsAre("ＦULL.cube", "雨.pdf"));
    request_.words = {"雨"};
    EXPECT_THAT(names(), ElementsAre("雨.pdf"));
}

TEST_F(InMemory, FolderScopesFollowTheRule) {
    request_.scope = "/m/A";
    EXPECT_THAT(names(FolderRule::Plain), SizeIs(3));
    EXPECT_THAT(names(FolderRule::Catalog), SizeIs(4)) << "as LIKE, ASCII letters in either case";
    request_.scope = "/m/A/";
    EXPECT_THAT(names(FolderRule::Plain), IsEmpty()) << "deliberately not normalised";
    EXPECT_THAT(names(FolderRule::Catalog), SizeIs(4));
    request_.scope = "/";
    EXPECT_THAT(names(FolderRule::Plain), IsEmpty());
    EXPECT_THAT(names(FolderRule::Catalog), SizeIs(6));
    request_.scope = "/m/gone";
    EXPECT_THAT(names(FolderRule::Catalog), IsEmpty());
}

TEST_F(InMemory, FavoritesKeepTheOrderRecentHasItsOwn) {
    request_.favorites = {"/m/A_C/雨.pdf", "/m/A/夜.wav", "/gone"};
    request_.recent = {"/m/A_C/雨.pdf", "/gone", "/m/A/夜.wav", "/m/A_C/雨.pdf"};
    request_.scope = "favorites";
    EXPECT_THAT(names(), ElementsAre("夜.wav", "雨.pdf"));
    request_.scope = "recent";
    EXPECT_THAT(names(), ElementsAre("雨.pdf", "夜.wav"));
    request_.kind = MediaKind::Audio;
    EXPECT_THAT(names(), ElementsAre("夜.wav"));
    request_.kind = std::nullopt;
    request_.words = {"雨"};
    EXPECT_THAT(names(), ElementsAre("雨.pdf"));
}

TEST_F(InMemory, AnEmptyListGivesNothing) {
    request_ = requestFor(listOf({}));
    request_.words = {"x"};
    EXPECT_THAT(names(), IsEmpty());
    request_.words = {};
    EXPECT_THAT(names(), IsEmpty());
}

// --- the fast path against the catalog's own query

class Chance {
public:
    explicit Chance(unsigned seed) : engine_(seed) {}
    std::size_t below(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(engine_);
    }
    template <class Values>
    const auto& of(const Values& values) {
        return values[below(values.size())];
    }
    std::string text(std::size_t longest) {
        static const std::vector<std::string> pieces = {
            "a", "A",      "b", "e\u0301", "É",      "雨",     "夜",     "ｶ",  "カ", "Ｍ",
            "1", "10",     "%", "_",       "\\",     "'",      "\"",     " ",  "-",  "한",
            "🎬", "\u0301", "ß", "İ",       "\uFFFE", "\uFFFF", "\uFFFD", "\n", "ﬁ",  "K"};
        std::string made;
        for (std::size_t length = below(longest) + 1; length > 0; --length)
            made += of(pieces);
        return made;
    }

private:
    std::mt19937 engine_;
};

SharedAssets randomList(Chance& chance) {
    static const std::vector<std::string> roots = {"/m", "/M/", "/m/雨 É", "/m_x", "/"};
    static const std::vector<std::string> extensions = {".mov", ".WAV", ".png", ".zip", ""};
    AssetList::Builder builder;
    for (std::size_t number = chance.below(200) + 1; number > 0; --number) {
        const std::string& root = chance.of(roots);
        std::string relative;
        for (std::size_t depth = chance.below(3); depth > 0; --depth)
            relative += chance.text(3) + "/";
        relative += chance.text(5) + chance.of(extensions);
        builder.add(root + "/" + relative, root, relative, static_cast<std::int64_t>(chance.below(9)), 1);
    }
    return builder.finish();
}

std::string randomScope(Chance& chance, const AssetList& list) {
    switch (chance.below(6)) {
        case 0:
            return "all";
        case 1:
            return "favorites";
        case 2:
            return "recent";
        case 3:
            return chance.of(std::vector<std::string>{"/", "//", "/m", "/M", "/m/", "/m_x//", "/absent", ""});
        default: {
            const std::string path(list.path(chance.below(list.size())));
            return path.substr(0, path.rfind('/'));
        }
    }
}

TEST(FastPath, GivesExactlyWhatTheCatalogGives) {
    const TemporaryFolder folder;
    CatalogStore store(folder / "catalog.sqlite", folder / "index.json");
    Chance chance(20240607);
    std::size_t rows = 0;
    for (int round = 0; round < 60; ++round) {
        const SharedAssets list = randomList(chance);
        FilterRequest request = requestFor(list);
        store.replace(*list, *request.keys, LegacyMark::Leave);
        for (int pass = 0; pass < 40; ++pass) {
            request.scope = randomScope(chance, *list);
            request.kind = kindFilterAt(static_cast<int>(chance.below(5)));
            request.words = chance.below(3) == 0 ? std::vector<std::string>() : searchWords(chance.text(2));
            if (chance.below(4) == 0)
                request.words.push_back(chance.text(1));  // not folded: both fold it
            request.favorites.clear();
            request.recent.clear();
            for (std::size_t count = chance.below(12); count > 0; --count) {
                request.favorites.emplace(list->path(chance.below(list->size())));
                request.recent.emplace_back(list->path(chance.below(list->size())));
            }
            request.recent.emplace_back("/not indexed");
            const SharedAssets wanted =
                store.query({request.words, request.kind, request.scope, request.favorites, request.recent});
            ASSERT_EQ(pathsOf(filterInMemory(request, FolderRule::Catalog)), test::pathsOf(*wanted))
                << "round " << round << " pass " << pass << " scope " << request.scope;
            rows += wanted->size();
        }
    }
    EXPECT_GT(rows, 10000U) << "the requests must find something";
}

TEST(FastPath, IsTheSameWithTwoThreads) {
    AssetList::Builder builder;
    for (int number = 0; number < 40000; ++number) {
        const std::string relative =
            "d" + std::to_string(number % 9) + "/Clip " + std::to_string(number) + ".mov";
        builder.add("/r/" + relative, "/r", relative, 1, 1);
    }
    FilterRequest request = requestFor(builder.finish());
    EXPECT_THAT(filterInMemory(request, FolderRule::Catalog).rows, SizeIs(40000));
    request.words = {"clip", "99"};
    request.scope = "/r/d0";
    std::vector<std::uint32_t> wanted;
    for (std::uint32_t row = 0; row < 40000; ++row)
        if (row % 9 == 0 && std::to_string(row).find("99") != std::string::npos)
            wanted.push_back(row);
    EXPECT_EQ(filterInMemory(request, FolderRule::Catalog).rows, wanted);
}

// --- texts

TEST(FilterTexts, TellTheCountAndTheState) {
    EXPECT_EQ(resultCountText(0), "0 项");
    EXPECT_EQ(resultCountText(12486), "12,486 项");
    EXPECT_EQ(statusAfterFilter(1, "摘要"), "摘要");
    EXPECT_EQ(statusAfterFilter(0, "摘要"), "未找到素材 · 尝试缩短关键词、切换分类或添加文件夹");
}

// --- the owner of the passes

class Filter : public testing::Test {
protected:
    Filter() {
        QObject::connect(&filter_, &AssetFilter::finished,
                         [this] { finished_.push_back(namesOf(filter_.filtered())); });
        QObject::connect(&filter_, &AssetFilter::due, [this] { ++due_; });
    }
    FilterRequest request(std::vector<std::string> words) const {
        FilterRequest request = requestFor(list_);
        request.words = std::move(words);
        return request;
    }

    TemporaryFolder store_;
    SharedAssets list_ =
        listOf({assetBelow("/m/A", "1.mov"), assetBelow("/m/A", "2.wav"), assetBelow("/m/B", "3.mov")});
    CatalogRepository catalog_{store_.path()};
    AssetFilter filter_{catalog_};
    std::vector<std::vector<std::string>> finished_;
    int due_ = 0;
};

TEST_F(Filter, BeginsWithEverythingAndNoResult) {
    EXPECT_EQ(filter_.filterKey(), "all");
    EXPECT_EQ(filter_.filterGeneration(), 0);
    EXPECT_EQ(filter_.filtered().size(), 0U);
}

TEST_F(Filter, DeliversTheNewestPassOnly) {
    filter_.apply(request({"1"}));
    filter_.apply(request({"2"}));
    filter_.apply(request({"3"}));
    EXPECT_EQ(filter_.filterGeneration(), 3);
    ASSERT_TRUE(waitUntil([this] { return !finished_.empty(); }));
    EXPECT_THAT(finished_, ElementsAre(ElementsAre("3.mov")));
}

TEST_F(Filter, TakesTheScopeFromItsKeyAndKeepsIt) {
    filter_.setFilterKey("/m/A");
    filter_.apply(request({}));
    ASSERT_TRUE(waitUntil([this] { return finished_.size() == 1; }));
    filter_.setFilterKey("/m/gone");
    filter_.apply(request({}));
    ASSERT_TRUE(waitUntil([this] { return finished_.size() == 2; }));
    EXPECT_THAT(finished_, ElementsAre(ElementsAre("1.mov", "2.wav"), IsEmpty()));
    EXPECT_EQ(filter_.filterKey(), "/m/gone");
}

TEST_F(Filter, FollowsTheCatalogsRuleOnlyWhileTheCatalogIsInStep) {
    filter_.setFilterKey("/m/A/");
    filter_.apply(request({}));
    ASSERT_TRUE(waitUntil([this] { return finished_.size() == 1; }));
    EXPECT_THAT(finished_[0], IsEmpty());
    ASSERT_EQ(catalog_.save(*list_, *keysOf(list_)), "");
    filter_.apply(request({}));
    ASSERT_TRUE(waitUntil([this] { return finished_.size() == 2; }));
    EXPECT_THAT(finished_[1], ElementsAre("1.mov", "2.wav"));
}

TEST_F(Filter, TypingFastIsDueOnceAfterTheRest) {
    QElapsedTimer sinceLast;
    for (int key = 0; key < 5; ++key) {
        filter_.applyLater();
        sinceLast.start();
    }
    ASSERT_TRUE(waitUntil([this] { return due_ > 0; }));
    EXPECT_GE(sinceLast.elapsed(), 119);
    EXPECT_EQ(due_, 1);
    filter_.applyLater();
    ASSERT_TRUE(waitUntil([this] { return due_ == 2; })) << "a later key is a pass of its own";
}

TEST_F(Filter, AResultKeepsTheListItWasMadeFrom) {
    filter_.apply(request({}));
    list_.reset();
    ASSERT_TRUE(waitUntil([this] { return !finished_.empty(); }));
    EXPECT_EQ(filter_.filtered().at(2).path, "/m/B/3.mov");
}

TEST_F(Filter, GoesWithPassesOnTheirWay) {
    const std::weak_ptr<const AssetList> list = list_;
    {
        AssetFilter filter(catalog_);
        for (int pass = 0; pass < 20; ++pass)
            filter.apply(request({"mov"}));
    }
    QCoreApplication::processEvents();
    list_.reset();
    EXPECT_TRUE(list.expired());
}

}  // namespace
}  // namespace morvane
