#include "library_ui/library_layout.h"

#include <algorithm>

namespace morvane {

PaneWidths fitPanes(int total, const LibraryLayout& wanted) {
    const int room = total - 2 * pane::handle;
    int tree = std::max(wanted.treeWidth, pane::leastTree);
    int preview = std::clamp(wanted.previewWidth, pane::leastPreview, pane::mostPreview);
    preview = std::clamp(room - tree - pane::wholeList, pane::leastPreview, preview);
    tree = std::max(std::min(tree, room - preview - pane::leastList), pane::leastTree);
    return {.tree = tree, .list = std::max(room - tree - preview, 0), .preview = preview};
}

ColumnWidths fitColumns(int total, const LibraryLayout& wanted) {
    const int room = total - 3 * column::spacing;
    int name = std::max(wanted.nameWidth, column::leastName);
    int folder = std::max(wanted.folderWidth, column::leastFolder);
    folder = std::max(std::min(folder, room - name - column::leastSize), column::leastFolder);
    name = std::max(std::min(name, room - folder - column::leastSize), column::leastName);
    return {.name = name, .folder = folder, .size = std::max(room - name - folder, column::leastSize)};
}

}  // namespace morvane
