// Texts that give way: lines, elision, tool tip, accessible name.
#include "app/theme/elided_label.h"
#include "app/theme/theme.h"
#include "tests/theme/theme_fixture.h"

#include <QAccessible>
#include <QApplication>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QTextDocumentFragment>
#include <QToolTip>

namespace morvane {
namespace {

const QString path =
    QStringLiteral("/run/media/lin/影像素材A/2026 秋日旅拍/A机 Day 1/A001_C0013_湖边长镜头_慢速.MOV");

class ElidedLabels : public ThemeTest {
protected:
    ElidedLabel* label(const QString& text, int px = 11) {
        auto* made = place(new ElidedLabel(px, MRVTheme::muted()));
        made->setText(text);
        made->resize(made->sizeHint());
        return made;
    }
    static QString tipOf(ElidedLabel* label) {
        QHelpEvent event(QEvent::ToolTip, QPoint(2, 2), label->mapToGlobal(QPoint(2, 2)));
        QApplication::sendEvent(label, &event);
        const QString shown = QToolTip::isVisible() ? QToolTip::text() : QString();
        QToolTip::hideText();
        return shown;
    }
};

TEST_F(ElidedLabels, TakeTheLineOfTheirSize) {
    EXPECT_EQ(label(QStringLiteral("甲"), 15)->sizeHint().height(), 22);
    EXPECT_EQ(label(QStringLiteral("甲"), 12)->sizeHint().height(), 18);
    EXPECT_EQ(label(QStringLiteral("甲"), 11)->sizeHint().height(), 17);
    EXPECT_EQ(label(QStringLiteral("甲"), 10)->sizeHint().height(), 14);
}

TEST_F(ElidedLabels, TheTipHoldsTheWholeTextOnlyWhileSomethingIsHidden) {
    auto* made = label(path);
    activate();
    EXPECT_FALSE(made->isElided());
    EXPECT_TRUE(tipOf(made).isEmpty());
    made->resize(120, 17);
    EXPECT_TRUE(made->isElided());
    EXPECT_EQ(tipOf(made), path);
}

TEST_F(ElidedLabels, TheTipShowsSignsOfMarkupAsTheyAre) {
    const QString plain = QStringLiteral("旅拍 & \"花絮\" > 素材/A001_C0013_湖边长镜头_慢速.MOV");
    auto* made = label(plain);
    activate();
    made->resize(120, 17);
    EXPECT_EQ(tipOf(made), plain);
    made->setText(QStringLiteral("/素材/<b>粗体</b>/A001_C0013_湖边长镜头_慢速.MOV"));
    EXPECT_EQ(QTextDocumentFragment::fromHtml(tipOf(made)).toPlainText(), made->text());
}

TEST_F(ElidedLabels, NeverWriteBeyondTheirWidth) {
    auto* made = label(path);
    made->setElideMode(Qt::ElideMiddle);
    made->resize(120, 17);
    const QImage image = drawn(window());
    EXPECT_TRUE(holdsColour(image, QRect(made->pos(), made->size()), MRVTheme::muted(), 60));
    EXPECT_FALSE(
        holdsColour(image, QRect(made->geometry().right() + 1, made->y(), 200, 17), MRVTheme::muted(), 90));
}

TEST_F(ElidedLabels, WrapUpToTheirLinesAndReportTheHeight) {
    auto* made = label(path);
    made->setMaximumLines(2);
    made->setBreakAnywhere(true);
    EXPECT_TRUE(made->hasHeightForWidth());
    EXPECT_EQ(made->heightForWidth(2000), 17);
    EXPECT_EQ(made->heightForWidth(350), 34);
    EXPECT_EQ(made->heightForWidth(80), 34);
    made->resize(350, 34);
    EXPECT_FALSE(made->isElided());
    made->resize(80, 34);
    EXPECT_TRUE(made->isElided());
}

TEST_F(ElidedLabels, ReservedLinesKeepTheirRoom) {
    auto* made = label(QStringLiteral("视频 · MOV"));
    made->setMaximumLines(2);
    made->setReserveLines(true);
    EXPECT_EQ(made->sizeHint().height(), 34);
    made->setText(QString());
    EXPECT_EQ(made->sizeHint().height(), 34);
}

TEST_F(ElidedLabels, LineFeedsBeginLinesAndTheRestIsMarkedAsHidden) {
    auto* made = label(QStringLiteral("一\n二"));
    made->setMaximumLines(2);
    EXPECT_EQ(made->heightForWidth(400), 34);
    made->resize(400, 34);
    EXPECT_FALSE(made->isElided());
    made->setText(QStringLiteral("一\n二\n三"));
    EXPECT_TRUE(made->isElided());
    EXPECT_EQ(made->heightForWidth(400), 34);
}

TEST_F(ElidedLabels, AreGreyWhenDisabled) {
    auto* made = label(QStringLiteral("一段文字"));
    made->setEnabled(false);
    EXPECT_FALSE(holdsColour(drawn(*made), made->rect(), MRVTheme::muted(), 8));
    EXPECT_TRUE(holdsColour(drawn(*made), made->rect(), MRVTheme::disabledText(), 12));
}

TEST_F(ElidedLabels, AssistiveToolsReadTheWholeText) {
    auto* made = label(path);
    made->resize(60, 17);
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(made);
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface->role(), QAccessible::StaticText);
    EXPECT_EQ(interface->text(QAccessible::Name), path);
    made->setAccessibleName(QStringLiteral("素材完整路径"));
    EXPECT_EQ(interface->text(QAccessible::Name), QStringLiteral("素材完整路径"));
}

}  // namespace
}  // namespace morvane
