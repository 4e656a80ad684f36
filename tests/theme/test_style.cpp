// Standard controls as the style draws and measures them.
#include "app/theme/file_table.h"
#include "app/theme/style.h"
#include "app/theme/theme.h"
#include "tests/theme/theme_fixture.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPainterPath>
#include <QPlainTextEdit>
#include <QProxyStyle>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QSplitter>
#include <QStyleOption>
#include <QTest>
#include <QToolTip>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace morvane {
namespace {

class Styled : public ThemeTest {};

TEST_F(Styled, InstallsDarkForEverybody) {
    const QPalette palette = QApplication::palette();
    EXPECT_EQ(palette.color(QPalette::Window), MRVTheme::background());
    EXPECT_EQ(palette.color(QPalette::Base), MRVTheme::panel());
    EXPECT_EQ(palette.color(QPalette::AlternateBase), MRVTheme::panel());
    EXPECT_EQ(palette.color(QPalette::Text), MRVTheme::ink());
    EXPECT_EQ(palette.color(QPalette::Button), MRVTheme::raised());
    EXPECT_EQ(palette.color(QPalette::Highlight), MRVTheme::textSelection());
    EXPECT_EQ(palette.color(QPalette::HighlightedText), MRVTheme::ink());
    EXPECT_EQ(palette.color(QPalette::PlaceholderText), MRVTheme::faint());
    EXPECT_EQ(palette.color(QPalette::ToolTipBase), MRVTheme::sheet());
    EXPECT_EQ(palette.color(QPalette::Link), MRVTheme::accent());
    EXPECT_EQ(palette.color(QPalette::Disabled, QPalette::Text), MRVTheme::disabledText());
    EXPECT_EQ(QApplication::font().pixelSize(), 12);
    EXPECT_EQ(QApplication::font().families().first(), QStringLiteral("Noto Sans CJK SC"));
    EXPECT_NE(qobject_cast<MorvaneStyle*>(QApplication::style()), nullptr);
}

TEST_F(Styled, NothingMovesByItself) {
    EXPECT_EQ(QApplication::style()->styleHint(QStyle::SH_Widget_Animation_Duration), 0);
    EXPECT_FALSE(QApplication::isEffectEnabled(Qt::UI_AnimateMenu));
    EXPECT_FALSE(QApplication::isEffectEnabled(Qt::UI_FadeTooltip));
}

TEST_F(Styled, RegularTextIsNotEmboldened) {
    // The ink of rendered text against the ink of its outlines: emboldening added about a third.
    const QString text = QStringLiteral("刷新索引管理素材");
    const QFont font = MRVTheme::font(12);
    const auto ink = [&](const std::function<void(QPainter&)>& write) {
        QImage image(200, 30, QImage::Format_RGB32);
        image.fill(Qt::black);
        {
            QPainter painter(&image);
            painter.setRenderHint(QPainter::Antialiasing);
            write(painter);
        }
        double sum = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                sum += image.pixelColor(x, y).lightnessF();
        return sum;
    };
    const double rendered = ink([&](QPainter& painter) {
        painter.setPen(Qt::white);
        painter.setFont(font);
        painter.drawText(5, 20, text);
    });
    const double outlines = ink([&](QPainter& painter) {
        QPainterPath path;
        path.addText(5, 20, font, text);
        painter.fillPath(path, Qt::white);
    });
    EXPECT_LT(rendered / outlines, 1.3);
    EXPECT_GT(rendered / outlines, 0.8);
}

// --- Check box

TEST_F(Styled, CheckBoxesMeasureAndToggleOnTheirWholeLabel) {
    auto* box = place(new QCheckBox(QStringLiteral("选中后自动试听")));
    activate();
    EXPECT_EQ(box->height(), 24);
    const int label = QFontMetrics(box->font()).horizontalAdvance(box->text());
    EXPECT_NEAR(box->width(), 4 + 16 + 8 + label, 2);
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(box->width() - 3, 12));
    EXPECT_TRUE(box->isChecked());
    EXPECT_FALSE(box->hasFocus());
}

TEST_F(Styled, CheckBoxesShowTheirState) {
    auto* box = place(new QCheckBox(QStringLiteral("未选")));
    activate();
    const QPointF inside(4 + 2.5, 12);
    const QPointF edge(4.5, 12);
    EXPECT_TRUE(isColour(colourAt(drawn(*box), inside), MRVTheme::field()));
    EXPECT_TRUE(isColour(colourAt(drawn(*box), edge), MRVTheme::edge()));
    pointAt(box, {10, 12});
    EXPECT_TRUE(isColour(colourAt(drawn(*box), edge), MRVTheme::edgeHover()));
    box->setChecked(true);
    EXPECT_TRUE(isColour(colourAt(drawn(*box), edge), MRVTheme::accentHover()));
    EXPECT_TRUE(holdsColour(drawn(*box), QRect(6, 6, 12, 12), MRVTheme::onAccent(), 20));
    box->setDown(true);
    EXPECT_TRUE(isColour(colourAt(drawn(*box), edge), MRVTheme::accentPressed()));
    box->setDown(false);
    box->setEnabled(false);
    EXPECT_TRUE(isColour(colourAt(drawn(*box), edge), MRVTheme::progressTrack()));
    box->setChecked(false);
    EXPECT_TRUE(isColour(colourAt(drawn(*box), edge), MRVTheme::line()));
    EXPECT_TRUE(isColour(colourAt(drawn(*box), inside), MRVTheme::disabledFill()));
}

TEST_F(Styled, ACheckBoxRingStandsAroundTheBoxAndSpaceToggles) {
    auto* box = place(new QCheckBox(QStringLiteral("未选")));
    activate();
    EXPECT_FALSE(isColour(colourAt(drawn(*box), {0.5, 12}), MRVTheme::accent()));
    tabTo(box);
    const QImage ringed = drawn(*box);
    EXPECT_TRUE(isColour(colourAt(ringed, {0.5, 12}), MRVTheme::accent()));
    EXPECT_TRUE(isColour(colourAt(ringed, {1.5, 12}), MRVTheme::accent()));
    EXPECT_FALSE(isColour(colourAt(ringed, {2.5, 12}), MRVTheme::accent(), 30));
    QTest::keyClick(box, Qt::Key_Space);
    EXPECT_TRUE(box->isChecked());
}

TEST_F(Styled, LayoutsAlignTheBoxNotItsRing) {
    auto* page = place(new QWidget, {100, 100});
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(20, 0, 0, 0);
    auto* box = new QCheckBox(QStringLiteral("生成 FCP 交接文件"));
    column->addWidget(box);
    page->resize(300, 60);
    activate();
    EXPECT_EQ(box->x(), 16);
}

// --- Slider

TEST_F(Styled, SlidersFillUpToTheKnob) {
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(0, 100);
    slider->setValue(50);
    place(slider);
    slider->resize(160, slider->sizeHint().height());
    EXPECT_EQ(slider->height(), 20);
    const QImage image = drawn(*slider);
    EXPECT_TRUE(isColour(colourAt(image, {40, 10}), MRVTheme::accent()));
    EXPECT_TRUE(isColour(colourAt(image, {80, 10}), MRVTheme::ink()));
    EXPECT_TRUE(isColour(colourAt(image, {80, 4.5}), MRVTheme::ink(), 40));
    EXPECT_TRUE(isColour(colourAt(image, {120, 10}), MRVTheme::track()));
    EXPECT_TRUE(isColour(colourAt(image, {120, 6}), MRVTheme::background()));
    slider->setEnabled(false);
    EXPECT_TRUE(isColour(colourAt(drawn(*slider), {80, 10}), MRVTheme::disabledKnob()));
    EXPECT_TRUE(isColour(colourAt(drawn(*slider), {40, 10}), MRVTheme::track()));
}

TEST_F(Styled, AClickOnTheTrackGoesThere) {
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(0, 1000);
    place(slider);
    slider->resize(160, 20);
    activate();
    QTest::mouseClick(slider, Qt::LeftButton, {}, QPoint(80, 10));
    EXPECT_NEAR(slider->value(), 500, 15);
}

// --- Pop-up

TEST_F(Styled, PopUpsMeasureAndDrawAsRaised) {
    auto* popup = new QComboBox;
    popup->addItems({QStringLiteral("25 帧"), QStringLiteral("30 帧")});
    place(popup);
    EXPECT_EQ(popup->height(), 30);
    EXPECT_TRUE(isColour(colourAt(drawn(*popup), {5, 15}), MRVTheme::raised()));
    EXPECT_TRUE(isColour(colourAt(drawn(*popup), {0, 15}), MRVTheme::controlLine()));
    EXPECT_TRUE(holdsColour(drawn(*popup), QRect(popup->width() - 22, 8, 14, 14), MRVTheme::muted(), 30));
    popup->setEnabled(false);
    EXPECT_TRUE(isColour(colourAt(drawn(*popup), {5, 15}), MRVTheme::disabledFill()));
}

TEST_F(Styled, ThePopUpListIsAMenuOnTheSheetColour) {
    auto* popup = new QComboBox;
    popup->addItems({QStringLiteral("25 帧"), QStringLiteral("30 帧"), QStringLiteral("60 帧")});
    place(popup);
    activate();
    popup->showPopup();
    QWidget* list = popup->view()->window();
    waitUntil([&] { return list->isVisible(); }, "the list");
    EXPECT_EQ(popup->view()->sizeHintForRow(0), 28);
    const QImage image = drawn(*list);
    EXPECT_TRUE(isColour(colourAt(image, {3, list->height() / 2.0}), MRVTheme::sheet()));
    EXPECT_TRUE(isColour(colourAt(image, {0, list->height() / 2.0}), MRVTheme::sheetLine()));
    EXPECT_TRUE(holdsColour(image, list->rect(), MRVTheme::accentSoft()));
    QTest::keyClick(popup->view(), Qt::Key_Down);
    QTest::keyClick(popup->view(), Qt::Key_Return);
    EXPECT_EQ(popup->currentIndex(), 1);
}

// --- Menus and tool tips

TEST_F(Styled, MenusMeasureAndHighlightAsDesigned) {
    QMenu menu;
    QAction* copy = menu.addAction(QStringLiteral("拷贝"));
    copy->setShortcut(QKeySequence::Copy);
    menu.addSeparator();
    QAction* paste = menu.addAction(QStringLiteral("粘贴"));
    paste->setEnabled(false);
    activate();
    menu.popup(window().mapToGlobal(QPoint(20, 20)));
    waitUntil([&] { return menu.isVisible(); }, "the menu");
    const QRect first = menu.actionGeometry(copy);
    EXPECT_EQ(first.height(), 28);
    EXPECT_EQ(first.topLeft(), QPoint(6, 6));
    menu.setActiveAction(copy);
    const QImage image = drawn(menu);
    EXPECT_TRUE(
        isColour(colourAt(image, QPointF(first.left() + 4, first.center().y())), MRVTheme::accentSoft()));
    EXPECT_TRUE(isColour(colourAt(image, {3, 40}), MRVTheme::sheet()));
    EXPECT_TRUE(holdsColour(image, first, MRVTheme::ink(), 30));
    const QRect shortcut(first.right() - 50, first.top(), 40, 28);
    EXPECT_FALSE(holdsColour(image, shortcut, MRVTheme::ink(), 30));
    EXPECT_FALSE(holdsColour(image, menu.actionGeometry(paste), MRVTheme::ink(), 30));
    menu.close();
}

TEST_F(Styled, TheMenuBarIsTwentyEightHighAndNamesTheProductInBold) {
    auto* bar = new QMenuBar;
    bar->addMenu(QStringLiteral("MORVANE"));
    QMenu* edit = bar->addMenu(QStringLiteral("编辑"));
    place(bar, {0, 0});
    bar->resize(800, bar->sizeHint().height());
    EXPECT_EQ(bar->height(), 28);
    const QRect first = bar->actionGeometry(bar->actions().first());
    EXPECT_EQ(first.left(), 12);
    EXPECT_EQ(first.width(),
              QFontMetrics(MRVTheme::boldFont(12)).horizontalAdvance(QStringLiteral("MORVANE")) + 16);
    const QRect second = bar->actionGeometry(edit->menuAction());
    EXPECT_TRUE(holdsColour(drawn(*bar), first, MRVTheme::ink(), 20));
    EXPECT_FALSE(holdsColour(drawn(*bar), second, MRVTheme::ink(), 20));
    EXPECT_TRUE(holdsColour(drawn(*bar), second, MRVTheme::muted(), 30));
}

TEST_F(Styled, ToolTipsWaitHalfASecondAndStandOnTheSheetColour) {
    EXPECT_EQ(QApplication::style()->styleHint(QStyle::SH_ToolTip_WakeUpDelay), 500);
    activate();
    QToolTip::showText(window().mapToGlobal(QPoint(50, 50)), QStringLiteral("/run/media/lin"), &window());
    QWidget* tip = nullptr;
    waitUntil(
        [&] {
            for (QWidget* widget : QApplication::topLevelWidgets())
                if (widget->inherits("QTipLabel") && widget->isVisible())
                    tip = widget;
            return tip != nullptr;
        },
        "the tool tip");
    const QFontMetrics metrics(MRVTheme::font(11));
    EXPECT_NEAR(tip->width(), metrics.horizontalAdvance(QStringLiteral("/run/media/lin")) + 16, 2);
    EXPECT_NEAR(tip->height(), metrics.height() + 12, 2);
    EXPECT_TRUE(isColour(colourAt(drawn(*tip), {3, tip->height() / 2.0}), MRVTheme::sheet()));
    EXPECT_TRUE(isColour(colourAt(drawn(*tip), {0, tip->height() / 2.0}), MRVTheme::sheetLine()));
    QToolTip::hideText();
}

// --- Lists

TEST_F(Styled, ScrollBarsLieOverTheContentAndHaveNoTrack) {
    auto* tree = new QTreeWidget;
    tree->setHeaderHidden(true);
    tree->setFrameShape(QFrame::NoFrame);
    for (int row = 0; row < 400; ++row)
        new QTreeWidgetItem(tree, {QStringLiteral("行")});
    place(tree, {0, 0});
    tree->resize(300, 200);
    activate();
    QScrollBar* bar = tree->verticalScrollBar();
    EXPECT_EQ(tree->viewport()->width(), 300);
    EXPECT_EQ(bar->width(), 10);
    EXPECT_EQ(bar->mapTo(tree, QPoint(0, 0)).x(), 290);
    const QImage image = drawn(*tree);
    const QPointF thumb(295, 20);
    EXPECT_TRUE(isColour(colourAt(image, thumb), MRVTheme::scrollThumb()));
    EXPECT_TRUE(isColour(colourAt(image, {290.5, 20}), MRVTheme::panel()));
    EXPECT_TRUE(isColour(colourAt(image, {299.5, 20}), MRVTheme::panel()));
    EXPECT_TRUE(isColour(colourAt(image, {295, 150}), MRVTheme::panel()));
    // 32 long at least, although a row in four hundred would be less.
    EXPECT_TRUE(isColour(colourAt(image, {295, 4 + 30}), MRVTheme::scrollThumb()));
    pointAt(bar, {5, 20});
    EXPECT_TRUE(isColour(colourAt(drawn(*tree), thumb), MRVTheme::scrollThumbHover()));
    // A press below the thumb pages.
    QTest::mouseClick(bar, Qt::LeftButton, {}, QPoint(5, 180));
    EXPECT_GT(bar->value(), 0);
}

TEST_F(Styled, TreesShowChevrons) {
    auto* tree = new QTreeWidget;
    tree->setHeaderHidden(true);
    tree->setFrameShape(QFrame::NoFrame);
    auto* top = new QTreeWidgetItem(tree, {QStringLiteral("影像素材A")});
    new QTreeWidgetItem(top, {QStringLiteral("子")});
    place(tree, {0, 0});
    tree->resize(200, 100);
    const QRect branch(0, tree->visualItemRect(top).top(), tree->visualItemRect(top).left(),
                       tree->visualItemRect(top).height());
    const QImage closed = drawn(*tree);
    EXPECT_TRUE(holdsColour(closed, branch, MRVTheme::faint(), 40));
    top->setExpanded(true);
    EXPECT_TRUE(holdsColour(drawn(*tree), branch, MRVTheme::faint(), 40));
    EXPECT_NE(drawn(*tree).copy(branch), closed.copy(branch));
}

// --- Separators and frames

TEST_F(Styled, SplitterHandlesAreALineThatLightsUp) {
    auto* splitter = new QSplitter;
    splitter->setHandleWidth(1);
    for (int pane = 0; pane < 2; ++pane)
        splitter->addWidget(new QWidget);
    place(splitter, {0, 0});
    splitter->resize(400, 100);
    splitter->setSizes({200, 199});
    activate();
    QWidget* handle = splitter->handle(1);
    EXPECT_TRUE(isColour(colourAt(drawn(window()), {200, 50}), MRVTheme::line()));
    EXPECT_TRUE(isColour(colourAt(drawn(window()), {199, 50}), MRVTheme::background()));
    EXPECT_TRUE(isColour(colourAt(drawn(window()), {201, 50}), MRVTheme::background()));
    EXPECT_GT(handle->width(), 1);  // easy to grab
    pointAt(handle, handle->rect().center());
    EXPECT_TRUE(isColour(colourAt(drawn(window()), {200, 50}), MRVTheme::accentLine()));
}

TEST_F(Styled, FrameLinesAreHairlines) {
    auto* line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    place(line, {10, 10});
    line->resize(100, 1);
    EXPECT_TRUE(isColour(colourAt(drawn(window()), {50, 10}), MRVTheme::line()));
    EXPECT_TRUE(isColour(colourAt(drawn(window()), {50, 11}), MRVTheme::background()));
}

TEST_F(Styled, TextViewsAreRoundedPanels) {
    auto* text = place(new QPlainTextEdit);
    text->resize(200, 100);
    const QImage image = drawn(*text);
    EXPECT_TRUE(isColour(colourAt(image, {0, 50}), MRVTheme::line()));
    EXPECT_TRUE(isColour(colourAt(image, {3, 50}), MRVTheme::panel()));
    EXPECT_TRUE(isColour(colourAt(image, {0, 0}), MRVTheme::background(), 8));
}

}  // namespace
}  // namespace morvane
