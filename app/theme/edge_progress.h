// The progress line on the footer's top edge.
#pragma once

#include <QVariantAnimation>
#include <QWidget>

namespace morvane {

/// 4 high, as wide as its parent lets it. Starts as none(): a hairline. Assistive tools see a progress bar;
/// name it with setAccessibleName.
class EdgeProgress : public QWidget {
    Q_OBJECT

public:
    enum class Tone { Accent, Success, Partial };

    explicit EdgeProgress(QWidget* parent = nullptr);

    /// Only a hairline along the top.
    void setNone();
    /// A band that crosses; in the partial tone (something stops) and under reduced motion a full bar at
    /// rest.
    void setIndeterminate();
    /// `fraction` of 0 to 1 filled in the tone; reached in 120 ms, at once under reduced motion.
    void setFraction(double fraction);
    void setTone(Tone tone);

    bool isNone() const { return mode_ == Mode::None; }
    bool isIndeterminate() const { return mode_ == Mode::Indeterminate; }
    double fraction() const { return fraction_; }
    Tone tone() const { return tone_; }

    QSize sizeHint() const override { return {100, 4}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    enum class Mode { None, Indeterminate, Fraction };
    void setMode(Mode mode);

    Mode mode_ = Mode::None;
    Tone tone_ = Tone::Accent;
    double fraction_ = 0;
    double shown_ = 0;
    QVariantAnimation fill_;
    QVariantAnimation band_;
};

}  // namespace morvane
