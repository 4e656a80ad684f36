#include "catalog/asset_filter.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <utility>

#include "catalog/find_bytes.h"
#include "support/deliver.h"
#include "support/format_text.h"

namespace morvane {

namespace {

constexpr std::size_t twoThreadsFrom = 16384;
constexpr std::chrono::milliseconds searchRest{120};

using Rows = std::vector<std::uint32_t>;

char asciiLowered(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}

bool beginsWithAnyCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), text.begin(),
                      [](char left, char right) { return asciiLowered(left) == asciiLowered(right); });
}

// What the paths of a folder scope begin with.
std::string folderPrefix(std::string folder, FolderRule rule) {
    if (rule == FolderRule::Catalog) {
        while (folder.size() > 1 && folder.ends_with('/'))
            folder.pop_back();
        if (folder == "/")
            return folder;
    }
    return folder + "/";
}

// One pass over the rows of a request. The longest word is looked for in the block of all keys at
// once; kind, folder and the other words are tested on its hits alone.
class Pass {
public:
    Pass(const FilterRequest& request, FolderRule rule)
        : request_(request), assets_(*request.assets), keys_(*request.keys), rule_(rule) {
        for (const std::string& word : request.words)
            if (std::string folded = searchFold(word); !folded.empty())
                words_.push_back(std::move(folded));
        std::stable_sort(words_.begin(), words_.end(),
                         [](const auto& left, const auto& right) { return left.size() > right.size(); });
        inFolder_ = request.scope != scope::all && request.scope != scope::favorites &&
                    request.scope != scope::recent;
        if (inFolder_)
            prefix_ = folderPrefix(request.scope, rule);
    }

    Rows run() const {
        if (request_.scope == scope::favorites) {
            Rows rows = rowsOf(request_.favorites);
            std::sort(rows.begin(), rows.end());
            return rows;
        }
        if (request_.scope == scope::recent)
            return rowsOf(request_.recent);
        const std::size_t count = assets_.size();
        if (count < twoThreadsFrom)
            return scan(0, count);
        auto second = std::async(std::launch::async, [this, count] { return scan(count / 2, count); });
        Rows rows = scan(0, count / 2);
        const Rows rest = second.get();
        rows.insert(rows.end(), rest.begin(), rest.end());
        return rows;
    }

private:
    // The matching rows of listed paths, each once, in the order of the list.
    template <class Paths>
    Rows rowsOf(const Paths& paths) const {
        Rows rows;
        std::unordered_set<std::uint32_t> seen;
        for (const std::string& path : paths) {
            const auto row = assets_.rowOf(path);
            if (row && seen.insert(*row).second && matches(*row) && holdsWords(*row, 0))
                rows.push_back(*row);
        }
        return rows;
    }

    Rows scan(std::size_t begin, std::size_t end) const {
        return words_.empty() ? scanRows(begin, end) : scanKeys(begin, end);
    }

    Rows scanRows(std::size_t begin, std::size_t end) const {
        Rows rows;
        for (std::size_t row = begin; row < end; ++row)
            if (matches(row))
                rows.push_back(static_cast<std::uint32_t>(row));
        return rows;
    }

    Rows scanKeys(std::size_t begin, std::size_t end) const {
        Rows rows;
        const std::string_view block = keys_.block().substr(0, keys_.offset(end));
        std::size_t row = begin;
        while (row < end) {
            const std::size_t hit = findBytes(block, words_.front(), keys_.offset(row));
            if (hit == std::string_view::npos)
                break;
            while (keys_.offset(row + 1) <= hit)
                ++row;
            if (matches(row) && holdsWords(row, 1))
                rows.push_back(static_cast<std::uint32_t>(row));
            ++row;
        }
        return rows;
    }

    bool matches(std::size_t row) const {
        if (request_.kind && assets_.mediaKind(row) != *request_.kind)
            return false;
        if (!inFolder_)
            return true;
        return rule_ == FolderRule::Catalog ? beginsWithAnyCase(assets_.path(row), prefix_)
                                            : assets_.path(row).starts_with(prefix_);
    }

    bool holdsWords(std::size_t row, std::size_t first) const {
        return std::all_of(words_.begin() + static_cast<std::ptrdiff_t>(first), words_.end(),
                           [key = keys_.key(row)](const std::string& word) {
                               return key.find(word) != std::string_view::npos;
                           });
    }

    const FilterRequest& request_;
    const AssetList& assets_;
    const SearchKeys& keys_;
    const FolderRule rule_;
    std::vector<std::string> words_;  // folded, longest first
    bool inFolder_ = false;
    std::string prefix_;
};

}  // namespace

FilterResult filterInMemory(const FilterRequest& request, FolderRule rule) {
    return {request.assets, Pass(request, rule).run()};
}

std::string resultCountText(std::size_t count) {
    return formatCount(static_cast<std::int64_t>(count)) + " 项";
}

std::string statusAfterFilter(std::size_t count, const std::string& scanSummary) {
    return count > 0 ? scanSummary : "未找到素材 · 尝试缩短关键词、切换分类或添加文件夹";
}

AssetFilter::AssetFilter(const CatalogRepository& catalog, QObject* parent)
    : QObject(parent), catalog_(catalog), queue_("com.morvane.library.filter") {
    filtered_.assets = std::make_shared<const AssetList>();
    queryWork_.setSingleShot(true);
    queryWork_.setTimerType(Qt::PreciseTimer);
    queryWork_.setInterval(searchRest);
    connect(&queryWork_, &QTimer::timeout, this, &AssetFilter::due);
}

AssetFilter::~AssetFilter() = default;

void AssetFilter::apply(FilterRequest request) {
    const std::int64_t generation = ++filterGeneration_;
    request.scope = filterKey_;
    const FolderRule rule = catalog_.isSynchronized() ? FolderRule::Catalog : FolderRule::Plain;
    runAndDeliver(
        queue_, this, [request = std::move(request), rule] { return filterInMemory(request, rule); },
        [generation](AssetFilter& filter, Outcome<FilterResult>& outcome) {
            if (generation != filter.filterGeneration_)
                return;
            filter.deliveredGeneration_ = generation;
            filter.filtered_ = std::move(outcome.get());
            Q_EMIT filter.finished();
        });
}

void AssetFilter::applyLater() {
    queryWork_.start();
}

}  // namespace morvane
