#include "media/helper/probe.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/avstring.h>
}
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <memory>
#include <numeric>

#include "media/helper/refusal.h"

namespace morvane {

namespace {

constexpr int readBufferBytes = 64 * 1024;
constexpr const char* allowedContainers = "mov,mp4,m4a,3gp,3g2,mj2,wav,aiff,caf,aac,mp3";

/// The demuxer's view of the descriptor: positioned reads only.
struct FileReader {
    int file = -1;
    std::int64_t offset = 0;
    std::int64_t size = 0;
};

int readPiece(void* opaque, std::uint8_t* buffer, int count) {
    auto& reader = *static_cast<FileReader*>(opaque);
    ssize_t got = 0;
    do {
        got = ::pread(reader.file, buffer, static_cast<std::size_t>(count), reader.offset);
    } while (got < 0 && errno == EINTR);
    if (got < 0)
        return AVERROR(errno);
    if (got == 0)
        return AVERROR_EOF;
    reader.offset += got;
    return static_cast<int>(got);
}

std::int64_t seekTo(void* opaque, std::int64_t offset, int whence) {
    auto& reader = *static_cast<FileReader*>(opaque);
    switch (whence & ~AVSEEK_FORCE) {
        case AVSEEK_SIZE:
            return reader.size;
        case SEEK_SET:
            break;
        case SEEK_CUR:
            offset += reader.offset;
            break;
        case SEEK_END:
            offset += reader.size;
            break;
        default:
            return AVERROR(EINVAL);
    }
    if (offset < 0)
        return AVERROR(EINVAL);
    reader.offset = offset;
    return offset;
}

int refuseOtherFiles(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EPERM);
}

struct IoDeleter {
    void operator()(AVIOContext* io) const {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};
struct FormatDeleter {
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
};
struct PacketDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

/// One opened file and what its header said before anything was guessed.
class OpenedMedia {
public:
    explicit OpenedMedia(int file) {
        struct stat facts {};
        if (::fstat(file, &facts) != 0)
            throw Refusal("无法读取文件");
        reader_ = {file, 0, facts.st_size};
        auto* buffer = static_cast<unsigned char*>(av_malloc(readBufferBytes));
        io_.reset(avio_alloc_context(buffer, readBufferBytes, 0, &reader_, readPiece, nullptr, seekTo));
        AVFormatContext* context = avformat_alloc_context();
        if (!io_ || context == nullptr)
            throw Refusal("内存不足");
        context->pb = io_.get();
        context->flags |= AVFMT_FLAG_CUSTOM_IO;
        context->io_open = refuseOtherFiles;
        AVDictionary* options = nullptr;
        av_dict_set(&options, "format_whitelist", allowedContainers, 0);
        const int result = avformat_open_input(&context, nullptr, nullptr, &options);
        av_dict_free(&options);
        if (result < 0)
            throw Refusal("无法识别的媒体文件");
        format_.reset(context);
    }

    AVFormatContext* format() const { return format_.get(); }
    std::int64_t size() const { return reader_.size; }

private:
    FileReader reader_;
    std::unique_ptr<AVIOContext, IoDeleter> io_;
    std::unique_ptr<AVFormatContext, FormatDeleter> format_;
};

struct Tracks {
    AVStream* video = nullptr;
    AVStream* audio = nullptr;
};

Tracks plainTracks(const AVFormatContext* format) {
    Tracks tracks;
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        AVStream* stream = format->streams[i];
        if (stream->codecpar->codec_tag == MKTAG('t', 'm', 'c', 'd'))
            throw Refusal("含时间码轨道");
        const auto type = stream->codecpar->codec_type;
        if (type == AVMEDIA_TYPE_VIDEO && (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0) {
            if (tracks.video != nullptr)
                throw Refusal("多条视频轨道");
            tracks.video = stream;
        } else if (type == AVMEDIA_TYPE_AUDIO) {
            if (tracks.audio != nullptr)
                throw Refusal("多条音频轨道");
            tracks.audio = stream;
        }
    }
    if (tracks.video == nullptr && tracks.audio == nullptr)
        throw Refusal("没有视频或音频轨道");
    return tracks;
}

struct ExactTime {
    std::int64_t value = 0;
    std::int32_t timescale = 1;
};

/// count * unit in lowest terms.
ExactTime exactTime(std::int64_t count, AVRational unit) {
    if (unit.num <= 0 || unit.den <= 0 || count > std::numeric_limits<std::int64_t>::max() / unit.num)
        throw Refusal("时长无法精确表示");
    const std::int64_t value = count * unit.num;
    const std::int64_t divisor = std::gcd(value, static_cast<std::int64_t>(unit.den));
    return {value / divisor, static_cast<std::int32_t>(unit.den / divisor)};
}

bool isLonger(const ExactTime& left, const ExactTime& right) {
    return av_compare_ts(left.value, {1, left.timescale}, right.value, {1, right.timescale}) > 0;
}

/// Reads the whole file without keeping anything; returns the sum of the packets' durations of
/// `counted` in its time base. With every track discarded, only the sample tables are completed
/// (the fragments of a fragmented file).
std::int64_t countPackets(AVFormatContext* format, const AVStream* counted) {
    const std::unique_ptr<AVPacket, PacketDeleter> packet(av_packet_alloc());
    if (!packet)
        throw Refusal("内存不足");
    std::int64_t total = 0;
    while (av_read_frame(format, packet.get()) >= 0) {
        if (counted != nullptr && packet->stream_index == counted->index && packet->duration > 0)
            total += packet->duration;
        av_packet_unref(packet.get());
    }
    return total;
}

bool isQuickTimeFamily(const AVFormatContext* format) {
    return av_match_name("mov", format->iformat->name) != 0;
}

void completeSampleTables(AVFormatContext* format) {
    for (unsigned i = 0; i < format->nb_streams; ++i)
        format->streams[i]->discard = AVDISCARD_ALL;
    countPackets(format, nullptr);
}

void refuseSamplesBeyondEnd(AVStream* stream, std::int64_t fileSize) {
    const int count = avformat_index_get_entries_count(stream);
    for (int i = 0; i < count; ++i) {
        const AVIndexEntry* entry = avformat_index_get_entry(stream, i);
        if (entry->pos > fileSize - entry->size)
            throw Refusal("文件不完整");
    }
}

/// Plain PCM knows how many bytes its duration must have.
void refuseShortPcm(const AVStream* stream, std::int64_t fileSize) {
    const int block = stream->codecpar->block_align;
    const bool isPcm = stream->codecpar->codec_id >= AV_CODEC_ID_FIRST_AUDIO &&
                       stream->codecpar->codec_id < AV_CODEC_ID_ADPCM_IMA_QT;
    if (isPcm && block > 0 && stream->duration > fileSize / block)
        throw Refusal("文件不完整");
}

/// The shortest distance between two samples of the track; 0 when the table does not tell.
std::int64_t shortestStep(AVStream* stream) {
    const int count = avformat_index_get_entries_count(stream);
    std::int64_t shortest = 0;
    for (int i = 1; i < count; ++i) {
        const std::int64_t step = avformat_index_get_entry(stream, i)->timestamp -
                                  avformat_index_get_entry(stream, i - 1)->timestamp;
        if (step > 0 && (shortest == 0 || step < shortest))
            shortest = step;
    }
    return shortest;
}

ExactTime frameDurationOf(AVStream* stream, AVRational statedRate) {
    if (statedRate.num > 0 && statedRate.den > 0)
        return exactTime(1, av_inv_q(statedRate));
    if (const std::int64_t step = shortestStep(stream); step > 0)
        return exactTime(step, stream->time_base);
    if (stream->avg_frame_rate.num > 0 && stream->avg_frame_rate.den > 0)
        return exactTime(1, av_inv_q(stream->avg_frame_rate));
    throw Refusal("没有确定的帧时长");
}

ExactTime durationOf(const OpenedMedia& media, const Tracks& tracks) {
    ExactTime longest;
    for (AVStream* stream : {tracks.video, tracks.audio}) {
        if (stream == nullptr || stream->duration == AV_NOPTS_VALUE || stream->duration <= 0)
            continue;
        const ExactTime time = exactTime(stream->duration, stream->time_base);
        if (isLonger(time, longest))
            longest = time;
    }
    if (longest.value <= 0)
        throw Refusal("时长为零");
    if (tracks.audio != nullptr && tracks.video == nullptr)
        refuseShortPcm(tracks.audio, media.size());
    return longest;
}

void describeVideo(AVStream* stream, AVRational statedRate, ProbeRecord& record) {
    const AVCodecParameters& parameters = *stream->codecpar;
    if (parameters.width <= 0 || parameters.height <= 0)
        throw Refusal("没有画面尺寸");
    record.video = 1;
    record.width = parameters.width;
    record.height = parameters.height;
    AVRational aspect =
        stream->sample_aspect_ratio.num > 0 ? stream->sample_aspect_ratio : parameters.sample_aspect_ratio;
    if (aspect.num > 0 && aspect.den > 0)
        record.width = av_rescale(parameters.width, aspect.num, aspect.den);
    const ExactTime frame = frameDurationOf(stream, statedRate);
    record.frameDurationValue = frame.value;
    record.frameDurationTimescale = frame.timescale;
}

void describeAudio(const AVStream* stream, ProbeRecord& record) {
    const AVCodecParameters& parameters = *stream->codecpar;
    const int channels = parameters.ch_layout.nb_channels;
    if (channels != 1 && channels != 2)
        throw Refusal("声道数不是 1 或 2");
    if (parameters.sample_rate <= 0)
        throw Refusal("没有采样率");
    record.audio = 1;
    record.rate = parameters.sample_rate;
    record.channels = channels;
}

}  // namespace

ProbeRecord probeMedia(int file) {
    const OpenedMedia media(file);
    AVFormatContext* format = media.format();
    plainTracks(format);
    // Rates stated by the sample table are exact; those found later by reading are guesses.
    const unsigned statedStreams = format->nb_streams;
    const Tracks stated = plainTracks(format);
    const AVRational statedRate = stated.video != nullptr ? stated.video->r_frame_rate : AVRational{0, 1};
    if (avformat_find_stream_info(format, nullptr) < 0)
        throw Refusal("无法读取媒体内容");
    const Tracks tracks = format->nb_streams == statedStreams ? stated : plainTracks(format);

    if (isQuickTimeFamily(format)) {
        completeSampleTables(format);
        for (AVStream* stream : {tracks.video, tracks.audio}) {
            if (stream != nullptr)
                refuseSamplesBeyondEnd(stream, media.size());
        }
    } else if (tracks.audio != nullptr && format->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE) {
        if (av_seek_frame(format, -1, 0, AVSEEK_FLAG_BYTE) < 0)
            throw Refusal("无法读取媒体内容");
        tracks.audio->duration = countPackets(format, tracks.audio);
    }

    ProbeRecord record;
    const ExactTime duration = durationOf(media, tracks);
    record.durationValue = duration.value;
    record.durationTimescale = duration.timescale;
    if (tracks.video != nullptr)
        describeVideo(tracks.video, statedRate, record);
    if (tracks.audio != nullptr)
        describeAudio(tracks.audio, record);
    return record;
}

}  // namespace morvane
