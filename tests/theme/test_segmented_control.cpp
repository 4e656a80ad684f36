// The segmented control: keyboard, mouse, drawing, and what assistive tools are told.
#include "app/theme/segmented_control.h"
#include "app/theme/theme.h"
#include "tests/theme/theme_fixture.h"

#include <QAccessible>
#include <QFontMetrics>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

namespace morvane {
namespace {

using Size = SegmentedControl::Size;

class SegmentedControls : public ThemeTest {
protected:
    SegmentedControl* kinds() {
        return place(
            new SegmentedControl({QStringLiteral("全部"), QStringLiteral("音频"), QStringLiteral("视频"),
                                  QStringLiteral("图片"), QStringLiteral("其他")},
                                 Size::Small));
    }
    static QPoint centre(SegmentedControl* control, int segment) {
        return control->segmentRect(segment).center();
    }
};

TEST_F(SegmentedControls, MeasureAsDesigned) {
    const SegmentedControl workspace({QStringLiteral("管理素材"), QStringLiteral("整理素材")}, Size::Large);
    EXPECT_EQ(workspace.sizeHint(), QSize(2 * 88, 32));
    const int label = QFontMetrics(MRVTheme::font(12)).horizontalAdvance(QStringLiteral("全部"));
    EXPECT_EQ(kinds()->sizeHint(), QSize(5 * (label + 26), 28));
}

TEST_F(SegmentedControls, SelectingByTheProgramIsSilent) {
    auto* control = kinds();
    QSignalSpy chosen(control, &SegmentedControl::segmentChosen);
    EXPECT_EQ(control->selectedSegment(), 0);
    control->setSelectedSegment(3);
    EXPECT_EQ(control->selectedSegment(), 3);
    control->setSelectedSegment(-1);
    control->setSelectedSegment(5);
    EXPECT_EQ(control->selectedSegment(), 3);
    EXPECT_EQ(chosen.count(), 0);
}

TEST_F(SegmentedControls, AClickChoosesOnReleaseAndOnlyAnotherSegment) {
    auto* control = kinds();
    activate();
    QSignalSpy chosen(control, &SegmentedControl::segmentChosen);
    QTest::mouseClick(control, Qt::LeftButton, {}, centre(control, 2));
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.last().first().toInt(), 2);
    EXPECT_EQ(control->selectedSegment(), 2);
    QTest::mouseClick(control, Qt::LeftButton, {}, centre(control, 2));
    EXPECT_EQ(chosen.count(), 1);
    // Pressed on one, released over another: nothing.
    QTest::mousePress(control, Qt::LeftButton, {}, centre(control, 4));
    QTest::mouseRelease(control, Qt::LeftButton, {}, centre(control, 1));
    EXPECT_EQ(chosen.count(), 1);
    QTest::mouseClick(control, Qt::RightButton, {}, centre(control, 4));
    EXPECT_EQ(chosen.count(), 1);
    EXPECT_FALSE(control->hasFocus());
}

TEST_F(SegmentedControls, ArrowsChooseAndStopAtTheEnds) {
    auto* control = kinds();
    activate();
    tabTo(control);
    QSignalSpy chosen(control, &SegmentedControl::segmentChosen);
    QTest::keyClick(control, Qt::Key_Left);
    EXPECT_EQ(chosen.count(), 0);
    QTest::keyClick(control, Qt::Key_Right);
    EXPECT_EQ(control->selectedSegment(), 1);
    QTest::keyClick(control, Qt::Key_Down);
    QTest::keyClick(control, Qt::Key_Up);
    EXPECT_EQ(control->selectedSegment(), 1);
    QTest::keyClick(control, Qt::Key_End);
    EXPECT_EQ(control->selectedSegment(), 4);
    QTest::keyClick(control, Qt::Key_Right);
    EXPECT_EQ(chosen.count(), 4);
    QTest::keyClick(control, Qt::Key_Home);
    EXPECT_EQ(control->selectedSegment(), 0);
    EXPECT_EQ(chosen.count(), 5);
}

TEST_F(SegmentedControls, IsOneTabStop) {
    auto* before = place(new QPushButton(QStringLiteral("前")), {0, 0});
    auto* control = kinds();
    auto* after = place(new QPushButton(QStringLiteral("后")), {0, 200});
    activate();
    tabTo(before);
    QTest::keyClick(before, Qt::Key_Tab);
    EXPECT_TRUE(control->hasFocus());
    QTest::keyClick(control, Qt::Key_Tab);
    EXPECT_TRUE(after->hasFocus());
}

TEST_F(SegmentedControls, DrawsTheSelectedTheHoveredAndTheFocusedSegment) {
    auto* control = kinds();
    activate();
    const auto fill = [&](int segment) {
        const QRect rect = control->segmentRect(segment);
        return colourAt(drawn(*control), QPointF(rect.left() + 5, rect.center().y()));
    };
    EXPECT_TRUE(isColour(fill(0), MRVTheme::accentSoft()));
    EXPECT_TRUE(isColour(fill(2), MRVTheme::field()));
    EXPECT_TRUE(isColour(colourAt(drawn(*control), QPointF(0, 14)), MRVTheme::accentLine()));
    EXPECT_TRUE(isColour(colourAt(drawn(*control), QPointF(control->width() - 1, 14)), MRVTheme::line()));
    EXPECT_TRUE(holdsColour(drawn(*control), control->segmentRect(0), MRVTheme::accent(), 24));
    pointAt(control, centre(control, 2));
    EXPECT_TRUE(isColour(fill(2), MRVTheme::rowHover()));
    QTest::mousePress(control, Qt::LeftButton, {}, centre(control, 2));
    EXPECT_TRUE(isColour(fill(2), MRVTheme::accentSoft()));
    QTest::mouseRelease(control, Qt::LeftButton, {}, QPoint(-10, -10));
    EXPECT_EQ(control->selectedSegment(), 0);
    tabTo(control);
    EXPECT_TRUE(isColour(colourAt(drawn(*control), QPointF(1, 14)), MRVTheme::accent()));
    control->setEnabled(false);
    EXPECT_FALSE(holdsColour(drawn(*control), control->rect(), MRVTheme::accent(), 24));
}

TEST_F(SegmentedControls, DisabledOnesCannotBeChosen) {
    auto* control = kinds();
    activate();
    control->setEnabled(false);
    QSignalSpy chosen(control, &SegmentedControl::segmentChosen);
    QTest::mouseClick(control, Qt::LeftButton, {}, centre(control, 1));
    control->choose(1);
    EXPECT_EQ(chosen.count(), 0);
    EXPECT_EQ(control->selectedSegment(), 0);
}

TEST_F(SegmentedControls, AssistiveToolsSeeAGroupOfRadioButtons) {
    auto* control = kinds();
    control->setAccessibleName(QStringLiteral("素材类型"));
    activate();
    QAccessibleInterface* group = QAccessible::queryAccessibleInterface(control);
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->role(), QAccessible::Grouping);
    EXPECT_EQ(group->text(QAccessible::Name), QStringLiteral("素材类型"));
    ASSERT_EQ(group->childCount(), 5);
    QAccessibleInterface* audio = group->child(1);
    ASSERT_NE(audio, nullptr);
    EXPECT_EQ(audio->role(), QAccessible::RadioButton);
    EXPECT_EQ(audio->text(QAccessible::Name), QStringLiteral("音频"));
    EXPECT_EQ(group->indexOfChild(audio), 1);
    EXPECT_EQ(audio->parent(), group);
    EXPECT_FALSE(audio->state().checked);
    EXPECT_TRUE(group->child(0)->state().checked);
    const QPoint place = audio->rect().center();
    EXPECT_EQ(group->childAt(place.x(), place.y()), audio);

    tabTo(control);
    EXPECT_EQ(group->focusChild(), group->child(0));
    QSignalSpy chosen(control, &SegmentedControl::segmentChosen);
    QAccessibleActionInterface* action = audio->actionInterface();
    ASSERT_NE(action, nullptr);
    action->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(chosen.count(), 1);
    EXPECT_TRUE(audio->state().checked);
    EXPECT_EQ(group->child(5), nullptr);
    control->setEnabled(false);
    EXPECT_TRUE(audio->state().disabled);
}

}  // namespace
}  // namespace morvane
