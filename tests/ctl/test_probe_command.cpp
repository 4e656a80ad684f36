// probe: what the hand-off would know about real media.
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ctl/ctl_fixture.h"
#include "tests/media_maker.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using nlohmann::json;
using test::operator+;

class ProbeCommand : public testing::Test {
protected:
    json probe(const std::vector<std::string>& names) {
        std::vector<std::string> arguments{"probe", "--json"};
        for (const std::string& name : names)
            arguments.push_back(folder_ / name);
        const test::CtlOutcome outcome = test::runCtl(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        return json::parse(outcome.output);
    }
    const test::TemporaryFolder folder_;
};

TEST_F(ProbeCommand, TellsExactFractions) {
    test::ffmpeg(test::testVideo("30000/1001", "1") + test::testAudio("1") +
                 test::Arguments{"-c:v", "mpeg4", "-c:a", "aac", folder_ / "clip.mov"});
    test::ffmpeg(test::testAudio("2", "44100") + test::Arguments{"-ac", "2", folder_ / "sound.wav"});
    const json found = probe({"clip.mov", "sound.wav"});
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0]["path"], folder_ / "clip.mov");
    EXPECT_EQ(found[0]["video"], true);
    EXPECT_EQ(found[0]["audio"], true);
    EXPECT_EQ(found[0]["width"], 320);
    EXPECT_EQ(found[0]["height"], 240);
    EXPECT_EQ(found[0]["frameDuration"], json({{"value", 1001}, {"timescale", 30000}}));
    EXPECT_EQ(found[0]["rate"], 48000);
    EXPECT_EQ(found[0]["channels"], 1);
    EXPECT_EQ(found[1]["duration"], json({{"value", 2}, {"timescale", 1}}));
    EXPECT_EQ(found[1]["video"], false);
    EXPECT_EQ(found[1]["channels"], 2);
}

TEST_F(ProbeCommand, TellsWhyAFileIsLeftOut) {
    test::makeTree(folder_.path(), {{"notes.txt", "x"}, {"broken.mp4", "no film at all"}});
    ASSERT_EQ(::mkfifo((folder_ / "pipe.mov").c_str(), 0600), 0);
    const json found = probe({"notes.txt", "broken.mp4", "pipe.mov", "missing.mov", "odd\xff.mov"});
    ASSERT_EQ(found.size(), 5U);
    for (const json& file : found) {
        EXPECT_EQ(file.size(), 2U);
        EXPECT_NE(file["reason"], "");
    }
}

TEST_F(ProbeCommand, TextForPeople) {
    test::ffmpeg(test::testAudio("1") + test::Arguments{folder_ / "sound.wav"});
    test::writeFile(folder_ / "notes.txt", "x");
    const test::CtlOutcome outcome = test::runCtl({"probe", folder_ / "sound.wav", folder_ / "notes.txt"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, (folder_ / "sound.wav") + "：时长 1/1 秒，音频 48000 Hz，1 声道\n" +
                                  (folder_ / "notes.txt") + "：交接文件不支持此扩展名\n");
}

}  // namespace
}  // namespace morvane
