// The preview pane: canvas, texts, transport and file buttons of the shown asset. It knows neither player nor
// disk: it is told what to show and says by signals what the user wants.
//
// Showing an asset takes two steps: showAsset() fills in what the index knows, showFileState() follows when
// the file system has answered. Between the two the pane holds its painting back for a moment (`paintHold`),
// so that the usual fast answer never flickers.
#pragma once

#include "library_ui/asset_text.h"
#include "library_ui/preview_state.h"

#include <QImage>
#include <QPointer>
#include <QTimer>
#include <QWidget>

class QCheckBox;
class QLabel;
class QLayout;
class QScrollArea;
class QSlider;
class QStackedLayout;

namespace morvane {

class Artwork;
class ElidedLabel;
class PictureView;
class PlayerView;
class PushButton;
class SymbolView;

class PreviewPane final : public QWidget {
    Q_OBJECT
public:
    struct Text {
        ElidedLabel* previewTitle = nullptr;
        ElidedLabel* detail = nullptr;
        ElidedLabel* pathLabel = nullptr;
        ElidedLabel* notice = nullptr;
    };
    struct Canvas {
        PlayerView* playerView = nullptr;
        Artwork* artwork = nullptr;
        PictureView* imageView = nullptr;
    };
    struct Transport {
        PushButton* play = nullptr;
        QLabel* time = nullptr;
        QSlider* seek = nullptr;    ///< milliseconds
        QSlider* volume = nullptr;  ///< thousandths
        QCheckBox* auto_ = nullptr;
    };
    struct FileButtons {
        PushButton* favorite = nullptr;
        PushButton* reveal = nullptr;
        PushButton* copy = nullptr;
        PushButton* open = nullptr;
        PushButton* rename = nullptr;
    };

    explicit PreviewPane(QWidget* parent = nullptr);
    ~PreviewPane() override;

    Text text;
    Canvas canvas;
    Transport transport;
    FileButtons fileButtons;

    /// Fills the pane from the index: texts, artwork, clock at zero; all file buttons but favourite, play and
    /// seek disabled until showFileState().
    void showAsset(const Asset& asset, Favorite favorite);
    /// Enables the file buttons and sets the notice for the asset shown. For a present audio or video file
    /// play is enabled too and a video gets the player view; a picture that is cached is shown.
    void showFileState(FileState file, const CachedPicture& picture = {});
    /// The picture of the asset shown; a null image gives the text for one that cannot be previewed.
    void showPicture(const QImage& picture);
    /// The clip can be played: duration in seconds, below zero when unknown.
    void showReady(double duration);
    /// The clip cannot be decoded.
    void showUndecodable();
    /// Seconds; moves slider and clock. The slider stays put while the user holds it.
    void showClock(double current, double duration);
    /// Back to the empty pane.
    void clearPreview();

    /// The play button's title and symbol.
    void updatePlayButton(bool playing);
    /// The favourite button's title and symbol.
    void updateFavorite(Favorite favorite);
    /// Set between showAsset() and showFileState(), the notice stays through the latter.
    void setNotice(const Notice& notice);
    /// Renaming is not possible while a scan runs.
    void setScanning(Scanning scanning);
    /// Sets the check box without a signal.
    void setAutoplay(bool on);
    /// 0 to 1.
    double volumeValue() const;

    /// Milliseconds for which painting is held back while the file system has not answered.
    static constexpr int paintHold = 60;

Q_SIGNALS:
    // Only the user's doing is reported, never a change made by the operations above.
    void playToggled();
    void seekChanged(double seconds);
    void volumeChanged(double volume);
    void autoChanged(bool on);
    void favoriteToggled();
    void revealRequested();
    void copyRequested();
    void openRequested();
    void renameRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void makeControls();
    void layOut();
    QLayout* transportRow();
    QLayout* volumeRow();
    QLayout* fileButtonRows();
    QWidget* noticeFooter();
    void wire();
    void applyButtons();
    void rememberFocus(const FileButtonStates& states);
    void restoreFocus();
    void resetTransport();
    void setClock(double current, double duration);
    void describeVolume();
    void showOnCanvas(QWidget* view);
    void fitCanvas();
    void holdPainting();
    void releasePainting();

    SymbolView* noticeGlyph_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    QWidget* body_ = nullptr;
    QWidget* canvasBox_ = nullptr;
    QStackedLayout* canvasStack_ = nullptr;
    QWidget* pathBox_ = nullptr;
    QTimer hold_;
    PreviewMode mode_ = PreviewMode::Other;
    bool hasAsset_ = false;
    FileState file_ = FileState::Missing;
    Scanning scanning_ = Scanning::No;
    bool noticeKept_ = false;
    bool settingSliders_ = false;
    /// A file button that lost the keyboard because its file is still being asked for.
    QPointer<QWidget> focusBefore_;
};

}  // namespace morvane
