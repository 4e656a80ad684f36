// The organizer's one error type and every sentence it shows: failures, plan warnings and progress
// texts, each once. Code and tests name the entry, never retype the sentence. Entries whose name
// ends in "Prefix" are followed by a name or a text; "Suffix" entries follow one.
#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace morvane {

/// Either a message shown to the user as it stands, or the distinct "cancelled" case.
class ProjectCoreError : public std::exception {
public:
    static ProjectCoreError message(std::string text);
    static ProjectCoreError cancelled();

    bool isCancelled() const noexcept { return isCancelled_; }
    /// The description for the user: the carried text, or the fixed text of the cancelled case.
    const char* what() const noexcept override { return text_.c_str(); }

private:
    ProjectCoreError(std::string text, bool isCancelled);

    std::string text_;
    bool isCancelled_;
};

/// Throws the message case made of `text` and `tail`.
[[noreturn]] void failWith(std::string_view text, std::string_view tail = {});
/// `name` with every byte that is no UTF-8 replaced by "_": how file names stand in texts.
std::string shownName(std::string_view name);

namespace project_text {

// The cancelled case, and a second job.
inline constexpr std::string_view cancelled = "已停止；原文件保留，完成的副本与清单可供重试。";
inline constexpr std::string_view busy = "已有任务正在处理。";

// Request and planning: refusals.
inline constexpr std::string_view invalidName =
    "请输入有效项目名，不含斜杠、冒号、控制字符，且长度不超过 180 字节。";
inline constexpr std::string_view parentNotLocal = "项目位置必须是本机或已挂载磁盘文件夹。";
inline constexpr std::string_view unreachablePathPrefix = "路径不存在或不可访问：";
inline constexpr std::string_view parentNotFolder = "项目保存位置不存在或尚未挂载。";
inline constexpr std::string_view unsupportedEdit =
    "首版主剪辑支持 24/25/30/50/60 帧及 16–8192 像素的偶数尺寸。";
inline constexpr std::string_view projectExists =
    "项目目录已经存在；请选择新名称。已有 MORVANE 项目请使用清单重试。";
inline constexpr std::string_view cannotScan = "无法扫描来源目录。";
inline constexpr std::string_view sourceNotRegularPrefix = "来源不是普通文件或已变为符号链接：";
inline constexpr std::string_view nothingToOrganize =
    "没有可整理的普通文件。符号链接、FCP 资源库与目标目录不会参与复制。";

// Planning: warnings.
inline constexpr std::string_view skippedNonLocalPrefix = "跳过非本地来源：";
inline constexpr std::string_view skippedLinkPrefix = "跳过符号链接：";
inline constexpr std::string_view skippedFcpLibraryPrefix = "跳过 FCP 原生资源库：";
inline constexpr std::string_view skippedTarget = "跳过目标项目目录内的来源。";
inline constexpr std::string_view skippedPackagePrefix = "跳过软件包：";
inline constexpr std::string_view skippedUnreadablePrefix = "跳过无法读取的文件夹：";
inline constexpr std::string_view cameraCardSuffix =
    "：检测到相机结构，完整保留目录；FCP 请使用原生相机导入。";
inline constexpr std::string_view duplicatesPrefix = "发现 ";
inline constexpr std::string_view duplicatesSuffix =
    "份内容相同的文件，仅提示，仍按计划分别复制，不删除原件。";
inline constexpr std::string_view manifestNearLimit =
    "文件数量过多：项目清单将接近 32 MiB 的读取上限，中断后可能无法据清单重试，请拆分为多个项目。";

// Planning: progress.
inline constexpr std::string_view analysingPrefix = "正在分析来源，已找到";
inline constexpr std::string_view analysingSuffix = " 个文件…";
inline constexpr std::string_view checkingDuplicates = "正在检查重复候选，原文件不会改动…";
inline constexpr std::string_view fastCheckPrefix = "快速核对头尾：";
inline constexpr std::string_view fullCheckPrefix = "完整核对候选：";
inline constexpr std::string_view fullCheckSeparator = " · ";

// Opening a source.
inline constexpr std::string_view emptySourcePath = "来源路径无效。";
inline constexpr std::string_view cannotOpenSystemRoot = "无法打开文件系统根目录。";
inline constexpr std::string_view sourceParentPrefix = "来源父目录不可读取或已变为符号链接：";
inline constexpr std::string_view cannotReadSourcePrefix = "无法读取来源：";
inline constexpr std::string_view sourceNotRegular = "来源不是普通文件。";

// The verified copy.
inline constexpr std::string_view unsafeDestination = "清单包含不安全的目标路径。";
inline constexpr std::string_view outsideProject = "输出路径超出项目。";
inline constexpr std::string_view projectChanged = "目标项目已改变。";
inline constexpr std::string_view subfolderNotReal = "目标子目录不是普通目录或是符号链接。";
inline constexpr std::string_view cannotMakeFolderPrefix = "无法创建目标目录：";
inline constexpr std::string_view destinationTakenPrefix = "同名目标已经存在，未覆盖：";
inline constexpr std::string_view sourceAttributes = "无法读取来源属性。";
inline constexpr std::string_view sourceChangedPrefix = "来源在扫描后已改变，请重新预演：";
inline constexpr std::string_view cannotMakeTemporary = "无法创建目标临时文件。";
inline constexpr std::string_view sourceChangedWhileCopying = "复制过程中来源发生变化；未发布副本。";
inline constexpr std::string_view sourceDiffersFromPlan = "来源内容与预演时不一致；未发布副本。";
inline constexpr std::string_view verificationFailed = "目标全文件 SHA-256 校验失败。";
inline constexpr std::string_view cannotCommit = "无法提交副本，目标可能已有同名文件或磁盘不支持安全提交。";

// Execution, manifest and resume.
inline constexpr std::string_view invalidPlan = "计划中的目标路径无效。";
inline constexpr std::string_view invalidTotal = "清单中的文件总量无效。";
inline constexpr std::string_view notEnoughSpace = "目标磁盘可用空间不足；需要容纳剩余副本和项目清单。";
inline constexpr std::string_view cannotMakeProject = "无法新建项目或已存在同名目录；没有覆盖任何内容。";
inline constexpr std::string_view verifiedCopyChanged = "已完成副本发生变化；未覆盖，请人工检查。";
inline constexpr std::string_view sourceChangedSincePlan = "来源已改变，不能据旧计划重试。";
inline constexpr std::string_view destinationDiffers = "目标已存在且内容不符，未覆盖。";
inline constexpr std::string_view itemStopped = "用户停止，本项未完成。";
inline constexpr std::string_view fcpxmlFailedPrefix = "FCPXML 未生成或未通过结构校验：";
inline constexpr std::string_view manifestTargetNotRegular = "清单目标不是普通文件。";
inline constexpr std::string_view manifestIsLink = "不能从符号链接读取项目清单。";
inline constexpr std::string_view manifestTooLarge = "项目清单过大。";
inline constexpr std::string_view manifestDamagedPrefix = "项目清单无法读取：";
inline constexpr std::string_view noMoreRevisions = "项目清单的修订号已到上限，无法继续写入。";
inline constexpr std::string_view manifestMismatch = "项目清单版本或路径不匹配。";
inline constexpr std::string_view markerMismatch = "找不到匹配的 MORVANE 项目标识，不会修改此目录。";

// Execution: progress.
inline constexpr std::string_view copyingPrefix = "复制与校验：";
inline constexpr std::string_view finishedPrefix = "已校验 ";
inline constexpr std::string_view finishedMiddle = " 个文件；失败 ";
inline constexpr std::string_view finishedSuffix = " 个。FCP 尚未导入。";
inline constexpr std::string_view stopped = "已停止，完成的副本与清单已保留。";

// The hand-off file.
inline constexpr std::string_view leftOutPrefix = "另有 ";
inline constexpr std::string_view leftOutSuffix =
    " 份文件只保留校验副本，未进入 "
    "FCPXML：文稿/图片/不支持格式、复杂相机结构、多音轨/多声道或含时间码轨道的媒体。"
    "请在 FCP 原生导入并核对。";
inline constexpr std::string_view dtdMissing = "找不到 FCPXML 1.10 DTD，未发布未经结构校验的导入文件。";
inline constexpr std::string_view dtdViolationPrefix = "FCPXML 结构不符合 DTD：";
inline constexpr std::string_view validatorPrefix = "无法运行 /usr/bin/xmllint：";
inline constexpr std::string_view cannotWriteHandOffPrefix = "无法写入 FCPXML 文件：";
inline constexpr std::string_view unknownError = "未知错误";

}  // namespace project_text

}  // namespace morvane
