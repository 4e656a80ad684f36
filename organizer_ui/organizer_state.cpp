#include "organizer_ui/organizer_state.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "support/format_text.h"

namespace morvane {

namespace {

std::string number(std::int64_t count) {
    return std::to_string(count);
}

void setRunningBar(OrganizerState& state) {
    state.progressBar = {ProgressBarState::Mode::determinate, 0};
}

}  // namespace

bool isBusy(Phase phase) {
    return phase == Phase::planning || phase == Phase::copying || phase == Phase::cancelling;
}

OrganizerState::OrganizerState()
    : footerTitle("准备新项目"), footerDetail("检查完成后，再开始复制与校验。") {}

bool OrganizerState::invalidatePlan() {
    if (isBusy(phase))
        return false;
    *this = OrganizerState();
    return true;
}

bool OrganizerState::beginPlanning() {
    if (primaryIntention(*this) != PrimaryIntention::check)
        return false;
    phase = Phase::planning;
    footerTitle = "正在检查素材";
    footerDetail = "读取来源和分类，准备整理计划…";
    progressBar.mode = ProgressBarState::Mode::indeterminate;
    return true;
}

bool OrganizerState::finishPlanning(std::shared_ptr<const ProjectPlan> made) {
    if (phase != Phase::planning && phase != Phase::cancelling)
        return false;
    plan = std::move(made);
    phase = Phase::ready;
    footerTitle = "检查完成，可以开始整理";
    footerDetail = number(static_cast<std::int64_t>(plan->items.size())) + " 个文件 · " +
                   formatBytes(totalSize(*plan)) + " · 请先查看右侧分类和提醒。";
    progressBar.mode = ProgressBarState::Mode::hidden;
    warnings = plan->warnings;
    return true;
}

bool OrganizerState::beginCopying() {
    if (phase != Phase::ready || !plan)
        return false;
    phase = Phase::copying;
    footerTitle = "正在复制与校验";
    footerDetail = "原始素材保留，完成后生成整理报告。";
    setRunningBar(*this);
    return true;
}

bool OrganizerState::beginRecovery() {
    if (isBusy(phase))
        return false;
    phase = Phase::copying;
    footerTitle = "正在继续整理任务";
    footerDetail = "正在核对清单和已完成文件…";
    setRunningBar(*this);
    return true;
}

bool OrganizerState::finishRun(ProjectResult outcome) {
    if (phase != Phase::copying && phase != Phase::cancelling)
        return false;
    phase = Phase::finished;
    const std::string copied = number(outcome.copiedCount);
    if (outcome.cancelled) {
        footerTitle = "任务已停止";
        footerDetail = "已完成 " + copied + " 个文件，可从报告继续未完成的任务。";
        recoveryManifest = outcome.manifestURL;
    } else if (outcome.failedCount > 0) {
        footerTitle = "整理完成，部分文件需要重试";
        footerDetail =
            "已完成 " + copied + " 个文件 · " + number(outcome.failedCount) + " 个失败，查看报告后可重试。";
        recoveryManifest = outcome.manifestURL;
    } else {
        footerTitle = "拍摄项目已整理完成";
        footerDetail = "已复制并校验 " + copied + " 个文件。";
        recoveryManifest.reset();
        progressBar.value = 1;
    }
    progressBar.mode = ProgressBarState::Mode::determinate;
    warnings = outcome.warnings;
    result = std::move(outcome);
    return true;
}

bool OrganizerState::fail(const std::string& description) {
    if (!isBusy(phase))
        return false;
    phase = Phase::failed;
    footerTitle = "任务未完成";
    footerDetail = description;
    progressBar.mode = ProgressBarState::Mode::hidden;
    return true;
}

bool OrganizerState::cancelWork() {
    if (phase != Phase::planning && phase != Phase::copying)
        return false;
    phase = Phase::cancelling;
    footerTitle = "正在停止任务";
    footerDetail = "等待当前操作结束，已完成的内容会在报告中保留。";
    return true;
}

bool OrganizerState::updateProgress(const ProjectProgress& progress) {
    if (phase != Phase::planning && phase != Phase::copying)
        return false;
    footerDetail = progress.message;
    if (phase == Phase::planning) {
        footerTitle = progress.completedFiles < 1
                          ? "正在检查素材"
                          : "正在检查 · 已扫描 " + number(progress.completedFiles) + " 个文件";
        return true;
    }
    footerTitle = "正在复制与校验 · " + number(progress.completedFiles) + " / " + number(progress.totalFiles);
    progressBar.mode = ProgressBarState::Mode::determinate;
    if (progress.totalBytes >= 1) {
        const double share =
            static_cast<double>(progress.completedBytes) / static_cast<double>(progress.totalBytes);
        progressBar.value = std::clamp(share, 0.0, 1.0);
    }
    return true;
}

PrimaryIntention primaryIntention(const OrganizerState& state) {
    switch (state.phase) {
        case Phase::planning:
        case Phase::copying:
        case Phase::cancelling:
            return PrimaryIntention::nothing;
        case Phase::ready:
            return PrimaryIntention::copy;
        case Phase::finished:
            return state.recoveryManifest ? PrimaryIntention::resume : PrimaryIntention::prepareNext;
        case Phase::failed:
            return state.recoveryManifest ? PrimaryIntention::resume : PrimaryIntention::check;
        case Phase::editing:
            break;
    }
    return PrimaryIntention::check;
}

OrganizerControls buttonsFor(const OrganizerState& state, const RequestFacts& facts) {
    OrganizerControls controls;
    const bool busy = isBusy(state.phase);
    controls.inputsEnabled = !busy;
    controls.removeEnabled = !busy && facts.hasSelectedSources;
    controls.cancelVisible = busy;
    controls.cancelEnabled = busy && state.phase != Phase::cancelling;
    controls.revealVisible = controls.reportVisible = state.result.has_value();
    controls.fcpVisible = state.result && state.result->fcpxmlURL;
    controls.primarySymbol = "checklist";
    switch (primaryIntention(state)) {
        case PrimaryIntention::nothing:
            controls.primaryTitle = state.phase == Phase::planning     ? "检查中…"
                                    : state.phase == Phase::cancelling ? "正在停止…"
                                                                       : "整理中…";
            break;
        case PrimaryIntention::check:
            controls.primaryTitle = "检查并预演";
            controls.primaryEnabled = facts.hasTarget && facts.hasSources && facts.hasName;
            break;
        case PrimaryIntention::copy:
            controls.primaryTitle = "开始复制并校验";
            controls.primarySymbol = "folder.badge.plus";
            controls.primaryEnabled = state.plan && !state.plan->items.empty();
            break;
        case PrimaryIntention::resume:
            controls.primaryTitle = "重试未完成文件";
            controls.primarySymbol = "arrow.clockwise";
            controls.primaryEnabled = true;
            break;
        case PrimaryIntention::prepareNext:
            controls.primaryTitle = "准备下一个项目";
            controls.primarySymbol = "plus";
            controls.primaryEnabled = true;
            break;
    }
    return controls;
}

FooterLook footerLookFor(const OrganizerState& state) {
    switch (state.phase) {
        case Phase::planning:
        case Phase::copying:
            return {"", Tone::accent, Tone::accent};
        case Phase::ready:
            return {"checkmark.circle", Tone::accent, Tone::accent};
        case Phase::cancelling:
            return {"", Tone::muted, Tone::muted};
        case Phase::finished:
            if (state.recoveryManifest)
                return {"exclamationmark.triangle", Tone::warning, Tone::muted};
            return {"checkmark.circle", Tone::success, Tone::success};
        case Phase::failed:
            return {"exclamationmark.triangle", Tone::danger, Tone::accent};
        case Phase::editing:
            break;
    }
    return {"checklist", Tone::muted, Tone::accent};
}

std::int64_t totalSize(const ProjectPlan& plan) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    std::int64_t sum = 0;
    for (const ProjectPlanItem& item : plan.items)
        sum = item.size > most - sum ? most : sum + item.size;
    return sum;
}

std::string sourceSummaryText(std::size_t sources, std::optional<std::size_t> plannedFiles) {
    if (plannedFiles)
        return std::to_string(sources) + " 个来源 · " + std::to_string(*plannedFiles) + " 个文件";
    if (sources == 0)
        return "还没有添加来源";
    return std::to_string(sources) + " 个来源 · 检查后查看整理位置";
}

std::string warningsText(const std::vector<std::string>& warnings) {
    std::string text;
    for (std::size_t i = 0; i < std::min<std::size_t>(warnings.size(), 3); ++i)
        text += (i == 0 ? "• " : "\n• ") + warnings[i];
    return text;
}

}  // namespace morvane
