// The inside of the open panel: places, a path to type into, the entries of one folder.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include <QListView>
#include <QStyledItemDelegate>
#include <QWidget>

#include "organizer_ui/folder_list_model.h"
#include "support/file_url.h"
#include "support/serial_queue.h"

class QStackedWidget;
class QStandardItemModel;

namespace morvane {

class ElidedLabel;
class PushButton;
class TextField;

/// Rows 28 high: symbol, name, and the detail at the right. Also draws the places.
class FolderCell : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

/// A list in which Return and a double click open the current row and go no further. Without a current
/// row Return is left to the sheet.
class FolderListView : public QListView {
    Q_OBJECT

public:
    explicit FolderListView(QWidget* parent = nullptr);

Q_SIGNALS:
    void opened(const QModelIndex& index);
    /// Backspace or Alt and the up arrow.
    void upRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
};

/// What may be chosen, and how many at once.
struct BrowseRules {
    enum class Count { one, several };
    enum class NewFolders { allowed, no };
    Choosable choosable = Choosable::filesAndFolders;
    Count count = Count::several;
    NewFolders newFolders = NewFolders::no;
};

/// Every look at a disk runs on `queue`, which must outlive the browser; while one is under way the
/// last folder stays on screen and everything keeps working. An answer that is no longer wanted ends
/// early and is dropped.
class FolderBrowser : public QWidget {
    Q_OBJECT

public:
    FolderBrowser(BrowseRules rules, SerialQueue& queue, QWidget* parent = nullptr);
    ~FolderBrowser() override;

    /// Goes to `path` (a file: to its folder, with the file selected). "~" stands for the home folder,
    /// a relative path begins at the folder shown.
    void browse(const std::string& path);
    /// The folder on screen.
    const std::string& folder() const { return model_->listing().path; }
    /// Whether a look at a disk is under way.
    bool isLoading() const { return loading_; }
    /// What would be chosen now: the selected entries, or the folder on screen when nothing is
    /// selected and folders can be chosen. Empty when there is nothing to choose, and while an error
    /// is shown.
    std::vector<FileUrl> chosen() const;
    /// Whether confirm() would do something.
    bool canConfirm() const { return pathIsTyped() || !chosen().empty(); }
    /// The user wants what is chosen: true when chosen() is it. While another path than the folder's
    /// stands in the path field, goes there first and returns false; confirmed() follows once that
    /// place is on screen and can be chosen, unless the user does something else before.
    bool confirm();
    /// Where the focus begins.
    QWidget* firstFocus() const;

Q_SIGNALS:
    /// chosen() may have another value.
    void choiceChanged();
    /// What is chosen is meant: the user opened a file, or the path of a confirm() has been reached.
    void confirmed();

private:
    QWidget* makePlaces();
    QWidget* makePathRow();
    QWidget* makeNamingRow();
    QWidget* makeEntries();
    void connectParts();
    void showListing(FolderListing listing);
    void showEntries(FolderListing listing);
    void showPlaces(const std::vector<Place>& places);
    void open(const QModelIndex& index);
    void goUp();
    /// Puts the row for a new folder's name in place of the path, or takes it away.
    void showNaming(bool naming);
    void createFolder();
    void showStatus();
    /// Whether the path field holds another path than the folder's.
    bool pathIsTyped() const;
    /// The user turned to something else than the typed path: it gives way to the folder on screen,
    /// and so do an error and a wish to confirm.
    void dropTypedPath();
    void pathEdited();
    bool eventFilter(QObject* watched, QEvent* event) override;

    const BrowseRules rules_;
    SerialQueue& queue_;
    std::shared_ptr<std::atomic<bool>> cancelled_;  ///< of the newest look
    bool loading_ = false;
    bool confirming_ = false;      ///< confirm() waits for the listing under way
    bool listingSelects_ = false;  ///< the selection is being changed by a listing, not by the user
    std::string error_;

    FolderListModel* model_;
    QStandardItemModel* places_;
    FolderListView* placeList_ = nullptr;
    QStackedWidget* head_ = nullptr;
    PushButton* up_ = nullptr;
    TextField* path_ = nullptr;
    PushButton* newFolder_ = nullptr;
    TextField* folderName_ = nullptr;
    PushButton* create_ = nullptr;
    FolderListView* list_ = nullptr;
    ElidedLabel* status_ = nullptr;
};

}  // namespace morvane
