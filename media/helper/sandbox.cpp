#include "media/helper/sandbox.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "support/unique_fd.h"

namespace morvane {

namespace {

constexpr rlim_t addressSpaceBytes = rlim_t{3} * 1024 * 1024 * 1024;
constexpr rlim_t openFiles = 128;
/// Nice value: a running copy comes before a picture.
constexpr int politeness = 5;

/// What decoding calls once everything is loaded. Names the running kernel's architecture lacks are
/// passed over.
constexpr std::array allowedCalls{
    // memory and threads
    "brk", "mmap", "munmap", "mremap", "mprotect", "madvise", "futex", "futex_waitv", "set_robust_list",
    "rseq", "sched_yield", "sched_getaffinity", "sched_getparam", "sched_getscheduler", "membarrier", "exit",
    "exit_group",
    // signals and time
    "rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "sigaltstack", "restart_syscall", "tgkill",
    "clock_gettime", "clock_getres", "clock_nanosleep", "nanosleep", "gettimeofday", "time", "times",
    "setitimer",
    // the given descriptor and the socket
    "read", "readv", "pread64", "preadv", "lseek", "close", "dup", "fstat", "fcntl", "fadvise64", "recvmsg",
    "sendto", "sendmsg", "write", "writev", "poll", "ppoll",
    // facts about this process and about files (not their content)
    "getpid", "gettid", "getppid", "getuid", "geteuid", "getgid", "getegid", "getrandom", "getrusage",
    "sysinfo", "uname", "newfstatat", "stat", "lstat", "statx", "statfs", "fstatfs", "access", "faccessat",
    "faccessat2", "readlink", "readlinkat", "getcwd", "getdents64"};

struct FilterDeleter {
    void operator()(void* filter) const { seccomp_release(filter); }
};

std::vector<std::string> fontFolders() {
    std::vector<std::string> folders{"/usr/share/fonts", "/usr/local/share/fonts", "/usr/share/fontconfig",
                                     "/etc/fonts",       "/var/cache/fontconfig",  "/usr/share/X11/fonts"};
    // Before the first thread.
    if (const char* home = std::getenv("HOME");  // NOLINT(concurrency-mt-unsafe)
        home != nullptr && home[0] == '/') {
        for (const char* below : {"/.fonts", "/.local/share/fonts", "/.cache/fontconfig"})
            folders.push_back(std::string(home) + below);
    }
    return folders;
}

/// Confines opening to reading below the font folders; false when this kernel cannot.
bool confineToFonts() {
    landlock_ruleset_attr everything{};
    everything.handled_access_fs =
        LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_READ_FILE |
        LANDLOCK_ACCESS_FS_READ_DIR | LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
        LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
        LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
        LANDLOCK_ACCESS_FS_MAKE_SYM;
    const UniqueFd rules(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &everything, sizeof everything, 0)));
    if (!rules)
        return false;
    for (const std::string& folder : fontFolders()) {
        const UniqueFd opened(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!opened)
            continue;
        landlock_path_beneath_attr below{};
        below.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
        below.parent_fd = opened.get();
        if (::syscall(SYS_landlock_add_rule, rules.get(), LANDLOCK_RULE_PATH_BENEATH, &below, 0) != 0)
            return false;
    }
    return ::syscall(SYS_landlock_restrict_self, rules.get(), 0) == 0;
}

void allow(scmp_filter_ctx filter, const char* name, const std::vector<scmp_arg_cmp>& conditions = {}) {
    const int number = seccomp_syscall_resolve_name(name);
    if (number != __NR_SCMP_ERROR)
        seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, number, static_cast<unsigned>(conditions.size()),
                               conditions.data());
}

void allowReadingFonts(scmp_filter_ctx filter) {
    constexpr scmp_datum_t changing = O_WRONLY | O_RDWR | O_CREAT | O_TRUNC | O_APPEND;
    allow(filter, "open", {scmp_arg_cmp{1, SCMP_CMP_MASKED_EQ, changing, 0}});
    allow(filter, "openat", {scmp_arg_cmp{2, SCMP_CMP_MASKED_EQ, changing, 0}});
}

void filterSystemCalls(bool mayReadFonts) {
    const std::unique_ptr<void, FilterDeleter> filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)));
    if (!filter)
        return;
    for (const char* name : allowedCalls)
        allow(filter.get(), name);
    // Threads of this process, never another process; and no name but a thread's.
    allow(filter.get(), "clone", {scmp_arg_cmp{0, SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD}});
    allow(filter.get(), "prctl", {scmp_arg_cmp{0, SCMP_CMP_EQ, PR_SET_NAME, 0}});
    // Limits may be asked for, not changed.
    allow(filter.get(), "prlimit64", {scmp_arg_cmp{2, SCMP_CMP_EQ, 0, 0}});
    // The C library turns to clone when the kernel does not know clone3, whose flags cannot be seen.
    seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0);
    if (mayReadFonts)
        allowReadingFonts(filter.get());
    seccomp_load(filter.get());
}

itimerval timerOf(std::uint32_t milliseconds) {
    itimerval timer{};
    timer.it_value.tv_sec = static_cast<time_t>(milliseconds / 1000);
    timer.it_value.tv_usec = static_cast<suseconds_t>(milliseconds % 1000) * 1000;
    return timer;
}

}  // namespace

void limitResources() {
    const auto limit = [](auto what, rlim_t most) {
        const rlimit both{most, most};
        ::setrlimit(what, &both);
    };
    limit(RLIMIT_AS, addressSpaceBytes);
    limit(RLIMIT_NOFILE, openFiles);
    limit(RLIMIT_FSIZE, 0);
    limit(RLIMIT_CORE, 0);
    ::setpriority(PRIO_PROCESS, 0, politeness);
}

void enterSandbox() {
    ::prctl(PR_SET_DUMPABLE, 0);
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    filterSystemCalls(confineToFonts());
}

void armTimeLimit(std::uint32_t milliseconds) {
    const itimerval timer = timerOf(milliseconds);
    ::setitimer(ITIMER_REAL, &timer, nullptr);
    ::setitimer(ITIMER_PROF, &timer, nullptr);
}

}  // namespace morvane
