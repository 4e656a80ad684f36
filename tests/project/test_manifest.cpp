#include "project/manifest.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <random>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "project/execution.h"
#include "project/manifest_writer.h"
#include "project/project_errors.h"
#include "project/project_json.h"
#include "support/system_error.h"
#include "support/uuid.h"
#include "tests/project/engine_fixture.h"
#include "tests/project/mount_fixture.h"

namespace morvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

using enum ProjectFileState;

/// A finished project "P" of two files.
class ReadManifest : public testing::Test {
protected:
    ReadManifest() {
        makeTree(place.source(""), {{"a.mov", "first"}, {"b.wav", "second file"}});
        JobContext context;
        executeSynchronously(context, place.plan("P", {"a.mov", "b.wav"}));
    }

    std::string root() const { return place.into() + "/P"; }
    FileUrl manifest() const { return fileLocation(root() + "/" + std::string(manifestFilename)); }
    std::string marker() const { return root() + "/" + std::string(markerFilename); }
    std::string error(const FileUrl& url) const {
        return errorOf([&] { readManifest(url); });
    }
    std::string error() const { return error(manifest()); }
    void rewrite(const std::function<void(nlohmann::json&)>& change) const {
        auto document = nlohmann::json::parse(readAll(manifest().path));
        change(document);
        writeFile(manifest().path, document.dump());
    }

    Workplace place;
};

TEST_F(ReadManifest, GivesBackWhatWasWritten) {
    const ProjectManifest read = readManifest(manifest());
    EXPECT_EQ(read.plan.request.name, "P");
    EXPECT_EQ(read.plan.rootURL, folderLocation(root()));
    EXPECT_EQ(read.files.at(0).sha256, digestOf("first"));
    EXPECT_EQ(read.files.at(1).state, ProjectFileState::verified);
    EXPECT_EQ(read, manifestAt(root()));
}

TEST_F(ReadManifest, IsFoundThroughALinkedFolder) {
    std::filesystem::create_directory_symlink(place.into(), place.path("linked"));
    EXPECT_EQ(error(fileLocation(place.path("linked/P/") + std::string(manifestFilename))), "");
}

TEST_F(ReadManifest, RefusesLinksAndWhatIsMissing) {
    std::filesystem::create_symlink(manifest().path, place.path("link.json"));
    EXPECT_EQ(error(fileLocation(place.path("link.json"))), project_text::manifestIsLink);
    std::filesystem::create_symlink("nowhere", place.path("dangling.json"));
    EXPECT_EQ(error(fileLocation(place.path("dangling.json"))), project_text::manifestIsLink);
    EXPECT_EQ(error(fileLocation(place.path("none.json"))),
              sentence(project_text::unreachablePathPrefix, "none.json"));
    EXPECT_EQ(error(folderLocation(root())), project_text::sourceNotRegular);
    EXPECT_EQ(error(*parseUrl("https://example.com/a.json")),
              sentence(project_text::unreachablePathPrefix, "a.json"));
}

TEST_F(ReadManifest, TheSizeLimitIsExact) {
    std::string text = readAll(manifest().path);
    text.resize(manifestReadLimit, ' ');
    writeFile(manifest().path, text);
    EXPECT_EQ(error(), "");
    writeFile(manifest().path, text + " ");
    EXPECT_EQ(error(), project_text::manifestTooLarge);
    std::filesystem::resize_file(manifest().path, 1ULL << 40);
    EXPECT_EQ(error(), project_text::manifestTooLarge);
}

TEST_F(ReadManifest, WhatIsNoManifest) {
    const std::string original = readAll(manifest().path);
    for (const std::string& text : {std::string(), std::string("{"), std::string("[]"), std::string("null"),
                                    original.substr(0, original.size() / 2)}) {
        writeFile(manifest().path, text);
        EXPECT_EQ(error(), "项目清单无法读取：内容不完整或已损坏。") << text;
    }
    writeFile(manifest().path, "{}");
    EXPECT_EQ(error(), "项目清单无法读取：内容不完整或已损坏（files）。");
    auto document = nlohmann::json::parse(original);
    document["updatedAt"] = "yesterday";
    writeFile(manifest().path, document.dump());
    EXPECT_EQ(error(), "项目清单无法读取：内容不完整或已损坏（updatedAt）。");
}

TEST_F(ReadManifest, EveryInvariantIsChecked) {
    const std::string original = readAll(manifest().path);
    const std::vector<std::function<void(nlohmann::json&)>> changes{
        [](auto& document) { document["schemaVersion"] = 2; },
        [](auto& document) { document["schemaVersion"] = 0; },
        [](auto& document) { document["files"].erase(1); },
        [](auto& document) { document["files"].push_back(document["files"][0]); },
        [](auto& document) { std::swap(document["files"][0], document["files"][1]); },
        [](auto& document) { document["files"][0]["itemID"] = newUuid(); },
        [](auto& document) {
            document["plan"]["items"][1]["id"] = document["plan"]["items"][0]["id"];
            document["files"][1]["itemID"] = document["files"][0]["itemID"];
        },
        [](auto& document) { document["plan"]["items"][0]["relativeDestination"] = "../a.mov"; },
        [](auto& document) { document["plan"]["items"][0]["relativeDestination"] = "a.mov"; },
        [](auto& document) { document["plan"]["request"]["name"] = "Q"; },
        [](auto& document) { document["plan"]["request"]["name"] = ""; },
        [](auto& document) { document["plan"]["request"]["frameRate"] = 29; },
        [](auto& document) { document["plan"]["request"]["width"] = 1921; },
        [](auto& document) { document["plan"]["request"]["parentURL"] = "file:///nowhere-at-all/"; },
        [](auto& document) { document["plan"]["request"]["parentURL"] = "https://example.com/"; },
        [](auto& document) { document["plan"]["rootURL"] = "file:///tmp/"; },
        [](auto& document) { document["plan"]["rootURL"] = "https://example.com/"; },
    };
    for (std::size_t index = 0; index < changes.size(); ++index) {
        writeFile(manifest().path, original);
        rewrite(changes[index]);
        EXPECT_EQ(error(), project_text::manifestMismatch) << index;
    }
}

TEST_F(ReadManifest, AnotherFolderOrNameIsAMismatch) {
    std::filesystem::copy(root(), place.into() + "/Q", std::filesystem::copy_options::recursive);
    EXPECT_EQ(error(fileLocation(place.into() + "/Q/" + std::string(manifestFilename))),
              project_text::manifestMismatch);
    std::filesystem::copy(manifest().path, root() + "/other.json");
    EXPECT_EQ(error(fileLocation(root() + "/other.json")), project_text::manifestMismatch);
    std::filesystem::rename(root(), place.into() + "/R");
    EXPECT_EQ(error(fileLocation(place.into() + "/R/" + std::string(manifestFilename))),
              project_text::manifestMismatch);
}

TEST_F(ReadManifest, TheMarkerMustCarryTheId) {
    const std::string id = readAll(marker());
    EXPECT_EQ(id, manifestAt(root()).plan.id);
    for (const std::string& text : {std::string(), id + "\n", id.substr(1), std::string("x"), newUuid()}) {
        writeFile(marker(), text);
        EXPECT_EQ(error(), project_text::markerMismatch) << text;
    }
    std::filesystem::remove(marker());
    EXPECT_EQ(error(), project_text::markerMismatch);
    writeFile(place.path("id"), id);
    std::filesystem::create_symlink(place.path("id"), marker());
    EXPECT_EQ(error(), project_text::markerMismatch);
}

/// Names, sizes and all three dates of a folder and everything below it.
std::vector<std::string> traces(const std::string& root) {
    std::vector<std::string> paths = listTree(root);
    paths.emplace_back();
    std::vector<std::string> found;
    for (const auto& path : paths) {
        struct stat status {};
        if (::lstat((root + "/" + path).c_str(), &status) != 0)
            continue;
        std::string trace = path;
        for (const timespec& date : {status.st_atim, status.st_mtim, status.st_ctim})
            trace += " " + std::to_string(date.tv_sec) + "." + std::to_string(date.tv_nsec);
        found.push_back(trace + " " + std::to_string(status.st_size) + " " + std::to_string(status.st_ino));
    }
    return found;
}

TEST_F(ReadManifest, ARefusedFolderIsNotTouched) {
    const std::string original = readAll(manifest().path);
    writeFile(root() + "/02_原始素材/" + std::string(".morvane-3F2504E0-4F89-11D3-9A0C-0305E82C3301.partial"),
              "x");
    const std::vector<std::function<void()>> faults{
        [&] { rewrite([](auto& document) { document["schemaVersion"] = 2; }); },
        [&] { writeFile(manifest().path, "{"); },
        [&] { writeFile(marker(), "other"); },
        [&] { std::filesystem::resize_file(manifest().path, manifestReadLimit + 1); },
    };
    for (const auto& fault : faults) {
        fault();
        // A file whose access date is older than its change would get a new one from a careless reader.
        const timespec old[2] = {{1'000'000'000, 0}, {1'000'000'001, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, manifest().path.c_str(), old, 0), 0);
        ASSERT_EQ(::utimensat(AT_FDCWD, marker().c_str(), old, 0), 0);
        listTree(root());  // the listing below reads the folders, too: let their access dates settle
        const auto before = traces(root());
        JobContext context;
        EXPECT_NE(errorOf([&] { retrySynchronously(context, manifest()); }), "");
        EXPECT_EQ(traces(root()), before);
        writeFile(manifest().path, original);
    }
}

ProjectManifest manyRecords(const FileUrl& root, std::size_t count) {
    ProjectManifest manifest;
    manifest.plan.id = newUuid();
    manifest.plan.request.parentURL = folderLocation("/");
    manifest.plan.rootURL = root;
    for (std::size_t index = 0; index < count; ++index) {
        ProjectPlanItem item;
        item.id = newUuid();
        item.sourceURL = fileLocation("/card/" + std::to_string(index) + ".mov");
        item.relativeDestination = "02_原始素材/" + std::to_string(index) + ".mov";
        manifest.files.push_back({item.id, ProjectFileState::pending, {}, {}});
        manifest.plan.items.push_back(std::move(item));
    }
    return manifest;
}

class WriteManifest : public testing::Test {
protected:
    std::string file() const { return folder / std::string(manifestFilename); }
    ProjectManifest onDisk() const { return decodeManifest(readAll(file())); }
    void verify(ManifestWriter& writer, std::size_t index) {
        manifest.files[index].state = ProjectFileState::verified;
        manifest.files[index].sha256 = std::string(64, 'a');
        writer.persist(manifest, index);
    }

    TemporaryFolder folder;
    UniqueFd root{::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY)};
    ProjectManifest manifest = manyRecords(folderLocation(folder.path()), 50);
};

TEST_F(WriteManifest, EveryWriteCountsAndStandsWhole) {
    ManifestWriter writer(root.get());
    writer.persist(manifest);
    EXPECT_EQ(manifest.revision, 1);
    for (std::size_t index = 0; index < 50; ++index) {
        manifest.files[index].state = ProjectFileState::copying;
        writer.persist(manifest, index);
        EXPECT_EQ(onDisk(), manifest);
        verify(writer, index);
        EXPECT_EQ(onDisk(), manifest);
    }
    EXPECT_EQ(manifest.revision, 101);
    manifest.warnings.emplace_back("one more");
    manifest.fcpxmlFilename = "a.fcpxml";
    writer.persist(manifest);
    EXPECT_EQ(onDisk(), manifest);
    writer.persist(manifest, std::nullopt);
    EXPECT_EQ(onDisk(), manifest);
    EXPECT_NEAR(static_cast<double>(manifest.updatedAt), static_cast<double>(std::time(nullptr)), 60);
}

TEST_F(WriteManifest, TwoWritesOfTheSameDifferInRevisionAndDateOnly) {
    ManifestWriter writer(root.get());
    writer.persist(manifest);
    auto first = nlohmann::json::parse(readAll(file()));
    writer.persist(manifest, std::nullopt);
    auto second = nlohmann::json::parse(readAll(file()));
    EXPECT_EQ(second["revision"], first["revision"].get<int>() + 1);
    for (const char* key : {"revision", "updatedAt"}) {
        first.erase(key);
        second.erase(key);
    }
    EXPECT_EQ(first, second);
}

TEST_F(WriteManifest, WritesBegunAheadArePublishedOneByOne) {
    ManifestWriter writer(root.get());
    writer.persist(manifest);
    for (std::size_t index = 0; index + 1 < 50; ++index) {
        const ProjectManifest before = onDisk();
        ProjectFileRecord done{manifest.files[index].itemID, verified, std::string(64, 'b'), {}};
        ProjectFileRecord next{manifest.files[index + 1].itemID, copying, {}, {}};
        writer.prepare(manifest, {{index, done}, {index + 1, next}});
        EXPECT_EQ(onDisk(), before) << "nothing is published ahead";
        manifest.files[index] = done;
        writer.persist(manifest, index);
        EXPECT_EQ(onDisk(), manifest);
        manifest.files[index + 1] = next;
        writer.persist(manifest, index + 1);
        EXPECT_EQ(onDisk(), manifest);
    }
    EXPECT_EQ(manifest.revision, 99);
}

TEST_F(WriteManifest, WhatWasForetoldAndDoesNotComeLeavesNoTrace) {
    ManifestWriter writer(root.get());
    writer.persist(manifest);
    std::mt19937 random(7);
    const auto someIndex = [&] { return random() % manifest.files.size(); };
    const std::vector<ProjectFileState> states = {pending, copying, verified, failed, cancelled};
    for (int round = 0; round < 300; ++round) {
        const std::size_t first = someIndex();
        const std::size_t second = someIndex();
        ProjectFileRecord foretold = manifest.files[first];
        foretold.state = verified;
        foretold.sha256 = std::string(64, 'c');
        writer.prepare(manifest,
                       {{first, foretold}, {second, {manifest.files[second].itemID, copying, {}, {}}}});
        if (random() % 2 == 0) {
            manifest.files[first] = foretold;
            writer.persist(manifest, first);
            EXPECT_EQ(onDisk(), manifest);
        }
        const std::size_t other = random() % 3 == 0 ? second : someIndex();
        manifest.files[other].state = states[random() % states.size()];
        if (random() % 10 == 0)
            manifest.files[other].error = std::string(random() % 400, 'e');
        if (random() % 20 == 0)
            writer.persist(manifest);
        else
            writer.persist(manifest, other);
        EXPECT_EQ(onDisk(), manifest);
        EXPECT_LE(listTree(folder.path()).size(), 5U);
    }
}

TEST_F(WriteManifest, NothingIsLeftBehind) {
    {
        ManifestWriter writer(root.get());
        writer.persist(manifest);
        for (std::size_t index = 0; index < 10; ++index)
            verify(writer, index);
        EXPECT_EQ(listTree(folder.path()).size(), 5U) << "the manifest and four older copies";
        writer.prepare(manifest, {{11, {manifest.files[11].itemID, verified, {}, {}}}});
    }
    EXPECT_THAT(listTree(folder.path()), ElementsAre(std::string(manifestFilename)));
    struct stat status {};
    ASSERT_EQ(::stat(file().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0644U);
}

TEST_F(WriteManifest, OlderCopiesTakeNoRoomFromFilesStillToCopy) {
    manifest.plan.items[20].size = std::numeric_limits<std::int64_t>::max();
    manifest.plan.items[21].size = std::numeric_limits<std::int64_t>::max();
    ManifestWriter writer(root.get());
    writer.persist(manifest);
    for (std::size_t index = 0; index < 10; ++index)
        verify(writer, index);
    EXPECT_EQ(listTree(folder.path()).size(), 3U) << "the manifest and two older copies";
    verify(writer, 20);
    verify(writer, 21);
    verify(writer, 22);
    EXPECT_EQ(listTree(folder.path()).size(), 5U);
    EXPECT_EQ(onDisk(), manifest);
}

TEST_F(WriteManifest, LongErrorTextsFindRoom) {
    ManifestWriter writer(root.get());
    writer.persist(manifest);
    for (std::size_t index = 0; index < 6; ++index) {
        manifest.files[index].state = ProjectFileState::failed;
        manifest.files[index].error = std::string(100 * (index + 1), 'e');
        writer.persist(manifest, index);
        EXPECT_EQ(onDisk(), manifest);
        verify(writer, index + 10);
        EXPECT_EQ(onDisk(), manifest);
    }
}

TEST_F(WriteManifest, ASlowReaderSeesOneManifest) {
    ManifestWriter writer(root.get());
    writer.persist(manifest);
    for (std::size_t index = 0; index < 5; ++index)
        verify(writer, index);
    std::vector<std::pair<UniqueFd, ProjectManifest>> readers;
    for (std::size_t index = 5; index < 25; ++index) {
        readers.emplace_back(UniqueFd(::open(file().c_str(), O_RDONLY)), manifest);
        verify(writer, index);
    }
    for (const auto& [reader, expected] : readers) {
        std::string text(1'000'000, '\0');
        text.resize(static_cast<std::size_t>(::pread(reader.get(), text.data(), text.size(), 0)));
        EXPECT_EQ(decodeManifest(text), expected);
    }
}

TEST_F(WriteManifest, ReadersAtAnyMomentSeeAWholeManifest) {
    manifest = manyRecords(folderLocation(folder.path()), 2000);
    ManifestWriter writer(root.get());
    writer.persist(manifest);
    std::atomic<bool> isOver = false;
    std::atomic<int> reads = 0;
    std::thread reader([&] {
        std::int64_t last = 0;
        while (!isOver) {
            const ProjectManifest seen = onDisk();
            EXPECT_GE(seen.revision, last);
            last = seen.revision;
            // Record n is verified by write n + 2: a mixture of two moments would show.
            for (std::size_t index = 0; index < seen.files.size(); ++index)
                EXPECT_EQ(seen.files[index].state == ProjectFileState::verified,
                          static_cast<std::int64_t>(index) + 2 <= seen.revision);
            ++reads;
        }
    });
    for (std::size_t index = 0; index < 2000; ++index)
        verify(writer, index);
    isOver = true;
    reader.join();
    EXPECT_GE(reads, 1);
}

TEST_F(WriteManifest, OneRecordsChangeWritesLittle) {
    const auto written = [] {
        std::ifstream counters("/proc/self/io");
        std::string name;
        std::uint64_t value = 0;
        while (counters >> name >> value)
            if (name == "wchar:")
                return value;
        return std::uint64_t{0};
    };
    if (written() == 0)
        GTEST_SKIP() << "this system does not count written bytes";
    manifest = manyRecords(folderLocation(folder.path()), 10'000);
    ManifestWriter writer(root.get());
    writer.persist(manifest);
    for (std::size_t index = 0; index < 4; ++index)
        verify(writer, index);
    const std::uint64_t before = written();
    for (std::size_t index = 4; index < 104; ++index)
        verify(writer, index);
    EXPECT_LT(written() - before, 100U * 4096);
    EXPECT_EQ(onDisk(), manifest);
}

TEST_F(WriteManifest, AManifestExchangedByAnotherHandIsReplaced) {
    ManifestWriter writer(root.get());
    writer.persist(manifest);
    for (std::size_t index = 0; index < 4; ++index)
        verify(writer, index);
    writeFile(folder / "edited", "someone else's");
    std::filesystem::rename(folder / "edited", file());
    verify(writer, 4);
    EXPECT_EQ(onDisk(), manifest);
    std::filesystem::remove(file());
    verify(writer, 5);
    EXPECT_EQ(onDisk(), manifest);
}

TEST_F(WriteManifest, ATargetThatIsNoFile) {
    ManifestWriter writer(root.get());
    const auto error = [&] { return errorOf([&] { writer.persist(manifest); }); };
    const auto errorOfRecord = [&] { return errorOf([&] { writer.persist(manifest, 0); }); };
    for (int round = 0; round < 2; ++round) {
        std::filesystem::create_directory(file());
        EXPECT_EQ(round == 0 ? error() : errorOfRecord(), project_text::manifestTargetNotRegular);
        std::filesystem::remove(file());
        std::filesystem::create_symlink("elsewhere", file());
        EXPECT_EQ(round == 0 ? error() : errorOfRecord(), project_text::manifestTargetNotRegular);
        EXPECT_FALSE(std::filesystem::exists(folder / "elsewhere"));
        std::filesystem::remove(file());
        EXPECT_THAT(listTree(folder.path()), IsEmpty());
        writer.persist(manifest);
        EXPECT_EQ(onDisk(), manifest);
        std::filesystem::remove(file());
    }
}

TEST_F(WriteManifest, WhereNamesCannotBeExchanged) {
    std::filesystem::create_directory(folder / "behind");
    std::filesystem::create_directory(folder / "front");
    const Mount mount = Mount::bindfs(folder / "behind", folder / "front");
    if (!mount)
        GTEST_SKIP() << mount.problem();
    {
        const UniqueFd front(::open((folder / "front").c_str(), O_RDONLY | O_DIRECTORY));
        ManifestWriter writer(front.get());
        writer.persist(manifest);
        for (std::size_t index = 0; index < 5; ++index) {
            verify(writer, index);
            EXPECT_EQ(manifestAt(folder / "front"), manifest);
        }
    }
    EXPECT_THAT(listTree(folder / "behind"), ElementsAre(std::string(manifestFilename)));
}

TEST_F(WriteManifest, OnAFullDiskTheRunGoesOnWithTheCopiesItHas) {
    std::filesystem::create_directory(folder / "small");
    const Mount mount = Mount::tmpfs(folder / "small", 1'048'576);
    if (!mount)
        GTEST_SKIP() << mount.problem();
    const UniqueFd small(::open((folder / "small").c_str(), O_RDONLY | O_DIRECTORY));
    ManifestWriter writer(small.get());
    writer.persist(manifest);
    verify(writer, 0);
    const auto fill = [&](const std::string& name) {
        std::ofstream filler(folder / ("small/" + name));
        while (filler << std::string(4096, 'x') << std::flush)
            continue;
    };
    fill("filler");
    for (std::size_t index = 1; index < 10; ++index) {
        verify(writer, index);
        EXPECT_EQ(manifestAt(folder / "small"), manifest);
    }
    writer.persist(manifest);  // the older copies gave the room
    EXPECT_EQ(manifestAt(folder / "small"), manifest);
    fill("filler2");
    const ProjectManifest before = manifest;
    EXPECT_EQ(errorOf([&] { writer.persist(manifest); }), systemErrorText(ENOSPC));
    EXPECT_EQ(manifestAt(folder / "small"), before) << "the former manifest still stands whole";
}

TEST_F(WriteManifest, TheLastRevisionIsNotPassed) {
    ManifestWriter writer(root.get());
    manifest.revision = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(errorOf([&] { writer.persist(manifest); }), project_text::noMoreRevisions);
    EXPECT_THAT(listTree(folder.path()), IsEmpty());
}

TEST(ProjectLock, OneHolderAtATime) {
    const TemporaryFolder folder;
    const UniqueFd root(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY));
    EXPECT_EQ(errorOf([&] { ProjectLock::acquire(root.get()); }), project_text::markerMismatch);
    const std::string id = newUuid();
    {
        const ProjectLock lock = ProjectLock::create(root.get(), id);
        EXPECT_EQ(readAll(folder / std::string(markerFilename)), id);
        EXPECT_EQ(errorOf([&] { ProjectLock::acquire(root.get()); }), project_text::busy);
    }
    EXPECT_EQ(errorOf([&] { ProjectLock::acquire(root.get()); }), "");
    EXPECT_EQ(errorOf([&] { ProjectLock::create(root.get(), newUuid()); }), systemErrorText(EEXIST));
    EXPECT_EQ(readAll(folder / std::string(markerFilename)), id);
}

}  // namespace
}  // namespace morvane::test
