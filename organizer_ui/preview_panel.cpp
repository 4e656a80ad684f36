#include "organizer_ui/preview_panel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include "app/theme/elided_label.h"
#include "app/theme/plain_tool_tip.h"
#include "app/theme/segmented_control.h"
#include "app/theme/symbol_view.h"
#include "app/theme/theme.h"
#include "organizer_ui/panel_parts.h"
#include "organizer_ui/plan_tree_model.h"
#include "organizer_ui/project_outline_cell.h"

namespace morvane {

namespace {

constexpr int warningLineHeight = 17;
constexpr int leastTreeHeight = 160;
constexpr int rootRowHeight = 40;

QFont warningFont() {
    return MRVTheme::font(11);
}

}  // namespace

WarningLines::WarningLines(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void WarningLines::setText(const QString& text) {
    lines_ = text.isEmpty() ? QStringList() : text.split(QLatin1Char('\n'));
    setAccessibleName(text);
    updateGeometry();
    update();
}

QSize WarningLines::sizeHint() const {
    int width = 0;
    const QFontMetrics metrics(warningFont());
    for (const QString& line : lines_)
        width = qMax(width, metrics.horizontalAdvance(line));
    return {width, static_cast<int>(lines_.size()) * warningLineHeight};
}

QSize WarningLines::minimumSizeHint() const {
    return {0, sizeHint().height()};
}

void WarningLines::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setFont(warningFont());
    painter.setPen(MRVTheme::muted());
    const QFontMetrics metrics(warningFont());
    for (int i = 0; i < lines_.size(); ++i) {
        const QRect line(0, i * warningLineHeight, width(), warningLineHeight);
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                         metrics.elidedText(lines_[i], Qt::ElideRight, width()));
    }
}

PreviewPanel::PreviewPanel(QWidget* parent)
    : QWidget(parent),
      badge_(new StepBadge(3, this)),
      previewTitle_(makeBoldLabel(14, MRVTheme::ink(), this)),
      previewSubtitle_(new ElidedLabel(11, MRVTheme::muted(), ElidedLabel::Weight::Regular, this)),
      previewControl_(new SegmentedControl({QStringLiteral("磁盘目录"), QStringLiteral("FCP 分类")},
                                           SegmentedControl::Size::Small, this)),
      model_(new PlanTreeModel(this)),
      warningsRow_(new QWidget(this)),
      warningsLabel_(new WarningLines(warningsRow_)) {
    previewTitle_->setObjectName(QStringLiteral("previewTitle"));
    previewSubtitle_->setObjectName(QStringLiteral("previewSubtitle"));
    previewControl_->setObjectName(QStringLiteral("previewControl"));
    previewControl_->setAccessibleName(QStringLiteral("预演方式"));
    warningsLabel_->setObjectName(QStringLiteral("warningsLabel"));
    connect(previewControl_, &SegmentedControl::segmentChosen, this, &PreviewPanel::modeChosen);

    auto* heading = new QHBoxLayout;
    heading->setSpacing(10);
    heading->addWidget(badge_);
    heading->addWidget(previewTitle_);
    heading->addWidget(previewSubtitle_, 1);
    heading->addWidget(previewControl_);
    auto* warnings = new QHBoxLayout(warningsRow_);
    warnings->setContentsMargins(0, 10, 0, 0);
    warnings->setSpacing(9);
    auto* glyph =
        new SymbolView(QStringLiteral("exclamationmark.triangle"), 16, MRVTheme::warning(), warningsRow_);
    warnings->addWidget(glyph, 0, Qt::AlignTop);
    warnings->addWidget(warningsLabel_, 1);
    warningsRow_->hide();
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(20, 18, 20, 14);
    rows->setSpacing(0);
    rows->addLayout(heading);
    rows->addSpacing(8);
    rows->addWidget(makeCard(), 1);
    rows->addWidget(warningsRow_);
}

QWidget* PreviewPanel::makeCard() {
    auto* card = new Card(10, this);
    rootSymbol_ = new SymbolView(QString(), 18, MRVTheme::accent(), card);
    rootTitle_ = new ElidedLabel(13, MRVTheme::ink(), ElidedLabel::Weight::Bold, card);
    rootTitle_->setObjectName(QStringLiteral("previewRootTitle"));
    summaryLabel_ = makeLabel(11, MRVTheme::muted(), card);
    summaryLabel_->setObjectName(QStringLiteral("summaryLabel"));
    outline_ = new PlanTreeView(card);
    outline_->setObjectName(QStringLiteral("outline"));
    outline_->setAccessibleName(QStringLiteral("整理预演"));
    outline_->setModel(model_);
    outline_->setMinimumHeight(leastTreeHeight - rootRowHeight);

    auto* rootRow = new QWidget(card);
    rootRow->setFixedHeight(rootRowHeight - 1);
    auto* root = new QHBoxLayout(rootRow);
    root->setContentsMargins(14, 0, 14, 0);
    root->setSpacing(9);
    root->addWidget(rootSymbol_);
    root->addWidget(rootTitle_, 1);
    root->addSpacing(7);
    root->addWidget(summaryLabel_);
    auto* rows = new QVBoxLayout(card);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(rootRow);
    rows->addWidget(new Rule(Qt::Horizontal, card));
    rows->addSpacing(6);
    rows->addWidget(outline_, 1);
    rows->addSpacing(6);
    return card;
}

PreviewMode PreviewPanel::mode() const {
    return previewControl_->selectedSegment() == 1 ? PreviewMode::fcp : PreviewMode::disk;
}

void PreviewPanel::showTexts(const PreviewTexts& texts) {
    previewTitle_->setText(QString::fromStdString(texts.title));
    previewSubtitle_->setText(QString::fromStdString(texts.subtitle));
    rootSymbol_->setSymbol(QString::fromStdString(texts.rootSymbol));
    rootTitle_->setText(QString::fromStdString(texts.rootTitle));
    summaryLabel_->setText(QString::fromStdString(texts.summary));
    previewSubtitle_->setToolTip(QString::fromStdString(texts.subtitleToolTip));
}

std::shared_ptr<const PlanTree> PreviewPanel::showTree(std::shared_ptr<const PlanTree> tree) {
    return model_->setTree(std::move(tree));
}

std::vector<QWidget*> PreviewPanel::tabOrder() const {
    return {previewControl_, outline_};
}

void PreviewPanel::setDone(bool done) {
    badge_->setDone(done);
}

void PreviewPanel::showWarnings(const std::string& text, const std::string& toolTip) {
    warningsLabel_->setText(QString::fromStdString(text));
    warningsLabel_->setToolTip(plainToolTip(QString::fromStdString(toolTip)));
    warningsRow_->setVisible(!text.empty());
}

}  // namespace morvane
