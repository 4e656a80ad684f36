#include "platform/helper_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <system_error>
#include <vector>

#include "support/system_error.h"

namespace morvane {

namespace {

constexpr int helperDescriptor = 3;
constexpr std::chrono::milliseconds questionInterval{50};
/// How long a killed program is waited for: it ends at once unless the kernel holds it.
constexpr std::chrono::milliseconds killPatience{100};

/// Killed programs that had not ended yet.
class Leftovers {
public:
    void add(int process) {
        const std::lock_guard lock(mutex_);
        processes_.push_back(process);
    }
    void collect() {
        const std::lock_guard lock(mutex_);
        std::erase_if(processes_, [](int process) { return ::waitpid(process, nullptr, WNOHANG) != 0; });
    }

private:
    std::mutex mutex_;
    std::vector<int> processes_;
};

Leftovers& leftovers() {
    static Leftovers instance;
    return instance;
}

/// The child's descriptors: null device on 0 to 2, its end of the socket on 3, nothing above.
class SpawnActions {
public:
    explicit SpawnActions(int socket) {
        ::posix_spawn_file_actions_init(&actions_);
        // First, since the socket may lie on 0 to 2; also right when it already is 3: then only its
        // close-on-exec mark is taken off.
        ::posix_spawn_file_actions_adddup2(&actions_, socket, helperDescriptor);
        ::posix_spawn_file_actions_addopen(&actions_, 0, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions_, 1, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions_, 2, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, helperDescriptor + 1);
    }
    ~SpawnActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;
    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

/// The child begins with no signal blocked or ignored, whatever this thread has.
class SpawnAttributes {
public:
    SpawnAttributes() {
        ::posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&attributes_, &signals);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

bool isRetry(int error) {
    return error == EINTR || error == EAGAIN || error == EWOULDBLOCK;
}

}  // namespace

HelperProcess::HelperProcess(const std::string& program) {
    leftovers().collect();
    std::array<int, 2> pair{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()) != 0)
        throwErrno();
    socket_.reset(pair[0]);
    const UniqueFd theirs(pair[1]);
    const SpawnActions actions(theirs.get());
    const SpawnAttributes attributes;
    std::string name = program;
    std::array<char*, 2> arguments{name.data(), nullptr};
    const int error =
        ::posix_spawn(&process_, program.c_str(), actions.get(), attributes.get(), arguments.data(), environ);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), program);
}

HelperProcess::~HelperProcess() {
    if (process_ < 0)
        return;
    ::kill(process_, SIGKILL);
    socket_.reset();
    const auto until = std::chrono::steady_clock::now() + killPatience;
    for (;;) {
        if (::waitpid(process_, nullptr, WNOHANG) != 0)
            return;
        if (std::chrono::steady_clock::now() >= until)
            break;
        ::poll(nullptr, 0, 1);
    }
    leftovers().add(process_);
}

bool HelperProcess::isSilent() const {
    pollfd waiting{socket_.get(), POLLIN, 0};
    return ::poll(&waiting, 1, 0) == 0;
}

HelperProcess::Exchange HelperProcess::waitFor(short events, const Patience& patience) const {
    for (;;) {
        if (patience.cancelled && patience.cancelled())
            return Exchange::Cancelled;
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(patience.until - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return Exchange::Deadline;
        pollfd waiting{socket_.get(), events, 0};
        const int ready = ::poll(&waiting, 1, static_cast<int>(std::min(left, questionInterval).count()));
        if (ready > 0)
            return Exchange::Complete;
        if (ready < 0 && errno != EINTR)
            return Exchange::Lost;
    }
}

HelperProcess::Exchange HelperProcess::send(const void* bytes, std::size_t count, int descriptor,
                                            const Patience& patience) {
    iovec piece{const_cast<void*>(bytes), count};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr message{};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    while (piece.iov_len > 0) {
        if (const Exchange wait = waitFor(POLLOUT, patience); wait != Exchange::Complete)
            return wait;
        const ssize_t sent = ::sendmsg(socket_.get(), &message, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && isRetry(errno))
            continue;
        if (sent <= 0)
            return Exchange::Lost;
        // The descriptor went with the first bytes.
        message.msg_control = nullptr;
        message.msg_controllen = 0;
        piece.iov_base = static_cast<char*>(piece.iov_base) + sent;
        piece.iov_len -= static_cast<std::size_t>(sent);
    }
    return Exchange::Complete;
}

HelperProcess::Exchange HelperProcess::receive(void* bytes, std::size_t count, const Patience& patience) {
    auto* next = static_cast<char*>(bytes);
    while (count > 0) {
        if (const Exchange wait = waitFor(POLLIN, patience); wait != Exchange::Complete)
            return wait;
        const ssize_t got = ::recv(socket_.get(), next, count, MSG_DONTWAIT);
        if (got < 0 && isRetry(errno))
            continue;
        if (got <= 0)
            return Exchange::Lost;
        next += got;
        count -= static_cast<std::size_t>(got);
    }
    return Exchange::Complete;
}

}  // namespace morvane
