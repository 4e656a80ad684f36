#include "project/side_task.h"

#include <utility>

namespace morvane {

SideTask::~SideTask() {
    waitForEnd();
}

void SideTask::start(std::function<void()> task) {
    if (!queue_)
        queue_.emplace("morvane-beside");
    {
        const std::scoped_lock guard(lock_);
        isRunning_ = true;
    }
    queue_->post([this, task = std::move(task)] {
        std::exception_ptr error;
        try {
            task();
        } catch (...) {
            error = std::current_exception();
        }
        const std::scoped_lock guard(lock_);
        isRunning_ = false;
        error_ = std::move(error);
        ended_.notify_one();
    });
}

bool SideTask::isRunning() const {
    const std::scoped_lock guard(lock_);
    return isRunning_;
}

void SideTask::wait() {
    waitForEnd();
    if (error_)
        std::rethrow_exception(std::exchange(error_, nullptr));
}

void SideTask::waitForEnd() {
    std::unique_lock guard(lock_);
    ended_.wait(guard, [this] { return !isRunning_; });
}

}  // namespace morvane
