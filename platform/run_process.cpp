#include "platform/run_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "support/system_error.h"
#include "support/unique_fd.h"

namespace morvane {

namespace {

constexpr int cancelCheckMilliseconds = 100;

void check(int error) {
    if (error != 0) {
        errno = error;
        throwErrno();
    }
}

// What the child begins with: null device, null device, our pipe and nothing else open; no signal blocked or
// ignored.
class SpawnSetup {
public:
    explicit SpawnSetup(int standardError) {
        check(::posix_spawn_file_actions_init(&actions_));
        check(::posix_spawnattr_init(&attributes_));
        check(::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
        check(::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0));
        check(::posix_spawn_file_actions_adddup2(&actions_, standardError, STDERR_FILENO));
        check(::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1));
        sigset_t none;
        sigset_t usual;
        ::sigemptyset(&none);
        ::sigfillset(&usual);
        check(::posix_spawnattr_setsigmask(&attributes_, &none));
        check(::posix_spawnattr_setsigdefault(&attributes_, &usual));
        check(::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
    }
    ~SpawnSetup() {
        ::posix_spawn_file_actions_destroy(&actions_);
        ::posix_spawnattr_destroy(&attributes_);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;

    pid_t start(const std::string& program, const std::vector<std::string>& arguments) const {
        std::vector<std::string> texts{program};
        texts.insert(texts.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        pointers.reserve(texts.size() + 1);
        for (std::string& text : texts)
            pointers.push_back(text.data());
        pointers.push_back(nullptr);
        pid_t process = -1;
        check(::posix_spawnp(&process, program.c_str(), &actions_, &attributes_, pointers.data(), environ));
        return process;
    }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

// A started program: ended and waited for in any case.
class Child {
public:
    explicit Child(pid_t process)
        : process_(process), ended_(static_cast<int>(::syscall(SYS_pidfd_open, process, 0))) {
        if (!ended_) {
            const int error = errno;
            finish();
            check(error);
        }
    }
    ~Child() { finish(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // Readable once the program has ended.
    int endDescriptor() const { return ended_.get(); }
    void kill() const { ::kill(process_, SIGKILL); }
    int wait() {
        int status = 0;
        while (::waitpid(process_, &status, 0) < 0) {
            if (errno != EINTR)
                throwErrno();
        }
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

private:
    void finish() {
        if (process_ <= 0)
            return;
        kill();
        while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
        }
        process_ = -1;
    }

    pid_t process_;
    UniqueFd ended_;
};

// Takes what is there now; false at the end of the stream.
bool readAvailable(int pipe, std::string& text) {
    std::array<char, 1 << 14> buffer{};
    for (;;) {
        const ssize_t count = ::read(pipe, buffer.data(), buffer.size());
        if (count > 0)
            text.append(buffer.data(), static_cast<std::size_t>(count));
        else if (count == 0)
            return false;
        else if (errno == EAGAIN)
            return true;
        else if (errno != EINTR)
            throwErrno();
    }
}

}  // namespace

ProcessOutcome runProcess(const std::string& program, const std::vector<std::string>& arguments,
                          const std::function<bool()>& cancelled) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throwErrno();
    const UniqueFd reading(ends[0]);
    UniqueFd writing(ends[1]);
    if (::fcntl(reading.get(), F_SETFL, O_NONBLOCK) != 0)
        throwErrno();
    Child child(SpawnSetup(writing.get()).start(program, arguments));
    writing.reset();

    ProcessOutcome outcome;
    std::array<pollfd, 2> watched{{{child.endDescriptor(), POLLIN, 0}, {reading.get(), POLLIN, 0}}};
    // The end of the program ends the wait, not the end of the stream: a process it left behind may
    // hold the stream open for ever.
    while (watched[0].revents == 0) {
        if (::poll(watched.data(), watched.size(), cancelCheckMilliseconds) < 0 && errno != EINTR)
            throwErrno();
        if (watched[1].revents != 0 && !readAvailable(reading.get(), outcome.standardError))
            watched[1].fd = -1;  // poll passes it over from now on
        if (cancelled && cancelled())
            child.kill();
    }
    outcome.exitStatus = child.wait();
    readAvailable(reading.get(), outcome.standardError);
    return outcome;
}

}  // namespace morvane
