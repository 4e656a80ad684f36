// Rows of the list as ranges, so that a selection of a million rows is one small value.
#pragma once

#include <cstddef>
#include <vector>

namespace morvane {

/// Row numbers from `first` to `last`, both included.
struct RowRange {
    int first = 0;
    int last = 0;
    bool operator==(const RowRange&) const = default;
};

/// Number of rows in ranges that do not overlap.
std::size_t countRows(const std::vector<RowRange>& ranges);

/// The rows an action applies to: `clickedRow` alone when it is a row (not -1) outside the `selected` ranges,
/// otherwise the selected ones.
std::vector<RowRange> actionRows(int clickedRow, const std::vector<RowRange>& selected);

}  // namespace morvane
