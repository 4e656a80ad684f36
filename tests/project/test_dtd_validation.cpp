// Finding the definition and asking xmllint.
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "platform/data_folder.h"
#include "project/dtd_validation.h"
#include "project/fcpxml.h"
#include "project/project_errors.h"
#include "support/text_fold.h"
#include "tests/test_support.h"

namespace morvane::test {

namespace {

class Validation : public testing::Test {
protected:
    Validation() {
        ::setenv("XDG_DATA_DIRS", ((folder_ / "one") + ":" + (folder_ / "two words")).c_str(), 1);
    }
    ~Validation() override { ::unsetenv("XDG_DATA_DIRS"); }

    std::string definition(const std::string& relative) {
        const std::string path = folder_ / relative;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::filesystem::copy_file(MORVANE_SOURCE_DIR "/tests/data/hand_off_vocabulary.dtd", path);
        return path;
    }
    std::string document(const std::string& name, const std::string& text) {
        writeFile(folder_ / name, text);
        return folder_ / name;
    }
    std::string verdict(const std::string& dtd, const std::string& path) {
        try {
            validateAgainstDtd(context_, dtd, path);
        } catch (const ProjectCoreError& error) {
            return error.isCancelled() ? "cancelled" : error.what();
        }
        return "valid";
    }
    static std::string plain() {
        ProjectRequest request;
        request.name = "p";
        return fcpxmlDocument(folderLocation("/p"), request, {});
    }

    TemporaryFolder folder_;
    JobContext context_;
};

TEST_F(Validation, ThePlacesComeInTheirOrder) {
    context_.setStoreFolder(folder_ / "store");
    EXPECT_EQ(
        dtdPlaces(context_),
        (std::vector<std::string>{"/Applications/Final Cut Pro.app/Contents/Frameworks/Interchange.framework/"
                                  "Versions/A/Resources/FCPXMLv1_10.dtd",
                                  folder_ / "store/FCPXMLv1_10.dtd", folder_ / "one/morvane/FCPXMLv1_10.dtd",
                                  folder_ / "two words/morvane/FCPXMLv1_10.dtd"}));
    EXPECT_FALSE(findDtd(context_));
    std::filesystem::create_directories(folder_ / "one/morvane/FCPXMLv1_10.dtd");
    const std::string last = definition("two words/morvane/FCPXMLv1_10.dtd");
    EXPECT_EQ(findDtd(context_), last) << "a folder of that name is no definition";
    const std::string store = definition("store/FCPXMLv1_10.dtd");
    EXPECT_EQ(findDtd(context_), store);
}

TEST_F(Validation, TheUsualStoreFolderIsBelowTheDataFolder) {
    ::setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
    EXPECT_EQ(context_.storeFolder(), folder_ / "data/LumvexAssetLibrary");
    ::unsetenv("XDG_DATA_HOME");
}

TEST_F(Validation, TheDefinitionMayLieInAFolderWithBlanks) {
    const std::string dtd = definition("Final Cut Pro.app/100% #1 & 素材/FCPXMLv1_10.dtd");
    EXPECT_EQ(verdict(dtd, document("plain.fcpxml", plain())), "valid");
    EXPECT_EQ(verdict(dtd, document("a b %20 #x ?y & 素材's.fcpxml", plain())), "valid");
}

TEST_F(Validation, DocumentsThatBreakTheDefinitionFail) {
    const std::string dtd = definition("d/FCPXMLv1_10.dtd");
    const auto broken = [&](const std::string& from, const std::string& to) {
        std::string text = plain();
        const std::size_t at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        text.replace(at, from.size(), to);
        return verdict(dtd, document("broken.fcpxml", text));
    };
    for (const std::string& found :
         {broken("version=\"1.10\"", "version=\"1.9\""), broken("<spine/>", ""),
          broken(" tcFormat=\"NDF\"", ""), broken("id=\"projectFormat\"", "id=\"otherFormat\""),
          broken("</resources>", "<asset/></resources>"),
          broken("</library>", "<event name=\"7\"/></library>"), broken("</fcpxml>", ""),
          broken("主剪辑", "主&剪辑")}) {
        EXPECT_TRUE(found.starts_with(project_text::dtdViolationPrefix)) << found;
        EXPECT_GT(found.size(), project_text::dtdViolationPrefix.size() + project_text::unknownError.size())
            << found;
    }
}

TEST_F(Validation, AnErrorTextOfAnyLengthEndsAndItsBeginningIsTold) {
    const std::string dtd = definition("d/FCPXMLv1_10.dtd");
    std::string text = plain();
    std::string wrong;
    for (int i = 0; i < 20'000; ++i)
        wrong += "<wrong/>";
    text.insert(text.find("</library>"), wrong);
    const std::string found = verdict(dtd, document("wrong.fcpxml", text));
    EXPECT_TRUE(found.starts_with(project_text::dtdViolationPrefix));
    EXPECT_EQ(found.size(), project_text::dtdViolationPrefix.size() + 65'536);
    EXPECT_TRUE(isValidUtf8(found));
}

}  // namespace

}  // namespace morvane::test
