// What the steps of one job share: the question "has the user stopped it?" and the place to which
// progress goes. Nothing else; a default context is never cancelled and reports to nobody.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "project/project_records.h"

namespace morvane {

class JobContext {
public:
    /// WhenDue reports may be dropped by the receiver's throttle; Always ones never are.
    enum class Delivery { WhenDue, Always };
    /// Asked from the job's threads, often (before every file and after every block): must be quick.
    using CancelCheck = std::function<bool()>;
    /// Called on the job's thread, in order; must not block and must not throw.
    using ProgressSink = std::function<void(const ProjectProgress&, Delivery)>;

    JobContext() = default;
    JobContext(CancelCheck cancelCheck, ProgressSink progressSink)
        : cancelCheck_(std::move(cancelCheck)), progressSink_(std::move(progressSink)) {}

    /// The store folder of this run, when it is not the user's usual one.
    void setStoreFolder(std::string folder) { storeFolder_ = std::move(folder); }
    /// The store folder (absolute; it need not exist), empty when none is known.
    std::string storeFolder() const;

    bool isCancelled() const { return cancelCheck_ && cancelCheck_(); }
    /// Throws ProjectCoreError::cancelled() when the user has stopped the job.
    void throwIfCancelled() const;
    void report(const ProjectProgress& progress, Delivery delivery = Delivery::WhenDue) const {
        if (progressSink_)
            progressSink_(progress, delivery);
    }

private:
    CancelCheck cancelCheck_;
    ProgressSink progressSink_;
    std::string storeFolder_;
};

}  // namespace morvane
