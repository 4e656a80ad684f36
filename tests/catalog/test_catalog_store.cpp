#include "catalog/catalog_store.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/catalog/catalog_fixture.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using namespace morvane::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// What a store operation said when it failed; nothing when it did not.
template <class Operation>
std::optional<std::string> failureOf(const Operation& operation) {
    try {
        operation();
    } catch (const std::exception& error) {
        return error.what();
    }
    return std::nullopt;
}

class CatalogFile : public testing::Test {
protected:
    std::string path() const { return folder_ / "catalog.sqlite"; }
    std::string legacy() const { return folder_ / "index.json"; }
    std::unique_ptr<CatalogStore> open() const { return std::make_unique<CatalogStore>(path(), legacy()); }
    std::optional<std::string> openingFailure() const {
        return failureOf([this] { open(); });
    }
    void replace(CatalogStore& store, const SharedAssets& list) const {
        store.replace(*list, *keysOf(list), LegacyMark::Leave);
    }
    std::vector<std::string> found(const CatalogStore& store, const CatalogQuery& query) const {
        return pathsOf(*store.query(query));
    }
    // Every row as text, in the order of its columns.
    std::vector<std::string> rows() const {
        const Connection other(path());
        Statement statement(
            other,
            "SELECT path||'|'||root||'|'||relative||'|'||size||'|'||modified||'|'||name||'|'||kind"
            "||'|'||searchable||'|'||position FROM assets ORDER BY position");
        std::vector<std::string> texts;
        while (statement.step("rows"))
            texts.emplace_back(statement.text(0));
        return texts;
    }
    void execute(const char* sql) const { Connection(path()).execute(sql); }
    std::int64_t scalar(const char* sql) const { return Connection(path()).scalar(sql); }

    TemporaryFolder folder_;
};

// --- opening

TEST_F(CatalogFile, ANewFileGetsTheSchema) {
    open();
    EXPECT_EQ(scalar("PRAGMA user_version"), 1);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM assets"), 0);
    EXPECT_EQ(scalar("SELECT value FROM metadata WHERE key='legacyImported'"), 1);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM metadata"), 1);
    const Connection other(path());
    Statement schema(other, "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY rowid");
    std::vector<std::string> statements;
    while (schema.step("schema"))
        statements.emplace_back(schema.text(0));
    EXPECT_THAT(
        statements,
        ElementsAre(
            "CREATE TABLE assets(path TEXT PRIMARY KEY,root TEXT NOT NULL,relative TEXT NOT NULL,size "
            "INTEGER NOT NULL,modified REAL NOT NULL,name TEXT NOT NULL,kind TEXT NOT NULL,searchable "
            "TEXT NOT NULL,position INTEGER NOT NULL)",
            "CREATE INDEX assets_position ON assets(position)",
            "CREATE INDEX assets_kind_position ON assets(kind,position)",
            "CREATE TABLE metadata(key TEXT PRIMARY KEY,value TEXT NOT NULL)"));
    Statement journal(other, "PRAGMA journal_mode");
    ASSERT_TRUE(journal.step("journal"));
    EXPECT_EQ(journal.text(0), "wal");
}

TEST_F(CatalogFile, OpensAgainWithItsContent) {
    replace(*open(), listOf({assetBelow("/r", "b.mov"), assetBelow("/r", "a.wav")}));
    EXPECT_THAT(found(*open(), {}), ElementsAre("/r/b.mov", "/r/a.wav"));
}

class NewerCatalog : public CatalogFile, public testing::WithParamInterface<const char*> {};

TEST_P(NewerCatalog, IsRefusedAndLeftByteForByte) {
    {
        Connection newer(path());
        newer.execute((std::string("PRAGMA journal_mode=") + GetParam()).c_str());
        newer.execute("CREATE TABLE future(x)");
        newer.execute("PRAGMA user_version=2");
    }
    const std::string before = readAll(path());
    EXPECT_EQ(openingFailure(), "索引来自更新版本的软件，请先更新素材助手。");
    EXPECT_EQ(readAll(path()), before);
    EXPECT_THAT(listTree(folder_.path()), ElementsAre("catalog.sqlite")) << "nothing is left beside it";
}

INSTANTIATE_TEST_SUITE_P(Journals, NewerCatalog, testing::Values("DELETE", "WAL"));

TEST_F(CatalogFile, ANewerVersionThatStandsOnlyInTheLogIsRefusedToo) {
    {
        Connection newer(path());
        newer.execute("PRAGMA journal_mode=WAL");
        newer.execute("PRAGMA user_version=1");
    }
    {
        Connection newer(path());
        sqlite3_db_config(newer.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        newer.execute("PRAGMA user_version=3");
    }
    std::filesystem::remove(path() + "-shm");
    const std::string before = readAll(path());
    const std::string log = readAll(path() + "-wal");
    EXPECT_EQ(openingFailure(), "索引来自更新版本的软件，请先更新素材助手。");
    EXPECT_EQ(readAll(path()), before);
    EXPECT_EQ(readAll(path() + "-wal"), log);
    EXPECT_THAT(listTree(folder_.path()), ElementsAre("catalog.sqlite", "catalog.sqlite-wal"));
}

TEST_F(CatalogFile, ANewerProgramAtWorkIsRefusedAndKeepsWorking) {
    Connection newer(path());
    newer.execute("PRAGMA journal_mode=WAL");
    newer.execute("PRAGMA wal_autocheckpoint=0");
    newer.execute("PRAGMA user_version=3");
    EXPECT_EQ(openingFailure(), "索引来自更新版本的软件，请先更新素材助手。");
    EXPECT_THAT(listTree(folder_.path()),
                ElementsAre("catalog.sqlite", "catalog.sqlite-shm", "catalog.sqlite-wal"));
    newer.execute("CREATE TABLE future(x)");
    EXPECT_EQ(newer.scalar("PRAGMA user_version"), 3);
}

TEST_F(CatalogFile, AnOrdinaryLogLeftByACrashIsTakenUp) {
    replace(*open(), listOf({assetBelow("/r", "a.mov")}));
    {
        Connection crashed(path());
        sqlite3_db_config(crashed.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        crashed.execute("UPDATE assets SET size=7");
    }
    EXPECT_EQ(open()->query({})->at(0).size, 7);
    EXPECT_THAT(listTree(folder_.path()), ElementsAre("catalog.sqlite"))
        << "and folded into the file at the end";
}

TEST_F(CatalogFile, NegativeAndOlderVersionsBecomeOne) {
    execute("PRAGMA user_version=-5");
    open();
    EXPECT_EQ(scalar("PRAGMA user_version"), 1);
}

TEST_F(CatalogFile, AFileOfAnotherKindIsRefusedUnchanged) {
    const std::string text(5000, 'x');
    writeFile(path(), text);
    EXPECT_EQ(openingFailure(), "索引更新未完成：file is not a database");
    EXPECT_EQ(readAll(path()), text);
}

TEST_F(CatalogFile, AFolderInItsPlaceCannotBeOpened) {
    std::filesystem::create_directory(path());
    EXPECT_EQ(openingFailure(), "无法打开素材索引：unable to open database file");
}

TEST_F(CatalogFile, ASchemaThatDoesNotFitIsRefused) {
    execute("CREATE VIEW assets AS SELECT 1");
    EXPECT_THAT(openingFailure().value_or(""), StartsWith("索引更新未完成："));
}

TEST_F(CatalogFile, AStatementWithoutAValueIsAnErrorOfItsOwn) {
    Connection database(path());
    EXPECT_THAT(failureOf([&] { database.scalar("SELECT 1 WHERE 0"); }).value_or(""),
                StartsWith("无法读取索引状态"));
    EXPECT_EQ(failureOf([&] { database.scalar("SELECT x FROM nowhere"); }),
              "索引查询未完成：no such table: nowhere");
}

// --- the older index

TEST_F(CatalogFile, TheOlderIndexIsImportedOnce) {
    const SharedAssets old = listOf({assetBelow("/r", "b.mov"), assetBelow("/r", "a.wav")});
    writeFile(legacy(), encodeAssets(*old).dump());
    EXPECT_THAT(found(*open(), {}), ElementsAre("/r/b.mov", "/r/a.wav"));
    EXPECT_EQ(scalar("SELECT value FROM metadata WHERE key='legacyImported'"), 1);
    replace(*open(), listOf({assetBelow("/r", "c.mov")}));
    EXPECT_THAT(found(*open(), {}), ElementsAre("/r/c.mov"));
    EXPECT_TRUE(std::filesystem::exists(legacy())) << "it is only read";
}

TEST_F(CatalogFile, AnOlderIndexThatAppearsLaterIsIgnored) {
    open();
    writeFile(legacy(), encodeAssets(*listOf({assetBelow("/r", "b.mov")})).dump());
    EXPECT_THAT(found(*open(), {}), IsEmpty());
}

TEST_F(CatalogFile, ADamagedOlderIndexMakesOpeningFailUntilItIsGone) {
    writeFile(legacy(), R"([{"path":"/a"}])");
    const std::string damaged = "旧索引 index.json 无法读取：内容不完整或已损坏（";
    EXPECT_EQ(openingFailure(), damaged + "root）。");
    EXPECT_EQ(openingFailure(), damaged + "root）。") << "no silent skip the second time";
    writeFile(legacy(), R"([{"path":)");
    EXPECT_EQ(openingFailure(), "旧索引 index.json 无法读取：内容不完整或已损坏。");
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM metadata"), 0);
    std::filesystem::remove(legacy());
    EXPECT_THAT(found(*open(), {}), IsEmpty());
}

TEST_F(CatalogFile, AnUnreadableOlderIndexMakesOpeningFail) {
    std::filesystem::create_directory(legacy());
    EXPECT_EQ(openingFailure(), "旧索引 index.json 无法读取：Is a directory");
}

// --- replacing

TEST_F(CatalogFile, RowsHoldEveryColumn) {
    const auto store = open();
    replace(*store,
            listOf({{"/m/É/Take 1.MOV", "/m", "É/Take 1.MOV", 7, 1.5}, {"/m/x.cube", "/m", "x.cube", 0, 0}}));
    EXPECT_THAT(
        rows(),
        ElementsAre("/m/É/Take 1.MOV|/m|É/Take 1.MOV|7|1.5|Take 1.MOV|视频|take 1.mov e/take 1.mov m|0",
                    "/m/x.cube|/m|x.cube|0|0.0|x.cube|其他|x.cube x.cube m|1"));
}

TEST_F(CatalogFile, AnUnchangedListWritesNoRow) {
    const SharedAssets list = listOf({assetBelow("/r", "b.mov"), assetBelow("/r", "a.wav")});
    replace(*open(), list);
    execute("CREATE TABLE writes(what)");
    execute("CREATE TRIGGER i AFTER INSERT ON assets BEGIN INSERT INTO writes VALUES('i'); END");
    execute("CREATE TRIGGER u AFTER UPDATE ON assets BEGIN INSERT INTO writes VALUES('u'); END");
    execute("CREATE TRIGGER d AFTER DELETE ON assets BEGIN INSERT INTO writes VALUES('d'); END");
    replace(*open(), list);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM writes"), 0);
    const std::string before = readAll(path());
    {
        const auto store = open();
        const auto log = std::filesystem::file_size(path() + "-wal");
        replace(*store, list);
        EXPECT_EQ(std::filesystem::file_size(path() + "-wal"), log) << "not even the log grows";
    }
    EXPECT_THAT(rows(), testing::SizeIs(2));
}

TEST_F(CatalogFile, OnlyDifferencesAreWritten) {
    replace(*open(), listOf({assetBelow("/r", "a.mov"), assetBelow("/r", "b.mov"), assetBelow("/r", "c.mov"),
                             assetBelow("/r", "d.mov")}));
    execute("CREATE TABLE writes(what,name)");
    execute("CREATE TRIGGER i AFTER INSERT ON assets BEGIN INSERT INTO writes VALUES('i',NEW.name); END");
    execute("CREATE TRIGGER u AFTER UPDATE ON assets BEGIN INSERT INTO writes VALUES('u',NEW.name); END");
    execute("CREATE TRIGGER d AFTER DELETE ON assets BEGIN INSERT INTO writes VALUES('d',OLD.name); END");
    Asset grown = assetBelow("/r", "b.mov");
    grown.size = 101;
    replace(*open(),
            listOf({assetBelow("/r", "a.mov"), grown, assetBelow("/r", "d.mov"), assetBelow("/r", "e.mov")}));
    const Connection other(path());
    Statement statement(other, "SELECT what||' '||name FROM writes ORDER BY 1");
    std::vector<std::string> writes;
    while (statement.step("writes"))
        writes.emplace_back(statement.text(0));
    EXPECT_THAT(writes, ElementsAre("d c.mov", "i e.mov", "u b.mov", "u d.mov"));
}

TEST_F(CatalogFile, AnEmptyListDeletesEveryRow) {
    const auto store = open();
    replace(*store, listOf({assetBelow("/r", "b.mov")}));
    replace(*store, listOf({}));
    EXPECT_THAT(found(*store, {}), IsEmpty());
}

TEST_F(CatalogFile, AFailedReplaceLeavesTheOldContent) {
    replace(*open(), listOf({assetBelow("/r", "a.mov"), assetBelow("/r", "b.mov")}));
    const std::vector<std::string> before = rows();
    execute(
        "CREATE TRIGGER bad BEFORE INSERT ON assets WHEN NEW.name='bad.mov' BEGIN SELECT RAISE(ABORT,'no "
        "room'); "
        "END");
    const auto store = open();
    const SharedAssets list =
        listOf({assetBelow("/r", "0.mov"), assetBelow("/r", "b.mov"), assetBelow("/r", "bad.mov")});
    EXPECT_EQ(failureOf([&] { replace(*store, list); }), "素材信息写入失败：no room");
    EXPECT_EQ(rows(), before);
    execute("DROP TRIGGER bad");
    replace(*store, list);
    EXPECT_THAT(found(*store, {}), ElementsAre("/r/0.mov", "/r/b.mov", "/r/bad.mov")) << "the store works on";
}

TEST_F(CatalogFile, AStoppedReplaceLeavesTheOldContent) {
    const auto store = open();
    replace(*store, listOf({assetBelow("/r", "a.mov")}));
    std::stop_source stop;
    stop.request_stop();
    const SharedAssets list = listOf({assetBelow("/r", "b.mov")});
    EXPECT_THAT(failureOf([&] {
                    store->replace(*list, *keysOf(list), LegacyMark::Leave, stop.get_token());
                }).value_or(""),
                StartsWith("索引更新未完成"));
    EXPECT_THAT(found(*store, {}), ElementsAre("/r/a.mov"));
}

TEST_F(CatalogFile, AFailingDeleteAndMoveAreTold) {
    replace(*open(), listOf({assetBelow("/r", "a.mov"), assetBelow("/r", "b.mov")}));
    execute("CREATE TRIGGER d BEFORE DELETE ON assets BEGIN SELECT RAISE(ABORT,'kept'); END");
    const auto store = open();
    EXPECT_EQ(failureOf([&] { replace(*store, listOf({assetBelow("/r", "a.mov")})); }),
              "索引更新未完成：kept");
    execute("CREATE TRIGGER u BEFORE UPDATE ON assets BEGIN SELECT RAISE(ABORT,'fixed'); END");
    EXPECT_EQ(failureOf([&] {
                  replace(*store, listOf({assetBelow("/r", "b.mov"), assetBelow("/r", "a.mov")}));
              }),
              "素材信息写入失败：fixed");
    EXPECT_THAT(found(*store, {}), ElementsAre("/r/a.mov", "/r/b.mov"));
}

TEST_F(CatalogFile, AMissingTableIsTold) {
    const auto store = open();
    execute("DROP TABLE assets");
    EXPECT_EQ(failureOf([&] { replace(*store, listOf({})); }), "索引更新未完成：no such table: assets");
    EXPECT_EQ(failureOf([&] { store->query({}); }), "索引查询未完成：no such table: assets");
}

TEST_F(CatalogFile, ASecondWriterIsToldAfterTheWait) {
    const auto store = open();
    Connection writer(path());
    writer.execute("BEGIN IMMEDIATE");
    EXPECT_EQ(failureOf([&] { replace(*store, listOf({})); }), "索引更新未完成：database is locked");
    writer.execute("ROLLBACK");
    EXPECT_EQ(failureOf([&] { replace(*store, listOf({})); }), std::nullopt);
}

TEST_F(CatalogFile, ADamagedFileFailsTheQuery) {
    AssetList::Builder builder;
    for (int number = 0; number < 2000; ++number) {
        const std::string relative = std::to_string(number) + ".mov";
        builder.add("/r/" + relative, "/r", relative, 1, 1);
    }
    replace(*open(), builder.finish());
    std::string bytes = readAll(path());
    for (std::size_t page = 20; page < 40; ++page)
        bytes.replace(page * 4096, 4096, std::string(4096, '\xEE'));
    writeFile(path(), bytes);
    const auto store = open();
    EXPECT_THAT(failureOf([&] { store->query({}); }).value_or(""), StartsWith("素材搜索未完成："));
}

TEST_F(CatalogFile, KeepsNamesOfEveryKind) {
    std::vector<Asset> assets;
    for (const char* name :
         {"100%.mov", "a_b.mov", "back\\slash.mov", "'single' \"double\".mov", "line\nbreak.mov", "🎬.mov",
          "Cafe\u0301.mov", "Café.mov", "ＦＵＬＬ.mov", "한국.mov", "; DROP TABLE assets;.mov"})
        assets.push_back(assetBelow("/r", name));
    const auto store = open();
    replace(*store, listOf(assets));
    const SharedAssets read = store->query({});
    ASSERT_EQ(read->size(), assets.size());
    for (std::size_t row = 0; row < assets.size(); ++row)
        EXPECT_EQ(read->path(row), assets[row].path);
}

// --- querying

class CatalogQueries : public CatalogFile {
protected:
    void SetUp() override {
        store_ = open();
        replace(*store_, listOf({assetBelow("/m/A", "雨 夜.mov"), assetBelow("/m/A", "夜.wav"),
                                 assetBelow("/m/A", "sale 50%_off.png"),
                                 assetBelow("/m/A", "sale 50xyoff.png"), assetBelow("/m/B", "x/Ｆull.cube"),
                                 assetBelow("/m/B", "x/back\\slash.mov"), assetBelow("/m/A_C", "雨.pdf")}));
    }
    std::vector<std::string> names(const CatalogQuery& query) const {
        std::vector<std::string> names;
        const SharedAssets list = store_->query(query);
        for (std::size_t row = 0; row < list->size(); ++row)
            names.emplace_back(list->name(row));
        return names;
    }
    static CatalogQuery inScope(std::string scope) {
        CatalogQuery query;
        query.scope = std::move(scope);
        return query;
    }
    static CatalogQuery forWords(std::vector<std::string> words) {
        CatalogQuery query;
        query.words = std::move(words);
        return query;
    }

    std::unique_ptr<CatalogStore> store_;
};

TEST_F(CatalogQueries, WordsMustAllBeContained) {
    EXPECT_THAT(names(forWords({"雨", "夜"})), ElementsAre("雨 夜.mov"));
    EXPECT_THAT(names(forWords({"雨"})), ElementsAre("雨 夜.mov", "雨.pdf"));
    EXPECT_THAT(names(forWords({"", "雨"})), ElementsAre("雨 夜.mov", "雨.pdf"));
    EXPECT_THAT(names(forWords({"full"})), ElementsAre("Ｆull.cube"));
    EXPECT_THAT(names(forWords({"ＦÚll"})), ElementsAre("Ｆull.cube")) << "words are folded";
    EXPECT_THAT(names(forWords({"absent"})), IsEmpty());
}

TEST_F(CatalogQueries, PatternCharactersStandForThemselves) {
    EXPECT_THAT(names(forWords({"50%_off"})), ElementsAre("sale 50%_off.png"));
    EXPECT_THAT(names(forWords({"back\\slash"})), ElementsAre("back\\slash.mov"));
    EXPECT_THAT(names(forWords({"%%"})), IsEmpty());
    EXPECT_THAT(names(inScope("/m/A_C")), ElementsAre("雨.pdf"));
    EXPECT_THAT(names(inScope("/m/%")), IsEmpty());
}

TEST_F(CatalogQueries, FolderScopesIgnoreTrailingSlashes) {
    for (const char* scope : {"/m/B", "/m/B/", "/m/B///"})
        EXPECT_THAT(names(inScope(scope)), ElementsAre("Ｆull.cube", "back\\slash.mov")) << scope;
    EXPECT_THAT(names(inScope("/")), testing::SizeIs(7));
    EXPECT_THAT(names(inScope("/m/b")), testing::SizeIs(2)) << "LIKE takes ASCII letters in either case";
    EXPECT_THAT(names(inScope("/m")), testing::SizeIs(7));
    EXPECT_THAT(names(inScope("/m/A")), testing::SizeIs(4)) << "a folder whose name begins alike stays out";
}

TEST_F(CatalogQueries, KindsAreCounted) {
    CatalogQuery query;
    query.kind = MediaKind::Image;
    EXPECT_THAT(names(query), ElementsAre("sale 50%_off.png", "sale 50xyoff.png"));
    query.words = {"xy"};
    EXPECT_THAT(names(query), ElementsAre("sale 50xyoff.png"));
    query.kind = MediaKind::Other;
    query.words = {};
    EXPECT_THAT(names(query), ElementsAre("Ｆull.cube", "雨.pdf"));
}

TEST_F(CatalogQueries, FavoritesComeInCatalogOrder) {
    CatalogQuery query = inScope("favorites");
    EXPECT_THAT(names(query), IsEmpty());
    query.favorites = {"/m/A_C/雨.pdf", "/m/A/夜.wav", "/m/gone.mov", std::string("/m/A/夜.wav\0", 12)};
    EXPECT_THAT(names(query), ElementsAre("夜.wav", "雨.pdf"));
}

TEST_F(CatalogQueries, RecentComesNewestFirst) {
    CatalogQuery query = inScope("recent");
    query.recent = {"/m/A_C/雨.pdf", "/m/gone.mov", "/m/A/夜.wav", "/m/A_C/雨.pdf", "/m/A/雨 夜.mov"};
    EXPECT_THAT(names(query), ElementsAre("雨.pdf", "夜.wav", "雨 夜.mov"));
    query.words = {"夜"};
    EXPECT_THAT(names(query), ElementsAre("夜.wav", "雨 夜.mov"));
}

}  // namespace
}  // namespace morvane
