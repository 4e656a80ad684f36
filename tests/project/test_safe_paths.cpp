#include "project/safe_paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include <gtest/gtest.h>

#include "project/project_errors.h"
#include "support/text_fold.h"
#include "tests/project/engine_fixture.h"

namespace morvane::test {
namespace {

std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    for (std::size_t index = 0; index < count; ++index)
        result += text;
    return result;
}

TEST(SafeComponent, TableOfNames) {
    const std::string decomposed = "e\xCC\x81";              // e and a combining acute accent: one character
    const std::string family = "👨‍👩‍👧‍👦";  // one character of several code points
    const std::vector<std::pair<std::string, std::string>> table{
        {"A001.MOV", "A001.MOV"},
        {"空镜 01.mov", "空镜 01.mov"},
        {"a/b:c", "a_b_c"},
        {"line\nbreak\ttab\x7f", "line_break_tab_"},
        {"c1\xC2\x85"
         "end",
         "c1_end"},                            // U+0085 is a control character
        {"nbsp\xC2\xA0ok", "nbsp\xC2\xA0ok"},  // U+00A0 is not
        {"format\xE2\x80\x8Bok", "format\xE2\x80\x8Bok"},
        {"", "素材"},
        {".", "素材"},
        {"..", "素材"},
        {"...", "..."},
        {".hidden", ".hidden"},
        {"trailing...", "trailing..."},
        {" spaces ", " spaces "},
        {"bad\xFF\xFEname", "bad__name"},
        {"cut\xE7\xB4", "cut__"},
        {repeated("a", 181), repeated("a", 180)},
        {repeated("影", 200), repeated("影", 180)},
        {repeated(decomposed, 181), repeated(decomposed, 180)},
        {repeated(family, 181), repeated(family, 180)},
    };
    for (const auto& [name, expected] : table) {
        EXPECT_EQ(safeComponent(name), expected) << name;
        EXPECT_TRUE(isValidUtf8(safeComponent(name)));
    }
    EXPECT_EQ(safeComponent(std::string("nul\0byte", 8)), "nul_byte");
}

TEST(SafeRelative, TableOfPaths) {
    for (const char* path :
         {"02_原始素材/A001.mov", "10_最终交付/a/b/c", "01_项目工程/...", "08_字幕/.hidden"})
        EXPECT_TRUE(safeRelative(path)) << path;
    for (const char* path :
         {"", "/", "02_原始素材", "02_原始素材/", "/02_原始素材/a", "02_原始素材//a", "02_原始素材/./a",
          "02_原始素材/../a", "02_原始素材/a/..", "a/b", "02_原始素材 /a", "../02_原始素材/a", "11_其他/a"})
        EXPECT_FALSE(safeRelative(path)) << path;
    EXPECT_FALSE(safeRelative(std::string("02_原始素材/a\0b", 18)));
}

TEST(Unique, NumbersWhatCollides) {
    ReservedNames reserved;
    EXPECT_EQ(reserved.unique("02_原始素材/A001.MOV"), "02_原始素材/A001.MOV");
    EXPECT_EQ(reserved.unique("02_原始素材/a001.mov"), "02_原始素材/a001 (2).mov");
    EXPECT_EQ(reserved.unique("02_原始素材/A001.mov"), "02_原始素材/A001 (3).mov");
    EXPECT_EQ(reserved.unique("02_原始素材/A001 (2).MOV"), "02_原始素材/A001 (2) (2).MOV");
    EXPECT_EQ(reserved.unique("02_原始素材/README"), "02_原始素材/README");
    EXPECT_EQ(reserved.unique("02_原始素材/readme"), "02_原始素材/readme (2)");
    EXPECT_EQ(reserved.unique("02_原始素材/.hidden"), "02_原始素材/.hidden");
    EXPECT_EQ(reserved.unique("02_原始素材/.HIDDEN"), "02_原始素材/.HIDDEN (2)");
}

TEST(Unique, FoldsDiacriticsAndSpellings) {
    ReservedNames reserved;
    EXPECT_EQ(reserved.unique("03_音效/caf\xC3\xA9.wav"), "03_音效/caf\xC3\xA9.wav");
    EXPECT_EQ(reserved.unique("03_音效/cafe\xCC\x81.wav"), "03_音效/cafe\xCC\x81 (2).wav");
    EXPECT_EQ(reserved.unique("03_音效/CAFE.wav"), "03_音效/CAFE (3).wav");
    EXPECT_EQ(reserved.unique("03_音效/ＣＡＦＥ.wav"), "03_音效/ＣＡＦＥ.wav");  // width is no fold here
}

TEST(Unique, AFileNeverStandsWhereAFolderMust) {
    ReservedNames reserved;
    EXPECT_EQ(reserved.unique("07_文案与资料/NOTES"), "07_文案与资料/NOTES");
    EXPECT_EQ(reserved.unique("07_文案与资料/notes/a.txt"), "07_文案与资料/notes (2)/a.txt");
    EXPECT_EQ(reserved.unique("07_文案与资料/notes/b.txt"), "07_文案与资料/notes (2)/b.txt");
    EXPECT_EQ(reserved.unique("07_文案与资料/Notes (2)"), "07_文案与资料/Notes (2) (2)");
}

TEST(Unique, ANumberedNameStillFitsAFileSystem) {
    ReservedNames reserved;
    const std::string longName = repeated("影", 83) + ".mov";  // 253 bytes
    EXPECT_EQ(reserved.unique("02_原始素材/" + longName), "02_原始素材/" + longName);
    const std::string second = reserved.unique("02_原始素材/" + longName);
    EXPECT_EQ(second, "02_原始素材/" + repeated("影", 82) + " (2).mov");
    EXPECT_LE(second.size() - std::string("02_原始素材/").size(), 255U);
}

TEST(Canonical, ResolvesLinksAndNamesWhatIsMissing) {
    const Workplace place;
    writeFile(place.source("real/a.mov"), "a");
    std::filesystem::create_directory_symlink(place.source("real"), place.source("link"));
    EXPECT_EQ(canonical(fileLocation(place.source("link/../real/./a.mov")), LocationKind::File),
              fileLocation(place.source("real/a.mov")));
    EXPECT_EQ(canonical(fileLocation(place.source("link")), LocationKind::Folder),
              folderLocation(place.source("real")));
    EXPECT_EQ(errorOf([&] { canonical(fileLocation(place.source("没有.mov")), LocationKind::File); }),
              sentence(project_text::unreachablePathPrefix, "没有.mov"));
}

TEST(Attributes, SizeDateAndRefusals) {
    const Workplace place;
    writeFile(place.source("a.mov"), "12345");
    setModified(place.source("a.mov"), 1'700'000'000.25);
    EXPECT_EQ(attributes(fileLocation(place.source("a.mov"))).size, 5);
    EXPECT_DOUBLE_EQ(attributes(fileLocation(place.source("a.mov"))).modified, 1'700'000'000.25);
    std::filesystem::create_symlink("a.mov", place.source("link.mov"));
    ASSERT_EQ(::mkfifo(place.source("pipe.mov").c_str(), 0600), 0);
    for (const char* name : {"link.mov", "pipe.mov"})
        EXPECT_EQ(errorOf([&] { attributes(fileLocation(place.source(name))); }),
                  sentence(project_text::sourceNotRegularPrefix, name));
    EXPECT_EQ(errorOf([&] { attributes(fileLocation(place.source("gone.mov"))); }),
              sentence(project_text::unreachablePathPrefix, "gone.mov"));
}

TEST(OtherDate, AMillisecondIsAChangeLessIsNot) {
    EXPECT_TRUE(isOtherDate(1'700'000'000.0, 1'700'000'000.001));
    EXPECT_TRUE(isOtherDate(1'700'000'000.501, 1'700'000'000.5));
    EXPECT_FALSE(isOtherDate(1'700'000'000.0, 1'700'000'000.0009));
    EXPECT_FALSE(isOtherDate(-12.0, -12.0009));
    EXPECT_TRUE(isOtherDate(1'700'000'000.0, std::nan("")));
}

}  // namespace
}  // namespace morvane::test
