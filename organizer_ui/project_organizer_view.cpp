#include "organizer_ui/project_organizer_view.h"

#include <QApplication>
#include <QBoxLayout>
#include <QResizeEvent>
#include <QScrollArea>
#include <algorithm>
#include <unordered_map>
#include <utility>

#include "app/theme/push_button.h"
#include "app/theme/text_field.h"
#include "app/theme/theme.h"
#include "organizer_ui/footer_bar.h"
#include "organizer_ui/open_panel.h"
#include "organizer_ui/panel_parts.h"
#include "organizer_ui/preview_panel.h"
#include "organizer_ui/project_outline_cell.h"
#include "organizer_ui/project_source_drop_view.h"
#include "organizer_ui/report_sheet.h"
#include "organizer_ui/request_panel.h"
#include "organizer_ui/source_list_model.h"
#include "organizer_ui/source_list_view.h"
#include "platform/reveal_files.h"
#include "platform/volume_space.h"
#include "support/deliver.h"
#include "support/format_text.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

constexpr int narrowBelow = 950;
constexpr int leastLeftWidth = 400;
constexpr int mostLeftWidth = 520;
constexpr double leftShare = 0.36;
constexpr int optionsMargin = 16;  ///< kept below the options when they are scrolled into view
/// Sources looked at in one go: a slow disk holds back no more than these symbols.
constexpr std::size_t kindBatch = 64;

using KindsByPath = std::unordered_map<std::string, SourceKind>;

QScrollArea* scrolling(QWidget* content) {
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(content);
    return area;
}

}  // namespace

ProjectOrganizerView::ProjectOrganizerView(QWidget* parent)
    : QWidget(parent),
      request_(new RequestPanel),
      preview_(new PreviewPanel),
      footer_(new FooterBar),
      factsQueue_("local.morvane.organizer.facts", SerialQueue::Priority::Utility),
      browseQueue_("local.morvane.organizer.browse"),
      previewQueue_("local.morvane.organizer.preview") {
    auto* page = new QWidget;
    leftColumn_ = scrolling(request_);
    columnRule_ = new Rule(Qt::Vertical, page);
    rowRule_ = new Rule(Qt::Horizontal, page);
    columns_ = new QBoxLayout(QBoxLayout::LeftToRight, page);
    columns_->setObjectName(QStringLiteral("projectNarrowWidth"));
    columns_->setContentsMargins(0, 0, 0, 0);
    columns_->setSpacing(0);
    columns_->addWidget(leftColumn_);
    columns_->addWidget(columnRule_);
    columns_->addWidget(rowRule_);
    columns_->addWidget(preview_, 1);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(scrolling(page), 1);
    rows->addWidget(footer_);  // only here into the view: Tab comes to it last
    connectPanels();
    orderTabs();
    arrangeColumns();
    rebuildPreview();
    refreshActions();
}

ProjectOrganizerView::~ProjectOrganizerView() = default;

void ProjectOrganizerView::connectPanels() {
    const auto bind = [this](auto* sender, auto signal, void (ProjectOrganizerView::*operation)()) {
        connect(sender, signal, this, operation);
    };
    bind(request_, &RequestPanel::nameChanged, &ProjectOrganizerView::controlTextDidChange);
    bind(request_, &RequestPanel::targetRequested, &ProjectOrganizerView::chooseTarget);
    bind(request_, &RequestPanel::additionRequested, &ProjectOrganizerView::addSources);
    bind(request_, &RequestPanel::removalRequested, &ProjectOrganizerView::removeSources);
    bind(request_, &RequestPanel::sourcesSelected, &ProjectOrganizerView::refreshActions);
    bind(request_, &RequestPanel::optionsChanged, &ProjectOrganizerView::optionsChanged);
    bind(request_, &RequestPanel::advancedToggled, &ProjectOrganizerView::toggleAdvanced);
    bind(preview_, &PreviewPanel::modeChosen, &ProjectOrganizerView::rebuildPreview);
    bind(footer_->recoveryButton(), &QPushButton::clicked, &ProjectOrganizerView::chooseRecovery);
    bind(footer_->revealButton(), &QPushButton::clicked, &ProjectOrganizerView::reveal);
    bind(footer_->reportButton(), &QPushButton::clicked, &ProjectOrganizerView::showReport);
    bind(footer_->fcpButton(), &QPushButton::clicked, &ProjectOrganizerView::handOffToFCP);
    bind(footer_->cancelButton(), &QPushButton::clicked, &ProjectOrganizerView::cancelWork);
    bind(footer_->primaryButton(), &QPushButton::clicked, &ProjectOrganizerView::primaryAction);
    // Return while typing the name may begin a check, never a copy.
    connect(request_, &RequestPanel::nameEntered, this, [this] {
        if (primaryIntention(state_) == PrimaryIntention::check)
            primaryAction();
    });
    request_->dropView()->acceptsDrop = [guard = QPointer<ProjectOrganizerView>(this)] {
        return guard && !guard->isBusy();
    };
    request_->dropView()->onURLs =
        [guard = QPointer<ProjectOrganizerView>(this)](const std::vector<FileUrl>& urls) {
            if (guard)
                guard->appendSources(urls);
        };
}

void ProjectOrganizerView::orderTabs() {
    std::vector<QWidget*> order = request_->tabOrder();
    for (const std::vector<QWidget*>& part : {preview_->tabOrder(), footer_->tabOrder()})
        order.insert(order.end(), part.begin(), part.end());
    for (std::size_t i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
}

const std::vector<FileUrl>& ProjectOrganizerView::sources() const {
    return request_->sourceModel().sources();
}

// ---- Workflow ----

void ProjectOrganizerView::primaryAction() {
    switch (primaryIntention(state_)) {
        case PrimaryIntention::nothing:
            return;
        case PrimaryIntention::copy:
            if (state_.plan)
                startCopy(state_.plan);
            return;
        case PrimaryIntention::resume:
            startRecovery(FileUrl(*state_.recoveryManifest));
            return;
        case PrimaryIntention::prepareNext:
            invalidatePlan();
            return;
        case PrimaryIntention::check:
            check();
            return;
    }
}

void ProjectOrganizerView::check() {
    if (!targetURL_ || sources().empty())
        return;
    const std::string name = trimmed(request_->name());
    if (name.empty()) {
        request_->nameField()->setFocus();
        return;
    }
    if (!state_.beginPlanning())
        return;
    const ProjectRequest request = makeRequest(name);
    beginJob();
    say(organizer_status::checking);
    const QPointer<ProjectOrganizerView> guard(this);
    worker_.makePlan(request, progressHandler(), [guard](Outcome<ProjectPlan>& outcome) {
        if (guard)
            guard->finishPlanning(outcome);
    });
}

ProjectRequest ProjectOrganizerView::makeRequest(const std::string& trimmedName) const {
    ProjectRequest request;
    request.name = trimmedName;
    request.parentURL = *targetURL_;
    request.sources = sources();
    request_->fillOptions(request);
    return request;
}

void ProjectOrganizerView::beginJob() {
    rate_.restart();
    clock_.start();
    footer_->setProgressToolTip({});
    refreshActions();
}

ProjectWorker::ProgressHandler ProjectOrganizerView::progressHandler() {
    return [guard = QPointer<ProjectOrganizerView>(this)](const ProjectProgress& progress) {
        if (guard)
            guard->updateProgress(progress);
    };
}

void ProjectOrganizerView::finishPlanning(Outcome<ProjectPlan>& outcome) {
    std::shared_ptr<const ProjectPlan> plan;
    try {
        plan = std::make_shared<const ProjectPlan>(std::move(outcome.get()));
    } catch (const std::exception& error) {
        presentFailure(error.what());
        return;
    }
    if (!state_.finishPlanning(std::move(plan)))
        return;
    presentWarnings(state_.warnings);
    say(organizer_status::planned);
    rebuildPreview();
    refreshActions();
}

void ProjectOrganizerView::invalidatePlan() {
    if (!state_.invalidatePlan())
        return;
    presentWarnings({});
    rebuildPreview();
    refreshActions();
}

void ProjectOrganizerView::startCopy(const std::shared_ptr<const ProjectPlan>& plan) {
    if (plan->warnings.empty()) {
        executeCopy(plan);
        return;
    }
    presentPlanWarnings(this, plan->warnings, [guard = QPointer<ProjectOrganizerView>(this), plan] {
        if (guard)
            guard->executeCopy(plan);
    });
}

void ProjectOrganizerView::executeCopy(const std::shared_ptr<const ProjectPlan>& plan) {
    // The plan that was confirmed must still be the one on screen.
    if (plan != state_.plan || !state_.beginCopying())
        return;
    beginJob();
    say(organizer_status::copying);
    worker_.execute(plan, progressHandler(), resultHandler());
}

ProjectWorker::ResultCompletion ProjectOrganizerView::resultHandler() {
    return [guard = QPointer<ProjectOrganizerView>(this)](Outcome<ProjectResult>& outcome) {
        if (guard)
            guard->finish(outcome);
    };
}

void ProjectOrganizerView::chooseRecovery() {
    if (isBusy())
        return;
    OpenPanelRequest panel;
    panel.title = "选择整理任务清单";
    panel.prompt = "继续任务";
    panel.message = "选择之前项目中的整理清单。已完成的文件会由任务清单核对，不会重新新建同名项目。";
    panel.rules = {Choosable::files, BrowseRules::Count::one, BrowseRules::NewFolders::no};
    panel.startFolder = targetURL_ ? targetURL_->path : std::string();
    presentOpenPanel(this, panel, browseQueue_,
                     [guard = QPointer<ProjectOrganizerView>(this)](const auto& urls) {
                         if (guard)
                             guard->startRecovery(urls.front());
                     });
}

void ProjectOrganizerView::startRecovery(const FileUrl& manifest) {
    if (!state_.beginRecovery())
        return;
    beginJob();
    worker_.retry(manifest, progressHandler(), resultHandler());
}

void ProjectOrganizerView::updateProgress(const ProjectProgress& progress) {
    if (!state_.updateProgress(progress))
        return;
    rate_.add(static_cast<double>(clock_.elapsed()) / 1000, progress.completedBytes);
    footer_->showState(state_);
    footer_->setProgressToolTip(
        QString::fromStdString(progressText(progress.completedBytes, progress.totalBytes, rate_)));
}

void ProjectOrganizerView::finish(Outcome<ProjectResult>& outcome) {
    try {
        if (!state_.finishRun(std::move(outcome.get())))
            return;
    } catch (const std::exception& error) {
        presentFailure(error.what());
        return;
    }
    if (!state_.recoveryManifest && onProjectCreated)
        onProjectCreated(state_.result->rootURL);
    presentWarnings(state_.warnings);
    say(state_.footerTitle);
    refreshActions();
}

void ProjectOrganizerView::cancelWork() {
    if (!state_.cancelWork())
        return;
    worker_.setCancelled();
    refreshActions();
}

void ProjectOrganizerView::presentWarnings(const std::vector<std::string>& warnings) {
    std::string all;
    for (const std::string& warning : warnings)
        all += all.empty() ? warning : "\n" + warning;
    preview_->showWarnings(warningsText(warnings), all);
}

void ProjectOrganizerView::presentFailure(const std::string& description) {
    if (!state_.fail(description))
        return;
    say(organizer_status::failurePrefix + description);
    refreshActions();
}

RequestFacts ProjectOrganizerView::requestFacts() const {
    RequestFacts facts;
    facts.hasTarget = targetURL_.has_value();
    facts.hasSources = !sources().empty();
    facts.hasName = !trimmed(request_->name()).empty();
    facts.hasSelectedSources = request_->sourceList()->selectionModel()->hasSelection();
    return facts;
}

void ProjectOrganizerView::refreshActions() {
    const RequestFacts facts = requestFacts();
    const OrganizerControls controls = buttonsFor(state_, facts);
    const QPointer<QWidget> focus = focusInside();
    footer_->showState(state_);
    footer_->showControls(controls);
    request_->showControls(controls);
    request_->showSteps(facts.hasName && facts.hasTarget, facts.hasSources);
    preview_->setDone(state_.plan != nullptr);
    moveFocusFrom(focus);
}

QWidget* ProjectOrganizerView::focusInside() const {
    QWidget* focus = QApplication::focusWidget();
    return focus && isAncestorOf(focus) ? focus : nullptr;
}

void ProjectOrganizerView::moveFocusFrom(QWidget* before) {
    if (!before || (before->isEnabled() && before->isVisibleTo(this)))
        return;
    QWidget* next = nullptr;
    switch (state_.phase) {
        case Phase::planning:
        case Phase::copying:
            next = footer_->cancelButton();
            break;
        case Phase::cancelling:
        case Phase::ready:
            next = preview_->tree();
            break;
        case Phase::finished:
            next = footer_->reportButton();
            break;
        case Phase::editing:
        case Phase::failed:
            next = request_->nameField();
            break;
    }
    next->setFocus(Qt::OtherFocusReason);
}

void ProjectOrganizerView::say(const std::string& text) {
    if (onStatus)
        onStatus(QString::fromStdString(text));
}

// ---- Request ----

void ProjectOrganizerView::appendSources(const std::vector<FileUrl>& urls) {
    if (isBusy())
        return;
    lookAt(request_->sourceModel().append(urls));
    updateSources();
    invalidatePlan();
}

void ProjectOrganizerView::lookAt(const std::vector<FileUrl>& added) {
    for (std::size_t start = 0; start < added.size(); start += kindBatch) {
        const auto first = added.begin() + static_cast<std::ptrdiff_t>(start);
        const std::vector<FileUrl> batch(
            first, first + static_cast<std::ptrdiff_t>(std::min(kindBatch, added.size() - start)));
        runAndDeliver(
            factsQueue_, this,
            [batch] {
                KindsByPath kinds;
                for (const FileUrl& url : batch)
                    kinds.emplace(url.isFile() ? url.path : url.other, findSourceKind(url));
                return kinds;
            },
            [](ProjectOrganizerView& self, Outcome<KindsByPath>& outcome) {
                if (outcome.value)
                    self.request_->sourceModel().setKinds(*outcome.value);
            });
    }
}

void ProjectOrganizerView::addSources() {
    if (isBusy())
        return;
    OpenPanelRequest panel;
    panel.message = "添加相机卡、素材文件夹或文件";
    panel.prompt = "添加来源";
    panel.rules = {Choosable::filesAndFolders, BrowseRules::Count::several, BrowseRules::NewFolders::no};
    panel.startFolder = lastSourceFolder_;
    presentOpenPanel(this, panel, browseQueue_,
                     [guard = QPointer<ProjectOrganizerView>(this)](const auto& urls) {
                         if (!guard)
                             return;
                         guard->lastSourceFolder_ = parentPath(urls.front().path);
                         guard->appendSources(urls);
                     });
}

void ProjectOrganizerView::removeSources() {
    if (isBusy())
        return;
    const std::vector<int> rows = request_->sourceList()->selectedRows();
    if (rows.empty())
        return;
    request_->sourceModel().remove(rows);
    updateSources();
    invalidatePlan();
}

void ProjectOrganizerView::updateSources() {
    request_->showSourceSummary(sourceSummaryText(sources().size(), std::nullopt));
    refreshActions();
}

void ProjectOrganizerView::chooseTarget() {
    if (isBusy())
        return;
    OpenPanelRequest panel;
    panel.message = "选择新项目的保存位置";
    panel.prompt = "选择位置";
    panel.rules = {Choosable::folders, BrowseRules::Count::one, BrowseRules::NewFolders::allowed};
    panel.startFolder = targetURL_ ? targetURL_->path : std::string();
    presentOpenPanel(this, panel, browseQueue_,
                     [guard = QPointer<ProjectOrganizerView>(this)](const auto& urls) {
                         if (guard)
                             guard->setTargetURL(urls.front());
                     });
}

void ProjectOrganizerView::setTargetURL(const FileUrl& folder) {
    if (isBusy())
        return;
    targetURL_ = folder;
    request_->showTarget(folder.path);
    request_->showCapacity({});
    runAndDeliver(
        factsQueue_, this, [path = folder.path] { return availableBytes(path); },
        [ticket = ++targetTicket_](ProjectOrganizerView& self,
                                   Outcome<std::optional<std::int64_t>>& outcome) {
            if (ticket == self.targetTicket_ && outcome.value && *outcome.value)
                self.request_->showCapacity("可用 " + formatBytes(**outcome.value));
        });
    invalidatePlan();
}

void ProjectOrganizerView::controlTextDidChange() {
    invalidatePlan();
}

void ProjectOrganizerView::optionsChanged() {
    invalidatePlan();
}

void ProjectOrganizerView::toggleAdvanced() {
    request_->setAdvancedOpen(!request_->advancedOpen());
    if (!request_->advancedOpen())
        return;
    // In a low window the options lie below the fold.
    const auto scroll = [this] {
        leftColumn_->ensureWidgetVisible(request_->tabOrder().back(), 0, optionsMargin);
    };
    QMetaObject::invokeMethod(this, scroll, Qt::QueuedConnection);  // once the column is laid out again
}

// ---- Preview ----

void ProjectOrganizerView::rebuildPreview() {
    const PreviewRequest request{preview_->mode(), request_->createFCP(), request_->name(), sources().size(),
                                 state_.plan};
    const PreviewTexts texts = previewTexts(request);
    preview_->showTexts(texts);
    request_->showSourceSummary(texts.sourceSummary);
    if (texts.note.empty())
        presentWarnings(state_.warnings);
    else
        preview_->showWarnings(texts.note, texts.note);
    const std::uint64_t ticket = ++previewTicket_;
    const auto build = [request] {
        return std::make_shared<const PlanTree>(PlanTree{buildPlanTree(request), request.plan});
    };
    if (!request.plan) {
        // The template alone is ten rows: no reason to let a moment pass.
        showTree(build());
        return;
    }
    runAndDeliver(previewQueue_, this, build,
                  [ticket](ProjectOrganizerView& self, Outcome<std::shared_ptr<const PlanTree>>& made) {
                      if (ticket == self.previewTicket_)
                          self.showTree(std::move(made.get()));
                  });
}

void ProjectOrganizerView::showTree(std::shared_ptr<const PlanTree> tree) {
    // The tree before, and with it perhaps the last hold on its plan, is let go on the queue.
    previewQueue_.post([before = preview_->showTree(std::move(tree))] {});
}

// ---- Report and hand-off ----

void ProjectOrganizerView::reveal() {
    if (state_.result)
        revealFolder(state_.result->rootURL.path);
}

void ProjectOrganizerView::showReport() {
    if (state_.result)
        presentReport(this, *state_.result);
}

void ProjectOrganizerView::handOffToFCP() {
    if (state_.result && state_.result->fcpxmlURL)
        presentHandOff(this, *state_.result);
}

// ---- Layout ----

void ProjectOrganizerView::arrangeColumns() {
    const bool narrow = width() < narrowBelow;
    if (narrow_ != narrow)
        setNarrow(narrow);
    if (!narrow) {
        const int column = std::clamp(static_cast<int>(width() * leftShare), leastLeftWidth, mostLeftWidth);
        leftColumn_->setFixedWidth(column - columnRule_->maximumWidth());
    }
}

void ProjectOrganizerView::setNarrow(bool narrow) {
    narrow_ = narrow;
    columns_->setDirection(narrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    columnRule_->setVisible(!narrow);
    rowRule_->setVisible(narrow);
    request_->setArrangement(narrow ? RequestPanel::Arrangement::sideBySide
                                    : RequestPanel::Arrangement::column);
    if (narrow) {
        leftColumn_->setMinimumWidth(0);
        leftColumn_->setMaximumWidth(QWIDGETSIZE_MAX);
        leftColumn_->setFixedHeight(request_->minimumHeight());
    } else {
        leftColumn_->setMinimumHeight(0);
        leftColumn_->setMaximumHeight(QWIDGETSIZE_MAX);
    }
}

void ProjectOrganizerView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrangeColumns();
}

}  // namespace morvane
