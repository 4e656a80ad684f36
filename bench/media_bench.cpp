// Pictures and playback: media_bench. Everything it makes (with ffmpeg) lies in one temporary folder
// ($TMPDIR or /tmp) and is removed. Needs no display.

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTimer>

#include "bench/measure.h"
#include "bench/temporary_folder.h"
#include "media/media_client.h"
#include "platform/media_player.h"
#include "platform/run_process.h"

namespace morvane::bench {
namespace {

void run(const std::string& program, const std::vector<std::string>& arguments) {
    const ProcessOutcome outcome = runProcess(program, arguments, [] { return false; });
    if (outcome.exitStatus != 0)
        throw std::runtime_error(program + ": " + outcome.standardError);
}

void makeMedia(const std::string& source, const std::vector<std::string>& how, const std::string& file) {
    std::vector<std::string> arguments = {"-v", "error", "-f", "lavfi", "-i", source};
    arguments.insert(arguments.end(), how.begin(), how.end());
    arguments.push_back(file);
    run("ffmpeg", arguments);
}

void waitUntil(const std::function<bool()>& done) {
    QTimer wake;  // also where no event comes
    wake.start(100);
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (clock.elapsed() > 20'000)
            throw std::runtime_error("the player did not answer");
    }
}

/// A 24-megapixel photo, made small for the preview.
void benchThumbnail(const TemporaryFolder& folder) {
    const std::string photo = folder / "photo.jpg";
    makeMedia("mandelbrot=size=6000x4000", {"-frames:v", "1", "-q:v", "3"}, photo);
    MediaClient client;
    compare("thumbnail of 24 megapixels", {[&] {
                if (client.thumbnail(photo, 1200, {}).outcome != MediaOutcome::Done)
                    throw std::runtime_error("no thumbnail");
            }},
            "ImageMagick", {[&] {
                run("convert", {photo, "-auto-orient", "-thumbnail", "1200x1200", folder / "small.ppm"});
            }},
            0.3);
}

/// From choosing a clip to its first picture in the size of the preview.
void benchFirstPicture(const std::string& clip) {
    measureAlone("first picture of a 1080p clip", {[&] {
                     MediaPlayer player;
                     bool isShown = false;
                     QObject::connect(&player, &MediaPlayer::frameReady, [&] { isShown = true; });
                     player.setFrameSize({640, 360});
                     player.load(clip, PlayerContent::AudioAndVideo);
                     waitUntil([&] { return isShown; });
                 }},
                 "150 ms", 11);
}

double processorSeconds() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void benchPlayback(const std::string& clip) {
    constexpr double span = 8;
    MediaPlayer player;
    player.setFrameSize({640, 360});
    player.load(clip, PlayerContent::AudioAndVideo);
    player.play();
    waitUntil([&] { return player.position() > 1; });
    const double begin = player.position();
    const double processorBefore = processorSeconds();
    waitUntil([&] { return player.position() > begin + span; });
    const double used = processorSeconds() - processorBefore;
    std::printf("%-34s %10.0f %% of one core   goal 30 %%\n", "playback of 1080p30",
                100 * used / (player.position() - begin));
}

void benchAll() {
    const TemporaryFolder folder;
    benchThumbnail(folder);
    const std::string clip = folder / "clip.mp4";
    makeMedia("testsrc2=size=1920x1080:rate=30:duration=15",
              {"-f", "lavfi", "-i", "sine=frequency=440:duration=15", "-c:v", "libx264", "-preset", "fast",
               "-pix_fmt", "yuv420p", "-c:a", "aac", "-shortest"},
              clip);
    benchFirstPicture(clip);
    benchPlayback(clip);
}

}  // namespace
}  // namespace morvane::bench

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const QGuiApplication application(argc, argv);
    try {
        morvane::bench::benchAll();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "media_bench: %s\n", error.what());
        return 1;
    }
}
