#include "library_ui/row_range.h"

#include <algorithm>

namespace morvane {

std::size_t countRows(const std::vector<RowRange>& ranges) {
    std::size_t count = 0;
    for (const RowRange& range : ranges)
        count += static_cast<std::size_t>(range.last - range.first) + 1;
    return count;
}

std::vector<RowRange> actionRows(int clickedRow, const std::vector<RowRange>& selected) {
    const bool inside = std::any_of(selected.begin(), selected.end(), [clickedRow](const RowRange& range) {
        return clickedRow >= range.first && clickedRow <= range.last;
    });
    if (clickedRow >= 0 && !inside)
        return {{clickedRow, clickedRow}};
    return selected;
}

}  // namespace morvane
