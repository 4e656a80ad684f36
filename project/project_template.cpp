#include "project/project_template.h"

#include <algorithm>
#include <initializer_list>
#include <string>
#include <unordered_map>

#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

enum class Kind { Subtitle, Video, Audio, Image };

const std::unordered_map<std::string_view, Kind>& kindsByExtension() {
    static const auto kinds = [] {
        std::unordered_map<std::string_view, Kind> table;
        const auto add = [&table](Kind kind, std::initializer_list<std::string_view> extensions) {
            for (const auto extension : extensions)
                table.emplace(extension, kind);
        };
        add(Kind::Subtitle, {"srt", "vtt", "ass", "ssa", "itt"});
        add(Kind::Video, {"mov", "mp4", "m4v", "mkv", "avi", "webm", "mts", "m2ts", "mxf", "rsv"});
        add(Kind::Audio, {"wav", "aif", "aiff", "mp3", "m4a", "aac", "flac", "ogg", "opus", "caf", "wma"});
        add(Kind::Image,
            {"jpg", "jpeg", "png", "heic", "tif", "tiff", "gif", "webp", "psd", "ai", "svg", "aep"});
        return table;
    }();
    return kinds;
}

bool containsAny(std::string_view text, std::initializer_list<std::string_view> words) {
    return std::any_of(words.begin(), words.end(),
                       [text](std::string_view word) { return text.find(word) != std::string_view::npos; });
}

Classification classifyAudio(std::string_view path) {
    const std::string lower = lowerCased(path);
    if (containsAny(lower, {"音乐", "配乐", "music", "bgm"}))
        return {templateFolders[3], "音乐"};
    if (containsAny(lower, {"音效", "sound effect", "sound_effect", "sfx", "foley"}))
        return {templateFolders[2], "音效"};
    return {templateFolders[1], "同期声"};
}

}  // namespace

Classification folderAndCategory(const FileUrl& url) {
    const auto& kinds = kindsByExtension();
    const auto found = kinds.find(lowerCased(pathExtension(url.path)));
    if (found == kinds.end())
        return {templateFolders[6], "文案资料"};
    switch (found->second) {
        case Kind::Subtitle:
            return {templateFolders[7], "字幕"};
        case Kind::Video:
            return {templateFolders[1], "拍摄素材"};
        case Kind::Audio:
            return classifyAudio(url.path);
        case Kind::Image:
            break;
    }
    return {templateFolders[5], "图形"};
}

bool isCameraStructureName(std::string_view name) {
    constexpr std::array<std::string_view, 6> names{"AVCHD",  "BDMV",   "PRIVATE",
                                                    "M4ROOT", "XDROOT", "CONTENTS"};
    return std::find(names.begin(), names.end(), upperCased(name)) != names.end();
}

bool isSystemFolderName(std::string_view name) {
    return name == ".Trashes" || name == ".Spotlight-V100" || name == ".fseventsd";
}

bool isSystemFileName(std::string_view name) {
    return name == ".DS_Store";
}

}  // namespace morvane
