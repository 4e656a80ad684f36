// Where the workspace's controls stand, and how the keyboard walks through them.
#include <QBoxLayout>
#include <QTest>

#include <gmock/gmock.h>

#include "tests/organizer_ui/view_fixture.h"

namespace morvane {
namespace {

using test::examplePlan;
using test::waitUntil;
using testing::ElementsAre;

using View = test::FilledOrganizer;

TEST_F(View, ReturnInTheNameChecksButNeverCopies) {
    fillRequest();
    nameField()->setFocus();
    QTest::keyClick(nameField(), Qt::Key_Return);
    EXPECT_EQ(view_->phase(), Phase::planning);
    Outcome<ProjectPlan> outcome;
    outcome.value = examplePlan({});
    view_->finishPlanning(outcome);
    ASSERT_EQ(view_->phase(), Phase::ready);
    nameField()->setFocus();
    QTest::keyClick(nameField(), Qt::Key_Return);
    EXPECT_EQ(view_->phase(), Phase::ready);
}

TEST_F(View, MovesTheFocusOnWhenItsControlGoes) {
    ASSERT_TRUE(waitUntil([this] { return window_.isActiveWindow(); }));
    fillRequest();
    nameField()->setFocus();
    view_->primaryAction();
    EXPECT_EQ(QApplication::focusWidget(), button("cancelButton"));
    Outcome<ProjectPlan> outcome;
    outcome.value = examplePlan({});
    view_->finishPlanning(outcome);
    EXPECT_EQ(QApplication::focusWidget(), outline());
    nameField()->setFocus();
    view_->executeCopy(view_->state().plan);
    EXPECT_EQ(QApplication::focusWidget(), button("cancelButton"));
    finish(1, 1, false);
    EXPECT_EQ(QApplication::focusWidget(), button("reportButton"));
    button("recoveryButton")->setFocus();
    view_->startRecovery(fileLocation(media_ / "none.json"));
    view_->presentFailure("坏了");
    EXPECT_EQ(QApplication::focusWidget(), nameField());
}

TEST_F(View, WalksTheControlsInReadingOrder) {
    ASSERT_TRUE(waitUntil([this] { return window_.isActiveWindow(); }));
    fillRequest();
    view_->toggleAdvanced();
    selectRows({0});
    nameField()->setFocus();
    std::vector<std::string> order;
    for (int i = 0; i < 13; ++i) {
        order.push_back(QApplication::focusWidget()->objectName().toStdString());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_THAT(order, ElementsAre("nameField", "targetButton", "sourceTable", "addButton", "removeButton",
                                   "advancedButton", "createFCP", "frameRate", "resolution", "previewControl",
                                   "outline", "recoveryButton", "primaryButton"));
}

TEST_F(View, StacksTheColumnsBelow950) {
    auto* columns = view_->findChild<QBoxLayout*>(QStringLiteral("projectNarrowWidth"));
    ASSERT_NE(columns, nullptr);
    EXPECT_EQ(columns->direction(), QBoxLayout::LeftToRight);
    bringTo(Phase::ready);
    for (const int width : {949, 950}) {
        window_.resize(width, 748);
        view_->setGeometry(window_.rect());
        EXPECT_EQ(columns->direction(), width < 950 ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
        QApplication::sendPostedEvents();
        const QRect name(nameField()->mapTo(view_, QPoint()), nameField()->size());
        const QRect tree(outline()->mapTo(view_, QPoint()), outline()->size());
        if (width < 950)
            EXPECT_GT(tree.top(), name.bottom());
        else
            EXPECT_GT(tree.left(), name.right());
        EXPECT_GE(tree.height(), 100);
        screenshot(width < 950 ? "narrow" : "wide");
    }
}

TEST_F(View, KeepsEveryButtonInPlaceThroughThePhases) {
    fillRequest();
    const auto place = [this](const char* name) {
        return QRect(part<QWidget>(name)->mapTo(view_, QPoint()), part<QWidget>(name)->size());
    };
    std::vector<const char*> fixed = {"primaryButton", "recoveryButton", "nameField",      "targetButton",
                                      "addButton",     "removeButton",   "previewControl", "footerTitle"};
    QApplication::sendPostedEvents();
    std::vector<QPoint> before;
    for (const char* name : fixed)
        before.push_back(place(name).topLeft());
    const QSize primary = place("primaryButton").size();
    const auto check = [&](const char* phase) {
        QApplication::sendPostedEvents();
        for (std::size_t i = 0; i < fixed.size(); ++i)
            EXPECT_EQ(place(fixed[i]).topLeft(), before[i]) << fixed[i] << " in " << phase;
        EXPECT_EQ(place("primaryButton").size(), primary) << phase;
    };
    view_->primaryAction();
    check("planning");
    view_->cancelWork();
    check("cancelling");
    failPlanning("坏了");
    check("failed");
    plan({"一"});
    check("ready");
    view_->executeCopy(view_->state().plan);
    check("copying");
    finish(1, 1, false, true);
    check("finished");
}

}  // namespace
}  // namespace morvane
