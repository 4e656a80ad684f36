// What the engine's tests share: sources and a place for projects on a real disk, requests, errors as
// texts, contexts that record what the engine reports.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "project/job_context.h"
#include "project/project_records.h"
#include "tests/test_support.h"

namespace morvane::test {

/// A temporary folder holding "src" (sources) and "into" (where projects are made).
class Workplace {
public:
    Workplace();

    std::string source(const std::string& relative) const { return folder_ / ("src/" + relative); }
    std::string into() const { return folder_ / "into"; }
    std::string path(const std::string& relative) const { return folder_ / relative; }

    /// A request without hand-off file over sources below "src"; a final "/" marks a folder.
    ProjectRequest request(const std::string& name, const std::vector<std::string>& sources) const;
    /// Plans that request.
    ProjectPlan plan(const std::string& name, const std::vector<std::string>& sources) const;
    /// A plan item for one existing source file, as planning would make it.
    ProjectPlanItem item(const std::string& relativeSource, const std::string& relativeDestination) const;

private:
    TemporaryFolder folder_;
};

/// The text of what `work` throws; empty when it throws nothing.
std::string errorOf(const std::function<void()>& work);
/// True when `work` throws the cancelled case.
bool isCancelledBy(const std::function<void()>& work);

/// `text` followed by `tail`: how the engine's sentences are put together.
std::string sentence(std::string_view text, std::string_view tail = {});

/// Records every report and stops the job when `stopWhen` first says so.
class Recorder {
public:
    using StopWhen = std::function<bool(const ProjectProgress&)>;

    explicit Recorder(StopWhen stopWhen = {});
    JobContext& context() { return context_; }
    const std::vector<ProjectProgress>& reports() const { return reports_; }
    std::vector<std::string> messages() const;
    void stop() { isStopped_ = true; }

private:
    std::vector<ProjectProgress> reports_;
    std::atomic<bool> isStopped_ = false;  ///< asked by several threads
    JobContext context_;
};

/// Lower-case hexadecimal SHA-256 of `bytes`.
std::string digestOf(const std::string& bytes);
/// `count` bytes that differ from place to place and by `seed`.
std::string someBytes(std::size_t count, unsigned seed = 1);
/// The paths of the plan's copies, in plan order.
std::vector<std::string> destinations(const ProjectPlan& plan);
/// Modification date, seconds since 1970.
double modifiedOf(const std::string& path);
/// The manifest of the project at `root`, decoded without any check.
ProjectManifest manifestAt(const std::string& root);

}  // namespace morvane::test
