#include "support/uuid.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstddef>

#include "support/system_error.h"

namespace morvane {

namespace {

constexpr std::size_t textLength = 36;

bool isDashPosition(std::size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}

using UuidBytes = std::array<unsigned char, 16>;

/// Fetched for several at once: a plan of many files would spend its time in the system otherwise.
UuidBytes randomBytes() {
    struct Store {
        std::array<UuidBytes, 16> values;  // 256 bytes: so few come whole or not at all
        std::size_t left = 0;
    };
    thread_local Store store;
    while (store.left == 0) {
        if (::getrandom(store.values.data(), sizeof store.values, 0) == sizeof store.values)
            store.left = store.values.size();
        else if (errno != EINTR)
            throwErrno();
    }
    return store.values[--store.left];
}

}  // namespace

std::string newUuid() {
    UuidBytes bytes = randomBytes();
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // version 4: random
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);  // variant of RFC 4122
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(textLength);
    for (const unsigned char byte : bytes) {
        if (isDashPosition(text.size()))
            text += '-';
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

std::optional<std::string> parseUuid(std::string_view text) {
    if (text.size() != textLength)
        return std::nullopt;
    std::string canonical(text);
    for (std::size_t index = 0; index < textLength; ++index) {
        char& byte = canonical[index];
        if (byte >= 'a' && byte <= 'f')
            byte = static_cast<char>(byte - ('a' - 'A'));
        const bool isDigit = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F');
        if (isDashPosition(index) ? byte != '-' : !isDigit)
            return std::nullopt;
    }
    return canonical;
}

}  // namespace morvane
