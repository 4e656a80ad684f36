#include "project/verified_copy.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <thread>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "project/project_errors.h"
#include "project/temporary_file.h"
#include "support/system_error.h"
#include "tests/project/engine_fixture.h"
#include "tests/project/mount_fixture.h"

namespace morvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::size_t mebibyte = 1'048'576;
const std::string destination = "02_原始素材/Day1/a.mov";

/// A project folder with nothing in it, and copies into it.
class VerifiedCopy : public testing::Test {
protected:
    VerifiedCopy() { std::filesystem::create_directory(root().path); }

    FileUrl root() const { return folderLocation(place.into() + "/P"); }
    std::string inProject(const std::string& relative) const { return root().path + "/" + relative; }

    std::string copy(const ProjectPlanItem& item, const VerifiedCopier::ByteProgress& progress = {}) {
        return copier.copy(item, root(), progress);
    }
    std::string copyError(const ProjectPlanItem& item, const VerifiedCopier::ByteProgress& progress = {}) {
        return errorOf([&] { copy(item, progress); });
    }
    /// Files of the project, folders left out.
    std::vector<std::string> files() const {
        std::vector<std::string> found;
        for (const auto& path : listTree(root().path))
            if (!path.ends_with('/'))
                found.push_back(path);
        return found;
    }
    /// The one temporary file that stands in the folder of `destination` now.
    std::string temporaryFile() const {
        for (const auto& entry : std::filesystem::directory_iterator(inProject("02_原始素材/Day1")))
            if (isTemporaryName(entry.path().filename().string()))
                return entry.path().string();
        return {};
    }

    Workplace place;
    Recorder recorder;
    VerifiedCopier copier{recorder.context()};
};

TEST_F(VerifiedCopy, CopiesEverySizeAndSaysItsDigest) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, mebibyte, mebibyte + 1, 2 * mebibyte - 1,
                                   2 * mebibyte, 7 * mebibyte + 3}) {
        const std::string bytes = someBytes(size, static_cast<unsigned>(size + 1));
        writeFile(place.source("a.mov"), bytes);
        setModified(place.source("a.mov"), 1'600'000'000.123456);
        const std::string relative = "02_原始素材/" + std::to_string(size) + ".mov";
        std::int64_t seen = 0;
        EXPECT_EQ(copy(place.item("a.mov", relative), [&](std::int64_t count) { seen = count; }),
                  digestOf(bytes));
        EXPECT_EQ(seen, static_cast<std::int64_t>(size));
        EXPECT_EQ(readAll(inProject(relative)), bytes);
        EXPECT_NEAR(modifiedOf(inProject(relative)), 1'600'000'000.123456, 1e-6);
        struct stat status {};
        ASSERT_EQ(::stat(inProject(relative).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0644U);
        EXPECT_EQ(status.st_nlink, 1U);
    }
    for (const auto& file : files())
        EXPECT_FALSE(isTemporaryName(std::filesystem::path(file).filename().string()));
}

TEST_F(VerifiedCopy, OneFileIsFinishedWhileTheNextOneIsBegun) {
    std::vector<ProjectPlanItem> items;
    for (unsigned number = 0; number < 6; ++number) {
        const std::string name = std::to_string(number) + ".mov";
        writeFile(place.source(name), someBytes(number * 700'000, number + 1));
        items.push_back(place.item(name, "02_原始素材/Day1/" + name));
    }
    auto begun = copier.begin(items[0], root(), {});
    for (std::size_t index = 0; index < items.size(); ++index) {
        const std::string bytes = readAll(items[index].sourceURL.path);
        EXPECT_EQ(VerifiedCopier::digest(*begun), digestOf(bytes));
        EXPECT_FALSE(std::filesystem::exists(inProject(items[index].relativeDestination)));
        std::string digest;
        std::thread finishing(
            [&, copy = std::move(begun)]() mutable { digest = copier.finish(std::move(copy)); });
        if (index + 1 < items.size())
            begun = copier.begin(items[index + 1], root(), {});
        finishing.join();
        EXPECT_EQ(digest, digestOf(bytes));
        EXPECT_EQ(readAll(inProject(items[index].relativeDestination)), bytes);
    }
    EXPECT_THAT(files(), SizeIs(6));
}

TEST_F(VerifiedCopy, AheadOfItsTurnNoFolderIsMade) {
    writeFile(place.source("a.mov"), "content");
    const ProjectPlanItem item = place.item("a.mov", destination);
    EXPECT_FALSE(copier.beginAhead(item, root(), {}));
    EXPECT_THAT(listTree(root().path), IsEmpty());
    std::filesystem::create_directories(inProject("02_原始素材/Day1"));
    const auto begun = copier.beginAhead(item, root(), {});
    ASSERT_TRUE(begun);
    EXPECT_TRUE(VerifiedCopier::stillHolds(*begun, root()));
    EXPECT_EQ(copier.finish(begun), digestOf("content"));
}

TEST_F(VerifiedCopy, WhatWasBegunAheadHoldsOnlyWhileAllIsAsItWas) {
    const std::string folder = inProject("02_原始素材/Day1");
    const std::string source = place.source("in/a.mov");
    const auto swapForLink = [](const std::string& path) {
        std::filesystem::rename(path, path + " moved");
        std::filesystem::create_directory_symlink(path + " moved", path);
    };
    const std::vector<std::pair<const char*, std::function<void()>>> changes = {
        {"folder gone", [&] { std::filesystem::remove_all(folder); }},
        {"folder moved", [&] { std::filesystem::rename(folder, folder + " moved"); }},
        {"folder a link", [&] { swapForLink(folder); }},
        {"another folder",
         [&] {
             std::filesystem::rename(folder, folder + " moved");
             std::filesystem::create_directory(folder);
         }},
        {"name taken", [&] { writeFile(inProject(destination), "old"); }},
        {"name taken by a link", [&] { std::filesystem::create_symlink("nowhere", inProject(destination)); }},
        {"source gone", [&] { std::filesystem::remove(source); }},
        {"source below a link", [&] { swapForLink(place.source("in")); }},
        {"source longer", [&] { writeFile(source, "content and more"); }},
        {"source of another date", [&] { setModified(source, 1'500'000'000); }},
        {"another source",
         [&] {
             const double modified = modifiedOf(source);
             writeFile(place.source("in/b.mov"), "CONTENT");
             std::filesystem::rename(place.source("in/b.mov"), source);
             setModified(source, modified);
         }},
    };
    for (const auto& [what, change] : changes) {
        std::filesystem::remove_all(place.source(""));
        std::filesystem::remove_all(root().path);
        writeFile(source, "content");
        std::filesystem::create_directories(folder);
        const ProjectPlanItem item = place.item("in/a.mov", destination);
        const auto begun = copier.beginAhead(item, root(), {});
        ASSERT_TRUE(begun) << what;
        EXPECT_TRUE(VerifiedCopier::stillHolds(*begun, root())) << what;
        change();
        EXPECT_FALSE(VerifiedCopier::stillHolds(*begun, root())) << what;
    }
}

TEST_F(VerifiedCopy, WhatIsBegunAndNotFinishedLeavesNothing) {
    writeFile(place.source("a.mov"), "content");
    const ProjectPlanItem item = place.item("a.mov", destination);
    auto begun = copier.begin(item, root(), {});
    EXPECT_NE(temporaryFile(), "");
    begun.reset();
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(VerifiedCopy, AnEmptyFileReportsNoBytes) {
    writeFile(place.source("a.mov"), "");
    int calls = 0;
    EXPECT_EQ(copy(place.item("a.mov", destination), [&](std::int64_t) { ++calls; }), digestOf(""));
    EXPECT_EQ(calls, 0);
}

TEST_F(VerifiedCopy, TheTemporaryFileIsHiddenAndPrivate) {
    writeFile(place.source("a.mov"), "content");
    ::umask(0);
    copy(place.item("a.mov", destination), [&](std::int64_t) {
        struct stat status {};
        ASSERT_EQ(::stat(temporaryFile().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600U);
        EXPECT_FALSE(std::filesystem::exists(inProject(destination)));
    });
    ::umask(022);
    EXPECT_THAT(files(), ElementsAre(destination));
}

TEST_F(VerifiedCopy, DatesBeforeTheEpochAndNamesOfAnyKind) {
    writeFile(place.source("夜\xFF.mov"), "x");
    setModified(place.source("夜\xFF.mov"), -12.25);
    copy(place.item("夜\xFF.mov", destination));
    EXPECT_DOUBLE_EQ(modifiedOf(inProject(destination)), -12.25);
}

TEST_F(VerifiedCopy, UnsafeDestinations) {
    writeFile(place.source("a.mov"), "x");
    for (const char* path :
         {"../a.mov", "a.mov", "/etc/a.mov", "02_原始素材/../../a.mov", "99_其他/a.mov", ""})
        EXPECT_EQ(copyError(place.item("a.mov", path)), project_text::unsafeDestination);
    EXPECT_THAT(listTree(root().path), IsEmpty());
}

TEST_F(VerifiedCopy, NothingIsEverOverwritten) {
    writeFile(place.source("a.mov"), "x");
    const ProjectPlanItem item = place.item("a.mov", destination);
    const std::string taken = sentence(project_text::destinationTakenPrefix, destination);
    writeFile(inProject(destination), "old");
    EXPECT_EQ(copyError(item), taken);
    EXPECT_EQ(readAll(inProject(destination)), "old");
    std::filesystem::remove(inProject(destination));
    std::filesystem::create_directory(inProject(destination));
    EXPECT_EQ(copyError(item), taken);
    std::filesystem::remove(inProject(destination));
    std::filesystem::create_symlink("nowhere", inProject(destination));
    EXPECT_EQ(copyError(item), taken);
    EXPECT_EQ(std::filesystem::read_symlink(inProject(destination)), "nowhere");
    EXPECT_THAT(files(), ElementsAre(destination));
}

TEST_F(VerifiedCopy, SourcesThatAreNoSafeFiles) {
    makeTree(place.source(""), {{"real/a.mov", "x"}, {"folder/", ""}});
    ProjectPlanItem item = place.item("real/a.mov", destination);
    std::filesystem::create_directory_symlink("real", place.source("linked"));
    std::filesystem::create_symlink("real/a.mov", place.source("link.mov"));
    item.sourceURL = fileLocation(place.source("linked/a.mov"));
    EXPECT_EQ(copyError(item),
              sentence(project_text::sourceParentPrefix, "linked（" + systemErrorText(ENOTDIR) + "）"));
    item.sourceURL = fileLocation(place.source("link.mov"));
    EXPECT_EQ(copyError(item), sentence(project_text::cannotReadSourcePrefix, "link.mov"));
    item.sourceURL = folderLocation(place.source("folder"));
    EXPECT_EQ(copyError(item), project_text::sourceNotRegular);
    item.sourceURL = *parseUrl("https://example.com/a.mov");
    EXPECT_EQ(copyError(item), project_text::emptySourcePath);
    item.sourceURL = fileLocation(place.source("real/a.mov"));
    EXPECT_EQ(copyError(item), "");
    EXPECT_THAT(files(), ElementsAre(destination));
}

TEST_F(VerifiedCopy, ASourceThatIsNotAsPlanned) {
    writeFile(place.source("a.mov"), "12345");
    setModified(place.source("a.mov"), 1'700'000'000.5);
    ProjectPlanItem item = place.item("a.mov", destination);
    const std::string changed = sentence(project_text::sourceChangedPrefix, "a.mov");
    item.size = 6;
    EXPECT_EQ(copyError(item), changed);
    item.size = 5;
    for (const double shift : {0.001, -0.001, 1.0, -3600.0}) {
        item.modified = 1'700'000'000.5 + shift;
        EXPECT_EQ(copyError(item), changed) << shift;
    }
    EXPECT_THAT(files(), IsEmpty());
    item.modified = 1'700'000'000.5 + 0.0009;
    EXPECT_EQ(copyError(item), "");
}

TEST_F(VerifiedCopy, ASourceThatChangesWhileItIsCopied) {
    const auto append = [&] {
        const UniqueFd file(::open(place.source("a.mov").c_str(), O_WRONLY | O_APPEND));
        ASSERT_EQ(::write(file.get(), "more", 4), 4);
    };
    const auto shrink = [&] { std::filesystem::resize_file(place.source("a.mov"), mebibyte); };
    const auto touch = [&] { setModified(place.source("a.mov"), 1'700'000'000.000001); };
    for (const std::size_t size : {mebibyte + 9, 6 * mebibyte})
        for (const std::function<void()>& change :
             std::vector<std::function<void()>>{append, shrink, touch}) {
            writeFile(place.source("a.mov"), someBytes(size));
            setModified(place.source("a.mov"), 1'700'000'000);
            bool isDone = false;
            EXPECT_EQ(copyError(place.item("a.mov", destination),
                                [&](std::int64_t) {
                                    if (!std::exchange(isDone, true))
                                        change();
                                }),
                      project_text::sourceChangedWhileCopying);
            EXPECT_THAT(files(), IsEmpty());
        }
}

TEST_F(VerifiedCopy, ContentOtherThanPlanned) {
    writeFile(place.source("a.mov"), "content");
    ProjectPlanItem item = place.item("a.mov", destination);
    item.sourceHash = digestOf("other");
    EXPECT_EQ(copyError(item), project_text::sourceDiffersFromPlan);
    EXPECT_THAT(files(), IsEmpty());
    item.sourceHash = digestOf("content");
    EXPECT_EQ(copyError(item), "");
}

TEST_F(VerifiedCopy, ADamagedCopyIsNotPublished) {
    writeFile(place.source("a.mov"), someBytes(mebibyte + 9));
    EXPECT_EQ(copyError(place.item("a.mov", destination),
                        [&](std::int64_t count) {
                            if (count == static_cast<std::int64_t>(mebibyte))
                                return;  // the first block is not written yet
                            const UniqueFd file(::open(temporaryFile().c_str(), O_WRONLY));
                            ASSERT_EQ(::pwrite(file.get(), "damage", 6, 1000), 6);
                        }),
              project_text::verificationFailed);
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(VerifiedCopy, ATemporaryFileThatWasExchangedIsNotPublished) {
    writeFile(place.source("a.mov"), "content");
    for (const bool withLink : {false, true}) {
        std::string name;
        EXPECT_EQ(copyError(place.item("a.mov", destination),
                            [&](std::int64_t) {
                                name = temporaryFile();
                                std::filesystem::rename(name, place.path("aside"));
                                if (withLink)
                                    std::filesystem::create_symlink(place.path("aside"), name);
                                else
                                    writeFile(name, "content");
                            }),
                  project_text::verificationFailed);
        EXPECT_THAT(files(), IsEmpty());
    }
}

TEST_F(VerifiedCopy, ANameTakenWhileCopyingIsLeftAlone) {
    writeFile(place.source("a.mov"), "content");
    EXPECT_EQ(copyError(place.item("a.mov", destination),
                        [&](std::int64_t) { writeFile(inProject(destination), "theirs"); }),
              project_text::cannotCommit);
    EXPECT_EQ(readAll(inProject(destination)), "theirs");
    EXPECT_THAT(files(), ElementsAre(destination));
}

TEST_F(VerifiedCopy, AStopLeavesNothing) {
    writeFile(place.source("large.mov"), someBytes(6 * mebibyte));
    writeFile(place.source("small.mov"), someBytes(mebibyte + 1));
    for (const char* name : {"large.mov", "small.mov"}) {
        Recorder stopped;
        VerifiedCopier stoppable(stopped.context());
        const ProjectPlanItem item = place.item(name, destination);
        std::int64_t seen = 0;
        EXPECT_TRUE(isCancelledBy([&] {
            stoppable.copy(item, root(), [&](std::int64_t count) {
                seen = count;
                stopped.stop();
            });
        }));
        EXPECT_EQ(seen, static_cast<std::int64_t>(mebibyte));
        EXPECT_TRUE(isCancelledBy([&] { stoppable.copy(item, root(), {}); }));
        EXPECT_THAT(files(), IsEmpty());
    }
}

TEST_F(VerifiedCopy, AStopAfterTheLastBlockStillCounts) {
    writeFile(place.source("a.mov"), "content");
    EXPECT_TRUE(isCancelledBy(
        [&] { copy(place.item("a.mov", destination), [&](std::int64_t) { recorder.stop(); }); }));
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(VerifiedCopy, FoldersThatAreNoRealFolders) {
    writeFile(place.source("a.mov"), "x");
    const ProjectPlanItem item = place.item("a.mov", destination);
    std::filesystem::create_directory(place.path("outside"));
    for (const char* name : {"02_原始素材", "02_原始素材/Day1"}) {
        std::filesystem::create_directories(inProject("02_原始素材"));
        std::filesystem::remove_all(inProject(name));
        std::filesystem::create_directory_symlink(place.path("outside"), inProject(name));
        EXPECT_EQ(copyError(item), project_text::subfolderNotReal);
        std::filesystem::remove(inProject(name));
        writeFile(inProject(name), "a file");
        EXPECT_EQ(copyError(item), project_text::subfolderNotReal);
        std::filesystem::remove(inProject(name));
    }
    EXPECT_THAT(listTree(place.path("outside")), IsEmpty());
}

TEST_F(VerifiedCopy, AProjectFolderThatIsNoneAnyMore) {
    writeFile(place.source("a.mov"), "x");
    const ProjectPlanItem item = place.item("a.mov", destination);
    std::filesystem::rename(root().path, place.path("moved"));
    EXPECT_EQ(copyError(item), project_text::projectChanged);
    std::filesystem::create_directory_symlink(place.path("moved"), root().path);
    EXPECT_EQ(copyError(item), project_text::projectChanged);
    std::filesystem::remove(root().path);
    writeFile(root().path, "a file");
    EXPECT_EQ(copyError(item), project_text::projectChanged);
    EXPECT_THAT(listTree(place.path("moved")), IsEmpty());
}

TEST_F(VerifiedCopy, FoldersThatCannotBeMade) {
    writeFile(place.source("a.mov"), "x");
    const std::string tooLong(300, 'n');
    EXPECT_EQ(copyError(place.item("a.mov", "02_原始素材/" + tooLong + "/a.mov")),
              sentence(project_text::cannotMakeFolderPrefix, systemErrorText(ENAMETOOLONG)));
    EXPECT_EQ(copyError(place.item("a.mov", "02_原始素材/" + tooLong)), project_text::cannotCommit);
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(VerifiedCopy, WhereThisUserMayNotWrite) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "another user id is needed, which only root can take";
    writeFile(place.source("a.mov"), "x");
    const ProjectPlanItem item = place.item("a.mov", destination);
    std::filesystem::permissions(place.path(""), std::filesystem::perms(0755));
    ASSERT_EQ(::seteuid(65534), 0);
    const std::string noFolder = copyError(item);
    ASSERT_EQ(::seteuid(0), 0);
    std::filesystem::create_directories(inProject("02_原始素材/Day1"));
    ASSERT_EQ(::seteuid(65534), 0);
    const std::string noFile = copyError(item);
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(noFolder, sentence(project_text::cannotMakeFolderPrefix, systemErrorText(EACCES)));
    EXPECT_EQ(noFile, project_text::cannotMakeTemporary);
}

TEST_F(VerifiedCopy, AFullDisk) {
    const Mount mount = Mount::tmpfs(root().path, 3 * mebibyte);
    if (!mount)
        GTEST_SKIP() << mount.problem();
    writeFile(place.source("large.mov"), someBytes(8 * mebibyte));
    writeFile(place.source("small.mov"), someBytes(mebibyte));
    EXPECT_EQ(copyError(place.item("large.mov", destination)), systemErrorText(ENOSPC));
    EXPECT_THAT(files(), IsEmpty());
    EXPECT_EQ(copyError(place.item("small.mov", destination)), "");
}

TEST_F(VerifiedCopy, AFileSystemWithoutExclusiveRename) {
    std::filesystem::create_directory(place.path("behind"));
    const Mount mount = Mount::bindfs(place.path("behind"), root().path);
    if (!mount)
        GTEST_SKIP() << mount.problem();
    writeFile(place.source("a.mov"), "content");
    EXPECT_EQ(copyError(place.item("a.mov", destination)), project_text::cannotCommit);
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(VerifiedCopy, AFileSizeLimit) {
    writeFile(place.source("large.mov"), someBytes(4 * mebibyte));
    const ProjectPlanItem item = place.item("large.mov", destination);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{mebibyte, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string error = copyError(item);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(error, systemErrorText(EFBIG));
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(VerifiedCopy, AFolderExchangedForALinkWhileCopyingStaysInsideTheProject) {
    writeFile(place.source("a.mov"), "content");
    std::filesystem::create_directory(place.path("outside"));
    copy(place.item("a.mov", destination), [&](std::int64_t) {
        std::filesystem::rename(inProject("02_原始素材/Day1"), inProject("02_原始素材/real"));
        std::filesystem::create_directory_symlink(place.path("outside"), inProject("02_原始素材/Day1"));
    });
    EXPECT_THAT(listTree(place.path("outside")), IsEmpty());
    EXPECT_EQ(readAll(inProject("02_原始素材/real/a.mov")), "content");
    EXPECT_EQ(copyError(place.item("a.mov", destination)), project_text::subfolderNotReal);
}

/// While copies run, another thread exchanges one folder on their way for a link, again and again: at
/// whatever step that happens, no byte lands or is read behind the link.
class ExchangedFolder : public VerifiedCopy, public testing::WithParamInterface<const char*> {};

TEST_P(ExchangedFolder, NothingIsFollowed) {
    makeTree(place.path(""),
             {{"outside/Day1/", ""}, {"outside/02_原始素材/Day1/", ""}, {"outside/a.mov", "evil!!!"}});
    makeTree(place.source(""), {{"d/a.mov", "content"}, {"a.mov", "content"}});
    for (const std::string& path :
         {place.path("outside/a.mov"), place.source("d/a.mov"), place.source("a.mov")})
        setModified(path, 1'700'000'000);
    std::filesystem::create_directories(inProject("02_原始素材/Day1"));
    const auto before = listTree(place.path("outside"));
    const std::string victim = place.path(GetParam());
    std::filesystem::create_directory_symlink(place.path("outside"), place.path("link"));
    std::atomic<bool> isOver = false;
    std::atomic<int> failures = 0;
    std::thread exchanger([&] {
        while (!isOver)
            if (::renameat2(AT_FDCWD, victim.c_str(), AT_FDCWD, place.path("link").c_str(),
                            RENAME_EXCHANGE) != 0)
                ++failures;
    });
    ProjectPlanItem item = place.item("a.mov", destination);
    item.sourceURL = fileLocation(place.source("d/a.mov"));
    int copied = 0;
    int refused = 0;
    const QDeadlineTimer deadline(std::chrono::seconds(30));
    for (int round = 0; (copied < 20 || refused < 20) && !deadline.hasExpired(); ++round) {
        item.relativeDestination = "02_原始素材/Day1/" + std::to_string(round) + ".mov";
        try {
            EXPECT_EQ(copy(item), digestOf("content"));
            ++copied;
        } catch (const std::exception&) {
            ++refused;
        }
    }
    isOver = true;
    exchanger.join();
    EXPECT_GE(copied, 20);
    EXPECT_GE(refused, 20);
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(listTree(place.path("outside")), before);
}

INSTANTIATE_TEST_SUITE_P(AtEachStep, ExchangedFolder,
                         testing::Values("src/d", "src", "into/P", "into/P/02_原始素材",
                                         "into/P/02_原始素材/Day1"));

TEST_F(VerifiedCopy, EnsureDirectory) {
    const auto ensure = [&](const std::string& path) {
        return errorOf([&] { ensureDirectory(folderLocation(path), root()); });
    };
    EXPECT_EQ(ensure(root().path), "");
    EXPECT_EQ(ensure(inProject("a/b/c")), "");
    EXPECT_EQ(ensure(inProject("a/b")), "");
    struct stat status {};
    ASSERT_EQ(::stat(inProject("a/b/c").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0755U);
    for (const std::string& path : {place.into(), root().path + "x/a", place.path("outside"),
                                    inProject("../x"), inProject("a/../../x"), std::string("/")})
        EXPECT_EQ(ensure(path), project_text::outsideProject) << path;
    const UniqueFd opened = ensureDirectory(folderLocation(inProject("a/b")), root());
    EXPECT_EQ(::faccessat(opened.get(), "c", F_OK, 0), 0);
}

TEST(TemporaryName, OnlyOurOwnForm) {
    EXPECT_TRUE(isTemporaryName(".morvane-3F2504E0-4F89-11D3-9A0C-0305E82C3301.partial"));
    EXPECT_TRUE(isTemporaryName(temporaryName()));
    EXPECT_NE(temporaryName(), temporaryName());
    for (const char* name : {".morvane-.partial", ".morvane-3f2504e0-4f89-11d3-9a0c-0305e82c3301.partial",
                             ".morvane-project-id", "morvane-3F2504E0-4F89-11D3-9A0C-0305E82C3301.partial",
                             ".morvane-3F2504E0-4F89-11D3-9A0C-0305E82C3301.partial2", ".partial", ""})
        EXPECT_FALSE(isTemporaryName(name)) << name;
}

}  // namespace
}  // namespace morvane::test
