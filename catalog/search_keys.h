// The folded search keys of a list's rows in one block of memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/asset_list.h"

namespace morvane {

/// Text folded for searching. NUL and the two noncharacters that SQLite's LIKE cannot tell from U+FFFD
/// become U+FFFD, so that a plain substring test and LIKE always agree.
std::string searchFold(std::string_view utf8);
/// The search key of an asset: file name, " ", `relative`, " ", last component of `root`, folded.
std::string searchKey(std::string_view path, std::string_view relative, std::string_view root);
/// The words of a search text: folded, split at white space, empty pieces dropped.
std::vector<std::string> searchWords(std::string_view text);

/// Row i of the keys belongs to row i of the list they were made from. Never changes.
class SearchKeys {
public:
    SearchKeys() = default;
    /// The keys of every row, made by two threads for large lists. Any thread.
    explicit SearchKeys(const AssetList& list);
    /// The keys of `list`, taking over those of `oldKeys` for every row whose path `oldList` holds with
    /// the same `relative` and `root`.
    SearchKeys(const AssetList& list, const AssetList& oldList, const SearchKeys& oldKeys);

    std::size_t size() const { return offsets_.empty() ? 0 : offsets_.size() - 1; }
    std::string_view key(std::size_t row) const;
    /// All keys, each followed by one NUL byte; no key holds one.
    std::string_view block() const { return {block_.data(), block_.size()}; }
    /// Where the key of `row` begins in block(); offset(size()) is its end.
    std::uint64_t offset(std::size_t row) const { return offsets_[row]; }
    std::size_t memoryBytes() const;

private:
    std::vector<char> block_;
    std::vector<std::uint64_t> offsets_;
};

using SharedKeys = std::shared_ptr<const SearchKeys>;

}  // namespace morvane
