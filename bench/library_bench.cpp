// The library at sizes of real use: library_bench [ASSETS...] (10000 and 100000 unless named). Everything it
// makes lies in one temporary folder ($TMPDIR or /tmp) and is removed.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <unicode/translit.h>

#include "bench/measure.h"
#include "bench/temporary_folder.h"
#include "catalog/asset_filter.h"
#include "catalog/catalog_store.h"
#include "catalog/category.h"
#include "catalog/folder_walk.h"
#include "catalog/library_scan.h"
#include "platform/run_process.h"
#include "support/natural_order.h"
#include "support/unique_fd.h"

namespace morvane::bench {
namespace {

constexpr std::size_t filesInAFolder = 50;

// Names as video makers have them: camera numbers, takes, Chinese words, now and then an accent.
std::string nameOf(std::size_t number) {
    static constexpr std::array<const char*, 8> stems = {
        "A001_C", "雨夜外景 第", "Take ", "IMG_", "采访 主机位 ", "Café ambience ", "DJI_", "空镜 城市"};
    static constexpr std::array<const char*, 6> extensions = {".MOV", ".mp4",  ".wav",
                                                              ".JPG", ".cube", ".mov"};
    std::mt19937_64 chance(number);
    return stems[chance() % stems.size()] + std::to_string(chance() % 100000) + "_" + std::to_string(number) +
           extensions[chance() % extensions.size()];
}

std::string folderOf(std::size_t number) {
    const std::size_t folder = number / filesInAFolder;
    return "2024 项目 " + std::to_string(folder / 100) + "/Day " + std::to_string(folder % 100 / 10) +
           "/Card " + std::to_string(folder % 10);
}

SharedAssets makeList(const std::string& root, std::size_t count) {
    AssetList::Builder builder;
    for (std::size_t number = 0; number < count; ++number) {
        const std::string relative = folderOf(number) + "/" + nameOf(number);
        builder.add(root + "/" + relative, root, relative, static_cast<std::int64_t>(number) * 1000,
                    1.7e9 + static_cast<double>(number));
    }
    return builder.finishSorted();
}

// `list` with one asset more, whose name sorts into the middle.
SharedAssets withOneMore(const AssetList& list, std::size_t serial) {
    AssetList::Builder builder;
    for (std::size_t row = 0; row < list.size(); ++row) {
        if (row == list.size() / 2) {
            const std::string relative = "new " + std::to_string(serial) + ".mov";
            builder.add("/added/" + relative, "/added", relative, 1, 1);
        }
        builder.add(list.at(row));
    }
    return builder.finish();
}

void makeFiles(const std::string& root, std::size_t count) {
    for (std::size_t number = 0; number < count; ++number) {
        if (number % filesInAFolder == 0)
            std::filesystem::create_directories(root + "/" + folderOf(number));
        const std::string path = root + "/" + folderOf(number) + "/" + nameOf(number);
        if (!UniqueFd(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644)))
            throw std::system_error(errno, std::generic_category(), path);
    }
}

void run(const std::string& program, const std::vector<std::string>& arguments) {
    if (runProcess(program, arguments, [] { return false; }).exitStatus != 0)
        throw std::runtime_error(program + " failed");
}

// --- the rivals

// The described statements as they stand, one after the other.
class PlainStore {
public:
    explicit PlainStore(const std::string& path) : database_(path) {
        database_.execute("PRAGMA journal_mode=WAL");
        database_.execute("PRAGMA synchronous=NORMAL");
        database_.execute(
            "CREATE TABLE IF NOT EXISTS assets(path TEXT PRIMARY KEY,root TEXT NOT NULL,relative TEXT NOT "
            "NULL,size INTEGER NOT NULL,modified REAL NOT NULL,name TEXT NOT NULL,kind TEXT NOT "
            "NULL,searchable TEXT NOT NULL,position INTEGER NOT NULL)");
        database_.execute("CREATE INDEX IF NOT EXISTS assets_position ON assets(position)");
        database_.execute("CREATE INDEX IF NOT EXISTS assets_kind_position ON assets(kind,position)");
    }

    void replace(const AssetList& list) {
        Transaction transaction(database_);
        database_.execute("CREATE TEMP TABLE IF NOT EXISTS keep_paths(path TEXT PRIMARY KEY)");
        database_.execute("DELETE FROM keep_paths");
        Statement keep(database_, "INSERT OR IGNORE INTO keep_paths VALUES(?)");
        Statement write(
            database_,
            "INSERT INTO assets VALUES(?,?,?,?,?,?,?,?,?) ON CONFLICT(path) DO UPDATE SET root=excluded.root,"
            "relative=excluded.relative,size=excluded.size,modified=excluded.modified,name=excluded.name,"
            "kind=excluded.kind,searchable=excluded.searchable,position=excluded.position WHERE "
            "assets.root!=excluded.root OR assets.relative!=excluded.relative OR assets.size!=excluded.size "
            "OR "
            "assets.modified!=excluded.modified OR assets.position!=excluded.position");
        for (std::size_t row = 0; row < list.size(); ++row) {
            const AssetView asset = list.at(row);
            keep.reset();
            keep.bind(1, asset.path);
            keep.step("keep");
            write.reset();
            write.bind(1, asset.path);
            write.bind(2, asset.root);
            write.bind(3, asset.relative);
            write.bind(4, asset.size);
            write.bind(5, asset.modified);
            write.bind(6, asset.name());
            write.bind(7, asset.kind());
            write.bind(8, searchKey(asset.path, asset.relative, asset.root));
            write.bind(9, static_cast<std::int64_t>(row));
            write.step("write");
        }
        database_.execute("DELETE FROM assets WHERE path NOT IN(SELECT path FROM keep_paths)");
        transaction.commit();
    }

    std::size_t search(const std::string& word) {
        Statement statement(
            database_,
            "SELECT path,root,relative,size,modified FROM assets WHERE searchable LIKE ? ESCAPE '\\' "
            "ORDER BY position");
        statement.bind(1, std::string_view(word));
        std::vector<Asset> found;
        while (statement.step("search"))
            found.push_back({std::string(statement.text(0)), std::string(statement.text(1)),
                             std::string(statement.text(2)), statement.integer(3), statement.real(4)});
        return found.size();
    }

private:
    Connection database_;
};

std::string transliterated(const icu::Transliterator& rules, std::string_view text) {
    icu::UnicodeString wide =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    rules.transliterate(wide);
    std::string folded;
    wide.toUTF8String(folded);
    return folded;
}

// --- the measurements

void benchWalk(const std::string& folder, std::size_t count) {
    const std::string root = folder + "/media";
    makeFiles(root, count);
    const Work ours{[&] {
        WalkRequest request;
        request.folder = root;
        if (FolderWalk(request).fileCount() != count)
            throw std::runtime_error("the walk missed files");
    }};
    compare("walk", ours, "find -printf", {[&] {
                run("/usr/bin/find", {root, "-type", "f", "-printf", "%p %s %T@\n"});
            }},
            0.6);
    if (std::filesystem::exists("/usr/bin/fdfind"))
        compare("walk", ours, "fd (names only)", {[&] {
                    run("/usr/bin/fdfind", {"-t", "f", ".", root});
                }},
                1);
    measureAlone("whole scan, sorted", {[&] {
                     ScanRequest request;
                     request.roots = {root};
                     scanLibrary(request);
                 }},
                 "-");
    std::filesystem::remove_all(root);
}

void benchSort(const AssetList& list) {
    std::vector<std::string_view> names;
    for (std::size_t row = 0; row < list.size(); ++row)
        names.push_back(list.name(row));
    std::shuffle(names.begin(), names.end(), std::mt19937(1));
    compare("sort", {[&] { naturalOrder(names); }}, "collator per pair", {[&] {
                std::vector<std::string_view> sorted = names;
                std::stable_sort(sorted.begin(), sorted.end(),
                                 [](std::string_view left, std::string_view right) {
                                     return compareNaturally(left, right) < 0;
                                 });
            }},
            0.15, 3);
}

void benchFold(const AssetList& list) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::Transliterator> rules(icu::Transliterator::createInstance(
        "NFD; [:Nonspacing Mark:] Remove; Fullwidth-Halfwidth; Lower; NFC", UTRANS_FORWARD, status));
    if (U_FAILURE(status))
        throw std::runtime_error(u_errorName(status));
    compare("fold all keys", {[&] { const SearchKeys keys(list); }}, "ICU transliterator", {[&] {
                for (std::size_t row = 0; row < list.size(); ++row) {
                    const AssetView asset = list.at(row);
                    transliterated(*rules, std::string(asset.name()) + " " + std::string(asset.relative) +
                                               " " + std::string(asset.root));
                }
            }},
            0.1, 3);
}

// The two stores side by side through first fill, nothing changed, one file more.
struct Stores {
    explicit Stores(std::string where) : folder(std::move(where)) {}

    void open() {
        ours = std::make_unique<CatalogStore>(folder + "/ours.sqlite", folder + "/absent.json");
        plain = std::make_unique<PlainStore>(folder + "/plain.sqlite");
    }
    void clear() {
        ours.reset();
        plain.reset();
        for (const char* name : {"ours.sqlite", "plain.sqlite"})
            std::filesystem::remove(folder + "/" + name);
        open();
    }

    std::string folder;
    std::unique_ptr<CatalogStore> ours;
    std::unique_ptr<PlainStore> plain;
};

void benchReplace(Stores& stores, const AssetList& list, const SearchKeys& keys) {
    const auto emptied = [&] { stores.clear(); };
    compare("replace, first fill",
            {[&] { stores.ours->replace(list, SearchKeys(list), LegacyMark::Leave); }, emptied},
            "described statements", {[&] { stores.plain->replace(list); }, emptied}, 1.05, 3);
    stores.ours->replace(list, keys, LegacyMark::Leave);
    compare("replace, unchanged", {[&] { stores.ours->replace(list, keys, LegacyMark::Leave); }},
            "described statements", {[&] { stores.plain->replace(list); }}, 0.2, 3);
    std::size_t serial = 0;
    SharedAssets more;
    SharedKeys moreKeys;
    const auto another = [&] {
        more = withOneMore(list, ++serial);
        moreKeys = std::make_shared<const SearchKeys>(*more);
    };
    compare("replace, one file more",
            {[&] { stores.ours->replace(*more, *moreKeys, LegacyMark::Leave); },
             [&] {
                 stores.ours->replace(list, keys, LegacyMark::Leave);
                 another();
             }},
            "described statements",
            {[&] { stores.plain->replace(*more); }, [&] { stores.plain->replace(list); }}, 1, 3);
}

void benchSearch(Stores& stores, const SharedAssets& list, const SharedKeys& keys) {
    stores.plain->replace(*list);  // after updates: rows no longer lie in the order of their positions
    stores.ours->replace(*list, *keys, LegacyMark::Leave);
    std::vector<double> mine;
    for (const char* word :
         {"a", "雨夜", "mov", "take 12", "采访", "99", "absent word", "e", "_", "城市", "cafe", "项目 3"}) {
        FilterRequest request;
        request.words = searchWords(word);
        request.assets = list;
        request.keys = keys;
        const auto ours = [&] { filterInMemory(request, FolderRule::Catalog); };
        for (int pass = 0; pass < 5; ++pass)
            mine.push_back(seconds(ours));
        compare(std::string("search \"") + word + "\"", {ours}, "plain LIKE",
                {[&] { stores.plain->search("%" + request.words.front() + "%"); }}, 1, 3);
    }
    std::printf("%-34s %10.2f ms   goal 50 ms\n", "search, 95th percentile", percentile95(mine) * 1e3);
    FilterRequest request;
    request.assets = list;
    request.keys = keys;
    request.scope = std::string(list->roots()[0]) + "/2024 项目 0";
    measureAlone("folder scope", {[&] { filterInMemory(request, FolderRule::Catalog); }}, "50 ms");
    request.scope = std::string(list->roots()[0]);
    measureAlone("library folder scope", {[&] { filterInMemory(request, FolderRule::Catalog); }}, "50 ms");
    measureAlone("query, everything (load)", {[&] { stores.ours->query({}); }}, "-", 3);
}

void benchCategories(const SharedAssets& list) {
    CategoryRequest request;
    request.assets = list;
    request.roots = list->roots();
    measureAlone("category tree", {[&] { buildCategories(request); }}, "300 ms");
}

// Resident bytes of this process, from the kernel.
std::size_t residentBytes() {
    std::ifstream file("/proc/self/statm");
    std::size_t whole = 0;
    std::size_t resident = 0;
    file >> whole >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

void benchAll(std::size_t count) {
    std::printf("\n%zu assets\n", count);
    const TemporaryFolder folder;
    benchWalk(folder.path(), count);
    const std::size_t before = residentBytes();
    const SharedAssets list = makeList("/media/素材盘", count);
    const auto keys = std::make_shared<const SearchKeys>(*list);
    std::printf("%-34s %10.1f MB   keys %.1f MB   resident %.1f MB\n", "memory, rows",
                static_cast<double>(list->memoryBytes()) / 1e6,
                static_cast<double>(keys->memoryBytes()) / 1e6,
                static_cast<double>(residentBytes() - before) / 1e6);
    benchSort(*list);
    benchFold(*list);
    Stores stores(folder.path());
    benchReplace(stores, *list, *keys);
    benchSearch(stores, list, keys);
    benchCategories(list);
}

}  // namespace
}  // namespace morvane::bench

int main(int argc, char** argv) {
    try {
        std::vector<std::size_t> counts;
        for (int index = 1; index < argc; ++index)
            counts.push_back(std::stoul(argv[index]));
        if (counts.empty())
            counts = {10000, 100000};
        for (const std::size_t count : counts)
            morvane::bench::benchAll(count);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "library_bench: %s\n", error.what());
        return 1;
    }
}
