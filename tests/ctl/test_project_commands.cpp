// project plan, create, resume and verify as a script uses them, on real files.
#include <csignal>
#include <filesystem>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ctl/ctl_fixture.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using nlohmann::json;
using test::CtlOutcome;
using test::listTree;
using test::TemporaryFolder;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ProjectCommands : public testing::Test {
protected:
    ProjectCommands() {
        test::makeTree(folder_.path(), {{"card/PRIVATE/A001.MOV", "first clip"},
                                        {"card/PRIVATE/A001.XML", "side car"},
                                        {"footage/A001.mov", "another clip"},
                                        {"footage/配乐/song.wav", "music"},
                                        {"projects/", ""}});
    }

    std::vector<std::string> request(const std::string& command, const std::string& name) const {
        return {"project",  command,          "--name",           name, "--into", projects_,
                "--no-fcp", folder_ / "card", folder_ / "footage"};
    }
    static CtlOutcome run(const std::vector<std::string>& arguments) { return test::runCtl(arguments); }
    static json runJson(std::vector<std::string> arguments, int status = 0) {
        arguments.emplace_back("--json");
        const CtlOutcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, status) << outcome.errors;
        return json::parse(outcome.output);
    }
    std::string manifest(const std::string& name) const {
        return projects_ + "/" + name + "/MORVANE项目清单.json";
    }

    const TemporaryFolder folder_;
    const std::string projects_ = folder_ / "projects";
};

TEST_F(ProjectCommands, PlanShowsEveryFileAndCreatesNothing) {
    const json plan = runJson(request("plan", "秋日旅拍"));
    EXPECT_EQ(plan["rootURL"], "file://" + projects_ + "/%E7%A7%8B%E6%97%A5%E6%97%85%E6%8B%8D/");
    EXPECT_EQ(plan["request"]["name"], "秋日旅拍");
    EXPECT_EQ(plan["request"]["createFCP"], false);
    EXPECT_EQ(plan["request"]["frameRate"], 25);
    EXPECT_EQ(plan["request"]["width"], 1920);
    EXPECT_EQ(plan["request"]["height"], 1080);
    std::vector<std::string> destinations;
    for (const json& item : plan["items"])
        destinations.push_back(item["relativeDestination"]);
    EXPECT_EQ(destinations.size(), 4U);
    EXPECT_THAT(destinations, Contains(testing::EndsWith("card/PRIVATE/A001.XML")));
    EXPECT_THAT(listTree(projects_), IsEmpty());

    const CtlOutcome text = run(request("plan", "秋日旅拍"));
    EXPECT_EQ(text.status, 0);
    EXPECT_THAT(text.output, testing::StartsWith(projects_ + "/秋日旅拍/\n"));
    EXPECT_THAT(text.output, HasSubstr("4 个文件"));
    EXPECT_THAT(text.output, HasSubstr("card：检测到相机结构"));
    EXPECT_EQ(text.errors, "");
}

TEST_F(ProjectCommands, AStepUpBehindALinkLeadsOutOfTheFolderItNames) {
    test::makeTree(folder_ / "real", {{"a/inner/", ""}, {"a/s.mov", "right"}, {"s.mov", "wrong"}});
    std::filesystem::create_directory_symlink("a/inner", folder_ / "real/l");
    const json plan = runJson({"project", "plan", "--name", "N", "--into", folder_ / "real/l/..", "--no-fcp",
                               folder_ / "real/l/../s.mov"});
    EXPECT_EQ(plan["rootURL"], "file://" + (folder_ / "real/a/N/"));
    ASSERT_EQ(plan["items"].size(), 1U);
    EXPECT_EQ(plan["items"][0]["sourceURL"], "file://" + (folder_ / "real/a/s.mov"));
}

TEST_F(ProjectCommands, TheStoreFolderIsNotMade) {
    auto arguments = request("create", "N");
    arguments.insert(arguments.begin(), {"--store", folder_ / "store"});
    EXPECT_EQ(run(arguments).status, 0);
    EXPECT_EQ(run({"--store", folder_ / "store", "project", "verify", manifest("N")}).status, 0);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "store"));
}

TEST_F(ProjectCommands, OptionsReachTheRequest) {
    auto arguments = request("plan", "N");
    arguments.insert(arguments.end(), {"--frame-rate", "50", "--size", "1080x1920"});
    const json plan = runJson(arguments);
    EXPECT_EQ(plan["request"]["frameRate"], 50);
    EXPECT_EQ(plan["request"]["width"], 1080);
    EXPECT_EQ(plan["request"]["height"], 1920);
    arguments.insert(arguments.end(), {"--frame-rate", "26"});
    EXPECT_EQ(run(arguments).status, 64);  // the same option twice
    auto unsupported = request("plan", "N");
    unsupported.insert(unsupported.end(), {"--frame-rate", "26"});
    const CtlOutcome refused = run(unsupported);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.errors, "morvanectl: 首版主剪辑支持 24/25/30/50/60 帧及 16–8192 像素的偶数尺寸。\n");
}

TEST_F(ProjectCommands, CreateCopiesVerifiesAndTellsTheResult) {
    const json result = runJson(request("create", "First"));
    EXPECT_EQ(result["rootURL"], "file://" + projects_ + "/First/");
    EXPECT_EQ(result["manifestURL"],
              "file://" + projects_ + "/First/MORVANE%E9%A1%B9%E7%9B%AE%E6%B8%85%E5%8D%95.json");
    EXPECT_EQ(result["copiedCount"], 4);
    EXPECT_EQ(result["failedCount"], 0);
    EXPECT_EQ(result["cancelled"], false);
    EXPECT_TRUE(result["warnings"].is_array());
    EXPECT_FALSE(result.contains("fcpxmlURL"));
    EXPECT_THAT(listTree(projects_), Contains(testing::EndsWith("PRIVATE/A001.MOV")));
    // The sources are as they were.
    EXPECT_EQ(test::readAll(folder_ / "card/PRIVATE/A001.MOV"), "first clip");

    const CtlOutcome again = run(request("create", "First"));
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.output, "");
    EXPECT_EQ(again.errors,
              "morvanectl: 项目目录已经存在；请选择新名称。已有 MORVANE 项目请使用清单重试。\n");
}

TEST_F(ProjectCommands, VerifyFindsWhatChangedAndWhatIsMissing) {
    runJson(request("create", "First"));
    EXPECT_EQ(runJson({"project", "verify", manifest("First")}),
              json({{"checked", 4}, {"changed", json::array()}, {"missing", json::array()}}));
    std::string changed;
    std::string missing;
    for (const std::string& path : listTree(projects_ + "/First")) {
        if (path.ends_with("A001.MOV"))
            changed = path;
        if (path.ends_with("song.wav"))
            missing = path;
    }
    ASSERT_NE(changed, "");
    ASSERT_NE(missing, "");
    const auto tree = listTree(projects_);
    test::writeFile(projects_ + "/First/" + changed, "First clip");
    std::filesystem::remove(projects_ + "/First/" + missing);
    EXPECT_EQ(
        runJson({"project", "verify", manifest("First")}, 3),
        json({{"checked", 4}, {"changed", json::array({changed})}, {"missing", json::array({missing})}}));
    const CtlOutcome text = run({"project", "verify", manifest("First")});
    EXPECT_EQ(text.status, 3);
    EXPECT_EQ(text.output, "已改变：" + changed + "\n缺失：" + missing + "\n已核对 4 个文件。\n");
    EXPECT_EQ(listTree(projects_).size(), tree.size() - 1);  // nothing was put back
}

TEST_F(ProjectCommands, FailedFilesEndWith3AndResumeFinishesThem) {
    runJson(request("create", "First"));
    // A copy that was verified is damaged behind the program's back: resume reports it, changes nothing.
    std::string damaged;
    for (const std::string& path : listTree(projects_ + "/First"))
        if (path.ends_with("A001.MOV"))
            damaged = projects_ + "/First/" + path;
    test::writeFile(damaged, "damage 010");
    const json failed = runJson({"project", "resume", manifest("First")}, 3);
    EXPECT_EQ(failed["failedCount"], 1);
    EXPECT_EQ(failed["copiedCount"], 3);
    EXPECT_EQ(test::readAll(damaged), "damage 010");
    std::filesystem::remove(damaged);
    const json finished = runJson({"project", "resume", manifest("First")});
    EXPECT_EQ(finished["failedCount"], 0);
    EXPECT_EQ(finished["copiedCount"], 4);
    EXPECT_EQ(test::readAll(damaged), "first clip");
}

class StoppedProject : public ProjectCommands, public testing::WithParamInterface<int> {};

TEST_P(StoppedProject, KeepsWhatIsDoneAndResumeFinishes) {
    // Sparse, so that it is made at once; long enough to be copied while the signal comes.
    const std::string big = folder_ / "footage/zz-long.mov";
    test::writeFile(big, "");
    std::filesystem::resize_file(big, 400'000'000);
    auto arguments = request("create", "Big");
    arguments.emplace_back("--json");
    test::RunningCtl create(arguments);
    ASSERT_TRUE(test::waitUntil([&] {
        if (!std::filesystem::exists(projects_ + "/Big/02_原始素材"))
            return false;
        const auto paths = listTree(projects_ + "/Big");
        return std::any_of(paths.begin(), paths.end(), [](const std::string& path) {
            return path.ends_with(".partial") && path.find("footage") != std::string::npos;
        });
    }));
    create.signal(GetParam());
    const CtlOutcome outcome = create.finish();
    EXPECT_EQ(outcome.status, 130);
    EXPECT_EQ(outcome.errors, "morvanectl: 已停止，完成的副本与清单已保留。\n");
    const json result = json::parse(outcome.output);
    EXPECT_EQ(result["cancelled"], true);
    EXPECT_EQ(result["failedCount"], 0);
    for (const std::string& path : listTree(projects_ + "/Big"))
        EXPECT_FALSE(path.ends_with(".partial")) << path;

    const json finished = runJson({"project", "resume", manifest("Big")});
    EXPECT_EQ(finished["copiedCount"], 5);
    EXPECT_EQ(finished["cancelled"], false);
}

INSTANTIATE_TEST_SUITE_P(Signals, StoppedProject, testing::Values(SIGINT, SIGTERM));

TEST_F(ProjectCommands, AStopWhilePlanningCreatesNothing) {
    // A pair of equally long, equal files is read to its end: time for the signal.
    for (const char* name : {"footage/x.mov", "footage/y.mov"}) {
        test::writeFile(folder_ / name, "");
        std::filesystem::resize_file(folder_ / name, 3'000'000'000);
    }
    test::RunningCtl plan(request("plan", "Never"));
    plan.signalOnceRunning(SIGINT);
    const CtlOutcome outcome = plan.finish();
    EXPECT_EQ(outcome.status, 130);
    EXPECT_EQ(outcome.errors, "morvanectl: 已停止；原文件保留，完成的副本与清单可供重试。\n");
    EXPECT_THAT(listTree(projects_), IsEmpty());
}

TEST_F(ProjectCommands, RefusalsAreTheEnginesSentence) {
    EXPECT_EQ(run(request("plan", "a/b")).errors,
              "morvanectl: 请输入有效项目名，不含斜杠、冒号、控制字符，且长度不超过 180 字节。\n");
    EXPECT_EQ(run({"project", "plan", "--name", "N", "--into", folder_ / "nowhere", folder_ / "card"}).errors,
              "morvanectl: 路径不存在或不可访问：nowhere\n");
    const CtlOutcome resume = run({"project", "resume", folder_ / "footage/A001.mov"});
    EXPECT_EQ(resume.status, 1);
    EXPECT_EQ(std::count(resume.errors.begin(), resume.errors.end(), '\n'), 1) << resume.errors;
    EXPECT_EQ(run({"project", "verify", folder_ / "missing.json"}).status, 1);
}

TEST_F(ProjectCommands, AnEmptyArgumentIsNotTheWorkingFolder) {
    const auto plan = [this](const std::string& parent, const std::string& source) {
        return run({"project", "plan", "--name", "N", "--into", parent, source});
    };
    const CtlOutcome source = plan(projects_, "");
    EXPECT_EQ(source.status, 1);
    EXPECT_EQ(source.errors, "morvanectl: 路径不存在或不可访问：\n");
    const CtlOutcome parent = plan("", folder_ / "footage");
    EXPECT_EQ(parent.status, 1);
    EXPECT_EQ(parent.errors, "morvanectl: 路径不存在或不可访问：\n");
    EXPECT_EQ(run({"project", "resume", ""}).status, 1);
}

TEST_F(ProjectCommands, SourceNamesThatAreNoUtf8AreCopied) {
    test::makeTree(folder_ / "odd\xff", {{"clip\xfe.mov", "odd bytes"}, {"line\nbreak.wav", "sound"}});
    const std::vector<std::string> arguments = {
        "project", "create", "--name", "Odd", "--into", projects_, "--no-fcp", folder_ / "odd\xff", "--json"};
    const CtlOutcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(json::parse(outcome.output)["copiedCount"], 2);
    EXPECT_EQ(runJson({"project", "verify", manifest("Odd")})["checked"], 2);
    auto text = arguments;
    text[1] = "plan";
    text[3] = "Odd2";
    text.pop_back();
    EXPECT_EQ(run(text).status, 0);
}

}  // namespace
}  // namespace morvane
