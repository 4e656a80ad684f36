#include "organizer_ui/folder_browser.h"

#include <QDir>
#include <QFile>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStackedWidget>
#include <QStandardItemModel>
#include <utility>

#include "app/theme/elided_label.h"
#include "app/theme/focus_ring.h"
#include "app/theme/plain_tool_tip.h"
#include "app/theme/push_button.h"
#include "app/theme/row_view.h"
#include "app/theme/symbols.h"
#include "app/theme/text_field.h"
#include "app/theme/theme.h"
#include "organizer_ui/panel_parts.h"
#include "organizer_ui/row_list.h"
#include "support/deliver.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

constexpr int rowHeight = 28;
constexpr int placesWidth = 156;
constexpr int entriesHeight = 320;
constexpr int headHeight = 32;
constexpr int symbolSize = 16;
constexpr int padding = 12;
constexpr int gap = 8;
constexpr int dateWidth = 112;
constexpr int sizeWidth = 84;
constexpr int placePathRole = Qt::UserRole + 10;

bool isReturn(const QKeyEvent& event) {
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

std::string homeFolder() {
    return QFile::encodeName(QDir::homePath()).toStdString();
}

/// A widget in a card, inset so that rows stay clear of its rounded corners.
QWidget* inCard(QWidget* content, QWidget* parent) {
    auto* card = new Card(8, parent);
    auto* rows = new QVBoxLayout(card);
    rows->setContentsMargins(1, 4, 1, 4);
    rows->addWidget(content);
    return card;
}

/// Columns of fixed width, so that numbers stand below each other. Returns where the next one ends.
int drawColumn(QPainter& painter, const QRect& column, const QString& text) {
    painter.drawText(column, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, text);
    return column.left();
}

}  // namespace

void FolderCell::paint(QPainter* painter, const QStyleOptionViewItem& option,
                       const QModelIndex& index) const {
    const auto* view = qobject_cast<const QAbstractItemView*>(option.widget);
    const bool enabled = index.flags().testFlag(Qt::ItemIsEnabled);
    MRVRowView::States states = MRVRowView::Plain;
    if (option.state.testFlag(QStyle::State_Selected))
        states |= MRVRowView::Selected;
    if (option.state.testFlag(QStyle::State_MouseOver) && enabled)
        states |= MRVRowView::Hovered;
    if (view && focusRingShown(view))
        states |= MRVRowView::Focused;
    if (view && view->currentIndex() == index)
        states |= MRVRowView::Current;
    const QRect& row = option.rect;
    const QString date = index.data(FolderListModel::DateRole).toString();
    const QRect symbol(row.left() + padding, row.top() + (rowHeight - symbolSize) / 2, symbolSize,
                       symbolSize);
    const int left = symbol.right() + 1 + gap;
    int right = row.right() + 1 - padding;
    painter->save();
    MRVRowView::drawSelection(*painter, row, states);
    painter->setFont(MRVTheme::font(11));
    painter->setPen(enabled ? MRVTheme::muted() : MRVTheme::disabledText());
    if (!date.isEmpty()) {
        right = drawColumn(*painter, {right - dateWidth, row.top(), dateWidth, rowHeight}, date);
        const QString size = index.data(FolderListModel::SizeRole).toString();
        right = drawColumn(*painter, {right - sizeWidth, row.top(), sizeWidth, rowHeight}, size);
    }
    const bool accent = index.data(FolderListModel::FolderRole).toBool();
    paintSymbol(*painter, symbol, index.data(FolderListModel::SymbolRole).toString(),
                accent    ? MRVTheme::accent()
                : enabled ? MRVTheme::muted()
                          : MRVTheme::disabledText());
    const QRect title(left, row.top(), qMax(0, right - left), rowHeight);
    painter->setFont(MRVTheme::font(12));
    painter->setPen(enabled ? MRVTheme::ink() : MRVTheme::disabledText());
    painter->drawText(
        title, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
        painter->fontMetrics().elidedText(index.data().toString(), Qt::ElideMiddle, title.width()));
    painter->restore();
}

QSize FolderCell::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {100, rowHeight};
}

FolderListView::FolderListView(QWidget* parent) : QListView(parent) {
    setUpRowList(*this);
    setItemDelegate(new FolderCell(this));
}

void FolderListView::keyPressEvent(QKeyEvent* event) {
    if (isReturn(*event) && currentIndex().isValid()) {
        Q_EMIT opened(currentIndex());
        event->accept();
        return;
    }
    const bool altUp = event->key() == Qt::Key_Up && event->modifiers().testFlag(Qt::AltModifier);
    if (event->key() == Qt::Key_Backspace || altUp) {
        Q_EMIT upRequested();
        event->accept();
        return;
    }
    QListView::keyPressEvent(event);
}

void FolderListView::mouseDoubleClickEvent(QMouseEvent* event) {
    QListView::mouseDoubleClickEvent(event);
    const QModelIndex index = indexAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && index.isValid())
        Q_EMIT opened(index);
}

FolderBrowser::FolderBrowser(BrowseRules rules, SerialQueue& queue, QWidget* parent)
    : QWidget(parent),
      rules_(rules),
      queue_(queue),
      model_(new FolderListModel(rules.choosable, this)),
      places_(new QStandardItemModel(this)) {
    status_ = new ElidedLabel(11, MRVTheme::muted(), ElidedLabel::Weight::Regular, this);
    status_->setObjectName(QStringLiteral("browserStatus"));
    auto* columns = new QHBoxLayout;
    columns->setSpacing(12);
    columns->addWidget(makePlaces());
    columns->addWidget(makeEntries(), 1);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(8);
    rows->addLayout(columns, 1);
    rows->addWidget(status_);
    connectParts();
    showPlaces({{"个人文件夹", homeFolder(), "folder"}});
    runAndDeliver(
        queue_, this, [] { return knownPlaces(); },
        [](FolderBrowser& self, Outcome<std::vector<Place>>& outcome) {
            if (outcome.value)
                self.showPlaces(*outcome.value);
        });
}

FolderBrowser::~FolderBrowser() {
    if (cancelled_)
        *cancelled_ = true;
}

QWidget* FolderBrowser::makePlaces() {
    placeList_ = new FolderListView(this);
    placeList_->setObjectName(QStringLiteral("places"));
    placeList_->setAccessibleName(QStringLiteral("位置"));
    placeList_->setModel(places_);
    QWidget* card = inCard(placeList_, this);
    card->setFixedWidth(placesWidth);
    return card;
}

QWidget* FolderBrowser::makePathRow() {
    auto* row = new QWidget(this);
    up_ = new PushButton(QStringLiteral("上一级"), {}, PushButton::Role::Secondary, row);
    up_->setObjectName(QStringLiteral("upButton"));
    path_ = new TextField(TextField::Size::Small, row);
    path_->setObjectName(QStringLiteral("pathField"));
    path_->setAccessibleName(QStringLiteral("文件夹路径"));
    path_->installEventFilter(this);
    newFolder_ = new PushButton(QStringLiteral("新建文件夹"), QStringLiteral("folder.badge.plus"),
                                PushButton::Role::Secondary, row);
    newFolder_->setObjectName(QStringLiteral("newFolderButton"));
    newFolder_->setVisible(rules_.newFolders == BrowseRules::NewFolders::allowed);
    auto* items = new QHBoxLayout(row);
    items->setContentsMargins(0, 0, 0, 0);
    items->setSpacing(8);
    items->addWidget(up_);
    items->addWidget(path_, 1);
    items->addWidget(newFolder_);
    return row;
}

QWidget* FolderBrowser::makeNamingRow() {
    auto* row = new QWidget(this);
    folderName_ = new TextField(TextField::Size::Small, row);
    folderName_->setObjectName(QStringLiteral("folderNameField"));
    folderName_->setAccessibleName(QStringLiteral("新文件夹名称"));
    folderName_->setPlaceholderText(QStringLiteral("新文件夹名称"));
    folderName_->installEventFilter(this);
    create_ = new PushButton(QStringLiteral("创建"), {}, PushButton::Role::Secondary, row);
    create_->setObjectName(QStringLiteral("createFolderButton"));
    auto* back = new PushButton(QStringLiteral("不创建"), {}, PushButton::Role::Secondary, row);
    connect(create_, &QPushButton::clicked, this, &FolderBrowser::createFolder);
    connect(back, &QPushButton::clicked, this, [this] { showNaming(false); });
    auto* items = new QHBoxLayout(row);
    items->setContentsMargins(0, 0, 0, 0);
    items->setSpacing(8);
    items->addWidget(folderName_, 1);
    items->addWidget(create_);
    items->addWidget(back);
    return row;
}

QWidget* FolderBrowser::makeEntries() {
    auto* column = new QWidget(this);
    head_ = new QStackedWidget(column);
    head_->addWidget(makePathRow());
    head_->addWidget(makeNamingRow());
    head_->setFixedHeight(headHeight);
    list_ = new FolderListView(column);
    list_->setObjectName(QStringLiteral("entries"));
    list_->setAccessibleName(QStringLiteral("文件与文件夹"));
    list_->setModel(model_);
    list_->setSelectionMode(rules_.count == BrowseRules::Count::several ? QListView::ExtendedSelection
                                                                        : QListView::SingleSelection);
    QWidget* card = inCard(list_, column);
    card->setMinimumHeight(entriesHeight);
    auto* rows = new QVBoxLayout(column);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(8);
    rows->addWidget(head_);
    rows->addWidget(card, 1);
    return column;
}

void FolderBrowser::connectParts() {
    connect(list_, &FolderListView::opened, this, &FolderBrowser::open);
    connect(list_, &FolderListView::upRequested, this, &FolderBrowser::goUp);
    connect(up_, &QPushButton::clicked, this, &FolderBrowser::goUp);
    connect(newFolder_, &QPushButton::clicked, this, [this] { showNaming(true); });
    connect(list_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (!listingSelects_)
            dropTypedPath();
    });
    connect(path_, &QLineEdit::textEdited, this, &FolderBrowser::pathEdited);
    const auto openPlace = [this](const QModelIndex& index) {
        dropTypedPath();
        browse(index.data(placePathRole).toByteArray().toStdString());
    };
    connect(placeList_, &QListView::clicked, this, openPlace);
    connect(placeList_, &FolderListView::opened, this, openPlace);
}

void FolderBrowser::browse(const std::string& path) {
    std::string wanted = path;
    if (wanted == "~" || wanted.starts_with("~/"))
        wanted.replace(0, 1, homeFolder());
    else if (!wanted.starts_with('/'))
        wanted = joinPath(folder(), wanted);
    if (cancelled_)
        *cancelled_ = true;
    cancelled_ = std::make_shared<std::atomic<bool>>(false);
    loading_ = true;
    confirming_ = false;
    path_->setModified(false);
    showStatus();
    Q_EMIT choiceChanged();
    runAndDeliver(
        queue_, this, [wanted, cancelled = cancelled_] { return listFolder(wanted, *cancelled); },
        [cancelled = cancelled_](FolderBrowser& self, Outcome<FolderListing>& outcome) {
            if (cancelled == self.cancelled_)
                self.showListing(std::move(outcome.get()));
        });
}

void FolderBrowser::showListing(FolderListing listing) {
    const std::string wanted = listing.select;
    loading_ = false;
    error_ = listing.error;
    if (error_.empty())
        showEntries(std::move(listing));
    showStatus();
    Q_EMIT choiceChanged();
    // A file that cannot be chosen here must not turn into a choice of its folder.
    const bool reached = wanted.empty() || list_->selectionModel()->hasSelection();
    if (std::exchange(confirming_, false) && reached && !chosen().empty())
        Q_EMIT confirmed();
}

void FolderBrowser::showEntries(FolderListing listing) {
    const QScopedValueRollback<bool> selects(listingSelects_, true);
    const std::string select = listing.select;
    if (!path_->isModified())
        path_->setText(QString::fromStdString(listing.path));
    model_->setListing(std::move(listing));
    const int row = select.empty() ? -1 : model_->rowOf(select);
    if (row >= 0 && model_->canChoose(row))
        list_->setCurrentIndex(model_->index(row));
    list_->scrollTo(list_->currentIndex());
    up_->setEnabled(folder() != "/");
}

void FolderBrowser::showPlaces(const std::vector<Place>& places) {
    places_->clear();
    for (const Place& place : places) {
        auto* item = new QStandardItem(QString::fromStdString(place.title));
        item->setData(QString::fromStdString(place.symbol), FolderListModel::SymbolRole);
        item->setData(QByteArray::fromStdString(place.path), placePathRole);
        item->setToolTip(plainToolTip(QString::fromStdString(place.path)));
        places_->appendRow(item);
    }
}

void FolderBrowser::open(const QModelIndex& index) {
    const FolderEntry& entry = model_->entry(index.row());
    if (!entry.isFolder && !model_->canChoose(index.row()))
        return;
    dropTypedPath();
    if (entry.isFolder)
        browse(joinPath(folder(), entry.name));
    else
        Q_EMIT confirmed();
}

void FolderBrowser::goUp() {
    dropTypedPath();
    browse(std::string(parentPath(folder())));
    list_->setFocus();
}

void FolderBrowser::showNaming(bool naming) {
    dropTypedPath();
    head_->setCurrentIndex(naming ? 1 : 0);
    folderName_->clear();
    if (naming)
        folderName_->setFocus();
    else
        list_->setFocus();
}

void FolderBrowser::createFolder() {
    const std::string parent = folder();
    const std::string name = trimmed(folderName_->text().toStdString());
    runAndDeliver(
        queue_, this, [parent, name] { return makeFolder(parent, name); },
        [parent, name](FolderBrowser& self, Outcome<std::string>& outcome) {
            self.error_ = outcome.get();
            if (!self.error_.empty()) {
                self.showStatus();
                Q_EMIT self.choiceChanged();
                return;
            }
            self.showNaming(false);
            self.browse(joinPath(parent, name));
        });
}

std::vector<FileUrl> FolderBrowser::chosen() const {
    if (loading_ || !error_.empty() || folder().empty())
        return {};
    std::vector<FileUrl> urls;
    for (const QItemSelectionRange& range : list_->selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            if (!model_->canChoose(row))
                continue;
            const FolderEntry& entry = model_->entry(row);
            std::string path = joinPath(folder(), entry.name);
            urls.push_back(entry.isFolder ? folderLocation(std::move(path)) : fileLocation(std::move(path)));
        }
    }
    if (urls.empty() && rules_.choosable != Choosable::files && !list_->selectionModel()->hasSelection())
        urls.push_back(folderLocation(folder()));
    return urls;
}

bool FolderBrowser::confirm() {
    if (!pathIsTyped())
        return !chosen().empty();
    if (!confirming_) {
        browse(path_->text().toStdString());
        confirming_ = true;
    }
    return false;
}

bool FolderBrowser::pathIsTyped() const {
    // As text: a folder's bytes need not survive the way into the field and back.
    return path_->text() != QString::fromStdString(folder());
}

void FolderBrowser::dropTypedPath() {
    path_->setText(QString::fromStdString(folder()));
    pathEdited();
}

void FolderBrowser::pathEdited() {
    confirming_ = false;
    error_.clear();
    showStatus();
    Q_EMIT choiceChanged();
}

QWidget* FolderBrowser::firstFocus() const {
    return list_;
}

void FolderBrowser::showStatus() {
    const auto selected = chosen();
    QString text;
    if (loading_)
        text = QStringLiteral("正在读取…");
    else if (!error_.empty())
        text = QString::fromStdString(error_);
    else if (pathIsTyped())
        text = QStringLiteral("确认时使用输入的路径");
    else if (list_->selectionModel()->hasSelection())
        text = QStringLiteral("已选 %1 项").arg(selected.size());
    else if (!selected.empty())
        text = QStringLiteral("未选择时使用当前文件夹：%1")
                   .arg(QString::fromStdString(std::string(lastPathComponent(folder()))));
    else
        text = QStringLiteral("选择一个文件");
    status_->setText(text);
}

bool FolderBrowser::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const auto& key = *static_cast<QKeyEvent*>(event);
    if (watched == path_ && isReturn(key)) {
        browse(path_->text().toStdString());
        list_->setFocus();
        return true;
    }
    if (watched == folderName_ && isReturn(key)) {
        createFolder();
        return true;
    }
    if (watched == folderName_ && key.key() == Qt::Key_Escape) {
        showNaming(false);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace morvane
