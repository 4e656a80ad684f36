#include "library_ui/preview_state.h"

#include "catalog/asset.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

PreviewMode modeOf(const std::string& name) {
    return previewModeOf({.path = "/r/" + name, .root = "/r", .relative = name});
}

TEST(PreviewState, ModeFollowsTheKind) {
    EXPECT_EQ(modeOf("a.WAV"), PreviewMode::Audio);
    EXPECT_EQ(modeOf("a.m2ts"), PreviewMode::Video);
    EXPECT_EQ(modeOf("a.svg"), PreviewMode::Picture);
    EXPECT_EQ(modeOf("a.cube"), PreviewMode::Other);
    EXPECT_EQ(modeOf("README"), PreviewMode::Other);
}

TEST(PreviewState, FileButtonsFollowTheFileAndTheScan) {
    const FileButtonStates none{.favorite = true};
    const FileButtonStates all{.favorite = true, .reveal = true, .copy = true, .open = true, .rename = true};
    FileButtonStates allButRename = all;
    allButRename.rename = false;
    EXPECT_EQ(fileButtonsFor(FileState::Asking, Scanning::No), none);
    EXPECT_EQ(fileButtonsFor(FileState::Missing, Scanning::No), none);
    EXPECT_EQ(fileButtonsFor(FileState::Missing, Scanning::Yes), none);
    EXPECT_EQ(fileButtonsFor(FileState::Present, Scanning::No), all);
    EXPECT_EQ(fileButtonsFor(FileState::Present, Scanning::Yes), allButRename);
}

TEST(PreviewState, NoticesSayWhatIsKnown) {
    const struct {
        PreviewMode mode;
        FileState file;
        PictureCached cached;
        const char* text;
    } rows[] = {
        {PreviewMode::Picture, FileState::Present, PictureCached::No, "正在准备图片预览…"},
        {PreviewMode::Picture, FileState::Present, PictureCached::Unseen,
         "拖出原文件可复制或导入，图片预览不会修改原件。"},
        {PreviewMode::Picture, FileState::Present, PictureCached::Seen,
         "拖出文件可复制或导入；⌘C 复制所选文件，随后在 Finder 中 ⌘V 粘贴。"},
        {PreviewMode::Audio, FileState::Present, PictureCached::No,
         "拖出文件可复制或导入；⌘C 复制所选文件，随后在 Finder 中 ⌘V 粘贴。"},
        {PreviewMode::Video, FileState::Present, PictureCached::No,
         "拖出文件可复制或导入；⌘C 复制所选文件，随后在 Finder 中 ⌘V 粘贴。"},
        {PreviewMode::Other, FileState::Present, PictureCached::No,
         "此素材可直接拖出、复制，或点击“外部打开”交给对应软件。"},
        {PreviewMode::Picture, FileState::Missing, PictureCached::Seen,
         "文件暂不可用：请连接素材硬盘；若文件已移动，请刷新索引。"},
        {PreviewMode::Other, FileState::Missing, PictureCached::No,
         "文件暂不可用：请连接素材硬盘；若文件已移动，请刷新索引。"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(noticeFor(row.mode, row.file, row.cached).text, row.text);
    EXPECT_EQ(notices::nothingShown().text, "从列表拖出文件，即可复制到其他文件夹或导入剪辑软件。");
    EXPECT_EQ(notices::pictureShown().text, "拖出原文件可复制或导入，图片预览不会修改原件。");
    EXPECT_EQ(notices::pictureUndecodable().text, "此图片格式无法内置预览，可点击“外部打开”。");
    EXPECT_EQ(notices::mediaUndecodable().text, "系统无法解码此素材，点击“外部打开”用其他播放器播放。");
    EXPECT_EQ(notices::manySelected(4).text, "已选择 4 个文件，可一起拖出或复制。");
}

TEST(PreviewState, OnlyTroubleWarns) {
    EXPECT_EQ(notices::fileMissing().tone, Notice::Tone::Warning);
    EXPECT_EQ(notices::fileMissing().symbol, "externaldrive.badge.xmark");
    EXPECT_EQ(notices::filePresent().tone, Notice::Tone::Plain);
    EXPECT_EQ(notices::filePresent().symbol, "info.circle");
    EXPECT_EQ(notices::manySelected(2).symbol, "doc.on.doc");
}

}  // namespace
}  // namespace morvane
