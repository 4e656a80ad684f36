#include "app/controller.h"

#include <QApplication>
#include <QSlider>
#include <QTimer>
#include <QTreeView>

#include "app/decisions.h"
#include "app/main_menu.h"
#include "app/smoke_test.h"
#include "app/theme/elided_label.h"
#include "app/theme/file_table.h"
#include "app/theme/keyboard_window.h"
#include "app/theme/push_button.h"
#include "app/theme/search_field.h"
#include "app/theme/segmented_control.h"
#include "app/theme/sheet.h"
#include "catalog/store_folder.h"
#include "library_ui/asset_text.h"
#include "library_ui/library_folder_sheets.h"
#include "library_ui/preview_state.h"
#include "organizer_ui/project_organizer_view.h"

namespace morvane {
namespace {

constexpr qint64 thumbnailBytes = 67'108'864;
constexpr int neighboursAhead = 4;  // pictures prepared on each side of the shown one

QString shown(const std::string& text) {
    return shownText(text);
}

}  // namespace

Controller::Controller(const std::vector<std::string>& arguments)
    : smokeTestFolder_(readCommandLine(arguments).smokeTestFolder),
      store_(storeFolder(arguments)),
      settingsWriter_(store_),
      index_(settings_, store_),
      filter_(index_.catalog()),
      actions_(checker_),
      libraryView_(std::make_unique<LibraryView>(checker_)),
      previewPane_(std::make_unique<PreviewPane>()),
      playback_(*previewPane_->canvas.playerView) {
    createStoreFolder(store_);
}

Controller::~Controller() = default;

// Start and stop.

void Controller::applicationDidFinishLaunching() {
    settings_ = loadSettings(store_);
    thumbnails_.setCostLimit(thumbnailBytes);
    setupMenu();
    buildUI();
    activate();
    loadCatalog();
}

void Controller::setupMenu() {
    connect(&frame_, &WindowFrame::menuChosen, this, &Controller::chooseMenu);
}

void Controller::buildUI() {
    organizerView_ = std::make_unique<ProjectOrganizerView>();
    libraryView_->buildManagementView(previewPane_.get());
    frame_.build(libraryView_->managementView(), organizerView_.get());
    previewPane_->setAutoplay(settings_.autoplay);
    wireFrame();
    wireLibraryView();
    wirePreview();
    wirePlayback();
    wireCatalog();
    wireOrganizer();
    restoreUiState();
}

void Controller::activate() {
    // Laid out and rendered as ever, but on no screen: no focus, no task-bar entry.
    frame_.window()->setAttribute(Qt::WA_DontShowOnScreen, smokeTestFolder_.has_value());
    frame_.window()->show();
    if (!smokeTestFolder_)
        bringForward();
}

void Controller::bringForward() {
    frame_.window()->setWindowState(frame_.window()->windowState() & ~Qt::WindowMinimized);
    frame_.window()->raise();
    frame_.window()->activateWindow();
}

bool Controller::windowShouldClose() {
    if (!organizerView_->isBusy())
        return true;
    frame_.workspaceControl().setSelectedSegment(static_cast<int>(Workspace::Organizer));
    workspaceChanged();
    SheetContent content;
    content.warning = true;
    content.message = "整理任务仍在进行";
    content.informative = "请先在整理素材中取消任务，待已完成的文件与清单保存后再关闭。";
    content.buttons = {"返回整理任务"};
    Sheet::present(frame_.window(), content, {});
    return false;
}

void Controller::terminate() {
    if (windowShouldClose())
        QApplication::quit();
}

void Controller::workspaceChanged() {
    const Workspace workspace = frame_.workspace();
    statusFacts_.workspace = workspace;
    frame_.showWorkspace(workspace);
    if (workspace == Workspace::Management) {
        setStatus(shown(index_.scanSummary()));
    } else {
        stopPlayer();
        updatePlayButton();
        setStatus("新建拍摄项目 · 先预演分类，再复制校验与交接 FCP");
    }
    updateStatusGlyph();
}

void Controller::chooseMenu(MenuCommand command) {
    switch (command) {
        case MenuCommand::About:
            return about();
        case MenuCommand::Quit:
            return terminate();
        case MenuCommand::CopySmart:
            return copySmart();
        case MenuCommand::FocusSearch:
            return focusSearch();
        case MenuCommand::AddRoot:
            return addRoot();
        case MenuCommand::Refresh:
            return refresh();
        case MenuCommand::ManageRoots:
            return manageRoots();
        case MenuCommand::RenameFile:
            return renameFile();
        default:
            return sendToFocus(command);
    }
}

void Controller::about() {
    presentAbout(*frame_.window());
}

void Controller::setStatus(const QString& text) {
    keepStatus_ = false;
    frame_.setStatus(text);
}

void Controller::announce(const QString& text) {
    setStatus(text);
    keepStatus_ = filter_.isRunning();
}

void Controller::updateStatusGlyph() {
    frame_.setStatusGlyph(statusGlyphFor(statusFacts_));
}

void Controller::restoreUiState() {
    if (smokeTestFolder_)
        return;
    const UiState state = loadUiState(store_);
    libraryView_->setLibraryLayout(state.layout);
    if (!state.geometry.empty())
        frame_.window()->restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(state.geometry)));
    uiStateKeeper_ = std::make_unique<UiStateKeeper>(store_, [this] { return uiState(); });
    connect(&frame_, &WindowFrame::geometryChanged, uiStateKeeper_.get(), &UiStateKeeper::changed);
    connect(libraryView_.get(), &LibraryView::libraryLayoutChanged, uiStateKeeper_.get(),
            &UiStateKeeper::changed);
}

UiState Controller::uiState() const {
    return {frame_.window()->saveGeometry().toBase64().toStdString(), libraryView_->libraryLayout()};
}

void Controller::runUISmokeTestIfRequested() {
    if (!smokeTestFolder_)
        return;
    const auto select = [this](Workspace workspace) {
        frame_.workspaceControl().setSelectedSegment(static_cast<int>(workspace));
        workspaceChanged();
    };
    const auto facts = [this] {
        return SmokeFacts{store_,
                          index_.assets()->size(),
                          filter_.filtered().size(),
                          settings_.roots.size(),
                          settings_.favorites.size(),
                          settings_.recent.size()};
    };
    QTimer::singleShot(smokeDelay, this, [this, select, facts] {
        runSmokeTest(*smokeTestFolder_, frame_, select, facts);
        terminate();
    });
}

void Controller::organizerReported(const QString& text) {
    setStatus(text);
    thumbnails_.setPrefetching(!organizerView_->isBusy());
}

// Settings.

void Controller::save() {
    settingsWriter_.save(settings_);
}

void Controller::remember(const std::string& path) {
    rememberAll({path});
}

void Controller::rememberAll(const std::vector<std::string>& paths) {
    rememberPaths(settings_.recent, paths);
    save();
    categoryTree_.setRecentCount(settings_.recent.size());
}

void Controller::autoChanged(bool on) {
    settings_.autoplay = on;
    save();
}

void Controller::addRoot() {
    presentAddRoot(*frame_.window(),
                   [this](const std::vector<std::string>& folders) { appendFolders(folders); });
}

void Controller::appendFolders(const std::vector<std::string>& folders) {
    appendRoots(settings_.roots, folders);
    save();
    scan();
}

void Controller::manageRoots() {
    presentManageRoots(*frame_.window(), settings_.roots,
                       [this](const std::string& root) { dropFolder(root); });
}

void Controller::dropFolder(const std::string& root) {
    removeRoot(settings_.roots, root);
    filter_.setFilterKey(std::string(scope::all));
    save();
    scan();
}

void Controller::projectCreated(const FileUrl& folder) {
    appendRoots(settings_.roots, {folder.path});
    save();
    scan();
}

// Catalog.

void Controller::loadCatalog() {
    statusFacts_.isLoading = true;
    updateStatusGlyph();
    index_.load();
}

void Controller::catalogLoaded() {
    statusFacts_.isLoading = false;
    statusFacts_.isUnsaved = index_.catalogRecovery();
    updateStatusGlyph();
    rebuildCategories();
    applyFilter(ListPosition::Top);
    if (index_.catalogRecovery())
        announce(recoveryStatusText);
    const AfterLoad next = decideAfterLoad(settings_, index_.assets()->size());
    if (next == AfterLoad::Refresh)
        scan();
    else if (next == AfterLoad::AskForFolder)
        announce(addFolderStatusText);
    runUISmokeTestIfRequested();
}

void Controller::scan() {
    settings_.pendingRefresh = true;
    save();
    index_.refresh();
}

void Controller::refresh() {
    scan();
}

void Controller::refreshStarted() {
    statusFacts_.isScanning = true;
    updateStatusGlyph();
    frame_.refreshButton().setEnabled(false);
    previewPane_->setScanning(Scanning::Yes);
    setStatus(scanStartedText);
    if (!filter_.isRunning())  // its delivery brings the rows, and the state with them
        updateEmptyState();
}

void Controller::refreshFinished(const RefreshReport& report) {
    statusFacts_.isScanning = false;
    statusFacts_.isUnsaved = index_.catalogRecovery();
    statusFacts_.hasOfflineRoot = !report.offline.empty();
    updateStatusGlyph();
    frame_.refreshButton().setEnabled(true);
    if (!report.followUp && report.saved) {
        settings_.pendingRefresh = false;
        save();
    }
    rebuildCategories();
    applyFilter(ListPosition::Keep);
    setStatus(shown(index_.scanSummary()));
    previewPane_->setScanning(Scanning::No);
    if (report.followUp)
        scan();
}

void Controller::rebuildCategories() {
    categoryTree_.rebuild({index_.assets(), settings_.favorites, settings_.recent.size(), settings_.roots});
}

FilterRequest Controller::filterRequest() const {
    FilterRequest request;
    request.words = searchWords(frame_.search().text().toStdString());
    request.kind = kindFilterAt(libraryView_->kindControl().selectedSegment());
    if (filter_.filterKey() == scope::favorites)
        request.favorites = settings_.favorites;
    request.recent = settings_.recent;
    request.assets = index_.assets();
    request.keys = index_.keys();
    return request;
}

void Controller::applyFilter(ListPosition position) {
    if (position == ListPosition::Top)
        nextPosition_ = ListPosition::Top;
    filter_.apply(filterRequest());
}

void Controller::filterFinished() {
    const std::optional<std::string> path = selected_ ? std::optional(selected_->path) : std::nullopt;
    const ListPosition position = std::exchange(nextPosition_, ListPosition::Keep);
    const bool found = libraryView_->showRows(filter_.filtered(), path, position);
    if (selected_ && !found)
        clearPreview();
    updateEmptyState();
    if (!std::exchange(keepStatus_, false) && !index_.scanning())
        setStatus(shown(statusAfterFilter(filter_.filtered().size(), index_.scanSummary())));
}

void Controller::updateEmptyState() {
    libraryView_->setEmptyState(emptyStateFor({.isLoading = statusFacts_.isLoading,
                                               .isScanning = index_.scanning(),
                                               .assets = index_.assets()->size(),
                                               .roots = settings_.roots.size(),
                                               .rows = filter_.filtered().size(),
                                               .searchText = frame_.search().text()}));
}

void Controller::focusSearch() {
    if (!frame_.search().isVisible())
        return;
    frame_.search().setFocus(Qt::ShortcutFocusReason);
    frame_.search().selectAll();
}

// List and tree.

void Controller::typeChanged() {
    applyFilter(ListPosition::Top);
}

void Controller::outlineViewSelectionDidChange(const std::string& key) {
    filter_.setFilterKey(key);
    applyFilter(ListPosition::Top);
}

void Controller::tableViewSelectionDidChange(const Asset& asset, std::size_t selectedRows) {
    show(asset);
    if (selectedRows > 1)
        previewPane_->setNotice(notices::manySelected(static_cast<qint64>(selectedRows)));
}

void Controller::toggleFavorite() {
    if (!toggleFavorites(settings_.favorites, libraryView_->actionFiles()))
        return;
    save();
    rebuildCategories();
    applyFilter(ListPosition::Keep);
    updateFavorite();
    libraryView_->favoritesChanged();
}

void Controller::copyFiles() {
    actions_.copyFiles(libraryView_->actionFiles());
}

void Controller::copySmart() {
    if (!copyFromFocusedText())
        copyFiles();
}

void Controller::copyPath() {
    actions_.copyPath(libraryView_->actionFiles());
}

void Controller::revealFile() {
    actions_.revealFile(libraryView_->actionFiles());
}

void Controller::renameFile() {
    if (index_.scanning())
        return setStatus("请等索引刷新完成后再改名");
    if (libraryView_->actionCount() != 1)
        return setStatus("请选择一个在线文件后重命名");
    const std::vector<Asset> assets = libraryView_->actionAssets();
    checker_.findExisting({{assets[0].path, assets[0].root}}, this,
                          [this, asset = assets[0]](const std::vector<std::string>& existing) {
                              if (existing.empty())
                                  setStatus("请选择一个在线文件后重命名");
                              else
                                  askForNewName(asset);
                          });
}

void Controller::askForNewName(const Asset& asset) {
    presentRename(*frame_.window(), asset,
                  [this, asset](const std::string& baseName) { performRename(asset, baseName); });
}

void Controller::performRename(const Asset& asset, const std::string& baseName) {
    if (!index_.canRename())
        return setStatus("请等索引刷新完成后再改名");
    stopPlayer();
    index_.rename(asset, baseName);
}

void Controller::renamed(const RenameReport& report) {
    if (!report.error.empty()) {
        show(report.asset);
        presentRenameFailed(*frame_.window(), shown(report.error));
        return;
    }
    followRename(settings_, report.oldPath, report.asset.path);
    rebuildCategories();
    applyFilter(ListPosition::Keep);
    show(report.asset);
    announce(QString("已同步重命名原文件：") + shownText(report.asset.name()));
}

void Controller::renameSaved(bool saved) {
    save();
    if (!saved)
        announce(renameNotSavedText);
}

// Preview and files.

Favorite Controller::favoriteState() const {
    return selected_ && settings_.favorites.contains(selected_->path) ? Favorite::Yes : Favorite::No;
}

void Controller::show(const Asset& asset) {
    stopPlayer();
    thumbnails_.cancel();
    selected_ = asset;
    previewPane_->showAsset(asset, favoriteState());
    updatePlayButton();
    checker_.checkShown(asset, [this](bool exists) { fileStateKnown(exists); });
}

void Controller::fileStateKnown(bool exists) {
    previewPane_->showFileState(exists ? FileState::Present : FileState::Missing,
                                exists ? thumbnails_.present(*selected_) : CachedPicture());
    if (exists)
        showPreview(*selected_);
    updatePlayButton();
}

void Controller::showPreview(const Asset& asset) {
    const PreviewMode mode = previewModeOf(asset);
    if (mode == PreviewMode::Picture && thumbnails_.cached(asset).isNull())
        thumbnails_.request(asset);
    thumbnails_.prefetch(asset, libraryView_->neighbours(neighboursAhead));
    loadClip(asset);
    if (settings_.autoplay && mode == PreviewMode::Audio) {
        playback_.play();
        remember(asset.path);
    }
}

void Controller::loadClip(const Asset& asset) {
    const PreviewMode mode = previewModeOf(asset);
    if (mode == PreviewMode::Audio || mode == PreviewMode::Video)
        playback_.load(asset.path, mode);
}

void Controller::loadClipAgain() {
    // A file being renamed is not held open; behind the organizer nothing plays.
    if (selected_ && !index_.renaming() && statusFacts_.workspace == Workspace::Management)
        loadClip(*selected_);
}

void Controller::thumbnailFinished(const Asset& asset, const QImage& picture) {
    if (selected_ && selected_->path == asset.path)
        previewPane_->showPicture(picture);
}

void Controller::clearPreview() {
    stopPlayer();
    thumbnails_.cancel();
    checker_.forgetShown();
    selected_.reset();
    previewPane_->clearPreview();
    updateFavorite();
    updatePlayButton();
}

void Controller::openFile() {
    if (selected_)
        actions_.openFile({selected_->path, selected_->root});
}

void Controller::stopPlayer() {
    playback_.stopPlayer();
}

void Controller::updatePlayButton() {
    previewPane_->updatePlayButton(playback_.isPlaying());
}

void Controller::togglePlay() {
    if (!previewPane_->transport.play->isEnabled())
        return;
    if (!playback_.hasPlayer())
        loadClipAgain();
    if (!playback_.hasPlayer())
        return;
    const bool starts = !playback_.isPlaying();
    playback_.togglePlay();
    if (starts && selected_)
        remember(selected_->path);
    updatePlayButton();
}

void Controller::updateFavorite() {
    previewPane_->updateFavorite(favoriteState());
}

}  // namespace morvane
