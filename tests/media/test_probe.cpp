// What the probe says about real files.
#include <sys/stat.h>

#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

#include "media/media_client.h"
#include "tests/media_maker.h"
#include "tests/test_support.h"

namespace morvane::test {

namespace {

class Probe : public testing::Test {
protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<TemporaryFolder>();
        client_ = std::make_unique<MediaClient>();
        ffmpeg(testVideo("25", "2") + testAudio("2") +
               Arguments{"-pix_fmt", "yuv420p", "-c:a", "aac", "-ac", "2", path("av.mp4")});
        ffmpeg(testVideo("25", "1", "100x100") + Arguments{"-frames:v", "1", path("cover.jpg")});
        ffmpeg(testAudio("1", "44100") + Arguments{"-ac", "2", path("stereo.wav")});
    }
    static void TearDownTestSuite() {
        client_.reset();
        folder_.reset();
    }

    static std::string path(const std::string& name) { return *folder_ / name; }
    /// Makes `name` out of av.mp4, nothing coded anew.
    static void remux(const Arguments& how, const std::string& name) {
        ffmpeg(Arguments{"-i", path("av.mp4")} + how + Arguments{"-c", "copy", path(name)});
    }
    static MediaFacts facts(const std::string& name) {
        const auto result = client_->probe(path(name), {});
        EXPECT_EQ(result.outcome, MediaOutcome::Done) << name << ": " << result.reason;
        return result.value.value_or(MediaFacts{});
    }
    static std::string refusal(const std::string& name) {
        const auto result = client_->probe(path(name), {});
        EXPECT_EQ(result.outcome, MediaOutcome::Refused) << name;
        EXPECT_FALSE(result.value) << name;
        return result.reason;
    }
    static MediaTime time(std::int64_t value, std::int32_t timescale) { return {value, timescale}; }

    static inline std::unique_ptr<TemporaryFolder> folder_;
    static inline std::unique_ptr<MediaClient> client_;
};

TEST_F(Probe, FrameDurationsAndDurationsAreExactFractions) {
    struct Row {
        std::string rate;
        MediaTime frame;
        MediaTime duration;
    };
    for (const Row& row :
         {Row{"24000/1001", time(1001, 24000), time(1001, 500)}, Row{"24", time(1, 24), time(2, 1)},
          Row{"25", time(1, 25), time(2, 1)}, Row{"30000/1001", time(1001, 30000), time(1001, 500)},
          Row{"50", time(1, 50), time(2, 1)}, Row{"60000/1001", time(1001, 60000), time(1001, 500)}}) {
        for (const char* name : {"rate.mov", "rate.mp4", "rate.m4v"}) {
            ffmpeg(testVideo(row.rate, "2") +
                   Arguments{"-pix_fmt", "yuv420p", "-c:v", "libx264", path(name)});
            const MediaFacts found = facts(name);
            EXPECT_EQ(found.frameDuration, row.frame) << name << " " << row.rate;
            EXPECT_EQ(found.duration, row.duration) << name << " " << row.rate;
        }
    }
}

TEST_F(Probe, VideoWithAudio) {
    const MediaFacts found = facts("av.mp4");
    EXPECT_TRUE(found.video);
    EXPECT_TRUE(found.audio);
    EXPECT_EQ(found.width, 320);
    EXPECT_EQ(found.height, 240);
    EXPECT_EQ(found.rate, 48000);
    EXPECT_EQ(found.channels, 2);
    EXPECT_EQ(found.frameDuration, time(1, 25));
}

TEST_F(Probe, VideoAloneHasNoSound) {
    remux({"-map", "0:v"}, "silent.mov");
    const MediaFacts found = facts("silent.mov");
    EXPECT_TRUE(found.video);
    EXPECT_FALSE(found.audio);
    EXPECT_EQ(found.rate, 0);
    EXPECT_EQ(found.channels, 0);
}

TEST_F(Probe, AudioAloneHasNoPicture) {
    remux({"-map", "0:a"}, "sound.mp4");
    const MediaFacts found = facts("sound.mp4");
    EXPECT_FALSE(found.video);
    EXPECT_TRUE(found.audio);
    EXPECT_EQ(found.width, 0);
    EXPECT_EQ(found.height, 0);
    EXPECT_EQ(found.frameDuration, time(0, 1));
}

TEST_F(Probe, EveryAudioContainerGivesItsExactDuration) {
    for (const char* name : {"a.wav", "a.aif", "a.aiff", "a.caf", "a.m4a"}) {
        ffmpeg(testAudio("1", "44100") + Arguments{"-ac", "2", path(name)});
        const MediaFacts found = facts(name);
        EXPECT_TRUE(found.audio && !found.video) << name;
        EXPECT_EQ(found.duration, time(1, 1)) << name;
        EXPECT_EQ(found.rate, 44100) << name;
        EXPECT_EQ(found.channels, 2) << name;
    }
}

// Whole coded frames: 1024 samples each in AAC, 1152 in MP3.
TEST_F(Probe, FilesWithoutAStatedDurationAreCounted) {
    ffmpeg(testAudio("10", "48000") + Arguments{"-ac", "1", path("a.aac")});
    const MediaFacts aac = facts("a.aac");
    EXPECT_EQ(aac.duration.value * 48000 % (1024 * std::int64_t{aac.duration.timescale}), 0);
    EXPECT_NEAR(static_cast<double>(aac.duration.value) / aac.duration.timescale, 10.0, 0.1);
    EXPECT_EQ(aac.channels, 1);

    ffmpeg(testAudio("10", "48000") +
           Arguments{"-ac", "2", "-q:a", "4", "-write_xing", "0", path("plain.mp3")});
    ffmpeg(testAudio("10", "48000") + Arguments{"-ac", "2", "-q:a", "4", path("stated.mp3")});
    const MediaFacts counted = facts("plain.mp3");
    EXPECT_EQ(counted.duration.value * 48000 % (1152 * std::int64_t{counted.duration.timescale}), 0);
    EXPECT_NEAR(static_cast<double>(counted.duration.value) / counted.duration.timescale, 10.0, 0.1);
    EXPECT_NEAR(
        static_cast<double>(facts("stated.mp3").duration.value) / facts("stated.mp3").duration.timescale,
        10.0, 0.1);
}

TEST_F(Probe, MonoAndStereoOnly) {
    ffmpeg(testAudio("1") + Arguments{"-ac", "1", path("mono.wav")});
    EXPECT_EQ(facts("mono.wav").channels, 1);
    ffmpeg(
        {"-f", "lavfi", "-i", "anullsrc=channel_layout=5.1:sample_rate=48000", "-t", "1", path("six.wav")});
    EXPECT_EQ(refusal("six.wav"), "声道数不是 1 或 2");
    ffmpeg(Arguments{"-i", path("six.wav"), "-c:a", "aac", path("six.m4a")});
    EXPECT_EQ(refusal("six.m4a"), "声道数不是 1 或 2");
    ffmpeg(Arguments{"-i", path("av.mp4"), "-i", path("six.wav"), "-map", "0:v", "-map", "1:a", "-c:v",
                     "copy", path("six.mov")});
    EXPECT_EQ(refusal("six.mov"), "声道数不是 1 或 2");
}

TEST_F(Probe, TimecodeTracksAreLeftOut) {
    remux({"-timecode", "01:00:00:00"}, "timecode.mov");
    EXPECT_EQ(refusal("timecode.mov"), "含时间码轨道");
    remux({"-timecode", "01:00:00:00"}, "timecode.mp4");
    EXPECT_EQ(refusal("timecode.mp4"), "含时间码轨道");
}

TEST_F(Probe, MoreThanOneTrackOfAKindIsLeftOut) {
    remux({"-map", "0:v", "-map", "0:a", "-map", "0:a"}, "two-sounds.mov");
    EXPECT_EQ(refusal("two-sounds.mov"), "多条音频轨道");
    remux({"-map", "0:v", "-map", "0:v", "-map", "0:a"}, "two-pictures.mov");
    EXPECT_EQ(refusal("two-pictures.mov"), "多条视频轨道");
}

TEST_F(Probe, CoverArtIsNoVideo) {
    for (const char* name : {"cover.m4a", "cover.mp3"}) {
        ffmpeg(Arguments{"-i", path("stereo.wav"), "-i", path("cover.jpg"), "-map", "0", "-map", "1", "-c:v",
                         "copy", "-disposition:v", "attached_pic", path(name)});
        const MediaFacts found = facts(name);
        EXPECT_TRUE(found.audio) << name;
        EXPECT_FALSE(found.video) << name;
        EXPECT_EQ(found.width, 0) << name;
    }
}

TEST_F(Probe, VariableRateGivesItsShortestFrame) {
    ffmpeg(testVideo("25", "2") + Arguments{"-vf", "select='not(eq(mod(n,5),1)+eq(mod(n,7),3))'", "-vsync",
                                            "vfr", "-pix_fmt", "yuv420p", path("vfr.mp4")});
    EXPECT_EQ(facts("vfr.mp4").frameDuration, time(1, 25));
}

TEST_F(Probe, FragmentedFilesAreReadToTheirEnd) {
    ffmpeg(testVideo("10", "100") + Arguments{"-pix_fmt", "yuv420p", "-g", "50", "-bf", "0", "-movflags",
                                              "frag_keyframe+empty_moov", path("fragments.mp4")});
    const MediaFacts found = facts("fragments.mp4");
    EXPECT_EQ(found.duration, time(100, 1));
    EXPECT_EQ(found.frameDuration, time(1, 10));
}

TEST_F(Probe, ASingleFrameHasADuration) {
    ffmpeg(testVideo("30", "1") + Arguments{"-frames:v", "1", "-pix_fmt", "yuv420p", path("one.mov")});
    EXPECT_EQ(facts("one.mov").duration, time(1, 30));
    EXPECT_EQ(facts("one.mov").frameDuration, time(1, 30));
}

TEST_F(Probe, WidePixelsCountAsShown) {
    ffmpeg(testVideo("25", "1", "720x576") +
           Arguments{"-vf", "setsar=64/45", "-pix_fmt", "yuv420p", path("dv.mov")});
    EXPECT_EQ(facts("dv.mov").width, 1024);
    EXPECT_EQ(facts("dv.mov").height, 576);
}

TEST_F(Probe, NothingToPlayIsLeftOut) {
    ffmpeg({"-f", "lavfi", "-i", "anullsrc", "-t", "0", path("zero.wav")});
    EXPECT_EQ(refusal("zero.wav"), "时长为零");
    writeFile(path("subtitle.srt"), "1\n00:00:00,000 --> 00:00:01,000\nx\n");
    ffmpeg(Arguments{"-i", path("subtitle.srt"), "-c:s", "mov_text", path("text-only.mp4")});
    EXPECT_EQ(refusal("text-only.mp4"), "没有视频或音频轨道");
}

TEST_F(Probe, BrokenFilesAreLeftOut) {
    const std::string whole = readAll(path("av.mp4"));
    writeFile(path("cut.mp4"), whole.substr(0, whole.size() / 2));
    EXPECT_EQ(refusal("cut.mp4"), "无法识别的媒体文件");
    remux({"-movflags", "faststart"}, "index-first.mp4");
    const std::string indexFirst = readAll(path("index-first.mp4"));
    writeFile(path("cut-after-index.mp4"), indexFirst.substr(0, indexFirst.size() - 1000));
    EXPECT_EQ(refusal("cut-after-index.mp4"), "文件不完整");
    writeFile(path("empty.mov"), "");
    EXPECT_EQ(refusal("empty.mov"), "无法识别的媒体文件");
    writeFile(path("text.mp4"), "这是一个文本文件，只是改了名字。\n");
    EXPECT_EQ(refusal("text.mp4"), "无法识别的媒体文件");
}

// A container outside the list may be opened by the library under any name; here it is not.
TEST_F(Probe, OtherContainersAreLeftOutUnderAnyName) {
    ffmpeg(Arguments{"-i", path("av.mp4"), "-c", "copy", path("other.mkv")});
    std::filesystem::rename(path("other.mkv"), path("other.mp4"));
    EXPECT_EQ(refusal("other.mp4"), "无法识别的媒体文件");
    writeFile(path("list.mp4"), "ffconcat version 1.0\nfile '" + path("av.mp4") + "'\n");
    EXPECT_EQ(refusal("list.mp4"), "无法识别的媒体文件");
}

TEST_F(Probe, OnlyRegularFilesAreOpened) {
    ASSERT_EQ(::mkfifo(path("pipe.mp4").c_str(), 0600), 0);
    EXPECT_EQ(refusal("pipe.mp4"), "不是普通文件");
    std::filesystem::create_directory(path("folder.mp4"));
    EXPECT_EQ(refusal("folder.mp4"), "不是普通文件");
    std::filesystem::create_symlink(path("av.mp4"), path("link.mp4"));
    EXPECT_EQ(refusal("link.mp4"), "无法打开文件");
    EXPECT_EQ(refusal("missing.mp4"), "无法打开文件");
}

TEST_F(Probe, NamesAreBytes) {
    for (const std::string& name :
         std::vector<std::string>{"a b & < > \" ' %20.mp4", "素材\n二.mp4", "\xff\xfe.mp4"}) {
        std::filesystem::copy_file(path("av.mp4"), path(name));
        EXPECT_TRUE(facts(name).video);
    }
}

}  // namespace

}  // namespace morvane::test
