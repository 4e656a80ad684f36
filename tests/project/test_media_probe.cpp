// The organizer's side of the probe: which files are looked at, and how a wait ends.
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "project/media_probe.h"
#include "project/project_errors.h"
#include "tests/media_maker.h"
#include "tests/test_support.h"

namespace morvane::test {

namespace {

class OrganizerProbe : public testing::Test {
protected:
    std::optional<Media> look(const std::string& name, bool isCameraCard = false) {
        ProjectPlanItem item;
        item.relativeDestination = "02_原始素材/" + name;
        item.category = "拍摄素材";
        item.isCameraCard = isCameraCard;
        return probe(context_, client_, fileLocation(folder_ / name), item);
    }
    /// A program that takes the helper's place.
    std::string standIn(const std::string& script) {
        const std::string path = folder_ / "stand-in";
        writeFile(path, "#!/bin/sh\n" + script + "\n");
        EXPECT_EQ(::chmod(path.c_str(), 0755), 0);
        return path;
    }
    void makeSound(const std::string& name) {
        ffmpeg(testAudio("1") + Arguments{"-ac", "2", folder_ / name});
    }

    TemporaryFolder folder_;
    std::atomic<bool> isCancelled_ = false;
    JobContext context_{[this] { return isCancelled_.load(); }, {}};
    MediaClient client_;
};

TEST_F(OrganizerProbe, GivesTheItemAndItsFacts) {
    makeSound("a.wav");
    const auto found = look("a.wav");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->item.relativeDestination, "02_原始素材/a.wav");
    EXPECT_TRUE(found->audio);
    EXPECT_FALSE(found->video);
    EXPECT_EQ(found->duration, (MediaTime{1, 1}));
    EXPECT_EQ(found->rate, 48000);
    EXPECT_EQ(found->channels, 2);
}

TEST_F(OrganizerProbe, LooksAtTheTenExtensionsOnlyInAnyCase) {
    for (const char* name :
         {"a.mov", "a.MP4", "a.m4v", "a.WAV", "a.aif", "a.aiff", "a.m4a", "a.aac", "a.mp3", "a.Caf"})
        EXPECT_TRUE(isSupportedMedia(name)) << name;
    for (const char* name :
         {"a.mkv", "a.avi", "a.mts", "a.flac", "a.ogg", "a.jpg", "mov", ".mov", "a.mov.txt", ""})
        EXPECT_FALSE(isSupportedMedia(name)) << name;
    makeSound("a.wav");
    std::filesystem::rename(folder_ / "a.wav", folder_ / "a.mkv");
    EXPECT_FALSE(look("a.mkv"));
}

TEST_F(OrganizerProbe, CameraCardItemsAndOtherKindsAreNotAskedAbout) {
    makeSound("a.wav");
    std::filesystem::copy_file(folder_ / "a.wav", folder_ / "a.mkv");
    MediaClient witness(standIn("touch '" + (folder_ / "asked") + "'"));
    ProjectPlanItem item;
    EXPECT_FALSE(probe(context_, witness, fileLocation(folder_ / "a.mkv"), item));
    item.isCameraCard = true;
    EXPECT_FALSE(probe(context_, witness, fileLocation(folder_ / "a.wav"), item));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "asked"));
    item.isCameraCard = false;
    EXPECT_FALSE(probe(context_, witness, fileLocation(folder_ / "a.wav"), item));
    EXPECT_TRUE(std::filesystem::exists(folder_ / "asked"));
}

TEST_F(OrganizerProbe, UnreadableFilesGiveNothing) {
    EXPECT_FALSE(look("missing.wav"));
    writeFile(folder_ / "text.mp4", "text");
    EXPECT_FALSE(look("text.mp4"));
    ASSERT_EQ(::mkfifo((folder_ / "pipe.mp4").c_str(), 0600), 0);
    EXPECT_FALSE(look("pipe.mp4"));
    makeSound("a.wav");
    std::filesystem::create_symlink(folder_ / "a.wav", folder_ / "link.wav");
    EXPECT_FALSE(look("link.wav"));
}

TEST_F(OrganizerProbe, AStoppedJobThrowsBeforeAnythingElse) {
    isCancelled_ = true;
    EXPECT_THROW(look("missing.mkv"), ProjectCoreError);
}

TEST_F(OrganizerProbe, AStopEndsAWaitThatNeverEnds) {
    makeSound("a.wav");
    MediaClient silent(standIn("exec sleep 1000"));
    ProjectPlanItem item;
    const auto start = std::chrono::steady_clock::now();
    const auto elapsed = [&] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    std::thread canceller([&] {
        while (elapsed() < 0.3)
            std::this_thread::yield();
        isCancelled_ = true;
    });
    try {
        probe(context_, silent, fileLocation(folder_ / "a.wav"), item);
        ADD_FAILURE() << "the stop went unnoticed";
    } catch (const ProjectCoreError& error) {
        EXPECT_TRUE(error.isCancelled());
    }
    EXPECT_LT(elapsed(), 1.5);
    canceller.join();
}

TEST_F(OrganizerProbe, AFileThatNeverAnswersGivesNothingAfterTwelveSeconds) {
    makeSound("a.wav");
    MediaClient silent(standIn("exec sleep 1000"));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(probe(context_, silent, fileLocation(folder_ / "a.wav"), ProjectPlanItem{}));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_GE(seconds, 12.0);
    EXPECT_LT(seconds, 14.0);
}

}  // namespace

}  // namespace morvane::test
