#include "app/theme/segmented_control.h"

#include "app/theme/focus_ring.h"
#include "app/theme/paint.h"
#include "app/theme/theme.h"

#include <QAccessible>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace morvane {

namespace {

constexpr int largeHeight = 32;
constexpr int largeSegment = 88;
constexpr int smallHeight = 28;
constexpr int smallPadding = 13;
constexpr int focusRing = 2;

}  // namespace

SegmentedControl::SegmentedControl(QStringList labels, Size size, QWidget* parent)
    : QWidget(parent), labels_(std::move(labels)), size_(size) {
    setFont(MRVTheme::font(12));
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

int SegmentedControl::segmentWidth(int segment) const {
    if (size_ == Size::Large)
        return largeSegment;
    return 2 * smallPadding +
           static_cast<int>(std::ceil(QFontMetricsF(font()).horizontalAdvance(label(segment))));
}

QSize SegmentedControl::sizeHint() const {
    int width = 0;
    for (int segment = 0; segment < count(); ++segment)
        width += segmentWidth(segment);
    return {width, size_ == Size::Large ? largeHeight : smallHeight};
}

QRect SegmentedControl::segmentRect(int segment) const {
    int left = 0;
    for (int before = 0; before < segment; ++before)
        left += segmentWidth(before);
    return {left, 0, segmentWidth(segment), height()};
}

int SegmentedControl::segmentAt(const QPoint& position) const {
    for (int segment = 0; segment < count(); ++segment)
        if (segmentRect(segment).contains(position))
            return segment;
    return -1;
}

void SegmentedControl::setSelectedSegment(int segment) {
    if (segment < 0 || segment >= count() || segment == selected_)
        return;
    selected_ = segment;
    update();
    if (QAccessible::isActive()) {
        QAccessible::State changed;
        changed.checked = true;
        QAccessibleStateChangeEvent event(this, changed);
        event.setChild(segment);
        QAccessible::updateAccessibility(&event);
        if (hasFocus()) {
            QAccessibleEvent focus(this, QAccessible::Focus);
            focus.setChild(segment);
            QAccessible::updateAccessibility(&focus);
        }
    }
}

void SegmentedControl::choose(int segment) {
    if (!isEnabled() || segment < 0 || segment >= count() || segment == selected_)
        return;
    setSelectedSegment(segment);
    Q_EMIT segmentChosen(segment);
}

void SegmentedControl::setHovered(int segment) {
    if (hovered_ == segment)
        return;
    hovered_ = segment;
    update();
}

bool SegmentedControl::event(QEvent* event) {
    switch (event->type()) {
        case QEvent::HoverEnter:
        case QEvent::HoverMove:
            setHovered(segmentAt(static_cast<QHoverEvent*>(event)->position().toPoint()));
            break;
        case QEvent::HoverLeave:
            setHovered(-1);
            break;
        default:
            break;
    }
    return QWidget::event(event);
}

void SegmentedControl::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    pressed_ = segmentAt(event->position().toPoint());
    update();
}

void SegmentedControl::mouseMoveEvent(QMouseEvent* event) {
    setHovered(segmentAt(event->position().toPoint()));
}

void SegmentedControl::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    const int segment = pressed_;
    pressed_ = -1;
    update();
    if (segment >= 0 && segment == segmentAt(event->position().toPoint()))
        choose(segment);
}

void SegmentedControl::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Left:
        case Qt::Key_Up:
            choose(std::max(0, selected_ - 1));
            break;
        case Qt::Key_Right:
        case Qt::Key_Down:
            choose(std::min(count() - 1, selected_ + 1));
            break;
        case Qt::Key_Home:
            choose(0);
            break;
        case Qt::Key_End:
            choose(count() - 1);
            break;
        default:
            QWidget::keyPressEvent(event);
    }
}

void SegmentedControl::changeEvent(QEvent* event) {
    if (event->type() == QEvent::EnabledChange) {
        pressed_ = -1;
        hovered_ = -1;
        update();
    }
    QWidget::changeEvent(event);
}

void SegmentedControl::paintSegment(QPainter& painter, int segment) const {
    const qreal radius = size_ == Size::Large ? 8 : 7;
    const bool on = segment == selected_;
    const bool down = segment == pressed_ && segment == hovered_;
    const bool over = segment == hovered_ && pressed_ < 0;
    const QRect rect = segmentRect(segment);
    QColor text = on ? MRVTheme::accent() : MRVTheme::muted();
    if (on) {
        Box box{radius, MRVTheme::accentSoft(), MRVTheme::accentLine()};
        if (!isEnabled())
            box = {radius, MRVTheme::disabledFill(), MRVTheme::controlLine()};
        else if (focusRingShown(this))
            box = {radius, MRVTheme::accentSoft(), MRVTheme::accent(), focusRing};
        paintBox(painter, rect, box);
    } else if (down || over) {
        const qreal inset = hairlineWidth(painter);  // the trough's border stays whole
        paintBox(painter, QRectF(rect).adjusted(inset, inset, -inset, -inset),
                 {radius - inset, down ? MRVTheme::accentSoft() : MRVTheme::rowHover(), QColor()});
        text = down ? MRVTheme::accent() : MRVTheme::ink();
    }
    painter.setPen(isEnabled() ? text : MRVTheme::disabledText());
    painter.setFont(font());
    painter.drawText(rect, Qt::AlignCenter, label(segment));
}

void SegmentedControl::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const qreal radius = size_ == Size::Large ? 8 : 7;
    const QRect trough(0, 0, sizeHint().width(), height());
    paintBox(painter, trough, {radius, MRVTheme::field(), MRVTheme::line()});
    for (int segment = 0; segment < count(); ++segment)
        paintSegment(painter, segment);
}

}  // namespace morvane
