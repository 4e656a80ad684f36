// The whole way with the real engine on real files: drop, check, copy, stop, resume, report.
#include <unistd.h>

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "project/project_errors.h"
#include "tests/organizer_ui/view_fixture.h"

namespace morvane {
namespace {

using test::waitUntil;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class Flow : public test::OrganizerWindow {
protected:
    Flow() { test::makeTree(disk_.path(), {{"target/", ""}}); }

    void request(const std::vector<std::string>& sources) {
        nameField()->setText(QStringLiteral(" 秋日旅拍 "));
        part<QAbstractButton>("createFCP")->setChecked(false);
        view_->setTargetURL(folderLocation(disk_ / "target"));
        std::vector<FileUrl> urls;
        for (const std::string& source : sources)
            urls.push_back(fileLocation(disk_ / source));
        view_->appendSources(urls);
    }
    void press() { button("primaryButton")->click(); }
    /// Content of the copy of the planned source with this name.
    std::string copyOf(const std::string& name) const {
        for (const ProjectPlanItem& item : view_->state().plan->items)
            if (item.sourceURL.lastComponent() == name)
                return test::readAll(project(item.relativeDestination));
        return "not in the plan";
    }
    std::string project(const std::string& relative) const { return disk_ / ("target/秋日旅拍/" + relative); }

    test::TemporaryFolder disk_;
};

TEST_F(Flow, DropsChecksCopiesAndReports) {
    test::makeTree(disk_.path(), {{"卡/PRIVATE/M4ROOT/CLIP/C0001.MP4", "clip"},
                                  {"素材/a.mov", "movie"},
                                  {"素材/BGM/曲.wav", "music"},
                                  {"单个.srt", "text"}});
    nameField()->setText(QStringLiteral("秋日旅拍"));
    part<QAbstractButton>("createFCP")->setChecked(false);
    view_->setTargetURL(folderLocation(disk_ / "target"));
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(disk_ / "卡")),
                  QUrl::fromLocalFile(QString::fromStdString(disk_ / "素材/")),
                  QUrl::fromLocalFile(QString::fromStdString(disk_ / "单个.srt"))});
    auto* area = part<QWidget>("dropView");
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(area, &enter);
    ASSERT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(area, &drop);
    ASSERT_TRUE(drop.isAccepted());
    EXPECT_THAT(sourcePaths(), ElementsAre(disk_ / "卡", disk_ / "素材", disk_ / "单个.srt"));

    press();
    EXPECT_EQ(view_->phase(), Phase::planning);
    ASSERT_TRUE(reached(Phase::ready)) << detail();
    EXPECT_EQ(label("sourceSummary"), "3 个来源 · 4 个文件");
    EXPECT_EQ(warnings(), "• 卡：检测到相机结构，完整保留目录；FCP 请使用原生相机导入。");
    EXPECT_THAT(test::listTree(disk_ / "target"), IsEmpty()) << "a dry run touches nothing";
    EXPECT_EQ(view_->state().plan->request.name, "秋日旅拍");
    EXPECT_EQ(view_->state().plan->request.frameRate, 25);

    press();  // the warning is shown first
    ASSERT_NE(sheet(), nullptr);
    sheet()->button(0)->click();
    EXPECT_EQ(view_->phase(), Phase::copying);
    ASSERT_TRUE(reached(Phase::finished));
    EXPECT_EQ(title(), "拍摄项目已整理完成");
    EXPECT_EQ(detail(), "已复制并校验 4 个文件。");
    EXPECT_EQ(test::readAll(project("02_原始素材/相机卡备份/卡/PRIVATE/M4ROOT/CLIP/C0001.MP4")), "clip");
    EXPECT_EQ(copyOf("曲.wav"), "music");
    EXPECT_THAT(created_, ElementsAre(disk_ / "target/秋日旅拍"));
    EXPECT_FALSE(shown("fcpButton"));
    button("reportButton")->click();
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(sheet()->content().informative, QStringLiteral("已复制并校验 4 个文件 · 失败 0 个"));
    sheet()->button(0)->click();
    EXPECT_THAT(statuses_, ElementsAre("正在检查项目素材，尚未开始复制", "项目预演已准备，等待确认复制",
                                       "正在复制并校验新拍摄项目", "拍摄项目已整理完成"));
}

TEST_F(Flow, PassesTheOptionsOn) {
    test::makeTree(disk_.path(), {{"a.mov", "x"}});
    request({"a.mov"});
    part<QComboBox>("frameRate")->setCurrentIndex(4);
    part<QComboBox>("resolution")->setCurrentIndex(3);
    press();
    ASSERT_TRUE(reached(Phase::ready));
    const ProjectRequest& sent = view_->state().plan->request;
    EXPECT_EQ(sent.name, "秋日旅拍");
    EXPECT_EQ(sent.frameRate, 60);
    EXPECT_EQ(sent.width, 2160);
    EXPECT_EQ(sent.height, 3840);
    EXPECT_FALSE(sent.createFCP);
}

TEST_F(Flow, ShowsTheEnginesRefusal) {
    test::makeTree(disk_.path(), {{"a.mov", "x"}, {"target/秋日旅拍/", ""}});
    request({"a.mov"});
    press();
    ASSERT_TRUE(reached(Phase::failed));
    EXPECT_EQ(detail(), project_text::projectExists);
    EXPECT_TRUE(enabled("primaryButton")) << "the request stays, to be corrected";
    nameField()->setText(QStringLiteral("别名"));
    press();
    ASSERT_TRUE(reached(Phase::ready));
}

TEST_F(Flow, StoppingACheckEndsInFailed) {
    std::vector<test::TreeEntry> many;
    for (int i = 0; i < 3000; ++i)
        many.push_back({"素材/" + std::to_string(i % 50) + "/" + std::to_string(i) + ".mov", ""});
    test::makeTree(disk_.path(), many);
    request({"素材"});
    press();
    button("cancelButton")->click();
    EXPECT_EQ(view_->phase(), Phase::cancelling);
    ASSERT_TRUE(reached(Phase::failed));
    EXPECT_EQ(detail(), project_text::cancelled);
    EXPECT_EQ(statuses_.back(), "整理素材：" + std::string(project_text::cancelled));
    EXPECT_THAT(test::listTree(disk_ / "target"), IsEmpty());
}

TEST_F(Flow, StopsACopyAndResumesIt) {
    const std::string block(512 * 1024, 'b');
    std::vector<test::TreeEntry> many;
    for (int i = 0; i < 120; ++i)
        many.push_back({"素材/" + std::to_string(i) + ".mov", block + std::to_string(i)});
    test::makeTree(disk_.path(), many);
    request({"素材"});
    press();
    ASSERT_TRUE(reached(Phase::ready)) << detail();
    press();
    ASSERT_TRUE(waitUntil([this] { return view_->state().progressBar.value > 0; }));
    EXPECT_NE(part<QWidget>("progressBar")->toolTip(), QString());
    button("cancelButton")->click();
    ASSERT_TRUE(reached(Phase::finished));
    EXPECT_EQ(title(), "任务已停止");
    EXPECT_THAT(created_, IsEmpty());
    ASSERT_TRUE(view_->state().result->cancelled);
    EXPECT_LT(view_->state().result->copiedCount, 120);
    EXPECT_EQ(button("primaryButton")->text(), QStringLiteral("重试未完成文件"));

    press();
    EXPECT_EQ(view_->phase(), Phase::copying);
    ASSERT_TRUE(reached(Phase::finished));
    EXPECT_EQ(detail(), "已复制并校验 120 个文件。");
    EXPECT_THAT(created_, ElementsAre(disk_ / "target/秋日旅拍"));
    EXPECT_EQ(copyOf("119.mov"), block + "119");
}

TEST_F(Flow, RetriesWhatFailed) {
    test::makeTree(disk_.path(), {{"素材/a.mov", "a"}, {"素材/b.mov", "b"}});
    request({"素材"});
    press();
    ASSERT_TRUE(reached(Phase::ready));
    std::filesystem::rename(disk_ / "素材/b.mov", disk_ / "b.away");
    press();
    ASSERT_TRUE(reached(Phase::finished));
    EXPECT_EQ(detail(), "已完成 1 个文件 · 1 个失败，查看报告后可重试。");
    EXPECT_THAT(created_, IsEmpty());
    std::filesystem::rename(disk_ / "b.away", disk_ / "素材/b.mov");
    press();
    ASSERT_TRUE(
        waitUntil([this] { return view_->phase() == Phase::finished && !view_->state().recoveryManifest; }));
    EXPECT_EQ(detail(), "已复制并校验 2 个文件。");
    EXPECT_THAT(created_, ElementsAre(disk_ / "target/秋日旅拍"));
}

TEST_F(Flow, RefusesAManifestThatIsNone) {
    test::makeTree(disk_.path(), {{"MORVANE项目清单.json", "{}"}});
    view_->startRecovery(fileLocation(disk_ / "MORVANE项目清单.json"));
    EXPECT_EQ(title(), "正在继续整理任务");
    ASSERT_TRUE(reached(Phase::failed));
    EXPECT_FALSE(detail().empty());
    EXPECT_FALSE(enabled("primaryButton")) << "nothing was entered yet";
}

TEST_F(Flow, GoesAwayInTheMiddleOfACheck) {
    std::vector<test::TreeEntry> many;
    for (int i = 0; i < 2000; ++i)
        many.push_back({"素材/" + std::to_string(i) + ".mov", ""});
    test::makeTree(disk_.path(), many);
    request({"素材"});
    press();
    delete view_;
    view_ = nullptr;
    bool later = false;
    QTimer::singleShot(0, [&later] { later = true; });
    EXPECT_TRUE(waitUntil([&later] { return later; }));
    EXPECT_EQ(statuses_.size(), 1u) << "nothing reports to a view that is gone";
}

}  // namespace
}  // namespace morvane
