// The workspace's controls in every phase, its texts, focus, layout and pictures. Outcomes are handed
// to the view as the engine would hand them; the engine's own come in test_organizer_flow.
#include "organizer_ui/project_organizer_view.h"

#include <QAccessible>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QTest>
#include <QUrl>
#include <array>

#include <gmock/gmock.h>

#include "app/theme/edge_progress.h"
#include "app/theme/segmented_control.h"
#include "organizer_ui/panel_parts.h"
#include "tests/organizer_ui/view_fixture.h"

namespace morvane {
namespace {

using test::examplePlan;
using test::waitUntil;
using testing::ElementsAre;
using testing::IsEmpty;

using View = test::FilledOrganizer;

struct Row {
    Phase phase;
    bool inputs, remove, cancelShown, cancelEnabled;
    const char* title;
    const char* symbol;
    bool primary, result;
    const char* footer;
    bool bar;
    const char* name;
};

class EveryPhase : public View, public testing::WithParamInterface<Row> {};

TEST_P(EveryPhase, ShowsEveryControlAsTheTableSays) {
    const Row& row = GetParam();
    bringTo(row.phase);
    for (const char* input :
         {"nameField", "targetButton", "addButton", "createFCP", "frameRate", "resolution", "recoveryButton"})
        EXPECT_EQ(enabled(input), row.inputs) << input;
    EXPECT_FALSE(enabled("removeButton")) << "no rows selected";
    selectRows({0});
    EXPECT_EQ(enabled("removeButton"), row.remove);
    EXPECT_EQ(shown("cancelButton"), row.cancelShown);
    EXPECT_EQ(enabled("cancelButton"), row.cancelEnabled);
    EXPECT_EQ(button("primaryButton")->text().toStdString(), row.title);
    EXPECT_EQ(button("primaryButton")->accessibleName().toStdString(), row.title);
    EXPECT_EQ(button("primaryButton")->symbol().toStdString(), row.symbol);
    EXPECT_EQ(enabled("primaryButton"), row.primary);
    EXPECT_EQ(shown("revealButton"), row.result);
    EXPECT_EQ(shown("reportButton"), row.result);
    EXPECT_FALSE(shown("fcpButton"));
    EXPECT_EQ(title(), row.footer);
    EXPECT_EQ(!part<EdgeProgress>("progressBar")->isNone(), row.bar);
    EXPECT_EQ(view_->isBusy(), !row.inputs);
    screenshot(row.name);
}

INSTANTIATE_TEST_SUITE_P(Table, EveryPhase,
                         testing::Values(Row{Phase::editing, true, true, false, false, "检查并预演",
                                             "checklist", true, false, "准备新项目", false, "editing"},
                                         Row{Phase::planning, false, false, true, true, "检查中…",
                                             "checklist", false, false, "正在检查素材", true, "planning"},
                                         Row{Phase::ready, true, true, false, false, "开始复制并校验",
                                             "folder.badge.plus", true, false, "检查完成，可以开始整理",
                                             false, "ready"},
                                         Row{Phase::copying, false, false, true, true, "整理中…", "checklist",
                                             false, false, "正在继续整理任务", true, "copying"},
                                         Row{Phase::cancelling, false, false, true, false, "正在停止…",
                                             "checklist", false, false, "正在停止任务", true, "cancelling"},
                                         Row{Phase::finished, true, true, false, false, "准备下一个项目",
                                             "plus", true, true, "拍摄项目已整理完成", true, "finished"},
                                         Row{Phase::failed, true, true, false, false, "检查并预演",
                                             "checklist", true, false, "任务未完成", false, "failed"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(EveryPhase, TakesDropsExactlyWhileNothingRuns) {
    bringTo(GetParam().phase);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/m/neu"))});
    QDragEnterEvent event(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(part<QWidget>("dropView"), &event);
    EXPECT_EQ(event.isAccepted(), GetParam().inputs);
    const std::size_t before = view_->sources().size();
    view_->appendSources({fileLocation("/m/neu")});
    EXPECT_EQ(view_->sources().size(), before + (GetParam().inputs ? 1 : 0));
    selectRows({0});
    view_->removeSources();
    EXPECT_EQ(view_->sources().size(), before);
    if (GetParam().inputs)
        EXPECT_EQ(view_->phase(), Phase::editing);
    else
        EXPECT_EQ(view_->phase(), GetParam().phase);
}

TEST_P(EveryPhase, NamesEveryControlForAssistiveTools) {
    bringTo(GetParam().phase);
    for (QWidget* widget : view_->findChildren<QWidget*>()) {
        if (widget->focusPolicy() == Qt::NoFocus || !widget->isVisibleTo(view_))
            continue;
        QAccessibleInterface* face = QAccessible::queryAccessibleInterface(widget);
        ASSERT_NE(face, nullptr);
        EXPECT_FALSE(face->text(QAccessible::Name).isEmpty())
            << widget->metaObject()->className() << " " << widget->objectName().toStdString();
    }
}

TEST_F(View, StartsAsDescribed) {
    EXPECT_EQ(nameField()->placeholderText(), QStringLiteral("例如：2026 秋日旅拍"));
    EXPECT_EQ(button("targetButton")->text(), QStringLiteral("选择目标文件夹…"));
    EXPECT_EQ(elided("targetPath"), "选择拍摄项目的保存位置");
    EXPECT_EQ(label("sourceSummary"), "还没有添加来源");
    EXPECT_TRUE(shown("emptySourceHint"));
    EXPECT_TRUE(part<QAbstractButton>("createFCP")->isChecked());
    EXPECT_EQ(part<QAbstractButton>("createFCP")->text(), QStringLiteral("生成 FCP 交接文件"));
    EXPECT_EQ(part<QComboBox>("frameRate")->currentText(), QStringLiteral("25 帧"));
    EXPECT_EQ(part<QComboBox>("resolution")->currentText(), QStringLiteral("1920 × 1080"));
    EXPECT_FALSE(shown("advancedContent"));
    EXPECT_EQ(part<DisclosureButton>("advancedButton")->symbol(), QStringLiteral("chevron.right"));
    EXPECT_EQ(elided("previewRootTitle"), "新拍摄项目");
    EXPECT_EQ(label("summaryLabel"), "先添加素材，检查整理计划");
    EXPECT_FALSE(shown("warningsLabel"));
    EXPECT_FALSE(enabled("primaryButton"));
    EXPECT_EQ(outline()->model()->rowCount(), 10);
    screenshot("empty");
}

TEST_F(View, OffersTheDescribedChoices) {
    const auto items = [this](const char* name) {
        QStringList texts;
        for (int i = 0; i < part<QComboBox>(name)->count(); ++i)
            texts << part<QComboBox>(name)->itemText(i);
        return texts.join(QLatin1Char('|')).toStdString();
    };
    EXPECT_EQ(items("frameRate"), "24 帧|25 帧|30 帧|50 帧|60 帧");
    EXPECT_EQ(items("resolution"), "1920 × 1080|3840 × 2160|1080 × 1920|2160 × 3840");
}

TEST_F(View, OpensAndClosesTheOptions) {
    QTest::mouseClick(part<QWidget>("advancedButton"), Qt::LeftButton);
    EXPECT_TRUE(shown("advancedContent"));
    EXPECT_EQ(part<DisclosureButton>("advancedButton")->symbol(), QStringLiteral("chevron.down"));
    screenshot("options");
    view_->toggleAdvanced();
    EXPECT_FALSE(shown("advancedContent"));
}

TEST_F(View, NeedsAName) {
    ASSERT_TRUE(waitUntil([this] { return window_.isActiveWindow(); }));
    fillRequest();
    EXPECT_TRUE(enabled("primaryButton"));
    nameField()->setText(QStringLiteral("  \t "));
    EXPECT_FALSE(enabled("primaryButton"));
    nameField()->clearFocus();
    view_->primaryAction();
    EXPECT_EQ(view_->phase(), Phase::editing);
    EXPECT_TRUE(nameField()->hasFocus());
}

TEST_F(View, NeedsTargetAndSources) {
    nameField()->setText(QStringLiteral("名"));
    view_->primaryAction();
    EXPECT_EQ(view_->phase(), Phase::editing);
    view_->setTargetURL(folderLocation(media_ / "target"));
    view_->primaryAction();
    EXPECT_EQ(view_->phase(), Phase::editing);
    EXPECT_FALSE(enabled("primaryButton"));
    view_->appendSources({fileLocation(media_ / "b.mov")});
    EXPECT_TRUE(enabled("primaryButton"));
}

TEST_F(View, ShowsTheTargetAndItsSpace) {
    view_->setTargetURL(folderLocation(media_ / "target"));
    EXPECT_EQ(button("targetButton")->text(), QStringLiteral("更换位置…"));
    EXPECT_EQ(elided("targetPath"), media_ / "target");
    EXPECT_EQ(part<QWidget>("targetPath")->toolTip().toStdString(), media_ / "target");
    ASSERT_TRUE(waitUntil([this] { return !label("capacity").empty(); }));
    EXPECT_TRUE(label("capacity").starts_with("可用 ")) << label("capacity");
    view_->setTargetURL(folderLocation("/proc/self"));
    EXPECT_EQ(label("capacity"), "") << "what the last volume said is gone at once";
    view_->setTargetURL(folderLocation(media_ / "gone"));
    view_->setTargetURL(folderLocation(media_ / "target"));
    ASSERT_TRUE(waitUntil([this] { return !label("capacity").empty(); }));
}

TEST_F(View, KeepsOneSourceAPath) {
    view_->appendSources({*parseUrl("file:///cards/A/"), *parseUrl("file:///cards/A")});
    view_->appendSources({fileLocation("/cards/./A"), fileLocation("/cards/B")});
    EXPECT_THAT(sourcePaths(), ElementsAre("/cards/A", "/cards/B"));
    EXPECT_EQ(label("sourceSummary"), "2 个来源 · 检查后查看整理位置");
    EXPECT_FALSE(shown("emptySourceHint"));
}

TEST_F(View, RemovesTheSelectedSources) {
    view_->appendSources({fileLocation("/1"), fileLocation("/2"), fileLocation("/3"), fileLocation("/4")});
    selectRows({0, 2});
    button("removeButton")->click();
    EXPECT_THAT(sourcePaths(), ElementsAre("/2", "/4"));
    sourceTable()->setFocus();
    sourceTable()->selectAll();
    QTest::keyClick(sourceTable(), Qt::Key_Delete);
    EXPECT_THAT(sourcePaths(), IsEmpty());
    EXPECT_TRUE(shown("emptySourceHint"));
    EXPECT_EQ(label("sourceSummary"), "还没有添加来源");
    EXPECT_FALSE(enabled("removeButton"));
}

TEST_F(View, FindsOutWhatSourcesAre) {
    view_->appendSources(
        {folderLocation(media_ / "卡"), fileLocation(media_ / "b.mov"), fileLocation(media_ / "no")});
    const auto symbol = [this](int row) {
        return sourceTable()->model()->index(row, 0).data(Qt::UserRole + 1).toString().toStdString();
    };
    ASSERT_TRUE(waitUntil([&] { return symbol(2) == "exclamationmark.triangle"; }));
    EXPECT_EQ(symbol(0), "sdcard");
    EXPECT_EQ(symbol(1), "doc");
}

TEST_F(View, AnyChangeDiscardsThePlan) {
    const std::vector<std::function<void()>> changes = {
        [this] { QTest::keyClicks(nameField(), QStringLiteral("x")); },
        [this] { view_->setTargetURL(folderLocation(media_.path())); },
        [this] { view_->appendSources({fileLocation("/anders")}); },
        [this] { part<QAbstractButton>("createFCP")->click(); },
        [this] { part<QComboBox>("frameRate")->setCurrentIndex(3); },
        [this] { part<QComboBox>("resolution")->setCurrentIndex(2); },
    };
    fillRequest();
    for (std::size_t i = 0; i < changes.size(); ++i) {
        SCOPED_TRACE(i);
        plan({"一"});
        ASSERT_EQ(view_->phase(), Phase::ready);
        ASSERT_TRUE(treeShown());
        EXPECT_TRUE(shown("warningsLabel"));
        changes[i]();
        EXPECT_EQ(view_->phase(), Phase::editing);
        EXPECT_EQ(view_->state().plan, nullptr);
        EXPECT_EQ(button("primaryButton")->text(), QStringLiteral("检查并预演"));
        EXPECT_FALSE(shown("warningsLabel"));
        EXPECT_EQ(label("summaryLabel"), "先添加素材，检查整理计划");
        EXPECT_TRUE(
            QString::fromStdString(label("sourceSummary")).endsWith(QStringLiteral("检查后查看整理位置")));
        EXPECT_EQ(outline()->model()->rowCount(outline()->model()->index(1, 0)), 0);
    }
}

TEST_F(View, ShowsThePlanOfTheCheck) {
    fillRequest();
    plan({"一", "二", "三", "四"});
    EXPECT_EQ(detail(), "3 个文件 · 4.5 MB · 请先查看右侧分类和提醒。");
    EXPECT_EQ(label("summaryLabel"), "3 个文件 · 4.5 MB · 4 条提醒");
    EXPECT_EQ(label("sourceSummary"), "2 个来源 · 3 个文件");
    EXPECT_EQ(warnings(), "• 一\n• 二\n• 三");
    EXPECT_EQ(part<QWidget>("warningsLabel")->toolTip(), QStringLiteral("一\n二\n三\n四"));
    EXPECT_EQ(elided("previewRootTitle"), "2026 秋日旅拍");
    ASSERT_TRUE(treeShown());
    EXPECT_FALSE(outline()->isExpanded(outline()->model()->index(1, 0))) << "the tree opens closed";
    EXPECT_THAT(statuses_, ElementsAre("正在检查项目素材，尚未开始复制", "项目预演已准备，等待确认复制"));
}

TEST_F(View, SwitchesThePreviewMode) {
    fillRequest();
    part<SegmentedControl>("previewControl")->choose(1);
    EXPECT_EQ(label("previewTitle"), "FCP 分类预演");
    EXPECT_EQ(outline()->model()->rowCount(), 6);
    EXPECT_EQ(warnings(),
              "这些文件保留在磁盘项目中。相机卡请使用 FCP 原生相机导入；其他不支持的媒体见整理报告。");
    EXPECT_TRUE(shown("warningsLabel"));
    plan({"一"});
    ASSERT_TRUE(treeShown());
    EXPECT_EQ(label("summaryLabel"), "图片 / 多音轨 / 时间码 / 相机卡：仅备份");
    screenshot("ready-fcp");
    part<SegmentedControl>("previewControl")->choose(0);
    EXPECT_EQ(label("previewTitle"), "磁盘目录预演");
    EXPECT_EQ(warnings(), "• 一") << "the plan's own warnings are back";
    ASSERT_TRUE(waitUntil([this] { return outline()->model()->rowCount() == 10; }));
    part<SegmentedControl>("previewControl")->choose(1);
    part<QAbstractButton>("createFCP")->click();
    EXPECT_EQ(elided("previewSubtitle"), "更多选项中可开启 FCP 交接文件。");
}

TEST_F(View, DropsTheTreeOfAnOlderPlan) {
    fillRequest();
    plan();
    nameField()->setText(QStringLiteral("别的"));  // before the plan's tree came back
    EXPECT_EQ(elided("previewRootTitle"), "别的");
    plan();
    ASSERT_TRUE(treeShown());
    nameField()->setText(QStringLiteral("再改"));
    EXPECT_EQ(outline()->model()->rowCount(outline()->model()->index(1, 0)), 0);
}

TEST_F(View, ReportsProgressOnlyWhileItRuns) {
    bringTo(Phase::copying);
    view_->updateProgress({502, 1167, 43, 100, "复制与校验：A.MP4"});
    EXPECT_EQ(title(), "正在复制与校验 · 502 / 1167");
    EXPECT_EQ(detail(), "复制与校验：A.MP4");
    EXPECT_DOUBLE_EQ(part<EdgeProgress>("progressBar")->fraction(), 0.43);
    EXPECT_EQ(part<QWidget>("progressBar")->toolTip(), QStringLiteral("43 字节 / 100 字节"));
    view_->cancelWork();
    view_->updateProgress({503, 1167, 44, 100, "spät"});
    EXPECT_EQ(title(), "正在停止任务");
    EXPECT_DOUBLE_EQ(part<EdgeProgress>("progressBar")->fraction(), 0.43) << "frozen";
    EXPECT_EQ(part<EdgeProgress>("progressBar")->tone(), EdgeProgress::Tone::Partial);
}

TEST_F(View, TakesAPlanThatWasCompleteWhenItWasStopped) {
    fillRequest();
    view_->primaryAction();
    view_->cancelWork();
    EXPECT_EQ(view_->phase(), Phase::cancelling);
    Outcome<ProjectPlan> outcome;
    outcome.value = examplePlan({});
    view_->finishPlanning(outcome);
    EXPECT_EQ(view_->phase(), Phase::ready);
    EXPECT_FALSE(shown("cancelButton"));
}

TEST_F(View, TellsHowARunEnded) {
    bringTo(Phase::copying);
    finish(5, 0, false, true);
    EXPECT_EQ(title(), "拍摄项目已整理完成");
    EXPECT_EQ(detail(), "已复制并校验 5 个文件。");
    EXPECT_TRUE(shown("fcpButton"));
    EXPECT_THAT(created_, ElementsAre("/disk/2026 秋日旅拍"));
    EXPECT_EQ(statuses_.back(), "拍摄项目已整理完成");
    EXPECT_EQ(part<EdgeProgress>("progressBar")->fraction(), 1.0);
    view_->primaryAction();  // prepares the next project
    EXPECT_EQ(view_->phase(), Phase::editing);
    EXPECT_FALSE(shown("reportButton"));
    EXPECT_EQ(nameField()->text(), QStringLiteral("2026 秋日旅拍")) << "the inputs stay";
    EXPECT_EQ(view_->sources().size(), 2u);

    view_->startRecovery(fileLocation(media_ / "none.json"));
    finish(4, 1, false);
    EXPECT_EQ(button("primaryButton")->text(), QStringLiteral("重试未完成文件"));
    EXPECT_EQ(created_.size(), 1u) << "not with failures";
    screenshot("failures");
    view_->primaryAction();
    EXPECT_EQ(view_->phase(), Phase::copying);
    finish(4, 0, true);
    EXPECT_EQ(title(), "任务已停止");
    EXPECT_EQ(created_.size(), 1u);
}

TEST_F(View, TellsWhyACheckFailed) {
    bringTo(Phase::planning);
    failPlanning("项目保存位置不存在或尚未挂载。");
    EXPECT_EQ(title(), "任务未完成");
    EXPECT_EQ(detail(), "项目保存位置不存在或尚未挂载。");
    EXPECT_EQ(part<QWidget>("footerDetail")->toolTip(), QStringLiteral("项目保存位置不存在或尚未挂载。"));
    EXPECT_EQ(statuses_.back(), "整理素材：项目保存位置不存在或尚未挂载。");
    EXPECT_EQ(view_->sources().size(), 2u);
    EXPECT_TRUE(enabled("primaryButton"));
}

TEST_F(View, AsksBeforeCopyingWithWarnings) {
    fillRequest();
    plan({"一", "二"});
    button("primaryButton")->click();
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(view_->phase(), Phase::ready);
    EXPECT_EQ(sheet()->content().message, QStringLiteral("检查完成，有 2 条整理提醒"));
    screenshot("warnings");
    sheet()->button(1)->click();
    EXPECT_EQ(view_->phase(), Phase::ready);
    ASSERT_TRUE(waitUntil([this] { return sheet() == nullptr; }));
    button("primaryButton")->click();
    sheet()->button(0)->click();
    EXPECT_EQ(view_->phase(), Phase::copying);
    EXPECT_EQ(title(), "正在复制与校验");
    EXPECT_EQ(statuses_.back(), "正在复制并校验新拍摄项目");
}

TEST_F(View, AConfirmationForAnOlderPlanStartsNothing) {
    fillRequest();
    plan({"一"});
    view_->startCopy(view_->state().plan);
    ASSERT_NE(sheet(), nullptr);
    view_->invalidatePlan();
    sheet()->button(0)->click();
    EXPECT_EQ(view_->phase(), Phase::editing);
}

TEST_F(View, ReportAndHandOffNeedAResult) {
    view_->reveal();
    view_->showReport();
    view_->handOffToFCP();
    EXPECT_EQ(sheet(), nullptr);
    bringTo(Phase::copying);
    finish(5, 0, false, false);
    view_->handOffToFCP();
    EXPECT_EQ(sheet(), nullptr) << "no hand-off file";
    button("reportButton")->click();
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(sheet()->content().message, QStringLiteral("拍摄项目整理完成"));
    EXPECT_EQ(view_->phase(), Phase::finished);
    screenshot("report");
}

TEST_F(View, PanelsAskAsDescribed) {
    struct Panel {
        const char* button;
        const char* message;
        const char* informative;
        const char* prompt;
    };
    const std::vector<Panel> panels = {
        {"addButton", "添加相机卡、素材文件夹或文件", "", "添加来源"},
        {"targetButton", "选择新项目的保存位置", "", "选择位置"},
        {"recoveryButton", "选择整理任务清单",
         "选择之前项目中的整理清单。已完成的文件会由任务清单核对，不会重新新建同名项目。", "继续任务"}};
    for (const Panel& panel : panels) {
        button(panel.button)->click();
        ASSERT_NE(sheet(), nullptr);
        EXPECT_EQ(sheet()->content().message.toStdString(), panel.message);
        EXPECT_EQ(sheet()->content().informative.toStdString(), panel.informative);
        EXPECT_EQ(sheet()->content().buttons.front().toStdString(), panel.prompt);
        screenshot(std::string("panel-") + panel.button);
        sheet()->button(1)->click();
        ASSERT_TRUE(waitUntil([this] { return sheet() == nullptr; }));
        EXPECT_EQ(view_->phase(), Phase::editing);
    }
    bringTo(Phase::copying);
    view_->addSources();
    view_->chooseTarget();
    view_->chooseRecovery();
    EXPECT_EQ(sheet(), nullptr) << "refused while busy";
}

}  // namespace
}  // namespace morvane
