#include "app/window_frame.h"

#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QStackedLayout>
#include <QStyleHints>
#include <QVBoxLayout>
#include <QWindow>

#include "app/theme/elided_label.h"
#include "app/theme/focus_ring.h"
#include "app/theme/keyboard_window.h"
#include "app/theme/paint.h"
#include "app/theme/push_button.h"
#include "app/theme/search_field.h"
#include "app/theme/segmented_control.h"
#include "app/theme/spinner.h"
#include "app/theme/symbol_view.h"
#include "app/theme/theme.h"

namespace morvane {
namespace {

constexpr int menuBarHeight = 28;
constexpr int headerHeight = 96;
constexpr int statusHeight = 28;
constexpr int margin = 20;
constexpr int brandWidth = 220;
constexpr int brandGap = 17;  // puts the segmented control at x 257, on the list's text edge
constexpr int controlGap = 8;
constexpr int glyphSize = 14;
constexpr QSize firstSize(1340, 840);
constexpr QSize leastSize(1100, 650);
constexpr int leastSearch = 300;
constexpr int leastSearchOnSmallScreen = 80;  // beside everything else of an 800 wide header

/// A bar of the frame with a hairline along one edge; the window can be moved by its empty parts.
class Bar final : public QWidget {
public:
    Bar(int height, Qt::Edge edge) : edge_(edge) { setFixedHeight(height); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        paintHairline(painter, rect(), edge_, MRVTheme::line());
    }
    void mousePressEvent(QMouseEvent* event) override { pressed_ = event->pos(); }
    void mouseMoveEvent(QMouseEvent* event) override {
        const bool dragged = (event->pos() - pressed_).manhattanLength() >= QApplication::startDragDistance();
        if (event->buttons() == Qt::LeftButton && dragged && window()->windowHandle() != nullptr)
            window()->windowHandle()->startSystemMove();
    }

private:
    Qt::Edge edge_;
    QPoint pressed_;
};

/// The given smallest size, or less on a screen that does not hold it.
QSize fitted(QSize size, const QWidget& window) {
    return size.boundedTo(window.screen()->availableSize());
}

/// What had the keyboard in `view` last, else the first control there that takes it.
QWidget* keyboardPlace(QWidget& view) {
    const auto takes = [&view](const QWidget* control) {
        return view.isAncestorOf(control) && (control->focusPolicy() & Qt::TabFocus) != 0 &&
               control->isEnabled() && control->isVisibleTo(&view);
    };
    if (QWidget* last = view.focusWidget(); last != nullptr && takes(last))
        return last;
    QWidget* control = view.nextInFocusChain();
    while (control != &view && !takes(control))
        control = control->nextInFocusChain();
    return control != &view ? control : nullptr;
}

}  // namespace

StatusGlyph statusGlyphFor(const StatusFacts& facts) {
    if (facts.isLoading || facts.isScanning)
        return StatusGlyph::Busy;
    if (facts.workspace == Workspace::Organizer)
        return StatusGlyph::None;
    if (facts.isUnsaved)
        return StatusGlyph::Warning;
    return facts.hasOfflineRoot ? StatusGlyph::OfflineRoot : StatusGlyph::None;
}

WindowFrame::WindowFrame(QObject* parent)
    : QObject(parent),
      workspaceControl_(std::make_unique<SegmentedControl>(QStringList{"管理素材", "整理素材"},
                                                           SegmentedControl::Size::Large)),
      workspaceHost_(std::make_unique<QWidget>()),
      search_(std::make_unique<SearchField>()),
      status_(std::make_unique<ElidedLabel>(11, MRVTheme::muted())),
      refreshButton_(std::make_unique<PushButton>("刷新索引", "arrow.clockwise")),
      glyphView_(std::make_unique<SymbolView>("", glyphSize, MRVTheme::warning())),
      spinner_(std::make_unique<Spinner>(glyphSize, MRVTheme::accent())) {
    workspaceControl_->setAccessibleName("工作区");
    workspaceControl_->setObjectName("workspaceControl");
    workspaceHost_->setObjectName("workspaceHost");
    search_->setPlaceholderText("搜索名称、分类、关键词…");
    search_->setAccessibleName("搜索素材");
    search_->setObjectName("search");
    status_->setText("正在读取素材库…");
    status_->setObjectName("status");
    refreshButton_->setObjectName("refreshButton");
    glyphView_->hide();
    spinner_->hide();
    busyDelay_.setSingleShot(true);
    busyDelay_.setInterval(busyDelay);
    connect(&busyDelay_, &QTimer::timeout, this, [this] { spinner_->show(); });
}

WindowFrame::~WindowFrame() {
    if (window_)
        window_->removeEventFilter(this);
}

void WindowFrame::build(QWidget* management, QWidget* organizer) {
    window_ = std::make_unique<KeyboardWindow>();
    window_->setObjectName("window");
    window_->setWindowTitle("MORVANE 素材助手");
    addFolderButton_ = std::make_unique<PushButton>("添加文件夹…", "folder.badge.plus");
    addFolderButton_->setObjectName("addFolderButton");

    workspaces_ = new QStackedLayout(workspaceHost_.get());
    workspaces_->addWidget(management);
    workspaces_->addWidget(organizer);

    auto* menuBar = new QMenuBar;
    menuBar->setFixedHeight(menuBarHeight);
    buildMainMenu(*menuBar, [this](MenuCommand command) { Q_EMIT menuChosen(command); });
    window_->setMenuBar(menuBar);

    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeHeader());
    column->addWidget(workspaceHost_.get(), 1);
    column->addWidget(makeStatusLine());
    window_->setCentralWidget(content);
    window_->setMinimumSize(fitted(leastSize, *window_));
    window_->resize(fitted(firstSize, *window_));
    fitSearch();
    wire();
}

QWidget* WindowFrame::makeHeader() {
    auto* header = new Bar(headerHeight, Qt::BottomEdge);
    auto* brand = new QWidget;
    brand->setFixedWidth(brandWidth);
    brand->setAttribute(Qt::WA_TransparentForMouseEvents);
    brands_ = new QStackedLayout(brand);
    for (const char* detail : {"管理素材，准备每一次剪辑", "整理素材，交接每一次拍摄"})
        brands_->addWidget(MRVTheme::nativeHeader("素材助手", QString::fromUtf8(detail)));
    auto* row = new QHBoxLayout(header);
    row->setContentsMargins(margin, 0, margin, 6);
    row->setSpacing(0);
    row->addWidget(brand);
    row->addSpacing(brandGap);
    row->addWidget(workspaceControl_.get());
    row->addStretch(1);
    for (QWidget* control :
         {static_cast<QWidget*>(search_.get()), static_cast<QWidget*>(refreshButton_.get()),
          static_cast<QWidget*>(addFolderButton_.get())}) {
        row->addSpacing(controlGap);
        row->addWidget(control);
    }
    QWidget::setTabOrder(workspaceControl_.get(), search_.get());
    QWidget::setTabOrder(search_.get(), refreshButton_.get());
    QWidget::setTabOrder(refreshButton_.get(), addFolderButton_.get());
    return header;
}

QWidget* WindowFrame::makeStatusLine() {
    auto* line = new Bar(statusHeight, Qt::TopEdge);
    auto* row = new QHBoxLayout(line);
    row->setContentsMargins(margin, 1, margin, 0);
    row->setSpacing(controlGap);
    row->addWidget(glyphView_.get());
    row->addWidget(spinner_.get());
    row->addWidget(status_.get(), 1);
    return line;
}

void WindowFrame::wire() {
    connect(workspaceControl_.get(), &SegmentedControl::segmentChosen, this, &WindowFrame::workspaceChanged);
    connect(search_.get(), &SearchField::textChanged, this, &WindowFrame::searchChanged);
    connect(refreshButton_.get(), &PushButton::clicked, this, &WindowFrame::refreshRequested);
    connect(addFolderButton_.get(), &PushButton::clicked, this, &WindowFrame::addFolderRequested);
    window_->installEventFilter(this);
}

void WindowFrame::showWorkspace(Workspace workspace) {
    const bool switches = workspaces_->currentIndex() != static_cast<int>(workspace);
    const bool byKeyboard = focusRingShown(workspaceControl_.get());
    // Left to Qt, the keyboard would go to whatever follows the control that hides.
    if (switches)
        workspaceControl_->setFocus(Qt::OtherFocusReason);
    workspaces_->setCurrentIndex(static_cast<int>(workspace));
    brands_->setCurrentIndex(static_cast<int>(workspace));
    const bool isLibrary = workspace == Workspace::Management;
    search_->setVisible(isLibrary);
    refreshButton_->setVisible(isLibrary);
    addFolderButton_->setVisible(isLibrary);
    QWidget* control = switches && !byKeyboard ? keyboardPlace(currentWorkspaceView()) : nullptr;
    if (control != nullptr)
        control->setFocus(Qt::OtherFocusReason);
}

Workspace WindowFrame::workspace() const {
    return workspaceControl_->selectedSegment() == 1 ? Workspace::Organizer : Workspace::Management;
}

QWidget& WindowFrame::currentWorkspaceView() const {
    return *workspaces_->currentWidget();
}

void WindowFrame::setStatus(const QString& text) {
    status_->setText(text);
}

void WindowFrame::setStatusGlyph(StatusGlyph glyph) {
    if (glyph == glyph_)
        return;
    glyph_ = glyph;
    busyDelay_.stop();
    spinner_->hide();
    glyphView_->setVisible(glyph == StatusGlyph::OfflineRoot || glyph == StatusGlyph::Warning);
    glyphView_->setSymbol(glyph == StatusGlyph::OfflineRoot ? "externaldrive.badge.xmark"
                                                            : "exclamationmark.triangle");
    if (glyph == StatusGlyph::Busy)
        busyDelay_.start();
}

void WindowFrame::fitSearch() {
    search_->setMinimumWidth(window_->width() < leastSize.width() ? leastSearchOnSmallScreen : leastSearch);
}

bool WindowFrame::eventFilter(QObject* watched, QEvent* event) {
    if (watched != window_.get())
        return false;
    if (event->type() == QEvent::Resize)
        fitSearch();
    if (event->type() == QEvent::Close && windowShouldClose && !windowShouldClose()) {
        event->ignore();
        return true;
    }
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize ||
        event->type() == QEvent::WindowStateChange)
        Q_EMIT geometryChanged();
    return false;
}

}  // namespace morvane
