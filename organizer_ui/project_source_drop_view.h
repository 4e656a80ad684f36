// The card that takes sources by drag and drop.
#pragma once

#include <functional>
#include <vector>

#include <QWidget>

#include "support/file_url.h"

class QMimeData;

namespace morvane {

/// The file locations of `data`, byte for byte; other schemes are passed over.
std::vector<FileUrl> droppedFiles(const QMimeData& data);

/// Holds the source list and, while that is empty, the hint to drop something here. A drag over it
/// or anything inside it is refused unless it carries files, can be a copy, and `acceptsDrop` is set
/// and allows it.
class ProjectSourceDropView : public QWidget {
    Q_OBJECT

public:
    explicit ProjectSourceDropView(QWidget* parent = nullptr);

    std::function<void(const std::vector<FileUrl>& urls)> onURLs;
    std::function<bool()> acceptsDrop;

    /// Places `list` inside; the view takes it over.
    void setList(QWidget* list);
    /// Shows the hint in place of the list.
    void setEmpty(bool empty);
    /// Whether a drag that would be taken is over the view.
    bool isHighlighted() const { return highlighted_; }

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool takes(const QDropEvent& event) const;
    void setHighlighted(bool highlighted);

    QWidget* hint_;
    QWidget* list_ = nullptr;
    bool empty_ = true;
    bool highlighted_ = false;
};

}  // namespace morvane
