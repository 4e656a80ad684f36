#include "app/command_line.h"

#include <algorithm>

namespace morvane {

CommandLine readCommandLine(const std::vector<std::string>& arguments) {
    const auto flag = std::find(arguments.begin(), arguments.end(), smokeTestFlag);
    if (flag == arguments.end())
        return {};
    const auto folder = std::next(flag);
    if (folder == arguments.end() || !folder->starts_with('/'))
        return {.isFaulty = true, .smokeTestFolder = std::nullopt};
    return {.isFaulty = false, .smokeTestFolder = *folder};
}

}  // namespace morvane
