// What a media player on the main thread and its own thread share.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include <QImage>
#include <QSize>

#include "platform/media_player.h"
#include "support/main_post.h"

namespace morvane {

struct PlayerSession {
    /// What the main thread wants.
    struct Wishes {
        bool isStopped = false;
        bool isPlaying = false;
        double volume = 1.0;
        QSize frameSize;
        std::optional<double> seek;  ///< seconds; the newest one not yet begun
    };
    /// What the player's thread has to say.
    struct News {
        std::optional<double> ready;  ///< the duration, negative when there is none
        bool hasFailed = false;
        bool hasSought = false;
        bool hasEnded = false;
        bool hasFrame = false;
        QImage frame;
    };

    void wish(const std::function<void(Wishes&)>& change) {
        const std::lock_guard lock(mutex);
        change(wishes);
        areWishesNew = true;
        wake.notify_one();
    }
    /// Raises one of the flags below and wakes the player's thread.
    void raise(bool PlayerSession::*flag) {
        const std::lock_guard lock(mutex);
        this->*flag = true;
        wake.notify_one();
    }
    /// The main thread is told once until it has fetched everything there is.
    void tell(const std::function<void(News&)>& change) {
        const std::lock_guard lock(mutex);
        change(news);
        if (!std::exchange(isDeliveryDue, true))
            postToMain(deliver);
    }
    News takeNews() {
        const std::lock_guard lock(mutex);
        isDeliveryDue = false;
        return std::exchange(news, {});
    }

    // Fixed before the thread starts:
    std::string path;
    PlayerContent content = PlayerContent::AudioAndVideo;
    std::function<void()> deliver;  ///< runs on the main thread

    std::mutex mutex;
    std::condition_variable wake;
    // Guarded by mutex:
    Wishes wishes;
    bool areWishesNew = true;
    bool areEventsDue = false;
    bool isDrawingDue = false;
    bool isDeliveryDue = false;
    News news;
    double position = 0.0;  ///< seconds
};

}  // namespace morvane
