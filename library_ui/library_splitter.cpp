#include "library_ui/library_splitter.h"

namespace morvane {

LibrarySplitter::LibrarySplitter(QWidget* tree, QWidget* list, QWidget* preview) {
    setChildrenCollapsible(false);
    setHandleWidth(pane::handle);
    setMinimumWidth(pane::leastTotal);
    tree->setMinimumWidth(pane::leastTree);
    list->setMinimumWidth(pane::leastList);
    preview->setMinimumWidth(pane::leastPreview);
    preview->setMaximumWidth(pane::mostPreview);
    for (QWidget* each : {tree, list, preview})
        addWidget(each);
    connect(this, &QSplitter::splitterMoved, this, [this](int, int divider) { dividerMoved(divider); });
}

void LibrarySplitter::setWanted(const LibraryLayout& layout) {
    wanted_ = layout;
    fit();
}

void LibrarySplitter::resizeEvent(QResizeEvent* event) {
    QSplitter::resizeEvent(event);
    fit();
}

void LibrarySplitter::fit() {
    const PaneWidths widths = fitPanes(width(), wanted_);
    setSizes({widths.tree, widths.list, widths.preview});
}

void LibrarySplitter::dividerMoved(int divider) {
    // Only the pane the user drew at is wanted so: the other may be narrower than wanted for want of room.
    if (divider == 1)
        wanted_.treeWidth = sizes().at(0);
    else
        wanted_.previewWidth = sizes().at(2);
    Q_EMIT wantedChanged();
}

}  // namespace morvane
