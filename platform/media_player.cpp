#include "platform/media_player.h"

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cmath>
#include <cstring>
#include <utility>

#include <QCoreApplication>
#include <QPointer>
#include <QTimer>

#include "platform/player_session.h"
#include "platform/player_thread.h"

namespace morvane {

namespace {

constexpr std::chrono::milliseconds clockInterval{200};

/// What every player of the process needs, once.
void prepareProcess() {
    static const bool isPrepared = [] {
        qAddPostRoutine(waitForPlayerThreads);
        return true;
    }();
    Q_UNUSED(isPrepared);
    // The library refuses to work where numbers are written with a comma. Only on the main thread,
    // and only when something changed it since.
    if (std::strcmp(std::setlocale(LC_NUMERIC, nullptr), "C") != 0)  // NOLINT(concurrency-mt-unsafe)
        std::setlocale(LC_NUMERIC, "C");                             // NOLINT(concurrency-mt-unsafe)
}

}  // namespace

MediaPlayer::MediaPlayer(QObject* parent)
    : QObject(parent), session_(std::make_shared<PlayerSession>()), clock_(new QTimer(this)) {
    prepareProcess();
    clock_->setInterval(clockInterval);
    connect(clock_, &QTimer::timeout, this, &MediaPlayer::tellPosition);
}

MediaPlayer::~MediaPlayer() {
    session_->wish([](PlayerSession::Wishes& wishes) { wishes.isStopped = true; });
}

void MediaPlayer::load(const std::string& path, PlayerContent content) {
    session_->path = path;
    session_->content = content;
    session_->deliver = [player = QPointer<MediaPlayer>(this)] {
        if (player)
            player->fetchNews();
    };
    startPlayerThread(session_);
}

void MediaPlayer::play() {
    isPlaying_ = !hasFailed_;
    session_->wish([](PlayerSession::Wishes& wishes) { wishes.isPlaying = true; });
}

void MediaPlayer::pause() {
    isPlaying_ = false;
    session_->wish([](PlayerSession::Wishes& wishes) { wishes.isPlaying = false; });
}

bool MediaPlayer::isPlaying() const {
    return isPlaying_;
}

void MediaPlayer::seek(double seconds) {
    const double most = duration_ > 0.0 ? duration_ : seconds;
    const double target = std::clamp(std::isfinite(seconds) ? seconds : 0.0, 0.0, std::max(most, 0.0));
    session_->wish([target](PlayerSession::Wishes& wishes) { wishes.seek = target; });
}

void MediaPlayer::setVolume(double volume) {
    const double inRange = std::isfinite(volume) ? std::clamp(volume, 0.0, 1.0) : 0.0;
    session_->wish([inRange](PlayerSession::Wishes& wishes) { wishes.volume = inRange; });
}

double MediaPlayer::duration() const {
    return duration_;
}

double MediaPlayer::position() const {
    return position_;
}

void MediaPlayer::setFrameSize(QSize pixels) {
    session_->wish([pixels](PlayerSession::Wishes& wishes) { wishes.frameSize = pixels; });
}

QImage MediaPlayer::frame() const {
    return frame_;
}

void MediaPlayer::fetchNews() {
    const QPointer<MediaPlayer> alive(this);
    PlayerSession::News news = session_->takeNews();
    if (hasFailed_)
        return;
    if (news.hasFrame) {
        frame_ = std::move(news.frame);
        Q_EMIT frameReady();
    }
    if (alive && news.ready && !isReady_) {
        isReady_ = true;
        duration_ = std::max(*news.ready, 0.0);
        clock_->start();
        Q_EMIT ready(*news.ready);
    }
    if (alive && news.hasSought)
        tellPosition();
    if (alive && news.hasEnded) {
        isPlaying_ = false;
        tellPosition();
        if (alive)
            Q_EMIT ended();
    }
    if (alive && news.hasFailed) {
        hasFailed_ = true;
        isPlaying_ = false;
        clock_->stop();
        Q_EMIT failed();
    }
}

void MediaPlayer::tellPosition() {
    {
        const std::lock_guard lock(session_->mutex);
        position_ = session_->position;
    }
    position_ = std::max(position_, 0.0);
    if (duration_ > 0.0)
        position_ = std::min(position_, duration_);
    Q_EMIT positionChanged(position_);
}

}  // namespace morvane
