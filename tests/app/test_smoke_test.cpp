// The self-check: frames, summary and error file, in the window and as the built program.
#include "app/smoke_test.h"

#include <QImage>
#include <QProcess>
#include <QProcessEnvironment>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/theme/elided_label.h"
#include "app/theme/keyboard_window.h"
#include "app/theme/segmented_control.h"
#include "catalog/settings.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using nlohmann::json;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

class SmokeTest : public testing::Test {
protected:
    SmokeTest() { frame_.build(new QWidget, new QWidget); }

    void run(const std::string& folder) {
        frame_.window()->setAttribute(Qt::WA_DontShowOnScreen);
        frame_.window()->show();
        runSmokeTest(
            folder, frame_,
            [this](Workspace workspace) {
                shown_.push_back(workspace);
                frame_.workspaceControl().setSelectedSegment(static_cast<int>(workspace));
                frame_.showWorkspace(workspace);
            },
            [] { return SmokeFacts{"/data", 5, 4, 3, 2, 1}; });
    }

    const TemporaryFolder folder_;
    WindowFrame frame_;
    std::vector<Workspace> shown_;
};

QSize pictureSize(const std::string& path) {
    const std::string bytes = test::readAll(path);
    return QImage::fromData(reinterpret_cast<const uchar*>(bytes.data()), static_cast<int>(bytes.size()),
                            "PNG")
        .size();
}

TEST_F(SmokeTest, WritesEveryFrameInItsSizeAndTheSummary) {
    const std::string out = folder_ / "a/b/out";  // parents are made
    run(out);
    EXPECT_THAT(test::listTree(out),
                ElementsAre("ui-smoke-results.json", "整理素材.png", "整理素材_小窗口.png", "管理素材.png"));
    EXPECT_EQ(pictureSize(out + "/管理素材.png"), QSize(1340, 840));
    EXPECT_EQ(pictureSize(out + "/整理素材.png"), QSize(1340, 900));
    EXPECT_EQ(pictureSize(out + "/整理素材_小窗口.png"), QSize(1100, 700));
    EXPECT_THAT(shown_, ElementsAre(Workspace::Management, Workspace::Organizer, Workspace::Organizer));
    const json frame = {
        {"width", 1340}, {"height", 840}, {"statusVisible", true}, {"workspaceVisible", true}};
    json expected = {{"scope", "Isolated AppKit view render/layout; does not operate FCP or user media"},
                     {"frames", json::array({frame, frame, frame})},
                     {"dataDirectory", "/data"},
                     {"assetCount", 5},
                     {"visibleResultCount", 4},
                     {"rootsCount", 3},
                     {"favoritesCount", 2},
                     {"recentCount", 1}};
    expected["frames"][0]["name"] = "管理素材";
    expected["frames"][1]["name"] = "整理素材";
    expected["frames"][1]["height"] = 900;
    expected["frames"][2]["name"] = "整理素材_小窗口";
    expected["frames"][2]["width"] = 1100;
    expected["frames"][2]["height"] = 700;
    EXPECT_EQ(json::parse(test::readAll(out + "/ui-smoke-results.json")), expected);
}

TEST_F(SmokeTest, WhatIsOutOfViewIsReported) {
    frame_.status().hide();
    run(folder_.path());
    const json results = json::parse(test::readAll(folder_ / "ui-smoke-results.json"));
    for (const json& frame : results["frames"]) {
        EXPECT_EQ(frame["statusVisible"], false);
        EXPECT_EQ(frame["workspaceVisible"], true);
    }
}

TEST_F(SmokeTest, TheFirstErrorStandsInTheErrorFileInsteadOfResults) {
    const std::string out = folder_ / "out";
    test::makeTree(out, {{"管理素材.png/occupied", "a folder in a picture's place"},
                         {"ui-smoke-results.json", "of an earlier run"}});
    run(out);
    EXPECT_FALSE(std::filesystem::exists(out + "/ui-smoke-results.json"));
    EXPECT_NE(test::readAll(out + "/ui-smoke-error.txt"), "");
}

TEST_F(SmokeTest, AnEarlierErrorIsNotLeftBesideNewResults) {
    const std::string out = folder_ / "out";
    test::makeTree(out, {{"ui-smoke-error.txt", "of an earlier run"}});
    run(out);
    EXPECT_FALSE(std::filesystem::exists(out + "/ui-smoke-error.txt"));
    EXPECT_TRUE(std::filesystem::exists(out + "/ui-smoke-results.json"));
}

TEST_F(SmokeTest, AnOutputFolderThatCannotBeMadeHarmsNothing) {
    test::writeFile(folder_ / "file", "x");
    run(folder_ / "file/out");
    EXPECT_THAT(test::listTree(folder_.path()), ElementsAre("file"));
}

using Variables = std::vector<std::pair<QString, QString>>;

/// The built program, of the display variables having `display` alone.
struct Program {
    explicit Program(const QStringList& arguments, const std::string& home, const Variables& display = {}) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(name);
        for (const auto& [name, value] : display)
            environment.insert(name, value);
        environment.insert("XDG_DATA_HOME", QString::fromStdString(home));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(MORVANE_BIN_DIR "/morvane", arguments);
        finished = process.waitForFinished(60'000);
        status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        errors = process.readAllStandardError().toStdString();
    }
    bool finished = false;
    int status = -1;
    std::string errors;
};

TEST(SmokeProgram, RunsWithoutADisplayOnItsOwnStoreOnly) {
    const TemporaryFolder folder;
    const std::string out = folder / "out";
    // The user's own library must stay untouched and unread.
    test::writeFile(folder / "home/LumvexAssetLibrary/settings.json", "user data");
    const Program program({"--ui-smoke-test", QString::fromStdString(out)}, folder / "home");
    ASSERT_TRUE(program.finished);
    EXPECT_EQ(program.status, 0);
    EXPECT_EQ(program.errors, "");
    const json results = json::parse(test::readAll(out + "/ui-smoke-results.json"));
    EXPECT_EQ(results["dataDirectory"], out + "/IsolatedTestData");
    EXPECT_EQ(results["frames"].size(), 3U);
    for (const json& frame : results["frames"]) {
        EXPECT_EQ(frame["statusVisible"], true) << frame;
        EXPECT_EQ(frame["workspaceVisible"], true) << frame;
    }
    EXPECT_EQ(pictureSize(out + "/整理素材_小窗口.png"), QSize(1100, 700));
    EXPECT_THAT(test::listTree(folder / "home"),
                ElementsAre("LumvexAssetLibrary/", "LumvexAssetLibrary/settings.json"));
    EXPECT_EQ(test::readAll(folder / "home/LumvexAssetLibrary/settings.json"), "user data");
}

class SilentServer : public testing::TestWithParam<Variables> {};

TEST_P(SilentServer, IsAsGoodAsNoDisplay) {
    const TemporaryFolder folder;
    const std::string out = folder / "out";
    const QStringList arguments{"--ui-smoke-test", QString::fromStdString(out)};
    const auto files = [&] {
        std::vector<std::string> bytes;
        for (const char* name :
             {"ui-smoke-results.json", "管理素材.png", "整理素材.png", "整理素材_小窗口.png"})
            bytes.push_back(test::readAll(out + "/" + name));
        return bytes;
    };
    ASSERT_EQ(Program(arguments, folder / "home").status, 0);
    const std::vector<std::string> wanted = files();
    std::filesystem::remove_all(out);
    const Program program(arguments, folder / "home", GetParam());
    ASSERT_EQ(program.status, 0) << program.errors;
    EXPECT_EQ(program.errors, "");
    EXPECT_EQ(files(), wanted);
    EXPECT_FALSE(std::filesystem::exists(out + "/ui-smoke-error.txt"));
}

INSTANTIATE_TEST_SUITE_P(
    Servers, SilentServer,
    testing::Values(Variables{{"DISPLAY", ":54321"}}, Variables{{"WAYLAND_DISPLAY", "/nowhere/wayland-0"}},
                    Variables{{"DISPLAY", ":54321"}, {"WAYLAND_DISPLAY", "/nowhere/wayland-0"}}));

TEST(SmokeProgram, CountsTheIsolatedLibrary) {
    const TemporaryFolder folder;
    const std::string store = folder / "out/IsolatedTestData";
    test::makeTree(folder / "media", {{"a.mov", "1"}, {"b/c.wav", "2"}});
    std::filesystem::create_directories(store);
    Settings settings;
    settings.roots = {folder / "media"};
    settings.favorites = {folder / "media/a.mov"};
    settings.recent = {"/x", "/y"};
    saveSettings(store, settings);
    const Program first({"--ui-smoke-test", QString::fromStdString(folder / "out")}, folder / "home");
    ASSERT_EQ(first.status, 0);
    const json results = json::parse(test::readAll(folder / "out/ui-smoke-results.json"));
    EXPECT_EQ(results["rootsCount"], 1);
    EXPECT_EQ(results["favoritesCount"], 1);
    EXPECT_EQ(results["recentCount"], 2);
}

struct Refusal {
    QStringList arguments;
    int status;
};

class Refusals : public testing::TestWithParam<Refusal> {};

TEST_P(Refusals, TellWhyAndTouchNothing) {
    const TemporaryFolder folder;
    const Program program(GetParam().arguments, folder / "home");
    ASSERT_TRUE(program.finished);
    EXPECT_EQ(program.status, GetParam().status);
    EXPECT_EQ(std::count(program.errors.begin(), program.errors.end(), '\n'), 1) << program.errors;
    if (GetParam().status == 64) {
        EXPECT_EQ(program.errors, "--ui-smoke-test 需要一个绝对输出目录；未启动应用，未访问个人索引。\n");
    }
    EXPECT_THAT(test::listTree(folder.path()), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Table, Refusals,
                         testing::Values(Refusal{{"--ui-smoke-test"}, 64},
                                         Refusal{{"--ui-smoke-test", "relative/out"}, 64},
                                         Refusal{{"--ui-smoke-test", ""}, 64},
                                         // No display at all: a clear line, no toolkit text.
                                         Refusal{{}, 1}));

}  // namespace
}  // namespace morvane
