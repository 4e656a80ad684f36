// The window around both workspaces: menu bar, header, host of the workspaces, status line. It knows
// neither assets nor settings; it is told what to show and says by signals what the user wants.
#pragma once

#include <functional>
#include <memory>

#include <QObject>
#include <QTimer>

#include "app/main_menu.h"

class QStackedLayout;
class QWidget;

namespace morvane {

class ElidedLabel;
class KeyboardWindow;
class PushButton;
class SearchField;
class SegmentedControl;
class Spinner;
class SymbolView;

/// The two workspaces, in the order of the segments.
enum class Workspace { Management = 0, Organizer = 1 };

/// What stands before the status text.
enum class StatusGlyph { None, Busy, OfflineRoot, Warning };

/// Everything the status glyph depends on.
struct StatusFacts {
    Workspace workspace = Workspace::Management;
    bool isLoading = false;       ///< the catalog is being read for the first time
    bool isScanning = false;      ///< a refresh runs
    bool isUnsaved = false;       ///< recovery mode, or the last refresh could not be saved
    bool hasOfflineRoot = false;  ///< a library folder was missing in the last refresh
    bool operator==(const StatusFacts&) const = default;
};
/// The busy glyph first, then the warning, then the offline drive. The organizer's texts speak of
/// something else, so beside them only a running refresh is shown.
StatusGlyph statusGlyphFor(const StatusFacts& facts);

/// Main thread only. The fixed controls exist from the start; window() and addFolderButton() are
/// null before build().
class WindowFrame final : public QObject {
    Q_OBJECT
public:
    explicit WindowFrame(QObject* parent = nullptr);
    ~WindowFrame() override;

    KeyboardWindow* window() const { return window_.get(); }
    SegmentedControl& workspaceControl() const { return *workspaceControl_; }
    QWidget& workspaceHost() const { return *workspaceHost_; }
    PushButton* addFolderButton() const { return addFolderButton_.get(); }
    SearchField& search() const { return *search_; }
    ElidedLabel& status() const { return *status_; }
    PushButton& refreshButton() const { return *refreshButton_; }

    /// Makes the window around the two workspaces, which it takes over. Once.
    void build(QWidget* management, QWidget* organizer);
    /// Shows one workspace, its detail line in the header, and the library's controls only with the
    /// library. Does not touch the segmented control.
    void showWorkspace(Workspace workspace);
    /// The segment selected in workspaceControl.
    Workspace workspace() const;
    /// The view of the workspace being shown.
    QWidget& currentWorkspaceView() const;
    void setStatus(const QString& text);
    /// Busy appears only when it lasts longer than `busyDelay`; every other glyph at once.
    void setStatusGlyph(StatusGlyph glyph);
    StatusGlyph statusGlyph() const { return glyph_; }

    /// Asked before the window closes, by the user, the desktop or a quit; false keeps it open.
    std::function<bool()> windowShouldClose;

    /// Milliseconds before the busy glyph shows.
    static constexpr int busyDelay = 300;

Q_SIGNALS:
    // Only the user's doing is reported.
    void workspaceChanged();
    /// The text of the search field was changed, by the user or by clearing it.
    void searchChanged();
    void refreshRequested();
    void addFolderRequested();
    void menuChosen(morvane::MenuCommand command);
    /// The window was moved or resized, by anyone.
    void geometryChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* makeHeader();
    QWidget* makeStatusLine();
    void wire();
    /// The search field gives way on a screen that does not hold the given smallest window.
    void fitSearch();

    std::unique_ptr<KeyboardWindow> window_;
    std::unique_ptr<SegmentedControl> workspaceControl_;
    std::unique_ptr<QWidget> workspaceHost_;
    std::unique_ptr<PushButton> addFolderButton_;
    std::unique_ptr<SearchField> search_;
    std::unique_ptr<ElidedLabel> status_;
    std::unique_ptr<PushButton> refreshButton_;
    std::unique_ptr<SymbolView> glyphView_;
    std::unique_ptr<Spinner> spinner_;
    QStackedLayout* workspaces_ = nullptr;  ///< of workspaceHost; owned by it
    QStackedLayout* brands_ = nullptr;      ///< one nativeHeader a workspace; owned by the window
    StatusGlyph glyph_ = StatusGlyph::None;
    QTimer busyDelay_;
};

}  // namespace morvane
