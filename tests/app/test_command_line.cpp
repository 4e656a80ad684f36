// The one option: only the first flag counts, its next entry decides.
#include "app/command_line.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

struct Row {
    std::vector<std::string> arguments;
    bool isFaulty;
    std::optional<std::string> folder;
};

class CommandLineRule : public testing::TestWithParam<Row> {};

TEST_P(CommandLineRule, DecidesByTheFirstFlag) {
    const CommandLine line = readCommandLine(GetParam().arguments);
    EXPECT_EQ(line.isFaulty, GetParam().isFaulty);
    EXPECT_EQ(line.smokeTestFolder, GetParam().folder);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CommandLineRule,
    testing::Values(Row{{}, false, std::nullopt}, Row{{"morvane"}, false, std::nullopt},
                    Row{{"morvane", "--other"}, false, std::nullopt},
                    Row{{"morvane", "--ui-smoke-test"}, true, std::nullopt},
                    Row{{"morvane", "--ui-smoke-test", ""}, true, std::nullopt},
                    Row{{"morvane", "--ui-smoke-test", "out"}, true, std::nullopt},
                    Row{{"morvane", "--ui-smoke-test", "./out"}, true, std::nullopt},
                    Row{{"morvane", "--ui-smoke-test", "/tmp/out"}, false, "/tmp/out"},
                    Row{{"morvane", "--ui-smoke-test", "/"}, false, "/"},
                    Row{{"morvane", "--ui-smoke-test", "/a\xff"}, false, "/a\xff"},
                    // The program path counts as an entry.
                    Row{{"--ui-smoke-test", "/tmp/out"}, false, "/tmp/out"},
                    // A second flag changes nothing, in either direction.
                    Row{{"m", "--ui-smoke-test", "/a", "--ui-smoke-test", "b"}, false, "/a"},
                    Row{{"m", "--ui-smoke-test", "a", "--ui-smoke-test", "/b"}, true, std::nullopt},
                    Row{{"m", "--ui-smoke-test", "--ui-smoke-test", "/b"}, true, std::nullopt},
                    // Only the exact word is the flag.
                    Row{{"m", "--ui-smoke-test=/a"}, false, std::nullopt},
                    Row{{"m", "-ui-smoke-test", "a"}, false, std::nullopt}));

TEST(CommandLineText, IsTheGivenSentence) {
    EXPECT_EQ(smokeTestUsageText, "--ui-smoke-test 需要一个绝对输出目录；未启动应用，未访问个人索引。");
    EXPECT_EQ(usageExitStatus, 64);
}

}  // namespace
}  // namespace morvane
