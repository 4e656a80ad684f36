// Playback without a display and without a sound card.
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "platform/media_player.h"
#include "tests/media_maker.h"
#include "tests/test_support.h"

namespace morvane::test {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int bars = 10;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// A video of 25 frames a second whose frame n shows the binary digits of n as black and white bars.
Arguments numberedVideo(const std::string& seconds) {
    return {"-f", "lavfi", "-i",
            "color=black:size=40x4:rate=25:duration=" + seconds +
                ",format=gray,geq=lum='if(mod(floor(N/pow(2,floor(X*10/W))),2),235,16)'," +
                "scale=640:360:flags=neighbor,setsar=1"};
}

/// The number that a picture of numberedVideo shows; -1 when a bar is neither black nor white.
int numberIn(const QImage& picture) {
    if (picture.isNull())
        return -1;
    int number = 0;
    for (int bar = 0; bar < bars; ++bar) {
        const int x = picture.width() * (2 * bar + 1) / (2 * bars);
        const int level = qGray(picture.pixel(x, picture.height() / 2));
        if (level > 60 && level < 190)
            return -1;
        number |= (level >= 190 ? 1 : 0) << bar;
    }
    return number;
}

/// One player and what it has said so far.
struct Listener {
    explicit Listener(QSize frameSize = QSize(320, 180)) {
        player.setFrameSize(frameSize);
        QObject::connect(&player, &MediaPlayer::ready, [this](double seconds) {
            ++readyCount;
            duration = seconds;
        });
        QObject::connect(&player, &MediaPlayer::failed, [this] { ++failedCount; });
        QObject::connect(&player, &MediaPlayer::ended, [this] { ++endedCount; });
        QObject::connect(&player, &MediaPlayer::frameReady, [this] { ++frameCount; });
        QObject::connect(&player, &MediaPlayer::positionChanged, [this](double seconds) {
            ++positionCount;
            mostPosition = std::max(mostPosition, seconds);
        });
    }
    bool load(const std::string& path, PlayerContent content = PlayerContent::AudioAndVideo) {
        player.load(path, content);
        return waitUntil([this] { return readyCount > 0 || failedCount > 0; }) && failedCount == 0;
    }
    bool shows(int number) {
        return waitUntil([this, number] { return numberIn(player.frame()) == number; }, 10);
    }

    MediaPlayer player;
    int readyCount = 0;
    int failedCount = 0;
    int endedCount = 0;
    int frameCount = 0;
    int positionCount = 0;
    double duration = 0;
    double mostPosition = 0;
};

class Player : public testing::Test {
protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<TemporaryFolder>();
        ffmpeg(numberedVideo("12") + testAudio("12") +
               Arguments{"-pix_fmt", "yuv420p", "-c:v", "libx264", "-qp", "12", "-c:a", "aac",
                         path("long.mp4")});
        ffmpeg(Arguments{"-i", path("long.mp4"), "-t", "0.8", "-c:v", "libx264", "-qp", "12",
                         path("short.mp4")});
        ffmpeg(testAudio("1.5") + Arguments{path("tone.wav")});
    }
    static void TearDownTestSuite() { folder_.reset(); }

    static std::string path(const std::string& name) { return *folder_ / name; }

    static inline std::unique_ptr<TemporaryFolder> folder_;
};

TEST_F(Player, ShowsTheFirstPicturePausedAtOnce) {
    Listener listener;
    ASSERT_TRUE(listener.load(path("long.mp4")));
    EXPECT_NEAR(listener.duration, 12.0, 0.1);
    EXPECT_NEAR(listener.player.duration(), 12.0, 0.1);
    EXPECT_TRUE(listener.shows(0));
    EXPECT_EQ(listener.player.frame().size(), QSize(320, 180));
    EXPECT_FALSE(listener.player.isPlaying());
    EXPECT_EQ(listener.readyCount, 1);
}

TEST_F(Player, PlaysAndPauses) {
    Listener listener;
    ASSERT_TRUE(listener.load(path("long.mp4")));
    listener.player.play();
    EXPECT_TRUE(listener.player.isPlaying());
    ASSERT_TRUE(waitUntil([&] { return numberIn(listener.player.frame()) > 10; }));
    listener.player.pause();
    EXPECT_FALSE(listener.player.isPlaying());
    EXPECT_GT(listener.player.position(), 0.1);
    // Once paused the picture stays: after five more looks at the clock it is the same one.
    const int counted = listener.positionCount;
    ASSERT_TRUE(waitUntil([&] { return listener.positionCount >= counted + 2; }));
    const int shown = numberIn(listener.player.frame());
    ASSERT_TRUE(waitUntil([&] { return listener.positionCount >= counted + 7; }));
    EXPECT_EQ(numberIn(listener.player.frame()), shown);
    EXPECT_EQ(listener.endedCount, 0);
}

TEST_F(Player, TheClockTicksFiveTimesASecond) {
    Listener listener;
    ASSERT_TRUE(listener.load(path("long.mp4")));
    listener.player.play();
    const auto start = Clock::now();
    const int counted = listener.positionCount;
    ASSERT_TRUE(waitUntil([&] { return listener.positionCount >= counted + 10; }));
    EXPECT_GT(secondsSince(start), 1.7);
    EXPECT_NEAR(listener.player.position(), secondsSince(start), 1.0);
}

TEST_F(Player, SeeksToTheExactPicture) {
    struct Kind {
        std::string name;
        Arguments coding;
    };
    const Arguments h264{"-pix_fmt", "yuv420p", "-c:v", "libx264", "-qp", "12"};
    for (const Kind& kind :
         {Kind{"a.mp4", h264 + Arguments{"-g", "250"}}, Kind{"a.mov", h264},
          Kind{"a.mkv", h264 + Arguments{"-g", "50"}}, Kind{"a.m4v", h264},
          Kind{"a.avi", {"-c:v", "mpeg4", "-q:v", "2"}},
          Kind{"a.webm", {"-pix_fmt", "yuv420p", "-c:v", "libvpx", "-deadline", "realtime", "-b:v", "4M"}},
          Kind{"a.mts", h264 + Arguments{"-g", "25"}}, Kind{"a.m2ts", h264 + Arguments{"-g", "12"}},
          Kind{"long-group.mts", h264 + Arguments{"-g", "250"}}}) {
        ffmpeg(numberedVideo("12") + kind.coding + Arguments{path(kind.name)});
        Listener listener;
        ASSERT_TRUE(listener.load(path(kind.name))) << kind.name;
        EXPECT_TRUE(listener.shows(0)) << kind.name;
        for (const int frame : {100, 7, 299 - 1, 63, 64, 0, 251}) {
            // The middle of a frame's time: nothing to round.
            listener.player.seek((frame + 0.5) / 25.0);
            EXPECT_TRUE(listener.shows(frame))
                << kind.name << ": frame " << frame << " shows " << numberIn(listener.player.frame());
        }
        listener.player.seek(4.0);
        EXPECT_TRUE(listener.shows(100)) << kind.name << ": on the boundary";
    }
}

TEST_F(Player, ALaterSeekReplacesAnEarlierOne) {
    Listener listener;
    ASSERT_TRUE(listener.load(path("long.mp4")));
    for (int frame = 0; frame < 250; frame += 5)
        listener.player.seek((frame + 0.5) / 25.0);
    EXPECT_TRUE(listener.shows(245));
    EXPECT_TRUE(waitUntil([&] { return std::abs(listener.player.position() - 245.0 / 25.0) < 0.05; }))
        << listener.player.position();
}

TEST_F(Player, SeeksAreBroughtIntoTheFile) {
    Listener listener;
    ASSERT_TRUE(listener.load(path("short.mp4")));
    listener.player.seek(-5);
    EXPECT_TRUE(listener.shows(0));
    listener.player.seek(1000);
    EXPECT_TRUE(listener.shows(19)) << "the last picture";
    EXPECT_LE(listener.player.position(), listener.duration);
    listener.player.seek(0.02);
    EXPECT_TRUE(listener.shows(0));
}

TEST_F(Player, ReachesTheEndPausedAndStartsAgainAfterASeek) {
    Listener listener;
    ASSERT_TRUE(listener.load(path("short.mp4")));
    listener.player.play();
    ASSERT_TRUE(waitUntil([&] { return listener.endedCount == 1; }));
    EXPECT_FALSE(listener.player.isPlaying());
    EXPECT_LE(listener.mostPosition, listener.duration);
    EXPECT_TRUE(listener.shows(19)) << "the last picture";
    listener.player.pause();
    listener.player.seek(0);
    EXPECT_TRUE(listener.shows(0));
    listener.player.play();
    EXPECT_TRUE(listener.player.isPlaying());
    ASSERT_TRUE(waitUntil([&] { return listener.endedCount == 2; }));
    EXPECT_EQ(listener.failedCount, 0);
}

TEST_F(Player, SoundPlaysSilentlyWithoutADevice) {
    Listener listener;
    ASSERT_TRUE(listener.load(path("tone.wav"), PlayerContent::AudioOnly));
    EXPECT_NEAR(listener.duration, 1.5, 0.01);
    listener.player.setVolume(0.5);
    const auto start = Clock::now();
    listener.player.play();
    ASSERT_TRUE(waitUntil([&] { return listener.endedCount == 1; }));
    // In its own time; what the silent device still holds at the end is not waited for.
    EXPECT_GT(secondsSince(start), 0.9);
    EXPECT_EQ(listener.frameCount, 0);
}

TEST_F(Player, EveryListedSoundPlays) {
    for (const char* name : {"a.wav", "a.mp3", "a.m4a", "a.aac", "a.aif", "a.aiff", "a.flac", "a.ogg",
                             "a.opus", "a.wma", "a.caf"}) {
        ffmpeg(testAudio("1") + Arguments{path(name)});
        Listener listener;
        EXPECT_TRUE(listener.load(path(name), PlayerContent::AudioOnly)) << name;
        EXPECT_NEAR(listener.duration, 1.0, 0.2) << name;
    }
}

TEST_F(Player, CoverArtOfSoundIsNoPicture) {
    ffmpeg(testVideo("25", "1", "100x100") + Arguments{"-frames:v", "1", path("cover.jpg")});
    ffmpeg(Arguments{"-i", path("tone.wav"), "-i", path("cover.jpg"), "-map", "0", "-map", "1", "-c:v",
                     "copy", "-disposition:v", "attached_pic", path("cover.mp3")});
    Listener listener;
    ASSERT_TRUE(listener.load(path("cover.mp3"), PlayerContent::AudioOnly));
    listener.player.play();
    ASSERT_TRUE(waitUntil([&] { return listener.endedCount == 1; }));
    EXPECT_EQ(listener.frameCount, 0);
}

TEST_F(Player, PicturesKeepTheirShapeAtEverySize) {
    Listener listener(QSize(300, 300));
    ASSERT_TRUE(listener.load(path("long.mp4")));
    ASSERT_TRUE(waitUntil([&] { return listener.frameCount > 0; }));
    listener.player.seek(127.5 / 25.0);
    const auto level = [&](int x, int y) { return qGray(listener.player.frame().pixel(x, y)); };
    ASSERT_TRUE(waitUntil([&] { return level(15, 150) > 190; }));
    EXPECT_LT(level(15, 50), 20) << "black above";
    EXPECT_LT(level(15, 250), 20) << "black below";
    EXPECT_GT(level(15, 75), 190);
    EXPECT_GT(level(15, 225), 190);
    for (const QSize size : {QSize(33, 17), QSize(800, 200), QSize(1, 1), QSize(1280, 720)}) {
        listener.player.setFrameSize(size);
        EXPECT_TRUE(waitUntil([&] { return listener.player.frame().size() == size; })) << size.width();
    }
    EXPECT_EQ(numberIn(listener.player.frame()), 127);
}

TEST_F(Player, TurnedVideoStandsUpright) {
    ffmpeg({"-f", "lavfi", "-i", "color=white:size=160x160:rate=25:duration=1", "-f", "lavfi", "-i",
            "color=gray:size=160x160:rate=25:duration=1", "-filter_complex", "hstack", "-pix_fmt", "yuv420p",
            path("flat.mov")});
    for (const char* turn : {"90", "180", "270"}) {
        ffmpeg(Arguments{"-i", path("flat.mov"), "-c", "copy", "-metadata:s:v", std::string("rotate=") + turn,
                         path("turned.mov")});
        // ffmpeg turns pictures when it decodes them.
        ffmpeg(Arguments{"-i", path("turned.mov"), "-frames:v", "1", path("upright.png")});
        const QImage upright(QString::fromStdString(path("upright.png")));
        ASSERT_EQ(upright.width() == 160, std::string(turn) != "180");
        Listener listener(upright.size());
        ASSERT_TRUE(listener.load(path("turned.mov")));
        ASSERT_TRUE(waitUntil([&] { return listener.frameCount > 0; }));
        const QImage found = listener.player.frame();
        for (const QPoint point :
             {QPoint(10, 10), QPoint(upright.width() - 10, 10), QPoint(10, upright.height() - 10),
              QPoint(upright.width() - 10, upright.height() - 10)})
            EXPECT_NEAR(qGray(found.pixel(point)), qGray(upright.pixel(point)), 10) << turn;
    }
}

TEST_F(Player, WhatCannotBePlayedFails) {
    writeFile(path("text.mp4"), "没有视频");
    writeFile(path("empty.mp4"), "");
    const std::string whole = readAll(path("long.mp4"));
    writeFile(path("cut.mp4"), whole.substr(0, whole.size() / 3));
    writeFile(path("list.mp4"), "#EXTM3U\n" + path("long.mp4") + "\n");
    writeFile(path("concat.mp4"), "ffconcat version 1.0\nfile '" + path("long.mp4") + "'\n");
    writeFile(path("edl.mp4"), "# mpv EDL v0\n" + path("long.mp4") + "\n");
    // A container in order whose pictures and sounds are noise.
    ffmpeg(
        Arguments{"-i", path("short.mp4"), "-an", "-c", "copy", "-movflags", "faststart", path("noise.mp4")});
    std::string noise = readAll(path("noise.mp4"));
    std::minstd_rand random(1);
    std::generate(noise.begin() + static_cast<std::ptrdiff_t>(noise.find("mdat") + 4), noise.end(),
                  [&random] { return static_cast<char>(random() >> 8); });
    writeFile(path("noise.mp4"), noise);
    ASSERT_EQ(::mkfifo(path("pipe.mp4").c_str(), 0600), 0);
    std::filesystem::create_symlink(path("long.mp4"), path("link.mp4"));
    std::filesystem::create_directory(path("folder.mp4"));
    for (const char* name : {"text.mp4", "empty.mp4", "cut.mp4", "list.mp4", "concat.mp4", "edl.mp4",
                             "noise.mp4", "pipe.mp4", "link.mp4", "folder.mp4", "missing.mp4"}) {
        Listener listener;
        EXPECT_FALSE(listener.load(path(name))) << name;
        EXPECT_EQ(listener.failedCount, 1) << name;
        EXPECT_EQ(listener.readyCount, 0) << name;
        listener.player.play();
        EXPECT_FALSE(listener.player.isPlaying()) << name;
    }
}

TEST_F(Player, TheShortestFilesAreShown) {
    ffmpeg(numberedVideo("1") + Arguments{"-frames:v", "1", "-pix_fmt", "yuv420p", path("one.mov")});
    ffmpeg(testAudio("0.03") + Arguments{path("click.wav")});
    Listener one;
    ASSERT_TRUE(one.load(path("one.mov")));
    EXPECT_TRUE(one.shows(0));
    one.player.play();
    EXPECT_TRUE(waitUntil([&] { return one.endedCount > 0; }));
    Listener click;
    ASSERT_TRUE(click.load(path("click.wav"), PlayerContent::AudioOnly));
    click.player.play();
    EXPECT_TRUE(waitUntil([&] { return click.endedCount > 0; }));
}

TEST_F(Player, NamesAreBytes) {
    for (const std::string& name : std::vector<std::string>{"a b %20 #x ?y & 素材's.mp4", "\xff\xfe.mp4",
                                                            "http:.mp4", "line\nbreak.mp4"}) {
        std::filesystem::copy_file(path("short.mp4"), path(name));
        Listener listener;
        EXPECT_TRUE(listener.load(path(name))) << name;
    }
}

TEST_F(Player, NeighbourFilesAndConfigurationStayUnread) {
    const std::string home = path("home");
    std::filesystem::create_directories(home + "/.config/mpv/scripts");
    writeFile(home + "/.config/mpv/mpv.conf", "volume=0\nstart=50%\n");
    writeFile(home + "/.config/mpv/scripts/trace.lua",
              "io.open('" + path("script-ran") + "', 'w'):close()\n");
    writeFile(path("short.mp4.conf"), "start=50%\n");
    writeFile(path("short.srt"), "1\n00:00:00,000 --> 00:00:05,000\nNEIGHBOUR\n");
    const QByteArray oldHome = qgetenv("HOME");
    qputenv("HOME", home.c_str());
    const auto before = listTree(folder_->path());
    {
        Listener listener;
        ASSERT_TRUE(listener.load(path("short.mp4")));
        EXPECT_TRUE(listener.shows(0));
        listener.player.play();
        ASSERT_TRUE(waitUntil([&] { return listener.endedCount == 1; }));
    }
    qputenv("HOME", oldHome);
    EXPECT_EQ(listTree(folder_->path()), before);
}

TEST_F(Player, WorksWhereNumbersAreWrittenWithAComma) {
    runTool("localedef", {"-i", "de_DE", "-f", "UTF-8", path("de_DE.UTF-8")});
    const std::string old = std::setlocale(LC_ALL, nullptr);
    qputenv("LOCPATH", folder_->path().c_str());
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    {
        Listener listener;
        EXPECT_TRUE(listener.load(path("short.mp4")));
        listener.player.seek(0.5);
        EXPECT_TRUE(listener.shows(12));
    }
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    EXPECT_STREQ(std::setlocale(LC_TIME, nullptr), "de_DE.UTF-8") << "nothing else is changed";
    std::setlocale(LC_ALL, old.c_str());
    qunsetenv("LOCPATH");
}

std::size_t threadCount() {
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(threads), end(threads)));
}
std::size_t descriptorCount() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

TEST_F(Player, GoingAwayAtAnyMomentNeverBlocksAndLeavesNothing) {
    {
        Listener listener;
        EXPECT_TRUE(listener.load(path("short.mp4")));
    }

    int signals = 0;
    double longest = 0;
    for (int i = 0; i < 200; ++i) {
        auto player = std::make_unique<MediaPlayer>();
        player->setFrameSize(QSize(320, 180));
        QObject::connect(player.get(), &MediaPlayer::ready, [&](double) { ++signals; });
        const auto start = Clock::now();
        player->load(path(i % 3 == 0 ? "tone.wav" : "long.mp4"),
                     i % 3 == 0 ? PlayerContent::AudioOnly : PlayerContent::AudioAndVideo);
        if (i % 2 == 0)
            player->play();
        const double loaded = secondsSince(start);
        // From gone at once to fully there.
        if (i % 4 == 3) {
            EXPECT_TRUE(waitUntil([&] { return player->duration() > 0; }));
        }
        for (int k = 0; k < i % 5; ++k)
            QCoreApplication::processEvents();
        const auto leaving = Clock::now();
        player.reset();
        longest = std::max({longest, loaded, secondsSince(leaving)});
    }
    const int told = signals;
    EXPECT_LT(longest, 0.5) << "the main thread was held";
    EXPECT_TRUE(waitUntil([] { return threadCount() < 8; })) << threadCount() << " threads are left";
    EXPECT_TRUE(waitUntil([] { return descriptorCount() < 40; })) << descriptorCount();
    EXPECT_EQ(signals, told) << "a signal came from a player that was gone";
    Listener listener;
    EXPECT_TRUE(listener.load(path("short.mp4")));
    EXPECT_TRUE(listener.shows(0));
}

}  // namespace

}  // namespace morvane::test
