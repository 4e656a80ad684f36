#include "support/serial_queue.h"

#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace morvane {

namespace {

constexpr int utilityNiceness = 10;
// The lowest level of the best-effort class, as ioprio_set(2) encodes it: class << 13 | level.
constexpr int utilityIoPriority = (2 << 13) | 7;
constexpr int ioPriorityOfProcess = 1;
constexpr std::size_t kernelNameLength = 15;

// Both calls act on the calling thread alone (0 names it) and may be refused without harm.
void lowerThreadWeight() {
    const auto thread = static_cast<id_t>(::syscall(SYS_gettid));
    ::setpriority(PRIO_PROCESS, thread, utilityNiceness);
    ::syscall(SYS_ioprio_set, ioPriorityOfProcess, 0, utilityIoPriority);
}

}  // namespace

struct SerialQueue::State {
    std::string label;

    // Guarded by `mutex`.
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::function<void()>> waiting;
    bool stopping = false;

    std::thread thread;

    void run(Priority priority) {
        ::pthread_setname_np(::pthread_self(), label.substr(0, kernelNameLength).c_str());
        if (priority == Priority::Utility)
            lowerThreadWeight();
        for (;;) {
            std::function<void()> work;
            {
                std::unique_lock lock(mutex);
                wake.wait(lock, [this] { return stopping || !waiting.empty(); });
                if (stopping)
                    return;
                work = std::move(waiting.front());
                waiting.pop_front();
            }
            work();
        }
    }
};

SerialQueue::SerialQueue(std::string label, Priority priority) : state_(std::make_unique<State>()) {
    state_->label = std::move(label);
    state_->thread = std::thread([state = state_.get(), priority] { state->run(priority); });
}

SerialQueue::~SerialQueue() {
    {
        std::deque<std::function<void()>> dropped;  // dies outside the lock: its destructors may post
        const std::lock_guard lock(state_->mutex);
        state_->stopping = true;
        dropped.swap(state_->waiting);
    }
    state_->wake.notify_one();
    state_->thread.join();
}

void SerialQueue::post(std::function<void()> work) {
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->stopping)
            return;
        state_->waiting.push_back(std::move(work));
    }
    state_->wake.notify_one();
}

void SerialQueue::drain() {
    struct Marker {
        std::mutex mutex;
        std::condition_variable passed;
        bool reached = false;
    };
    const auto marker = std::make_shared<Marker>();
    post([marker] {
        const std::lock_guard lock(marker->mutex);
        marker->reached = true;
        marker->passed.notify_all();
    });
    std::unique_lock lock(marker->mutex);
    marker->passed.wait(lock, [&marker] { return marker->reached; });
}

const std::string& SerialQueue::label() const {
    return state_->label;
}

}  // namespace morvane
