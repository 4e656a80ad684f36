// The three panes side by side, in a view that may be narrower than they need.
#include "library_ui/library_splitter.h"

#include "library_ui/library_view.h"
#include "tests/library_ui/library_fixture.h"
#include "tests/test_support.h"

#include <gtest/gtest.h>

#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>

namespace morvane::test {
namespace {

TEST(LibrarySplitter, ScrollsSidewaysWhereThePanesDoNotFit) {
    Workspace space;
    auto* splitter = space.view->findChild<QSplitter*>();
    const QScrollBar* bar =
        qobject_cast<QScrollArea*>(splitter->parentWidget()->parentWidget())->horizontalScrollBar();
    const auto scrolls = [&](int width) {
        space.window->resize(width, 548);
        return waitUntil([&] {
            return space.view->width() == width && bar->maximum() == std::max(0, pane::leastTotal - width) &&
                   splitter->width() == std::max(pane::leastTotal, width);
        });
    };
    EXPECT_TRUE(scrolls(pane::leastTotal));
    EXPECT_EQ(splitter->height(), space.view->height());
    EXPECT_TRUE(scrolls(930));
    EXPECT_EQ(splitter->sizes(), (QList<int>{pane::leastTree, pane::leastList, pane::leastPreview}));
    for (int i = 1; i < 3; ++i)
        EXPECT_GT(splitter->widget(i)->x(), splitter->widget(i - 1)->geometry().right())
            << "one pane covers another";
    EXPECT_TRUE(scrolls(1340));
    EXPECT_EQ(splitter->height(), space.view->height());
}

}  // namespace
}  // namespace morvane::test
