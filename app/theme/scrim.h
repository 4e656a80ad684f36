// The veil over a window while a sheet is on it, with the sheet's shadow.
#pragma once

#include <QImage>
#include <QRect>
#include <QWidget>

namespace morvane {

/// Covers its window above everything else in it and takes every click. Appears in 120 ms.
class Scrim : public QWidget {
    Q_OBJECT

public:
    explicit Scrim(QWidget* window, QObject* owner);

    /// Fills the window; the shadow belongs to `sheet`, in the window's coordinates.
    void cover(const QRect& sheet);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QRect sheet_;
    double shown_ = 1;
    QImage shadow_;
};

}  // namespace morvane
