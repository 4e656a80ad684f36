#include "organizer_ui/project_source_drop_view.h"

#include <QDragEnterEvent>
#include <QLabel>
#include <QMimeData>
#include <QPainter>
#include <QVBoxLayout>

#include "app/theme/paint.h"
#include "app/theme/symbol_view.h"
#include "app/theme/theme.h"
#include "organizer_ui/panel_parts.h"

namespace morvane {

namespace {

constexpr qreal cornerRadius = 10;
constexpr int leastHeight = 92;      ///< with the hint
constexpr int leastListHeight = 76;  ///< with sources: leaves room for the options in a low window
constexpr int padding = 4;

void paintDashes(QPainter& painter, const QRectF& rect) {
    const qreal line = hairlineWidth(painter);
    QPen pen(MRVTheme::edge(), line);
    pen.setCapStyle(Qt::FlatCap);
    pen.setDashPattern({5 / line, 4 / line});
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    const qreal inset = line / 2;
    painter.drawRoundedRect(rect.adjusted(inset, inset, -inset, -inset), cornerRadius - inset,
                            cornerRadius - inset);
}

QWidget* makeHint(QWidget* parent) {
    auto* hint = new QWidget(parent);
    auto* glyph = new SymbolView(QStringLiteral("tray.and.arrow.down"), 32, MRVTheme::accent(), hint);
    auto* rows = new QVBoxLayout(hint);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addStretch(1);
    rows->addWidget(glyph, 0, Qt::AlignHCenter);
    rows->addSpacing(10);
    // One label a line: the design's line height is taller than the font's.
    for (const char* line : {"将相机卡、素材文件夹或文件拖到这里", "原始文件会保留在原位置"}) {
        QLabel* text = makeLabel(12, MRVTheme::muted(), hint);
        text->setText(QString::fromUtf8(line));
        text->setAlignment(Qt::AlignCenter);
        text->setFixedHeight(20);
        rows->addWidget(text);
    }
    rows->addStretch(1);
    hint->setObjectName(QStringLiteral("emptySourceHint"));
    hint->setAccessibleName(QStringLiteral("将相机卡、素材文件夹或文件拖到这里\n原始文件会保留在原位置"));
    return hint;
}

}  // namespace

std::vector<FileUrl> droppedFiles(const QMimeData& data) {
    // The raw list keeps file names whose bytes are no UTF-8; QUrl would replace them.
    std::vector<FileUrl> files;
    for (const QByteArray& line : data.data(QStringLiteral("text/uri-list")).split('\n')) {
        const QByteArray text = line.trimmed();
        if (text.isEmpty() || text.startsWith('#'))
            continue;
        std::optional<FileUrl> url =
            parseUrl(std::string_view(text.constData(), static_cast<std::size_t>(text.size())));
        if (url && url->isFile())
            files.push_back(std::move(*url));
    }
    return files;
}

ProjectSourceDropView::ProjectSourceDropView(QWidget* parent) : QWidget(parent), hint_(makeHint(this)) {
    setAcceptDrops(true);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, padding, 0, padding);
    rows->addWidget(hint_, 1);
}

void ProjectSourceDropView::setList(QWidget* list) {
    list_ = list;
    static_cast<QVBoxLayout*>(layout())->addWidget(list, 1);
    setEmpty(empty_);
}

void ProjectSourceDropView::setEmpty(bool empty) {
    empty_ = empty;
    setMinimumHeight(empty ? leastHeight : leastListHeight);
    hint_->setVisible(empty);
    if (list_)
        list_->setVisible(!empty);
    update();
}

void ProjectSourceDropView::dragEnterEvent(QDragEnterEvent* event) {
    if (!takes(*event)) {
        event->ignore();
        return;
    }
    setHighlighted(true);
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void ProjectSourceDropView::dragMoveEvent(QDragMoveEvent* event) {
    // What it carries was looked at when it entered; only the permission can have changed.
    if (!highlighted_ || !acceptsDrop || !acceptsDrop()) {
        setHighlighted(false);
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void ProjectSourceDropView::dragLeaveEvent(QDragLeaveEvent*) {
    setHighlighted(false);
}

void ProjectSourceDropView::dropEvent(QDropEvent* event) {
    setHighlighted(false);
    if (!takes(*event)) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (onURLs)
        onURLs(droppedFiles(*event->mimeData()));
}

bool ProjectSourceDropView::takes(const QDropEvent& event) const {
    return acceptsDrop && acceptsDrop() && event.possibleActions().testFlag(Qt::CopyAction) &&
           !droppedFiles(*event.mimeData()).empty();
}

void ProjectSourceDropView::setHighlighted(bool highlighted) {
    if (highlighted_ == highlighted)
        return;
    highlighted_ = highlighted;
    update();
}

void ProjectSourceDropView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor border = highlighted_ ? MRVTheme::accent() : empty_ ? QColor() : MRVTheme::line();
    paintBox(painter, rect(),
             {cornerRadius, highlighted_ ? MRVTheme::accentSoft() : MRVTheme::panel(), border});
    if (empty_ && !highlighted_)
        paintDashes(painter, rect());
}

}  // namespace morvane
