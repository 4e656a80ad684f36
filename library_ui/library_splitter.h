// The three panes side by side, kept at the widths fitPanes gives.
#pragma once

#include "library_ui/library_layout.h"

#include <QSplitter>

namespace morvane {

class LibrarySplitter final : public QSplitter {
    Q_OBJECT
public:
    LibrarySplitter(QWidget* tree, QWidget* list, QWidget* preview);

    /// Only the pane widths of `layout` are looked at.
    void setWanted(const LibraryLayout& layout);
    int wantedTree() const { return wanted_.treeWidth; }
    int wantedPreview() const { return wanted_.previewWidth; }

Q_SIGNALS:
    /// The user moved a divider.
    void wantedChanged();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void fit();
    void dividerMoved(int divider);

    LibraryLayout wanted_;
};

}  // namespace morvane
