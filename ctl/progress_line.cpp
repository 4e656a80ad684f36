#include "ctl/progress_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "ctl/session.h"
#include "ctl/terminal_text.h"

namespace morvane {
namespace {

constexpr auto leastInterval = std::chrono::milliseconds(100);
constexpr std::size_t usualWidth = 80;

std::size_t terminalWidth() {
    struct winsize size = {};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return usualWidth;
    return size.ws_col;
}

}  // namespace

ProgressLine::ProgressLine() : isTerminal_(isatty(STDERR_FILENO) == 1) {}

ProgressLine::~ProgressLine() {
    if (hasText_)
        std::fputs("\r\x1b[K", stderr);
}

void ProgressLine::show(std::string_view text, Pace pace) {
    if (!isTerminal_)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (pace == Pace::Throttled && now - shownAt_ < leastInterval)
        return;
    shownAt_ = now;
    hasText_ = true;
    const std::string line = "\r" + cutToWidth(withoutControls(text), terminalWidth() - 1) + "\x1b[K";
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace morvane
