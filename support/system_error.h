// Failures of system calls as thrown values.
#pragma once

#include <string>
#include <system_error>

namespace morvane {

/// The system's text for `error` (an errno value), thread-safe.
std::string systemErrorText(int error);
/// std::system_error for the current errno, what() being the system's text alone.
[[noreturn]] void throwErrno();
/// The same for `error`, an errno value.
[[noreturn]] void throwError(int error);

}  // namespace morvane
