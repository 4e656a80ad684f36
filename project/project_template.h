// The ten folders of every project, and which file belongs in which. Pure text rules.
#pragma once

#include <array>
#include <string_view>

#include "support/file_url.h"

namespace morvane {

inline constexpr std::array<std::string_view, 10> templateFolders{
    "01_项目工程",   "02_原始素材",   "03_音效", "04_音乐",     "05_网络素材",
    "06_图形与包装", "07_文案与资料", "08_字幕", "09_输出预览", "10_最终交付"};

/// Camera cards go below this folder, each under its own name.
inline constexpr std::string_view cameraCardFolder = "02_原始素材/相机卡备份";

struct Classification {
    std::string_view folder;    ///< one of templateFolders
    std::string_view category;  ///< the plan item's category
};

/// Classifies by the extension (any case); audio also by the whole lower-cased path, music before
/// effect.
Classification folderAndCategory(const FileUrl& url);

/// True when `name`, in upper case, is one of the six camera-structure names.
bool isCameraStructureName(std::string_view name);

/// True for entries that no walk enters or plans: ".Trashes", ".Spotlight-V100", ".fseventsd" as
/// folders, ".DS_Store" as a file.
bool isSystemFolderName(std::string_view name);
bool isSystemFileName(std::string_view name);

}  // namespace morvane
