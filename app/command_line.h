// The rule for the one option of the program, applied before anything else happens.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

inline constexpr std::string_view smokeTestFlag = "--ui-smoke-test";
/// Written to standard error, followed by a line feed, when the request is faulty.
inline constexpr std::string_view smokeTestUsageText =
    "--ui-smoke-test 需要一个绝对输出目录；未启动应用，未访问个人索引。";
inline constexpr int usageExitStatus = 64;

struct CommandLine {
    /// The flag has no entry after it, or one that does not begin with "/": the process ends with
    /// usageExitStatus before any window, folder or catalog exists.
    bool isFaulty = false;
    /// The output folder of a smoke test, byte for byte as given; absent in a normal start.
    std::optional<std::string> smokeTestFolder;
};

/// Looks at all entries, the program path included: the first smokeTestFlag alone decides, by the
/// entry right after it.
CommandLine readCommandLine(const std::vector<std::string>& arguments);

}  // namespace morvane
