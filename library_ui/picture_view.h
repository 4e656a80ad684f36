// Pictures in the preview's canvas: one fitted still, and the player's frames.
#pragma once

#include <QImage>
#include <QWidget>

namespace morvane {

/// A picture scaled to fit, never beyond its own size in device pixels times the scale factor, on black,
/// with rounded corners.
class PictureView final : public QWidget {
    Q_OBJECT
public:
    explicit PictureView(QWidget* parent = nullptr);
    const QImage& picture() const { return picture_; }
    /// A null image shows black.
    void setPicture(const QImage& picture);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage picture_;
};

/// The player's frames, drawn pixel for pixel: the player letterboxes them to framePixels().
class PlayerView final : public QWidget {
    Q_OBJECT
public:
    explicit PlayerView(QWidget* parent = nullptr);
    const QImage& frame() const { return frame_; }
    /// A null image shows black. A frame of another size (right after a resize) is fitted.
    void setFrame(const QImage& frame);
    /// The view's size in device pixels.
    QSize framePixels() const;

Q_SIGNALS:
    /// After every change of size or scale.
    void framePixelsChanged(const QSize& pixels);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    QImage frame_;
};

}  // namespace morvane
