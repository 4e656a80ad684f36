#include "project/safe_paths.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "project/project_errors.h"
#include "project/project_template.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

constexpr std::size_t componentCharacters = 180;
constexpr std::size_t longestName = NAME_MAX;

/// Bytes of the unsafe character at `at`, 0 when the character there is safe. Cc is U+0000..1F and
/// U+007F..9F; the latter are C2 80..9F in UTF-8.
std::size_t unsafeLength(std::string_view text, std::size_t at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x20 || byte == 0x7F || byte == '/' || byte == ':')
        return 1;
    if (byte == 0xC2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0)
        return 2;
    return 0;
}

std::string numbered(std::string_view path, unsigned number) {
    const std::string_view extension = pathExtension(path);
    std::string_view stem = withoutExtension(path);
    std::string tail = " (" + std::to_string(number) + ")";
    if (!extension.empty())
        tail.append(".").append(extension);
    const std::string_view name = lastPathComponent(stem);
    if (lastPathComponent(path).size() <= longestName && name.size() + tail.size() > longestName) {
        const std::size_t folder = stem.size() - name.size();
        std::size_t characters = characterCount(name);
        std::size_t bytes = name.size();
        while (characters > 1 && bytes + tail.size() > longestName)
            bytes = characterOffset(name, --characters);
        stem = stem.substr(0, folder + bytes);
    }
    return std::string(stem).append(tail);
}

}  // namespace

FileUrl canonical(const FileUrl& url, LocationKind kind) {
    const std::unique_ptr<char, decltype(&std::free)> real(
        url.isFile() ? ::realpath(url.path.c_str(), nullptr) : nullptr, &std::free);
    if (!real)
        failWith(project_text::unreachablePathPrefix, shownName(url.lastComponent()));
    return kind == LocationKind::Folder ? folderLocation(real.get()) : fileLocation(real.get());
}

bool hasUnsafeCharacter(std::string_view text) {
    for (std::size_t at = 0; at < text.size(); ++at)
        if (unsafeLength(text, at) > 0)
            return true;
    return false;
}

std::string safeComponent(std::string_view text) {
    const std::string valid = withInvalidBytesReplaced(text, "_");
    std::string safe;
    safe.reserve(valid.size());
    for (std::size_t at = 0; at < valid.size();) {
        const std::size_t unsafe = unsafeLength(valid, at);
        safe.push_back(unsafe > 0 ? '_' : valid[at]);
        at += std::max<std::size_t>(unsafe, 1);
    }
    if (safe.size() > componentCharacters)
        safe.resize(characterOffset(safe, componentCharacters));
    return safe.empty() || safe == "." || safe == ".." ? "素材" : safe;
}

bool safeRelative(std::string_view path) {
    std::size_t components = 0;
    for (std::size_t begin = 0; begin <= path.size(); ++components) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string_view piece = path.substr(begin, end - begin);
        if (piece.empty() || piece == "." || piece == ".." || piece.find('\0') != std::string_view::npos)
            return false;
        if (components == 0 &&
            std::find(templateFolders.begin(), templateFolders.end(), piece) == templateFolders.end())
            return false;
        begin = end + 1;
    }
    return components >= 2;
}

std::string ReservedNames::withFreeFolders(std::string_view path) const {
    std::string result;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = path.find('/', begin);
        if (end == std::string_view::npos)
            return result.append(path.substr(begin));
        const std::string folder = result + std::string(path.substr(begin, end - begin));
        std::string candidate = folder;
        for (unsigned number = 2; files_.contains(foldCaseAndDiacritics(candidate)); ++number)
            candidate = numbered(folder, number);
        result = candidate + "/";
        begin = end + 1;
    }
    return result;
}

/// Whether a folder of `key` is taken as a file.
bool ReservedNames::isBelowFile(std::string_view key) const {
    for (std::size_t slash = key.rfind('/'); slash != std::string_view::npos; slash = key.rfind('/')) {
        key = key.substr(0, slash);
        if (folders_.contains(key))
            return false;
        if (files_.contains(key))
            return true;
    }
    return false;
}

std::string ReservedNames::unique(std::string_view path) {
    std::string wanted(path);
    std::string key = foldCaseAndDiacritics(wanted);
    if (isBelowFile(key)) {
        wanted = withFreeFolders(wanted);
        key = foldCaseAndDiacritics(wanted);
    }
    std::string candidate = wanted;
    for (unsigned number = 2; folders_.contains(key) || !files_.insert(key).second; ++number) {
        candidate = numbered(wanted, number);
        key = foldCaseAndDiacritics(candidate);
    }
    std::string_view folder = key;
    for (std::size_t slash = folder.rfind('/'); slash != std::string_view::npos; slash = folder.rfind('/')) {
        folder = folder.substr(0, slash);
        if (folders_.contains(folder))
            break;
        folders_.emplace(folder);
    }
    return candidate;
}

bool isOtherDate(double left, double right) {
    constexpr double tolerance = 1'000;
    return !(std::abs(std::round(left * 1e6) - std::round(right * 1e6)) < tolerance);
}

FileAttributes attributesOf(const struct stat& status) {
    return {status.st_size,
            static_cast<double>(status.st_mtim.tv_sec) + static_cast<double>(status.st_mtim.tv_nsec) / 1e9};
}

FileAttributes attributes(const FileUrl& url) {
    struct stat status {};
    if (!url.isFile() || ::lstat(url.path.c_str(), &status) != 0)
        failWith(project_text::unreachablePathPrefix, shownName(url.lastComponent()));
    if (!S_ISREG(status.st_mode))
        failWith(project_text::sourceNotRegularPrefix, shownName(url.lastComponent()));
    return attributesOf(status);
}

}  // namespace morvane
