#include "organizer_ui/row_list.h"

#include <QListView>

namespace morvane {

void setUpRowList(QListView& list) {
    list.setFrameShape(QFrame::NoFrame);
    list.setUniformItemSizes(true);
    list.setEditTriggers(QAbstractItemView::NoEditTriggers);
    list.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list.setMouseTracking(true);
    list.setAutoFillBackground(false);
    list.viewport()->setAutoFillBackground(false);
}

}  // namespace morvane
