// The window around the workspaces: initial values, the status glyph's rule, header and close rule.
#include "app/window_frame.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include "app/theme/elided_label.h"
#include "app/theme/keyboard_window.h"
#include "app/theme/push_button.h"
#include "app/theme/search_field.h"
#include "app/theme/segmented_control.h"
#include "app/theme/spinner.h"
#include "app/theme/symbol_view.h"
#include "app/theme/theme.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using test::waitUntil;

struct GlyphRow {
    StatusFacts facts;
    StatusGlyph glyph;
};

class GlyphRule : public testing::TestWithParam<GlyphRow> {};

TEST_P(GlyphRule, FollowsTheState) {
    EXPECT_EQ(statusGlyphFor(GetParam().facts), GetParam().glyph);
}

constexpr Workspace library = Workspace::Management;
constexpr Workspace organizer = Workspace::Organizer;

INSTANTIATE_TEST_SUITE_P(
    Table, GlyphRule,
    testing::Values(GlyphRow{{library, false, false, false, false}, StatusGlyph::None},
                    GlyphRow{{library, true, false, false, false}, StatusGlyph::Busy},
                    GlyphRow{{library, false, true, true, true}, StatusGlyph::Busy},
                    GlyphRow{{library, false, false, true, false}, StatusGlyph::Warning},
                    GlyphRow{{library, false, false, true, true}, StatusGlyph::Warning},
                    GlyphRow{{library, false, false, false, true}, StatusGlyph::OfflineRoot},
                    GlyphRow{{organizer, false, false, true, true}, StatusGlyph::None},
                    GlyphRow{{organizer, false, true, false, false}, StatusGlyph::Busy}));

class Frame : public testing::Test {
protected:
    Frame() {
        management_ = new QWidget;
        organizer_ = new QWidget;
    }
    void build() {
        static const bool themed = (MRVTheme::install(*qApp), true);
        ASSERT_TRUE(themed);
        frame_.build(management_, organizer_);
        frame_.window()->resize(1340, 840);  // also on a smaller screen
        frame_.showWorkspace(Workspace::Management);
        frame_.window()->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(frame_.window()));
    }
    template <class Widget>
    Widget* statusPart() {
        return frame_.status().parentWidget()->findChild<Widget*>();
    }
    QString detail() {
        for (auto* label : frame_.window()->findChildren<ElidedLabel*>("detail"))
            if (label->isVisible())
                return label->text();
        return {};
    }

    QWidget* management_;
    QWidget* organizer_;
    WindowFrame frame_;
};

TEST_F(Frame, HasItsFixedControlsBeforeTheWindow) {
    EXPECT_EQ(frame_.window(), nullptr);
    EXPECT_EQ(frame_.addFolderButton(), nullptr);
    EXPECT_EQ(frame_.workspaceControl().count(), 2);
    EXPECT_EQ(frame_.workspaceControl().label(0), "管理素材");
    EXPECT_EQ(frame_.workspaceControl().label(1), "整理素材");
    EXPECT_EQ(frame_.workspaceControl().selectedSegment(), 0);
    EXPECT_EQ(frame_.status().text(), "正在读取素材库…");
    EXPECT_EQ(frame_.refreshButton().text(), "刷新索引");
    EXPECT_EQ(frame_.search().text(), "");
    delete management_;
    delete organizer_;
}

TEST_F(Frame, HasTheDesignedMeasures) {
    build();
    EXPECT_EQ(frame_.window()->windowTitle(), "MORVANE 素材助手");
    EXPECT_EQ(frame_.window()->minimumSize(),
              QSize(1100, 650).boundedTo(frame_.window()->screen()->availableSize()));
    EXPECT_EQ(frame_.window()->menuBar()->height(), 28);
    EXPECT_EQ(frame_.workspaceControl().mapTo(frame_.window(), QPoint(0, 0)).x(), 257);
    EXPECT_EQ(frame_.workspaceHost().mapTo(frame_.window(), QPoint(0, 0)).y(), 28 + 96);
    const int right = frame_.addFolderButton()->mapTo(frame_.window(), QPoint(0, 0)).x() +
                      frame_.addFolderButton()->width();
    EXPECT_EQ(right, frame_.window()->width() - 20);
    EXPECT_GE(frame_.search().width(), 300);
    EXPECT_EQ(frame_.search().placeholderText(), "搜索名称、分类、关键词…");
    EXPECT_EQ(frame_.status().parentWidget()->height(), 28);
    EXPECT_EQ(frame_.addFolderButton()->text(), "添加文件夹…");
    EXPECT_EQ(frame_.addFolderButton()->symbol(), "folder.badge.plus");
}

TEST_F(Frame, TheSearchFieldGivesWayOnASmallScreen) {
    build();
    frame_.window()->setMinimumSize(800, 600);  // as on a screen of that size
    const auto overlaps = [this] {
        const QWidget* const row[] = {&frame_.workspaceControl(), &frame_.search(), &frame_.refreshButton(),
                                      frame_.addFolderButton()};
        for (std::size_t i = 1; i < std::size(row); ++i)
            if (row[i]->x() <= row[i - 1]->geometry().right())
                return true;
        return row[3]->geometry().right() >= frame_.window()->width() - 20;
    };
    for (const int width : {1340, 1100, 1099, 930, 800}) {
        frame_.window()->resize(width, 700);
        ASSERT_TRUE(waitUntil([&] { return !overlaps(); })) << width;
        EXPECT_EQ(frame_.search().minimumWidth() == 300, width >= 1100) << width;
    }
    EXPECT_LT(frame_.search().width(), 300);
    frame_.window()->resize(1340, 700);
    EXPECT_TRUE(waitUntil([this] { return frame_.search().width() == 340; }));
}

TEST_F(Frame, ShowsOneWorkspaceWithItsHeader) {
    build();
    EXPECT_TRUE(management_->isVisible());
    EXPECT_FALSE(organizer_->isVisible());
    EXPECT_EQ(detail(), "管理素材，准备每一次剪辑");
    const QPoint place = frame_.workspaceControl().mapTo(frame_.window(), QPoint(0, 0));

    frame_.showWorkspace(Workspace::Organizer);
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(management_->isVisible());
    EXPECT_TRUE(organizer_->isVisible());
    EXPECT_FALSE(frame_.search().isVisible());
    EXPECT_FALSE(frame_.refreshButton().isVisible());
    EXPECT_FALSE(frame_.addFolderButton()->isVisible());
    EXPECT_EQ(detail(), "整理素材，交接每一次拍摄");
    EXPECT_EQ(frame_.workspaceControl().mapTo(frame_.window(), QPoint(0, 0)), place);
    EXPECT_EQ(frame_.workspace(), Workspace::Management);  // the control itself is untouched

    frame_.showWorkspace(Workspace::Management);
    EXPECT_TRUE(frame_.search().isVisible());
    EXPECT_TRUE(frame_.refreshButton().isVisible());
    EXPECT_TRUE(frame_.addFolderButton()->isVisible());
}

TEST_F(Frame, ASwitchLeavesTheKeyboardWhereItWasInEachWorkspace) {
    auto* list = new QPushButton(management_);
    auto* name = new QPushButton(organizer_);
    auto* footerButton = new QPushButton(organizer_);
    for (QPushButton* button : {list, name, footerButton})
        button->setFocusPolicy(Qt::TabFocus);
    build();
    frame_.search().setFocus(Qt::MouseFocusReason);
    frame_.showWorkspace(Workspace::Organizer);
    EXPECT_EQ(frame_.window()->focusWidget(), name) << "the first control: nothing had it there yet";
    frame_.showWorkspace(Workspace::Organizer);
    EXPECT_EQ(frame_.window()->focusWidget(), name) << "nothing was switched";
    frame_.showWorkspace(Workspace::Management);
    list->setFocus(Qt::MouseFocusReason);
    frame_.showWorkspace(Workspace::Organizer);
    EXPECT_EQ(frame_.window()->focusWidget(), name);
    frame_.showWorkspace(Workspace::Management);
    EXPECT_EQ(frame_.window()->focusWidget(), list);
    name->setEnabled(false);
    frame_.showWorkspace(Workspace::Organizer);
    EXPECT_EQ(frame_.window()->focusWidget(), footerButton);
    frame_.showWorkspace(Workspace::Management);
    footerButton->hide();
    frame_.showWorkspace(Workspace::Organizer);
    EXPECT_EQ(frame_.window()->focusWidget(), &frame_.workspaceControl());
}

TEST_F(Frame, ASwitchFromTheKeyboardKeepsIt) {
    auto* name = new QPushButton(organizer_);
    build();
    name->setFocus();
    QTest::keyClick(frame_.window(), Qt::Key_Shift);  // no click came before
    frame_.workspaceControl().setFocus(Qt::TabFocusReason);
    for (const Workspace workspace : {Workspace::Organizer, Workspace::Management}) {
        frame_.showWorkspace(workspace);
        EXPECT_EQ(frame_.window()->focusWidget(), &frame_.workspaceControl());
    }
}

TEST_F(Frame, ReportsWhatTheUserDoes) {
    build();
    QSignalSpy switched(&frame_, &WindowFrame::workspaceChanged);
    QSignalSpy searched(&frame_, &WindowFrame::searchChanged);
    QSignalSpy refreshed(&frame_, &WindowFrame::refreshRequested);
    QSignalSpy added(&frame_, &WindowFrame::addFolderRequested);
    frame_.workspaceControl().setSelectedSegment(1);
    EXPECT_EQ(switched.size(), 0);
    frame_.workspaceControl().choose(0);
    EXPECT_EQ(switched.size(), 1);
    QTest::keyClicks(&frame_.search(), "abc");
    EXPECT_EQ(searched.size(), 3);
    QTest::mouseClick(&frame_.refreshButton(), Qt::LeftButton);
    EXPECT_EQ(refreshed.size(), 1);
    QTest::mouseClick(frame_.addFolderButton(), Qt::LeftButton);
    EXPECT_EQ(added.size(), 1);
}

TEST_F(Frame, TheBusyGlyphComesOnlyAfterItsDelay) {
    build();
    QElapsedTimer clock;
    clock.start();
    frame_.setStatusGlyph(StatusGlyph::Busy);
    EXPECT_FALSE(statusPart<Spinner>()->isVisible());
    EXPECT_TRUE(waitUntil([&] { return statusPart<Spinner>()->isVisible(); }));
    EXPECT_GE(clock.elapsed(), WindowFrame::busyDelay - 20);
    frame_.setStatusGlyph(StatusGlyph::None);
    EXPECT_FALSE(statusPart<Spinner>()->isVisible());
}

TEST_F(Frame, AShortBusyTimeShowsNothing) {
    build();
    frame_.setStatusGlyph(StatusGlyph::Busy);
    frame_.setStatusGlyph(StatusGlyph::None);
    QElapsedTimer clock;
    clock.start();
    EXPECT_TRUE(waitUntil([&] { return clock.elapsed() > WindowFrame::busyDelay + 100; }));
    EXPECT_FALSE(statusPart<Spinner>()->isVisible());
}

TEST_F(Frame, WarningAndOfflineGlyphsShowAtOnce) {
    build();
    frame_.setStatusGlyph(StatusGlyph::Warning);
    EXPECT_TRUE(statusPart<SymbolView>()->isVisible());
    EXPECT_EQ(statusPart<SymbolView>()->symbol(), "exclamationmark.triangle");
    frame_.setStatusGlyph(StatusGlyph::OfflineRoot);
    EXPECT_EQ(statusPart<SymbolView>()->symbol(), "externaldrive.badge.xmark");
    frame_.setStatusGlyph(StatusGlyph::None);
    EXPECT_FALSE(statusPart<SymbolView>()->isVisible());
}

TEST_F(Frame, ClosesOnlyWhenAllowed) {
    build();
    int asked = 0;
    bool allowed = false;
    frame_.windowShouldClose = [&] {
        ++asked;
        return allowed;
    };
    EXPECT_FALSE(frame_.window()->close());
    EXPECT_TRUE(frame_.window()->isVisible());
    EXPECT_EQ(asked, 1);
    allowed = true;
    EXPECT_TRUE(frame_.window()->close());
    EXPECT_FALSE(frame_.window()->isVisible());
    EXPECT_EQ(asked, 2);
}

TEST_F(Frame, ALongStatusIsElidedAndNeverWidensTheWindow) {
    build();
    frame_.window()->resize(1100, 650);
    frame_.setStatus(QString(400, QChar(0x7d20)));
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(frame_.window()->width(), 1100);
    EXPECT_TRUE(frame_.status().isElided());
}

}  // namespace
}  // namespace morvane
