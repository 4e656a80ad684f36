// The one shape for work off the main thread: values in, a whole result out, an owner held weakly.
#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include <QPointer>

#include "support/main_post.h"
#include "support/serial_queue.h"

namespace morvane {

/// What a job gave: a value, or the error it threw.
template <class Value>
struct Outcome {
    std::optional<Value> value;
    std::exception_ptr error;
    /// The value; rethrows the error when there is none.
    Value& get() {
        if (error)
            std::rethrow_exception(error);
        return *value;
    }
};

/// Runs `work()` on `queue` and hands its outcome to `deliver(owner, outcome)` on the main thread,
/// exactly once, unless `owner` (a QObject living on the main thread) is gone by then. `work`
/// must hold only values. Call on the main thread.
template <class Owner, class Work, class Deliver>
void runAndDeliver(SerialQueue& queue, Owner* owner, Work work, Deliver deliver) {
    using Value = std::invoke_result_t<Work>;
    queue.post(
        [guard = QPointer<Owner>(owner), work = std::move(work), deliver = std::move(deliver)]() mutable {
            auto outcome = std::make_shared<Outcome<Value>>();
            try {
                outcome->value.emplace(work());
            } catch (...) {
                outcome->error = std::current_exception();
            }
            postToMain([guard, outcome, deliver = std::move(deliver)]() mutable {
                if (guard)
                    deliver(*guard, *outcome);
            });
        });
}

}  // namespace morvane
