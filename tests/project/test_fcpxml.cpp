// The hand-off document, byte for byte, and its publication in a real project folder.
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "project/dtd_validation.h"
#include "project/fcpxml.h"
#include "project/project_errors.h"
#include "project/temporary_file.h"
#include "support/uuid.h"
#include "tests/media_maker.h"
#include "tests/test_support.h"

namespace morvane::test {

namespace {

constexpr const char* vocabulary = MORVANE_SOURCE_DIR "/tests/data/hand_off_vocabulary.dtd";

ProjectPlanItem plannedItem(const std::string& source, const std::string& destination,
                            const std::string& category) {
    ProjectPlanItem item;
    item.id = newUuid();
    item.sourceURL = fileLocation(source);
    item.relativeDestination = destination;
    item.category = category;
    return item;
}

const FileUrl root = folderLocation("/项目/我的 短片");

ProjectRequest plainRequest() {
    ProjectRequest request;
    request.name = "我的 短片";
    request.frameRate = 25;
    request.width = 3840;
    request.height = 2160;
    return request;
}

Media clip(const ProjectPlanItem& item) {
    Media media;
    media.item = item;
    media.duration = {1001, 500};
    return media;
}

Media withVideo(Media media) {
    media.video = true;
    media.width = 1920;
    media.height = 1080;
    media.frameDuration = {1001, 30000};
    return media;
}

Media withAudio(Media media, int channels) {
    media.audio = true;
    media.rate = 48000;
    media.channels = channels;
    return media;
}

const std::string head =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<fcpxml version=\"1.10\">\n"
    "<import-options><option key=\"library location\" value=\"file:///%E9%A1%B9%E7%9B%AE/"
    "%E6%88%91%E7%9A%84%20%E7%9F%AD%E7%89%87/01_%E9%A1%B9%E7%9B%AE%E5%B7%A5%E7%A8%8B/"
    "%E6%88%91%E7%9A%84%20%E7%9F%AD%E7%89%87.fcpbundle\"/><option key=\"copy assets\" value=\"0\"/>"
    "<option key=\"suppress warnings\" value=\"0\"/></import-options>\n"
    "<resources><format id=\"projectFormat\" frameDuration=\"1/25s\" width=\"3840\" height=\"2160\" "
    "colorSpace=\"1-1-1 (Rec. 709)\"/>\n";
const std::string smart =
    "</collection-folder><smart-collection name=\"视频\" match=\"any\"><match-media rule=\"is\" "
    "type=\"videoOnly\"/>"
    "<match-media rule=\"is\" type=\"videoWithAudio\"/></smart-collection><smart-collection name=\"音频\" "
    "match=\"all\">"
    "<match-media rule=\"is\" type=\"audioOnly\"/></smart-collection></event>\n";
const std::string tail =
    "<event name=\"06_剪辑工程\"><project name=\"主剪辑\"><sequence format=\"projectFormat\" duration=\"0s\" "
    "tcStart=\"0s\" tcFormat=\"NDF\" audioLayout=\"stereo\" "
    "audioRate=\"48k\"><spine/></sequence></project></event>"
    "</library></fcpxml>\n";

std::string emptyEvent(const std::string& name) {
    return "<event name=\"" + name + "\">\n<collection-folder name=\"来源与用途\">" + smart;
}

TEST(Document, WithoutMediaHoldsFiveEmptyEventsAndTheEdit) {
    EXPECT_EQ(fcpxmlDocument(root, plainRequest(), {}),
              head + "</resources><library>\n" + emptyEvent("01_拍摄素材") + emptyEvent("02_同期声") +
                  emptyEvent("03_音乐") + emptyEvent("04_音效") + emptyEvent("05_图形") + tail);
}

TEST(Document, ClipsStandInTheirEventsWithNumbersFromZero) {
    const std::vector<Media> media{
        withAudio(withVideo(clip(plannedItem("/卡/二号机/A001.mov", "02_原始素材/A001.mov", "拍摄素材"))), 2),
        withAudio(clip(plannedItem("/声/歌 & 曲/歌.mp3", "04_音乐/歌.mp3", "音乐")), 1),
        withVideo(clip(plannedItem("/卡/一号机/B.mov", "02_原始素材/B.mov", "拍摄素材"))),
        withAudio(clip(plannedItem("/x/音效/轰.wav", "03_音效/轰.wav", "音效")), 2),
        withAudio(clip(plannedItem("/x/字幕/旁白.wav", "08_字幕/旁白.wav", "字幕")), 2)};
    const std::string base = "file:///%E9%A1%B9%E7%9B%AE/%E6%88%91%E7%9A%84%20%E7%9F%AD%E7%89%87/";
    const std::string original = "02_%E5%8E%9F%E5%A7%8B%E7%B4%A0%E6%9D%90/";
    const auto keyword = [](const std::string& value) {
        return "<keyword start=\"0s\" duration=\"1001/500s\" value=\"" + value + "\"/>";
    };
    const std::string expected =
        head +
        "<format id=\"format0\" frameDuration=\"1001/30000s\" width=\"1920\" height=\"1080\"/>\n"
        "<format id=\"format2\" frameDuration=\"1001/30000s\" width=\"1920\" height=\"1080\"/>\n"
        "<asset id=\"asset0\" name=\"A001.mov\" start=\"0s\" duration=\"1001/500s\" hasVideo=\"1\" "
        "hasAudio=\"1\" "
        "format=\"format0\" audioSources=\"1\" audioChannels=\"2\" audioRate=\"48000\"><media-rep "
        "kind=\"original-media\" src=\"" +
        base + original +
        "A001.mov\"/></asset>\n"
        "<asset id=\"asset1\" name=\"歌.mp3\" start=\"0s\" duration=\"1001/500s\" hasVideo=\"0\" "
        "hasAudio=\"1\" "
        "audioSources=\"1\" audioChannels=\"1\" audioRate=\"48000\"><media-rep kind=\"original-media\" "
        "src=\"" +
        base +
        "04_%E9%9F%B3%E4%B9%90/%E6%AD%8C.mp3\"/></asset>\n"
        "<asset id=\"asset2\" name=\"B.mov\" start=\"0s\" duration=\"1001/500s\" hasVideo=\"1\" "
        "hasAudio=\"0\" "
        "format=\"format2\"><media-rep kind=\"original-media\" src=\"" +
        base + original +
        "B.mov\"/></asset>\n"
        "<asset id=\"asset3\" name=\"轰.wav\" start=\"0s\" duration=\"1001/500s\" hasVideo=\"0\" "
        "hasAudio=\"1\" "
        "audioSources=\"1\" audioChannels=\"2\" audioRate=\"48000\"><media-rep kind=\"original-media\" "
        "src=\"" +
        base +
        "03_%E9%9F%B3%E6%95%88/%E8%BD%B0.wav\"/></asset>\n"
        "<asset id=\"asset4\" name=\"旁白.wav\" start=\"0s\" duration=\"1001/500s\" hasVideo=\"0\" "
        "hasAudio=\"1\" "
        "audioSources=\"1\" audioChannels=\"2\" audioRate=\"48000\"><media-rep kind=\"original-media\" "
        "src=\"" +
        base +
        "08_%E5%AD%97%E5%B9%95/%E6%97%81%E7%99%BD.wav\"/></asset>\n"
        "</resources><library>\n"
        "<event name=\"01_拍摄素材\">\n"
        "<asset-clip name=\"A001.mov\" ref=\"asset0\" duration=\"1001/500s\" format=\"format0\" "
        "videoRole=\"video\" "
        "audioRole=\"dialogue\">" +
        keyword("二号机") + keyword("拍摄素材") +
        "</asset-clip>\n"
        "<asset-clip name=\"B.mov\" ref=\"asset2\" duration=\"1001/500s\" format=\"format2\" "
        "videoRole=\"video\">" +
        keyword("一号机") + keyword("拍摄素材") +
        "</asset-clip>\n"
        "<collection-folder name=\"来源与用途\"><keyword-collection name=\"一号机\"/>"
        "<keyword-collection name=\"二号机\"/><keyword-collection name=\"拍摄素材\"/>" +
        smart + emptyEvent("02_同期声") +
        "<event name=\"03_音乐\">\n"
        "<asset-clip name=\"歌.mp3\" ref=\"asset1\" duration=\"1001/500s\" audioRole=\"music\">" +
        keyword("歌 &amp; 曲") + keyword("音乐") +
        "</asset-clip>\n"
        "<collection-folder name=\"来源与用途\"><keyword-collection name=\"歌 &amp; 曲\"/>"
        "<keyword-collection name=\"音乐\"/>" +
        smart +
        "<event name=\"04_音效\">\n"
        // The folder has the category's name: one keyword.
        "<asset-clip name=\"轰.wav\" ref=\"asset3\" duration=\"1001/500s\" audioRole=\"effects\">" +
        keyword("音效") +
        "</asset-clip>\n"
        "<collection-folder name=\"来源与用途\"><keyword-collection name=\"音效\"/>" +
        smart + emptyEvent("05_图形") + tail;
    EXPECT_EQ(fcpxmlDocument(root, plainRequest(), media), expected);
}

TEST(Document, KeywordsStandInPlainCodePointOrder) {
    const std::vector<Media> media{
        withAudio(clip(plannedItem("/x/b/1.wav", "04_音乐/1.wav", "音乐")), 2),
        withAudio(clip(plannedItem("/x/B/2.wav", "04_音乐/2.wav", "音乐")), 2),
        withAudio(clip(plannedItem("/x/\xf0\x9f\x8e\xac/3.wav", "04_音乐/3.wav", "音乐")), 2),
        withAudio(clip(plannedItem("/x/10/4.wav", "04_音乐/4.wav", "音乐")), 2),
        withAudio(clip(plannedItem("/x/9/5.wav", "04_音乐/5.wav", "音乐")), 2)};
    EXPECT_NE(fcpxmlDocument(root, plainRequest(), media)
                  .find("<keyword-collection name=\"10\"/><keyword-collection name=\"9\"/>"
                        "<keyword-collection name=\"B\"/><keyword-collection name=\"b\"/>"
                        "<keyword-collection name=\"音乐\"/><keyword-collection name=\"\xf0\x9f\x8e\xac\"/>"),
              std::string::npos);
}

TEST(Document, NamesAreEscapedAndApostrophesStay) {
    EXPECT_EQ(escaped("a&b\"c<d>e\nf\rg'h&amp;"), "a&amp;b&quot;c&lt;d&gt;e&#10;f&#13;g'h&amp;amp;");
    const std::vector<Media> media{
        withAudio(clip(plannedItem("/x/it's/a.wav", "04_音乐/R&B <it's> \"1\".wav", "音乐")), 2)};
    const std::string document = fcpxmlDocument(root, plainRequest(), media);
    EXPECT_NE(document.find(" name=\"R&amp;B &lt;it's&gt; &quot;1&quot;.wav\""), std::string::npos);
    EXPECT_NE(document.find("/R&amp;B%20%3Cit's%3E%20%221%22.wav\"/>"), std::string::npos);
    EXPECT_NE(document.find("value=\"it's\""), std::string::npos);
}

TEST(Document, TextThatXmlCannotHoldIsReplaced) {
    const std::vector<Media> media{
        withAudio(clip(plannedItem("/x/a\x01\xff\xef\xbf\xbf/a.wav", "04_音乐/a.wav", "音乐")), 2)};
    EXPECT_NE(fcpxmlDocument(root, plainRequest(), media).find("value=\"a___\""), std::string::npos);
}

TEST(Document, TheProjectNameIsMadeSafe) {
    ProjectRequest request = plainRequest();
    request.name = "a:b";
    EXPECT_NE(fcpxmlDocument(root, request, {}).find("/a_b.fcpbundle\""), std::string::npos);
}

/// A project folder whose name needs escapes, with verified copies of real media.
class HandOff : public testing::Test {
protected:
    HandOff() {
        std::filesystem::create_directories(project_);
        context_.setStoreFolder(store_);
        ::setenv("XDG_DATA_DIRS", (folder_ / "shared").c_str(), 1);
        manifest_.plan.request = plainRequest();
        manifest_.plan.rootURL = folderLocation(project_);
    }
    ~HandOff() override { ::unsetenv("XDG_DATA_DIRS"); }

    void addCopy(const std::string& destination, const std::string& category, const Arguments& media) {
        std::filesystem::create_directories(
            std::filesystem::path(project_ + "/" + destination).parent_path());
        ffmpeg(media + Arguments{project_ + "/" + destination});
        addRecord(destination, category, ProjectFileState::verified);
    }
    void addFile(const std::string& destination, const std::string& bytes) {
        writeFile(project_ + "/" + destination, bytes);
        addRecord(destination, "文案资料", ProjectFileState::verified);
    }
    void addRecord(const std::string& destination, const std::string& category, ProjectFileState state) {
        const ProjectPlanItem item = plannedItem("/卡 & \"架\"/来源/x", destination, category);
        manifest_.plan.items.push_back(item);
        manifest_.files.push_back({.itemID = item.id, .state = state, .sha256 = {}, .error = {}});
    }
    void provideDtd(const std::string& folder) {
        std::filesystem::create_directories(folder);
        std::filesystem::copy_file(vocabulary, folder + "/" + dtdName);
    }
    FileUrl make() { return makeXML(context_, manifest_.plan.rootURL, manifest_); }
    std::string failure() {
        try {
            make();
        } catch (const ProjectCoreError& error) {
            return error.isCancelled() ? "cancelled" : error.what();
        }
        return {};
    }
    std::vector<std::string> published() {
        std::error_code ignored;
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(project_ + "/01_项目工程", ignored))
            names.push_back(entry.path().filename().string());
        return names;
    }

    TemporaryFolder folder_;
    const std::string project_ = folder_ / "项目 100% #1 & <it's> \"x\"";
    const std::string store_ = folder_ / "store with blanks 素材";
    std::atomic<bool> isCancelled_ = false;
    JobContext context_{[this] { return isCancelled_.load(); }, {}};
    ProjectManifest manifest_;
};

TEST_F(HandOff, PublishesAValidDocumentOfTheRealMedia) {
    provideDtd(store_);
    addCopy("02_原始素材/A & B <1>'s.mov", "拍摄素材",
            testVideo("30000/1001", "2") + testAudio("2") + Arguments{"-pix_fmt", "yuv420p", "-ac", "2"});
    addCopy("04_音乐/歌.wav", "音乐", testAudio("1", "44100"));
    addFile("07_文案与资料/稿.txt", "text");
    addRecord("02_原始素材/没有.mov", "拍摄素材", ProjectFileState::failed);
    const FileUrl location = make();
    EXPECT_EQ(published(), std::vector<std::string>{location.lastComponent()});
    EXPECT_TRUE(location.lastComponent().starts_with("MORVANE整理导入-"));
    EXPECT_TRUE(location.lastComponent().ends_with(".fcpxml"));
    const std::string document = readAll(location.path);
    EXPECT_NE(document.find("frameDuration=\"1001/30000s\" width=\"320\" height=\"240\""), std::string::npos);
    EXPECT_NE(document.find("name=\"A &amp; B &lt;1&gt;'s.mov\""), std::string::npos);
    EXPECT_NE(document.find("audioChannels=\"1\" audioRate=\"44100\""), std::string::npos);
    EXPECT_EQ(manifest_.warnings, std::vector<std::string>{std::string(project_text::leftOutPrefix) + "1" +
                                                           std::string(project_text::leftOutSuffix)});
}

TEST_F(HandOff, WithImagesOnlyTheDocumentIsWrittenAndTheFilesAreCounted) {
    provideDtd(store_);
    addFile("06_图形与包装/a.png", "x");
    addFile("06_图形与包装/b.png", "x");
    const std::string document = readAll(make().path);
    EXPECT_EQ(document.find("<asset "), std::string::npos);
    EXPECT_EQ(manifest_.warnings.size(), 1U);
    EXPECT_TRUE(manifest_.warnings.at(0).starts_with("另有 2 份文件"));
}

TEST_F(HandOff, WithEveryFileInItNothingIsWarned) {
    provideDtd(store_);
    addCopy("04_音乐/a.wav", "音乐", testAudio("1"));
    make();
    EXPECT_TRUE(manifest_.warnings.empty());
}

TEST_F(HandOff, WithoutTheDefinitionNoFileIsLeft) {
    EXPECT_EQ(failure(), project_text::dtdMissing);
    EXPECT_TRUE(published().empty());
    EXPECT_TRUE(std::filesystem::is_directory(project_ + "/01_项目工程"));
}

TEST_F(HandOff, AnInvalidDocumentIsRemoved) {
    provideDtd(store_);
    // A definition that asks for one event too many.
    std::string definition = readAll(vocabulary);
    const std::string events = "(event, event, event, event, event, event)";
    definition.replace(definition.find(events), events.size(),
                       "(event, event, event, event, event, event, event)");
    writeFile(store_ + "/" + dtdName, definition);
    EXPECT_TRUE(failure().starts_with(project_text::dtdViolationPrefix));
    EXPECT_NE(failure().find("library"), std::string::npos) << "xmllint's own text is shown";
    EXPECT_TRUE(published().empty());
}

TEST_F(HandOff, AStopWhileProbingPublishesNothing) {
    provideDtd(store_);
    addCopy("04_音乐/a.wav", "音乐", testAudio("1"));
    isCancelled_ = true;
    EXPECT_EQ(failure(), "cancelled");
    EXPECT_TRUE(published().empty());
}

TEST_F(HandOff, AStopDuringValidationRemovesTheFile) {
    // The definition is read from a pipe that nobody feeds: validation never ends by itself.
    std::filesystem::create_directories(store_);
    const std::string endless =
        "<!ENTITY % more SYSTEM \"" + absoluteText(fileLocation(folder_ / "pipe")) + "\">%more;";
    writeFile(store_ + "/" + dtdName, endless);
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    std::thread canceller([this] {
        while (published().empty())
            std::this_thread::yield();
        EXPECT_TRUE(isTemporaryName(published().front())) << "no final name before it is valid";
        isCancelled_ = true;
    });
    EXPECT_EQ(failure(), "cancelled");
    canceller.join();
    EXPECT_TRUE(published().empty());
}

TEST_F(HandOff, AFolderThatIsALinkIsRefused) {
    provideDtd(store_);
    std::filesystem::create_directories(folder_ / "elsewhere");
    std::filesystem::create_symlink(folder_ / "elsewhere", project_ + "/01_项目工程");
    EXPECT_EQ(failure(), project_text::subfolderNotReal);
    EXPECT_TRUE(std::filesystem::is_empty(folder_ / "elsewhere"));
}

TEST_F(HandOff, ACopyThatBecameALinkIsLeftOut) {
    provideDtd(store_);
    addCopy("04_音乐/a.wav", "音乐", testAudio("1"));
    std::filesystem::rename(project_ + "/04_音乐/a.wav", folder_ / "a.wav");
    std::filesystem::create_symlink(folder_ / "a.wav", project_ + "/04_音乐/a.wav");
    EXPECT_EQ(readAll(make().path).find("<asset "), std::string::npos);
}

}  // namespace

}  // namespace morvane::test
