// The left column: name and place of the new project, its sources, and the options.
#pragma once

#include <string>
#include <vector>

#include <QWidget>

#include "organizer_ui/organizer_state.h"

class QBoxLayout;
class QCheckBox;
class QComboBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QVBoxLayout;

namespace morvane {

class DisclosureButton;
class ElidedLabel;
class ProjectSourceDropView;
class PushButton;
class SourceListModel;
class SourceListView;
class StepBadge;
class SymbolView;
class TextField;

/// Draws the request and tells what the user did to it; the meaning is its owner's business.
class RequestPanel : public QWidget {
    Q_OBJECT

public:
    /// One column, or the two steps side by side in a fixed height.
    enum class Arrangement { column, sideBySide };

    explicit RequestPanel(QWidget* parent = nullptr);

    /// The name as it stands in the field.
    std::string name() const;
    /// Takes over the choices of the options: createFCP, frameRate, width, height.
    void fillOptions(ProjectRequest& request) const;
    bool createFCP() const;

    void setArrangement(Arrangement arrangement);
    void showControls(const OrganizerControls& controls);
    /// The chosen folder; titles the button for another choice.
    void showTarget(const std::string& path);
    /// "可用 ..." or empty.
    void showCapacity(const std::string& text);
    void showSourceSummary(const std::string& text);
    /// Check marks of the two steps.
    void showSteps(bool placeDone, bool sourcesDone);
    /// Whether the options are open (advancedOpen); initially not.
    bool advancedOpen() const { return advancedOpen_; }
    void setAdvancedOpen(bool open);

    TextField* nameField() const { return nameField_; }
    SourceListModel& sourceModel() const { return *model_; }
    SourceListView* sourceList() const { return sourceTable_; }
    ProjectSourceDropView* dropView() const { return dropView_; }
    /// The controls in the order of the Tab key.
    std::vector<QWidget*> tabOrder() const;

Q_SIGNALS:
    void nameChanged();
    /// Return in the name field.
    void nameEntered();
    void targetRequested();
    void additionRequested();
    void removalRequested();
    void sourcesSelected();
    void optionsChanged();
    void advancedToggled();

private:
    void makeControls();
    QWidget* makeTargetCard();
    QVBoxLayout* makePlacePart();
    QVBoxLayout* makeSourcesPart();
    QWidget* makeOptions();
    void connectControls();
    void showOptionsSummary();

    StepBadge* placeBadge_ = nullptr;
    TextField* nameField_ = nullptr;
    ElidedLabel* targetPath_ = nullptr;
    QLabel* capacity_ = nullptr;
    bool targetChosen_ = false;
    PushButton* targetButton_ = nullptr;

    StepBadge* sourcesBadge_ = nullptr;
    QLabel* sourceSummary_ = nullptr;
    SourceListModel* model_ = nullptr;
    SourceListView* sourceTable_ = nullptr;
    ProjectSourceDropView* dropView_ = nullptr;
    PushButton* addButton_ = nullptr;
    PushButton* removeButton_ = nullptr;

    QWidget* options_ = nullptr;
    DisclosureButton* advancedButton_ = nullptr;
    QLabel* optionsSummary_ = nullptr;
    QWidget* advancedContent_ = nullptr;
    QCheckBox* createFCP_ = nullptr;
    QComboBox* frameRate_ = nullptr;
    QComboBox* resolution_ = nullptr;

    QBoxLayout* parts_ = nullptr;
    QVBoxLayout* placePart_ = nullptr;
    QVBoxLayout* sourcesPart_ = nullptr;
    bool advancedOpen_ = false;
};

}  // namespace morvane
