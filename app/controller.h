// The application's one controller: owns the nine parts of the program, wires them, and holds what
// belongs to none of them. Its operations take only three forms: they forward to one part, connect
// (read, make a value, call one part), or run a sequence in a given order, one call a line.
// Whatever has to be decided is a pure function in the room it belongs to.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QObject>

#include "app/command_line.h"
#include "app/ui_state.h"
#include "app/window_frame.h"
#include "catalog/asset_filter.h"
#include "catalog/category.h"
#include "catalog/library_index.h"
#include "catalog/settings.h"
#include "library_ui/asset_actions.h"
#include "library_ui/file_checker.h"
#include "library_ui/library_view.h"
#include "library_ui/playback.h"
#include "library_ui/preview_pane.h"
#include "library_ui/thumbnail_loader.h"

namespace morvane {

class ProjectOrganizerView;
struct FileUrl;

/// Main thread only. One for the life of the process, made after the QApplication. Slow work runs on
/// the parts' queues; their results come back as signals.
class Controller final : public QObject {
    Q_OBJECT
public:
    /// Makes the parts with their initial values and creates the store folder that `arguments`
    /// (program path first) name. Throws std::runtime_error when there is no place for a store.
    explicit Controller(const std::vector<std::string>& arguments);
    ~Controller() override;

    // The parts and the four fields of its own.
    const std::string& store() const { return store_; }
    const Settings& settings() const { return settings_; }
    const std::optional<Asset>& selected() const { return selected_; }
    ProjectOrganizerView* organizerView() const { return organizerView_.get(); }
    WindowFrame& frame() { return frame_; }
    LibraryView& libraryView() { return *libraryView_; }
    PreviewPane& previewPane() { return *previewPane_; }
    Playback& playback() { return playback_; }
    ThumbnailLoader& thumbnails() { return thumbnails_; }
    LibraryIndex& index() { return index_; }
    AssetFilter& filter() { return filter_; }
    CategoryTree& categoryTree() { return categoryTree_; }

    // Start and stop.
    /// The start-up sequence: settings, cache limit, menu, window, activation, catalog load.
    void applicationDidFinishLaunching();
    /// Brings the window to the front, out of its minimised state where needed.
    void bringForward();
    void setupMenu();
    void buildUI();
    /// False while the organizer works: the organizer comes into view with a sheet that says so.
    bool windowShouldClose();
    /// Quits the application, unless windowShouldClose() refuses.
    void terminate();
    /// Puts the workspace selected in the segmented control into view.
    void workspaceChanged();
    void about();

    // Settings.
    /// Writes the settings in the background, in the order of the calls; failures are silent.
    void save();
    void remember(const std::string& path);
    void autoChanged(bool on);
    void addRoot();
    void manageRoots();

    // Catalog.
    void loadCatalog();
    void scan();
    void refresh();
    void rebuildCategories();
    void applyFilter(ListPosition position = ListPosition::Keep);
    void focusSearch();

    // List and tree.
    void typeChanged();
    void outlineViewSelectionDidChange(const std::string& key);
    void tableViewSelectionDidChange(const Asset& asset, std::size_t selectedRows);
    void toggleFavorite();
    void renameFile();
    void copyFiles();
    void copySmart();
    void copyPath();
    void revealFile();

    // Preview and files.
    void show(const Asset& asset);
    void clearPreview();
    void openFile();
    void stopPlayer();
    void updatePlayButton();
    void togglePlay();
    void updateFavorite();

private:
    // Deliveries: the only places where parts meet.
    void catalogLoaded();
    void refreshStarted();
    void refreshFinished(const RefreshReport& report);
    void filterFinished();
    void fileStateKnown(bool exists);
    void thumbnailFinished(const Asset& asset, const QImage& picture);
    void renamed(const RenameReport& report);
    void renameSaved(bool saved);
    void organizerReported(const QString& text);
    void projectCreated(const FileUrl& folder);

    void wireFrame();
    void wireLibraryView();
    void wirePreview();
    void wirePlayback();
    void wireCatalog();
    void wireOrganizer();
    void chooseMenu(MenuCommand command);
    void appendFolders(const std::vector<std::string>& folders);
    void dropFolder(const std::string& root);
    void askForNewName(const Asset& asset);
    void performRename(const Asset& asset, const std::string& baseName);
    void showPreview(const Asset& asset);
    void loadClip(const Asset& asset);
    /// Brings back the clip shown after the organizer's workspace has stopped it.
    void loadClipAgain();
    void rememberAll(const std::vector<std::string>& paths);
    Favorite favoriteState() const;
    FilterRequest filterRequest() const;
    UiState uiState() const;
    void restoreUiState();
    void activate();
    /// A text of the moment.
    void setStatus(const QString& text);
    /// A text that the delivery of the filter pass under way does not replace.
    void announce(const QString& text);
    void updateStatusGlyph();
    void updateEmptyState();
    void runUISmokeTestIfRequested();

    // In dependency order: what is declared later uses what is declared earlier.
    const std::optional<std::string> smokeTestFolder_;
    const std::string store_;
    Settings settings_;
    SettingsWriter settingsWriter_;
    LibraryIndex index_;
    AssetFilter filter_;
    CategoryTree categoryTree_;
    FileChecker checker_;
    AssetActions actions_;
    WindowFrame frame_;
    std::unique_ptr<LibraryView> libraryView_;
    std::unique_ptr<PreviewPane> previewPane_;
    Playback playback_;
    ThumbnailLoader thumbnails_;
    std::unique_ptr<ProjectOrganizerView> organizerView_;
    std::unique_ptr<UiStateKeeper> uiStateKeeper_;  ///< absent in a smoke test
    std::optional<Asset> selected_;
    StatusFacts statusFacts_;
    ListPosition nextPosition_ = ListPosition::Top;  ///< of the list when the pass under way arrives
    bool keepStatus_ = false;                        ///< set by announce()
};

}  // namespace morvane
