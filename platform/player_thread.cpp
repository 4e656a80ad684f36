#include "platform/player_thread.h"

#include <mpv/client.h>
#include <mpv/render.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <vector>

#include <QByteArray>
#include <QTransform>

#include "platform/player_library.h"

namespace morvane {

namespace {

constexpr std::chrono::seconds exitPatience{3};
/// Rows of pictures begin at multiples of this, as the renderer's vector instructions like it.
constexpr std::size_t rowAlignment = 64;
/// How much earlier than asked a seek in a stream without an index begins to read, and how far that may
/// grow. Cameras write groups of pictures of up to a second; encoders at their defaults ten seconds.
constexpr double firstLeadSeconds = 2.0;
constexpr double longestLeadSeconds = 32.0;

/// How long the library may say nothing while it plays, before it is asked whether it is at the end.
constexpr std::chrono::milliseconds endCheckInterval{250};
constexpr std::chrono::milliseconds quietInterval{3'600'000};

/// Marks of our requests in the library's answers.
enum Mark : std::uint64_t {
    PositionMark = 1,
    EndMark,
    RateMark,
    FormatMark,
    PictureMark,
    VideoMark,
    AudioMark,
    TurnMark,
    DurationMark,
    LandingMark
};

/// Threads that still run, so that the end of the program can wait for them.
class RunningThreads {
public:
    void add() {
        const std::lock_guard lock(mutex_);
        ++count_;
    }
    void remove() {
        const std::lock_guard lock(mutex_);
        --count_;
        changed_.notify_all();
    }
    void waitForAll() {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, exitPatience, [this] { return count_ == 0; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int count_ = 0;
};

RunningThreads& runningThreads() {
    // Never destroyed: a thread that is stuck on a dead disk may outlive everything.
    static auto& instance = *new RunningThreads;
    return instance;
}

struct DrawingDeleter {
    void operator()(mpv_render_context* drawing) const {
        mpv_render_context_set_update_callback(drawing, nullptr, nullptr);
        mpv_render_context_free(drawing);
    }
};
using DrawingHandle = std::unique_ptr<mpv_render_context, DrawingDeleter>;

QImage newPicture(QSize size) {
    const auto width = static_cast<std::size_t>(size.width());
    const std::size_t stride = (width * 4 + rowAlignment - 1) / rowAlignment * rowAlignment;
    void* pixels = std::aligned_alloc(rowAlignment, stride * static_cast<std::size_t>(size.height()));
    return QImage(static_cast<uchar*>(pixels), size.width(), size.height(), static_cast<qsizetype>(stride),
                  QImage::Format_RGB32, std::free, pixels);
}

bool isTrue(const mpv_event_property& property) {
    return property.format == MPV_FORMAT_FLAG && *static_cast<const int*>(property.data) != 0;
}

/// One player from opening to closing. Requests to the library never wait for their answer. The order
/// of closing is callbacks, drawing, library.
class PlayerThread {
public:
    explicit PlayerThread(std::shared_ptr<PlayerSession> session) : session_(std::move(session)) {}
    ~PlayerThread() {
        if (player_)
            mpv_set_wakeup_callback(player_.get(), nullptr, nullptr);
    }
    PlayerThread(const PlayerThread&) = delete;
    PlayerThread& operator=(const PlayerThread&) = delete;

    void run();

private:
    bool open();
    bool openDrawing();
    bool waitForWork();
    void applyWishes(const PlayerSession::Wishes& wishes);
    void seek(double seconds);

    void handleEvents();
    void handle(const mpv_event& event);
    void handleNumber(std::uint64_t mark, double number);
    void handleAnswer(std::uint64_t mark, std::optional<double> number);
    void useFormat(std::string_view format);
    void restarted();
    void becameReady(double duration);
    void checkLanding(double position);
    void reachedEnd(bool isAtEnd);
    void ended();
    void fail();

    void draw();
    bool drawInto(QImage& picture);

    void ask(Mark mark, const char* name) {
        mpv_get_property_async(player_.get(), mark, name, MPV_FORMAT_DOUBLE);
    }
    void set(const char* name, double number) {
        mpv_set_property_async(player_.get(), 0, name, MPV_FORMAT_DOUBLE, &number);
    }
    void setFlag(const char* name, bool value) {
        int flag = value ? 1 : 0;
        mpv_set_property_async(player_.get(), 0, name, MPV_FORMAT_FLAG, &flag);
    }

    const std::shared_ptr<PlayerSession> session_;
    PlayerHandle player_;
    DrawingHandle drawing_;

    PlayerSession::Wishes applied_;
    double frameSeconds_ = 0.0;  ///< 0 while unknown
    double leadSeconds_ = 0.0;   ///< 0 in files with an index
    int turn_ = 0;               ///< degrees, clockwise
    std::optional<double> sought_;
    bool hasBegun_ = false;
    bool hasPicture_ = false;
    bool hasVideo_ = false;
    bool hasAudio_ = false;
    bool isReady_ = false;
    bool hasFailed_ = false;
    bool isAtEnd_ = false;

    // What the last waiting found:
    PlayerSession::Wishes wishes_;
    bool areWishesNew_ = false;
    bool areEventsDue_ = false;
    bool isDrawingDue_ = false;
    bool isQuiet_ = false;
};

bool PlayerThread::open() {
    player_ = openPlayer(session_->content);
    if (!player_)
        return false;
    mpv_set_wakeup_callback(
        player_.get(),
        [](void* session) { static_cast<PlayerSession*>(session)->raise(&PlayerSession::areEventsDue); },
        session_.get());
    if (session_->content == PlayerContent::AudioAndVideo && !openDrawing())
        return false;
    mpv_observe_property(player_.get(), PositionMark, "time-pos", MPV_FORMAT_DOUBLE);
    mpv_observe_property(player_.get(), RateMark, "container-fps", MPV_FORMAT_DOUBLE);
    mpv_observe_property(player_.get(), FormatMark, "file-format", MPV_FORMAT_STRING);
    mpv_observe_property(player_.get(), EndMark, "eof-reached", MPV_FORMAT_FLAG);
    return beginLoading(player_.get(), session_->path);
}

bool PlayerThread::openDrawing() {
    std::array<mpv_render_param, 2> parameters{
        {{MPV_RENDER_PARAM_API_TYPE, const_cast<char*>(MPV_RENDER_API_TYPE_SW)},
         {MPV_RENDER_PARAM_INVALID, nullptr}}};
    mpv_render_context* drawing = nullptr;
    if (mpv_render_context_create(&drawing, player_.get(), parameters.data()) < 0)
        return false;
    drawing_.reset(drawing);
    mpv_render_context_set_update_callback(
        drawing,
        [](void* session) { static_cast<PlayerSession*>(session)->raise(&PlayerSession::isDrawingDue); },
        session_.get());
    return true;
}

void PlayerThread::run() {
    bool isWanted = waitForWork();  // the selection may have moved on before this thread began
    if (isWanted && !open())
        fail();
    for (; isWanted; isWanted = waitForWork()) {
        if (hasFailed_)
            continue;
        if (areWishesNew_)
            applyWishes(wishes_);
        if (areEventsDue_)
            handleEvents();
        if (drawing_ && isDrawingDue_)
            draw();
        // The library does not always tell that a very short file is over.
        if (isQuiet_ && isReady_ && applied_.isPlaying)
            mpv_get_property_async(player_.get(), EndMark, "eof-reached", MPV_FORMAT_FLAG);
    }
}

/// False when the thread is to end.
bool PlayerThread::waitForWork() {
    std::unique_lock lock(session_->mutex);
    isQuiet_ = !session_->wake.wait_for(lock, applied_.isPlaying ? endCheckInterval : quietInterval, [this] {
        return session_->areWishesNew || session_->areEventsDue || session_->isDrawingDue;
    });
    areWishesNew_ = std::exchange(session_->areWishesNew, false);
    areEventsDue_ = std::exchange(session_->areEventsDue, false);
    isDrawingDue_ = std::exchange(session_->isDrawingDue, false);
    wishes_ = session_->wishes;
    session_->wishes.seek.reset();
    return !wishes_.isStopped;
}

void PlayerThread::applyWishes(const PlayerSession::Wishes& wishes) {
    // The library's scale is cubic; ours is linear in amplitude.
    if (wishes.volume != applied_.volume)
        set("volume", std::cbrt(wishes.volume) * 100.0);
    if (wishes.seek)
        seek(*wishes.seek);
    if (wishes.isPlaying != applied_.isPlaying)
        setFlag("pause", !wishes.isPlaying);
    if (wishes.frameSize != applied_.frameSize)
        isDrawingDue_ = true;
    applied_ = wishes;
    // Nothing is left to play; the library would not say so again.
    if (isReady_ && isAtEnd_ && applied_.isPlaying && !wishes.seek)
        ended();
}

/// The library shows the first picture that begins at or up to 5 ms before the asked time; wanted is
/// the one that is on screen at that time, which may have begun up to a frame earlier.
void PlayerThread::seek(double seconds) {
    constexpr double libraryTolerance = 0.005;
    constexpr double roundingTolerance = 0.001;
    double target = seconds;
    if (frameSeconds_ > 0.0)
        target += libraryTolerance + std::min(roundingTolerance, frameSeconds_ / 4) - frameSeconds_;
    sought_ = seconds;
    const std::string text = QByteArray::number(std::max(target, 0.0), 'f', 6).toStdString();
    std::array<const char*, 4> words{"seek", text.c_str(), "absolute+exact", nullptr};
    mpv_command_async(player_.get(), 0, words.data());
}

void PlayerThread::handleEvents() {
    for (;;) {
        const mpv_event* event = mpv_wait_event(player_.get(), 0);
        if (event->event_id == MPV_EVENT_NONE || hasFailed_)
            return;
        handle(*event);
    }
}

void PlayerThread::handle(const mpv_event& event) {
    const auto* property = static_cast<const mpv_event_property*>(event.data);
    switch (event.event_id) {
        case MPV_EVENT_PLAYBACK_RESTART:
            restarted();
            break;
        case MPV_EVENT_GET_PROPERTY_REPLY:
            if (event.reply_userdata == EndMark)
                reachedEnd(isTrue(*property));
            else if (event.error >= 0 && property->format == MPV_FORMAT_DOUBLE)
                handleAnswer(event.reply_userdata, *static_cast<const double*>(property->data));
            else
                handleAnswer(event.reply_userdata, std::nullopt);
            break;
        case MPV_EVENT_PROPERTY_CHANGE:
            if (property->format == MPV_FORMAT_DOUBLE)
                handleNumber(event.reply_userdata, *static_cast<const double*>(property->data));
            else if (property->format == MPV_FORMAT_STRING)
                useFormat(*static_cast<char**>(property->data));
            else if (event.reply_userdata == EndMark)
                reachedEnd(isTrue(*property));
            break;
        case MPV_EVENT_END_FILE:
        case MPV_EVENT_SHUTDOWN:
            fail();
            break;
        default:
            break;
    }
}

void PlayerThread::handleNumber(std::uint64_t mark, double number) {
    if (mark == RateMark) {
        frameSeconds_ = number > 0.0 ? 1.0 / number : 0.0;
    } else {
        const std::lock_guard lock(session_->mutex);
        session_->position = number;
    }
}

void PlayerThread::handleAnswer(std::uint64_t mark, std::optional<double> number) {
    switch (mark) {
        case PictureMark:
            hasPicture_ = number.has_value();
            break;
        case VideoMark:
            hasVideo_ = number.has_value();
            break;
        case AudioMark:
            hasAudio_ = number.has_value();
            break;
        case TurnMark: {
            const int degrees = static_cast<int>(number.value_or(0.0));
            turn_ = degrees % 90 == 0 ? degrees : 0;
            break;
        }
        case DurationMark:
            becameReady(number.value_or(-1.0));
            break;
        default:
            if (number)
                checkLanding(*number);
    }
}

/// Pictures of which not one can be decoded are a failure even when the container was in order, unless
/// there is sound to play.
void PlayerThread::becameReady(double duration) {
    if (hasVideo_ && !hasPicture_ && (!hasAudio_ || isAtEnd_)) {
        fail();
        return;
    }
    isReady_ = true;
    isDrawingDue_ = true;
    session_->tell([duration](PlayerSession::News& news) { news.ready = duration; });
    if (isAtEnd_ && applied_.isPlaying)
        ended();
}

/// Transport and program streams have no index: a jump lands between key pictures, and everything up
/// to the next one would be missing. Beginning earlier than asked brings it back.
void PlayerThread::useFormat(std::string_view format) {
    if (format != "mpegts" && format != "mpeg")
        return;
    leadSeconds_ = firstLeadSeconds;
    set("hr-seek-demuxer-offset", leadSeconds_);
}

/// The first picture or sound is there, at the beginning or after a seek.
void PlayerThread::restarted() {
    if (!hasBegun_) {
        hasBegun_ = true;
        // Answers come in this order.
        ask(VideoMark, "current-tracks/video/id");
        ask(AudioMark, "current-tracks/audio/id");
        ask(PictureMark, "video-out-params/w");
        ask(TurnMark, "current-tracks/video/demux-rotation");
        ask(DurationMark, "duration");
        return;
    }
    if (leadSeconds_ > 0.0 && sought_)
        ask(LandingMark, "time-pos");
    session_->tell([](PlayerSession::News& news) { news.hasSought = true; });
}

/// In a stream without an index: tries again from further back when the picture came too late.
void PlayerThread::checkLanding(double position) {
    if (!sought_ || position <= *sought_ + frameSeconds_ / 2 || leadSeconds_ >= longestLeadSeconds)
        return;
    leadSeconds_ = std::min(leadSeconds_ * 4, longestLeadSeconds);
    set("hr-seek-demuxer-offset", leadSeconds_);
    seek(*sought_);
}

void PlayerThread::reachedEnd(bool isAtEnd) {
    const bool isNews = isAtEnd && !isAtEnd_;
    isAtEnd_ = isAtEnd;
    if (isNews && isReady_ && applied_.isPlaying)
        ended();
}

/// The library pauses itself at the end; so does the wish.
void PlayerThread::ended() {
    applied_.isPlaying = false;
    session_->tell([this](PlayerSession::News& news) {
        session_->wishes.isPlaying = false;
        news.hasEnded = true;
    });
}

void PlayerThread::fail() {
    if (!std::exchange(hasFailed_, true))
        session_->tell([](PlayerSession::News& news) { news.hasFailed = true; });
}

void PlayerThread::draw() {
    mpv_render_context_update(drawing_.get());
    const QSize size = applied_.frameSize;
    if (size.isEmpty() || !isReady_ || !hasPicture_) {
        int skip = 1;
        std::array<mpv_render_param, 2> parameters{
            {{MPV_RENDER_PARAM_SKIP_RENDERING, &skip}, {MPV_RENDER_PARAM_INVALID, nullptr}}};
        mpv_render_context_render(drawing_.get(), parameters.data());
        return;
    }
    QImage picture = newPicture(turn_ % 180 == 0 ? size : size.transposed());
    if (picture.isNull() || !drawInto(picture))
        return;
    if (turn_ != 0)
        picture = picture.transformed(QTransform().rotate(turn_));
    session_->tell([&picture](PlayerSession::News& news) {
        news.hasFrame = true;
        news.frame = std::move(picture);
    });
}

bool PlayerThread::drawInto(QImage& picture) {
    std::array<int, 2> extent{picture.width(), picture.height()};
    auto stride = static_cast<std::size_t>(picture.bytesPerLine());
    int doNotWait = 0;
    std::array<mpv_render_param, 6> parameters{{{MPV_RENDER_PARAM_SW_SIZE, extent.data()},
                                                {MPV_RENDER_PARAM_SW_FORMAT, const_cast<char*>("bgr0")},
                                                {MPV_RENDER_PARAM_SW_STRIDE, &stride},
                                                {MPV_RENDER_PARAM_SW_POINTER, picture.bits()},
                                                {MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &doNotWait},
                                                {MPV_RENDER_PARAM_INVALID, nullptr}}};
    return mpv_render_context_render(drawing_.get(), parameters.data()) >= 0;
}

}  // namespace

void startPlayerThread(std::shared_ptr<PlayerSession> session) {
    runningThreads().add();
    std::thread([session = std::move(session)]() mutable {
        {
            PlayerThread thread(std::move(session));
            thread.run();
        }
        runningThreads().remove();
    }).detach();
}

void waitForPlayerThreads() {
    runningThreads().waitForAll();
}

}  // namespace morvane
