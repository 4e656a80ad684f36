// How a row of a list or tree shows that it is selected, under the pointer, or current.
#pragma once

#include <QFlags>
#include <QRect>

class QPainter;

namespace morvane {

/// Painting only: lists of a million rows have no widget a row. Content painted over it keeps its own
/// colours.
struct MRVRowView {
    enum State {
        Plain = 0,
        Selected = 1,
        Hovered = 2,
        Focused = 4,  ///< the view shows keyboard focus (focusRingShown)
        Current = 8   ///< the row the keyboard acts on; its ring shows while Focused
    };
    Q_DECLARE_FLAGS(States, State)

    /// The row's bounds inset by 4 and 2, radius 7: accentSoft and an accent tick at the leading edge when
    /// selected, rowHover when hovered, a ring of 1.5 px inside it when focused and current.
    static void drawSelection(QPainter& painter, const QRect& row, States states);
};
Q_DECLARE_OPERATORS_FOR_FLAGS(MRVRowView::States)

}  // namespace morvane
