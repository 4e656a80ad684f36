#include "tests/ctl/ctl_fixture.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "tests/test_support.h"

namespace morvane::test {
namespace {

std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category());
    return ends;
}

[[noreturn]] void becomeCtl(const std::vector<std::string>& arguments, int output, int errors) {
    const int null = ::open("/dev/null", O_RDONLY);
    ::dup2(null, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(errors, STDERR_FILENO);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    std::string program = MORVANE_BIN_DIR "/morvanectl";
    std::vector<char*> argv{program.data()};
    std::vector<std::string> copies = arguments;
    for (std::string& argument : copies)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    ::execv(program.c_str(), argv.data());
    ::_exit(127);
}

}  // namespace

RunningCtl::RunningCtl(const std::vector<std::string>& arguments) {
    const auto output = makePipe();
    const auto errors = makePipe();
    process_ = ::fork();
    if (process_ == 0)
        becomeCtl(arguments, output[1], errors[1]);
    ::close(output[1]);
    ::close(errors[1]);
    output_ = output[0];
    errors_ = errors[0];
}

RunningCtl::~RunningCtl() {
    if (process_ <= 0)
        return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    ::close(output_);
    ::close(errors_);
}

void RunningCtl::signal(int number) const {
    ::kill(process_, number);
}

void RunningCtl::signalOnceRunning(int number) const {
    const std::string facts = "/proc/" + std::to_string(process_) + "/status";
    const bool caught = waitUntil([&facts, number] {
        const std::string text = readAll(facts);
        const std::size_t line = text.find("SigCgt:");
        return line != std::string::npos &&
               (std::stoull(text.substr(line + 7), nullptr, 16) >> (number - 1) & 1U) != 0;
    });
    if (!caught)
        throw std::runtime_error("morvanectl never watched for the signal");
    ::kill(process_, number);
}

CtlOutcome RunningCtl::finish() {
    CtlOutcome outcome;
    std::array<pollfd, 2> ends{{{output_, POLLIN, 0}, {errors_, POLLIN, 0}}};
    std::array<std::string*, 2> texts{&outcome.output, &outcome.errors};
    while (ends[0].fd >= 0 || ends[1].fd >= 0) {
        ::poll(ends.data(), ends.size(), -1);
        for (std::size_t index = 0; index < ends.size(); ++index) {
            if (ends[index].fd < 0 || ends[index].revents == 0)
                continue;
            std::array<char, 65536> bytes{};
            const ssize_t count = ::read(ends[index].fd, bytes.data(), bytes.size());
            if (count > 0) {
                texts[index]->append(bytes.data(), static_cast<std::size_t>(count));
            } else if (count == 0) {
                ::close(ends[index].fd);
                ends[index].fd = -1;
            }
        }
    }
    int state = 0;
    ::waitpid(process_, &state, 0);
    process_ = -1;
    outcome.status = WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
    return outcome;
}

CtlOutcome runCtl(const std::vector<std::string>& arguments) {
    return RunningCtl(arguments).finish();
}

}  // namespace morvane::test
