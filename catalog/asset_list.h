// The one list of indexed assets, shared by every thread.
//
// A list is built once and never changes. Its paths lie in one block of bytes in list order, the
// library folders are stored once, and `relative` is a place inside the path (stored apart only
// where it is no ending of it), so a million assets of ordinary path length take about 110 MB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "catalog/asset.h"

namespace morvane {

/// One row. The texts live as long as the list they come from.
struct AssetView {
    std::string_view path;
    std::string_view root;
    std::string_view relative;
    std::int64_t size = 0;
    double modified = 0;
    MediaKind mediaKind = MediaKind::Other;

    std::string_view kind() const { return kindLabel(mediaKind); }
    std::string_view symbol() const { return kindSymbol(mediaKind); }
    /// Last path component.
    std::string_view name() const;
    /// `relative` without its last component; empty for a file directly in its library folder.
    std::string_view folder() const;
    Asset asset() const;
};

class AssetList {
public:
    /// Makes a list; the one way to a list with rows.
    class Builder;

    AssetList() = default;

    std::size_t size() const { return rows_.size(); }
    bool empty() const { return rows_.empty(); }
    /// `row` must be below size().
    AssetView at(std::size_t row) const;
    Asset asset(std::size_t row) const { return at(row).asset(); }
    std::string_view path(std::size_t row) const;
    std::string_view name(std::size_t row) const;
    MediaKind mediaKind(std::size_t row) const { return rows_[row].kind; }
    /// The row that holds `path`; paths are unique within a list.
    std::optional<std::uint32_t> rowOf(std::string_view path) const;

    /// The distinct library folders of the rows, in order of first appearance.
    const std::vector<std::string>& roots() const { return roots_; }
    /// Index into roots().
    std::uint32_t rootOf(std::size_t row) const { return rows_[row].root; }
    /// Bytes held, for the memory budget.
    std::size_t memoryBytes() const;

private:
    struct Row {
        std::uint64_t pathOffset = 0;  ///< the path ends where the next row's begins
        std::int64_t size = 0;
        double modified = 0;
        std::uint32_t relativeOffset = 0;  ///< within the path; `storedApart` where it is no ending of it
        std::uint32_t root : 24 = 0;
        MediaKind kind : 8 = MediaKind::Other;
    };
    static constexpr std::uint32_t storedApart = UINT32_MAX;

    std::vector<char> paths_;
    std::vector<Row> rows_;
    std::vector<std::string> roots_;
    std::unordered_map<std::uint32_t, std::string> relatives_;  ///< by row, only those stored apart
    std::vector<std::uint32_t> slots_;                          ///< open addressing: row + 1, 0 is free
};

using SharedAssets = std::shared_ptr<const AssetList>;

/// Rows come in the order of the calls; a path that is already in stays as it is.
class AssetList::Builder {
public:
    Builder() = default;

    /// Room for `rows` rows with `pathBytes` bytes of paths altogether.
    void reserve(std::size_t rows, std::size_t pathBytes);
    /// Appends a row; false, changing nothing, when the path is already in the list.
    bool add(std::string_view path, std::string_view root, std::string_view relative, std::int64_t size,
             double modified);
    bool add(const AssetView& row) { return add(row.path, row.root, row.relative, row.size, row.modified); }
    bool contains(std::string_view path) const { return list_.rowOf(path).has_value(); }
    std::size_t size() const { return list_.size(); }

    /// The list in the order of the calls. The builder is empty afterwards.
    SharedAssets finish();
    /// The list ordered by file name as a file browser orders, equal names in the order of the calls.
    SharedAssets finishSorted();
    /// The list in a given order: order[i] is the number of the call that made row i, each exactly once.
    SharedAssets finishInOrder(const std::vector<std::uint32_t>& order);

private:
    std::uint32_t internRoot(std::string_view root);
    void growSlots(std::size_t rows);

    AssetList list_;
    std::unordered_map<std::string, std::uint32_t> rootIds_;
};

/// Encodes the rows as the array that "index.json" holds and `search --json` prints.
nlohmann::json encodeAssets(const AssetList& list);
/// Reads "index.json": a JSON array of asset records. Of two records of one path the later one counts; a
/// record with a NUL character in a path names no file and is left out.
/// Throws JsonError for anything else.
SharedAssets decodeAssets(std::string_view json);

}  // namespace morvane
