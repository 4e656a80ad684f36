// The search field: a magnifier before the text, a clear button after it.
#pragma once

#include <QLineEdit>

namespace morvane {

/// 32 high, 300 to 340 wide. The clear button shows while there is text; it and Esc empty the field (both
/// emit textChanged, and textEdited as typing does). Esc in an empty field is left to the window.
class SearchField : public QLineEdit {
    Q_OBJECT

public:
    explicit SearchField(QWidget* parent = nullptr);

    QSize sizeHint() const override { return {340, 32}; }
    QSize minimumSizeHint() const override { return {300, 32}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void clearByUser();

    QWidget* clearButton_ = nullptr;
};

}  // namespace morvane
