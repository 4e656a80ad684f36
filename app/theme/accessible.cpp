#include "app/theme/accessible.h"

#include "app/theme/artwork.h"
#include "app/theme/edge_progress.h"
#include "app/theme/elided_label.h"
#include "app/theme/segmented_control.h"
#include "app/theme/spinner.h"
#include "app/theme/symbol_view.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPointer>
#include <cmath>
#include <vector>

namespace morvane {

namespace {

/// One segment. Belongs to the accessibility cache, which the group clears with itself.
class SegmentInterface : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    SegmentInterface(SegmentedControl* control, int segment) : control_(control), segment_(segment) {}

    bool isValid() const override { return control_ != nullptr; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return control_ ? control_->window()->windowHandle() : nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(control_); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::RadioButton; }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text kind) const override {
        return control_ && kind == QAccessible::Name ? control_->label(segment_) : QString();
    }

    QRect rect() const override {
        if (!control_)
            return {};
        const QRect local = control_->segmentRect(segment_);
        return {control_->mapToGlobal(local.topLeft()), local.size()};
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        if (!control_) {
            state.invalid = true;
            return state;
        }
        state.checkable = true;
        state.checked = control_->selectedSegment() == segment_;
        state.disabled = !control_->isEnabled();
        state.invisible = !control_->isVisible();
        state.focusable = true;
        state.focused = state.checked && control_->hasFocus();
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QStringList actionNames() const override { return {pressAction()}; }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }
    void doAction(const QString& name) override {
        if (control_ && name == pressAction())
            control_->choose(segment_);
    }

private:
    const QPointer<SegmentedControl> control_;
    const int segment_;
};

class SegmentedInterface : public QAccessibleWidget {
public:
    explicit SegmentedInterface(SegmentedControl* control)
        : QAccessibleWidget(control, QAccessible::Grouping), control_(control) {
        for (int segment = 0; segment < control->count(); ++segment)
            segments_.push_back(
                QAccessible::registerAccessibleInterface(new SegmentInterface(control, segment)));
    }

    ~SegmentedInterface() override {
        for (const QAccessible::Id segment : segments_)
            QAccessible::deleteAccessibleInterface(segment);
    }

    int childCount() const override { return static_cast<int>(segments_.size()); }

    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount())
            return nullptr;
        return QAccessible::accessibleInterface(segments_[static_cast<std::size_t>(index)]);
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        for (int index = 0; index < childCount(); ++index)
            if (this->child(index) == child)
                return index;
        return -1;
    }

    QAccessibleInterface* childAt(int x, int y) const override {
        for (int index = 0; index < childCount(); ++index)
            if (child(index)->rect().contains(x, y))
                return child(index);
        return nullptr;
    }

    QAccessibleInterface* focusChild() const override {
        return control_->hasFocus() ? child(control_->selectedSegment()) : nullptr;
    }

private:
    SegmentedControl* const control_;
    std::vector<QAccessible::Id> segments_;
};

class ProgressInterface : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit ProgressInterface(EdgeProgress* progress)
        : QAccessibleWidget(progress, QAccessible::ProgressBar), progress_(progress) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Value && !progress_->isNone() && !progress_->isIndeterminate())
            return QStringLiteral("%1%").arg(percent());
        return QAccessibleWidget::text(kind);
    }

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.busy = progress_->isIndeterminate();
        state.invisible = state.invisible || progress_->isNone();
        return state;
    }

    QVariant currentValue() const override { return percent(); }
    void setCurrentValue(const QVariant&) override {}
    QVariant maximumValue() const override { return 100; }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }

private:
    int percent() const { return static_cast<int>(std::floor(progress_->fraction() * 100)); }

    EdgeProgress* const progress_;
};

class LabelInterface : public QAccessibleWidget {
public:
    explicit LabelInterface(ElidedLabel* label)
        : QAccessibleWidget(label, QAccessible::StaticText), label_(label) {}

    QString text(QAccessible::Text kind) const override {
        const QString given = QAccessibleWidget::text(kind);
        return kind == QAccessible::Name && label_->accessibleName().isEmpty() ? label_->text() : given;
    }

private:
    ElidedLabel* const label_;
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    if (auto* control = qobject_cast<SegmentedControl*>(object))
        return new SegmentedInterface(control);
    if (auto* progress = qobject_cast<EdgeProgress*>(object))
        return new ProgressInterface(progress);
    if (auto* label = qobject_cast<ElidedLabel*>(object))
        return new LabelInterface(label);
    if (qobject_cast<Artwork*>(object) != nullptr || qobject_cast<SymbolView*>(object) != nullptr ||
        qobject_cast<Spinner*>(object) != nullptr || object->objectName() == QLatin1String("wordmark"))
        return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::Graphic);
    return nullptr;
}

}  // namespace

void installAccessibility() {
    static bool installed = false;
    if (!installed)
        QAccessible::installFactory(makeInterface);
    installed = true;
}

}  // namespace morvane
