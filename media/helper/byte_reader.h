// Numbers out of a file's bytes; reading beyond the end refuses the file.
#pragma once

#include <cstdint>
#include <string_view>

#include "media/helper/refusal.h"

namespace morvane {

class ByteReader {
public:
    explicit ByteReader(std::string_view bytes) : bytes_(bytes) {}

    std::uint8_t u8() { return static_cast<std::uint8_t>(take(1)[0]); }
    std::uint16_t big16() { return static_cast<std::uint16_t>(big(2)); }
    std::uint32_t big32() { return static_cast<std::uint32_t>(big(4)); }
    std::uint64_t big64() { return big(8); }
    std::uint16_t little16() { return static_cast<std::uint16_t>(little(2)); }
    std::uint32_t little32() { return static_cast<std::uint32_t>(little(4)); }

    /// The next `count` bytes.
    std::string_view take(std::uint64_t count) {
        if (count > bytes_.size() - offset_)
            throw Refusal("文件不完整");
        const std::string_view piece = bytes_.substr(offset_, count);
        offset_ += count;
        return piece;
    }
    void skip(std::uint64_t count) { take(count); }
    void moveTo(std::uint64_t offset) {
        if (offset > bytes_.size())
            throw Refusal("文件不完整");
        offset_ = offset;
    }
    std::uint64_t offset() const { return offset_; }
    bool atEnd() const { return offset_ == bytes_.size(); }

private:
    std::uint64_t big(unsigned count) {
        std::uint64_t value = 0;
        for (const char byte : take(count))
            value = value << 8 | static_cast<std::uint8_t>(byte);
        return value;
    }
    std::uint64_t little(unsigned count) {
        std::uint64_t value = 0;
        unsigned shift = 0;
        for (const char byte : take(count)) {
            value |= std::uint64_t{static_cast<std::uint8_t>(byte)} << shift;
            shift += 8;
        }
        return value;
    }

    std::string_view bytes_;
    std::uint64_t offset_ = 0;
};

}  // namespace morvane
