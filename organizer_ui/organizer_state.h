// The organizer's state machine without any widget: phases, transitions, every text and the state of
// every control. ProjectOrganizerView draws what stands here.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "project/project_records.h"
#include "support/file_url.h"

namespace morvane {

enum class Phase { editing, planning, ready, copying, cancelling, finished, failed };

/// True in planning, copying and cancelling: inputs are refused, the application stays open.
bool isBusy(Phase phase);

/// Colour role of a glyph or of the progress bar; the text beside it says the same in words.
enum class Tone { muted, accent, success, warning, danger };

/// What the footer's progress bar shows. `value` (0...1) keeps its last number while hidden.
struct ProgressBarState {
    enum class Mode { hidden, indeterminate, determinate };
    Mode mode = Mode::hidden;
    double value = 0;
};

/// What the request form holds, as far as the controls depend on it.
struct RequestFacts {
    bool hasTarget = false;
    bool hasSources = false;
    bool hasName = false;  ///< the trimmed name is not empty
    bool hasSelectedSources = false;
};

/// What the primary button's action means right now.
enum class PrimaryIntention { nothing, check, copy, resume, prepareNext };

/// Every control that depends on the phase.
struct OrganizerControls {
    bool inputsEnabled = true;  ///< name, target, add source, check box, pop-ups, recovery
    bool removeEnabled = false;
    bool cancelVisible = false;
    bool cancelEnabled = false;
    std::string primaryTitle;  ///< also the accessible name
    std::string primarySymbol;
    bool primaryEnabled = false;
    bool revealVisible = false;
    bool reportVisible = false;
    bool fcpVisible = false;
};

/// Glyph at the footer's text and colour of the progress bar. An empty `symbol` is the spinner.
struct FooterLook {
    std::string symbol;
    Tone glyph = Tone::muted;
    Tone progress = Tone::accent;  ///< muted: stopped or partial
};

/// The workflow's fields and their transitions. A transition that returns a flag does nothing and
/// returns false in the phases that do not know it. Main thread only; plain value.
struct OrganizerState {
    Phase phase = Phase::editing;
    std::shared_ptr<const ProjectPlan> plan;  ///< of the last successful check
    std::optional<ProjectResult> result;      ///< of the last run
    std::optional<FileUrl> recoveryManifest;  ///< where the primary button resumes
    std::string footerTitle;
    std::string footerDetail;
    ProgressBarState progressBar;
    std::vector<std::string> warnings;  ///< what warningsLabel presents

    OrganizerState();

    /// An input changed, or the next project begins: back to editing with everything of the last
    /// plan and run forgotten. Refused while busy.
    bool invalidatePlan();
    /// A check begins. Only from editing, and from failed without a manifest to resume.
    bool beginPlanning();
    /// The check succeeded. Also taken while cancelling: a plan that was complete before the engine
    /// saw the request to stop costs nothing and nothing is copied without another press.
    bool finishPlanning(std::shared_ptr<const ProjectPlan> made);
    /// Copying of `plan` begins. Only from ready.
    bool beginCopying();
    /// Work on an earlier manifest begins. Refused while busy.
    bool beginRecovery();
    /// The run ended with a result. Only in copying and cancelling.
    bool finishRun(ProjectResult outcome);
    /// The job ended with an error. Only while busy.
    bool fail(const std::string& description);
    /// The user asked to stop. Only in planning and copying.
    bool cancelWork();
    /// A report of the engine. Only in planning and copying; the late ones are dropped.
    bool updateProgress(const ProjectProgress& progress);
};

PrimaryIntention primaryIntention(const OrganizerState& state);
OrganizerControls buttonsFor(const OrganizerState& state, const RequestFacts& facts);
FooterLook footerLookFor(const OrganizerState& state);

/// Sum of all item sizes, saturating at the largest signed 64-bit value.
std::int64_t totalSize(const ProjectPlan& plan);
/// The line beside the step "素材来源"; `plannedFiles` when a plan exists.
std::string sourceSummaryText(std::size_t sources, std::optional<std::size_t> plannedFiles);
/// The first three warnings, each as one line with a bullet; empty for none.
std::string warningsText(const std::vector<std::string>& warnings);

/// Texts for the application's status line, in the order of a project.
namespace organizer_status {
inline constexpr const char* checking = "正在检查项目素材，尚未开始复制";
inline constexpr const char* planned = "项目预演已准备，等待确认复制";
inline constexpr const char* copying = "正在复制并校验新拍摄项目";
inline constexpr const char* failurePrefix = "整理素材：";
}  // namespace organizer_status

}  // namespace morvane
