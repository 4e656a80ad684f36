// The right column: the dry run as a tree, its summary, and the warnings under it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <QStringList>
#include <QWidget>

#include "organizer_ui/plan_tree.h"

class QLabel;

namespace morvane {

class ElidedLabel;
class PlanTreeModel;
class PlanTreeView;
class SegmentedControl;
class StepBadge;
class SymbolView;

/// Up to three lines, each elided at its own end.
class WarningLines : public QWidget {
    Q_OBJECT

public:
    explicit WarningLines(QWidget* parent);

    QString text() const { return lines_.join(QLatin1Char('\n')); }
    void setText(const QString& text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QStringList lines_;
};

/// Draws texts and trees; rebuilding them is its owner's business.
class PreviewPanel : public QWidget {
    Q_OBJECT

public:
    explicit PreviewPanel(QWidget* parent = nullptr);

    PreviewMode mode() const;
    void showTexts(const PreviewTexts& texts);
    /// Returns the tree that was shown before, see PlanTreeModel::setTree.
    std::shared_ptr<const PlanTree> showTree(std::shared_ptr<const PlanTree> tree);
    void setDone(bool done);
    /// Shows `text` (line feeds part lines) with `toolTip`; hides the label when `text` is empty.
    void showWarnings(const std::string& text, const std::string& toolTip);

    PlanTreeView* tree() const { return outline_; }
    /// The controls in the order of the Tab key.
    std::vector<QWidget*> tabOrder() const;

Q_SIGNALS:
    /// The user chose another preview mode; mode() is it already.
    void modeChosen();

private:
    QWidget* makeCard();

    StepBadge* badge_;
    QLabel* previewTitle_;
    ElidedLabel* previewSubtitle_;
    SegmentedControl* previewControl_;
    SymbolView* rootSymbol_;
    ElidedLabel* rootTitle_;
    QLabel* summaryLabel_;
    PlanTreeModel* model_;
    PlanTreeView* outline_;
    QWidget* warningsRow_;
    WarningLines* warningsLabel_;
};

}  // namespace morvane
