// Pictures for the preview: made by the media helper program on a queue of its own, at most 1200 pixels
// long, kept in a cache limited by decoded bytes.
//
// The newest request wins: a request that has not begun when a newer one comes is dropped, one in progress is
// finished and its picture cached, but only the newest is reported. While nothing is wanted, the pictures
// named by prefetch() are prepared one after the other; a request interrupts that after the piece in
// progress.
#pragma once

#include "library_ui/preview_state.h"

#include "catalog/asset.h"
#include "support/serial_queue.h"

#include <QCache>
#include <QImage>
#include <QObject>
#include <QTimer>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace morvane {

class MediaClient;

/// Main thread only; the queue works on copies.
class ThumbnailLoader final : public QObject {
    Q_OBJECT
public:
    /// The key of a picture: "path|modified"; a changed file gets a new key.
    static std::string keyOf(const Asset& asset);

    explicit ThumbnailLoader(QObject* parent = nullptr);
    ~ThumbnailLoader() override;

    /// Most decoded bytes kept (bytes per row times height, summed).
    void setCostLimit(qint64 bytes);
    qint64 costLimit() const;
    /// The cached picture, or a null image.
    QImage cached(const Asset& asset) const;
    /// The same for a picture about to be shown: from now on it counts as seen, as one that finished() told
    /// of does, for as long as it stays cached.
    CachedPicture present(const Asset& asset);
    /// Makes the picture of `asset`; finished() follows unless a newer request or cancel() comes first.
    void request(const Asset& asset);
    /// Drops the wish for the last requested picture (it is cached if already in progress).
    void cancel();
    /// Pictures to prepare while idle, most wanted first; replaces the former list. Only pictures under the
    /// library folder of `shown` are taken, because its drive is known to answer.
    void prefetch(const Asset& shown, std::vector<Asset> neighbours);
    /// Whether preparing ahead is allowed (default: yes); switched off while a copy needs the drives.
    void setPrefetching(bool allowed);
    const SerialQueue& thumbnailQueue() const { return *thumbnailQueue_; }

    /// Initial limit, as at launch: 64 MiB.
    static constexpr qint64 defaultCostLimit = 67'108'864;

Q_SIGNALS:
    /// The picture of the newest request; null when the file could not be made into one.
    void finished(const morvane::Asset& asset, const QImage& picture);

private:
    enum class Reason { Wanted, Prefetch };
    /// What the queue looks at while it works. `newest` is the ticket of the newest wish.
    struct Signs {
        std::atomic<quint64> newest = 0;
        std::atomic<bool> closing = false;
    };
    void make(const Asset& asset, Reason reason);
    void deliver(const Asset& asset, const std::optional<QImage>& picture, quint64 ticket, Reason reason);
    void prefetchNext();

    QCache<QByteArray, CachedPicture> thumbnails_;
    std::unordered_set<std::string> undecodable_;
    std::vector<Asset> neighbours_;
    QTimer idle_;
    int inProgress_ = 0;
    bool prefetching_ = true;
    std::shared_ptr<Signs> signs_;
    std::unique_ptr<MediaClient> client_;
    std::unique_ptr<SerialQueue> thumbnailQueue_;
};

}  // namespace morvane
