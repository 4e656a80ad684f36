#include "catalog/catalog_store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <utility>

#include <nlohmann/json.hpp>

#include "support/atomic_file.h"
#include "support/path_text.h"
#include "support/unique_fd.h"

namespace morvane {

namespace {

constexpr int busyMilliseconds = 3000;
constexpr std::int64_t newestVersion = 1;

constexpr const char* positionIndex = "CREATE INDEX IF NOT EXISTS assets_position ON assets(position)";
constexpr const char* kindIndex = "CREATE INDEX IF NOT EXISTS assets_kind_position ON assets(kind,position)";
constexpr std::array<const char*, 5> schema = {
    "CREATE TABLE IF NOT EXISTS assets(path TEXT PRIMARY KEY,root TEXT NOT NULL,relative TEXT NOT NULL,"
    "size INTEGER NOT NULL,modified REAL NOT NULL,name TEXT NOT NULL,kind TEXT NOT NULL,searchable TEXT NOT "
    "NULL,position INTEGER NOT NULL)",
    positionIndex, kindIndex, "CREATE TABLE IF NOT EXISTS metadata(key TEXT PRIMARY KEY,value TEXT NOT NULL)",
    "PRAGMA user_version=1"};
constexpr const char* markImported = "INSERT OR REPLACE INTO metadata VALUES('legacyImported','1')";
constexpr const char* upsert = R"(INSERT INTO assets VALUES(?,?,?,?,?,?,?,?,?) ON CONFLICT(path) DO UPDATE SET
root=excluded.root,relative=excluded.relative,size=excluded.size,modified=excluded.modified,
name=excluded.name,kind=excluded.kind,searchable=excluded.searchable,position=excluded.position
WHERE assets.root!=excluded.root OR assets.relative!=excluded.relative OR assets.size!=excluded.size
OR assets.modified!=excluded.modified OR assets.position!=excluded.position)";

// The schema version as it stands in the file header (big-endian, at byte 60), read without the
// engine, which would change the file or leave companions beside it. Nothing for a file that is
// missing, too short or of another kind. Only called while this process has no connection to the
// file: closing a descriptor gives up the process's locks on it.
std::optional<std::int32_t> headerVersion(const std::string& path) {
    constexpr std::string_view magic("SQLite format 3\0", 16);
    constexpr std::size_t versionOffset = 60;
    std::array<char, 100> header{};
    const UniqueFd file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file ||
        ::pread(file.get(), header.data(), header.size(), 0) != static_cast<ssize_t>(header.size()) ||
        std::string_view(header.data(), magic.size()) != magic)
        return std::nullopt;
    std::uint32_t version = 0;
    for (std::size_t byte = 0; byte < sizeof version; ++byte)
        version = (version << 8) | static_cast<unsigned char>(header[versionOffset + byte]);
    return static_cast<std::int32_t>(version);
}

// A log left by a crash can hold a newer version than the file's header. Reading through it must not
// end in a checkpoint, which would write the file. Where no other program has the file open, so that no
// "-shm" is there, the exclusive mode keeps what would stand in one in memory; a connection that began
// in that mode cannot leave it, so this one is for the question alone.
std::int64_t logVersion(const std::string& path) {
    struct stat facts {};
    if (::stat((path + "-wal").c_str(), &facts) != 0 || facts.st_size == 0)
        return 0;
    Connection database(path);
    sqlite3_busy_timeout(database.handle(), busyMilliseconds);
    sqlite3_db_config(database.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    try {
        if (::stat((path + "-shm").c_str(), &facts) != 0)
            database.execute("PRAGMA locking_mode=EXCLUSIVE");
        return database.scalar("PRAGMA user_version");
    } catch (const CatalogError&) {
        return 0;  // what is wrong shows in the steps that follow
    }
}

const std::string& refusingNewer(const std::string& path) {
    if (headerVersion(path).value_or(0) > newestVersion || logVersion(path) > newestVersion)
        throw CatalogError(catalogText::newerVersion);
    return path;
}

SharedAssets readLegacy(const std::string& path) {
    try {
        return decodeAssets(readFile(path));
    } catch (const std::runtime_error& error) {
        throw CatalogError(std::string(catalogText::damagedLegacyPrefix) + error.what());
    }
}

std::string escapedForLike(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char byte : text) {
        if (byte == '\\' || byte == '%' || byte == '_')
            escaped += '\\';
        escaped += byte;
    }
    return escaped;
}

// Entries with a NUL are left out: they name no file, and json_each would cut them short.
template <class Texts>
std::string jsonArray(const Texts& texts) {
    auto array = nlohmann::json::array();
    for (const std::string& text : texts)
        if (text.find('\0') == std::string::npos)
            array.push_back(text);
    return array.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string folderPattern(std::string_view folder) {
    while (folder.size() > 1 && folder.ends_with('/'))
        folder.remove_suffix(1);
    return escapedForLike(folder == "/" ? std::string(folder) : std::string(folder) + "/") + "%";
}

// The statement of a query and its texts in the order of the "?". Rows of a statement without ORDER BY are
// put in the order of their positions afterwards: the engine would either walk the position index and fetch
// each row from another place, or sort whole rows; both take several times as long as sorting the numbers.
struct QueryText {
    std::string sql = "SELECT path,root,relative,size,modified,position FROM assets";
    std::vector<std::string> bindings;
    bool isOrdered = false;
};

QueryText queryText(const CatalogQuery& query) {
    QueryText text;
    std::vector<std::string> clauses;
    if (query.kind) {
        clauses.emplace_back("kind=?");
        text.bindings.emplace_back(kindLabel(*query.kind));
    }
    std::string recentPaths;
    if (query.scope == "favorites" || query.scope == "recent") {
        clauses.emplace_back("path IN(SELECT value FROM json_each(?))");
        if (query.scope == "recent")
            recentPaths = jsonArray(query.recent);
        text.bindings.push_back(query.scope == "recent" ? recentPaths : jsonArray(query.favorites));
    } else if (query.scope != "all") {
        clauses.emplace_back("path LIKE ? ESCAPE '\\'");
        text.bindings.push_back(folderPattern(query.scope));
    }
    for (const std::string& word : query.words) {
        if (word.empty())
            continue;
        clauses.emplace_back("searchable LIKE ? ESCAPE '\\'");
        text.bindings.push_back("%" + escapedForLike(searchFold(word)) + "%");
    }
    for (std::size_t index = 0; index < clauses.size(); ++index)
        text.sql += (index == 0 ? " WHERE " : " AND ") + clauses[index];
    if (query.scope == "recent") {
        text.sql +=
            " ORDER BY (SELECT CAST(key AS INTEGER) FROM json_each(?) WHERE value=assets.path LIMIT 1)";
        text.bindings.push_back(recentPaths);
        text.isOrdered = true;
    }
    return text;
}

std::vector<std::uint32_t> orderOf(const std::vector<std::int64_t>& positions) {
    std::vector<std::uint32_t> order(positions.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(), [&positions](std::uint32_t left, std::uint32_t right) {
        return positions[left] < positions[right];
    });
    return order;
}

// Whether a row of the new list has to be written with all its columns.
enum class RowState : std::uint8_t { ToWrite, Settled };

struct Differences {
    std::vector<RowState> states;                              // by row of the new list
    std::vector<std::pair<std::int64_t, std::int64_t>> moved;  // row id, new position
    std::vector<std::int64_t> removed;                         // row ids
};

Differences compare(const Connection& database, const AssetList& list, const std::function<void()>& goOn) {
    Differences differences;
    differences.states.assign(list.size(), RowState::ToWrite);
    Statement rows(database, "SELECT rowid,path,root,relative,size,modified,position FROM assets");
    while (rows.step(catalogText::updateFailed)) {
        goOn();
        const auto row = rows.type(1) == SQLITE_TEXT ? list.rowOf(rows.text(1)) : std::nullopt;
        if (!row) {
            differences.removed.push_back(rows.integer(0));
            continue;
        }
        const AssetView asset = list.at(*row);
        if (rows.text(2) != asset.root || rows.text(3) != asset.relative || rows.integer(4) != asset.size ||
            rows.real(5) != asset.modified)
            continue;
        differences.states[*row] = RowState::Settled;
        const auto position = static_cast<std::int64_t>(*row);
        if (rows.integer(6) != position)
            differences.moved.emplace_back(rows.integer(0), position);
    }
    return differences;
}

void writeRow(Statement& write, const AssetView& asset, std::string_view key, std::size_t position) {
    write.reset();
    write.bind(1, asset.path);
    write.bind(2, asset.root);
    write.bind(3, asset.relative);
    write.bind(4, asset.size);
    write.bind(5, asset.modified);
    write.bind(6, asset.name());
    write.bind(7, asset.kind());
    write.bind(8, key);
    write.bind(9, static_cast<std::int64_t>(position));
    write.step(catalogText::rowFailed);
}

}  // namespace

CatalogStore::CatalogStore(const std::string& path, const std::string& legacyPath)
    : database_(refusingNewer(path)) {
    sqlite3_busy_timeout(database_.handle(), busyMilliseconds);
    database_.execute("PRAGMA journal_mode=WAL");
    database_.execute("PRAGMA synchronous=NORMAL");
    if (database_.scalar("PRAGMA user_version") > newestVersion)
        throw CatalogError(catalogText::newerVersion);
    for (const char* statement : schema)
        database_.execute(statement);
    if (database_.scalar("SELECT COUNT(*) FROM metadata WHERE key='legacyImported'") == 0)
        importLegacy(legacyPath);
}

void CatalogStore::importLegacy(const std::string& legacyPath) {
    if (::access(legacyPath.c_str(), F_OK) != 0) {
        database_.execute(markImported);
        return;
    }
    const SharedAssets list = readLegacy(legacyPath);
    replace(*list, SearchKeys(*list), LegacyMark::Imported);
}

void CatalogStore::replace(const AssetList& list, const SearchKeys& keys, LegacyMark mark,
                           const std::stop_token& stop) {
    Transaction transaction(database_);
    const auto goOn = [this, &stop] {
        if (stop.stop_requested())
            throw database_.failure(catalogText::updateFailed);
    };
    const Differences differences = compare(database_, list, goOn);
    Statement remove(database_, "DELETE FROM assets WHERE rowid=?");
    for (const std::int64_t rowId : differences.removed) {
        goOn();
        remove.reset();
        remove.bind(1, rowId);
        remove.step(catalogText::updateFailed);
    }
    Statement move(database_, "UPDATE assets SET position=? WHERE rowid=?");
    for (const auto& [rowId, position] : differences.moved) {
        goOn();
        move.reset();
        move.bind(1, position);
        move.bind(2, rowId);
        move.step(catalogText::rowFailed);
    }
    Statement write(database_, upsert);
    for (std::size_t row = 0; row < list.size(); ++row) {
        if (differences.states[row] == RowState::Settled)
            continue;
        goOn();
        writeRow(write, list.at(row), keys.key(row), row);
    }
    if (mark == LegacyMark::Imported)
        database_.execute(markImported);
    transaction.commit();
}

SharedAssets CatalogStore::query(const CatalogQuery& query) const {
    const QueryText text = queryText(query);
    Statement statement(database_, text.sql);
    for (std::size_t index = 0; index < text.bindings.size(); ++index)
        statement.bind(static_cast<int>(index) + 1, std::string_view(text.bindings[index]));
    AssetList::Builder found;
    std::vector<std::int64_t> positions;
    while (statement.step(catalogText::queryFailed))
        if (found.add(statement.text(0), statement.text(1), statement.text(2), statement.integer(3),
                      statement.real(4)))
            positions.push_back(statement.integer(5));
    if (text.isOrdered || std::is_sorted(positions.begin(), positions.end()))
        return found.finish();
    return found.finishInOrder(orderOf(positions));
}

}  // namespace morvane
