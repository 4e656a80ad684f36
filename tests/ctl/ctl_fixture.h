// Running the built command line as a process of its own.
#pragma once

#include <string>
#include <vector>

namespace morvane::test {

struct CtlOutcome {
    int status = -1;     ///< exit status, or 128 + signal
    std::string output;  ///< standard output, whole
    std::string errors;  ///< standard error, whole
};

/// Runs morvanectl with `arguments` and waits for its end; standard input is empty, the locale is
/// C.UTF-8, the runtime folder is private to the test process.
CtlOutcome runCtl(const std::vector<std::string>& arguments);

/// A running morvanectl: for stopping it.
class RunningCtl {
public:
    explicit RunningCtl(const std::vector<std::string>& arguments);
    ~RunningCtl();
    RunningCtl(const RunningCtl&) = delete;
    RunningCtl& operator=(const RunningCtl&) = delete;

    void signal(int number) const;
    /// The same once the process catches that signal.
    void signalOnceRunning(int number) const;
    /// Waits for the end.
    CtlOutcome finish();

private:
    int process_ = -1;
    int output_ = -1;
    int errors_ = -1;
};

}  // namespace morvane::test
