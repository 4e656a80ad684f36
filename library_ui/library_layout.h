// How wide panes and columns are: what the user chose, and what a given width makes of it. Logical pixels.
#pragma once

namespace morvane {

/// Widths as the user left them; kept in the UI state file by the owner of the window.
struct LibraryLayout {
    int treeWidth = 240;
    int previewWidth = 384;
    int nameWidth = 260;
    int folderWidth = 150;
    bool operator==(const LibraryLayout&) const = default;
};

namespace pane {
inline constexpr int leastTree = 200;
inline constexpr int leastList = 450;
inline constexpr int leastPreview = 320;
inline constexpr int mostPreview = 480;
/// Narrower than this the list's three columns no longer stand whole.
inline constexpr int wholeList = 509;
inline constexpr int handle = 1;
/// Narrower than this the panes no longer stand side by side: the workspace scrolls.
inline constexpr int leastTotal = leastTree + leastList + leastPreview + 2 * handle;
}  // namespace pane

namespace column {
inline constexpr int leastName = 140;
inline constexpr int leastFolder = 60;
inline constexpr int leastSize = 60;
inline constexpr int initialSize = 75;
/// Part of every section beside the column's own width.
inline constexpr int spacing = 8;
}  // namespace column

struct PaneWidths {
    int tree = 0;
    int list = 0;
    int preview = 0;
    bool operator==(const PaneWidths&) const = default;
};
/// Panes for a workspace `total` wide. When it narrows the list gives first down to wholeList, then the
/// preview down to leastPreview, then the list down to leastList, last the tree down to leastTree.
PaneWidths fitPanes(int total, const LibraryLayout& wanted);

struct ColumnWidths {
    int name = 0;
    int folder = 0;
    int size = 0;
    bool operator==(const ColumnWidths&) const = default;
};
/// Columns for a list `total` wide; the size column takes what is left. When there is not enough room the
/// folder column gives first, then the name column, each down to its least width.
ColumnWidths fitColumns(int total, const LibraryLayout& wanted);

}  // namespace morvane
