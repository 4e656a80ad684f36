#include "ctl/stop_signals.h"

#include <csignal>

#include <atomic>

#include "ctl/session.h"

namespace morvane {
namespace {

std::atomic<bool> stopMark = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

extern "C" void markStop(int) {
    stopMark.store(true);
}

}  // namespace

void watchStopSignals() {
    struct sigaction action = {};
    action.sa_handler = markStop;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool stopRequested() {
    return stopMark.load();
}

void throwIfStopped() {
    if (stopRequested())
        throw StoppedError();
}

}  // namespace morvane
