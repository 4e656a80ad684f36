// The picture shown where there is no picture.
#pragma once

#include <QString>
#include <QWidget>

namespace morvane {

/// A gradient from accentSoft to panel at -35 degrees with the symbol `mode` at 58 in the accent, centred.
class Artwork : public QWidget {
    Q_OBJECT

public:
    explicit Artwork(QWidget* parent = nullptr);

    /// The symbol's name; "waveform" when nothing is shown.
    const QString& mode() const { return mode_; }
    void setMode(const QString& mode);
    /// Rounds the corners and draws a `line` border inside; 0 (default) fills the whole rectangle.
    void setCornerRadius(int radius);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString mode_ = QStringLiteral("waveform");
    int radius_ = 0;
};

}  // namespace morvane
