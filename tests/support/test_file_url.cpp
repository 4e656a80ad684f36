// Locations as URL text.
#include <string>

#include <gtest/gtest.h>

#include "support/file_url.h"

namespace morvane {
namespace {

using std::string;

TEST(FileUrl, EscapesWhatIsNoPathCharacter) {
    EXPECT_EQ(absoluteText(fileLocation("/a/b c.mov")), "file:///a/b%20c.mov");
    EXPECT_EQ(absoluteText(fileLocation("/100%.mov")), "file:///100%25.mov");
    EXPECT_EQ(absoluteText(fileLocation("/a#b?c;d")), "file:///a%23b%3Fc%3Bd");
    EXPECT_EQ(absoluteText(fileLocation("/!$&'()*+,-.:=@_~")), "file:///!$&'()*+,-.:=@_~");
    EXPECT_EQ(absoluteText(fileLocation("/[\"<>\\^`{|}]")), "file:///%5B%22%3C%3E%5C%5E%60%7B%7C%7D%5D");
    EXPECT_EQ(absoluteText(fileLocation("/素材")), "file:///%E7%B4%A0%E6%9D%90");
    EXPECT_EQ(absoluteText(fileLocation("/\xFF\n")), "file:///%FF%0A");
}

TEST(FileUrl, FoldersEndInASlash) {
    EXPECT_EQ(absoluteText(folderLocation("/Volumes/CARD")), "file:///Volumes/CARD/");
    EXPECT_EQ(absoluteText(folderLocation("/Volumes/CARD//")), "file:///Volumes/CARD/");
    EXPECT_EQ(absoluteText(folderLocation("/")), "file:///");
    EXPECT_EQ(fileLocation("/a/").path, "/a");
    EXPECT_FALSE(fileLocation("/a/").isDirectory);
    EXPECT_TRUE(fileLocation("/").isDirectory);
}

TEST(FileUrl, EveryByteMakesTheRoundTrip) {
    string path = "/";
    for (int byte = 1; byte < 256; ++byte)
        path += static_cast<char>(byte);
    path += "end";
    for (const FileUrl& url :
         {fileLocation(path), folderLocation(path), folderLocation("/"), fileLocation("/e\u0301")}) {
        const auto read = parseUrl(absoluteText(url));
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(*read, url);
    }
}

TEST(FileUrl, ReadsTheFormsOfAFileUrl) {
    const FileUrl file{"/a b", false, ""};
    EXPECT_EQ(parseUrl("file:///a%20b"), file);
    EXPECT_EQ(parseUrl("file:/a%20b"), file);
    EXPECT_EQ(parseUrl("FILE://LocalHost/a%20b"), file);
    EXPECT_EQ(parseUrl("file:///a b"), file);
    EXPECT_EQ(parseUrl("file:///a%20b?query#part"), file);
    EXPECT_EQ(parseUrl("file:///a%20b/"), (FileUrl{"/a b", true, ""}));
    EXPECT_EQ(parseUrl("file:///%e7%B4%a0"), (FileUrl{"/素", false, ""}));
}

TEST(FileUrl, RefusesWhatIsNoLocation) {
    for (const char* text :
         {"", "/a/b", "a", "file:", "file://", "file://localhost", "file://server/a", "file:a", "file:///%",
          "file:///%4", "file:///%4G", "file:///%00", "1http://x", ":x", "http:", "中:x", "http://x/%zz"})
        EXPECT_FALSE(parseUrl(text).has_value()) << text;
    EXPECT_FALSE(parseUrl(std::string_view("file:///a\0b", 11)).has_value());
}

TEST(FileUrl, KeepsOtherSchemes) {
    const auto url = parseUrl("https://example.com/a%20b/c%2Ed/?q=1/2");
    ASSERT_TRUE(url.has_value());
    EXPECT_FALSE(url->isFile());
    EXPECT_TRUE(url->isDirectory);
    EXPECT_EQ(absoluteText(*url), "https://example.com/a%20b/c%2Ed/?q=1/2");
    EXPECT_EQ(url->lastComponent(), "c.d");
    EXPECT_EQ(absoluteText(url->appending("e f", true)), "https://example.com/a%20b/c%2Ed/e%20f/?q=1/2");
    EXPECT_EQ(absoluteText(url->appending("g", false)), "https://example.com/a%20b/c%2Ed/g?q=1/2");
}

TEST(FileUrl, Components) {
    EXPECT_EQ(fileLocation("/a/b%20c").lastComponent(), "b%20c");
    EXPECT_EQ(folderLocation("/").lastComponent(), "/");
    EXPECT_EQ(parseUrl("file:///a/b%2520c")->lastComponent(), "b%20c");
    EXPECT_EQ(folderLocation("/a").appending("b?", false), (FileUrl{"/a/b?", false, ""}));
    EXPECT_EQ(folderLocation("/").appending("b", true), (FileUrl{"/b", true, ""}));
}

}  // namespace
}  // namespace morvane
