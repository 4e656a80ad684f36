// Something is going on.
#pragma once

#include <QColor>
#include <QVariantAnimation>
#include <QWidget>

namespace morvane {

/// A turning arc, one turn in 900 ms, `size` logical pixels square; still, as an ellipsis, under reduced
/// motion. Turns only while it is visible.
class Spinner : public QWidget {
    Q_OBJECT

public:
    Spinner(int size, QColor color, QWidget* parent = nullptr);

    void setColor(const QColor& color);

    QSize sizeHint() const override { return {size_, size_}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    const int size_;
    QColor color_;
    QVariantAnimation turn_;
};

}  // namespace morvane
