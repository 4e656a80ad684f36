// The state machine: every control in every phase, every transition, every text.
#include "organizer_ui/organizer_state.h"

#include <array>
#include <functional>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace morvane {
namespace {

constexpr std::array<Phase, 7> allPhases = {Phase::editing,    Phase::planning, Phase::ready, Phase::copying,
                                            Phase::cancelling, Phase::finished, Phase::failed};

ProjectPlanItem itemOf(std::int64_t size) {
    ProjectPlanItem item;
    item.relativeDestination = "02_原始素材/A.MOV";
    item.size = size;
    return item;
}

std::shared_ptr<const ProjectPlan> planOf(std::size_t items, std::vector<std::string> warnings = {}) {
    auto plan = std::make_shared<ProjectPlan>();
    for (std::size_t i = 0; i < items; ++i)
        plan->items.push_back(itemOf(1'500'000));
    plan->warnings = std::move(warnings);
    return plan;
}

ProjectResult resultOf(std::int64_t copied, std::int64_t failed, bool cancelled) {
    ProjectResult result;
    result.rootURL = folderLocation("/p/项目");
    result.manifestURL = fileLocation("/p/项目/MORVANE项目清单.json");
    result.copiedCount = copied;
    result.failedCount = failed;
    result.cancelled = cancelled;
    result.warnings = {"一", "二"};
    return result;
}

/// A state brought to `phase` the way a user brings it there.
OrganizerState stateIn(Phase phase) {
    OrganizerState state;
    if (phase == Phase::editing)
        return state;
    EXPECT_TRUE(state.beginPlanning());
    if (phase == Phase::planning)
        return state;
    if (phase == Phase::failed) {
        EXPECT_TRUE(state.fail("坏了"));
        return state;
    }
    EXPECT_TRUE(state.finishPlanning(planOf(2)));
    if (phase == Phase::ready)
        return state;
    EXPECT_TRUE(state.beginCopying());
    if (phase == Phase::copying)
        return state;
    if (phase == Phase::cancelling) {
        EXPECT_TRUE(state.cancelWork());
        return state;
    }
    EXPECT_TRUE(state.finishRun(resultOf(2, 0, false)));
    return state;
}

constexpr RequestFacts complete{true, true, true, true};

TEST(OrganizerStateStart, IsEditingWithNothing) {
    const OrganizerState state;
    EXPECT_EQ(state.phase, Phase::editing);
    EXPECT_EQ(state.footerTitle, "准备新项目");
    EXPECT_EQ(state.footerDetail, "检查完成后，再开始复制与校验。");
    EXPECT_EQ(state.progressBar.mode, ProgressBarState::Mode::hidden);
    EXPECT_FALSE(state.plan || state.result || state.recoveryManifest);
    EXPECT_TRUE(state.warnings.empty());
}

struct ControlRow {
    Phase phase;
    bool inputs, remove, cancelVisible, cancelEnabled;
    const char* title;
    const char* symbol;
    bool primary;
    bool reveal;
};

// The table of controls, row by row, with a complete request and rows selected.
constexpr std::array<ControlRow, 7> controlTable = {{
    {Phase::editing, true, true, false, false, "检查并预演", "checklist", true, false},
    {Phase::planning, false, false, true, true, "检查中…", "checklist", false, false},
    {Phase::ready, true, true, false, false, "开始复制并校验", "folder.badge.plus", true, false},
    {Phase::copying, false, false, true, true, "整理中…", "checklist", false, false},
    {Phase::cancelling, false, false, true, false, "正在停止…", "checklist", false, false},
    {Phase::finished, true, true, false, false, "准备下一个项目", "plus", true, true},
    {Phase::failed, true, true, false, false, "检查并预演", "checklist", true, false},
}};

TEST(OrganizerControlsTable, HoldsInEveryPhase) {
    for (const ControlRow& row : controlTable) {
        SCOPED_TRACE(static_cast<int>(row.phase));
        const OrganizerControls controls = buttonsFor(stateIn(row.phase), complete);
        EXPECT_EQ(controls.inputsEnabled, row.inputs);
        EXPECT_EQ(controls.removeEnabled, row.remove);
        EXPECT_EQ(controls.cancelVisible, row.cancelVisible);
        EXPECT_EQ(controls.cancelEnabled, row.cancelEnabled);
        EXPECT_EQ(controls.primaryTitle, row.title);
        EXPECT_EQ(controls.primarySymbol, row.symbol);
        EXPECT_EQ(controls.primaryEnabled, row.primary);
        EXPECT_EQ(controls.revealVisible, row.reveal);
        EXPECT_EQ(controls.reportVisible, row.reveal);
        EXPECT_FALSE(controls.fcpVisible);
        EXPECT_EQ(isBusy(row.phase), !row.inputs);
    }
}

TEST(OrganizerControlsTable, RemovingNeedsSelectedRows) {
    RequestFacts facts = complete;
    facts.hasSelectedSources = false;
    for (const Phase phase : allPhases)
        EXPECT_FALSE(buttonsFor(stateIn(phase), facts).removeEnabled);
}

TEST(OrganizerControlsTable, CheckingNeedsTargetSourcesAndName) {
    for (const Phase phase : {Phase::editing, Phase::failed}) {
        for (int missing = 0; missing < 3; ++missing) {
            const RequestFacts facts{missing != 0, missing != 1, missing != 2, false};
            EXPECT_FALSE(buttonsFor(stateIn(phase), facts).primaryEnabled) << missing;
        }
        EXPECT_TRUE(buttonsFor(stateIn(phase), complete).primaryEnabled);
    }
}

TEST(OrganizerControlsTable, CopyingNeedsAnItem) {
    OrganizerState state = stateIn(Phase::planning);
    ASSERT_TRUE(state.finishPlanning(planOf(0)));
    const OrganizerControls controls = buttonsFor(state, complete);
    EXPECT_EQ(controls.primaryTitle, "开始复制并校验");
    EXPECT_FALSE(controls.primaryEnabled);
}

TEST(OrganizerControlsTable, AManifestToResumeRulesThePrimaryButton) {
    for (const bool cancelled : {false, true}) {
        OrganizerState state = stateIn(Phase::copying);
        ASSERT_TRUE(state.finishRun(resultOf(1, 1, cancelled)));
        OrganizerControls controls = buttonsFor(state, {});
        EXPECT_EQ(controls.primaryTitle, "重试未完成文件");
        EXPECT_EQ(controls.primarySymbol, "arrow.clockwise");
        EXPECT_TRUE(controls.primaryEnabled);
        EXPECT_EQ(primaryIntention(state), PrimaryIntention::resume);
        // A retry that ends with an error keeps the manifest.
        ASSERT_TRUE(state.beginRecovery());
        ASSERT_TRUE(state.fail("清单坏了"));
        controls = buttonsFor(state, {});
        EXPECT_EQ(controls.primaryTitle, "重试未完成文件");
        EXPECT_TRUE(controls.primaryEnabled);
    }
}

TEST(OrganizerControlsTable, FcpButtonNeedsAHandOffFile) {
    OrganizerState state = stateIn(Phase::copying);
    ProjectResult result = resultOf(1, 0, false);
    result.fcpxmlURL = fileLocation("/p/项目/01_项目工程/x.fcpxml");
    ASSERT_TRUE(state.finishRun(result));
    EXPECT_TRUE(buttonsFor(state, complete).fcpVisible);
}

// Every transition against every phase: where it is not known nothing at all changes.
struct Transition {
    const char* name;
    std::function<bool(OrganizerState&)> run;
    std::array<Phase, 7> from;  ///< phases that know it, the rest filled with its first entry
    Phase to;
};

TEST(OrganizerTransitions, OnlyFromThePhasesThatKnowThem) {
    const Phase e = Phase::editing, p = Phase::planning, r = Phase::ready, c = Phase::copying,
                x = Phase::cancelling, f = Phase::finished, b = Phase::failed;
    const std::vector<Transition> table = {
        {"invalidatePlan", [](auto& s) { return s.invalidatePlan(); }, {e, r, f, b, e, e, e}, e},
        {"beginPlanning", [](auto& s) { return s.beginPlanning(); }, {e, b, e, e, e, e, e}, p},
        {"finishPlanning", [](auto& s) { return s.finishPlanning(planOf(1)); }, {p, x, p, p, p, p, p}, r},
        {"beginCopying", [](auto& s) { return s.beginCopying(); }, {r, r, r, r, r, r, r}, c},
        {"beginRecovery", [](auto& s) { return s.beginRecovery(); }, {e, r, f, b, e, e, e}, c},
        {"finishRun", [](auto& s) { return s.finishRun(resultOf(1, 0, false)); }, {c, x, c, c, c, c, c}, f},
        {"fail", [](auto& s) { return s.fail("坏了"); }, {p, c, x, p, p, p, p}, b},
        {"cancelWork", [](auto& s) { return s.cancelWork(); }, {p, c, p, p, p, p, p}, x},
    };
    for (const Transition& transition : table) {
        for (const Phase from : allPhases) {
            SCOPED_TRACE(std::string(transition.name) + " from " + std::to_string(static_cast<int>(from)));
            OrganizerState state = stateIn(from);
            const OrganizerState before = state;
            const bool known =
                std::find(transition.from.begin(), transition.from.end(), from) != transition.from.end();
            EXPECT_EQ(transition.run(state), known);
            EXPECT_EQ(state.phase, known ? transition.to : from);
            if (!known) {
                EXPECT_EQ(state.footerTitle, before.footerTitle);
                EXPECT_EQ(state.footerDetail, before.footerDetail);
                EXPECT_EQ(state.plan, before.plan);
                EXPECT_EQ(state.result, before.result);
                EXPECT_EQ(state.progressBar.mode, before.progressBar.mode);
            }
        }
    }
}

TEST(OrganizerTransitions, APrimaryPressMeansOneThingAPhase) {
    EXPECT_EQ(primaryIntention(stateIn(Phase::editing)), PrimaryIntention::check);
    EXPECT_EQ(primaryIntention(stateIn(Phase::planning)), PrimaryIntention::nothing);
    EXPECT_EQ(primaryIntention(stateIn(Phase::ready)), PrimaryIntention::copy);
    EXPECT_EQ(primaryIntention(stateIn(Phase::copying)), PrimaryIntention::nothing);
    EXPECT_EQ(primaryIntention(stateIn(Phase::cancelling)), PrimaryIntention::nothing);
    EXPECT_EQ(primaryIntention(stateIn(Phase::finished)), PrimaryIntention::prepareNext);
    EXPECT_EQ(primaryIntention(stateIn(Phase::failed)), PrimaryIntention::check);
}

TEST(OrganizerTransitions, InvalidatingForgetsPlanResultAndManifest) {
    OrganizerState state = stateIn(Phase::copying);
    ASSERT_TRUE(state.finishRun(resultOf(1, 1, false)));
    ASSERT_TRUE(state.plan && state.result && state.recoveryManifest);
    ASSERT_TRUE(state.invalidatePlan());
    EXPECT_FALSE(state.plan || state.result || state.recoveryManifest);
    EXPECT_TRUE(state.warnings.empty());
    EXPECT_EQ(state.footerTitle, "准备新项目");
    EXPECT_EQ(state.footerDetail, "检查完成后，再开始复制与校验。");
    EXPECT_EQ(state.progressBar.mode, ProgressBarState::Mode::hidden);
}

TEST(OrganizerTexts, OfACheck) {
    OrganizerState state = stateIn(Phase::planning);
    EXPECT_EQ(state.footerTitle, "正在检查素材");
    EXPECT_EQ(state.footerDetail, "读取来源和分类，准备整理计划…");
    EXPECT_EQ(state.progressBar.mode, ProgressBarState::Mode::indeterminate);
    ASSERT_TRUE(state.finishPlanning(planOf(3, {"提醒"})));
    EXPECT_EQ(state.footerTitle, "检查完成，可以开始整理");
    EXPECT_EQ(state.footerDetail, "3 个文件 · 4.5 MB · 请先查看右侧分类和提醒。");
    EXPECT_EQ(state.progressBar.mode, ProgressBarState::Mode::hidden);
    EXPECT_EQ(state.warnings, std::vector<std::string>{"提醒"});
}

TEST(OrganizerTexts, OfACopyARecoveryAndAStop) {
    OrganizerState state = stateIn(Phase::copying);
    EXPECT_EQ(state.footerTitle, "正在复制与校验");
    EXPECT_EQ(state.footerDetail, "原始素材保留，完成后生成整理报告。");
    EXPECT_EQ(state.progressBar.mode, ProgressBarState::Mode::determinate);
    EXPECT_EQ(state.progressBar.value, 0);
    OrganizerState recovery;
    ASSERT_TRUE(recovery.beginRecovery());
    EXPECT_EQ(recovery.footerTitle, "正在继续整理任务");
    EXPECT_EQ(recovery.footerDetail, "正在核对清单和已完成文件…");
    EXPECT_EQ(recovery.progressBar.mode, ProgressBarState::Mode::determinate);
    ASSERT_TRUE(state.cancelWork());
    EXPECT_EQ(state.footerTitle, "正在停止任务");
    EXPECT_EQ(state.footerDetail, "等待当前操作结束，已完成的内容会在报告中保留。");
}

TEST(OrganizerTexts, OfTheThreeEnds) {
    struct End {
        std::int64_t copied, failed;
        bool cancelled;
        const char* title;
        const char* detail;
        bool resumes;
        double bar;
    };
    const std::vector<End> ends = {
        {1167, 0, false, "拍摄项目已整理完成", "已复制并校验 1167 个文件。", false, 1.0},
        {1160, 7, false, "整理完成，部分文件需要重试", "已完成 1160 个文件 · 7 个失败，查看报告后可重试。",
         true, 0.25},
        {502, 0, true, "任务已停止", "已完成 502 个文件，可从报告继续未完成的任务。", true, 0.25},
        {502, 3, true, "任务已停止", "已完成 502 个文件，可从报告继续未完成的任务。", true, 0.25},
    };
    for (const End& end : ends) {
        OrganizerState state = stateIn(Phase::copying);
        ASSERT_TRUE(state.updateProgress({1, 4, 25, 100, "一"}));
        ASSERT_TRUE(state.finishRun(resultOf(end.copied, end.failed, end.cancelled)));
        EXPECT_EQ(state.footerTitle, end.title);
        EXPECT_EQ(state.footerDetail, end.detail);
        EXPECT_EQ(state.recoveryManifest.has_value(), end.resumes);
        if (end.resumes) {
            EXPECT_EQ(state.recoveryManifest, state.result->manifestURL);
        }
        EXPECT_EQ(state.progressBar.mode, ProgressBarState::Mode::determinate);
        EXPECT_DOUBLE_EQ(state.progressBar.value, end.bar);
        EXPECT_EQ(state.warnings, (std::vector<std::string>{"一", "二"}));
    }
}

TEST(OrganizerTexts, OfAFailure) {
    const OrganizerState state = stateIn(Phase::failed);
    EXPECT_EQ(state.footerTitle, "任务未完成");
    EXPECT_EQ(state.footerDetail, "坏了");
    EXPECT_EQ(state.progressBar.mode, ProgressBarState::Mode::hidden);
}

TEST(OrganizerProgress, OfACheckCountsScannedFiles) {
    OrganizerState state = stateIn(Phase::planning);
    ASSERT_TRUE(state.updateProgress({0, 0, 0, 0, "开始"}));
    EXPECT_EQ(state.footerTitle, "正在检查素材");
    EXPECT_EQ(state.footerDetail, "开始");
    ASSERT_TRUE(state.updateProgress({648, 0, 10, 0, "正在分析来源，已找到648 个文件…"}));
    EXPECT_EQ(state.footerTitle, "正在检查 · 已扫描 648 个文件");
    EXPECT_EQ(state.footerDetail, "正在分析来源，已找到648 个文件…");
    EXPECT_EQ(state.progressBar.mode, ProgressBarState::Mode::indeterminate);
}

TEST(OrganizerProgress, OfACopyFillsTheBarWithinItsBounds) {
    OrganizerState state = stateIn(Phase::copying);
    ASSERT_TRUE(state.updateProgress({502, 1167, 43, 100, "复制与校验：A.MP4"}));
    EXPECT_EQ(state.footerTitle, "正在复制与校验 · 502 / 1167");
    EXPECT_DOUBLE_EQ(state.progressBar.value, 0.43);
    ASSERT_TRUE(state.updateProgress({503, 1167, 50, 0, "x"}));
    EXPECT_DOUBLE_EQ(state.progressBar.value, 0.43) << "unchanged while the total is unknown";
    ASSERT_TRUE(state.updateProgress({504, 1167, 101, 100, "x"}));
    EXPECT_DOUBLE_EQ(state.progressBar.value, 1.0);
    ASSERT_TRUE(state.updateProgress({504, 1167, -5, 100, "x"}));
    EXPECT_DOUBLE_EQ(state.progressBar.value, 0.0);
}

TEST(OrganizerProgress, LateReportsAreDropped) {
    for (const Phase phase : allPhases) {
        OrganizerState state = stateIn(phase);
        const std::string title = state.footerTitle;
        const bool known = phase == Phase::planning || phase == Phase::copying;
        EXPECT_EQ(state.updateProgress({9, 9, 9, 9, "spät"}), known);
        EXPECT_EQ(state.footerTitle == title, !known);
    }
}

TEST(OrganizerLook, OfEveryPhase) {
    struct Look {
        Phase phase;
        const char* symbol;
        Tone glyph;
    };
    const std::vector<Look> looks = {{Phase::editing, "checklist", Tone::muted},
                                     {Phase::planning, "", Tone::accent},
                                     {Phase::ready, "checkmark.circle", Tone::accent},
                                     {Phase::copying, "", Tone::accent},
                                     {Phase::cancelling, "", Tone::muted},
                                     {Phase::finished, "checkmark.circle", Tone::success},
                                     {Phase::failed, "exclamationmark.triangle", Tone::danger}};
    for (const Look& expected : looks) {
        const FooterLook look = footerLookFor(stateIn(expected.phase));
        EXPECT_EQ(look.symbol, expected.symbol);
        EXPECT_EQ(look.glyph, expected.glyph);
    }
    OrganizerState partial = stateIn(Phase::copying);
    ASSERT_TRUE(partial.finishRun(resultOf(1, 1, false)));
    EXPECT_EQ(footerLookFor(partial).glyph, Tone::warning);
    EXPECT_EQ(footerLookFor(partial).progress, Tone::muted);
    EXPECT_EQ(footerLookFor(stateIn(Phase::finished)).progress, Tone::success);
    EXPECT_EQ(footerLookFor(stateIn(Phase::cancelling)).progress, Tone::muted);
}

TEST(OrganizerSums, TotalSizeSaturates) {
    ProjectPlan plan;
    plan.items = {itemOf(std::numeric_limits<std::int64_t>::max() - 1), itemOf(5), itemOf(7)};
    EXPECT_EQ(totalSize(plan), std::numeric_limits<std::int64_t>::max());
    plan.items = {itemOf(3), itemOf(4)};
    EXPECT_EQ(totalSize(plan), 7);
}

TEST(OrganizerSums, SourceSummary) {
    EXPECT_EQ(sourceSummaryText(0, std::nullopt), "还没有添加来源");
    EXPECT_EQ(sourceSummaryText(6, std::nullopt), "6 个来源 · 检查后查看整理位置");
    EXPECT_EQ(sourceSummaryText(6, 1167), "6 个来源 · 1167 个文件");
}

TEST(OrganizerSums, WarningsShowThreeAtMost) {
    EXPECT_EQ(warningsText({}), "");
    EXPECT_EQ(warningsText({"一"}), "• 一");
    EXPECT_EQ(warningsText({"一", "二", "三", "四"}), "• 一\n• 二\n• 三");
}

}  // namespace
}  // namespace morvane
