// How the parts of the program are connected: signals of the parts become operations of the controller.
#include <QLineEdit>
#include <QTreeView>

#include "app/controller.h"
#include "app/theme/file_table.h"
#include "app/theme/keyboard_window.h"
#include "app/theme/search_field.h"
#include "library_ui/asset_text.h"
#include "organizer_ui/project_organizer_view.h"

namespace morvane {

void Controller::wireFrame() {
    connect(&frame_, &WindowFrame::workspaceChanged, this, &Controller::workspaceChanged);
    connect(&frame_, &WindowFrame::searchChanged, &filter_, &AssetFilter::applyLater);
    connect(&frame_, &WindowFrame::refreshRequested, this, &Controller::refresh);
    connect(&frame_, &WindowFrame::addFolderRequested, this, &Controller::addRoot);
    frame_.windowShouldClose = [this] { return windowShouldClose(); };
    frame_.window()->onSpace = [this] { togglePlay(); };
}

void Controller::wireLibraryView() {
    LibraryView* view = libraryView_.get();
    view->table().onSpace = [this] { togglePlay(); };
    view->setFavoriteTest([this](const std::string& path) { return settings_.favorites.contains(path); });
    connect(view, &LibraryView::assetChosen, this, &Controller::tableViewSelectionDidChange);
    connect(view, &LibraryView::categoryChosen, this, &Controller::outlineViewSelectionDidChange);
    connect(view, &LibraryView::kindChosen, this, &Controller::typeChanged);
    connect(view, &LibraryView::playToggled, this, &Controller::togglePlay);
    connect(view, &LibraryView::revealRequested, this, &Controller::revealFile);
    connect(view, &LibraryView::copyRequested, this, &Controller::copyFiles);
    connect(view, &LibraryView::copyPathRequested, this, &Controller::copyPath);
    connect(view, &LibraryView::favoriteToggled, this, &Controller::toggleFavorite);
    connect(view, &LibraryView::renameRequested, this, &Controller::renameFile);
    connect(view, &LibraryView::addFolderRequested, this, &Controller::addRoot);
    connect(view, &LibraryView::clearSearchRequested, &frame_.search(), &QLineEdit::clear);
    connect(&actions_, &AssetActions::statusText, this, &Controller::setStatus);
    connect(&actions_, &AssetActions::used, this, &Controller::rememberAll);
}

void Controller::wirePreview() {
    PreviewPane* pane = previewPane_.get();
    connect(pane, &PreviewPane::playToggled, this, &Controller::togglePlay);
    connect(pane, &PreviewPane::seekChanged, &playback_, &Playback::seek);
    connect(pane, &PreviewPane::volumeChanged, &playback_, &Playback::setVolume);
    connect(pane, &PreviewPane::autoChanged, this, &Controller::autoChanged);
    connect(pane, &PreviewPane::favoriteToggled, this, &Controller::toggleFavorite);
    connect(pane, &PreviewPane::revealRequested, this, &Controller::revealFile);
    connect(pane, &PreviewPane::copyRequested, this, &Controller::copyFiles);
    connect(pane, &PreviewPane::openRequested, this, &Controller::openFile);
    connect(pane, &PreviewPane::renameRequested, this, &Controller::renameFile);
}

void Controller::wirePlayback() {
    PreviewPane* pane = previewPane_.get();
    playback_.setVolume(pane->volumeValue());
    connect(&playback_, &Playback::ready, pane, &PreviewPane::showReady);
    connect(&playback_, &Playback::failed, pane, &PreviewPane::showUndecodable);
    connect(&playback_, &Playback::clock, pane, &PreviewPane::showClock);
    connect(&playback_, &Playback::playingChanged, pane, &PreviewPane::updatePlayButton);
    connect(&thumbnails_, &ThumbnailLoader::finished, this, &Controller::thumbnailFinished);
}

void Controller::wireCatalog() {
    connect(&index_, &LibraryIndex::loaded, this, &Controller::catalogLoaded);
    connect(&index_, &LibraryIndex::refreshStarted, this, &Controller::refreshStarted);
    connect(&index_, &LibraryIndex::progress, this,
            [this](const std::string& text) { setStatus(shownText(text)); });
    connect(&index_, &LibraryIndex::refreshFinished, this, &Controller::refreshFinished);
    connect(&index_, &LibraryIndex::renamed, this, &Controller::renamed);
    connect(&index_, &LibraryIndex::renameSaved, this, &Controller::renameSaved);
    connect(&filter_, &AssetFilter::due, this, [this] { applyFilter(ListPosition::Top); });
    connect(&filter_, &AssetFilter::finished, this, &Controller::filterFinished);
    connect(&categoryTree_, &CategoryTree::rebuilt, this,
            [this] { libraryView_->showCategories(categoryTree_.categories(), filter_.filterKey()); });
    connect(&categoryTree_, &CategoryTree::countChanged, libraryView_.get(),
            &LibraryView::categoryCountChanged);
}

void Controller::wireOrganizer() {
    organizerView_->onStatus = [this](const QString& text) { organizerReported(text); };
    organizerView_->onProjectCreated = [this](const FileUrl& folder) { projectCreated(folder); };
}

}  // namespace morvane
