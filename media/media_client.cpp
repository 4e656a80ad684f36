#include "media/media_client.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

#include "media/media_protocol.h"
#include "platform/helper_process.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

using Exchange = HelperProcess::Exchange;

constexpr const char* helperName = "morvane-media";
/// More than the largest thumbnail: what claims to be longer is no answer.
constexpr std::size_t largestPayload =
    sizeof(PixelsHeader) + std::size_t{mediaLargestSide} * mediaLargestSide * 4;

/// A helper's raw answer, or how the talk ended without one.
struct RawAnswer {
    MediaOutcome outcome = MediaOutcome::HelperLost;
    std::vector<unsigned char> payload;
    std::string reason;
};

MediaOutcome outcomeOf(Exchange exchange) {
    switch (exchange) {
        case Exchange::Deadline:
            return MediaOutcome::Deadline;
        case Exchange::Cancelled:
            return MediaOutcome::Cancelled;
        default:
            return MediaOutcome::HelperLost;
    }
}

std::string reasonOf(MediaOutcome outcome) {
    switch (outcome) {
        case MediaOutcome::Deadline:
            return "超过时限未能读完";
        case MediaOutcome::Cancelled:
            return "已停止";
        case MediaOutcome::HelperLost:
            return "解码程序意外结束";
        default:
            return {};
    }
}

template <class Value>
MediaResult<Value> refused(std::string reason) {
    return {MediaOutcome::Refused, std::nullopt, std::move(reason)};
}

/// Opens without following a link at the end, without waiting for the writer of a FIFO, and without
/// becoming the terminal of anything.
UniqueFd openForReading(const std::string& path) {
    return UniqueFd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
}

bool isRegular(const UniqueFd& file) {
    struct stat facts {};
    return ::fstat(file.get(), &facts) == 0 && S_ISREG(facts.st_mode);
}

constexpr const char* unreadable = "无法打开文件";
constexpr const char* notRegular = "不是普通文件";

bool isFlag(std::uint32_t value) {
    return value <= 1;
}

std::optional<MediaFacts> factsOf(const std::vector<unsigned char>& payload) {
    ProbeRecord record;
    if (payload.size() != sizeof record)
        return std::nullopt;
    std::memcpy(&record, payload.data(), sizeof record);
    if (record.durationTimescale <= 0 || record.frameDurationTimescale <= 0 || record.durationValue <= 0 ||
        record.frameDurationValue < 0 || !isFlag(record.video) || !isFlag(record.audio) ||
        record.video + record.audio == 0)
        return std::nullopt;
    MediaFacts facts;
    facts.duration = {record.durationValue, record.durationTimescale};
    facts.video = record.video == 1;
    facts.audio = record.audio == 1;
    facts.width = record.width;
    facts.height = record.height;
    facts.frameDuration = {record.frameDurationValue, record.frameDurationTimescale};
    facts.rate = record.rate;
    facts.channels = record.channels;
    return facts;
}

std::optional<Pixels> pixelsOf(const std::vector<unsigned char>& payload, std::uint32_t maxSide) {
    PixelsHeader header;
    if (payload.size() < sizeof header)
        return std::nullopt;
    std::memcpy(&header, payload.data(), sizeof header);
    if (header.width < 1 || header.height < 1 || header.width > maxSide || header.height > maxSide ||
        payload.size() != sizeof header + std::size_t{header.width} * header.height * 4)
        return std::nullopt;
    Pixels pixels;
    pixels.width = static_cast<int>(header.width);
    pixels.height = static_cast<int>(header.height);
    pixels.bytes.assign(payload.begin() + sizeof header, payload.end());
    return pixels;
}

template <class Value>
MediaResult<Value> resultOf(const RawAnswer& answer, std::optional<Value> value) {
    MediaResult<Value> result;
    result.outcome = answer.outcome;
    if (answer.outcome == MediaOutcome::Done && !value)
        result.outcome = MediaOutcome::HelperLost;
    if (result.outcome == MediaOutcome::Done)
        result.value = std::move(value);
    else
        result.reason = result.outcome == MediaOutcome::Refused ? answer.reason : reasonOf(result.outcome);
    return result;
}

}  // namespace

struct MediaClient::State {
    explicit State(std::string path) : helperPath(std::move(path)) {}

    RawAnswer ask(MediaJob job, std::uint32_t maxSide, const UniqueFd& file, const MediaLimits& limits);
    RawAnswer exchange(const MediaRequest& request, int file, const HelperProcess::Patience& patience);

    const std::string helperPath;
    std::mutex mutex;
    std::unique_ptr<HelperProcess> helper;  ///< guarded by mutex
};

RawAnswer MediaClient::State::exchange(const MediaRequest& request, int file,
                                       const HelperProcess::Patience& patience) {
    RawAnswer answer;
    const auto ended = [&answer](Exchange how) {
        answer.outcome = outcomeOf(how);
        return answer;
    };
    if (const Exchange how = helper->send(&request, sizeof request, file, patience);
        how != Exchange::Complete)
        return ended(how);
    MediaAnswer header;
    if (const Exchange how = helper->receive(&header, sizeof header, patience); how != Exchange::Complete)
        return ended(how);
    const bool refused = header.status == MediaStatus::Refused;
    if (header.mark != mediaAnswerMark || (!refused && header.status != MediaStatus::Done) ||
        header.payloadBytes > (refused ? mediaLongestReason : largestPayload))
        return answer;
    answer.payload.resize(header.payloadBytes);
    if (const Exchange how = helper->receive(answer.payload.data(), answer.payload.size(), patience);
        how != Exchange::Complete)
        return ended(how);
    answer.outcome = refused ? MediaOutcome::Refused : MediaOutcome::Done;
    if (refused)
        answer.reason = withInvalidBytesReplaced(
            {reinterpret_cast<const char*>(answer.payload.data()), answer.payload.size()}, "");
    return answer;
}

RawAnswer MediaClient::State::ask(MediaJob job, std::uint32_t maxSide, const UniqueFd& file,
                                  const MediaLimits& limits) {
    const auto until = std::chrono::steady_clock::now() + limits.deadline;
    const std::lock_guard lock(mutex);
    const HelperProcess::Patience patience{until, limits.cancelled};
    MediaRequest request;
    request.job = job;
    request.maxSide = maxSide;
    // The helper's own limit is a safety net for when this process is gone: never before ours.
    request.limitMilliseconds = static_cast<std::uint32_t>(limits.deadline.count()) + 1000;
    try {
        if (!helper || !helper->isSilent())
            helper = std::make_unique<HelperProcess>(helperPath);
    } catch (const std::system_error&) {
        helper.reset();
        return {MediaOutcome::HelperLost, {}, {}};
    }
    RawAnswer answer = exchange(request, file.get(), patience);
    if (answer.outcome != MediaOutcome::Done && answer.outcome != MediaOutcome::Refused)
        helper.reset();
    return answer;
}

MediaClient::MediaClient() : MediaClient(mediaHelperPath()) {}

MediaClient::MediaClient(std::string helperPath) : state_(std::make_unique<State>(std::move(helperPath))) {}

MediaClient::~MediaClient() = default;

MediaResult<Pixels> MediaClient::thumbnail(const std::string& path, int maxSide, const MediaLimits& limits) {
    UniqueFd file = openForReading(path);
    if (!file)
        return refused<Pixels>(unreadable);
    if (!isRegular(file))
        return refused<Pixels>(notRegular);
    const auto side = static_cast<std::uint32_t>(std::clamp(maxSide, 1, static_cast<int>(mediaLargestSide)));
    RawAnswer answer = state_->ask(MediaJob::Thumbnail, side, file, limits);
    return resultOf(answer, pixelsOf(answer.payload, side));
}

MediaResult<MediaFacts> MediaClient::probe(const UniqueFd& file, const MediaLimits& limits) {
    if (!isRegular(file))
        return refused<MediaFacts>(notRegular);
    RawAnswer answer = state_->ask(MediaJob::Probe, 0, file, limits);
    return resultOf(answer, factsOf(answer.payload));
}

MediaResult<MediaFacts> MediaClient::probe(const std::string& path, const MediaLimits& limits) {
    const UniqueFd file = openForReading(path);
    return file ? probe(file, limits) : refused<MediaFacts>(unreadable);
}

std::string mediaHelperPath() {
    std::error_code error;
    const std::string program = std::filesystem::read_symlink("/proc/self/exe", error).string();
    const std::string folder(parentPath(program));
    for (const char* below : {"", "../bin", "../lib/morvane"}) {
        std::string candidate = standardizedPath(joinPath(joinPath(folder, below), helperName));
        if (::access(candidate.c_str(), X_OK) == 0)
            return candidate;
    }
    return joinPath(MORVANE_HELPER_FOLDER, helperName);
}

}  // namespace morvane
