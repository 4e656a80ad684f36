// What the lists of rows in the organizer have in common.
#pragma once

class QListView;

namespace morvane {

/// A list without frame or background of its own, of rows of one height that are only read: scrolls by
/// pixels, never sideways, and follows the pointer for the hover colour.
void setUpRowList(QListView& list);

}  // namespace morvane
