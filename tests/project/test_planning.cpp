#include "project/planning.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "project/project_errors.h"
#include "project/project_json.h"
#include "support/unique_fd.h"
#include "support/uuid.h"
#include "tests/project/engine_fixture.h"

namespace morvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string validationError(const ProjectRequest& request) {
    return errorOf([&] { validate(request); });
}

std::string planningError(const ProjectRequest& request) {
    return errorOf([&] {
        JobContext context;
        planSynchronously(context, request);
    });
}

std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    for (std::size_t index = 0; index < count; ++index)
        result += text;
    return result;
}

TEST(Validate, Names) {
    const Workplace place;
    const auto errorFor = [&](const std::string& name) { return validationError(place.request(name, {})); };
    for (const std::string& name :
         {std::string(), std::string("  \n "), std::string("."), std::string(" .. "), std::string("a/b"),
          std::string("a:b"), std::string("a\tb"), std::string("a\x7f"), std::string("a\xC2\x9F"),
          std::string("bad\xFF"), repeated("影", 180), repeated("影", 60) + "a"})
        EXPECT_EQ(errorFor(name), project_text::invalidName) << name;
    for (const std::string& name : {repeated("影", 60), repeated("a", 180), std::string("..."),
                                    std::string(".hidden"), std::string("a b"), std::string("夜（二）")})
        EXPECT_EQ(errorFor(name), "") << name;
    EXPECT_EQ(validate(place.request(" \n旅拍　 ", {})), folderLocation(place.into() + "/旅拍"));
}

TEST(Validate, ParentFolder) {
    const Workplace place;
    ProjectRequest request = place.request("P", {});
    request.parentURL = *parseUrl("https://example.com/x");
    EXPECT_EQ(validationError(request), project_text::parentNotLocal);
    request.parentURL = folderLocation(place.path("没有"));
    EXPECT_EQ(validationError(request), sentence(project_text::unreachablePathPrefix, "没有"));
    writeFile(place.path("file"), "x");
    request.parentURL = folderLocation(place.path("file"));
    EXPECT_EQ(validationError(request), project_text::parentNotFolder);
    std::filesystem::create_directory_symlink(place.into(), place.path("link"));
    request.parentURL = folderLocation(place.path("link"));
    EXPECT_EQ(validate(request).path, place.into() + "/P");
}

TEST(Validate, FrameRateAndSize) {
    const Workplace place;
    for (const std::int64_t rate : {24, 25, 30, 50, 60}) {
        ProjectRequest request = place.request("P", {});
        request.frameRate = rate;
        EXPECT_EQ(validationError(request), "");
    }
    for (const std::int64_t rate : {0, 23, 29, 120, -25}) {
        ProjectRequest request = place.request("P", {});
        request.frameRate = rate;
        EXPECT_EQ(validationError(request), project_text::unsupportedEdit);
    }
    for (const std::int64_t side : {14, 15, 17, 8193, 8194, 0, -2}) {
        ProjectRequest request = place.request("P", {});
        request.width = side;
        EXPECT_EQ(validationError(request), project_text::unsupportedEdit);
        request = place.request("P", {});
        request.height = side;
        EXPECT_EQ(validationError(request), project_text::unsupportedEdit);
    }
    ProjectRequest request = place.request("P", {});
    request.width = 16;
    request.height = 8192;
    EXPECT_EQ(validationError(request), "");
}

TEST(Validate, TheFirstFaultInOrderIsReported) {
    ProjectRequest request;
    request.name = "/";
    request.parentURL = *parseUrl("https://example.com/x");
    request.frameRate = 1;
    EXPECT_EQ(validationError(request), project_text::invalidName);
    request.name = "P";
    EXPECT_EQ(validationError(request), project_text::parentNotLocal);
    request.parentURL = folderLocation("/nowhere-at-all");
    EXPECT_EQ(validationError(request), sentence(project_text::unreachablePathPrefix, "nowhere-at-all"));
    request.parentURL = fileLocation("/etc/passwd");
    EXPECT_EQ(validationError(request), project_text::parentNotFolder);
    request.parentURL = folderLocation("/tmp");
    EXPECT_EQ(validationError(request), project_text::unsupportedEdit);
}

TEST(CardFolder, OwnNameOrDirectChild) {
    const Workplace place;
    makeTree(place.source(""), {{"CARD/private/x", ""},
                                {"Bdmv/a", ""},
                                {"DCIM/100/a.jpg", ""},
                                {"deep/inner/PRIVATE/a", ""},
                                {"file/CONTENTS", ""}});
    for (const char* name : {"CARD", "Bdmv", "file"})
        EXPECT_TRUE(cardFolder(folderLocation(place.source(name)))) << name;
    for (const char* name : {"DCIM", "deep", "missing"})
        EXPECT_FALSE(cardFolder(folderLocation(place.source(name)))) << name;
}

TEST(Plan, SortsEveryKindIntoItsFolder) {
    const Workplace place;
    makeTree(place.source(""), {{"Day1/b.mov", "1"},
                                {"Day1/A.wav", "22"},
                                {"Day1/Music/take1.wav", "333"},
                                {"Day1/notes/剧本.txt", "4444"},
                                {"Day1/.hidden", "55555"},
                                {"Day1/.DS_Store", "x"},
                                {"Day1/.Trashes/old.mov", "x"},
                                {"Day1/.Spotlight-V100/a", "x"},
                                {"Day1/.fseventsd/a", "x"},
                                {"Day1/empty/", ""},
                                {"single.srt", "666666"}});
    setModified(place.source("Day1/b.mov"), 1'700'000'000.25);
    const ProjectPlan plan = place.plan("旅拍", {"Day1/", "single.srt"});
    EXPECT_THAT(destinations(plan), ElementsAre("07_文案与资料/Day1/.hidden", "02_原始素材/Day1/A.wav",
                                                "04_音乐/Day1/Music/take1.wav", "02_原始素材/Day1/b.mov",
                                                "07_文案与资料/Day1/notes/剧本.txt", "08_字幕/single.srt"));
    EXPECT_EQ(plan.rootURL, folderLocation(place.into() + "/旅拍"));
    EXPECT_EQ(plan.request.name, "旅拍");
    EXPECT_THAT(plan.warnings, IsEmpty());
    const ProjectPlanItem& video = plan.items[3];
    EXPECT_EQ(video.sourceURL, fileLocation(place.source("Day1/b.mov")));
    EXPECT_EQ(video.category, "拍摄素材");
    EXPECT_EQ(video.size, 1);
    EXPECT_DOUBLE_EQ(video.modified, 1'700'000'000.25);
    EXPECT_FALSE(video.isCameraCard || video.duplicateOf || video.sourceHash);
    std::set<std::string> ids{plan.id};
    for (const auto& item : plan.items) {
        EXPECT_EQ(parseUuid(item.id), item.id);
        EXPECT_TRUE(ids.insert(item.id).second);
    }
    EXPECT_FALSE(std::filesystem::exists(place.into() + "/旅拍")) << "planning writes nothing";
}

TEST(Plan, ACameraCardStaysWhole) {
    const Workplace place;
    makeTree(place.source(""), {{"CARD/PRIVATE/M4ROOT/CLIP/C0001.MP4", "1"},
                                {"CARD/PRIVATE/M4ROOT/CLIP/C0001M01.XML", "22"},
                                {"CARD/DCIM/readme.txt", "333"},
                                {"CARD/.DS_Store", "x"}});
    const ProjectPlan plan = place.plan("P", {"CARD/"});
    EXPECT_THAT(destinations(plan),
                ElementsAre("02_原始素材/相机卡备份/CARD/DCIM/readme.txt",
                            "02_原始素材/相机卡备份/CARD/PRIVATE/M4ROOT/CLIP/C0001.MP4",
                            "02_原始素材/相机卡备份/CARD/PRIVATE/M4ROOT/CLIP/C0001M01.XML"));
    EXPECT_THAT(plan.warnings, ElementsAre(sentence("CARD", project_text::cameraCardSuffix)));
    for (const auto& item : plan.items)
        EXPECT_TRUE(item.isCameraCard);
    EXPECT_EQ(plan.items[0].category, "文案资料");
    EXPECT_EQ(plan.items[1].category, "拍摄素材");
}

TEST(Plan, SkipsWhatMustNotBeCopied) {
    const Workplace place;
    makeTree(place.source(""), {{"real/a.mov", "1"},
                                {"My.app/Contents2/a.mov", "22"},
                                {"Lib.FCPBUNDLE/a.mov", "x"},
                                {"walk/ok.mov", "333"},
                                {"walk/Inner.photoslibrary/a.jpg", "x"},
                                {"walk/Old.fcpbundle/a.mov", "x"},
                                {"walk/file.fcpbundle", "x"},
                                {"walk/plain.app.txt", "4444"}});
    std::filesystem::create_symlink("real/a.mov", place.source("link.mov"));
    std::filesystem::create_directory_symlink("real", place.source("linkdir"));
    std::filesystem::create_symlink("../real/a.mov", place.source("walk/link.mov"));
    std::filesystem::create_directory_symlink("../real", place.source("walk/linkdir"));
    ASSERT_EQ(::mkfifo(place.source("walk/pipe.mov").c_str(), 0600), 0);
    ASSERT_EQ(::mkfifo(place.source("pipe.mov").c_str(), 0600), 0);
    ProjectRequest request = place.request("P", {"link.mov", "linkdir/", "My.app/", "Lib.FCPBUNDLE/",
                                                 "Lib.FCPBUNDLE/a.mov", "pipe.mov", "walk/"});
    request.sources.insert(request.sources.begin(), *parseUrl("https://example.com/%E7%89%87.mov"));
    JobContext context;
    const ProjectPlan plan = planSynchronously(context, request);
    EXPECT_THAT(destinations(plan),
                ElementsAre("02_原始素材/walk/ok.mov", "07_文案与资料/walk/plain.app.txt"));
    EXPECT_THAT(plan.warnings, ElementsAre(sentence(project_text::skippedNonLocalPrefix, "片.mov"),
                                           sentence(project_text::skippedLinkPrefix, "link.mov"),
                                           sentence(project_text::skippedLinkPrefix, "linkdir"),
                                           sentence(project_text::skippedPackagePrefix, "My.app"),
                                           sentence(project_text::skippedFcpLibraryPrefix, "Lib.FCPBUNDLE"),
                                           sentence(project_text::skippedFcpLibraryPrefix, "a.mov")));
}

TEST(Plan, APackageWithACameraStructureIsACard) {
    const Workplace place;
    makeTree(place.source(""), {{"Card.bundle/BDMV/a.mts", "1"}});
    EXPECT_THAT(destinations(place.plan("P", {"Card.bundle/"})),
                ElementsAre("02_原始素材/相机卡备份/Card.bundle/BDMV/a.mts"));
}

TEST(Plan, ALinkOnThePathIsResolvedNotSkipped) {
    const Workplace place;
    makeTree(place.source(""), {{"real/a.mov", "1"}});
    std::filesystem::create_directory_symlink("real", place.source("linkdir"));
    const ProjectPlan plan = place.plan("P", {"linkdir/a.mov"});
    EXPECT_EQ(plan.items.at(0).sourceURL, fileLocation(place.source("real/a.mov")));
}

TEST(Plan, TheParentFolderAsSource) {
    const Workplace place;
    makeTree(place.into(), {{"Other/a.mov", "1"}, {"P2/b.mov", "22"}});
    ProjectRequest request = place.request("P", {});
    request.sources = {folderLocation(place.into())};
    JobContext context;
    EXPECT_THAT(destinations(planSynchronously(context, request)),
                ElementsAre("02_原始素材/into/Other/a.mov", "02_原始素材/into/P2/b.mov"));
}

TEST(Plan, TheProjectFolderThatAppearsMeanwhileIsPassedOver) {
    const Workplace place;
    makeTree(place.into(), {{"A/a.mov", "1"}, {"Z/z.mov", "22"}});
    ProjectRequest request = place.request("P", {});
    request.sources = {folderLocation(place.into()), folderLocation(place.into() + "/P/inner")};
    Recorder recorder([&](const ProjectProgress&) {
        writeFile(place.into() + "/P/inner/x.mov", "333");
        return false;
    });
    const ProjectPlan plan = planSynchronously(recorder.context(), request);
    EXPECT_THAT(destinations(plan), ElementsAre("02_原始素材/into/A/a.mov", "02_原始素材/into/Z/z.mov"));
    EXPECT_THAT(plan.warnings, ElementsAre(project_text::skippedTarget));
}

TEST(Plan, NamesThatDifferOnlyInCaseBothSurvive) {
    const Workplace place;
    makeTree(place.source(""), {{"one/A001.MOV", "1"},
                                {"two/a001.mov", "22"},
                                {"c1/CARD/PRIVATE/A.MOV", "333"},
                                {"c2/card/PRIVATE/a.mov", "4444"}});
    EXPECT_THAT(destinations(place.plan("P", {"one/A001.MOV", "two/a001.mov"})),
                ElementsAre("02_原始素材/A001.MOV", "02_原始素材/a001 (2).mov"));
    EXPECT_THAT(destinations(place.plan("P", {"c1/CARD/", "c2/card/"})),
                ElementsAre("02_原始素材/相机卡备份/CARD/PRIVATE/A.MOV",
                            "02_原始素材/相机卡备份/card/PRIVATE/a (2).mov"));
}

TEST(Plan, OddNamesBecomeSafeAndStayApart) {
    const Workplace place;
    makeTree(place.source(""), {{"d\xFF/a:b.mov", "1"},
                                {"d\xFF/a\nb.mov", "22"},
                                {"d\xFF/a\xFE"
                                 "b.mov",
                                 "333"},
                                {"d\xFF/in:ner/x.mov", "4444"}});
    const ProjectPlan plan = place.plan("P", {"d\xFF/"});
    EXPECT_THAT(destinations(plan), ElementsAre("02_原始素材/d_/a_b.mov", "02_原始素材/d_/a_b (2).mov",
                                                "02_原始素材/d_/a_b (3).mov", "02_原始素材/d_/in_ner/x.mov"));
    EXPECT_EQ(plan.items[2].sourceURL.path, place.source("d\xFF/a\xFE"
                                                         "b.mov"));
    EXPECT_NO_THROW(decodeManifest(encodeManifest({1, 0, plan, 0, {}, {}, {}})));
}

TEST(Plan, Refusals) {
    const Workplace place;
    makeTree(place.source(""), {{"a.mov", "1"}, {"empty/", ""}});
    EXPECT_EQ(planningError(place.request("P", {})), project_text::nothingToOrganize);
    EXPECT_EQ(planningError(place.request("P", {"empty/"})), project_text::nothingToOrganize);
    EXPECT_EQ(planningError(place.request("P", {"a.mov", "没有.mov"})),
              sentence(project_text::unreachablePathPrefix, "没有.mov"));
    std::filesystem::create_symlink("nowhere", place.into() + "/dangling");
    std::filesystem::create_directory(place.into() + "/there");
    for (const char* name : {"dangling", "there", " there "})
        EXPECT_EQ(planningError(place.request(name, {"a.mov"})), project_text::projectExists);
    EXPECT_EQ(planningError(place.request("", {"a.mov"})), project_text::invalidName);
}

TEST(Plan, FoldersThatCannotBeListed) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "another user id is needed, which only root can take";
    const Workplace place;
    makeTree(place.source(""), {{"shut/a.mov", "1"}, {"open/shut2/a.mov", "22"}, {"open/z.mov", "333"}});
    std::filesystem::permissions(place.path(""), std::filesystem::perms(0755));
    for (const char* name : {"shut", "open/shut2"})
        std::filesystem::permissions(place.source(name), std::filesystem::perms(0700));
    ASSERT_EQ(::seteuid(65534), 0);
    const std::string refused = planningError(place.request("P", {"shut/"}));
    JobContext context;
    std::optional<ProjectPlan> plan;
    EXPECT_NO_THROW(plan = planSynchronously(context, place.request("P", {"open/"})));
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(refused, project_text::cannotScan);
    ASSERT_TRUE(plan);
    EXPECT_THAT(destinations(*plan), ElementsAre("02_原始素材/open/z.mov"));
    EXPECT_THAT(plan->warnings, ElementsAre(sentence(project_text::skippedUnreadablePrefix, "shut2")));
}

TEST(Plan, ReportsEveryFileAndStopsWhenAsked) {
    const Workplace place;
    makeTree(place.source(""), {{"d/a.mov", "1"}, {"d/b.mov", "22"}, {"d/c.mov", "333"}});
    Recorder all;
    planSynchronously(all.context(), place.request("P", {"d/"}));
    EXPECT_THAT(all.messages(),
                ElementsAre("正在分析来源，已找到1 个文件…", "正在分析来源，已找到2 个文件…",
                            "正在分析来源，已找到3 个文件…", project_text::checkingDuplicates));
    EXPECT_EQ(all.reports().back().completedFiles, 3);
    Recorder two([](const ProjectProgress& progress) { return progress.completedFiles == 2; });
    EXPECT_TRUE(isCancelledBy([&] { planSynchronously(two.context(), place.request("P", {"d/"})); }));
    EXPECT_EQ(two.reports().size(), 2U);
    Recorder none;
    none.stop();
    EXPECT_TRUE(isCancelledBy([&] { planSynchronously(none.context(), place.request("P", {"d/"})); }));
}

TEST(Plan, DeepFoldersAreWalkedToTheEnd) {
    constexpr int levels = 1200;  // more than there may be open descriptors
    const Workplace place;
    std::string deep;
    std::filesystem::create_directory(place.source("t"));
    UniqueFd folder(::open(place.source("t").c_str(), O_RDONLY | O_DIRECTORY));
    for (int level = 0; level < levels; ++level) {
        ASSERT_EQ(::mkdirat(folder.get(), "d", 0755), 0);
        folder = UniqueFd(::openat(folder.get(), "d", O_RDONLY | O_DIRECTORY));
        deep += "d/";
    }
    ASSERT_TRUE(UniqueFd(::openat(folder.get(), "a.mov", O_WRONLY | O_CREAT, 0644)));
    EXPECT_THAT(destinations(place.plan("P", {"t/"})), ElementsAre("02_原始素材/t/" + deep + "a.mov"));
    ASSERT_EQ(std::system(("rm -rf '" + place.source("t") + "'").c_str()), 0);
}

TEST(Plan, ManyFilesStayInTheOrderOfTheirNames) {
    const Workplace place;
    std::vector<std::string> expected;
    for (int folder = 10; folder < 14; ++folder)
        for (int file = 100; file < 600; ++file) {
            const std::string name = "F" + std::to_string(folder) + "/C" + std::to_string(file) + ".mov";
            writeFile(place.source("all/" + name), "");
            expected.push_back("02_原始素材/all/" + name);
        }
    EXPECT_EQ(destinations(place.plan("P", {"all/"})), expected);
}

TEST(Plan, WarnsWhenTheManifestComesNearItsLimit) {
    constexpr int files = 12'000;
    const Workplace place;
    std::string folder = place.source("d/");
    for (const char letter : {'a', 'b', 'c', 'd', 'e'})
        folder += std::string(200, letter) + "/";
    std::filesystem::create_directories(folder);
    for (int index = 0; index < files; ++index) {
        const std::string path = folder + std::to_string(index) + std::string(150, 'n') + ".mov";
        const UniqueFd file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644));
        ASSERT_EQ(::ftruncate(file.get(), index), 0);  // sizes nobody shares: nothing is read
    }
    const ProjectPlan plan = place.plan("P", {"d/"});
    ASSERT_EQ(plan.items.size(), static_cast<std::size_t>(files));
    EXPECT_GT(expectedManifestSize(plan), 31'457'280U);
    EXPECT_THAT(plan.warnings, ElementsAre(project_text::manifestNearLimit));
}

}  // namespace
}  // namespace morvane::test
