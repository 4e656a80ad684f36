#include "catalog/asset_list.h"

#include <functional>
#include <limits>
#include <stdexcept>
#include <utility>

#include "support/json_read.h"
#include "support/natural_order.h"
#include "support/path_text.h"

namespace morvane {

namespace {

constexpr std::size_t smallestTable = 16;
constexpr std::size_t mostRoots = (std::size_t{1} << 24) - 1;

std::size_t hashOf(std::string_view path) {
    return std::hash<std::string_view>{}(path);
}

// At most half the slots are taken.
std::size_t slotsFor(std::size_t rows) {
    std::size_t count = smallestTable;
    while (count < rows * 2)
        count *= 2;
    return count;
}

bool holdsNul(std::string_view text) {
    return text.find('\0') != std::string_view::npos;
}

}  // namespace

std::string_view AssetView::name() const {
    return lastPathComponent(path);
}

std::string_view AssetView::folder() const {
    const std::size_t slash = relative.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : relative.substr(0, slash);
}

Asset AssetView::asset() const {
    return {std::string(path), std::string(root), std::string(relative), size, modified};
}

std::string_view AssetList::path(std::size_t row) const {
    const std::uint64_t begin = rows_[row].pathOffset;
    const std::uint64_t end = row + 1 < rows_.size() ? rows_[row + 1].pathOffset : paths_.size();
    return {paths_.data() + begin, end - begin};
}

std::string_view AssetList::name(std::size_t row) const {
    return lastPathComponent(path(row));
}

AssetView AssetList::at(std::size_t row) const {
    const Row& stored = rows_[row];
    AssetView view;
    view.path = path(row);
    view.root = roots_[stored.root];
    view.relative = stored.relativeOffset == storedApart
                        ? std::string_view(relatives_.at(static_cast<std::uint32_t>(row)))
                        : view.path.substr(stored.relativeOffset);
    view.size = stored.size;
    view.modified = stored.modified;
    view.mediaKind = stored.kind;
    return view;
}

std::optional<std::uint32_t> AssetList::rowOf(std::string_view path) const {
    if (slots_.empty())
        return std::nullopt;
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = hashOf(path) & mask; slots_[slot] != 0; slot = (slot + 1) & mask)
        if (this->path(slots_[slot] - 1) == path)
            return slots_[slot] - 1;
    return std::nullopt;
}

std::size_t AssetList::memoryBytes() const {
    return paths_.capacity() + rows_.capacity() * sizeof(Row) + slots_.capacity() * sizeof(std::uint32_t);
}

void AssetList::Builder::reserve(std::size_t rows, std::size_t pathBytes) {
    list_.rows_.reserve(rows);
    list_.paths_.reserve(pathBytes);
    growSlots(rows);
}

void AssetList::Builder::growSlots(std::size_t rows) {
    const std::size_t wanted = slotsFor(rows);
    if (wanted <= list_.slots_.size())
        return;
    list_.slots_.assign(wanted, 0);
    const std::size_t mask = wanted - 1;
    for (std::size_t row = 0; row < list_.rows_.size(); ++row) {
        std::size_t slot = hashOf(list_.path(row)) & mask;
        while (list_.slots_[slot] != 0)
            slot = (slot + 1) & mask;
        list_.slots_[slot] = static_cast<std::uint32_t>(row + 1);
    }
}

std::uint32_t AssetList::Builder::internRoot(std::string_view root) {
    if (!list_.rows_.empty()) {  // rows of one folder come together
        const std::uint32_t last = list_.rows_.back().root;
        if (list_.roots_[last] == root)
            return last;
    }
    const auto [found, isNew] =
        rootIds_.try_emplace(std::string(root), static_cast<std::uint32_t>(list_.roots_.size()));
    if (isNew) {
        if (list_.roots_.size() > mostRoots)
            throw std::length_error("too many library folders");
        list_.roots_.emplace_back(root);
    }
    return found->second;
}

bool AssetList::Builder::add(std::string_view path, std::string_view root, std::string_view relative,
                             std::int64_t size, double modified) {
    const std::size_t row = list_.rows_.size();
    if (row >= std::numeric_limits<std::uint32_t>::max() - 1)
        throw std::length_error("too many assets");
    growSlots(row + 1);
    const std::size_t mask = list_.slots_.size() - 1;
    std::size_t slot = hashOf(path) & mask;
    for (; list_.slots_[slot] != 0; slot = (slot + 1) & mask)
        if (list_.path(list_.slots_[slot] - 1) == path)
            return false;

    Row stored;
    stored.pathOffset = list_.paths_.size();
    stored.size = size;
    stored.modified = modified;
    stored.root = internRoot(root);
    stored.kind = kindOfPath(path);
    if (path.ends_with(relative)) {
        stored.relativeOffset = static_cast<std::uint32_t>(path.size() - relative.size());
    } else {
        stored.relativeOffset = storedApart;
        list_.relatives_.emplace(static_cast<std::uint32_t>(row), relative);
    }
    list_.paths_.insert(list_.paths_.end(), path.begin(), path.end());
    list_.rows_.push_back(stored);
    list_.slots_[slot] = static_cast<std::uint32_t>(row + 1);
    return true;
}

SharedAssets AssetList::Builder::finish() {
    rootIds_.clear();
    list_.paths_.shrink_to_fit();
    list_.rows_.shrink_to_fit();
    return std::make_shared<const AssetList>(std::exchange(list_, AssetList()));
}

SharedAssets AssetList::Builder::finishSorted() {
    const std::size_t count = list_.rows_.size();
    std::vector<std::string_view> names(count);
    for (std::size_t row = 0; row < count; ++row)
        names[row] = list_.name(row);
    const std::vector<std::uint32_t> order = naturalOrder(names);
    names = {};
    return finishInOrder(order);
}

SharedAssets AssetList::Builder::finishInOrder(const std::vector<std::uint32_t>& order) {
    const std::size_t count = list_.rows_.size();
    AssetList sorted;
    sorted.roots_ = list_.roots_;
    sorted.rows_.reserve(count);
    sorted.paths_.reserve(list_.paths_.size());
    std::vector<std::uint32_t> newRow(count);
    for (const std::uint32_t row : order) {
        const auto place = static_cast<std::uint32_t>(sorted.rows_.size());
        newRow[row] = place;
        sorted.rows_.push_back(list_.rows_[row]);
        sorted.rows_.back().pathOffset = sorted.paths_.size();
        const std::string_view path = list_.path(row);
        sorted.paths_.insert(sorted.paths_.end(), path.begin(), path.end());
        if (list_.rows_[row].relativeOffset == storedApart)
            sorted.relatives_.emplace(place, std::move(list_.relatives_.at(row)));
    }
    sorted.slots_ = std::move(list_.slots_);
    for (std::uint32_t& slot : sorted.slots_)
        if (slot != 0)
            slot = newRow[slot - 1] + 1;
    list_ = AssetList();
    rootIds_.clear();
    return std::make_shared<const AssetList>(std::move(sorted));
}

nlohmann::json encodeAssets(const AssetList& list) {
    auto array = nlohmann::json::array();
    for (std::size_t row = 0; row < list.size(); ++row)
        array.push_back(encodeAsset(list.asset(row)));
    return array;
}

SharedAssets decodeAssets(std::string_view json) {
    // Each record is taken and thrown away as soon as it is read: the whole document as a tree would be
    // many times the size of the list.
    std::vector<Asset> assets;
    const auto takeRecord = [&assets](int depth, nlohmann::json::parse_event_t event, nlohmann::json& value) {
        if (depth != 1 || event != nlohmann::json::parse_event_t::object_end)
            return true;
        Asset asset = decodeAsset(value);
        if (!holdsNul(asset.path) && !holdsNul(asset.root) && !holdsNul(asset.relative))
            assets.push_back(std::move(asset));
        return false;
    };
    nlohmann::json rest;
    try {
        rest = nlohmann::json::parse(json, takeRecord);
    } catch (const nlohmann::json::exception&) {
        throw JsonError();
    }
    if (!rest.is_array() || !rest.empty())
        throw JsonError();

    std::unordered_map<std::string_view, std::size_t> lastOf;
    for (std::size_t index = 0; index < assets.size(); ++index)
        lastOf[assets[index].path] = index;
    AssetList::Builder builder;
    for (std::size_t index = 0; index < assets.size(); ++index) {
        const Asset& asset = assets[index];
        if (lastOf[asset.path] == index)
            builder.add(asset.path, asset.root, asset.relative, asset.size, asset.modified);
    }
    return builder.finish();
}

}  // namespace morvane
