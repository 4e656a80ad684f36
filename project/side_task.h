// One piece of work at a time beside the caller's.
#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>

#include "support/serial_queue.h"

namespace morvane {

/// Runs a task on a thread of its own, which starts with the first task and stays for the next. One
/// thread uses it at a time.
class SideTask {
public:
    SideTask() = default;
    /// Waits for the task in progress.
    ~SideTask();
    SideTask(const SideTask&) = delete;
    SideTask& operator=(const SideTask&) = delete;

    /// Begins `task`; what it uses must last until wait() has returned. Only after wait(), or at first.
    void start(std::function<void()> task);
    /// Whether the task begun last is still going on.
    bool isRunning() const;
    /// Blocks until the task begun last has ended, and throws what it threw (once). Returns at once
    /// where none was begun.
    void wait();

private:
    void waitForEnd();

    mutable std::mutex lock_;
    std::condition_variable ended_;
    // Guarded by lock_.
    bool isRunning_ = false;
    std::exception_ptr error_;

    std::optional<SerialQueue> queue_;  ///< started by the first task
};

}  // namespace morvane
