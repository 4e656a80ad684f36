// One line on standard error that is rewritten while work runs; nothing when it is no terminal.
#pragma once

#include <chrono>
#include <string_view>

namespace morvane {

class ProgressLine {
public:
    enum class Pace { Throttled, Now };

    ProgressLine();
    /// Leaves a clean line behind.
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// True when standard error is a terminal; building a text is needless otherwise.
    bool isShown() const { return isTerminal_; }
    /// Replaces the line by `text`, cut at the terminal's width; throttled to ten times a second.
    /// Any one thread.
    void show(std::string_view text, Pace pace = Pace::Throttled);

private:
    bool isTerminal_;
    bool hasText_ = false;
    std::chrono::steady_clock::time_point shownAt_ = {};
};

}  // namespace morvane
