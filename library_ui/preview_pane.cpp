#include "library_ui/preview_pane.h"

#include "library_ui/overlay_scroll_bar.h"
#include "library_ui/picture_view.h"

#include "app/theme/artwork.h"
#include "app/theme/elided_label.h"
#include "app/theme/focus_ring.h"
#include "app/theme/paint.h"
#include "app/theme/push_button.h"
#include "app/theme/symbol_view.h"
#include "app/theme/theme.h"
#include "catalog/asset.h"

#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QScrollArea>
#include <QSlider>
#include <QStackedLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace morvane {

namespace {

constexpr int padding = 16;
constexpr int canvasHeight = 220;
constexpr int leastCanvasHeight = 120;
/// Below this the path gives up its second line for the canvas.
constexpr int comfortableCanvasHeight = 150;
/// Everything but the canvas, with a title of one line and a path of two (one) lines.
constexpr int restHeight = 395;
constexpr int restHeightShortPath = 372;
constexpr int noticeHeight = 57;
constexpr int milliseconds = 1000;
constexpr int volumeSteps = 1000;
constexpr int initialVolume = 800;

/// The rounded box around the path; shows the ring while the path has the keyboard.
class PathBox final : public QWidget {
public:
    explicit PathBox(ElidedLabel* label) : label_(label) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(10, 8, 10, 8);
        layout->addWidget(label);
        label->installEventFilter(this);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        Box box{.radius = 8, .fill = MRVTheme::field(), .border = {}};
        if (focusRingShown(label_)) {
            box.border = MRVTheme::accent();
            box.borderWidth = 2;
        }
        paintBox(painter, rect(), box);
    }
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
            update();
        return false;
    }

private:
    ElidedLabel* label_;
};

class HairLine final : public QWidget {
public:
    HairLine() { setFixedHeight(1); }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        paintHairline(painter, rect(), Qt::TopEdge, MRVTheme::line());
    }
};

PushButton* fileButton(const QString& title, const QString& symbol) {
    auto* button = new PushButton(title, symbol);
    button->setPadding(6);
    button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    button->setAccessibleName(title);
    return button;
}

QSlider* slider(int maximum, int value, int step, const QString& name) {
    auto* made = new QSlider(Qt::Horizontal);
    made->setRange(0, maximum);
    made->setValue(value);
    made->setSingleStep(step);
    made->setPageStep(step * 10);
    made->setFixedHeight(20);
    made->setFocusPolicy(Qt::TabFocus);
    made->setAccessibleName(name);
    return made;
}

int toMilliseconds(double seconds) {
    constexpr double most = 2'000'000'000.0;
    return static_cast<int>(std::lround(std::clamp(seconds * milliseconds, 0.0, most)));
}

}  // namespace

PreviewPane::PreviewPane(QWidget* parent) : QWidget(parent) {
    hold_.setSingleShot(true);
    hold_.setInterval(paintHold);
    makeControls();
    layOut();
    wire();
    clearPreview();
}

PreviewPane::~PreviewPane() = default;

void PreviewPane::makeControls() {
    text.previewTitle = new ElidedLabel(15, MRVTheme::ink(), ElidedLabel::Weight::Bold);
    text.previewTitle->setMaximumLines(2);
    text.previewTitle->setElideMode(Qt::ElideMiddle);
    text.detail = new ElidedLabel(11, MRVTheme::muted());
    text.detail->setMaximumLines(2);
    text.detail->setReserveLines(true);
    text.detail->setElideMode(Qt::ElideMiddle);
    text.pathLabel = new ElidedLabel(11, MRVTheme::muted());
    text.pathLabel->setElideMode(Qt::ElideMiddle);
    text.pathLabel->setMaximumLines(2);
    text.pathLabel->setAccessibleName(QStringLiteral("素材完整路径"));
    text.pathLabel->setFocusPolicy(Qt::TabFocus);
    text.notice = new ElidedLabel(11, MRVTheme::muted());
    text.notice->setMaximumLines(2);
    noticeGlyph_ = new SymbolView({}, 14, MRVTheme::muted());

    canvas.playerView = new PlayerView;
    canvas.artwork = new Artwork;
    canvas.artwork->setCornerRadius(10);
    canvas.imageView = new PictureView;

    transport.play =
        new PushButton(QStringLiteral("播放"), QStringLiteral("play.fill"), PushButton::Role::Primary);
    transport.play->setFixedWidth(88);
    transport.time = new QLabel;
    transport.time->setFont(MRVTheme::font(11));
    transport.time->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    transport.time->setMinimumWidth(72);
    QPalette muted = transport.time->palette();
    muted.setColor(QPalette::WindowText, MRVTheme::muted());
    transport.time->setPalette(muted);
    transport.seek = slider(milliseconds, 0, milliseconds, QStringLiteral("播放位置"));
    transport.volume = slider(volumeSteps, initialVolume, volumeSteps / 20, QStringLiteral("音量"));
    transport.volume->setFixedWidth(96);
    transport.auto_ = new QCheckBox(QStringLiteral("选中后自动试听"));
    transport.auto_->setFixedHeight(24);
    transport.auto_->setFocusPolicy(Qt::TabFocus);

    fileButtons.favorite = fileButton(QStringLiteral("收藏"), QStringLiteral("star"));
    fileButtons.reveal = fileButton(QStringLiteral("显示位置"), QStringLiteral("reveal"));
    fileButtons.copy = fileButton(QStringLiteral("复制文件"), QStringLiteral("doc.on.doc"));
    fileButtons.open = fileButton(QStringLiteral("外部打开"), QStringLiteral("arrow.up.forward.square"));
    fileButtons.rename = fileButton(QStringLiteral("重命名"), QStringLiteral("pencil"));
}

void PreviewPane::layOut() {
    body_ = new QWidget;
    auto* column = new QVBoxLayout(body_);
    column->setContentsMargins(padding, padding, padding, 0);
    column->setSpacing(0);

    canvasBox_ = new QWidget;
    canvasBox_->setAccessibleName(QStringLiteral("素材预览"));
    canvasStack_ = new QStackedLayout(canvasBox_);
    for (QWidget* view : {static_cast<QWidget*>(canvas.artwork), static_cast<QWidget*>(canvas.imageView),
                          static_cast<QWidget*>(canvas.playerView)})
        canvasStack_->addWidget(view);
    column->addWidget(canvasBox_);
    column->addSpacing(14);
    column->addWidget(text.previewTitle);
    column->addSpacing(3);
    column->addWidget(text.detail);
    column->addSpacing(14);
    column->addLayout(transportRow());
    column->addSpacing(8);
    column->addLayout(volumeRow());
    column->addSpacing(12);
    column->addWidget(new HairLine);
    column->addSpacing(14);
    column->addLayout(fileButtonRows());
    column->addSpacing(14);
    pathBox_ = new PathBox(text.pathLabel);
    column->addWidget(pathBox_);
    column->addStretch(1);

    scroll_ = new QScrollArea;
    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setWidgetResizable(true);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll_->setFocusPolicy(Qt::NoFocus);
    scroll_->setWidget(body_);
    new OverlayScrollBar(scroll_);
    auto* pane = new QVBoxLayout(this);
    pane->setContentsMargins(0, 0, 0, 0);
    pane->setSpacing(0);
    pane->addWidget(scroll_, 1);
    pane->addWidget(noticeFooter());
    setAutoFillBackground(true);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, MRVTheme::panel());
    setPalette(colours);
}

QLayout* PreviewPane::transportRow() {
    auto* row = new QHBoxLayout;
    row->setSpacing(padding);
    row->addWidget(transport.play);
    row->addWidget(transport.seek, 1);
    row->addWidget(transport.time);
    return row;
}

QLayout* PreviewPane::volumeRow() {
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(new SymbolView(QStringLiteral("speaker.wave.2"), 16, MRVTheme::muted()));
    row->addWidget(transport.volume);
    row->addStretch(1);
    row->addWidget(transport.auto_);
    return row;
}

QLayout* PreviewPane::fileButtonRows() {
    auto* grid = new QGridLayout;
    grid->setSpacing(8);
    int place = 0;
    for (PushButton* button :
         {fileButtons.favorite, fileButtons.reveal, fileButtons.copy, fileButtons.open, fileButtons.rename}) {
        grid->addWidget(button, place / 3, place % 3);
        ++place;
    }
    for (int i = 0; i < 3; ++i)
        grid->setColumnStretch(i, 1);
    return grid;
}

QWidget* PreviewPane::noticeFooter() {
    auto* footer = new QWidget;
    footer->setFixedHeight(noticeHeight);
    auto* column = new QVBoxLayout(footer);
    column->setContentsMargins(padding, 0, padding, 0);
    column->setSpacing(0);
    column->addWidget(new HairLine);
    column->addSpacing(9);
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    auto* glyphPlace = new QVBoxLayout;
    glyphPlace->setContentsMargins(0, 1, 0, 0);
    glyphPlace->addWidget(noticeGlyph_);
    glyphPlace->addStretch(1);
    row->addLayout(glyphPlace);
    row->addWidget(text.notice, 1, Qt::AlignTop);
    column->addLayout(row);
    column->addStretch(1);
    return footer;
}

void PreviewPane::wire() {
    connect(&hold_, &QTimer::timeout, this, &PreviewPane::releasePainting);
    connect(transport.play, &QPushButton::clicked, this, &PreviewPane::playToggled);
    connect(transport.seek, &QSlider::valueChanged, this, [this](int value) {
        if (!settingSliders_)
            Q_EMIT seekChanged(static_cast<double>(value) / milliseconds);
    });
    connect(transport.volume, &QSlider::valueChanged, this, [this] {
        describeVolume();
        Q_EMIT volumeChanged(volumeValue());
    });
    connect(transport.auto_, &QCheckBox::clicked, this, &PreviewPane::autoChanged);
    connect(fileButtons.favorite, &QPushButton::clicked, this, &PreviewPane::favoriteToggled);
    connect(fileButtons.reveal, &QPushButton::clicked, this, &PreviewPane::revealRequested);
    connect(fileButtons.copy, &QPushButton::clicked, this, &PreviewPane::copyRequested);
    connect(fileButtons.open, &QPushButton::clicked, this, &PreviewPane::openRequested);
    connect(fileButtons.rename, &QPushButton::clicked, this, &PreviewPane::renameRequested);
    describeVolume();
    QWidget* const order[] = {transport.play,       transport.seek,     transport.volume, transport.auto_,
                              fileButtons.favorite, fileButtons.reveal, fileButtons.copy, fileButtons.open,
                              fileButtons.rename,   text.pathLabel};
    for (std::size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);
}

void PreviewPane::showAsset(const Asset& asset, Favorite favorite) {
    holdPainting();
    hasAsset_ = true;
    mode_ = previewModeOf(asset);
    text.previewTitle->setText(fileNameText(viewOf(asset)));
    text.detail->setText(detailText(viewOf(asset)));
    text.pathLabel->setText(shownText(asset.path));
    pathBox_->show();
    resetTransport();
    canvas.imageView->setPicture({});
    canvas.artwork->setMode(shownText(asset.symbol()));
    showOnCanvas(canvas.artwork);
    updateFavorite(favorite);
    file_ = FileState::Asking;
    noticeKept_ = false;
    applyButtons();
    fitCanvas();
}

void PreviewPane::showFileState(FileState file, const CachedPicture& picture) {
    if (!hasAsset_)
        return;
    file_ = file;
    applyButtons();
    if (!noticeKept_)
        setNotice(noticeFor(mode_, file, picture.cached));
    if (file == FileState::Present) {
        const bool playable = mode_ == PreviewMode::Audio || mode_ == PreviewMode::Video;
        transport.play->setEnabled(playable);
        if (mode_ == PreviewMode::Video)
            showOnCanvas(canvas.playerView);
        if (mode_ == PreviewMode::Picture && picture.cached != PictureCached::No) {
            canvas.imageView->setPicture(picture.image);
            showOnCanvas(canvas.imageView);
        }
    }
    restoreFocus();
    releasePainting();
}

void PreviewPane::showPicture(const QImage& picture) {
    canvas.imageView->setPicture(picture);
    showOnCanvas(picture.isNull() ? static_cast<QWidget*>(canvas.artwork) : canvas.imageView);
    setNotice(picture.isNull() ? notices::pictureUndecodable() : notices::pictureShown());
}

void PreviewPane::showReady(double duration) {
    if (!std::isfinite(duration) || duration < 0)
        return;
    {
        settingSliders_ = true;
        transport.seek->setMaximum(std::max(1, toMilliseconds(duration)));
        settingSliders_ = false;
    }
    transport.seek->setEnabled(true);
    setClock(0, duration);
}

void PreviewPane::showUndecodable() {
    transport.play->setEnabled(false);
    transport.seek->setEnabled(false);
    setNotice(notices::mediaUndecodable());
}

void PreviewPane::showClock(double current, double duration) {
    setClock(current, duration);
    if (transport.seek->isSliderDown())
        return;
    settingSliders_ = true;
    transport.seek->setValue(toMilliseconds(current));
    settingSliders_ = false;
}

void PreviewPane::clearPreview() {
    hasAsset_ = false;
    file_ = FileState::Missing;
    text.previewTitle->setText(QStringLiteral("选择一个素材"));
    text.detail->setText(QStringLiteral("支持音频试听、视频试看和图片预览。"));
    text.pathLabel->setText({});
    pathBox_->hide();
    resetTransport();
    canvas.imageView->setPicture({});
    canvas.artwork->setMode(QStringLiteral("waveform"));
    showOnCanvas(canvas.artwork);
    updateFavorite(Favorite::No);
    applyButtons();
    setNotice(notices::nothingShown());
    updatePlayButton(false);
    fitCanvas();
    releasePainting();
}

void PreviewPane::updatePlayButton(bool playing) {
    const QString title = playing ? QStringLiteral("暂停") : QStringLiteral("播放");
    transport.play->setText(title);
    transport.play->setSymbol(playing ? QStringLiteral("pause.fill") : QStringLiteral("play.fill"));
    transport.play->setAccessibleName(title);
}

void PreviewPane::updateFavorite(Favorite favorite) {
    const bool yes = favorite == Favorite::Yes;
    const QString title = yes ? QStringLiteral("已收藏") : QStringLiteral("收藏");
    fileButtons.favorite->setText(title);
    fileButtons.favorite->setSymbol(yes ? QStringLiteral("star.fill") : QStringLiteral("star"));
    fileButtons.favorite->setSymbolTone(yes ? PushButton::SymbolTone::Accent
                                            : PushButton::SymbolTone::Standard);
    fileButtons.favorite->setAccessibleName(title);
}

void PreviewPane::setNotice(const Notice& notice) {
    noticeKept_ = hasAsset_ && file_ == FileState::Asking;
    text.notice->setText(notice.text);
    noticeGlyph_->setSymbol(notice.symbol);
    noticeGlyph_->setColor(notice.tone == Notice::Tone::Warning ? MRVTheme::warning() : MRVTheme::muted());
}

void PreviewPane::setScanning(Scanning scanning) {
    scanning_ = scanning;
    applyButtons();
}

void PreviewPane::setAutoplay(bool on) {
    transport.auto_->setChecked(on);
}

double PreviewPane::volumeValue() const {
    return static_cast<double>(transport.volume->value()) / volumeSteps;
}

void PreviewPane::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitCanvas();
}

void PreviewPane::applyButtons() {
    const FileButtonStates states = hasAsset_ ? fileButtonsFor(file_, scanning_) : FileButtonStates{};
    rememberFocus(states);
    fileButtons.favorite->setEnabled(states.favorite);
    fileButtons.reveal->setEnabled(states.reveal);
    fileButtons.copy->setEnabled(states.copy);
    fileButtons.open->setEnabled(states.open);
    fileButtons.rename->setEnabled(states.rename);
}

void PreviewPane::rememberFocus(const FileButtonStates& states) {
    const std::pair<PushButton*, bool> buttons[] = {{fileButtons.reveal, states.reveal},
                                                    {fileButtons.copy, states.copy},
                                                    {fileButtons.open, states.open},
                                                    {fileButtons.rename, states.rename}};
    for (const auto& [button, enabled] : buttons) {
        if (button->hasFocus() && !enabled && file_ == FileState::Asking)
            focusBefore_ = button;
    }
}

void PreviewPane::restoreFocus() {
    if (focusBefore_ && focusBefore_->isEnabled())
        focusBefore_->setFocus(Qt::OtherFocusReason);
    focusBefore_ = nullptr;
}

void PreviewPane::resetTransport() {
    transport.play->setEnabled(false);
    transport.seek->setEnabled(false);
    settingSliders_ = true;
    transport.seek->setRange(0, milliseconds);
    transport.seek->setValue(0);
    settingSliders_ = false;
    setClock(0, 0);
}

void PreviewPane::setClock(double current, double duration) {
    transport.time->setText(clockPairText(current, duration));
    transport.seek->setAccessibleDescription(transport.time->text());
}

void PreviewPane::describeVolume() {
    transport.volume->setAccessibleDescription(QStringLiteral("%1%").arg(std::lround(volumeValue() * 100)));
}

void PreviewPane::showOnCanvas(QWidget* view) {
    canvasStack_->setCurrentWidget(view);
}

void PreviewPane::fitCanvas() {
    const int inner = width() - 2 * padding;
    const int titleExtra = std::max(0, text.previewTitle->heightForWidth(inner) - MRVTheme::lineHeight(15));
    const int room = height() - titleExtra;
    const bool shortPath = room - restHeight < comfortableCanvasHeight;
    text.pathLabel->setMaximumLines(shortPath ? 1 : 2);
    const int canvasRoom = room - (shortPath ? restHeightShortPath : restHeight);
    const int fitted = std::clamp(canvasRoom, leastCanvasHeight, canvasHeight);
    canvasBox_->setFixedHeight(fitted);
}

void PreviewPane::holdPainting() {
    setUpdatesEnabled(false);
    hold_.start();
}

void PreviewPane::releasePainting() {
    hold_.stop();
    setUpdatesEnabled(true);
}

}  // namespace morvane
