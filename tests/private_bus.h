// A message bus for one test.
#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

namespace morvane::test {

/// A message bus in a process of its own, ended with this object or with the test.
class PrivateBus {
public:
    PrivateBus() {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0)
            throw std::runtime_error("no pipe");
        process_ = ::fork();
        if (process_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::dup2(ends[1], STDOUT_FILENO);
            ::execlp("dbus-daemon", "dbus-daemon", "--session", "--nofork", "--print-address", nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        char byte = 0;
        while (::read(ends[0], &byte, 1) == 1 && byte != '\n')
            address_ += byte;
        ::close(ends[0]);
    }
    ~PrivateBus() {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// For DBUS_SESSION_BUS_ADDRESS or DBUS_SYSTEM_BUS_ADDRESS; empty when dbus-daemon is missing.
    const std::string& address() const { return address_; }

private:
    pid_t process_ = -1;
    std::string address_;
};

}  // namespace morvane::test
