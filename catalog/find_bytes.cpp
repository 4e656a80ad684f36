#include "catalog/find_bytes.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace morvane {

namespace {

constexpr std::size_t laneBytes = 16;  // one register of every x86-64 and arm64 processor
constexpr std::size_t lanes = 4;
constexpr std::size_t stepBytes = laneBytes * lanes;

using Lane = signed char __attribute__((vector_size(laneBytes)));

Lane load(const char* bytes) {
    Lane lane;
    std::memcpy(&lane, bytes, sizeof lane);
    return lane;
}

Lane filledWith(char byte) {
    Lane lane{};
    for (std::size_t index = 0; index < laneBytes; ++index)
        lane[index] = static_cast<signed char>(byte);
    return lane;
}

bool anySet(Lane lane) {
    const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(lane);
    return (halves[0] | halves[1]) != 0;
}

// The first place in [begin, end) where the word stands; it may reach beyond `end`.
const char* findAmong(const char* begin, const char* end, std::string_view word) {
    for (const char* at = begin; at < end; ++at)
        if (*at == word.front() && std::memcmp(at, word.data(), word.size()) == 0)
            return at;
    return nullptr;
}

}  // namespace

std::size_t findBytes(std::string_view block, std::string_view word, std::size_t from) {
    if (block.size() < word.size() || from > block.size() - word.size())
        return std::string_view::npos;
    const char* const start = block.data();
    const char* const end = start + (block.size() - word.size()) + 1;  // behind the last place it fits
    const Lane first = filledWith(word.front());
    const Lane last = filledWith(word.back());
    const std::size_t reach = word.size() - 1;
    const char* at = start + from;
    for (; static_cast<std::size_t>(end - at) >= stepBytes; at += stepBytes) {
        std::array<Lane, lanes> hits;
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const char* const bytes = at + lane * laneBytes;
            hits[lane] = (load(bytes) == first) & (load(bytes + reach) == last);
        }
        if (!anySet(hits[0] | hits[1] | hits[2] | hits[3]))
            continue;
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            if (!anySet(hits[lane]))
                continue;
            const char* const bytes = at + lane * laneBytes;
            if (const char* found = findAmong(bytes, bytes + laneBytes, word))
                return static_cast<std::size_t>(found - start);
        }
    }
    const char* const found = findAmong(at, end, word);
    return found == nullptr ? std::string_view::npos : static_cast<std::size_t>(found - start);
}

}  // namespace morvane
