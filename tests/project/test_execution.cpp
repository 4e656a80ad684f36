#include "project/execution.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/volume_space.h"
#include "project/manifest.h"
#include "project/manifest_writer.h"
#include "project/planning.h"
#include "project/project_errors.h"
#include "project/project_template.h"
#include "project/temporary_file.h"
#include "support/system_error.h"
#include "tests/project/engine_fixture.h"
#include "tests/project/mount_fixture.h"

namespace morvane::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

class Execution : public testing::Test {
protected:
    Execution() {
        makeTree(place.source(""), {{"a.mov", "first"}, {"b.mov", "second file"}, {"c.mov", "3"}});
    }

    std::string root() const { return place.into() + "/P"; }
    FileUrl manifestURL() const { return fileLocation(root() + "/" + std::string(manifestFilename)); }
    ProjectPlan plan() const { return place.plan("P", {"a.mov", "b.mov", "c.mov"}); }
    ProjectManifest onDisk() const { return manifestAt(root()); }
    std::string copyPath(const std::string& name) const { return root() + "/02_原始素材/" + name; }

    static ProjectResult execute(const ProjectPlan& planned) {
        JobContext context;
        return executeSynchronously(context, planned);
    }
    ProjectResult retry() const {
        JobContext context;
        return retrySynchronously(context, manifestURL());
    }
    static std::string executeError(const ProjectPlan& planned) {
        return errorOf([&] { execute(planned); });
    }
    std::string retryError() const {
        return errorOf([&] { retry(); });
    }
    /// Writes `manifest` as a dead run would have left it.
    void leave(ProjectManifest manifest) const {
        const UniqueFd folder(::open(root().c_str(), O_RDONLY | O_DIRECTORY));
        ManifestWriter(folder.get()).persist(manifest);
    }
    std::vector<ProjectFileState> states() const {
        std::vector<ProjectFileState> found;
        for (const auto& record : onDisk().files)
            found.push_back(record.state);
        return found;
    }

    Workplace place;
};

using enum ProjectFileState;

TEST_F(Execution, ANewProject) {
    const ProjectPlan planned = plan();
    const ProjectResult result = execute(planned);
    EXPECT_EQ(result.rootURL, folderLocation(root()));
    EXPECT_EQ(result.manifestURL, manifestURL());
    EXPECT_FALSE(result.fcpxmlURL || result.cancelled);
    EXPECT_EQ(result.copiedCount, 3);
    EXPECT_EQ(result.failedCount, 0);
    EXPECT_THAT(result.warnings, IsEmpty());

    std::vector<std::string> expected{std::string(markerFilename), std::string(manifestFilename),
                                      "02_原始素材/a.mov", "02_原始素材/b.mov", "02_原始素材/c.mov"};
    for (const auto folder : templateFolders)
        expected.push_back(std::string(folder) + "/");
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(listTree(root()), expected);
    EXPECT_EQ(readAll(root() + "/" + std::string(markerFilename)), planned.id);
    EXPECT_EQ(readAll(copyPath("b.mov")), "second file");

    const ProjectManifest manifest = onDisk();
    EXPECT_EQ(manifest.schemaVersion, 1);
    EXPECT_EQ(manifest.revision, 1 + 2 * 3 + 1);
    EXPECT_EQ(manifest.plan, planned);
    EXPECT_THAT(states(), Each(verified));
    EXPECT_EQ(manifest.files[0].sha256, digestOf("first"));
    EXPECT_EQ(manifest.files[0].itemID, planned.items[0].id);
    EXPECT_FALSE(manifest.files[0].error || manifest.fcpxmlFilename);
}

TEST_F(Execution, APlanWithoutItems) {
    ProjectPlan planned = plan();
    planned.items.clear();
    planned.warnings = {"reminder"};
    Recorder recorder;
    const ProjectResult result = executeSynchronously(recorder.context(), planned);
    EXPECT_EQ(result.copiedCount + result.failedCount, 0);
    EXPECT_THAT(result.warnings, ElementsAre("reminder"));
    EXPECT_EQ(listTree(root()).size(), 12U);
    EXPECT_THAT(recorder.messages(), ElementsAre("已校验 0 个文件；失败 0 个。FCP 尚未导入。"));
    EXPECT_THAT(onDisk().files, IsEmpty());
}

TEST_F(Execution, ProgressCountsFilesAndBytes) {
    writeFile(place.source("b.mov"), someBytes(1'500'000));
    Recorder recorder;
    executeSynchronously(recorder.context(), plan());
    const std::int64_t total = 5 + 1'500'000 + 1;
    EXPECT_THAT(
        recorder.reports(),
        ElementsAre(ProjectProgress{0, 3, 5, total, "复制与校验：a.mov"},
                    ProjectProgress{1, 3, 5 + 1'048'576, total, "复制与校验：b.mov"},
                    ProjectProgress{1, 3, 5 + 1'500'000, total, "复制与校验：b.mov"},
                    ProjectProgress{2, 3, total, total, "复制与校验：c.mov"},
                    ProjectProgress{3, 3, total, total, "已校验 3 个文件；失败 0 个。FCP 尚未导入。"}));
}

TEST_F(Execution, PlansThatAreNotSound) {
    const ProjectPlan sound = plan();
    ProjectPlan planned = sound;
    planned.rootURL = folderLocation(place.into() + "/Q");
    EXPECT_EQ(executeError(planned), project_text::invalidPlan);
    planned = sound;
    planned.items[1].relativeDestination = "02_原始素材/../../x";
    EXPECT_EQ(executeError(planned), project_text::invalidPlan);
    planned = sound;
    planned.items[1].size = -1;
    EXPECT_EQ(executeError(planned), project_text::invalidPlan);
    planned = sound;
    planned.request.frameRate = 29;
    EXPECT_EQ(executeError(planned), project_text::unsupportedEdit);
    EXPECT_THAT(listTree(place.into()), IsEmpty());
}

TEST_F(Execution, TotalsThatOverflow) {
    ProjectPlan planned = plan();
    planned.items[0].size = largest;
    EXPECT_EQ(executeError(planned), project_text::invalidTotal);
    planned.items[0].size = 9'223'372'036'853'727'231;
    planned.items[1].size = planned.items[2].size = 0;
    EXPECT_EQ(executeError(planned), project_text::invalidTotal);
    planned.items[0].size = 9'223'372'036'853'727'230;
    EXPECT_EQ(executeError(planned), project_text::notEnoughSpace);
    EXPECT_THAT(listTree(place.into()), IsEmpty());
}

TEST_F(Execution, TheFreeSpaceLimitIsExact) {
    const Mount mount = Mount::tmpfs(place.into(), 8'388'608);
    if (!mount)
        GTEST_SKIP() << mount.problem();
    ProjectPlan planned = plan();
    planned.items.resize(1);
    const std::int64_t available = availableBytes(place.into()).value();
    planned.items[0].size = available - 1'048'576 + 1;
    EXPECT_EQ(executeError(planned), project_text::notEnoughSpace);
    EXPECT_THAT(listTree(place.into()), IsEmpty());
    planned.items[0].size = available - 1'048'576;
    EXPECT_EQ(execute(planned).failedCount, 1) << "the check passes; the size is not the source's";
}

TEST_F(Execution, AnExistingFolderIsNeverReused) {
    const ProjectPlan planned = plan();
    std::filesystem::create_directory(root());
    EXPECT_EQ(executeError(planned), project_text::cannotMakeProject);
    EXPECT_THAT(listTree(root()), IsEmpty());
    std::filesystem::remove(root());
    std::filesystem::create_symlink("nowhere", root());
    EXPECT_EQ(executeError(planned), project_text::cannotMakeProject);
}

TEST_F(Execution, AParentFolderThisUserMayNotWrite) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "another user id is needed, which only root can take";
    const ProjectPlan planned = plan();
    std::filesystem::permissions(place.path(""), std::filesystem::perms(0755));
    ASSERT_EQ(::seteuid(65534), 0);
    const std::string error = executeError(planned);
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(error, project_text::cannotMakeProject);
}

TEST_F(Execution, AStopBeforeTheFolderLeavesNothing) {
    const ProjectPlan planned = plan();
    Recorder recorder;
    recorder.stop();
    EXPECT_TRUE(isCancelledBy([&] { executeSynchronously(recorder.context(), planned); }));
    EXPECT_THAT(listTree(place.into()), IsEmpty());
}

TEST_F(Execution, AStopAtTheThirdFile) {
    makeTree(place.source(""), {{"d.mov", "44"}, {"e.mov", "555"}});
    Recorder recorder(
        [](const ProjectProgress& progress) { return progress.message == "复制与校验：c.mov"; });
    const ProjectResult result = executeSynchronously(
        recorder.context(), place.plan("P", {"a.mov", "b.mov", "c.mov", "d.mov", "e.mov"}));
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(result.copiedCount, 2);
    EXPECT_EQ(result.failedCount, 0);
    EXPECT_THAT(states(), ElementsAre(verified, verified, cancelled, pending, pending));
    EXPECT_EQ(onDisk().files[2].error, project_text::itemStopped);
    EXPECT_FALSE(std::filesystem::exists(copyPath("c.mov")));
    EXPECT_EQ(recorder.reports().back().message, project_text::stopped);
    EXPECT_EQ(recorder.reports().back().completedFiles, 2);

    const ProjectResult resumed = retry();
    EXPECT_FALSE(resumed.cancelled);
    EXPECT_EQ(resumed.copiedCount, 5);
    EXPECT_THAT(states(), Each(verified));
    EXPECT_FALSE(onDisk().files[2].error);
}

TEST_F(Execution, AStopAtAnyMomentLeavesVerifiedCopiesOneCancelledAndTheRestPending) {
    std::vector<std::string> names;
    for (char letter = 'a'; letter < 'k'; ++letter) {
        names.push_back(std::string(1, letter) + ".mov");
        writeFile(place.source(names.back()), someBytes(2'000, static_cast<unsigned>(letter)));
    }
    bool wasStopped = true;
    for (int moment = 2; wasStopped; moment += 3) {
        std::filesystem::remove_all(root());
        std::atomic<int> questions = 0;
        JobContext context([&] { return ++questions >= moment; }, {});
        const ProjectPlan planned = place.plan("P", names);
        const ProjectResult result = executeSynchronously(context, planned);
        wasStopped = result.cancelled;
        const ProjectManifest manifest = onDisk();
        const auto stopped = static_cast<std::size_t>(result.copiedCount);
        EXPECT_EQ(wasStopped, stopped < names.size()) << moment;
        for (std::size_t index = 0; index < names.size(); ++index) {
            const ProjectFileState expected = index < stopped    ? verified
                                              : index == stopped ? cancelled
                                                                 : pending;
            EXPECT_EQ(manifest.files[index].state, expected) << moment;
            EXPECT_EQ(std::filesystem::exists(copyPath(names[index])), expected == verified) << moment;
        }
        EXPECT_THAT(listTree(copyPath("")), SizeIs(stopped)) << moment << ": no temporary file stays";
    }
}

TEST_F(Execution, ASourceThatChangesAtItsTurnIsNotPublished) {
    Recorder recorder([&](const ProjectProgress& progress) {
        if (progress.message == "复制与校验：b.mov")
            writeFile(place.source("b.mov"), "changed now");
        return false;
    });
    executeSynchronously(recorder.context(), plan());
    EXPECT_THAT(states(), ElementsAre(verified, failed, verified));
    EXPECT_EQ(onDisk().files[1].error, project_text::sourceChangedWhileCopying);
    EXPECT_THAT(listTree(copyPath("")), SizeIs(2));
}

TEST_F(Execution, OnlyTheFileWhoseTurnItIsCountsAsBeingCopied) {
    std::vector<std::vector<ProjectFileState>> seen;
    Recorder recorder([&](const ProjectProgress& progress) {
        if (progress.message.starts_with("复制与校验："))
            seen.push_back(states());
        return false;
    });
    executeSynchronously(recorder.context(), plan());
    EXPECT_THAT(seen,
                ElementsAre(ElementsAre(copying, pending, pending), ElementsAre(verified, copying, pending),
                            ElementsAre(verified, verified, copying)));
}

TEST_F(Execution, OneFailureNeverStopsTheRun) {
    const ProjectPlan planned = plan();
    std::filesystem::remove(place.source("b.mov"));
    Recorder recorder;
    const ProjectResult result = executeSynchronously(recorder.context(), planned);
    EXPECT_EQ(result.copiedCount, 2);
    EXPECT_EQ(result.failedCount, 1);
    EXPECT_THAT(states(), ElementsAre(verified, failed, verified));
    EXPECT_EQ(onDisk().files[1].error, sentence(project_text::cannotReadSourcePrefix, "b.mov"));
    EXPECT_EQ(recorder.reports().back().message, "已校验 2 个文件；失败 1 个。FCP 尚未导入。");
}

TEST_F(Execution, ASystemErrorBecomesTheRecordsText) {
    const ProjectPlan planned = plan();
    const Mount mount = Mount::tmpfs(place.into(), 2'097'152);
    if (!mount)
        GTEST_SKIP() << mount.problem();
    writeFile(place.source("a.mov"), "first");
    ProjectPlan large = planned;
    writeFile(place.source("b.mov"), someBytes(4'000'000));
    large.items[1] = place.item("b.mov", large.items[1].relativeDestination);
    // The plan is checked against free space; the disk fills up only afterwards.
    large.items[1].size = 4'000'000;
    EXPECT_EQ(executeError(large), project_text::notEnoughSpace);
    Recorder recorder([&](const ProjectProgress& progress) {
        if (progress.message == "复制与校验：a.mov") {
            std::ofstream filler(place.into() + "/filler");
            while (filler << std::string(4096, 'x') << std::flush)
                continue;
        }
        return false;
    });
    ProjectPlan small = planned;
    writeFile(place.source("b.mov"), someBytes(500'000));
    small.items[0] = place.item("a.mov", small.items[0].relativeDestination);
    small.items[1] = place.item("b.mov", small.items[1].relativeDestination);
    const ProjectResult result = executeSynchronously(recorder.context(), small);
    EXPECT_THAT(states(), ElementsAre(verified, failed, failed)) << "the first was written before";
    EXPECT_EQ(result.failedCount, 2);
    EXPECT_EQ(onDisk().files[1].error, systemErrorText(ENOSPC));
    std::filesystem::remove(place.into() + "/filler");
    EXPECT_EQ(retry().copiedCount, 3);
}

TEST_F(Execution, RetryingAFinishedProjectCopiesNothing) {
    execute(plan());
    const ProjectManifest before = onDisk();
    struct stat copyBefore {};
    ASSERT_EQ(::stat(copyPath("a.mov").c_str(), &copyBefore), 0);
    for (const char* name : {"a.mov", "b.mov", "c.mov"})
        std::filesystem::remove(place.source(name));
    Recorder recorder;
    const ProjectResult result = retrySynchronously(recorder.context(), manifestURL());
    EXPECT_EQ(result.copiedCount, 3);
    EXPECT_EQ(recorder.reports().back().completedFiles, 3);
    EXPECT_EQ(recorder.reports().back().completedBytes, 17);
    EXPECT_EQ(onDisk().files, before.files);
    EXPECT_EQ(onDisk().revision, before.revision + 2);
    struct stat copyAfter {};
    ASSERT_EQ(::stat(copyPath("a.mov").c_str(), &copyAfter), 0);
    EXPECT_EQ(copyAfter.st_ino, copyBefore.st_ino);
    EXPECT_EQ(copyAfter.st_ctim.tv_nsec, copyBefore.st_ctim.tv_nsec);
}

TEST_F(Execution, AVerifiedCopyThatChangedIsReportedAndLeftAlone) {
    execute(plan());
    writeFile(copyPath("a.mov"), "FIRST");
    writeFile(copyPath("b.mov"), "longer than it was");
    std::filesystem::remove(copyPath("c.mov"));
    EXPECT_EQ(retry().failedCount, 3);
    for (const auto& record : onDisk().files)
        EXPECT_EQ(record.error, project_text::verifiedCopyChanged);
    EXPECT_EQ(readAll(copyPath("a.mov")), "FIRST");
    EXPECT_FALSE(std::filesystem::exists(copyPath("c.mov")));
    // Afterwards they are no verified records any more: the missing one is copied again, the others
    // are compared with their sources.
    EXPECT_EQ(retry().failedCount, 2);
    EXPECT_EQ(onDisk().files[0].error, project_text::destinationDiffers);
    EXPECT_THAT(states(), ElementsAre(failed, failed, verified));
}

TEST_F(Execution, AnEqualFileThatAlreadyStandsIsAdopted) {
    execute(plan());
    ProjectManifest manifest = onDisk();
    manifest.files[0] = {manifest.files[0].itemID, copying, {}, {}};
    manifest.files[1] = {manifest.files[1].itemID, failed, {}, "an old error"};
    manifest.fcpxmlFilename = "old.fcpxml";
    leave(manifest);
    const ProjectResult result = retry();
    EXPECT_EQ(result.copiedCount, 3);
    EXPECT_THAT(states(), Each(verified));
    EXPECT_EQ(onDisk().files[0].sha256, digestOf("first"));
    EXPECT_FALSE(onDisk().files[1].error);
    EXPECT_FALSE(onDisk().fcpxmlFilename);
}

TEST_F(Execution, AnAdoptedCopyGetsTheDateAndModeThatItsRunCouldNotGive) {
    setModified(place.source("a.mov"), 1'500'000'000);
    setModified(place.source("b.mov"), 1'500'000'000);
    execute(plan());
    ProjectManifest manifest = onDisk();
    manifest.files[0] = {manifest.files[0].itemID, copying, {}, {}};
    manifest.files[1] = {manifest.files[1].itemID, cancelled, {}, "stopped when it was resumed"};
    leave(manifest);
    for (const char* name : {"a.mov", "b.mov"}) {
        setModified(copyPath(name), 1'700'000'000);
        ASSERT_EQ(::chmod(copyPath(name).c_str(), 0600), 0);
    }
    EXPECT_EQ(retry().copiedCount, 3);
    for (const char* name : {"a.mov", "b.mov"}) {
        struct stat copy {};
        ASSERT_EQ(::stat(copyPath(name).c_str(), &copy), 0);
        EXPECT_EQ(copy.st_mode & 0777, 0644U) << name;
        EXPECT_EQ(copy.st_mtim.tv_sec, 1'500'000'000) << name;
    }
}

TEST_F(Execution, AStandingFileIsNotAdoptedUnlessItIsTheSource) {
    execute(plan());
    ProjectManifest manifest = onDisk();
    for (auto& record : manifest.files)
        record = {record.itemID, copying, {}, {}};
    manifest.plan.items[2].sourceHash = digestOf("other");
    leave(manifest);
    setModified(place.source("a.mov"), 1'700'000'000);
    writeFile(copyPath("b.mov"), "xxxxxx file");
    EXPECT_EQ(retry().failedCount, 3);
    EXPECT_EQ(onDisk().files[0].error, project_text::sourceChangedSincePlan);
    EXPECT_EQ(onDisk().files[1].error, project_text::destinationDiffers);
    EXPECT_EQ(onDisk().files[2].error, project_text::destinationDiffers);
    EXPECT_EQ(readAll(copyPath("b.mov")), "xxxxxx file");
}

TEST_F(Execution, AVerifiedRecordWithoutDigestIsNoProof) {
    execute(plan());
    ProjectManifest manifest = onDisk();
    manifest.files[0].sha256.reset();
    leave(manifest);
    EXPECT_EQ(retry().copiedCount, 3);
    EXPECT_EQ(onDisk().files[0].sha256, digestOf("first"));
}

TEST_F(Execution, AStopWhileCheckingMarksTheRecordAndLosesNothing) {
    execute(plan());
    struct stat before {};
    ASSERT_EQ(::stat(copyPath("a.mov").c_str(), &before), 0);
    Recorder recorder;
    recorder.stop();
    const ProjectResult result = retrySynchronously(recorder.context(), manifestURL());
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(result.copiedCount, 2);
    EXPECT_EQ(result.failedCount, 0);
    EXPECT_THAT(states(), ElementsAre(cancelled, verified, verified));
    EXPECT_EQ(onDisk().files[0].error, project_text::itemStopped);
    EXPECT_EQ(recorder.reports().back().message, project_text::stopped);

    const ProjectResult resumed = retry();
    EXPECT_FALSE(resumed.cancelled);
    EXPECT_EQ(resumed.copiedCount, 3);
    EXPECT_THAT(states(), Each(verified));
    EXPECT_FALSE(onDisk().files[0].error);
    EXPECT_EQ(onDisk().files[0].sha256, digestOf("first"));
    struct stat after {};
    ASSERT_EQ(::stat(copyPath("a.mov").c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino) << "the copy is adopted, not made again";
}

TEST_F(Execution, AStoppedCheckLeavesACopyWhoseSourceIsGone) {
    execute(plan());
    Recorder recorder;
    recorder.stop();
    retrySynchronously(recorder.context(), manifestURL());
    ASSERT_EQ(::unlink(place.source("a.mov").c_str()), 0);
    const ProjectResult resumed = retry();
    EXPECT_EQ(resumed.failedCount, 1);
    EXPECT_THAT(states(), ElementsAre(failed, verified, verified));
    EXPECT_EQ(readAll(copyPath("a.mov")), "first");
}

TEST_F(Execution, TheSpaceForARetryIsWhatIsMissing) {
    execute(plan());
    ProjectManifest manifest = onDisk();
    manifest.plan.items[0].size = largest - 2'000'000;
    leave(manifest);
    EXPECT_EQ(retry().failedCount, 1) << "a verified record needs no space";
    EXPECT_EQ(retryError(), project_text::notEnoughSpace);
}

TEST_F(Execution, TemporaryFilesOfADeadRunAreRemoved) {
    makeTree(place.source(""),
             {{"old/inner/.morvane-3F2504E0-4F89-11D3-9A0C-0305E82C3301.partial", "from a card"}});
    execute(place.plan("P", {"a.mov", "old/"}));
    const std::string kept = "07_文案与资料/old/inner/.morvane-3F2504E0-4F89-11D3-9A0C-0305E82C3301.partial";
    EXPECT_EQ(readAll(root() + "/" + kept), "from a card");
    const std::string stale = temporaryName();
    for (const char* folder : {"", "01_项目工程/", "02_原始素材/", "07_文案与资料/old/inner/"})
        writeFile(root() + "/" + folder + stale, "half");
    writeFile(root() + "/02_原始素材/.morvane-mine.partial", "not ours");
    writeFile(root() + "/05_网络素材/" + stale, "where no run of this plan writes");
    writeFile(place.path("outside"), "x");
    const std::string link = temporaryName();
    std::filesystem::create_symlink(place.path("outside"), root() + "/02_原始素材/" + link);
    EXPECT_EQ(retry().copiedCount, 2);
    for (const char* folder : {"", "01_项目工程/", "02_原始素材/", "07_文案与资料/old/inner/"})
        EXPECT_FALSE(std::filesystem::exists(root() + "/" + folder + stale)) << folder;
    EXPECT_EQ(readAll(root() + "/" + kept), "from a card");
    EXPECT_TRUE(std::filesystem::exists(root() + "/02_原始素材/.morvane-mine.partial"));
    EXPECT_TRUE(std::filesystem::exists(root() + "/05_网络素材/" + stale));
    EXPECT_TRUE(std::filesystem::is_symlink(root() + "/02_原始素材/" + link));
    EXPECT_EQ(readAll(place.path("outside")), "x");
}

TEST_F(Execution, ASecondRunOnTheSameProjectIsRefused) {
    execute(plan());
    const UniqueFd folder(::open(root().c_str(), O_RDONLY | O_DIRECTORY));
    const std::string stale = root() + "/" + temporaryName();
    writeFile(stale, "half");
    const auto before = listTree(root());
    const std::string manifest = readAll(manifestURL().path);
    {
        const ProjectLock lock = ProjectLock::acquire(folder.get());
        EXPECT_EQ(retryError(), project_text::busy);
        EXPECT_EQ(listTree(root()), before);
        EXPECT_EQ(readAll(manifestURL().path), manifest);
    }
    EXPECT_EQ(retryError(), "");
}

TEST_F(Execution, TheMarkerIsLockedWhileAJobRuns) {
    std::string during;
    Recorder recorder([&](const ProjectProgress& progress) {
        if (progress.message == "复制与校验：b.mov")
            during = retryError();
        return false;
    });
    executeSynchronously(recorder.context(), plan());
    EXPECT_EQ(during, project_text::busy);
    EXPECT_EQ(onDisk().revision, 8);
}

TEST_F(Execution, ACancelledRunAfterAllWasCopiedStillSaysSo) {
    Recorder recorder(
        [](const ProjectProgress& progress) { return progress.message == "复制与校验：c.mov"; });
    const ProjectResult result = executeSynchronously(recorder.context(), plan());
    EXPECT_TRUE(result.cancelled);
    EXPECT_THAT(states(), ElementsAre(verified, verified, cancelled));
}

TEST_F(Execution, AMissingDefinitionIsAWarningNotAFailure) {
    const std::string nothing = place.path("nothing");
    ASSERT_EQ(::setenv("XDG_DATA_DIRS", nothing.c_str(), 1), 0);
    writeFile(place.source("a.txt"), "plain text: nothing to hand over");
    ProjectPlan planned = place.plan("P", {"a.txt"});
    planned.request.createFCP = true;
    JobContext context;
    context.setStoreFolder(nothing);
    const ProjectResult result = executeSynchronously(context, planned);
    EXPECT_EQ(result.copiedCount, 1);
    EXPECT_FALSE(result.fcpxmlURL || result.cancelled);
    const std::string warning = sentence(project_text::fcpxmlFailedPrefix, project_text::dtdMissing);
    ASSERT_FALSE(result.warnings.empty());
    EXPECT_EQ(result.warnings.back(), warning);
    EXPECT_EQ(onDisk().warnings, result.warnings);
    EXPECT_FALSE(onDisk().fcpxmlFilename);
    EXPECT_THAT(listTree(root() + "/01_项目工程"), IsEmpty());
}

TEST_F(Execution, APlanOfManyFoldersSurvivesItsFoldersBeingExchanged) {
    makeTree(place.source(""), {{"d/1.mov", "1"}, {"d/2.mov", "22"}, {"d/3.mov", "333"}});
    std::filesystem::create_directory(place.path("outside"));
    Recorder recorder([&](const ProjectProgress& progress) {
        if (progress.message == "复制与校验：1.mov") {
            std::filesystem::rename(copyPath("d"), copyPath("moved"));
            std::filesystem::create_directory_symlink(place.path("outside"), copyPath("d"));
        }
        return false;
    });
    const ProjectResult result = executeSynchronously(recorder.context(), place.plan("P", {"d/"}));
    EXPECT_EQ(result.copiedCount, 1);
    EXPECT_EQ(result.failedCount, 2);
    EXPECT_EQ(onDisk().files[1].error, project_text::subfolderNotReal);
    EXPECT_THAT(listTree(place.path("outside")), IsEmpty());
    // The first copy is no longer where it was recorded: a later run says so.
    retry();
    EXPECT_EQ(onDisk().files[0].error, project_text::verifiedCopyChanged);
}

TEST_F(Execution, AnotherFolderInTheProjectsPlaceIsLeftAlone) {
    Recorder recorder([&](const ProjectProgress& progress) {
        if (progress.message == "复制与校验：a.mov") {
            std::filesystem::rename(root(), place.path("moved"));
            std::filesystem::create_directory(root());
        }
        return false;
    });
    const ProjectResult result = executeSynchronously(recorder.context(), plan());
    EXPECT_EQ(result.copiedCount, 1);
    EXPECT_THAT(listTree(root()), IsEmpty());
    const ProjectManifest manifest = manifestAt(place.path("moved"));
    EXPECT_EQ(manifest.files[0].state, verified);
    EXPECT_EQ(manifest.files[1].error, project_text::projectChanged);
    EXPECT_EQ(manifest.files[2].error, project_text::projectChanged);
}

TEST_F(Execution, AManifestThatCannotBeWrittenEndsTheRun) {
    Recorder recorder([&](const ProjectProgress& progress) {
        if (progress.message == "复制与校验：a.mov") {
            std::filesystem::remove(manifestURL().path);
            std::filesystem::create_directory(manifestURL().path);
        }
        return false;
    });
    EXPECT_EQ(errorOf([&] { executeSynchronously(recorder.context(), plan()); }),
              project_text::manifestTargetNotRegular);
    EXPECT_EQ(readAll(copyPath("a.mov")), "first") << "what was copied stays";
}

}  // namespace
}  // namespace morvane::test
