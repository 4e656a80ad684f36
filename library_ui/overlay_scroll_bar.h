// A vertical scroll bar that lies over the content's right margin and takes no room from it.
#pragma once

#include <QScrollBar>

class QAbstractScrollArea;

namespace morvane {

/// Stands in for the area's own vertical scroll bar, which it switches off; there only while there is
/// something to scroll. Owned by the area.
class OverlayScrollBar final : public QScrollBar {
    Q_OBJECT
public:
    explicit OverlayScrollBar(QAbstractScrollArea* area);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow();
    void place();

    QAbstractScrollArea* area_;
};

}  // namespace morvane
