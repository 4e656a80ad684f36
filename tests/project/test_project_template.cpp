#include "project/project_template.h"

#include <gtest/gtest.h>

namespace morvane::test {
namespace {

struct Case {
    const char* path;
    const char* folder;
    const char* category;
};

TEST(FolderAndCategory, Table) {
    const Case table[] = {
        {"/c/a.srt", "08_字幕", "字幕"},
        {"/c/a.VTT", "08_字幕", "字幕"},
        {"/c/a.ass", "08_字幕", "字幕"},
        {"/c/a.ssa", "08_字幕", "字幕"},
        {"/c/a.itt", "08_字幕", "字幕"},
        {"/c/A.MOV", "02_原始素材", "拍摄素材"},
        {"/c/a.mp4", "02_原始素材", "拍摄素材"},
        {"/c/a.m4v", "02_原始素材", "拍摄素材"},
        {"/c/a.mkv", "02_原始素材", "拍摄素材"},
        {"/c/a.avi", "02_原始素材", "拍摄素材"},
        {"/c/a.webm", "02_原始素材", "拍摄素材"},
        {"/c/a.mts", "02_原始素材", "拍摄素材"},
        {"/c/a.m2ts", "02_原始素材", "拍摄素材"},
        {"/c/a.mxf", "02_原始素材", "拍摄素材"},
        {"/c/a.rsv", "02_原始素材", "拍摄素材"},
        {"/c/Music/take1.wav", "04_音乐", "音乐"},
        {"/c/Take/SFX/boom.wav", "03_音效", "音效"},
        {"/c/Day1/A.wav", "02_原始素材", "同期声"},
        {"/c/音乐/a.aif", "04_音乐", "音乐"},
        {"/c/配乐/a.aiff", "04_音乐", "音乐"},
        {"/c/BGM/a.mp3", "04_音乐", "音乐"},
        {"/c/音效/a.m4a", "03_音效", "音效"},
        {"/c/Sound Effect/a.aac", "03_音效", "音效"},
        {"/c/sound_effect/a.flac", "03_音效", "音效"},
        {"/c/foley.ogg", "03_音效", "音效"},
        {"/c/sfx/music.opus", "04_音乐", "音乐"},  // music before effect
        {"/bgm/sfx/a.caf", "04_音乐", "音乐"},
        {"/c/a.wma", "02_原始素材", "同期声"},
        {"/Music/a.mov", "02_原始素材", "拍摄素材"},  // the words concern audio only
        {"/c/a.jpg", "06_图形与包装", "图形"},
        {"/c/a.jpeg", "06_图形与包装", "图形"},
        {"/c/a.png", "06_图形与包装", "图形"},
        {"/c/a.heic", "06_图形与包装", "图形"},
        {"/c/a.tif", "06_图形与包装", "图形"},
        {"/c/a.tiff", "06_图形与包装", "图形"},
        {"/c/a.gif", "06_图形与包装", "图形"},
        {"/c/a.webp", "06_图形与包装", "图形"},
        {"/c/a.psd", "06_图形与包装", "图形"},
        {"/c/a.ai", "06_图形与包装", "图形"},
        {"/c/a.svg", "06_图形与包装", "图形"},
        {"/c/a.AEP", "06_图形与包装", "图形"},
        {"/c/a.txt", "07_文案与资料", "文案资料"},
        {"/c/README", "07_文案与资料", "文案资料"},
        {"/c/.mov", "07_文案与资料", "文案资料"},
        {"/c/a.", "07_文案与资料", "文案资料"},
        {"/c/bad\xFF.wav", "02_原始素材", "同期声"},
    };
    for (const Case& entry : table) {
        const Classification found = folderAndCategory(FileUrl{entry.path, false, {}});
        EXPECT_EQ(found.folder, entry.folder) << entry.path;
        EXPECT_EQ(found.category, entry.category) << entry.path;
    }
}

TEST(CameraStructure, SixNamesInAnyCase) {
    for (const char* name : {"AVCHD", "bdmv", "Private", "M4Root", "xdroot", "CONTENTS"})
        EXPECT_TRUE(isCameraStructureName(name)) << name;
    for (const char* name : {"DCIM", "PRIVATE2", "", "CLIP", "CONTENT"})
        EXPECT_FALSE(isCameraStructureName(name)) << name;
}

}  // namespace
}  // namespace morvane::test
