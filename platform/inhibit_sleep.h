// Keeping the machine awake while a job runs (login1 inhibitor lock).
#pragma once

#include <string>

#include "support/unique_fd.h"

namespace morvane {

/// Held while alive; silently nothing where no login1 service answers within a second. Any thread.
class SleepInhibitor {
public:
    explicit SleepInhibitor(const std::string& why);
    ~SleepInhibitor();
    SleepInhibitor(SleepInhibitor&&) noexcept = default;
    SleepInhibitor& operator=(SleepInhibitor&&) noexcept = default;

private:
    UniqueFd lock_;
};

}  // namespace morvane
