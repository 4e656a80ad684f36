#include "project/verification.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "project/execution.h"
#include "project/manifest.h"
#include "project/project_errors.h"
#include "tests/project/engine_fixture.h"

namespace morvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Verification : public testing::Test {
protected:
    Verification() {
        makeTree(place.source(""),
                 {{"a.mov", "first"}, {"b.mov", "second"}, {"c.mov", "3"}, {"d.mov", "44"}});
        const ProjectPlan plan = place.plan("P", {"a.mov", "b.mov", "c.mov", "d.mov"});
        std::filesystem::remove(place.source("d.mov"));
        JobContext context;
        executeSynchronously(context, plan);
    }
    std::string copyPath(const std::string& name) const { return place.into() + "/P/02_原始素材/" + name; }
    FileUrl manifestURL() const { return fileLocation(place.into() + "/P/" + std::string(manifestFilename)); }

    Workplace place;
};

TEST_F(Verification, EverythingAsRecorded) {
    Recorder recorder;
    const std::string before = readAll(manifestURL().path);
    const VerifyReport report = verifyProject(recorder.context(), manifestURL());
    EXPECT_EQ(report.checked, 3) << "the failed one is not among them";
    EXPECT_THAT(report.changed, IsEmpty());
    EXPECT_THAT(report.missing, IsEmpty());
    EXPECT_EQ(recorder.reports().back().completedFiles, 3);
    EXPECT_EQ(recorder.reports().back().totalBytes, 12);
    EXPECT_EQ(recorder.reports().back().completedBytes, 12);
    EXPECT_EQ(readAll(manifestURL().path), before);
}

TEST_F(Verification, ChangedAndMissingCopies) {
    writeFile(copyPath("a.mov"), "FIRST");
    std::filesystem::remove(copyPath("b.mov"));
    std::filesystem::rename(copyPath("c.mov"), place.path("c"));
    std::filesystem::create_symlink(place.path("c"), copyPath("c.mov"));
    JobContext context;
    const VerifyReport report = verifyProject(context, manifestURL());
    EXPECT_EQ(report.checked, 3);
    EXPECT_THAT(report.changed, ElementsAre("02_原始素材/a.mov", "02_原始素材/c.mov"));
    EXPECT_THAT(report.missing, ElementsAre("02_原始素材/b.mov"));
}

TEST_F(Verification, StopsAndRefuses) {
    Recorder recorder;
    recorder.stop();
    EXPECT_TRUE(isCancelledBy([&] { verifyProject(recorder.context(), manifestURL()); }));
    std::filesystem::remove(place.into() + "/P/" + std::string(markerFilename));
    JobContext context;
    EXPECT_EQ(errorOf([&] { verifyProject(context, manifestURL()); }), project_text::markerMismatch);
}

}  // namespace
}  // namespace morvane::test
