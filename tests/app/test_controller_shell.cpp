// The two workspaces of the one window, the rule that keeps it open while the organizer works, the
// menu's own items.
#include <QApplication>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTest>

#include <gmock/gmock.h>

#include "app/theme/elided_label.h"
#include "app/theme/keyboard_window.h"
#include "app/theme/push_button.h"
#include "app/theme/search_field.h"
#include "app/theme/segmented_control.h"
#include "app/theme/sheet.h"
#include "organizer_ui/project_organizer_view.h"
#include "tests/app/controller_fixture.h"

namespace morvane {
namespace {

using test::waitUntil;
using testing::ElementsAre;

class Shell : public test::ControllerTest {
protected:
    Controller& app() { return *controller_; }
    ProjectOrganizerView& organizer() { return *app().organizerView(); }
    KeyboardWindow& window() { return *app().frame().window(); }

    /// A complete request in the organizer: one real file for a project below folder_.
    void fillRequest() {
        test::makeTree(folder_.path(), {{"projects/", ""}, {"source/clip.mov", "not really a film"}});
        app().frame().workspaceControl().choose(1);
        organizer().setTargetURL(folderLocation(folder_ / "projects"));
        organizer().appendSources({folderLocation(folder_ / "source")});
        auto* name = organizer().findChild<QLineEdit*>("nameField");
        ASSERT_NE(name, nullptr);
        QTest::keyClicks(name, "First");
    }
    bool phaseBecomes(Phase phase) {
        return waitUntil([this, phase] { return organizer().phase() == phase; });
    }
    QAction* menuItem(const QString& title) {
        for (QAction* action : window().menuBar()->findChildren<QAction*>())
            if (action->text() == title)
                return action;
        return nullptr;
    }
};

TEST_F(Shell, SwitchingShowsTheOrganizerAndBack) {
    start();
    app().frame().workspaceControl().choose(1);
    EXPECT_EQ(status(), "新建拍摄项目 · 先预演分类，再复制校验与交接 FCP");
    EXPECT_TRUE(organizer().isVisible());
    EXPECT_FALSE(app().libraryView().isVisible());
    EXPECT_FALSE(app().frame().search().isVisible());
    app().frame().workspaceControl().choose(0);
    EXPECT_EQ(status(), "0 个素材文件夹 · 0 个素材");
    EXPECT_FALSE(organizer().isVisible());
    EXPECT_TRUE(app().libraryView().isVisible());
    EXPECT_TRUE(app().frame().search().isVisible());
}

TEST_F(Shell, TabLeadsFromTheWorkspaceControlIntoTheOrganizer) {
    start();
    app().frame().workspaceControl().choose(1);
    app().frame().workspaceControl().setFocus(Qt::TabFocusReason);
    std::vector<std::string> order;
    for (int i = 0; i < 7; ++i) {
        QTest::keyClick(window().focusWidget(), Qt::Key_Tab);
        order.push_back(window().focusWidget()->objectName().toStdString());
    }
    EXPECT_THAT(order, ElementsAre("nameField", "targetButton", "addButton", "advancedButton",
                                   "previewControl", "outline", "recoveryButton"));
}

TEST_F(Shell, ABusyOrganizerKeepsTheWindowOpen) {
    start();
    fillRequest();
    app().frame().workspaceControl().choose(0);
    organizer().primaryAction();
    ASSERT_EQ(organizer().phase(), Phase::planning);  // until the event loop brings the plan
    EXPECT_FALSE(window().close());
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(sheetMessage(), "整理任务仍在进行");
    const SheetContent& content = window().findChild<Sheet*>()->content();
    EXPECT_EQ(content.informative, "请先在整理素材中取消任务，待已完成的文件与清单保存后再关闭。");
    EXPECT_EQ(content.buttons, QStringList{"返回整理任务"});
    EXPECT_EQ(app().frame().workspaceControl().selectedSegment(), 1);
    EXPECT_TRUE(organizer().isVisible());
    answerSheet(0);
    EXPECT_TRUE(phaseBecomes(Phase::ready));
    EXPECT_TRUE(window().close());
}

TEST_F(Shell, QuittingFollowsTheSameRule) {
    start();
    fillRequest();
    organizer().primaryAction();
    ASSERT_EQ(organizer().phase(), Phase::planning);
    QSignalSpy quitting(qApp, &QCoreApplication::aboutToQuit);
    menuItem("退出MORVANE 素材助手")->trigger();
    EXPECT_EQ(sheetMessage(), "整理任务仍在进行");
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(quitting.size(), 0);
    answerSheet(0);
    EXPECT_TRUE(phaseBecomes(Phase::ready));
}

TEST_F(Shell, AStoppingTaskIsBusyToo) {
    start();
    fillRequest();
    organizer().primaryAction();
    organizer().cancelWork();
    ASSERT_EQ(organizer().phase(), Phase::cancelling);
    EXPECT_FALSE(app().windowShouldClose());
    answerSheet(0);
    EXPECT_TRUE(waitUntil([this] { return !organizer().isBusy(); }));
}

class ClosablePhases : public Shell, public testing::WithParamInterface<Phase> {};

TEST_P(ClosablePhases, LetTheWindowClose) {
    start();
    if (GetParam() != Phase::editing)
        fillRequest();
    if (GetParam() == Phase::failed) {
        std::filesystem::remove(folder_ / "projects");
        organizer().primaryAction();
    } else if (GetParam() != Phase::editing) {
        organizer().primaryAction();
        ASSERT_TRUE(phaseBecomes(Phase::ready));
        if (GetParam() == Phase::finished)
            organizer().primaryAction();
    }
    ASSERT_TRUE(phaseBecomes(GetParam()));
    EXPECT_TRUE(app().windowShouldClose());
    EXPECT_EQ(sheetMessage(), "");
}

INSTANTIATE_TEST_SUITE_P(Table, ClosablePhases,
                         testing::Values(Phase::editing, Phase::ready, Phase::failed, Phase::finished));

TEST_F(Shell, AFinishedProjectJoinsTheLibrary) {
    start();
    fillRequest();
    organizer().primaryAction();
    ASSERT_TRUE(phaseBecomes(Phase::ready));
    organizer().primaryAction();
    ASSERT_TRUE(phaseBecomes(Phase::finished));
    const std::string project = folder_ / "projects/First";
    EXPECT_THAT(app().settings().roots, ElementsAre(project));
    waitForRefresh();
    EXPECT_THAT(listed(), ElementsAre("clip.mov"));
    stop();
    EXPECT_THAT(storedSettings().roots, ElementsAre(project));
}

TEST_F(Shell, AProjectThatIsAFolderAlreadyIsOnlyScanned) {
    startWithMedia();
    QSignalSpy started(&app().index(), &LibraryIndex::refreshStarted);
    organizer().onProjectCreated(folderLocation(media_));
    EXPECT_THAT(app().settings().roots, ElementsAre(media_));
    EXPECT_EQ(started.size(), 1);
    waitForRefresh();
}

TEST_F(Shell, TheOrganizerSpeaksInTheStatusLine) {
    start();
    organizer().onStatus("正在复制并校验新拍摄项目");
    EXPECT_EQ(status(), "正在复制并校验新拍摄项目");
}

TEST_F(Shell, AboutTellsTheVersion) {
    start();
    menuItem("关于MORVANE 素材助手")->trigger();
    EXPECT_EQ(sheetMessage(), "MORVANE 素材助手 1.2.0 测试版");
    answerSheet(0);
}

TEST_F(Shell, TheSearchKeyDoesNothingInTheOrganizer) {
    start();
    app().frame().workspaceControl().choose(1);
    const QWidget* before = QApplication::focusWidget();
    app().focusSearch();
    EXPECT_EQ(QApplication::focusWidget(), before);
}

TEST_F(Shell, ComesForwardOutOfItsMinimisedState) {
    start();
    window().showMinimized();
    ASSERT_TRUE(window().isMinimized());
    app().bringForward();
    EXPECT_FALSE(window().isMinimized());
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window()));
}

}  // namespace
}  // namespace morvane
