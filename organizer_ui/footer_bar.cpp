#include "organizer_ui/footer_bar.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include "app/theme/edge_progress.h"
#include "app/theme/elided_label.h"
#include "app/theme/paint.h"
#include "app/theme/plain_tool_tip.h"
#include "app/theme/push_button.h"
#include "app/theme/spinner.h"
#include "app/theme/symbol_view.h"
#include "app/theme/theme.h"
#include "organizer_ui/panel_parts.h"

namespace morvane {

namespace {

constexpr int footerHeight = 96;
constexpr int glyphSize = 18;
constexpr int textRowHeight = 24;

const QColor& glyphColor(Tone tone) {
    switch (tone) {
        case Tone::accent:
            return MRVTheme::accent();
        case Tone::success:
            return MRVTheme::success();
        case Tone::warning:
            return MRVTheme::warning();
        case Tone::danger:
            return MRVTheme::danger();
        case Tone::muted:
            break;
    }
    return MRVTheme::muted();
}

EdgeProgress::Tone progressTone(Tone tone) {
    if (tone == Tone::success)
        return EdgeProgress::Tone::Success;
    return tone == Tone::muted ? EdgeProgress::Tone::Partial : EdgeProgress::Tone::Accent;
}

PushButton* makeButton(const char* name, const QString& text, const QString& symbol, QWidget* parent) {
    auto* button = new PushButton(text, symbol, PushButton::Role::Secondary, parent);
    button->setObjectName(QLatin1String(name));
    button->setAccessibleName(text);
    return button;
}

/// Room a hidden widget keeps, so that nothing moves when it comes.
void keepRoom(QWidget* widget) {
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
}

}  // namespace

FooterBar::FooterBar(QWidget* parent)
    : QWidget(parent),
      progressBar_(new EdgeProgress(this)),
      look_(new QWidget(this)),
      glyph_(new SymbolView(QString(), glyphSize, MRVTheme::muted(), look_)),
      spinner_(new Spinner(glyphSize, MRVTheme::accent(), look_)),
      footerTitle_(makeBoldLabel(13, MRVTheme::ink(), this)),
      footerDetail_(new ElidedLabel(12, MRVTheme::muted(), ElidedLabel::Weight::Regular, this)),
      recoveryButton_(makeButton("recoveryButton", QStringLiteral("继续之前的任务…"),
                                 QStringLiteral("arrow.clockwise"), this)),
      cut_(new Rule(Qt::Vertical, this)),
      revealButton_(
          makeButton("revealButton", QStringLiteral("显示项目文件夹"), QStringLiteral("folder"), this)),
      reportButton_(makeButton("reportButton", QStringLiteral("查看整理报告"),
                               QStringLiteral("list.bullet.rectangle"), this)),
      fcpButton_(makeButton("fcpButton", QStringLiteral("交给 Final Cut Pro…"),
                            QStringLiteral("square.and.arrow.up"), this)),
      cancelButton_(makeButton("cancelButton", QStringLiteral("取消"), QStringLiteral("xmark"), this)),
      primaryButton_(makeButton("primaryButton", QString(), QString(), this)) {
    setFixedHeight(footerHeight);
    progressBar_->setObjectName(QStringLiteral("progressBar"));
    progressBar_->setAccessibleName(QStringLiteral("整理进度"));
    footerTitle_->setObjectName(QStringLiteral("footerTitle"));
    footerDetail_->setObjectName(QStringLiteral("footerDetail"));
    primaryButton_->setRole(PushButton::Role::Primary);
    primaryButton_->setButtonSize(PushButton::Size::Large);
    footerTitle_->setFixedHeight(textRowHeight);
    cut_->setFixedHeight(glyphSize);
    look_->setFixedSize(glyphSize, glyphSize);
    glyph_->resize(glyphSize, glyphSize);
    spinner_->resize(glyphSize, glyphSize);
    keepRoom(cancelButton_);

    auto* text = new QHBoxLayout;
    text->setSpacing(10);
    text->addWidget(look_);
    text->addWidget(footerTitle_);
    text->addWidget(footerDetail_, 1);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addWidget(recoveryButton_);
    buttons->addSpacing(4);
    buttons->addWidget(cut_);
    buttons->addSpacing(4);
    buttons->addWidget(revealButton_);
    buttons->addWidget(reportButton_);
    buttons->addWidget(fcpButton_);
    buttons->addStretch(1);
    buttons->addWidget(cancelButton_);
    buttons->addWidget(primaryButton_);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(20, 12, 20, 14);
    rows->setSpacing(10);
    rows->addLayout(text);
    rows->addLayout(buttons);
}

void FooterBar::showState(const OrganizerState& state) {
    showLook(state);
    const QString title = QString::fromStdString(state.footerTitle);
    const QString detail = QString::fromStdString(state.footerDetail);
    footerTitle_->setText(title);
    footerDetail_->setText(detail);
    footerDetail_->setToolTip(plainToolTip(detail));
    announce(state);
}

void FooterBar::showLook(const OrganizerState& state) {
    const FooterLook look = footerLookFor(state);
    const bool spinning = look.symbol.empty();
    glyph_->setVisible(!spinning);
    spinner_->setVisible(spinning);
    glyph_->setSymbol(QString::fromStdString(look.symbol));
    glyph_->setColor(glyphColor(look.glyph));
    spinner_->setColor(glyphColor(look.glyph));
    progressBar_->setTone(progressTone(look.progress));
    switch (state.progressBar.mode) {
        case ProgressBarState::Mode::hidden:
            progressBar_->setNone();
            break;
        case ProgressBarState::Mode::indeterminate:
            progressBar_->setIndeterminate();
            break;
        case ProgressBarState::Mode::determinate:
            progressBar_->setFraction(state.progressBar.value);
            break;
    }
}

void FooterBar::showControls(const OrganizerControls& controls) {
    recoveryButton_->setEnabled(controls.inputsEnabled);
    cut_->setVisible(controls.revealVisible);
    revealButton_->setVisible(controls.revealVisible);
    reportButton_->setVisible(controls.reportVisible);
    fcpButton_->setVisible(controls.fcpVisible);
    cancelButton_->setVisible(controls.cancelVisible);
    cancelButton_->setEnabled(controls.cancelEnabled);
    const QString title = QString::fromStdString(controls.primaryTitle);
    primaryButton_->setText(title);
    primaryButton_->setAccessibleName(title);
    primaryButton_->setSymbol(QString::fromStdString(controls.primarySymbol));
    primaryButton_->setEnabled(controls.primaryEnabled);
}

std::vector<QWidget*> FooterBar::tabOrder() const {
    return {recoveryButton_, revealButton_, reportButton_, fcpButton_, cancelButton_, primaryButton_};
}

void FooterBar::setProgressToolTip(const QString& text) {
    progressBar_->setToolTip(text);
}

void FooterBar::announce(const OrganizerState& state) {
    setAccessibleName(footerTitle_->text() + QStringLiteral("，") + footerDetail_->text());
    const int tenth = static_cast<int>(state.progressBar.value * 10);
    if (state.phase == announcedPhase_ && (state.phase != Phase::copying || tenth == announcedTenth_))
        return;
    announcedPhase_ = state.phase;
    announcedTenth_ = tenth;
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void FooterBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), MRVTheme::panel());
}

void FooterBar::resizeEvent(QResizeEvent*) {
    progressBar_->setGeometry(0, 0, width(), progressBar_->sizeHint().height());
}

}  // namespace morvane
