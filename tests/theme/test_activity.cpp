// Spinner and progress edge without motion: what they show at once and what they tell.
#include "app/theme/edge_progress.h"
#include "app/theme/spinner.h"
#include "app/theme/theme.h"
#include "tests/theme/theme_fixture.h"

#include <QAccessible>

namespace morvane {
namespace {

class Activity : public ThemeTest {
protected:
    EdgeProgress* progress() {
        auto* made = place(new EdgeProgress, {0, 100});
        made->resize(200, 4);
        return made;
    }
    QImage picture() { return drawn(window()); }
};

TEST_F(Activity, NothingMovesOnTheOffscreenPlatform) {
    EXPECT_TRUE(MRVTheme::reducedMotion());
}

TEST_F(Activity, AStillSpinnerIsAnEllipsis) {
    auto* spinner = place(new Spinner(14, MRVTheme::accent()));
    activate();
    EXPECT_EQ(spinner->size(), QSize(14, 14));
    const QImage image = drawn(*spinner);
    EXPECT_TRUE(holdsColour(image, QRect(0, 5, 14, 4), MRVTheme::accent(), 80));
    EXPECT_FALSE(holdsColour(image, QRect(0, 0, 14, 3), MRVTheme::accent(), 80));
    spinner->setColor(MRVTheme::muted());
    EXPECT_FALSE(holdsColour(drawn(*spinner), spinner->rect(), MRVTheme::accent(), 20));
}

TEST_F(Activity, NoProgressIsAHairline) {
    progress();
    EXPECT_TRUE(isColour(colourAt(picture(), {100, 100}), MRVTheme::line()));
    EXPECT_TRUE(isColour(colourAt(picture(), {100, 101}), MRVTheme::background()));
}

TEST_F(Activity, AFractionIsReachedAtOnce) {
    auto* edge = progress();
    activate();
    edge->setFraction(0.4);
    EXPECT_TRUE(isColour(colourAt(picture(), {79, 102}), MRVTheme::accent()));
    EXPECT_TRUE(isColour(colourAt(picture(), {81, 102}), MRVTheme::progressTrack()));
    edge->setFraction(7);
    EXPECT_DOUBLE_EQ(edge->fraction(), 1);
    edge->setTone(EdgeProgress::Tone::Success);
    EXPECT_TRUE(isColour(colourAt(picture(), {199, 100}), MRVTheme::success()));
    EXPECT_TRUE(isColour(colourAt(picture(), {199, 103}), MRVTheme::success()));
    edge->setTone(EdgeProgress::Tone::Partial);
    edge->setFraction(0.5);
    EXPECT_TRUE(isColour(colourAt(picture(), {99, 102}), MRVTheme::accentLine()));
    edge->setNone();
    EXPECT_TRUE(isColour(colourAt(picture(), {99, 102}), MRVTheme::background()));
}

TEST_F(Activity, IndeterminateIsAFullBarInThePartialTone) {
    auto* edge = progress();
    activate();
    edge->setIndeterminate();
    EXPECT_TRUE(isColour(colourAt(picture(), {1, 102}), MRVTheme::accentLine()));
    EXPECT_TRUE(isColour(colourAt(picture(), {198, 102}), MRVTheme::accentLine()));
}

TEST_F(Activity, AssistiveToolsSeeAProgressBar) {
    auto* edge = progress();
    edge->setAccessibleName(QStringLiteral("整理进度"));
    activate();
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(edge);
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface->role(), QAccessible::ProgressBar);
    EXPECT_EQ(interface->text(QAccessible::Name), QStringLiteral("整理进度"));
    EXPECT_TRUE(interface->state().invisible);
    edge->setFraction(0.429);
    ASSERT_NE(interface->valueInterface(), nullptr);
    EXPECT_EQ(interface->valueInterface()->currentValue().toInt(), 42);
    EXPECT_EQ(interface->valueInterface()->maximumValue().toInt(), 100);
    EXPECT_EQ(interface->text(QAccessible::Value), QStringLiteral("42%"));
    EXPECT_FALSE(interface->state().invisible);
    edge->setIndeterminate();
    EXPECT_TRUE(interface->state().busy);
    EXPECT_TRUE(interface->text(QAccessible::Value).isEmpty());
}

}  // namespace
}  // namespace morvane
