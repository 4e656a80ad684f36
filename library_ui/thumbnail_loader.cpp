#include "library_ui/thumbnail_loader.h"

#include "media/media_client.h"
#include "support/deliver.h"

#include <QByteArray>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <utility>

namespace morvane {

namespace {

constexpr int longestSide = 1200;
constexpr int idleBeforePrefetch = 150;  // milliseconds
constexpr std::size_t rememberedFailures = 1000;

/// A decode nobody waits for any more is finished and cached, unless it has taken this long: then the helper
/// is stopped, so that the picture wanted now need not wait.
constexpr auto patience = std::chrono::milliseconds(1500);

QImage imageOf(const Pixels& pixels) {
    QImage image(pixels.width, pixels.height, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return image;
    const auto row = static_cast<std::size_t>(pixels.width) * 4;
    for (int y = 0; y < pixels.height; ++y)
        std::memcpy(image.scanLine(y), pixels.bytes.data() + static_cast<std::size_t>(y) * row, row);
    return image;
}

/// The picture of `asset`; a null image when the file cannot be made into one.
QImage pictureOf(MediaClient& client, const Asset& asset, const std::function<bool()>& unwanted,
                 const std::atomic<bool>& closing) {
    const auto begin = std::chrono::steady_clock::now();
    MediaLimits limits;
    limits.cancelled = [&] {
        return closing || (unwanted() && std::chrono::steady_clock::now() - begin > patience);
    };
    const MediaResult<Pixels> result = client.thumbnail(asset.path, longestSide, limits);
    return result.value ? imageOf(*result.value) : QImage();
}

}  // namespace

std::string ThumbnailLoader::keyOf(const Asset& asset) {
    char modified[32];
    std::snprintf(modified, sizeof modified, "%.17g", asset.modified);
    return asset.path + "|" + modified;
}

ThumbnailLoader::ThumbnailLoader(QObject* parent)
    : QObject(parent),
      signs_(std::make_shared<Signs>()),
      client_(std::make_unique<MediaClient>()),
      thumbnailQueue_(
          std::make_unique<SerialQueue>("com.morvane.library.thumbnails", SerialQueue::Priority::Utility)) {
    setCostLimit(defaultCostLimit);
    idle_.setSingleShot(true);
    idle_.setInterval(idleBeforePrefetch);
    connect(&idle_, &QTimer::timeout, this, &ThumbnailLoader::prefetchNext);
}

ThumbnailLoader::~ThumbnailLoader() {
    signs_->closing = true;
}

void ThumbnailLoader::setCostLimit(qint64 bytes) {
    thumbnails_.setMaxCost(bytes);
}

qint64 ThumbnailLoader::costLimit() const {
    return thumbnails_.maxCost();
}

QImage ThumbnailLoader::cached(const Asset& asset) const {
    const CachedPicture* picture = thumbnails_.object(QByteArray::fromStdString(keyOf(asset)));
    return picture == nullptr ? QImage() : picture->image;
}

CachedPicture ThumbnailLoader::present(const Asset& asset) {
    CachedPicture* picture = thumbnails_.object(QByteArray::fromStdString(keyOf(asset)));
    if (picture == nullptr)
        return {};
    const PictureCached before = std::exchange(picture->cached, PictureCached::Seen);
    return {picture->image, before};
}

void ThumbnailLoader::request(const Asset& asset) {
    idle_.stop();
    neighbours_.clear();
    ++signs_->newest;
    make(asset, Reason::Wanted);
}

void ThumbnailLoader::cancel() {
    idle_.stop();
    neighbours_.clear();
    ++signs_->newest;
}

void ThumbnailLoader::prefetch(const Asset& shown, std::vector<Asset> neighbours) {
    std::erase_if(neighbours, [&](const Asset& asset) {
        return asset.root != shown.root || previewModeOf(asset) != PreviewMode::Picture ||
               undecodable_.contains(keyOf(asset)) || !cached(asset).isNull();
    });
    neighbours_ = std::move(neighbours);
    idle_.start();
}

void ThumbnailLoader::setPrefetching(bool allowed) {
    prefetching_ = allowed;
}

void ThumbnailLoader::prefetchNext() {
    if (!prefetching_ || inProgress_ > 0 || neighbours_.empty())
        return;
    const Asset next = std::move(neighbours_.front());
    neighbours_.erase(neighbours_.begin());
    make(next, Reason::Prefetch);
}

void ThumbnailLoader::make(const Asset& asset, Reason reason) {
    ++inProgress_;
    const quint64 ticket = signs_->newest;
    runAndDeliver(
        *thumbnailQueue_, this,
        [asset, ticket, signs = signs_, client = client_.get()]() -> std::optional<QImage> {
            if (signs->newest != ticket)
                return std::nullopt;
            return pictureOf(
                *client, asset, [&] { return signs->newest != ticket; }, signs->closing);
        },
        [asset, ticket, reason](ThumbnailLoader& self, Outcome<std::optional<QImage>>& outcome) {
            self.deliver(asset, outcome.get(), ticket, reason);
        });
}

void ThumbnailLoader::deliver(const Asset& asset, const std::optional<QImage>& picture, quint64 ticket,
                              Reason reason) {
    --inProgress_;
    const bool newest = ticket == signs_->newest;
    const bool reported = newest && picture && reason == Reason::Wanted;
    if (picture && !picture->isNull()) {
        const PictureCached cached = reported ? PictureCached::Seen : PictureCached::Unseen;
        thumbnails_.insert(QByteArray::fromStdString(keyOf(asset)), new CachedPicture{*picture, cached},
                           picture->sizeInBytes());
    } else if (picture && newest) {
        if (undecodable_.size() >= rememberedFailures)
            undecodable_.clear();
        undecodable_.insert(keyOf(asset));
    }
    if (reported)
        Q_EMIT finished(asset, *picture);
    if (reason == Reason::Prefetch || !idle_.isActive())
        prefetchNext();
}

}  // namespace morvane
