#include "organizer_ui/request_panel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <array>

#include "app/theme/elided_label.h"
#include "app/theme/plain_tool_tip.h"
#include "app/theme/push_button.h"
#include "app/theme/symbol_view.h"
#include "app/theme/text_field.h"
#include "app/theme/theme.h"
#include "organizer_ui/panel_parts.h"
#include "organizer_ui/project_source_drop_view.h"
#include "organizer_ui/source_list_model.h"
#include "organizer_ui/source_list_view.h"

namespace morvane {

namespace {

constexpr int headingHeight = 28;
constexpr int targetHeight = 52;
constexpr int sideBySideHeight = 300;
constexpr int columnGap = 20;
constexpr int sideGap = 24;
constexpr int optionsIndent = 22;

constexpr std::array<std::int64_t, 5> frameRates = {24, 25, 30, 50, 60};

struct PictureSize {
    std::int64_t width;
    std::int64_t height;
};
constexpr std::array<PictureSize, 4> pictureSizes = {
    {{1920, 1080}, {3840, 2160}, {1080, 1920}, {2160, 3840}}};

QHBoxLayout* headingRow(StepBadge* badge, const QString& title, QWidget* parent) {
    QLabel* text = makeBoldLabel(14, MRVTheme::ink(), parent);
    text->setText(title);
    text->setFixedHeight(headingHeight);
    auto* row = new QHBoxLayout;
    row->setSpacing(10);
    row->addWidget(badge);
    row->addWidget(text);
    row->addStretch(1);
    return row;
}

template <class Widget>
Widget* named(Widget* widget, const char* objectName, const QString& accessibleName) {
    widget->setObjectName(QLatin1String(objectName));
    widget->setAccessibleName(accessibleName);
    return widget;
}

}  // namespace

RequestPanel::RequestPanel(QWidget* parent) : QWidget(parent) {
    makeControls();
    placePart_ = makePlacePart();
    sourcesPart_ = makeSourcesPart();
    options_ = makeOptions();
    parts_ = new QBoxLayout(QBoxLayout::TopToBottom, this);
    parts_->addLayout(placePart_);
    parts_->addLayout(sourcesPart_, 1);
    setArrangement(Arrangement::column);
    setAdvancedOpen(false);
    showCapacity({});
    connectControls();
}

void RequestPanel::makeControls() {
    placeBadge_ = new StepBadge(1, this);
    nameField_ = named(new TextField(TextField::Size::Large, this), "nameField", QStringLiteral("项目名称"));
    nameField_->setPlaceholderText(QStringLiteral("例如：2026 秋日旅拍"));
    targetButton_ =
        named(new PushButton(QStringLiteral("选择目标文件夹…")), "targetButton", QStringLiteral("保存位置"));

    sourcesBadge_ = new StepBadge(2, this);
    sourceSummary_ = makeLabel(11, MRVTheme::muted(), this);
    sourceSummary_->setObjectName(QStringLiteral("sourceSummary"));
    sourceSummary_->setText(QString::fromStdString(sourceSummaryText(0, std::nullopt)));
    model_ = new SourceListModel(this);
    dropView_ = new ProjectSourceDropView(this);
    dropView_->setObjectName(QStringLiteral("dropView"));
    sourceTable_ = named(new SourceListView(dropView_), "sourceTable", QStringLiteral("素材来源列表"));
    sourceTable_->setModel(model_);
    dropView_->setList(sourceTable_);
    addButton_ = named(new PushButton(QStringLiteral("添加来源…"), QStringLiteral("plus")), "addButton",
                       QStringLiteral("添加来源…"));
    removeButton_ = named(new PushButton(QStringLiteral("移除所选"), QStringLiteral("minus")), "removeButton",
                          QStringLiteral("移除所选"));

    createFCP_ = named(new QCheckBox(QStringLiteral("生成 FCP 交接文件")), "createFCP",
                       QStringLiteral("生成 FCP 交接文件"));
    createFCP_->setChecked(true);
    frameRate_ = named(new QComboBox, "frameRate", QStringLiteral("帧率"));
    for (const std::int64_t rate : frameRates)
        frameRate_->addItem(QStringLiteral("%1 帧").arg(rate));
    frameRate_->setCurrentIndex(1);
    resolution_ = named(new QComboBox, "resolution", QStringLiteral("分辨率"));
    for (const PictureSize& size : pictureSizes)
        resolution_->addItem(QStringLiteral("%1 × %2").arg(size.width).arg(size.height));
    frameRate_->setFixedWidth(104);
    resolution_->setFixedWidth(140);
}

QWidget* RequestPanel::makeTargetCard() {
    auto* card = new Card(8, this);
    card->setFixedHeight(targetHeight);
    targetPath_ = new ElidedLabel(12, MRVTheme::muted(), ElidedLabel::Weight::Regular, card);
    targetPath_->setObjectName(QStringLiteral("targetPath"));
    targetPath_->setElideMode(Qt::ElideMiddle);
    targetPath_->setText(QStringLiteral("选择拍摄项目的保存位置"));
    capacity_ = makeLabel(11, MRVTheme::muted(), card);
    capacity_->setObjectName(QStringLiteral("capacity"));
    capacity_->setMinimumHeight(15);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addStretch(1);
    texts->addWidget(targetPath_);
    texts->addWidget(capacity_);
    texts->addStretch(1);
    auto* row = new QHBoxLayout(card);
    row->setContentsMargins(12, 0, 10, 0);
    row->setSpacing(10);
    row->addWidget(new SymbolView(QStringLiteral("externaldrive"), 20, MRVTheme::muted(), card));
    row->addLayout(texts, 1);
    row->addWidget(targetButton_);
    return card;
}

QVBoxLayout* RequestPanel::makePlacePart() {
    auto* part = new QVBoxLayout;
    part->setSpacing(8);
    part->addLayout(headingRow(placeBadge_, QStringLiteral("名称与位置"), this));
    part->addWidget(nameField_);
    part->addWidget(makeTargetCard());
    return part;
}

QVBoxLayout* RequestPanel::makeSourcesPart() {
    QHBoxLayout* heading = headingRow(sourcesBadge_, QStringLiteral("素材来源"), this);
    heading->addWidget(sourceSummary_);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addWidget(addButton_);
    buttons->addWidget(removeButton_);
    buttons->addStretch(1);
    auto* part = new QVBoxLayout;
    part->setSpacing(8);
    part->addLayout(heading);
    part->addWidget(dropView_, 1);
    part->addLayout(buttons);
    return part;
}

QWidget* RequestPanel::makeOptions() {
    auto* options = new QWidget(this);
    advancedButton_ = new DisclosureButton(QStringLiteral("更多选项"), options);
    advancedButton_->setObjectName(QStringLiteral("advancedButton"));
    optionsSummary_ = makeLabel(11, MRVTheme::muted(), options);
    auto* head = new QHBoxLayout;
    head->addWidget(advancedButton_);
    head->addStretch(1);
    head->addWidget(optionsSummary_);

    advancedContent_ = new QWidget(options);
    advancedContent_->setObjectName(QStringLiteral("advancedContent"));
    auto* choices = new QHBoxLayout;
    choices->setSpacing(8);
    QLabel* rateLabel = makeLabel(12, MRVTheme::muted(), advancedContent_);
    rateLabel->setText(QStringLiteral("帧率"));
    QLabel* sizeLabel = makeLabel(12, MRVTheme::muted(), advancedContent_);
    sizeLabel->setText(QStringLiteral("分辨率"));
    choices->addWidget(rateLabel);
    choices->addWidget(frameRate_);
    choices->addSpacing(10);
    choices->addWidget(sizeLabel);
    choices->addWidget(resolution_);
    choices->addStretch(1);
    auto* content = new QVBoxLayout(advancedContent_);
    content->setContentsMargins(optionsIndent, 3, 0, 4);
    content->setSpacing(7);
    content->addWidget(createFCP_, 0, Qt::AlignLeft);
    content->addLayout(choices);

    auto* rows = new QVBoxLayout(options);
    rows->setContentsMargins(0, 4, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(new Rule(Qt::Horizontal, options));
    rows->addSpacing(8);
    rows->addLayout(head);
    rows->addWidget(advancedContent_);
    return options;
}

void RequestPanel::connectControls() {
    connect(nameField_, &QLineEdit::textChanged, this, &RequestPanel::nameChanged);
    connect(nameField_, &QLineEdit::returnPressed, this, &RequestPanel::nameEntered);
    connect(targetButton_, &QPushButton::clicked, this, &RequestPanel::targetRequested);
    connect(addButton_, &QPushButton::clicked, this, &RequestPanel::additionRequested);
    connect(removeButton_, &QPushButton::clicked, this, &RequestPanel::removalRequested);
    connect(sourceTable_, &SourceListView::removalRequested, this, &RequestPanel::removalRequested);
    connect(sourceTable_, &SourceListView::rowsSelected, this, &RequestPanel::sourcesSelected);
    connect(advancedButton_, &QAbstractButton::clicked, this, &RequestPanel::advancedToggled);
    const auto changed = [this] {
        showOptionsSummary();
        Q_EMIT optionsChanged();
    };
    connect(createFCP_, &QCheckBox::toggled, this, changed);
    connect(frameRate_, &QComboBox::currentIndexChanged, this, changed);
    connect(resolution_, &QComboBox::currentIndexChanged, this, changed);
}

std::string RequestPanel::name() const {
    return nameField_->text().toStdString();
}

void RequestPanel::fillOptions(ProjectRequest& request) const {
    const PictureSize& size = pictureSizes.at(static_cast<std::size_t>(resolution_->currentIndex()));
    request.createFCP = createFCP();
    request.frameRate = frameRates.at(static_cast<std::size_t>(frameRate_->currentIndex()));
    request.width = size.width;
    request.height = size.height;
}

bool RequestPanel::createFCP() const {
    return createFCP_->isChecked();
}

void RequestPanel::setArrangement(Arrangement arrangement) {
    const bool column = arrangement == Arrangement::column;
    placePart_->removeWidget(options_);
    sourcesPart_->removeWidget(options_);
    while (placePart_->count() > 3)  // the stretch above the options
        delete placePart_->takeAt(placePart_->count() - 1);
    if (column) {
        sourcesPart_->addWidget(options_);
    } else {
        placePart_->addStretch(1);
        placePart_->addWidget(options_);
    }
    parts_->setDirection(column ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    parts_->setStretch(0, column ? 0 : 1);
    parts_->setSpacing(column ? columnGap : sideGap);
    parts_->setContentsMargins(20, 18, 20, column ? 12 : 14);
    setMinimumHeight(column ? 0 : sideBySideHeight);
    setMaximumHeight(column ? QWIDGETSIZE_MAX : sideBySideHeight);
}

void RequestPanel::showControls(const OrganizerControls& controls) {
    for (QWidget* input : {static_cast<QWidget*>(nameField_), static_cast<QWidget*>(targetButton_),
                           static_cast<QWidget*>(addButton_), static_cast<QWidget*>(createFCP_),
                           static_cast<QWidget*>(frameRate_), static_cast<QWidget*>(resolution_)})
        input->setEnabled(controls.inputsEnabled);
    removeButton_->setEnabled(controls.removeEnabled);
    sourceTable_->setMuted(!controls.inputsEnabled);
    targetPath_->setColor(targetChosen_ && controls.inputsEnabled ? MRVTheme::ink() : MRVTheme::muted());
}

void RequestPanel::showTarget(const std::string& path) {
    const QString text = QString::fromStdString(path);
    targetChosen_ = true;
    targetPath_->setText(text);
    targetPath_->setToolTip(plainToolTip(text));
    targetPath_->setColor(MRVTheme::ink());
    targetButton_->setText(QStringLiteral("更换位置…"));
    targetButton_->setAccessibleDescription(text);
}

void RequestPanel::showCapacity(const std::string& text) {
    const QString shown = QString::fromStdString(text);
    capacity_->setText(shown);
    capacity_->setVisible(!shown.isEmpty());
    if (!shown.isEmpty())
        targetButton_->setAccessibleDescription(targetPath_->text() + QStringLiteral("，") + shown);
}

void RequestPanel::showSourceSummary(const std::string& text) {
    sourceSummary_->setText(QString::fromStdString(text));
    dropView_->setEmpty(model_->sources().empty());
}

void RequestPanel::showSteps(bool placeDone, bool sourcesDone) {
    placeBadge_->setDone(placeDone);
    sourcesBadge_->setDone(sourcesDone);
}

void RequestPanel::setAdvancedOpen(bool open) {
    advancedOpen_ = open;
    advancedContent_->setVisible(open);
    advancedButton_->setSymbol(open ? QStringLiteral("chevron.down") : QStringLiteral("chevron.right"));
    advancedButton_->setAccessibleDescription(open ? QStringLiteral("已展开") : QStringLiteral("已折叠"));
    showOptionsSummary();
}

void RequestPanel::showOptionsSummary() {
    const QString handOff = createFCP() ? QStringLiteral("FCP 交接 · ") : QString();
    optionsSummary_->setText(handOff + frameRate_->currentText() + QStringLiteral(" · ") +
                             resolution_->currentText());
    optionsSummary_->setVisible(!advancedOpen_);
}

std::vector<QWidget*> RequestPanel::tabOrder() const {
    return {nameField_,      targetButton_, sourceTable_, addButton_, removeButton_,
            advancedButton_, createFCP_,    frameRate_,   resolution_};
}

}  // namespace morvane
