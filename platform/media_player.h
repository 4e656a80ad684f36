// Playing one media file: sound to the audio device, pictures as images (libmpv with its software
// renderer). Needs QtGui for images, no window and no graphics driver.
#pragma once

#include <memory>
#include <string>

#include <QImage>
#include <QObject>
#include <QSize>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

namespace morvane {

struct PlayerSession;

enum class PlayerContent { AudioOnly, AudioAndVideo };

/// Plays one file; make a new player for the next one. Lives on the main thread and never blocks
/// it: all decoding, drawing and closing happens on threads of the player's own. Nothing but the
/// given file is opened for reading (it must be a regular file, not a symbolic link), no user
/// configuration, script or neighbour file is read, no key is taken, nothing is written. Without
/// an audio device playback goes on silently.
///
/// Needs the numeric C locale: the first player sets LC_NUMERIC to "C" for the process.
///
/// Signals come on the main thread and only from this player's file; none comes after the player
/// is destroyed. The destructor returns at once; the file is closed a moment later by a thread of
/// its own (the end of QCoreApplication waits up to three seconds for such threads).
class MediaPlayer : public QObject {
    Q_OBJECT
public:
    explicit MediaPlayer(QObject* parent = nullptr);
    ~MediaPlayer() override;

    /// Opens `path` (absolute, exact bytes), paused at its beginning; the first picture is shown
    /// at once. AudioOnly never decodes pictures. Call once.
    void load(const std::string& path, PlayerContent content);
    void play();
    void pause();
    /// Playing means: asked to play and not at the end.
    bool isPlaying() const;
    /// Shows exactly the picture at `seconds` (clamped to the file); while a seek is under way a
    /// later one replaces it. Playback goes on or stays paused as it was; at the end it stays paused.
    void seek(double seconds);
    /// 0 (silent) to 1 (as recorded), linear in amplitude. Kept for the file to be loaded.
    void setVolume(double volume);

    /// Seconds, 0 until ready. `position` never exceeds `duration`.
    double duration() const;
    double position() const;

    /// The size in device pixels in which pictures are drawn; each has exactly this size, with the
    /// right aspect ratio on black. Empty (the default): nothing is drawn.
    void setFrameSize(QSize pixels);
    /// The latest picture, or a null image before the first one. After a change of size the old
    /// picture stays until the new one is drawn. Cheap: images share their pixels.
    QImage frame() const;

Q_SIGNALS:
    /// Once, when the file can be played. `duration` in seconds; negative when the file has none.
    void ready(double duration);
    /// Once, instead of or after ready: the file cannot be played (any further).
    void failed();
    /// The playing time, five times a second while a file is ready, and after every seek.
    void positionChanged(double seconds);
    /// Each time playback reaches the end of the file; the player is paused then.
    void ended();
    /// A new picture is in frame(). Not more often than the receiver handles it.
    void frameReady();

private:
    void fetchNews();
    void tellPosition();

    /// Shared with the player's own thread, which ends a while after this object.
    std::shared_ptr<PlayerSession> session_;
    QTimer* clock_ = nullptr;
    QImage frame_;
    double duration_ = 0.0;
    double position_ = 0.0;
    bool isPlaying_ = false;
    bool isReady_ = false;
    bool hasFailed_ = false;
};

}  // namespace morvane
