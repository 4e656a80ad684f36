#include "project/project_worker.h"

#include <mutex>
#include <optional>
#include <utility>

#include <QPointer>

#include "platform/inhibit_sleep.h"
#include "project/execution.h"
#include "project/planning.h"
#include "project/project_errors.h"
#include "support/main_post.h"

namespace morvane {

struct ProjectWorker::Flags {
    using Clock = std::chrono::steady_clock;

    mutable std::mutex lock;
    // Guarded by lock.
    bool isBusy = false;
    bool isCancelled = false;

    // The job's thread only; begin() sets it while there is no job.
    std::optional<Clock::time_point> lastProgress;  ///< nothing: the distant past

    void end() {
        const std::scoped_lock guard(lock);
        isBusy = false;
    }
    bool cancelAsked() const {
        const std::scoped_lock guard(lock);
        return isCancelled;
    }
    /// Whether a report is forwarded now; remembers the time when it is.
    bool mayReport(JobContext::Delivery delivery) {
        const auto now = Clock::now();
        if (delivery == JobContext::Delivery::WhenDue && lastProgress &&
            now - *lastProgress <= throttleInterval)
            return false;
        lastProgress = now;
        return true;
    }
};

namespace {

constexpr const char* wakeReason = "正在整理拍摄项目";

}  // namespace

ProjectWorker::ProjectWorker(QObject* parent)
    : QObject(parent), flags_(std::make_shared<Flags>()), queue_("local.morvane.project-organizer") {}

ProjectWorker::~ProjectWorker() {
    setCancelled();
}

bool ProjectWorker::isBusy() const {
    const std::scoped_lock guard(flags_->lock);
    return flags_->isBusy;
}

bool ProjectWorker::isCancelled() const {
    return flags_->cancelAsked();
}

void ProjectWorker::setCancelled() {
    const std::scoped_lock guard(flags_->lock);
    flags_->isCancelled = true;
}

bool ProjectWorker::begin() {
    const std::scoped_lock guard(flags_->lock);
    if (flags_->isBusy)
        return false;
    flags_->isBusy = true;
    flags_->isCancelled = false;
    flags_->lastProgress.reset();
    return true;
}

/// The context of one job: the cancel flag, and progress throttled and posted to the main thread.
JobContext ProjectWorker::makeContext(ProgressHandler progress) {
    auto cancelCheck = [flags = flags_] { return flags->cancelAsked(); };
    if (!progress)
        return {std::move(cancelCheck), {}};
    auto send = [flags = flags_, guard = QPointer<ProjectWorker>(this), progress = std::move(progress)](
                    const ProjectProgress& report, JobContext::Delivery delivery) {
        if (!flags->mayReport(delivery))
            return;
        postToMain([guard, progress, report] {
            if (guard)
                progress(report);
        });
    };
    return {std::move(cancelCheck), std::move(send)};
}

/// The wrapper of all three operations: refuses while busy, else runs `work` on the queue; `isBusy`
/// is false again before the completion is posted.
template <class Work, class Completion>
void ProjectWorker::run(Work work, Completion completion) {
    using Value = std::invoke_result_t<Work>;
    auto deliver = [completion = std::move(completion)](ProjectWorker& /*worker*/, Outcome<Value>& outcome) {
        completion(outcome);
    };
    if (!begin()) {
        postToMain([guard = QPointer<ProjectWorker>(this), deliver = std::move(deliver)] {
            Outcome<Value> refused{
                {}, std::make_exception_ptr(ProjectCoreError::message(std::string(project_text::busy)))};
            if (guard)
                deliver(*guard, refused);
        });
        return;
    }
    runAndDeliver(
        queue_, this,
        [flags = flags_, work = std::move(work)]() mutable {
            const std::unique_ptr<Flags, void (*)(Flags*)> ending(flags.get(),
                                                                  [](Flags* held) { held->end(); });
            return work();
        },
        std::move(deliver));
}

void ProjectWorker::makePlan(const ProjectRequest& request, ProgressHandler progress,
                             PlanCompletion completion) {
    run([context = makeContext(std::move(progress)),
         request]() mutable { return planSynchronously(context, request); },
        std::move(completion));
}

void ProjectWorker::execute(std::shared_ptr<const ProjectPlan> plan, ProgressHandler progress,
                            ResultCompletion completion) {
    run(
        [context = makeContext(std::move(progress)), plan = std::move(plan)]() mutable {
            const SleepInhibitor awake(wakeReason);
            return executeSynchronously(context, *plan);
        },
        std::move(completion));
}

void ProjectWorker::retry(const FileUrl& manifestURL, ProgressHandler progress, ResultCompletion completion) {
    run(
        [context = makeContext(std::move(progress)), manifestURL]() mutable {
            const SleepInhibitor awake(wakeReason);
            return retrySynchronously(context, manifestURL);
        },
        std::move(completion));
}

}  // namespace morvane
