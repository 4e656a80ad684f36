// Push buttons: sizes, roles and states as drawn, and when the focus ring shows.
#include "app/theme/focus_ring.h"
#include "app/theme/push_button.h"
#include "app/theme/theme.h"
#include "tests/theme/theme_fixture.h"

#include <QFontMetrics>
#include <QSignalSpy>
#include <QTest>

namespace morvane {
namespace {

using Role = PushButton::Role;

class PushButtons : public ThemeTest {
protected:
    PushButton* make(const QString& text, const QString& symbol = {}, Role role = Role::Secondary) {
        return place(new PushButton(text, symbol, role));
    }
    /// The fill beside the leading edge, where neither border nor content is.
    static QColor fill(PushButton* button) {
        return colourAt(drawn(*button), QPointF(6, button->height() / 2));
    }
    static QColor border(PushButton* button) {
        return colourAt(drawn(*button), QPointF(0, button->height() / 2));
    }
};

TEST_F(PushButtons, MeasureAsDesigned) {
    const QString text = QStringLiteral("刷新索引");
    const int wide = QFontMetrics(MRVTheme::font(12)).horizontalAdvance(text);
    EXPECT_EQ(make(text)->sizeHint(), QSize(12 + wide + 12, 32));
    EXPECT_EQ(make(text, QStringLiteral("arrow.clockwise"))->sizeHint(), QSize(12 + 16 + 7 + wide + 12, 32));
    auto* padded = make(text);
    padded->setPadding(16);
    EXPECT_EQ(padded->sizeHint(), QSize(16 + wide + 16, 32));
    auto* large = make(QStringLiteral("好"), {}, Role::Primary);
    large->setButtonSize(PushButton::Size::Large);
    EXPECT_EQ(large->sizeHint(), QSize(176, 36));
    EXPECT_EQ(large->font().pixelSize(), 13);
    EXPECT_EQ(make(QString(), QStringLiteral("plus"))->sizeHint(), QSize(32, 32));
}

TEST_F(PushButtons, OnlyTheAccentButtonIsBold) {
    EXPECT_TRUE(make(QStringLiteral("播放"), {}, Role::Primary)->font().bold());
    auto* button = make(QStringLiteral("播放"));
    EXPECT_FALSE(button->font().bold());
    button->setRole(Role::Primary);
    EXPECT_TRUE(button->font().bold());
}

TEST_F(PushButtons, AreFilledByRoleAndState) {
    auto* secondary = make(QStringLiteral("次要"));
    EXPECT_TRUE(isColour(fill(secondary), MRVTheme::raised()));
    EXPECT_TRUE(isColour(border(secondary), MRVTheme::controlLine()));
    secondary->setDown(true);
    EXPECT_TRUE(isColour(fill(secondary), MRVTheme::raisedPressed()));
    secondary->setDown(false);

    auto* primary = make(QStringLiteral("主要"), {}, Role::Primary);
    EXPECT_TRUE(isColour(fill(primary), MRVTheme::accent()));
    EXPECT_TRUE(isColour(border(primary), MRVTheme::accent()));
    primary->setDown(true);
    EXPECT_TRUE(isColour(fill(primary), MRVTheme::accentPressed()));

    for (PushButton* button : {secondary, primary}) {
        button->setEnabled(false);
        EXPECT_TRUE(isColour(fill(button), MRVTheme::disabledFill()));
        EXPECT_TRUE(isColour(border(button), MRVTheme::disabledLine()));
    }
    auto* quiet = make(QStringLiteral("更多"), {}, Role::Quiet);
    EXPECT_EQ(fill(quiet).alpha() == 0 || isColour(fill(quiet), MRVTheme::background()), true);
}

TEST_F(PushButtons, ReactToThePointer) {
    auto* button = make(QStringLiteral("次要"));
    auto* primary = place(new PushButton(QStringLiteral("主要"), {}, Role::Primary), {200, 40});
    activate();
    pointAt(button, {6, 16});
    EXPECT_TRUE(isColour(fill(button), MRVTheme::raisedHover()));
    EXPECT_TRUE(isColour(border(button), MRVTheme::controlLineHover()));
    pointAt(primary, {6, 16});
    EXPECT_TRUE(isColour(fill(primary), MRVTheme::accentHover()));
    EXPECT_TRUE(isColour(fill(button), MRVTheme::raised()));
}

TEST_F(PushButtons, SymbolsFollowRoleAndState) {
    auto* button = make(QStringLiteral("收藏"), QStringLiteral("stop.fill"));
    const QRect symbol(12, 8, 16, 16);
    EXPECT_TRUE(holdsColour(drawn(*button), symbol, MRVTheme::muted()));
    button->setSymbolTone(PushButton::SymbolTone::Accent);
    EXPECT_TRUE(holdsColour(drawn(*button), symbol, MRVTheme::accent()));
    button->setEnabled(false);
    EXPECT_TRUE(holdsColour(drawn(*button), symbol, MRVTheme::disabledText()));
    EXPECT_FALSE(holdsColour(drawn(*button), symbol, MRVTheme::accent()));
    auto* primary = make(QStringLiteral("播放"), QStringLiteral("stop.fill"), Role::Primary);
    EXPECT_TRUE(holdsColour(drawn(*primary), symbol, MRVTheme::onAccent()));
    button->setSymbol(QStringLiteral("star"));
    EXPECT_EQ(button->symbol(), QStringLiteral("star"));
}

TEST_F(PushButtons, AClickPressesAndLeavesTheFocusWhereItWas) {
    auto* button = make(QStringLiteral("次要"));
    activate();
    QSignalSpy clicked(button, &QPushButton::clicked);
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(clicked.count(), 1);
    EXPECT_FALSE(button->hasFocus());
}

TEST_F(PushButtons, TheRingShowsAfterTabOnly) {
    auto* first = make(QStringLiteral("一"));
    auto* second = place(new PushButton(QStringLiteral("二"), {}, Role::Primary), {200, 40});
    activate();
    first->setFocus(Qt::OtherFocusReason);
    EXPECT_FALSE(focusRingShown(first));
    EXPECT_TRUE(isColour(border(first), MRVTheme::controlLine()));

    QTest::keyClick(first, Qt::Key_Tab);
    ASSERT_TRUE(second->hasFocus());
    EXPECT_TRUE(focusRingShown(second));
    // A ring of ink, a gap, then the shrunk fill.
    const QImage ringed = drawn(*second);
    const qreal middle = second->height() / 2.0;
    EXPECT_TRUE(isColour(colourAt(ringed, {0, middle}), MRVTheme::ink()));
    EXPECT_TRUE(isColour(colourAt(ringed, {1, middle}), MRVTheme::ink()));
    EXPECT_FALSE(isColour(colourAt(ringed, {2, middle}), MRVTheme::accent(), 20));
    EXPECT_FALSE(isColour(colourAt(ringed, {3, middle}), MRVTheme::accent(), 20));
    EXPECT_TRUE(isColour(colourAt(ringed, {4, middle}), MRVTheme::accent()));

    QTest::keyClick(second, Qt::Key_Backtab);
    ASSERT_TRUE(first->hasFocus());
    EXPECT_TRUE(isColour(border(first), MRVTheme::accent()));
    EXPECT_TRUE(isColour(colourAt(drawn(*first), {1, middle}), MRVTheme::accent()));
    EXPECT_TRUE(isColour(colourAt(drawn(*first), {2, middle}), MRVTheme::raised()));

    first->setFocus(Qt::MouseFocusReason);  // moved by a click elsewhere and back
    second->setFocus(Qt::MouseFocusReason);
    EXPECT_FALSE(focusRingShown(second));
}

TEST_F(PushButtons, FocusMovedByTheProgramKeepsTheRing) {
    auto* first = make(QStringLiteral("一"));
    auto* second = place(new PushButton(QStringLiteral("二")), {200, 40});
    activate();
    tabTo(first);
    second->setFocus(Qt::OtherFocusReason);
    EXPECT_TRUE(focusRingShown(second));
    EXPECT_FALSE(focusRingShown(first));
}

TEST_F(PushButtons, FocusLeftBehindByAClickShowsNoRing) {
    auto* first = make(QStringLiteral("一"));
    auto* second = place(new PushButton(QStringLiteral("二")), {200, 40});
    activate();
    auto* third = place(new PushButton(QStringLiteral("三")), {360, 40});
    first->setFocus(Qt::OtherFocusReason);
    QObject::connect(second, &QPushButton::clicked, first, &QWidget::hide);
    QTest::mouseClick(second, Qt::LeftButton);
    ASSERT_TRUE(second->hasFocus());  // the toolkit moves on, "by Tab"
    EXPECT_FALSE(focusRingShown(second));
    QTest::keyClick(second, Qt::Key_Tab);
    EXPECT_TRUE(focusRingShown(third));
}

TEST_F(PushButtons, SpacePressesTheFocusedOne) {
    auto* button = make(QStringLiteral("一"));
    activate();
    tabTo(button);
    QSignalSpy clicked(button, &QPushButton::clicked);
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_EQ(clicked.count(), 1);
}

TEST_F(PushButtons, SqueezedTextIsElided) {
    auto* button = make(QStringLiteral("一个很长的按钮标题"), QStringLiteral("stop.fill"), Role::Primary);
    button->resize(70, 32);
    const QImage image = drawn(*button);
    EXPECT_TRUE(holdsColour(image, QRect(4, 8, 16, 16), MRVTheme::onAccent()));
    // Nothing is written over the rounded ends.
    for (int y = 10; y < 22; ++y)
        EXPECT_FALSE(isColour(colourAt(image, QPointF(69, y)), MRVTheme::onAccent(), 40));
}

}  // namespace
}  // namespace morvane
