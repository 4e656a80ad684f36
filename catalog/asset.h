// The record of one indexed media file, its media kind, and its form in JSON.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace morvane {

enum class MediaKind : std::uint8_t { Audio, Video, Image, Other };

/// "音频", "视频", "图片" or "其他".
std::string_view kindLabel(MediaKind kind);
/// Name of the symbol that stands for the kind: "waveform", "film", "photo" or "doc".
std::string_view kindSymbol(MediaKind kind);

/// Nothing means every kind ("全部").
using KindFilter = std::optional<MediaKind>;
/// The choices of the kind control, in its order; index 0 is every kind.
inline constexpr std::array<std::string_view, 5> kindChoices = {"全部", "音频", "视频", "图片", "其他"};
/// The filter behind a choice's index; an index outside the table counts as 0.
KindFilter kindFilterAt(int index);
/// The filter behind a choice's text; nothing for any other text.
std::optional<KindFilter> kindFilterNamed(std::string_view label);

// Lower-case extensions without the dot. Only files with one of these are indexed; those of
// otherExt are of the kind "其他", like anything unlisted.
inline constexpr std::array<std::string_view, 11> audioExt = {"wav",  "mp3", "m4a",  "aac", "aif", "aiff",
                                                              "flac", "ogg", "opus", "wma", "caf"};
inline constexpr std::array<std::string_view, 8> videoExt = {"mp4", "mov",  "m4v", "mkv",
                                                             "avi", "webm", "mts", "m2ts"};
inline constexpr std::array<std::string_view, 11> imageExt = {"jpg",  "jpeg", "png", "gif", "webp", "tif",
                                                              "tiff", "heic", "bmp", "psd", "svg"};
inline constexpr std::array<std::string_view, 11> otherExt = {"cube",  "3dl", "look", "aep", "prproj", "drp",
                                                              "mogrt", "zip", "rar",  "7z",  "pdf"};

/// Kind by the last extension of `path`, any case.
MediaKind kindOfPath(std::string_view path);
/// The kind of a file the library indexes; nothing when its extension is in none of the four lists.
std::optional<MediaKind> indexableKind(std::string_view name);

/// One media file where it lies. Paths are UTF-8.
struct Asset {
    std::string path;       ///< absolute; the asset's identity
    std::string root;       ///< the library folder, as the settings hold it
    std::string relative;   ///< path below `root`, no leading "/"
    std::int64_t size = 0;  ///< bytes
    double modified = 0;    ///< seconds since 1970-01-01 UTC, with fraction

    MediaKind mediaKind() const { return kindOfPath(path); }
    std::string_view kind() const { return kindLabel(mediaKind()); }
    std::string_view symbol() const { return kindSymbol(mediaKind()); }
    /// Last path component.
    std::string_view name() const;
};

/// The object with exactly the keys "path", "root", "relative", "size" and "modified".
nlohmann::json encodeAsset(const Asset& asset);
/// Throws JsonError when a key is missing or of another type.
Asset decodeAsset(const nlohmann::json& value);

}  // namespace morvane
