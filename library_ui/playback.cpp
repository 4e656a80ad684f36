#include "library_ui/playback.h"

#include "library_ui/picture_view.h"

#include "platform/media_player.h"

namespace morvane {

Playback::Playback(PlayerView& view, QObject* parent) : QObject(parent), view_(view) {}

Playback::~Playback() = default;

void Playback::load(const std::string& path, PreviewMode mode) {
    stopPlayer();
    player_ = std::make_unique<MediaPlayer>();
    player_->setVolume(volume_);
    failureObservation_ = connect(player_.get(), &MediaPlayer::failed, this, &Playback::clipFailed);
    readyObservation_ = connect(player_.get(), &MediaPlayer::ready, this, &Playback::ready);
    observer_ = connect(player_.get(), &MediaPlayer::positionChanged, this, &Playback::tick);
    endToken_ = connect(player_.get(), &MediaPlayer::ended, this, &Playback::clipEnded);
    if (mode == PreviewMode::Video)
        attachView();
    player_->load(path, mode == PreviewMode::Video ? PlayerContent::AudioAndVideo : PlayerContent::AudioOnly);
}

void Playback::attachView() {
    player_->setFrameSize(view_.framePixels());
    connect(&view_, &PlayerView::framePixelsChanged, player_.get(), &MediaPlayer::setFrameSize);
    connect(player_.get(), &MediaPlayer::frameReady, this, [this] { view_.setFrame(player_->frame()); });
}

void Playback::stopPlayer() {
    if (!player_)
        return;
    player_->pause();
    disconnect(observer_);
    disconnect(failureObservation_);
    disconnect(readyObservation_);
    disconnect(endToken_);
    player_.reset();
    view_.setFrame({});
    reportPlaying();
}

void Playback::togglePlay() {
    if (isPlaying())
        pause();
    else
        play();
}

void Playback::play() {
    if (!player_)
        return;
    player_->play();
    reportPlaying();
}

void Playback::pause() {
    if (!player_)
        return;
    player_->pause();
    reportPlaying();
}

void Playback::seek(double seconds) {
    if (player_)
        player_->seek(seconds);
}

void Playback::setVolume(double volume) {
    volume_ = volume;
    if (player_)
        player_->setVolume(volume);
}

bool Playback::isPlaying() const {
    return player_ && player_->isPlaying();
}

void Playback::clipFailed() {
    Q_EMIT failed();
    reportPlaying();
}

void Playback::clipEnded() {
    player_->pause();
    player_->seek(0);
    reportPlaying();
}

void Playback::tick(double seconds) {
    Q_EMIT clock(seconds, player_->duration());
    reportPlaying();
}

void Playback::reportPlaying() {
    if (wasPlaying_ == isPlaying())
        return;
    wasPlaying_ = !wasPlaying_;
    Q_EMIT playingChanged(wasPlaying_);
}

}  // namespace morvane
