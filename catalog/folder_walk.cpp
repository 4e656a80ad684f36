#include "catalog/folder_walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "catalog/asset.h"
#include "platform/package_types.h"
#include "support/path_text.h"
#include "support/text_fold.h"
#include "support/unique_fd.h"

namespace morvane {

namespace {

constexpr std::size_t threadCount = 2;
constexpr std::size_t entryBufferBytes = std::size_t{1} << 17;

// A folder with its line of folders above, by which a tree that contains itself is recognised.
struct Place {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::shared_ptr<const Place> above;

    bool holds(std::uint64_t otherDevice, std::uint64_t otherInode) const {
        for (const Place* place = this; place != nullptr; place = place->above.get())
            if (place->device == otherDevice && place->inode == otherInode)
                return true;
        return false;
    }
};

struct Pending {
    std::string path;
    std::shared_ptr<const Place> above;  // null for the folder the walk begins with
};

// One record of getdents64, as the kernel lays it out.
struct EntryHeader {
    std::uint64_t inode;
    std::int64_t offset;
    std::uint16_t length;
    std::uint8_t type;
};
constexpr std::size_t nameOffsetInEntry = 19;

std::uint64_t deviceOf(const struct statx& attributes) {
    return (static_cast<std::uint64_t>(attributes.stx_dev_major) << 32) | attributes.stx_dev_minor;
}

double secondsOf(const statx_timestamp& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

// The folders still to be read. The walk ends when none waits and no thread can add one.
class FolderWalk::Stack {
public:
    explicit Stack(Pending first) { waiting_.push_back(std::move(first)); }

    void push(Pending folder) {
        {
            const std::lock_guard lock(mutex_);
            waiting_.push_back(std::move(folder));
        }
        changed_.notify_one();
    }

    // Gives the caller a folder to read; nothing when the walk is over. Ends the reading of the
    // caller's last folder.
    std::optional<Pending> next(bool& reading) {
        std::unique_lock lock(mutex_);
        if (reading)
            --readers_;
        reading = false;
        if (readers_ == 0 && waiting_.empty())
            ended_ = true;
        if (ended_)
            changed_.notify_all();
        changed_.wait(lock, [this] { return ended_ || !waiting_.empty(); });
        if (ended_)
            return std::nullopt;
        Pending folder = std::move(waiting_.back());
        waiting_.pop_back();
        ++readers_;
        reading = true;
        return folder;
    }

    void end() {
        {
            const std::lock_guard lock(mutex_);
            ended_ = true;
        }
        changed_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    // Guarded by `mutex_`.
    std::vector<Pending> waiting_;
    std::size_t readers_ = 0;
    bool ended_ = false;
};

// One thread's share of the walk.
class FolderWalk::Reader {
public:
    Reader(const WalkRequest& request, Stack& stack)
        : request_(request), stack_(stack), buffer_(entryBufferBytes) {}

    Part run() {
        struct EndForAll {  // also when this thread fails: the other must not wait for it
            Stack& stack;
            ~EndForAll() { stack.end(); }
        } const endForAll{stack_};
        bool reading = false;
        while (auto folder = stack_.next(reading)) {
            if (request_.stop.stop_requested())
                break;
            read(*folder);
        }
        return std::move(part_);
    }

private:
    void read(const Pending& folder) {
        // Only the folder the user named may be a link.
        const int followed = folder.above ? O_NOFOLLOW : 0;
        const UniqueFd opened(::open(folder.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | followed));
        struct statx attributes {};
        if (!opened || ::statx(opened.get(), "", AT_EMPTY_PATH, STATX_INO, &attributes) != 0) {
            ++part_.unreadable;
            return;
        }
        if (folder.above && folder.above->holds(deviceOf(attributes), attributes.stx_ino)) {
            ++part_.unreadable;
            return;
        }
        place_ = std::make_shared<const Place>(Place{deviceOf(attributes), attributes.stx_ino, folder.above});
        prefix_ = folder.path == "/" ? folder.path : folder.path + "/";
        refusesAttributes_ = false;
        const std::size_t firstFile = part_.files.size();
        readEntries(opened.get());
        closeFolder(folder.path, firstFile);
    }

    void readEntries(int folder) {
        for (;;) {
            const long bytes = ::syscall(SYS_getdents64, folder, buffer_.data(), buffer_.size());
            if (bytes < 0)
                ++part_.unreadable;
            if (bytes <= 0 || request_.stop.stop_requested())
                return;
            const std::size_t before = part_.files.size();
            for (long at = 0; at < bytes;) {
                const char* const entry = buffer_.data() + at;
                const auto* const header = reinterpret_cast<const EntryHeader*>(entry);
                takeEntry(folder, entry + nameOffsetInEntry, header->type);
                at += header->length;
            }
            if (request_.found && part_.files.size() > before)
                request_.found(part_.files.size() - before);
        }
    }

    void takeEntry(int folder, const char* name, std::uint8_t type) {
        if (name[0] == '.')  // hidden, and the folder itself and the one above
            return;
        switch (type) {
            case DT_DIR:
                takeFolder(name);
                return;
            case DT_REG:
                takeFile(folder, name);
                return;
            case DT_UNKNOWN:
                takeUnknown(folder, name);
                return;
            default:
                return;
        }
    }

    // File systems that name no type in the entry.
    void takeUnknown(int folder, const char* name) {
        struct statx attributes {};
        if (::statx(folder, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_TYPE, &attributes) != 0) {
            countFailure();
            return;
        }
        if (S_ISDIR(attributes.stx_mode))
            takeFolder(name);
        else if (S_ISREG(attributes.stx_mode))
            takeFile(folder, name);
    }

    void takeFolder(std::string_view name) {
        if (hasPackageExtension(name))
            return;
        if (!isValidUtf8(name)) {
            ++part_.unreadable;
            return;
        }
        stack_.push({prefix_ + std::string(name), place_});
    }

    void takeFile(int folder, const char* name) {
        const std::string_view text = name;
        if (!indexableKind(text))
            return;
        if (!isValidUtf8(text)) {
            ++part_.unreadable;
            return;
        }
        if (request_.isKnown && request_.isKnown(prefix_ + std::string(text)))
            return;
        constexpr unsigned wanted = STATX_TYPE | STATX_SIZE | STATX_MTIME;
        struct statx attributes {};
        if (::statx(folder, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, wanted, &attributes) != 0) {
            countFailure();
            return;
        }
        if (!S_ISREG(attributes.stx_mode))
            return;
        File file;
        file.nameOffset = part_.names.size();
        file.nameLength = text.size();
        if ((attributes.stx_mask & STATX_SIZE) != 0)
            file.size = static_cast<std::int64_t>(attributes.stx_size);
        if ((attributes.stx_mask & STATX_MTIME) != 0)
            file.modified = secondsOf(attributes.stx_mtime);
        part_.names.insert(part_.names.end(), text.begin(), text.end());
        part_.files.push_back(file);
    }

    // A folder that may be listed but not entered refuses the attributes of every entry: that is one
    // failure, the folder's. An entry that vanished since it was listed is none.
    void countFailure() {
        if (errno == ENOENT || refusesAttributes_)
            return;
        refusesAttributes_ = true;
        ++part_.unreadable;
    }

    void closeFolder(const std::string& path, std::size_t firstFile) {
        if (part_.files.size() == firstFile)
            return;
        const auto name = [this](const File& file) {
            return std::string_view(part_.names.data() + file.nameOffset, file.nameLength);
        };
        std::sort(part_.files.begin() + static_cast<std::ptrdiff_t>(firstFile), part_.files.end(),
                  [&name](const File& left, const File& right) { return name(left) < name(right); });
        part_.folders.push_back({path, firstFile, part_.files.size() - firstFile});
    }

    const WalkRequest& request_;
    Stack& stack_;
    std::vector<char> buffer_;
    Part part_;
    // Of the folder being read.
    std::shared_ptr<const Place> place_;
    std::string prefix_;
    bool refusesAttributes_ = false;
};

FolderWalk::FolderWalk(const WalkRequest& request) {
    Stack stack({request.folder, nullptr});
    const auto read = [&request, &stack] { return Reader(request, stack).run(); };
    std::vector<std::future<Part>> others;
    for (std::size_t thread = 1; thread < threadCount; ++thread)
        others.push_back(std::async(std::launch::async, read));
    parts_.push_back(read());
    for (std::future<Part>& other : others)
        parts_.push_back(other.get());
    for (const Part& part : parts_)
        unreadable_ += part.unreadable;
}

std::size_t FolderWalk::fileCount() const {
    std::size_t count = 0;
    for (const Part& part : parts_)
        count += part.files.size();
    return count;
}

void FolderWalk::forEachFolder(
    const std::function<void(const std::string& folder, const std::vector<WalkedFile>& files)>& take) const {
    std::vector<std::pair<const Part*, const Folder*>> folders;
    for (const Part& part : parts_)
        for (const Folder& folder : part.folders)
            folders.emplace_back(&part, &folder);
    std::sort(folders.begin(), folders.end(),
              [](const auto& left, const auto& right) { return left.second->path < right.second->path; });
    std::vector<WalkedFile> files;
    for (const auto& [part, folder] : folders) {
        files.clear();
        for (std::size_t index = 0; index < folder->fileCount; ++index) {
            const File& file = part->files[folder->firstFile + index];
            files.push_back(
                {{part->names.data() + file.nameOffset, file.nameLength}, file.size, file.modified});
        }
        take(folder->path, files);
    }
}

}  // namespace morvane
