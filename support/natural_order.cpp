#include "support/natural_order.h"

#include <algorithm>
#include <cstring>
#include <future>
#include <limits>
#include <stdexcept>
#include <utility>

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/ustring.h>

#include "support/user_locale.h"

namespace morvane {

namespace {

constexpr std::size_t twoThreadsFrom = 4096;
constexpr std::size_t keyBlockBytes = std::size_t{1} << 20;

void require(UErrorCode status) {
    if (U_FAILURE(status))
        throw std::runtime_error(u_errorName(status));
}

std::unique_ptr<icu::Collator> makeCollator() {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> made(
        icu::Collator::createInstance(icu::Locale(userLocale("LC_COLLATE").c_str()), status));
    require(status);
    made->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    made->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status);  // accents differ, case does not
    require(status);
    return made;
}

// Opening a collator reads its tables; a clone shares them. One clone a thread.
const icu::Collator& collator() {
    static const std::unique_ptr<icu::Collator> prototype = makeCollator();
    thread_local const std::unique_ptr<icu::Collator> mine(prototype->clone());
    // The analyzer ends thread_local objects with the function.
    return *mine;  // NOLINT(clang-analyzer-cplusplus.NewDelete)
}

// UTF-16 in a buffer that is used again; bytes that are no UTF-8 become U+FFFD.
class WideText {
public:
    void assign(std::string_view utf8) {
        if (utf8.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
            throw std::length_error("name too long to compare");
        if (buffer_.size() < utf8.size())
            buffer_.resize(utf8.size());
        UErrorCode status = U_ZERO_ERROR;
        u_strFromUTF8WithSub(buffer_.data(), static_cast<std::int32_t>(buffer_.size()), &length_, utf8.data(),
                             static_cast<std::int32_t>(utf8.size()), 0xFFFD, nullptr, &status);
        if (status == U_STRING_NOT_TERMINATED_WARNING)
            status = U_ZERO_ERROR;
        require(status);
    }
    const char16_t* data() const { return buffer_.data(); }
    std::int32_t length() const { return length_; }

private:
    std::vector<char16_t> buffer_ = std::vector<char16_t>(256);
    std::int32_t length_ = 0;
};

// A sort key: its first eight bytes as a number, the rest as zero-terminated bytes (a key holds no
// zero but its last). Almost every comparison ends at the number.
struct KeyedName {
    std::uint64_t prefix = 0;
    const char* rest = nullptr;
    std::uint32_t index = 0;

    bool operator<(const KeyedName& other) const {
        if (prefix != other.prefix)
            return prefix < other.prefix;
        if (const int order = std::strcmp(rest, other.rest); order != 0)
            return order < 0;
        return index < other.index;
    }
};

// Sorted keys of a part of the names; the blocks hold what `rest` points to.
struct KeyedPart {
    std::vector<KeyedName> names;
    std::vector<std::unique_ptr<char[]>> blocks;
};

class KeyStore {
public:
    explicit KeyStore(KeyedPart& part) : part_(part) {}

    // A copy of `bytes` that lives as long as the part.
    const char* keep(const char* bytes, std::size_t count) {
        if (left_ < count) {
            left_ = std::max(count, keyBlockBytes);
            part_.blocks.push_back(std::make_unique<char[]>(left_));
            next_ = part_.blocks.back().get();
        }
        std::memcpy(next_, bytes, count);
        left_ -= count;
        return std::exchange(next_, next_ + count);
    }

private:
    KeyedPart& part_;
    char* next_ = nullptr;
    std::size_t left_ = 0;
};

KeyedName keyed(const std::vector<char>& key, std::size_t length, std::uint32_t index, KeyStore& store) {
    constexpr std::size_t prefixBytes = sizeof(std::uint64_t);
    KeyedName name;
    name.index = index;
    for (std::size_t byte = 0; byte < prefixBytes; ++byte)
        name.prefix = (name.prefix << 8) | (byte < length ? static_cast<unsigned char>(key[byte]) : 0U);
    name.rest = length > prefixBytes ? store.keep(key.data() + prefixBytes, length - prefixBytes) : "";
    return name;
}

KeyedPart sortedPart(const std::vector<std::string_view>& names, std::size_t begin, std::size_t end) {
    const icu::Collator& rules = collator();
    KeyedPart part;
    part.names.reserve(end - begin);
    KeyStore store(part);
    WideText wide;
    std::vector<char> key(512);
    for (std::size_t index = begin; index < end; ++index) {
        wide.assign(names[index]);
        const auto make = [&] {
            return static_cast<std::size_t>(rules.getSortKey(wide.data(), wide.length(),
                                                             reinterpret_cast<std::uint8_t*>(key.data()),
                                                             static_cast<std::int32_t>(key.size())));
        };
        std::size_t length = make();  // the length it needs, zero included, whatever the room
        if (length > key.size()) {
            key.resize(length);
            length = make();
        }
        part.names.push_back(keyed(key, length, static_cast<std::uint32_t>(index), store));
    }
    std::sort(part.names.begin(), part.names.end());
    return part;
}

}  // namespace

int compareNaturally(std::string_view left, std::string_view right) {
    thread_local WideText wideLeft;
    thread_local WideText wideRight;
    wideLeft.assign(left);
    wideRight.assign(right);
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult order =
        collator().compare(wideLeft.data(), wideLeft.length(), wideRight.data(), wideRight.length(), status);
    require(status);
    return order;
}

std::vector<std::uint32_t> naturalOrder(const std::vector<std::string_view>& names) {
    const std::size_t middle = names.size() < twoThreadsFrom ? names.size() : names.size() / 2;
    std::future<KeyedPart> second;
    if (middle < names.size())
        second = std::async(std::launch::async, [&] { return sortedPart(names, middle, names.size()); });
    const KeyedPart left = sortedPart(names, 0, middle);
    const KeyedPart right = second.valid() ? second.get() : KeyedPart{};

    std::vector<std::uint32_t> order;
    order.reserve(names.size());
    auto a = left.names.begin();
    auto b = right.names.begin();
    while (a != left.names.end() && b != right.names.end())
        order.push_back(*b < *a ? (b++)->index : (a++)->index);
    for (; a != left.names.end(); ++a)
        order.push_back(a->index);
    for (; b != right.names.end(); ++b)
        order.push_back(b->index);
    return order;
}

}  // namespace morvane
