// The organizer's engine object: one job at a time on a queue of its own, progress and completion on
// the main thread.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include <QObject>

#include "project/job_context.h"
#include "project/project_records.h"
#include "support/deliver.h"
#include "support/serial_queue.h"

namespace morvane {

/// Lives on the main thread. Guarantees to the caller of makePlan, execute and retry:
/// - the call returns at once; `completion` runs exactly once, later, on the main thread, after
///   isBusy() has become false (unless the worker is destroyed first: then it never runs);
/// - progress arrives on the main thread, in order, before the completion, at most one report per
///   0.12 s, the last one of a run always; copies handed over are the receiver's own;
/// - while a job runs, another call only completes with ProjectCoreError project_text::busy.
/// Destroying the worker stops a running job and waits until it has noticed.
class ProjectWorker : public QObject {
    Q_OBJECT

public:
    using ProgressHandler = std::function<void(const ProjectProgress&)>;
    /// The plan or result; Outcome::get() rethrows the job's error (describe it by what()).
    using PlanCompletion = std::function<void(Outcome<ProjectPlan>&)>;
    using ResultCompletion = std::function<void(Outcome<ProjectResult>&)>;

    static constexpr std::chrono::milliseconds throttleInterval{120};

    explicit ProjectWorker(QObject* parent = nullptr);
    ~ProjectWorker() override;

    /// Runs planSynchronously. A null `progress` wants no reports. The machine is kept awake while any
    /// job runs. Main thread.
    void makePlan(const ProjectRequest& request, ProgressHandler progress, PlanCompletion completion);
    /// Runs executeSynchronously. Main thread.
    /// `plan` is shared, never copied: it may be large.
    void execute(std::shared_ptr<const ProjectPlan> plan, ProgressHandler progress,
                 ResultCompletion completion);
    /// Runs retrySynchronously. Main thread.
    void retry(const FileUrl& manifestURL, ProgressHandler progress, ResultCompletion completion);

    /// Whether a job runs. Any thread.
    bool isBusy() const;
    /// Whether the user asked the running job to stop; false again when the next job begins. Any thread.
    bool isCancelled() const;
    /// Asks the running job to stop; it ends at its next checkpoint. Any thread.
    void setCancelled();

private:
    struct Flags;

    bool begin();
    JobContext makeContext(ProgressHandler progress);
    template <class Work, class Completion>
    void run(Work work, Completion completion);

    std::shared_ptr<Flags> flags_;
    SerialQueue queue_;  ///< last member: stops before what its work uses goes
};

}  // namespace morvane
