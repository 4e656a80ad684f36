// The organizer's footer: progress edge, one line of status, and the actions in fixed places.
#pragma once

#include <vector>

#include <QWidget>

#include "organizer_ui/organizer_state.h"

class QLabel;

namespace morvane {

class EdgeProgress;
class ElidedLabel;
class PushButton;
class Spinner;
class SymbolView;

/// 96 high. Draws a state; what a press does is its owner's business. For assistive tools title and
/// detail are one live status, announced when the phase changes and at every tenth of a copy.
class FooterBar : public QWidget {
    Q_OBJECT

public:
    explicit FooterBar(QWidget* parent = nullptr);

    void showState(const OrganizerState& state);
    void showControls(const OrganizerControls& controls);
    /// Bytes, rate and remaining time; empty for none.
    void setProgressToolTip(const QString& text);

    PushButton* recoveryButton() const { return recoveryButton_; }
    PushButton* revealButton() const { return revealButton_; }
    PushButton* reportButton() const { return reportButton_; }
    PushButton* fcpButton() const { return fcpButton_; }
    PushButton* cancelButton() const { return cancelButton_; }
    PushButton* primaryButton() const { return primaryButton_; }
    /// The buttons in the order of the Tab key.
    std::vector<QWidget*> tabOrder() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void showLook(const OrganizerState& state);
    void announce(const OrganizerState& state);

    EdgeProgress* progressBar_;
    QWidget* look_;  ///< one place for glyph and spinner
    SymbolView* glyph_;
    Spinner* spinner_;
    QLabel* footerTitle_;
    ElidedLabel* footerDetail_;
    PushButton* recoveryButton_;
    QWidget* cut_;  ///< between recovery and the actions on a result
    PushButton* revealButton_;
    PushButton* reportButton_;
    PushButton* fcpButton_;
    PushButton* cancelButton_;
    PushButton* primaryButton_;

    Phase announcedPhase_ = Phase::editing;
    int announcedTenth_ = 0;
};

}  // namespace morvane
