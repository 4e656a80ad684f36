#include "support/file_url.h"

#include <cstddef>
#include <utility>

#include "support/path_text.h"

namespace morvane {

namespace {

constexpr std::string_view unescapedMarks = "!$&'()*+,-./:=@_~";

bool isAsciiLetter(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}
bool isAsciiDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

std::string escaped(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        if (isAsciiLetter(byte) || isAsciiDigit(byte) ||
            unescapedMarks.find(byte) != std::string_view::npos) {
            text += byte;
        } else {
            const auto value = static_cast<unsigned char>(byte);
            text += '%';
            text += digits[value >> 4];
            text += digits[value & 0xF];
        }
    }
    return text;
}

int hexValue(char digit) {
    if (isAsciiDigit(digit))
        return digit - '0';
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    return -1;
}

// Nothing for a broken escape or a NUL byte, escaped or not.
std::optional<std::string> unescaped(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        char byte = text[index];
        if (byte == '%') {
            const int high = index + 1 < text.size() ? hexValue(text[index + 1]) : -1;
            const int low = index + 2 < text.size() ? hexValue(text[index + 2]) : -1;
            if (high < 0 || low < 0)
                return std::nullopt;
            byte = static_cast<char>(high * 16 + low);
            index += 2;
        }
        if (byte == '\0')
            return std::nullopt;
        bytes += byte;
    }
    return bytes;
}

// Length of the scheme ("file"), 0 when the text begins with none.
std::size_t schemeLength(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || !isAsciiLetter(text.front()))
        return 0;
    for (const char byte : text.substr(0, colon)) {
        if (!isAsciiLetter(byte) && !isAsciiDigit(byte) && byte != '+' && byte != '-' && byte != '.')
            return 0;
    }
    return colon;
}

bool equalsIgnoringAsciiCase(std::string_view text, std::string_view lower) {
    if (text.size() != lower.size())
        return false;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char byte = text[index];
        if ((byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte) != lower[index])
            return false;
    }
    return true;
}

std::string_view withoutQuery(std::string_view text) {
    return text.substr(0, text.find_first_of("?#"));
}

FileUrl location(std::string path, bool directory) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    const bool isRoot = path == "/";
    return {std::move(path), directory || isRoot, {}};
}

// `rest` is what follows "file:".
std::optional<FileUrl> parseFile(std::string_view rest) {
    rest = withoutQuery(rest);
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        const std::size_t slash = rest.find('/');
        if (slash == std::string_view::npos)
            return std::nullopt;
        const std::string_view host = rest.substr(0, slash);
        if (!host.empty() && !equalsIgnoringAsciiCase(host, "localhost"))
            return std::nullopt;
        rest.remove_prefix(slash);
    }
    if (!rest.starts_with("/"))
        return std::nullopt;
    std::optional<std::string> path = unescaped(rest);
    if (!path)
        return std::nullopt;
    const bool directory = path->back() == '/';
    return location(*std::move(path), directory);
}

}  // namespace

std::string FileUrl::lastComponent() const {
    if (isFile())
        return std::string(lastPathComponent(path));
    std::string_view text = withoutQuery(other);
    text.remove_prefix(schemeLength(text) + 1);
    return unescaped(lastPathComponent(text)).value_or(std::string());
}

FileUrl FileUrl::appending(std::string_view component, bool directory) const {
    if (isFile())
        return location(joinPath(path, component), directory);
    const std::string_view before = withoutQuery(other);
    std::string text = joinPath(before, escaped(component));
    if (directory)
        text += '/';
    text += std::string_view(other).substr(before.size());
    return {{}, directory, std::move(text)};
}

FileUrl fileLocation(std::string path) {
    return location(std::move(path), false);
}

FileUrl folderLocation(std::string path) {
    return location(std::move(path), true);
}

std::string absoluteText(const FileUrl& url) {
    if (!url.isFile())
        return url.other;
    std::string text = "file://" + escaped(url.path);
    if (url.isDirectory && text.back() != '/')
        text += '/';
    return text;
}

std::optional<FileUrl> parseUrl(std::string_view text) {
    const std::size_t scheme = schemeLength(text);
    if (scheme == 0 || scheme + 1 == text.size())
        return std::nullopt;
    if (equalsIgnoringAsciiCase(text.substr(0, scheme), "file"))
        return parseFile(text.substr(scheme + 1));
    if (!unescaped(text))
        return std::nullopt;
    return FileUrl{{}, withoutQuery(text).back() == '/', std::string(text)};
}

}  // namespace morvane
