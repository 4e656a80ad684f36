#include "project/duplicates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "project/project_errors.h"
#include "tests/project/engine_fixture.h"

namespace morvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string warningFor(int count) {
    return sentence(project_text::duplicatesPrefix, std::to_string(count)) +
           std::string(project_text::duplicatesSuffix);
}

TEST(Duplicates, ThreeIdenticalFiles) {
    const Workplace place;
    const std::string bytes = someBytes(100'000);
    makeTree(place.source(""),
             {{"a.mov", bytes}, {"b.mov", bytes}, {"c.mov", bytes}, {"d.mov", "other size"}});
    const ProjectPlan plan = place.plan("P", {"a.mov", "b.mov", "c.mov", "d.mov"});
    EXPECT_FALSE(plan.items[0].duplicateOf);
    EXPECT_EQ(plan.items[1].duplicateOf, place.source("a.mov"));
    EXPECT_EQ(plan.items[2].duplicateOf, place.source("a.mov"));
    for (int index = 0; index < 3; ++index)
        EXPECT_EQ(plan.items[static_cast<std::size_t>(index)].sourceHash, digestOf(bytes));
    EXPECT_FALSE(plan.items[3].sourceHash);
    EXPECT_THAT(plan.warnings, ElementsAre(warningFor(2)));
    EXPECT_EQ(warningFor(2), "发现 2份内容相同的文件，仅提示，仍按计划分别复制，不删除原件。");
}

TEST(Duplicates, ADifferenceInTheMiddleIsFoundByTheFullHash) {
    const Workplace place;
    const std::string first = someBytes(200'000);
    std::string second = first;
    second[100'000] = static_cast<char>(second[100'000] + 1);
    makeTree(place.source(""), {{"a.mov", first}, {"b.mov", second}});
    const ProjectPlan plan = place.plan("P", {"a.mov", "b.mov"});
    EXPECT_EQ(plan.items[0].sourceHash, digestOf(first));
    EXPECT_EQ(plan.items[1].sourceHash, digestOf(second));
    EXPECT_FALSE(plan.items[0].duplicateOf || plan.items[1].duplicateOf);
    EXPECT_THAT(plan.warnings, IsEmpty());
}

TEST(Duplicates, ADifferenceInHeadOrTailNeedsNoFullHash) {
    const Workplace place;
    const std::string bytes = someBytes(200'000);
    std::string head = bytes;
    head[10] = static_cast<char>(head[10] + 1);
    std::string later = bytes;
    later[60'000] = static_cast<char>(later[60'000] + 1);
    std::string tail = bytes;
    tail[199'999] = static_cast<char>(tail[199'999] + 1);
    makeTree(place.source(""), {{"a", bytes}, {"head", head}, {"later", later}, {"tail", tail}});
    const ProjectPlan plan = place.plan("P", {"a", "head", "later", "tail"});
    for (const auto& item : plan.items)
        EXPECT_FALSE(item.sourceHash || item.duplicateOf) << item.relativeDestination;
}

TEST(Duplicates, TwoContentsInOneFastGroup) {
    const Workplace place;
    const std::string first = someBytes(200'000);
    std::string second = first;
    second[100'000] = static_cast<char>(second[100'000] + 1);
    makeTree(place.source(""), {{"a", first}, {"b", second}, {"c", second}, {"d", first}});
    const ProjectPlan plan = place.plan("P", {"a", "b", "c", "d"});
    EXPECT_FALSE(plan.items[0].duplicateOf || plan.items[1].duplicateOf);
    EXPECT_EQ(plan.items[2].duplicateOf, place.source("b"));
    EXPECT_EQ(plan.items[3].duplicateOf, place.source("a"));
    EXPECT_THAT(plan.warnings, ElementsAre(warningFor(2)));
}

TEST(Duplicates, EmptyFilesAreEqual) {
    const Workplace place;
    makeTree(place.source(""), {{"a", ""}, {"b", ""}});
    const ProjectPlan plan = place.plan("P", {"a", "b"});
    EXPECT_EQ(plan.items[1].duplicateOf, place.source("a"));
    EXPECT_EQ(plan.items[0].sourceHash, digestOf(""));
}

TEST(Duplicates, ANameThatIsNoTextStaysReadable) {
    const Workplace place;
    makeTree(place.source(""), {{"bad\xFF", "same"}, {"b", "same"}});
    EXPECT_EQ(place.plan("P", {"bad\xFF", "b"}).items[1].duplicateOf, place.source("bad_"));
}

TEST(Duplicates, SizesNobodySharesAreNeverRead) {
    const Workplace place;
    makeTree(place.source(""), {{"a", "1"}, {"b", "22"}});
    ProjectPlan plan = place.plan("P", {"a", "b"});
    std::filesystem::remove(place.source("a"));
    std::filesystem::remove(place.source("b"));
    JobContext context;
    EXPECT_NO_THROW(findDuplicates(context, plan));
}

TEST(Duplicates, WhatCannotBeReadEndsTheCheck) {
    const Workplace place;
    makeTree(place.source(""), {{"a", "1"}, {"b", "2"}});
    ProjectPlan plan = place.plan("P", {"a", "b"});
    std::filesystem::remove(place.source("b"));
    std::filesystem::create_symlink("a", place.source("b"));
    JobContext context;
    EXPECT_EQ(errorOf([&] { findDuplicates(context, plan); }),
              sentence(project_text::cannotReadSourcePrefix, "b"));
}

TEST(Duplicates, ReportsBothStages) {
    const Workplace place;
    const std::string bytes = someBytes(1'500'000);
    makeTree(place.source(""), {{"一.mov", bytes}, {"二.mov", bytes}});
    ProjectPlan plan = place.plan("P", {"一.mov", "二.mov"});
    Recorder recorder;
    findDuplicates(recorder.context(), plan);
    EXPECT_THAT(
        recorder.messages(),
        ElementsAre("正在检查重复候选，原文件不会改动…", "快速核对头尾：一.mov", "快速核对头尾：二.mov",
                    "完整核对候选：一.mov · 1048576/1500000", "完整核对候选：一.mov · 1500000/1500000",
                    "完整核对候选：二.mov · 1048576/1500000", "完整核对候选：二.mov · 1500000/1500000"));
}

TEST(Duplicates, StopsAtEveryStage) {
    const Workplace place;
    const std::string bytes = someBytes(3'000'000);
    makeTree(place.source(""), {{"a", bytes}, {"b", bytes}});
    for (const std::string& at :
         {std::string(project_text::checkingDuplicates), std::string("快速核对头尾：a"),
          std::string("完整核对候选：a · 1048576/3000000"),
          std::string("完整核对候选：b · 2097152/3000000")}) {
        ProjectPlan plan = place.plan("P", {"a", "b"});
        Recorder recorder([&](const ProjectProgress& progress) { return progress.message == at; });
        EXPECT_TRUE(isCancelledBy([&] { findDuplicates(recorder.context(), plan); })) << at;
        EXPECT_EQ(recorder.messages().back(), at);
    }
}

}  // namespace
}  // namespace morvane::test
