// A serial queue of work: one thread, named with the queue's label, that runs what is posted in
// order, one piece at a time.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace morvane {

class SerialQueue {
public:
    enum class Priority { UserInitiated, Utility };

    /// Starts the thread. `label` names it (the kernel keeps the first 15 bytes); Utility lowers
    /// the thread's CPU and I/O weight.
    explicit SerialQueue(std::string label, Priority priority = Priority::UserInitiated);
    /// Drops work that has not begun, waits for the piece in progress, ends the thread.
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    /// Appends `work`. Any thread. Work must not throw: wrap what can fail (see deliver.h).
    void post(std::function<void()> work);
    /// Blocks until everything posted before this call has run. Never call it on the queue itself.
    void drain();
    const std::string& label() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace morvane
