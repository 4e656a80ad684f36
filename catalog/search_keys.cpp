#include "catalog/search_keys.h"

#include <algorithm>
#include <future>
#include <iterator>
#include <utility>

#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

constexpr std::size_t twoThreadsFrom = 4096;
constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD

// U+FFFE and U+FFFF are EF BF BE and EF BF BF.
void unifyNoncharacters(std::string& text) {
    for (std::size_t at = text.find("\xEF\xBF"); at != std::string::npos; at = text.find("\xEF\xBF", at + 1))
        if (at + 2 < text.size() && static_cast<unsigned char>(text[at + 2]) >= 0xBE)
            text[at + 2] = replacement[2];
}

struct KeyPart {
    std::vector<char> block;
    std::vector<std::uint64_t> offsets;  // where each key begins in `block`
};

KeyPart keysOfRows(const AssetList& list, std::size_t begin, std::size_t end) {
    KeyPart part;
    part.offsets.reserve(end - begin);
    for (std::size_t row = begin; row < end; ++row) {
        const AssetView asset = list.at(row);
        const std::string key = searchKey(asset.path, asset.relative, asset.root);
        part.offsets.push_back(part.block.size());
        part.block.insert(part.block.end(), key.begin(), key.end());
        part.block.push_back('\0');
    }
    return part;
}

void append(KeyPart& whole, const KeyPart& part) {
    const std::uint64_t shift = whole.block.size();
    whole.block.insert(whole.block.end(), part.block.begin(), part.block.end());
    std::transform(part.offsets.begin(), part.offsets.end(), std::back_inserter(whole.offsets),
                   [shift](std::uint64_t offset) { return offset + shift; });
}

}  // namespace

std::string searchFold(std::string_view utf8) {
    std::string folded = fold(utf8);
    for (std::size_t at = folded.find('\0'); at != std::string::npos; at = folded.find('\0', at))
        folded.replace(at, 1, replacement);
    unifyNoncharacters(folded);
    return folded;
}

std::string searchKey(std::string_view path, std::string_view relative, std::string_view root) {
    std::string text;
    const std::string_view name = lastPathComponent(path);
    const std::string_view rootName = lastPathComponent(root);
    text.reserve(name.size() + relative.size() + rootName.size() + 2);
    text.append(name).append(" ").append(relative).append(" ").append(rootName);
    return searchFold(text);
}

std::vector<std::string> searchWords(std::string_view text) {
    return splitAtWhitespace(searchFold(text));
}

SearchKeys::SearchKeys(const AssetList& list) {
    const std::size_t count = list.size();
    const std::size_t middle = count >= twoThreadsFrom ? count / 2 : count;
    auto second = std::async(middle < count ? std::launch::async : std::launch::deferred,
                             [&list, middle, count] { return keysOfRows(list, middle, count); });
    KeyPart whole = keysOfRows(list, 0, middle);
    const KeyPart rest = second.get();
    whole.block.reserve(whole.block.size() + rest.block.size());
    append(whole, rest);
    whole.offsets.push_back(whole.block.size());
    whole.block.shrink_to_fit();
    block_ = std::move(whole.block);
    offsets_ = std::move(whole.offsets);
}

SearchKeys::SearchKeys(const AssetList& list, const AssetList& oldList, const SearchKeys& oldKeys) {
    offsets_.reserve(list.size() + 1);
    block_.reserve(oldKeys.block_.size());
    for (std::size_t row = 0; row < list.size(); ++row) {
        const AssetView asset = list.at(row);
        offsets_.push_back(block_.size());
        const auto oldRow = oldList.rowOf(asset.path);
        const bool taken = oldRow && oldList.at(*oldRow).relative == asset.relative &&
                           oldList.at(*oldRow).root == asset.root;
        const std::string made = taken ? std::string() : searchKey(asset.path, asset.relative, asset.root);
        const std::string_view key = taken ? oldKeys.key(*oldRow) : std::string_view(made);
        block_.insert(block_.end(), key.begin(), key.end());
        block_.push_back('\0');
    }
    offsets_.push_back(block_.size());
}

std::string_view SearchKeys::key(std::size_t row) const {
    return {block_.data() + offsets_[row], offsets_[row + 1] - offsets_[row] - 1};
}

std::size_t SearchKeys::memoryBytes() const {
    return block_.capacity() + offsets_.capacity() * sizeof(std::uint64_t);
}

}  // namespace morvane
