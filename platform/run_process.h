// Running a program without a shell.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace morvane {

struct ProcessOutcome {
    int exitStatus = -1;        ///< exit status, or 128 + signal number
    std::string standardError;  ///< read to its end
};

/// Runs `program` (found through PATH) with `arguments` and waits for its end. Its input and output
/// are the null device, standard error is read meanwhile, no other descriptor is inherited.
/// `cancelled` (may be empty), asked about ten times a second, ends the program (SIGKILL). Throws
/// std::system_error when it cannot be started. Any thread.
ProcessOutcome runProcess(const std::string& program, const std::vector<std::string>& arguments,
                          const std::function<bool()>& cancelled);

}  // namespace morvane
