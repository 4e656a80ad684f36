// The catalog's one error type and every sentence it carries.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace morvane {

/// what() is the description shown to the user: a sentence of catalogText, and, when the connection is
/// open and the engine has something to say, "：" and the engine's text. A "Prefix" entry is followed by what
/// went wrong.
class CatalogError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    static constexpr std::string_view domain = "MORVANE.Catalog";
    static constexpr int code = 1;
};

/// A refused rename. A failing move is thrown as std::system_error instead.
class RenameError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    static constexpr std::string_view domain = "SORELKLibrary";
    static constexpr int code = 1;
};

namespace catalogText {
inline constexpr const char* cannotOpen = "无法打开素材索引";
inline constexpr const char* newerVersion = "索引来自更新版本的软件，请先更新素材助手。";
inline constexpr const char* updateFailed = "索引更新未完成";
inline constexpr const char* prepareFailed = "索引查询未完成";
inline constexpr const char* rowFailed = "素材信息写入失败";
inline constexpr const char* queryFailed = "素材搜索未完成";
inline constexpr const char* noState = "无法读取索引状态";
inline constexpr const char* damagedLegacyPrefix = "旧索引 index.json 无法读取：";
}  // namespace catalogText

namespace renameText {
inline constexpr const char* invalidName = "名称不能为空、以点开头，或包含 /、:、换行等特殊字符。";
inline constexpr const char* nameTaken = "同一文件夹内已存在该名称，请换一个名称；不会覆盖已有文件。";
}  // namespace renameText

}  // namespace morvane
