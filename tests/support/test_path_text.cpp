// Pieces of paths as bytes.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/path_text.h"

namespace morvane {
namespace {

TEST(PathText, LastComponent) {
    EXPECT_EQ(lastPathComponent("/a/b.mov"), "b.mov");
    EXPECT_EQ(lastPathComponent("/a/b/"), "b");
    EXPECT_EQ(lastPathComponent("/a/b///"), "b");
    EXPECT_EQ(lastPathComponent("/"), "/");
    EXPECT_EQ(lastPathComponent("//"), "/");
    EXPECT_EQ(lastPathComponent("a"), "a");
    EXPECT_EQ(lastPathComponent(""), "");
    EXPECT_EQ(lastPathComponent("/a/\xFF\n"), "\xFF\n");
}

TEST(PathText, Parent) {
    EXPECT_EQ(parentPath("/a/b.mov"), "/a");
    EXPECT_EQ(parentPath("/a/b/"), "/a");
    EXPECT_EQ(parentPath("/a//b"), "/a");
    EXPECT_EQ(parentPath("/a"), "/");
    EXPECT_EQ(parentPath("/"), "/");
    EXPECT_EQ(parentPath("a"), "");
    EXPECT_EQ(parentPath(""), "");
}

TEST(PathText, Extension) {
    EXPECT_EQ(pathExtension("/a.b/c.MOV"), "MOV");
    EXPECT_EQ(pathExtension("/a.b/c"), "");
    EXPECT_EQ(pathExtension("c.tar.gz"), "gz");
    EXPECT_EQ(pathExtension(".hidden"), "");
    EXPECT_EQ(pathExtension(".hidden.mov"), "mov");
    EXPECT_EQ(pathExtension("name."), "");
    EXPECT_EQ(pathExtension("/a/film.fcpbundle/"), "fcpbundle");
    EXPECT_EQ(pathExtension(""), "");
    EXPECT_EQ(pathExtension("/"), "");
}

TEST(PathText, WithoutExtension) {
    EXPECT_EQ(withoutExtension("/a.b/c.mov"), "/a.b/c");
    EXPECT_EQ(withoutExtension("/a.b/c"), "/a.b/c");
    EXPECT_EQ(withoutExtension("c.tar.gz"), "c.tar");
    EXPECT_EQ(withoutExtension(".hidden"), ".hidden");
    EXPECT_EQ(withoutExtension("name."), "name.");
    EXPECT_EQ(withoutExtension("/a/x.app/"), "/a/x");
}

TEST(PathText, Pieces) {
    EXPECT_EQ(pathPieces("/a//b/c/"), (std::vector<std::string_view>{"a", "b", "c"}));
    EXPECT_TRUE(pathPieces("").empty());
    EXPECT_TRUE(pathPieces("///").empty());
}

TEST(PathText, Join) {
    EXPECT_EQ(joinPath("/a", "b"), "/a/b");
    EXPECT_EQ(joinPath("/a/", "b"), "/a/b");
    EXPECT_EQ(joinPath("/a", "/b"), "/a/b");
    EXPECT_EQ(joinPath("/", "b"), "/b");
}

TEST(PathText, Standardized) {
    EXPECT_EQ(standardizedPath("/a/./b/../c//d/"), "/a/c/d");
    EXPECT_EQ(standardizedPath("/../../a"), "/a");
    EXPECT_EQ(standardizedPath("/"), "/");
    EXPECT_EQ(standardizedPath("//"), "/");
    EXPECT_EQ(standardizedPath("a/../../b"), "../b");
    EXPECT_EQ(standardizedPath("../.."), "../..");
    EXPECT_EQ(standardizedPath("a/.."), ".");
    EXPECT_EQ(standardizedPath(""), "");
    EXPECT_EQ(standardizedPath("/a/...b/"), "/a/...b");
}

TEST(PathText, AtOrBelow) {
    EXPECT_TRUE(isAtOrBelow("/a/b", "/a"));
    EXPECT_TRUE(isAtOrBelow("/a", "/a"));
    EXPECT_TRUE(isAtOrBelow("/a/b", "/a/"));
    EXPECT_TRUE(isAtOrBelow("/a", "/"));
    EXPECT_FALSE(isAtOrBelow("/ab", "/a"));
    EXPECT_FALSE(isAtOrBelow("/", "/a"));
    EXPECT_FALSE(isAtOrBelow("/a", ""));
}

}  // namespace
}  // namespace morvane
