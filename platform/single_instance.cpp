#include "platform/single_instance.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <QByteArray>
#include <QSocketNotifier>

#include "support/path_text.h"
#include "support/sha256.h"
#include "support/unique_fd.h"

// Two files in the user's runtime folder: the lock tells who is first, and the kernel gives it free
// at any end of the process; the socket only carries the request to come forward. A socket left by
// a crash is replaced by whoever holds the lock next. The lock file is never removed: removing it
// would let two processes lock two files of one name.

namespace morvane {

namespace {

constexpr auto reachFor = std::chrono::seconds(2);
constexpr int retryMilliseconds = 20;
constexpr int waitingRequests = 8;
constexpr std::size_t hashLetters = 32;

// The same text before and after the folder itself is made, so links above it are resolved as well.
std::string canonicalText(const std::string& folder) {
    std::error_code error;
    const auto resolved = std::filesystem::weakly_canonical(folder, error);
    return standardizedPath(error ? folder : resolved.native());
}

// True for a folder of this user that nobody else can enter.
bool isPrivate(int folder) {
    struct stat status {};
    return ::fstat(folder, &status) == 0 && status.st_uid == ::geteuid() && (status.st_mode & 0077) == 0;
}

UniqueFd openFolder(const std::string& path) {
    return UniqueFd(::open(path.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// $XDG_RUNTIME_DIR, else a private folder in /tmp; nothing when neither can be trusted.
UniqueFd openRuntimeFolder() {
    if (const std::string named = qgetenv("XDG_RUNTIME_DIR").toStdString(); !named.empty()) {
        UniqueFd folder = openFolder(named);
        if (folder && isPrivate(folder.get()))
            return folder;
    }
    const std::string made = "/tmp/morvane-" + std::to_string(::geteuid());
    if (::mkdir(made.c_str(), 0700) != 0 && errno != EEXIST)
        return {};
    UniqueFd folder = openFolder(made);
    return folder && isPrivate(folder.get()) ? std::move(folder) : UniqueFd();
}

UniqueFd makeSocket() {
    return UniqueFd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

}  // namespace

struct SingleInstance::State {
    UniqueFd folder;
    std::string name;
    UniqueFd lock;
    bool isFirst = false;
    UniqueFd socket;
    std::unique_ptr<QSocketNotifier> notifier;
    std::function<void()> raise;

    // Through the open folder: a socket address holds 107 bytes, a folder's path may be longer.
    sockaddr_un address() const {
        sockaddr_un result{};
        result.sun_family = AF_UNIX;
        const std::string path = "/proc/self/fd/" + std::to_string(folder.get()) + "/" + name + ".socket";
        std::strncpy(result.sun_path, path.c_str(), sizeof result.sun_path - 1);
        return result;
    }

    void claim(Role role) {
        folder = openRuntimeFolder();
        if (!folder) {
            isFirst = true;
            return;
        }
        lock.reset(::openat(folder.get(), (name + ".lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC,
                            0600));
        isFirst = !lock || ::flock(lock.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
        if (isFirst && role == Role::Window)
            listen();
    }

    void listen() {
        ::unlinkat(folder.get(), (name + ".socket").c_str(), 0);
        UniqueFd made = makeSocket();
        const sockaddr_un where = address();
        if (made && ::bind(made.get(), reinterpret_cast<const sockaddr*>(&where), sizeof where) == 0 &&
            ::listen(made.get(), waitingRequests) == 0)
            socket = std::move(made);
    }

    // A connection is the whole request.
    void acceptRequests() const {
        bool asked = false;
        while (UniqueFd connection{::accept4(socket.get(), nullptr, nullptr, SOCK_CLOEXEC)})
            asked = true;
        if (asked && raise)
            raise();
    }
};

SingleInstance::SingleInstance(const std::string& storeFolder, Role role)
    : state_(std::make_unique<State>()) {
    Sha256 hash;
    hash.update(canonicalText(storeFolder));
    state_->name = "morvane-" + hash.finish().substr(0, hashLetters);
    state_->claim(role);
}

SingleInstance::~SingleInstance() {
    if (state_->socket)
        ::unlinkat(state_->folder.get(), (state_->name + ".socket").c_str(), 0);
}

bool SingleInstance::isFirst() const {
    return state_->isFirst;
}

bool SingleInstance::raiseFirst() {
    const auto deadline = std::chrono::steady_clock::now() + reachFor;
    const sockaddr_un where = state_->address();
    // The first may hold its lock and not listen yet, or have its hands full.
    do {
        const UniqueFd connection = makeSocket();
        if (connection &&
            ::connect(connection.get(), reinterpret_cast<const sockaddr*>(&where), sizeof where) == 0)
            return true;
        ::poll(nullptr, 0, retryMilliseconds);
    } while (std::chrono::steady_clock::now() < deadline);
    return false;
}

void SingleInstance::onRaise(std::function<void()> raise) {
    state_->raise = std::move(raise);
    if (!state_->socket || state_->notifier)
        return;
    state_->notifier = std::make_unique<QSocketNotifier>(state_->socket.get(), QSocketNotifier::Read);
    QObject::connect(state_->notifier.get(), &QSocketNotifier::activated, state_->notifier.get(),
                     [state = state_.get()] { state->acceptRequests(); });
}

}  // namespace morvane
