// The organizer beside the tools a person would use instead: project_bench [SCALE [PART...]], with the parts
// manifest, planning, duplicates, large, medium, small (all unless named) and the scale 0.1 unless named (1
// is one 4 GiB file, 2,000 x 2 MiB, 20,000 x 20 KiB, 100,000 files to plan, 20,000 duplicate candidates).
// Everything it makes lies in one temporary folder ($TMPDIR or /tmp) and is removed.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <system_error>

#include "bench/measure.h"
#include "bench/temporary_folder.h"
#include "platform/exclusive_rename.h"
#include "platform/run_process.h"
#include "project/duplicates.h"
#include "project/execution.h"
#include "project/folder_sync.h"
#include "project/manifest.h"
#include "project/manifest_writer.h"
#include "project/planning.h"
#include "project/safe_paths.h"
#include "support/sha256.h"
#include "support/unique_fd.h"
#include "support/uuid.h"

namespace morvane::bench {
namespace {

constexpr std::size_t mebibyte = 1'048'576;

/// Writes a file of random bytes; the same seed gives the same bytes.
void writeRandom(const std::string& path, std::size_t size, std::uint64_t seed) {
    const UniqueFd file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644));
    if (!file)
        throw std::system_error(errno, std::generic_category(), path);
    std::mt19937_64 random(seed);
    std::vector<std::uint64_t> block(std::min(size, mebibyte) / 8 + 1);
    for (std::size_t done = 0; done < size;) {
        for (auto& word : block)
            word = random();
        const std::size_t count = std::min({size - done, mebibyte, block.size() * 8});
        writeAll(file.get(), reinterpret_cast<const char*>(block.data()), count);
        done += count;
    }
}

/// `count` files of `size` bytes in folders of 100.
void makeFiles(const std::string& root, std::size_t count, std::size_t size) {
    for (std::size_t index = 0; index < count; ++index) {
        const std::string folder = root + "/" + std::to_string(index / 100);
        if (index % 100 == 0)
            std::filesystem::create_directories(folder);
        writeRandom(folder + "/C" + std::to_string(index) + ".MP4", size, index);
    }
}

void shell(const std::string& command) {
    const ProcessOutcome outcome = runProcess("/bin/sh", {"-c", command}, [] { return false; });
    if (outcome.exitStatus != 0)
        throw std::runtime_error(command + ": " + outcome.standardError);
}

ProjectRequest requestFor(const std::string& source, const std::string& into) {
    ProjectRequest request;
    request.name = "P";
    request.parentURL = folderLocation(into);
    request.sources = {folderLocation(source)};
    request.createFCP = false;
    return request;
}

/// Ours and a rival copy the folder "src" into folders of their own, new for each round; sources are in
/// memory for both.
class CopyContest {
public:
    explicit CopyContest(const TemporaryFolder& folder) : folder_(folder), source_(folder / "src") {}

    void against(const std::string& name, const std::string& rivalName, const std::function<void()>& rival,
                 double goal, std::size_t rounds) {
        compare(name,
                {[this] {
                     JobContext context;
                     if (executeSynchronously(context, plan_).failedCount != 0)
                         throw std::runtime_error("a copy failed");
                 },
                 [this] {
                     renew(ours_, "ours");
                     JobContext context;
                     plan_ = planSynchronously(context, requestFor(source_, ours_));
                 }},
                rivalName, {rival, [this] { renew(theirs_, "theirs"); }}, goal, rounds);
    }
    std::function<void()> command(const std::string& text) const {
        return [this, text] { shell("S='" + source_ + "'; T='" + theirs_ + "'; " + text); };
    }
    const std::string& source() const { return source_; }
    const std::string& theirs() const { return theirs_; }

private:
    /// Small files stay until the end: ext4 without a journal looks over all inodes freed within its last
    /// minutes whenever it makes a file, and the round before would be measured, too. Of large files there
    /// are few, and the disk has no room for all rounds.
    void renew(std::string& target, const std::string& name) {
        if (!plan_.items.empty() && plan_.items.front().size >= static_cast<std::int64_t>(mebibyte))
            std::filesystem::remove_all(target);
        target = folder_ / (name + std::to_string(++targets_));
        std::filesystem::create_directories(target);
        ::sync();
    }

    const TemporaryFolder& folder_;
    const std::string source_;
    std::string ours_;
    std::string theirs_;
    std::size_t targets_ = 0;
    ProjectPlan plan_;
};

const std::string copyAndHash =
    "cp -r \"$S\" \"$T/\" && sync -f \"$T\" && "
    "find \"$S\" \"$T\" -type f -exec openssl dgst -sha256 {} + > /dev/null";
const std::string copyAndCheck = "rsync -a --fsync \"$S\" \"$T/\" && rsync -acn \"$S\" \"$T/\" > /dev/null";
const std::string cloneAndCheck =
    "rclone copy -q --no-check-dest \"$S\" \"$T\" && sync -f \"$T\" && rclone check -q --download \"$S\" "
    "\"$T\"";

/// The least a verified copy of small files costs: open, copy, flush, rename, read back, compare.
void minimalLoop(const std::string& source, const std::string& target) {
    std::vector<char> bytes(mebibyte);
    Sha256 digest;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(source)) {
        const std::string to = target + entry.path().string().substr(source.size());
        if (entry.is_directory()) {
            std::filesystem::create_directories(to);
            continue;
        }
        const UniqueFd in(::open(entry.path().c_str(), O_RDONLY));
        const std::string temporary = to + ".partial";
        const UniqueFd out(::open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600));
        digest.reset();
        ssize_t count = 0;
        while ((count = ::read(in.get(), bytes.data(), bytes.size())) > 0) {
            digest.update(bytes.data(), static_cast<std::size_t>(count));
            writeAll(out.get(), bytes.data(), static_cast<std::size_t>(count));
        }
        const std::string written = digest.finish();
        if (::fsync(out.get()) != 0 || renameExclusively(temporary, to) != 0)
            throw std::system_error(errno, std::generic_category(), to);
        ::posix_fadvise(out.get(), 0, 0, POSIX_FADV_DONTNEED);
        digest.reset();
        ::lseek(out.get(), 0, SEEK_SET);
        while ((count = ::read(out.get(), bytes.data(), bytes.size())) > 0)
            digest.update(bytes.data(), static_cast<std::size_t>(count));
        if (digest.finish() != written)
            throw std::runtime_error("a copy differs");
    }
}

void benchLarge(double scale) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "src");
    const auto size = static_cast<std::size_t>(scale * 4096) * mebibyte;
    writeRandom(folder / "src/large.mov", size, 1);
    CopyContest contest(folder);
    contest.against("copy, one file of " + std::to_string(size / mebibyte) + " MiB", "cp, sync, openssl dgst",
                    contest.command(copyAndHash), 0.75, 3);
    contest.against("  the same", "rsync, rsync -c", contest.command(copyAndCheck), 0.75, 3);
    contest.against("  the same", "rclone copy, check", contest.command(cloneAndCheck), 0.75, 3);
}

void benchMedium(double scale) {
    const TemporaryFolder folder;
    const auto count = static_cast<std::size_t>(scale * 2000);
    makeFiles(folder / "src", count, 2 * mebibyte);
    CopyContest contest(folder);
    contest.against("copy, " + std::to_string(count) + " x 2 MiB", "cp, sync, openssl dgst",
                    contest.command(copyAndHash), 0.9, 3);
    contest.against("  the same", "rsync --fsync, rsync -c", contest.command(copyAndCheck), 0.9, 3);
    contest.against("  the same", "rclone copy, check", contest.command(cloneAndCheck), 0.9, 3);
}

void benchSmall(double scale) {
    const TemporaryFolder folder;
    const auto count = static_cast<std::size_t>(scale * 20'000);
    makeFiles(folder / "src", count, 20'480);
    CopyContest contest(folder);
    contest.against(
        "copy, " + std::to_string(count) + " x 20 KiB", "minimal loop",
        [&] { minimalLoop(contest.source(), contest.theirs()); }, 1.25, 3);
    contest.against("  the same", "rsync --fsync, rsync -c", contest.command(copyAndCheck), 1.25, 3);
}

ProjectManifest pendingManifest(const FileUrl& root, std::size_t count) {
    ProjectManifest manifest;
    manifest.plan.id = newUuid();
    manifest.plan.rootURL = root;
    manifest.plan.request.parentURL = folderLocation("/");
    for (std::size_t index = 0; index < count; ++index) {
        ProjectPlanItem item;
        item.id = newUuid();
        item.sourceURL =
            fileLocation("/run/media/card/PRIVATE/M4ROOT/CLIP/C" + std::to_string(index) + ".MP4");
        item.relativeDestination =
            "02_原始素材/相机卡备份/CARD/PRIVATE/M4ROOT/CLIP/C" + std::to_string(index) + ".MP4";
        item.category = "拍摄素材";
        manifest.files.push_back({item.id, ProjectFileState::pending, {}, {}});
        manifest.plan.items.push_back(std::move(item));
    }
    return manifest;
}

/// One state change of one record beside encoding and writing the whole manifest.
void benchManifest(double /*scale*/) {
    constexpr std::size_t changes = 20;
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "one");
    std::filesystem::create_directories(folder / "whole");
    const UniqueFd one(::open((folder / "one").c_str(), O_RDONLY | O_DIRECTORY));
    const UniqueFd whole(::open((folder / "whole").c_str(), O_RDONLY | O_DIRECTORY));
    ProjectManifest manifest = pendingManifest(folderLocation(folder / "one"), 10'000);
    ManifestWriter changing(one.get());
    ManifestWriter writing(whole.get());
    changing.persist(manifest);
    writing.persist(manifest);
    std::size_t next = 0;
    const auto change = [&] {
        ProjectFileRecord& record = manifest.files[next];
        record.state = ProjectFileState::verified;
        record.sha256 = std::string(64, 'a');
        changing.persist(manifest, next++);
    };
    change();
    change();  // the two older copies stand now
    compare("manifest, 20 changes of 10,000 records", {[&] {
                for (std::size_t count = 0; count < changes; ++count)
                    change();
            }},
            "encode and write everything", {[&] {
                for (std::size_t count = 0; count < changes; ++count)
                    writing.persist(manifest);
            }},
            0.02);
}

void benchPlanning(double scale) {
    const TemporaryFolder folder;
    const auto count = static_cast<std::size_t>(scale * 100'000);
    for (std::size_t index = 0; index < count; ++index) {
        const std::string below = folder / ("src/第" + std::to_string(index / 50) + "场");
        if (index % 50 == 0)
            std::filesystem::create_directories(below);
        const UniqueFd file(
            ::open((below + "/C" + std::to_string(index) + ".MP4").c_str(), O_WRONLY | O_CREAT, 0644));
        if (::ftruncate(file.get(), static_cast<off_t>(index)) != 0)
            throw std::system_error(errno, std::generic_category());
    }
    std::filesystem::create_directories(folder / "into");
    compare(
        "planning, " + std::to_string(count) + " files", {[&] {
            JobContext context;
            if (planSynchronously(context, requestFor(folder / "src", folder / "into")).items.size() != count)
                throw std::runtime_error("files are missing");
        }},
        "find -printf", {[&] {
            shell("find '" + folder / "src" + "' -type f -printf '%p %s %T@\\n' > '" + folder / "list" + "'");
        }},
        2);
}

/// Files of which most share their size with others, some their content.
void benchDuplicates(double scale) {
    const TemporaryFolder folder;
    const auto count = static_cast<std::size_t>(scale * 20'000);
    std::filesystem::create_directories(folder / "src");
    std::filesystem::create_directories(folder / "into");
    for (std::size_t index = 0; index < count; ++index) {
        const std::size_t size = index % 10 < 7 ? 20'000 + index : 150'000 + index % 100;
        const std::size_t seed = index % 50 == 9 ? index % 100 + 1'000'000 : index;
        writeRandom(folder / ("src/" + std::to_string(index) + ".mov"), size, seed);
    }
    JobContext context;
    const ProjectPlan planned = planSynchronously(context, requestFor(folder / "src", folder / "into"));
    std::printf("  %zu of %zu files have a duplicate earlier in the plan\n",
                static_cast<std::size_t>(
                    std::count_if(planned.items.begin(), planned.items.end(),
                                  [](const auto& item) { return item.duplicateOf.has_value(); })),
                count);
    ProjectPlan clean = planned;
    for (auto& item : clean.items) {
        item.duplicateOf.reset();
        item.sourceHash.reset();
    }
    const Work ours{[&] {
        ProjectPlan plan = clean;
        findDuplicates(context, plan);
    }};
    compare("duplicates, " + std::to_string(count) + " files", ours, "jdupes",
            {[&] { shell("jdupes -rqm '" + folder / "src" + "' > /dev/null"); }}, 1.2);
    compare("  the same", ours, "rdfind", {[&] {
                shell("rdfind -dryrun true -checksum sha256 -outputname '" + folder / "out" + "' '" +
                      folder / "src" + "' > /dev/null");
            }},
            1.2);
}

void benchParts(double scale, const std::vector<std::string>& wanted) {
    const std::vector<std::pair<std::string, void (*)(double)>> parts = {
        {"manifest", benchManifest}, {"planning", benchPlanning}, {"duplicates", benchDuplicates},
        {"large", benchLarge},       {"medium", benchMedium},     {"small", benchSmall},
    };
    for (const auto& [name, bench] : parts)
        if (wanted.empty() || std::find(wanted.begin(), wanted.end(), name) != wanted.end())
            bench(scale);
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("largest resident memory: %ld MiB\n", usage.ru_maxrss / 1024);
}

}  // namespace
}  // namespace morvane::bench

int main(int argc, char** argv) {
    try {
        const double scale = argc > 1 ? std::stod(argv[1]) : 0.1;
        if (!(scale > 0 && scale <= 10))
            throw std::invalid_argument("the scale must lie between 0 and 10");
        morvane::bench::benchParts(scale, {argv + std::min(argc, 2), argv + argc});
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "project_bench: %s\n", error.what());
        return 1;
    }
}
