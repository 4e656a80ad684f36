// A question or a report on a window: a frameless window-modal dialog over a veil.
#pragma once

#include <QDialog>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

class QBoxLayout;

namespace morvane {

class PushButton;

/// What a sheet shows. buttons[0] is the default: accent, rightmost, pressed by Return wherever the focus is;
/// the others stand to its left in order.
struct SheetContent {
    QString symbol;           ///< in the tile; "exclamationmark.triangle" where `warning` and none is named
    bool warning = false;     ///< tile and glyph in the warning colours
    bool useAppIcon = false;  ///< the application icon in place of the tile
    QString message;
    QString informative;            ///< may hold line feeds; wraps
    QWidget* accessory = nullptr;   ///< below the text; the sheet takes it over
    QStringList buttons;            ///< one at least
    int cancelButton = -1;          ///< pressed by Esc; with one button that one is, whatever stands here
    int width = 488;                ///< logical pixels, all included
    QWidget* firstFocus = nullptr;  ///< in the accessory; text inputs get their text selected
    /// Asked when buttons[0] is pressed: false keeps the sheet open. Empty: it always answers.
    std::function<bool()> mayConfirm;
};

/// Makes and shows itself through present(). Several for one window are shown one after another.
class Sheet : public QDialog {
    Q_OBJECT

public:
    /// Shows a sheet on the window of `window` at once (or when the ones before it are answered) and returns.
    /// `answered` gets the index of the pressed button, once, on the main thread, after the sheet is gone
    /// from the screen; never when the window goes first. The sheet belongs to the window and deletes itself.
    static Sheet* present(QWidget* window, SheetContent content, std::function<void(int button)> answered);

    const SheetContent& content() const { return content_; }
    PushButton* button(int index) const { return buttons_.at(static_cast<std::size_t>(index)); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Sheet(QWidget* window, SheetContent content, std::function<void(int)> answered);

    void build();
    QBoxLayout* buildHead();
    QBoxLayout* buildButtons();
    void open() override;
    void place();
    void press(int button);
    void answer(int button);
    int escapeButton() const;

    SheetContent content_;
    std::function<void(int)> answered_;
    std::vector<PushButton*> buttons_;
    QPointer<QWidget> scrim_;
    bool done_ = false;
};

/// The read-only text of a report sheet, 540 x 250, selectable. The caller (or its sheet) owns it.
QWidget* reportText(const QString& text);

}  // namespace morvane
