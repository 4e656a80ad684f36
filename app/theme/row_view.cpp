#include "app/theme/row_view.h"

#include "app/theme/paint.h"
#include "app/theme/theme.h"

#include <QPainter>

namespace morvane {

namespace {

constexpr int insetX = 4;
constexpr int insetY = 2;
constexpr qreal radius = 7;
constexpr int tickWidth = 2;
constexpr int tickHeight = 16;
constexpr qreal ringWidth = 1.5;

}  // namespace

void MRVRowView::drawSelection(QPainter& painter, const QRect& row, States states) {
    const QRectF fill = QRectF(row).adjusted(insetX, insetY, -insetX, -insetY);
    Box box{radius, QColor(), QColor()};
    if (states.testFlag(Selected))
        box.fill = MRVTheme::accentSoft();
    else if (states.testFlag(Hovered))
        box.fill = MRVTheme::rowHover();
    paintBox(painter, fill, box);
    if (states.testFlag(Selected)) {
        QRectF tick(fill.left(), 0, tickWidth, tickHeight);
        tick.moveTop(fill.center().y() - tickHeight / 2.0);
        tick = snapToDevice(painter, tick);
        tick.setWidth(wholePixels(painter, tickWidth));
        paintBox(painter, tick, {1, MRVTheme::accent(), QColor()});
    }
    if (states.testFlag(Focused) && states.testFlag(Current))
        paintBox(painter, fill, {radius, QColor(), MRVTheme::accent(), ringWidth});
}

}  // namespace morvane
