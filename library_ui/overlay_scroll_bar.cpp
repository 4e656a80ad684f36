#include "library_ui/overlay_scroll_bar.h"

#include <QAbstractScrollArea>
#include <QEvent>

namespace morvane {

namespace {
constexpr int barWidth = 10;
}  // namespace

OverlayScrollBar::OverlayScrollBar(QAbstractScrollArea* area) : QScrollBar(Qt::Vertical, area), area_(area) {
    area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    QScrollBar* inner = area->verticalScrollBar();
    connect(inner, &QScrollBar::rangeChanged, this, &OverlayScrollBar::follow);
    connect(inner, &QScrollBar::valueChanged, this, &QScrollBar::setValue);
    connect(this, &QScrollBar::valueChanged, inner, &QScrollBar::setValue);
    area->viewport()->installEventFilter(this);
    follow();
}

void OverlayScrollBar::follow() {
    const QScrollBar* inner = area_->verticalScrollBar();
    setPageStep(inner->pageStep());
    setSingleStep(inner->singleStep());
    setRange(inner->minimum(), inner->maximum());
    setValue(inner->value());
    setVisible(inner->maximum() > inner->minimum());
    place();
}

void OverlayScrollBar::place() {
    const QRect room = area_->viewport()->geometry();
    setGeometry(room.right() + 1 - barWidth, room.top(), barWidth, room.height());
    raise();
}

bool OverlayScrollBar::eventFilter(QObject* /*watched*/, QEvent* event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move || event->type() == QEvent::Show)
        follow();
    return false;
}

}  // namespace morvane
