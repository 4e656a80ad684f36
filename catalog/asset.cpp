#include "catalog/asset.h"

#include <algorithm>
#include <cstddef>

#include "support/json_read.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char byte) { return (byte & 0x80) == 0; });
}

// The extension in lower case; no list holds one longer than the buffer, so a longer one gives
// no text. The common case makes no allocation: the scan asks this of every name.
class LoweredExtension {
public:
    explicit LoweredExtension(std::string_view path) {
        const std::string_view extension = pathExtension(path);
        if (!isAscii(extension)) {
            lowered_ = lowerCased(extension);
            text_ = lowered_;
            return;
        }
        if (extension.size() > buffer_.size())
            return;
        for (std::size_t index = 0; index < extension.size() && index < buffer_.size(); ++index) {
            const char byte = extension[index];
            buffer_[index] = byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
        }
        text_ = {buffer_.data(), extension.size()};
    }
    LoweredExtension(const LoweredExtension&) = delete;
    LoweredExtension& operator=(const LoweredExtension&) = delete;

    template <std::size_t Count>
    bool isIn(const std::array<std::string_view, Count>& extensions) const {
        return std::find(extensions.begin(), extensions.end(), text_) != extensions.end();
    }

private:
    std::array<char, 8> buffer_{};
    std::string lowered_;
    std::string_view text_;
};

std::optional<MediaKind> listedKind(std::string_view path) {
    const LoweredExtension extension(path);
    if (extension.isIn(audioExt))
        return MediaKind::Audio;
    if (extension.isIn(videoExt))
        return MediaKind::Video;
    if (extension.isIn(imageExt))
        return MediaKind::Image;
    if (extension.isIn(otherExt))
        return MediaKind::Other;
    return std::nullopt;
}

}  // namespace

std::string_view kindLabel(MediaKind kind) {
    switch (kind) {
        case MediaKind::Audio:
            return "音频";
        case MediaKind::Video:
            return "视频";
        case MediaKind::Image:
            return "图片";
        case MediaKind::Other:
            break;
    }
    return "其他";
}

std::string_view kindSymbol(MediaKind kind) {
    switch (kind) {
        case MediaKind::Audio:
            return "waveform";
        case MediaKind::Video:
            return "film";
        case MediaKind::Image:
            return "photo";
        case MediaKind::Other:
            break;
    }
    return "doc";
}

KindFilter kindFilterAt(int index) {
    if (index <= 0 || index >= static_cast<int>(kindChoices.size()))
        return std::nullopt;
    return static_cast<MediaKind>(index - 1);
}

std::optional<KindFilter> kindFilterNamed(std::string_view label) {
    const auto found = std::find(kindChoices.begin(), kindChoices.end(), label);
    if (found == kindChoices.end())
        return std::nullopt;
    return kindFilterAt(static_cast<int>(found - kindChoices.begin()));
}

MediaKind kindOfPath(std::string_view path) {
    return listedKind(path).value_or(MediaKind::Other);
}

std::optional<MediaKind> indexableKind(std::string_view name) {
    return listedKind(name);
}

std::string_view Asset::name() const {
    return lastPathComponent(path);
}

nlohmann::json encodeAsset(const Asset& asset) {
    return {{"path", asset.path},
            {"root", asset.root},
            {"relative", asset.relative},
            {"size", asset.size},
            {"modified", asset.modified}};
}

Asset decodeAsset(const nlohmann::json& value) {
    Asset asset;
    asset.path = requiredText(value, "path");
    asset.root = requiredText(value, "root");
    asset.relative = requiredText(value, "relative");
    asset.size = requiredInteger(value, "size");
    asset.modified = requiredNumber(value, "modified");
    return asset;
}

}  // namespace morvane
