// One choice of a few, side by side in one widget and one tab stop.
#pragma once

#include <QRect>
#include <QStringList>
#include <QWidget>

namespace morvane {

/// Large: 32 high, segments 88 wide. Small: 28 high, 13 px of room beside each label. Arrow keys, Home and
/// End choose; a click chooses on release. Assistive tools see a group of radio buttons, one a segment; name
/// the group with setAccessibleName.
class SegmentedControl : public QWidget {
    Q_OBJECT

public:
    enum class Size { Large, Small };

    SegmentedControl(QStringList labels, Size size, QWidget* parent = nullptr);

    int count() const { return static_cast<int>(labels_.size()); }
    const QString& label(int segment) const { return labels_.at(segment); }
    int selectedSegment() const { return selected_; }
    /// Selects without a signal. A segment out of range changes nothing.
    void setSelectedSegment(int segment);
    /// Where a segment is, in this widget's coordinates.
    QRect segmentRect(int segment) const;
    /// Chooses as the user does: selects and signals when it was not selected. Nothing while disabled.
    void choose(int segment);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    /// The user chose another segment; selectedSegment() is it already. Never for the selected one.
    void segmentChosen(int segment);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    int segmentAt(const QPoint& position) const;
    int segmentWidth(int segment) const;
    void setHovered(int segment);
    void paintSegment(QPainter& painter, int segment) const;

    const QStringList labels_;
    const Size size_;
    int selected_ = 0;
    int hovered_ = -1;
    int pressed_ = -1;
};

}  // namespace morvane
