// Playing real clips: the space key, the recent list, what stops and what starts by itself.
#include <QLabel>
#include <QSlider>
#include <QTest>

#include <gmock/gmock.h>

#include "app/theme/elided_label.h"
#include "app/theme/file_table.h"
#include "app/theme/keyboard_window.h"
#include "app/theme/push_button.h"
#include "app/theme/search_field.h"
#include "app/theme/segmented_control.h"
#include "library_ui/picture_view.h"
#include "tests/app/controller_fixture.h"
#include "tests/media_maker.h"

namespace morvane {
namespace {

using test::operator+;
using test::waitUntil;
using testing::ElementsAre;
using testing::IsEmpty;

class ControllerPlayback : public test::ControllerTest {
protected:
    void SetUp() override {
        std::filesystem::create_directories(media_);
        test::ffmpeg(test::testAudio("20") + test::Arguments{media_ + "/long.wav"});
        test::ffmpeg(test::testVideo("25", "20") + test::Arguments{"-c:v", "mpeg4", media_ + "/film.mp4"});
        test::ffmpeg(test::testVideo("1", "1") + test::Arguments{"-frames:v", "1", media_ + "/still.png"});
        test::writeFile(media_ + "/broken.mov", "no film");
        settings_.roots = {media_};
    }
    void begin() {
        saveStoredSettings(settings_);
        start();
        ASSERT_TRUE(waitUntil([this] { return listed().size() == 4; }));
    }
    Controller& app() { return *controller_; }
    PushButton& play() { return *app().previewPane().transport.play; }
    void choose(const std::string& name) {
        clickRow(name);
        ASSERT_TRUE(waitUntil([this] { return play().isEnabled(); }));
    }
    void pressSpaceInList() { QTest::keyClick(&app().libraryView().table(), Qt::Key_Space); }

    Settings settings_;
};

TEST_F(ControllerPlayback, SpacePlaysAndPausesFromTheList) {
    begin();
    choose("long.wav");
    EXPECT_EQ(play().text(), "播放");
    pressSpaceInList();
    EXPECT_EQ(play().text(), "暂停");
    EXPECT_EQ(play().symbol(), "pause.fill");
    EXPECT_THAT(app().settings().recent, ElementsAre(media_ + "/long.wav"));
    EXPECT_EQ(topCategories()[2], "最近使用 1");
    EXPECT_TRUE(waitUntil([this] { return app().previewPane().transport.time->text().endsWith(" / 0:20"); }));
    pressSpaceInList();
    EXPECT_EQ(play().text(), "播放");
    EXPECT_TRUE(app().playback().hasPlayer());
}

TEST_F(ControllerPlayback, SpacePlaysFromTheWindowAndTypesInTheSearchField) {
    begin();
    choose("film.mp4");
    app().frame().window()->setFocus();
    QTest::keyClick(app().frame().window(), Qt::Key_Space);
    EXPECT_TRUE(app().playback().isPlaying());
    app().frame().search().setFocus();
    QTest::keyClick(&app().frame().search(), Qt::Key_Space);
    EXPECT_EQ(app().frame().search().text(), " ");
    EXPECT_TRUE(app().playback().isPlaying());
}

TEST_F(ControllerPlayback, SpaceDoesNothingForWhatCannotBePlayed) {
    begin();
    clickRow("still.png");
    ASSERT_TRUE(waitUntil([this] { return app().previewPane().fileButtons.copy->isEnabled(); }));
    pressSpaceInList();
    EXPECT_FALSE(app().playback().hasPlayer());
    EXPECT_THAT(app().settings().recent, IsEmpty());
}

TEST_F(ControllerPlayback, SwitchingToTheOrganizerStopsTheClip) {
    begin();
    choose("film.mp4");
    pressSpaceInList();
    ASSERT_TRUE(app().playback().isPlaying());
    app().frame().workspaceControl().choose(1);
    EXPECT_FALSE(app().playback().hasPlayer());
    EXPECT_EQ(play().text(), "播放");
    app().frame().workspaceControl().choose(0);
    EXPECT_FALSE(app().playback().hasPlayer());
}

TEST_F(ControllerPlayback, BackFromTheOrganizerTheClipPlaysAgain) {
    begin();
    choose("film.mp4");
    app().frame().workspaceControl().choose(1);
    app().frame().window()->onSpace();
    EXPECT_FALSE(app().playback().hasPlayer()) << "nothing plays behind the organizer";
    app().frame().workspaceControl().choose(0);
    EXPECT_FALSE(app().playback().hasPlayer());
    ASSERT_TRUE(play().isEnabled());
    QTest::mouseClick(&play(), Qt::LeftButton);
    EXPECT_TRUE(app().playback().isPlaying());
    EXPECT_EQ(play().text(), "暂停");
    EXPECT_THAT(app().settings().recent, ElementsAre(media_ + "/film.mp4"));
    EXPECT_TRUE(waitUntil([this] { return app().previewPane().transport.time->text().endsWith(" / 0:20"); }));
    EXPECT_TRUE(app().previewPane().canvas.playerView->isVisible());
    pressSpaceInList();
    EXPECT_FALSE(app().playback().isPlaying());
    EXPECT_TRUE(app().playback().hasPlayer());
}

TEST_F(ControllerPlayback, ShowingAnotherAssetStopsTheClip) {
    begin();
    choose("film.mp4");
    pressSpaceInList();
    clickRow("still.png");
    EXPECT_FALSE(app().playback().hasPlayer());
    EXPECT_EQ(play().text(), "播放");
    EXPECT_TRUE(waitUntil([this] {
        return app().previewPane().text.notice->text() == "拖出原文件可复制或导入，图片预览不会修改原件。";
    }));
    EXPECT_TRUE(app().previewPane().canvas.imageView->isVisible());
}

TEST_F(ControllerPlayback, APicturePreparedAheadIsNewTheFirstTime) {
    std::filesystem::rename(media_ + "/broken.mov", folder_ / "broken.mov");
    std::filesystem::copy_file(media_ + "/still.png", media_ + "/still 2.png");
    begin();
    const auto noticeOf = [this](const std::string& name) {
        clickRow(name);
        EXPECT_TRUE(waitUntil([this] { return app().previewPane().fileButtons.copy->isEnabled(); }));
        return app().previewPane().text.notice->text();
    };
    const QString first = "拖出原文件可复制或导入，图片预览不会修改原件。";
    const QString again = "拖出文件可复制或导入；⌘C 复制所选文件，随后在 Finder 中 ⌘V 粘贴。";
    clickRow("still.png");
    EXPECT_TRUE(waitUntil([&] { return app().previewPane().text.notice->text() == first; }));
    const auto row = app().index().assets()->rowOf(media_ + "/still 2.png");
    ASSERT_TRUE(row);
    const Asset next = app().index().assets()->asset(*row);
    ASSERT_TRUE(waitUntil([&] { return !app().thumbnails().cached(next).isNull(); }));
    EXPECT_EQ(noticeOf("still 2.png"), first);
    EXPECT_EQ(noticeOf("still.png"), again);
    EXPECT_EQ(noticeOf("still 2.png"), again);
}

TEST_F(ControllerPlayback, AnUndecodableClipSaysSo) {
    begin();
    clickRow("broken.mov");
    EXPECT_TRUE(waitUntil([this] {
        return app().previewPane().text.notice->text() ==
               "系统无法解码此素材，点击“外部打开”用其他播放器播放。";
    }));
    EXPECT_FALSE(play().isEnabled());
    EXPECT_FALSE(app().previewPane().transport.seek->isEnabled());
}

TEST_F(ControllerPlayback, AutoplayStartsSoundButNoFilm) {
    settings_.autoplay = true;
    begin();
    choose("film.mp4");
    EXPECT_FALSE(app().playback().isPlaying());
    EXPECT_THAT(app().settings().recent, IsEmpty());
    choose("long.wav");
    EXPECT_TRUE(waitUntil([this] { return app().playback().isPlaying(); }));
    EXPECT_THAT(app().settings().recent, ElementsAre(media_ + "/long.wav"));
    EXPECT_EQ(play().text(), "暂停");
}

TEST_F(ControllerPlayback, LosingTheSelectionStopsTheClip) {
    begin();
    choose("long.wav");
    pressSpaceInList();
    app().frame().search().setText("film");
    EXPECT_TRUE(waitUntil([this] { return !app().selected(); }));
    EXPECT_FALSE(app().playback().hasPlayer());
    EXPECT_FALSE(play().isEnabled());
}

}  // namespace
}  // namespace morvane
