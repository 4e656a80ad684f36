#include "library_ui/playback.h"

#include "library_ui/picture_view.h"
#include "tests/library_ui/library_fixture.h"
#include "tests/media_maker.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace morvane::test {
namespace {

constexpr int stripes = 8;

/// A clip of 25 frames a second whose frame n shows n as eight black or white stripes, lowest bit at the
/// left.
void makeNumberedVideo(const std::string& path, const std::string& seconds) {
    ffmpeg({"-f", "lavfi", "-i", "color=black:size=320x240:rate=25:duration=" + seconds, "-vf",
            "geq=lum='255*mod(floor(N/pow(2,floor(X/40))),2)':cb=128:cr=128", "-c:v", "libx264", "-preset",
            "ultrafast", "-pix_fmt", "yuv420p", path});
}

/// The number the frame shows; -1 without a picture.
int numberIn(const QImage& frame) {
    if (frame.isNull())
        return -1;
    const double width = frame.height() * 320.0 / 240.0;
    const double left = (frame.width() - width) / 2;
    int number = 0;
    for (int bit = 0; bit < stripes; ++bit) {
        const int x = static_cast<int>(left + width * (bit + 0.5) / stripes);
        number |= (frame.pixelColor(x, frame.height() / 2).lightness() > 128 ? 1 : 0) << bit;
    }
    return number;
}

class PlaybackTest : public testing::Test {
protected:
    PlaybackTest() {
        view_.resize(352, 220);
        view_.show();
        playback_ = std::make_unique<Playback>(view_);
        ready_ = std::make_unique<QSignalSpy>(playback_.get(), &Playback::ready);
        failed_ = std::make_unique<QSignalSpy>(playback_.get(), &Playback::failed);
        clock_ = std::make_unique<QSignalSpy>(playback_.get(), &Playback::clock);
        playing_ = std::make_unique<QSignalSpy>(playback_.get(), &Playback::playingChanged);
    }
    static void SetUpTestSuite() {
        folder_ = std::make_unique<TemporaryFolder>();
        ffmpeg(testAudio("3") + Arguments{path("tone.wav")});
        ffmpeg(testAudio("0.6") + Arguments{path("short.wav")});
        makeNumberedVideo(path("numbers.mp4"), "8");
        writeFile(path("broken.mp4"), "this is no film");
    }
    static void TearDownTestSuite() { folder_.reset(); }
    static std::string path(const std::string& name) { return *folder_ / name; }

    void load(const std::string& name, PreviewMode mode) {
        playback_->load(path(name), mode);
        ASSERT_TRUE(waitUntil([this] { return ready_->count() > 0; })) << name;
    }
    double position() const { return clock_->isEmpty() ? -1 : clock_->last()[0].toDouble(); }

    static std::unique_ptr<TemporaryFolder> folder_;
    PlayerView view_;
    std::unique_ptr<Playback> playback_;
    std::unique_ptr<QSignalSpy> ready_;
    std::unique_ptr<QSignalSpy> failed_;
    std::unique_ptr<QSignalSpy> clock_;
    std::unique_ptr<QSignalSpy> playing_;
};

std::unique_ptr<TemporaryFolder> PlaybackTest::folder_;

TEST_F(PlaybackTest, WithoutAPlayerNothingHappens) {
    EXPECT_FALSE(playback_->hasPlayer());
    playback_->togglePlay();
    playback_->play();
    playback_->pause();
    playback_->seek(3);
    playback_->stopPlayer();
    EXPECT_FALSE(playback_->isPlaying());
    EXPECT_EQ(playing_->count(), 0);
}

TEST_F(PlaybackTest, AudioLoadsPausedAndPlays) {
    load("tone.wav", PreviewMode::Audio);
    EXPECT_NEAR((*ready_)[0][0].toDouble(), 3.0, 0.05);
    EXPECT_FALSE(playback_->isPlaying());
    EXPECT_EQ(playing_->count(), 0);
    playback_->togglePlay();
    EXPECT_TRUE(playback_->isPlaying());
    ASSERT_EQ(playing_->count(), 1);
    EXPECT_TRUE((*playing_)[0][0].toBool());
    ASSERT_TRUE(waitUntil([this] { return position() > 0.5; }))
        << "plays on, with or without an audio device";
    EXPECT_NEAR(clock_->last()[1].toDouble(), 3.0, 0.05);
    playback_->togglePlay();
    EXPECT_FALSE(playback_->isPlaying());
    EXPECT_EQ(playing_->count(), 2);
    EXPECT_TRUE(view_.frame().isNull()) << "audio draws nothing";
}

TEST_F(PlaybackTest, TheEndRewindsToZero) {
    load("short.wav", PreviewMode::Audio);
    playback_->play();
    ASSERT_TRUE(waitUntil([this] { return playing_->count() == 2; }));
    EXPECT_FALSE(playback_->isPlaying());
    EXPECT_TRUE(waitUntil([this] { return position() == 0; }));
    EXPECT_TRUE(playback_->hasPlayer());
    playback_->play();
    EXPECT_TRUE(waitUntil([this] { return position() > 0.15; })) << "plays again from the beginning";
}

TEST_F(PlaybackTest, AVideoShowsItsFirstPictureBeforePlay) {
    load("numbers.mp4", PreviewMode::Video);
    ASSERT_TRUE(waitUntil([this] { return !view_.frame().isNull(); }));
    EXPECT_EQ(numberIn(view_.frame()), 0);
    EXPECT_EQ(view_.frame().size(), view_.framePixels());
    EXPECT_FALSE(playback_->isPlaying());
}

TEST_F(PlaybackTest, SeeksShowExactlyTheirPicture) {
    load("numbers.mp4", PreviewMode::Video);
    for (const int frame : {100, 3, 151, 150, 77, 0, 199}) {
        playback_->seek(frame / 25.0);
        EXPECT_TRUE(waitUntil([&] { return numberIn(view_.frame()) == frame; }))
            << frame << " shows " << numberIn(view_.frame());
    }
    EXPECT_FALSE(playback_->isPlaying());
}

TEST_F(PlaybackTest, PicturesFollowTheViewsSize) {
    load("numbers.mp4", PreviewMode::Video);
    view_.resize(300, 150);
    EXPECT_TRUE(waitUntil([this] { return view_.frame().size() == view_.framePixels(); }));
    EXPECT_EQ(view_.framePixels(), QSize(300, 150));
}

TEST_F(PlaybackTest, WhatCannotBeDecodedFailsOnce) {
    playback_->load(path("broken.mp4"), PreviewMode::Video);
    EXPECT_TRUE(waitUntil([this] { return failed_->count() == 1; }));
    EXPECT_EQ(ready_->count(), 0);
    playback_->load(path("gone.wav"), PreviewMode::Audio);
    EXPECT_TRUE(waitUntil([this] { return failed_->count() == 2; }));
    load("tone.wav", PreviewMode::Audio);
    EXPECT_EQ(failed_->count(), 2);
}

TEST_F(PlaybackTest, NothingOfTheOldClipReachesTheNewOne) {
    load("numbers.mp4", PreviewMode::Video);
    playback_->play();
    ASSERT_TRUE(waitUntil([this] { return numberIn(view_.frame()) > 5; }));
    playback_->stopPlayer();
    EXPECT_FALSE(playback_->hasPlayer());
    EXPECT_TRUE(view_.frame().isNull());
    EXPECT_FALSE(playing_->last()[0].toBool());
    clock_->clear();
    ready_->clear();
    load("tone.wav", PreviewMode::Audio);
    EXPECT_FALSE(playback_->isPlaying());
    EXPECT_TRUE(waitUntil([this] { return clock_->count() >= 3; }));
    for (const auto& tick : *clock_) {
        EXPECT_NEAR(tick[1].toDouble(), 3.0, 0.05);
        EXPECT_EQ(tick[0].toDouble(), 0);
    }
    EXPECT_TRUE(view_.frame().isNull());
}

TEST_F(PlaybackTest, TwoHundredFastSelectionsEndWithTheLast) {
    const char* names[] = {"tone.wav", "numbers.mp4", "broken.mp4", "short.wav"};
    for (int i = 0; i < 200; ++i) {
        const std::string name = names[i % 4];
        playback_->load(path(name), name.ends_with("mp4") ? PreviewMode::Video : PreviewMode::Audio);
        if (i % 3 == 0)
            playback_->play();
        QCoreApplication::processEvents();
    }
    ready_->clear();
    load("numbers.mp4", PreviewMode::Video);
    EXPECT_NEAR(ready_->last()[0].toDouble(), 8.0, 0.1);
    playback_->seek(2);
    EXPECT_TRUE(waitUntil([this] { return numberIn(view_.frame()) == 50; }));
}

}  // namespace
}  // namespace morvane::test
