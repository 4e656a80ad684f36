// A text that gives way: elided when it does not fit, whole in its tool tip.
#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

namespace morvane {

/// Shows at most maximumLines() lines (default 1). Every line but the last is broken between words, or
/// anywhere when a word is too long; the last one shown is elided (default: at the end). Line feeds in the
/// text begin a new line. The tool tip is the full text while something is hidden and empty otherwise. `px`
/// picks font and line height from the type scale. Grows with its room, never asks for more than its text.
class ElidedLabel : public QWidget {
    Q_OBJECT

public:
    enum class Weight { Regular, Bold };

    explicit ElidedLabel(int px, QColor color, Weight weight = Weight::Regular, QWidget* parent = nullptr);

    const QString& text() const { return text_; }
    void setText(const QString& text);
    void setColor(const QColor& color);
    void setElideMode(Qt::TextElideMode mode);
    /// Break anywhere instead of between words (paths).
    void setBreakAnywhere(bool anywhere);
    int maximumLines() const { return maximumLines_; }
    void setMaximumLines(int lines);
    /// Keeps the room of maximumLines() lines even when the text needs fewer (default: only what it needs).
    void setReserveLines(bool reserve);
    /// Horizontal and vertical placement; default left, top for several lines, centre for one.
    void setAlignment(Qt::Alignment alignment);
    void setLineHeight(int height);
    /// Whether something is hidden at the present width.
    bool isElided() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override;
    int heightForWidth(int width) const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Lines {
        QStringList shown;
        bool elided = false;
    };
    Lines layOut(int width) const;
    void updatePolicy();
    void textChanged();

    QString text_;
    QColor color_;
    Qt::TextElideMode mode_ = Qt::ElideRight;
    Qt::Alignment alignment_ = Qt::AlignLeft | Qt::AlignVCenter;
    int maximumLines_ = 1;
    int lineHeight_;
    bool breakAnywhere_ = false;
    bool reserve_ = false;
};

}  // namespace morvane
