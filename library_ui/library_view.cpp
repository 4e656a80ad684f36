#include "library_ui/library_view.h"

#include "library_ui/asset_actions.h"
#include "library_ui/asset_table.h"
#include "library_ui/asset_table_model.h"
#include "library_ui/category_tree_model.h"
#include "library_ui/category_tree_view.h"
#include "library_ui/library_splitter.h"
#include "library_ui/overlay_scroll_bar.h"

#include "app/theme/segmented_control.h"
#include "app/theme/theme.h"

#include <QDrag>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace morvane {

namespace {

constexpr int listBarHeight = 48;
constexpr int panePadding = 16;
constexpr int treeTopMargin = 9;

QWidget* paneOf(QLayout* content) {
    auto* pane = new QWidget;
    pane->setLayout(content);
    pane->setAutoFillBackground(true);
    QPalette colours = pane->palette();
    colours.setColor(QPalette::Window, MRVTheme::panel());
    pane->setPalette(colours);
    return pane;
}

/// Lets `panes` scroll sideways where there is less room than they need.
QScrollArea* sideways(QWidget* panes) {
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidgetResizable(true);
    area->setWidget(panes);
    return area;
}

QVBoxLayout* bareColumn() {
    auto* column = new QVBoxLayout;
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    return column;
}

}  // namespace

LibraryView::LibraryView(FileChecker& checker, QWidget* parent)
    : QWidget(parent),
      checker_(checker),
      assetModel_(new AssetTableModel(this)),
      categoryModel_(new CategoryTreeModel(this)),
      table_(new AssetTable(*assetModel_, this)),
      outline_(new CategoryTreeView(this)),
      kindControl_(new SegmentedControl(kindLabels(), SegmentedControl::Size::Small, this)),
      resultCount_(new QLabel(this)),
      emptyList_(new EmptyList(table_)) {
    makeTable();
    makeOutline();
    kindControl_->setAccessibleName(QStringLiteral("素材类型"));
    connect(kindControl_, &SegmentedControl::segmentChosen, this, &LibraryView::kindChosen);
    resultCount_->setFont(MRVTheme::font(11));
    QPalette muted = resultCount_->palette();
    muted.setColor(QPalette::WindowText, MRVTheme::muted());
    resultCount_->setPalette(muted);
    connect(emptyList_, &EmptyList::addFolderRequested, this, &LibraryView::addFolderRequested);
    connect(emptyList_, &EmptyList::clearSearchRequested, this, &LibraryView::clearSearchRequested);
}

LibraryView::~LibraryView() = default;

QStringList LibraryView::kindLabels() {
    QStringList labels;
    for (const std::string_view label : kindChoices)
        labels << shownText(label);
    return labels;
}

void LibraryView::makeTable() {
    table_->viewport()->installEventFilter(this);
    connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &LibraryView::reportSelection);
    connect(table_, &QTableView::doubleClicked, this, &LibraryView::playToggled);
    connect(table_, &AssetTable::menuWanted, this, &LibraryView::openContextMenu);
    connect(table_, &AssetTable::dragBegun, this, &LibraryView::prepareDrag);
    connect(table_, &AssetTable::wantedChanged, this, &LibraryView::libraryLayoutChanged);
}

void LibraryView::makeOutline() {
    outline_->setModel(categoryModel_);
    outline_->setAccessibleName(QStringLiteral("素材分类"));
    new OverlayScrollBar(outline_);
    connect(outline_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        const QModelIndexList selected = outline_->selectionModel()->selectedIndexes();
        if (!suppressSelection_ && !selected.isEmpty())
            Q_EMIT categoryChosen(categoryModel_->categoryAt(selected.front()).key);
    });
}

void LibraryView::buildManagementView(QWidget* preview) {
    QVBoxLayout* tree = bareColumn();
    tree->setContentsMargins(0, treeTopMargin, 0, 0);
    tree->addWidget(outline_);

    auto* bar = new QWidget;
    bar->setFixedHeight(listBarHeight);
    auto* barRow = new QHBoxLayout(bar);
    barRow->setContentsMargins(panePadding, 0, panePadding, 0);
    barRow->addWidget(kindControl_);
    barRow->addStretch(1);
    barRow->addWidget(resultCount_);
    QVBoxLayout* list = bareColumn();
    list->addWidget(bar);
    list->addWidget(table_);

    splitter_ = new LibrarySplitter(paneOf(tree), paneOf(list), preview);
    connect(splitter_, &LibrarySplitter::wantedChanged, this, &LibraryView::libraryLayoutChanged);
    QVBoxLayout* whole = bareColumn();
    whole->addWidget(sideways(splitter_));
    setLayout(whole);
    QWidget::setTabOrder(outline_, kindControl_);
    QWidget::setTabOrder(kindControl_, table_);
}

FileTable& LibraryView::table() const {
    return *table_;
}

QTreeView& LibraryView::outline() const {
    return *outline_;
}

bool LibraryView::showRows(FilterResult rows, const std::optional<std::string>& selectedPath,
                           ListPosition position) {
    const QScopedValueRollback<bool> suppress(suppressSelection_, true);
    const int scrolled = table_->verticalScrollBar()->value();
    const std::size_t count = rows.size();
    assetModel_->setRows(std::move(rows));
    table_->clearSelection();
    table_->verticalScrollBar()->setValue(position == ListPosition::Keep ? scrolled : 0);
    resultCount_->setText(shownText(resultCountText(count)));
    const int row = selectedPath ? assetModel_->rowOfPath(*selectedPath) : -1;
    if (row < 0)
        return false;
    const QModelIndex index = assetModel_->index(row, AssetTableModel::NameColumn);
    // The list stays where it is, wherever its selected row has gone.
    table_->setAutoScroll(false);
    table_->selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    table_->setAutoScroll(true);
    return true;
}

const FilterResult& LibraryView::rows() const {
    return assetModel_->rows();
}

void LibraryView::setFavoriteTest(std::function<bool(const std::string&)> isFavorite) {
    assetModel_->setFavoriteTest(std::move(isFavorite));
}

void LibraryView::favoritesChanged() {
    table_->viewport()->update();
}

void LibraryView::setEmptyState(EmptyState state) {
    emptyList_->setState(state);
}

void LibraryView::showCategories(const CategoryList& categories, const std::string& filterKey) {
    {
        const QScopedValueRollback<bool> suppress(suppressSelection_, true);
        const int scrolled = outline_->verticalScrollBar()->value();
        categoryModel_->setCategories(categories);
        for (int row = 0; row < categoryModel_->rowCount(); ++row) {
            const QModelIndex entry = categoryModel_->index(row, 0);
            outline_->setExpanded(entry, categoryModel_->rowCount(entry) > 0);
        }
        outline_->layOut();
        outline_->verticalScrollBar()->setValue(scrolled);
    }
    selectCategory(filterKey);
}

void LibraryView::categoryCountChanged(int row) {
    categoryModel_->countChanged(row);
}

void LibraryView::selectCategory(const std::string& filterKey) {
    const QScopedValueRollback<bool> suppress(suppressSelection_, true);
    outline_->clearSelection();
    for (QModelIndex entry = categoryModel_->index(0, 0); entry.isValid();
         entry = outline_->indexBelow(entry)) {
        if (categoryModel_->categoryAt(entry).key == filterKey) {
            outline_->setAutoScroll(false);
            outline_->selectionModel()->setCurrentIndex(entry, QItemSelectionModel::ClearAndSelect);
            outline_->setAutoScroll(true);
            return;
        }
    }
}

void LibraryView::reportSelection() {
    if (suppressSelection_)
        return;
    const int row = table_->leadingRow();
    if (row < 0 || static_cast<std::size_t>(row) >= rows().size())
        return;
    Q_EMIT assetChosen(rows().at(static_cast<std::size_t>(row)).asset(), selectedCount());
}

void LibraryView::openContextMenu(const QPoint& position, int row) {
    if (row < 0 && !table_->selectionModel()->hasSelection())
        return;
    const std::pair<QString, void (LibraryView::*)()> items[] = {
        {QStringLiteral("播放 / 暂停"), &LibraryView::playToggled},
        {QStringLiteral("在 Finder 中显示"), &LibraryView::revealRequested},
        {QStringLiteral("复制文件"), &LibraryView::copyRequested},
        {QStringLiteral("复制完整路径"), &LibraryView::copyPathRequested},
        {QStringLiteral("收藏 / 取消收藏"), &LibraryView::favoriteToggled},
        {QStringLiteral("重命名原文件…"), &LibraryView::renameRequested},
    };
    auto* menu = new QMenu(table_);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const QPersistentModelIndex clicked = assetModel_->index(row, AssetTableModel::NameColumn);
    for (const auto& [title, request] : items) {
        menu->addAction(title, this, [this, clicked, row, request = request] {
            // The rows may have been replaced while the menu was open.
            const bool rowIsGone = row >= 0 && !clicked.isValid();
            if (rowIsGone)
                return;
            const QScopedValueRollback<int> invokedOn(clickedRow_, clicked.isValid() ? clicked.row() : -1);
            Q_EMIT(this->*request)();
        });
    }
    menu->popup(position);
}

template <class Take>
void LibraryView::forActionRows(Take take) const {
    for (const RowRange& range : actionRows(clickedRow_, table_->selectedRanges())) {
        for (int row = range.first; row <= range.last; ++row)
            take(rows().at(static_cast<std::size_t>(row)));
    }
}

std::vector<Asset> LibraryView::actionAssets() const {
    std::vector<Asset> assets;
    forActionRows([&](const AssetView& row) { assets.push_back(row.asset()); });
    return assets;
}

std::vector<FileRef> LibraryView::actionFiles() const {
    std::vector<FileRef> files;
    forActionRows([&](const AssetView& row) {
        files.push_back({std::string(row.path), std::string(row.root)});
    });
    return files;
}

std::size_t LibraryView::actionCount() const {
    return countRows(actionRows(clickedRow_, table_->selectedRanges()));
}

std::size_t LibraryView::selectedCount() const {
    return countRows(table_->selectedRanges());
}

std::vector<Asset> LibraryView::neighbours(int count) const {
    std::vector<Asset> near;
    const int row = table_->leadingRow();
    if (row < 0)
        return near;
    for (int distance = 1; distance <= count; ++distance) {
        for (const int neighbour : {row + distance, row - distance}) {
            if (neighbour >= 0 && static_cast<std::size_t>(neighbour) < rows().size())
                near.push_back(rows().at(static_cast<std::size_t>(neighbour)).asset());
        }
    }
    return near;
}

void LibraryView::prepareDrag() {
    checker_.findExisting(actionFiles(), this, [this](const std::vector<std::string>& existing) {
        if (!existing.empty() && QGuiApplication::mouseButtons().testFlag(Qt::LeftButton))
            runDrag(existing);
    });
}

void LibraryView::runDrag(const std::vector<std::string>& existing) {
    auto* drag = new QDrag(table_);
    drag->setMimeData(dragMimeData(existing).release());
    const std::string_view name = std::string_view(existing.front()).substr(existing.front().rfind('/') + 1);
    drag->setPixmap(dragPicture(shownText(name), shownText(kindSymbol(kindOfPath(existing.front()))),
                                existing.size(), devicePixelRatioF()));
    drag->setHotSpot({-12, -8});
    drag->exec(Qt::CopyAction, Qt::CopyAction);
}

LibraryLayout LibraryView::libraryLayout() const {
    return {.treeWidth = splitter_->wantedTree(),
            .previewWidth = splitter_->wantedPreview(),
            .nameWidth = table_->wantedName(),
            .folderWidth = table_->wantedFolder()};
}

void LibraryView::setLibraryLayout(const LibraryLayout& layout) {
    splitter_->setWanted(layout);
    table_->setWanted(layout);
}

bool LibraryView::eventFilter(QObject* /*watched*/, QEvent* event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
        emptyList_->setGeometry(table_->viewport()->geometry());
    return false;
}

}  // namespace morvane
