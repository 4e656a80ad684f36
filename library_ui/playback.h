// The one player of the application. A new player is made for every clip; everything of the old one is torn
// down first, so that no event of an old clip reaches the new one.
#pragma once

#include "library_ui/preview_state.h"

#include <QMetaObject>
#include <QObject>

#include <memory>
#include <string>

namespace morvane {

class MediaPlayer;
class PlayerView;

/// Main thread only; never blocks on the file.
class Playback final : public QObject {
    Q_OBJECT
public:
    /// Video is painted into `view`, which must outlive this object.
    explicit Playback(PlayerView& view, QObject* parent = nullptr);
    ~Playback() override;

    /// Tears down the current player and makes one for the file at `path` (Audio or Video). Paused; a video
    /// shows its first picture at once.
    void load(const std::string& path, PreviewMode mode);
    /// Tears down the player, if any. No signal of it follows.
    void stopPlayer();
    /// Plays when paused, pauses when playing; without a player nothing.
    void togglePlay();
    void play();
    void pause();
    /// Exact seek, seconds from the beginning.
    void seek(double seconds);
    /// 0 to 1; also used for every player made later. Initially 0.8.
    void setVolume(double volume);

    bool hasPlayer() const { return player_ != nullptr; }
    bool isPlaying() const;

Q_SIGNALS:
    /// The clip can be played; `duration` in seconds, below zero when unknown. At most once a load.
    void ready(double duration);
    /// The clip cannot be decoded. At most once a load; no clock follows.
    void failed();
    /// Five times a second while there is a player, after each seek and at the end: both in seconds.
    void clock(double current, double duration);
    /// Playing began or ended (also by reaching the end of the clip, which rewinds it to zero, and by
    /// stopPlayer).
    void playingChanged(bool playing);

private:
    void attachView();
    void clipFailed();
    void clipEnded();
    void tick(double seconds);
    void reportPlaying();

    PlayerView& view_;
    double volume_ = 0.8;
    bool wasPlaying_ = false;
    QMetaObject::Connection observer_;
    QMetaObject::Connection failureObservation_;
    QMetaObject::Connection readyObservation_;
    QMetaObject::Connection endToken_;
    std::unique_ptr<MediaPlayer> player_;
};

}  // namespace morvane
