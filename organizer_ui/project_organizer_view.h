// The organizer workspace: collects a request, asks the engine for a plan, shows the dry run, copies on
// confirmation, reports, and resumes unfinished work from a manifest.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QElapsedTimer>
#include <QWidget>

#include "organizer_ui/organizer_state.h"
#include "organizer_ui/rate_estimator.h"
#include "project/project_worker.h"
#include "support/serial_queue.h"

class QBoxLayout;
class QScrollArea;

namespace morvane {

class FooterBar;
struct PlanTree;
class PreviewPanel;
class RequestPanel;
class Rule;

/// Three panels (request, preview, footer) around one OrganizerState and one ProjectWorker. Every
/// operation runs on the main thread, returns at once and does nothing in the phases that do not
/// know it; engine work comes back through completions that hold the view weakly. Destroying the
/// view stops a running job and waits for its next checkpoint. Controls carry their described names
/// as object names ("primaryButton", "footerTitle", ...).
class ProjectOrganizerView : public QWidget {
    Q_OBJECT

public:
    explicit ProjectOrganizerView(QWidget* parent = nullptr);
    ~ProjectOrganizerView() override;

    /// Texts for the application's status line, at the described moments.
    std::function<void(const QString& text)> onStatus;
    /// A run ended with every file verified: the new project's folder. At most once a run.
    std::function<void(const FileUrl& projectFolder)> onProjectCreated;

    Phase phase() const { return state_.phase; }
    /// Whether closing and quitting must be refused: planning, copying or cancelling.
    bool isBusy() const { return morvane::isBusy(state_.phase); }
    const OrganizerState& state() const { return state_; }
    const std::vector<FileUrl>& sources() const;
    const std::optional<FileUrl>& targetURL() const { return targetURL_; }

    // Workflow.
    void primaryAction();
    void invalidatePlan();
    /// Copies `plan`, after the user confirmed its warnings where it has any.
    void startCopy(const std::shared_ptr<const ProjectPlan>& plan);
    void executeCopy(const std::shared_ptr<const ProjectPlan>& plan);
    void cancelWork();
    void chooseRecovery();
    void startRecovery(const FileUrl& manifest);
    void updateProgress(const ProjectProgress& progress);
    /// The outcome of a check; the error inside becomes presentFailure.
    void finishPlanning(Outcome<ProjectPlan>& outcome);
    /// The outcome of execute and retry.
    void finish(Outcome<ProjectResult>& outcome);
    void presentWarnings(const std::vector<std::string>& warnings);
    void presentFailure(const std::string& description);
    void refreshActions();

    // Request.
    /// Appends what is not in the list yet, compared by standardized path. Refused while busy.
    void appendSources(const std::vector<FileUrl>& urls);
    void addSources();
    void removeSources();
    void updateSources();
    void chooseTarget();
    void setTargetURL(const FileUrl& folder);
    void controlTextDidChange();
    void optionsChanged();
    void toggleAdvanced();

    // Preview.
    /// Makes the texts at once; the tree of a plan follows from its queue.
    void rebuildPreview();

    // Report and hand-off; each does nothing without a result.
    void reveal();
    void showReport();
    void handOffToFCP();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void connectPanels();
    void orderTabs();
    RequestFacts requestFacts() const;
    ProjectRequest makeRequest(const std::string& trimmedName) const;
    /// Sends the request on screen to the engine; asks for a name where it lacks one.
    void check();
    void beginJob();
    ProjectWorker::ProgressHandler progressHandler();
    ProjectWorker::ResultCompletion resultHandler();
    /// Finds out, off the main thread, what stands at these locations.
    void lookAt(const std::vector<FileUrl>& added);
    void showTree(std::shared_ptr<const PlanTree> tree);
    QWidget* focusInside() const;
    /// Gives the focus a new place when `before`, which had it, was disabled or hidden; never the
    /// button that starts a copy.
    void moveFocusFrom(QWidget* before);
    void say(const std::string& text);
    void arrangeColumns();
    void setNarrow(bool narrow);

    OrganizerState state_;
    std::optional<FileUrl> targetURL_;
    std::string lastSourceFolder_;     ///< where the sources panel opens again
    std::uint64_t previewTicket_ = 0;  ///< of the newest tree asked for
    std::uint64_t targetTicket_ = 0;   ///< of the newest capacity asked for
    RateEstimator rate_;
    QElapsedTimer clock_;  ///< since the job began

    RequestPanel* request_;
    PreviewPanel* preview_;
    FooterBar* footer_;
    QScrollArea* leftColumn_ = nullptr;
    Rule* columnRule_ = nullptr;     ///< between the columns
    Rule* rowRule_ = nullptr;        ///< between them when they are stacked
    std::optional<bool> narrow_;     ///< nothing before the first arrangement
    QBoxLayout* columns_ = nullptr;  ///< "projectNarrowWidth": top to bottom below 950

    SerialQueue factsQueue_;    ///< kinds of sources, capacity of the target
    SerialQueue browseQueue_;   ///< folders of the open panels
    SerialQueue previewQueue_;  ///< trees of plans
    ProjectWorker worker_;
};

}  // namespace morvane
