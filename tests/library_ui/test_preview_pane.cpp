#include "library_ui/preview_pane.h"

#include "app/theme/artwork.h"
#include "app/theme/elided_label.h"
#include "app/theme/push_button.h"
#include "app/theme/symbol_view.h"
#include "library_ui/picture_view.h"
#include "tests/library_ui/library_fixture.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>

namespace morvane::test {
namespace {

constexpr const char* presentNotice = "拖出文件可复制或导入；⌘C 复制所选文件，随后在 Finder 中 ⌘V 粘贴。";

Asset sample(const std::string& name) {
    return assetAt("/run/media/lin/影像素材A", "2026 秋日旅拍/同期声/" + name, 86'400'000);
}

struct Pane {
    PreviewPane pane;
    explicit Pane(int width = 384, int height = 688) {
        pane.resize(width, height);
        pane.show();
        waitUntil([this] { return QTest::qWaitForWindowExposed(&pane, 1); });
    }
    void show(const std::string& name, FileState file = FileState::Present) {
        pane.showAsset(sample(name), Favorite::No);
        pane.showFileState(file);
    }
    std::vector<bool> buttons() const {
        const auto& b = pane.fileButtons;
        return {b.favorite->isEnabled(), b.reveal->isEnabled(), b.copy->isEnabled(), b.open->isEnabled(),
                b.rename->isEnabled()};
    }
    QWidget* onCanvas() const {
        for (QWidget* view :
             {static_cast<QWidget*>(pane.canvas.playerView), static_cast<QWidget*>(pane.canvas.artwork),
              static_cast<QWidget*>(pane.canvas.imageView)}) {
            if (view->isVisible())
                return view;
        }
        return nullptr;
    }
};

class PreviewPaneTest : public testing::Test {
protected:
    PreviewPaneTest() { useTheme(); }
};

void expectEmpty(const Pane& p) {
    EXPECT_EQ(p.pane.text.previewTitle->text(), "选择一个素材");
    EXPECT_EQ(p.pane.text.detail->text(), "支持音频试听、视频试看和图片预览。");
    EXPECT_EQ(p.pane.text.pathLabel->text(), "");
    EXPECT_EQ(p.pane.text.notice->text(), "从列表拖出文件，即可复制到其他文件夹或导入剪辑软件。");
    EXPECT_EQ(p.pane.canvas.artwork->mode(), "waveform");
    EXPECT_EQ(p.onCanvas(), p.pane.canvas.artwork);
    EXPECT_EQ(p.pane.transport.play->text(), "播放");
    EXPECT_EQ(p.pane.transport.time->text(), "0:00 / 0:00");
    EXPECT_EQ(p.pane.transport.seek->value(), 0);
    EXPECT_EQ(p.pane.transport.seek->maximum(), 1000);
    EXPECT_FALSE(p.pane.transport.seek->isEnabled());
    EXPECT_FALSE(p.pane.transport.play->isEnabled());
    EXPECT_EQ(p.buttons(), std::vector<bool>(5, false));
}

TEST_F(PreviewPaneTest, BeginsEmpty) {
    const Pane p;
    expectEmpty(p);
    EXPECT_DOUBLE_EQ(p.pane.volumeValue(), 0.8);
    EXPECT_EQ(p.pane.fileButtons.favorite->text(), "收藏");
    EXPECT_EQ(p.pane.fileButtons.reveal->text(), "显示位置");
    EXPECT_EQ(p.pane.fileButtons.copy->text(), "复制文件");
    EXPECT_EQ(p.pane.fileButtons.open->text(), "外部打开");
    EXPECT_EQ(p.pane.fileButtons.rename->text(), "重命名");
    EXPECT_EQ(p.pane.transport.auto_->text(), "选中后自动试听");
    EXPECT_FALSE(p.pane.transport.auto_->isChecked());
}

TEST_F(PreviewPaneTest, ShowsTheIndexAtOnceAndTheFileWhenItIsKnown) {
    Pane p;
    p.pane.showAsset(sample("Take 2.WAV"), Favorite::Yes);
    EXPECT_EQ(p.pane.text.previewTitle->text(), "Take 2.WAV");
    EXPECT_EQ(p.pane.text.detail->text(), "音频 · WAV · 86.4 MB\n2026 秋日旅拍/同期声");
    EXPECT_EQ(p.pane.text.pathLabel->text(), "/run/media/lin/影像素材A/2026 秋日旅拍/同期声/Take 2.WAV");
    EXPECT_EQ(p.pane.fileButtons.favorite->text(), "已收藏");
    EXPECT_EQ(p.buttons(), (std::vector<bool>{true, false, false, false, false}));
    EXPECT_FALSE(p.pane.transport.play->isEnabled());
    p.pane.showFileState(FileState::Present);
    EXPECT_EQ(p.buttons(), std::vector<bool>(5, true));
    EXPECT_TRUE(p.pane.transport.play->isEnabled());
    EXPECT_FALSE(p.pane.transport.seek->isEnabled());
    EXPECT_EQ(p.pane.text.notice->text(), presentNotice);
    EXPECT_EQ(p.onCanvas(), p.pane.canvas.artwork) << "audio keeps the artwork";
    EXPECT_EQ(p.pane.canvas.artwork->mode(), "waveform");
}

TEST_F(PreviewPaneTest, AMissingFileLeavesOnlyTheFavourite) {
    Pane p;
    p.show("clip.MOV", FileState::Missing);
    EXPECT_EQ(p.buttons(), (std::vector<bool>{true, false, false, false, false}));
    EXPECT_FALSE(p.pane.transport.play->isEnabled());
    EXPECT_EQ(p.pane.text.notice->text(), "文件暂不可用：请连接素材硬盘；若文件已移动，请刷新索引。");
    EXPECT_EQ(p.onCanvas(), p.pane.canvas.artwork);
    EXPECT_EQ(p.pane.canvas.artwork->mode(), "film");
}

TEST_F(PreviewPaneTest, AVideoGetsThePlayerView) {
    Pane p;
    p.show("clip.MOV");
    EXPECT_EQ(p.onCanvas(), p.pane.canvas.playerView);
    EXPECT_TRUE(p.pane.transport.play->isEnabled());
}

TEST_F(PreviewPaneTest, APictureComesFromTheCacheOrLater) {
    Pane p;
    QImage picture(40, 30, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::green);
    p.show("a.JPG");
    EXPECT_EQ(p.pane.text.notice->text(), "正在准备图片预览…");
    EXPECT_EQ(p.onCanvas(), p.pane.canvas.artwork);
    p.pane.showPicture(picture);
    EXPECT_EQ(p.onCanvas(), p.pane.canvas.imageView);
    EXPECT_EQ(p.pane.text.notice->text(), "拖出原文件可复制或导入，图片预览不会修改原件。");
    EXPECT_FALSE(p.pane.transport.play->isEnabled());

    p.pane.showAsset(sample("b.JPG"), Favorite::No);
    EXPECT_EQ(p.onCanvas(), p.pane.canvas.artwork);
    EXPECT_TRUE(p.pane.canvas.imageView->picture().isNull()) << "the old picture is gone";
    p.pane.showFileState(FileState::Present, {picture, PictureCached::Seen});
    EXPECT_EQ(p.onCanvas(), p.pane.canvas.imageView);
    EXPECT_EQ(p.pane.text.notice->text(), presentNotice);

    p.pane.showAsset(sample("prepared.JPG"), Favorite::No);
    p.pane.showFileState(FileState::Present, {picture, PictureCached::Unseen});
    EXPECT_EQ(p.onCanvas(), p.pane.canvas.imageView);
    EXPECT_EQ(p.pane.text.notice->text(), "拖出原文件可复制或导入，图片预览不会修改原件。");

    p.show("c.JPG");
    p.pane.showPicture({});
    EXPECT_EQ(p.onCanvas(), p.pane.canvas.artwork);
    EXPECT_EQ(p.pane.text.notice->text(), "此图片格式无法内置预览，可点击“外部打开”。");
}

TEST_F(PreviewPaneTest, OtherKindsAreNeitherPlayedNorDecoded) {
    Pane p;
    p.show("look.cube");
    EXPECT_EQ(p.pane.text.notice->text(), "此素材可直接拖出、复制，或点击“外部打开”交给对应软件。");
    EXPECT_FALSE(p.pane.transport.play->isEnabled());
    EXPECT_EQ(p.buttons(), std::vector<bool>(5, true));
    EXPECT_EQ(p.pane.canvas.artwork->mode(), "doc");
}

TEST_F(PreviewPaneTest, AClipBecomesReadyRunsAndFails) {
    Pane p;
    p.show("a.wav");
    p.pane.showReady(-1);
    EXPECT_FALSE(p.pane.transport.seek->isEnabled()) << "no duration, no seeking";
    p.pane.showReady(3725);
    EXPECT_TRUE(p.pane.transport.seek->isEnabled());
    EXPECT_EQ(p.pane.transport.seek->maximum(), 3'725'000);
    EXPECT_EQ(p.pane.transport.time->text(), "0:00 / 62:05");
    p.pane.showClock(72.5, 3725);
    EXPECT_EQ(p.pane.transport.seek->value(), 72'500);
    EXPECT_EQ(p.pane.transport.time->text(), "1:12 / 62:05");
    p.pane.updatePlayButton(true);
    EXPECT_EQ(p.pane.transport.play->text(), "暂停");
    EXPECT_EQ(p.pane.transport.play->symbol(), "pause.fill");
    EXPECT_EQ(p.pane.transport.play->accessibleName(), "暂停");
    p.pane.updatePlayButton(false);
    EXPECT_EQ(p.pane.transport.play->text(), "播放");
    EXPECT_EQ(p.pane.transport.play->symbol(), "play.fill");
    p.pane.showUndecodable();
    EXPECT_FALSE(p.pane.transport.play->isEnabled());
    EXPECT_FALSE(p.pane.transport.seek->isEnabled());
    EXPECT_EQ(p.pane.text.notice->text(), "系统无法解码此素材，点击“外部打开”用其他播放器播放。");
    p.show("b.wav");
    EXPECT_EQ(p.pane.transport.seek->value(), 0);
    EXPECT_EQ(p.pane.transport.time->text(), "0:00 / 0:00");
}

TEST_F(PreviewPaneTest, ANoticeSetWhileTheFileIsAskedForStays) {
    Pane p;
    p.pane.showAsset(sample("a.wav"), Favorite::No);
    p.pane.setNotice(notices::manySelected(4));
    p.pane.showFileState(FileState::Present);
    EXPECT_EQ(p.pane.text.notice->text(), "已选择 4 个文件，可一起拖出或复制。");
    p.show("b.wav");
    EXPECT_EQ(p.pane.text.notice->text(), presentNotice);
}

TEST_F(PreviewPaneTest, AScanForbidsRenaming) {
    Pane p;
    p.pane.setScanning(Scanning::Yes);
    p.show("a.wav");
    EXPECT_EQ(p.buttons(), (std::vector<bool>{true, true, true, true, false}));
    p.pane.setScanning(Scanning::No);
    EXPECT_TRUE(p.pane.fileButtons.rename->isEnabled());
}

TEST_F(PreviewPaneTest, TheFavouriteButtonTellsItsState) {
    Pane p;
    p.pane.updateFavorite(Favorite::Yes);
    EXPECT_EQ(p.pane.fileButtons.favorite->text(), "已收藏");
    EXPECT_EQ(p.pane.fileButtons.favorite->symbol(), "star.fill");
    EXPECT_EQ(p.pane.fileButtons.favorite->accessibleName(), "已收藏");
    p.pane.updateFavorite(Favorite::No);
    EXPECT_EQ(p.pane.fileButtons.favorite->text(), "收藏");
    EXPECT_EQ(p.pane.fileButtons.favorite->symbol(), "star");
}

TEST_F(PreviewPaneTest, ClearingGoesBackToTheBeginning) {
    Pane p;
    p.show("a.MOV");
    p.pane.showReady(100);
    p.pane.showClock(10, 100);
    p.pane.clearPreview();
    expectEmpty(p);
    p.pane.showFileState(FileState::Present);
    expectEmpty(p);
}

TEST_F(PreviewPaneTest, OnlyTheUsersDoingIsReported) {
    Pane p;
    QSignalSpy seek(&p.pane, &PreviewPane::seekChanged);
    QSignalSpy volume(&p.pane, &PreviewPane::volumeChanged);
    QSignalSpy autoplay(&p.pane, &PreviewPane::autoChanged);
    p.show("a.wav");
    p.pane.showReady(100);
    p.pane.showClock(10, 100);
    p.pane.setAutoplay(true);
    p.pane.clearPreview();
    EXPECT_EQ(seek.count() + volume.count() + autoplay.count(), 0);

    p.show("a.wav");
    p.pane.showReady(100);
    QTest::keyClick(p.pane.transport.seek, Qt::Key_Right);
    ASSERT_EQ(seek.count(), 1);
    EXPECT_DOUBLE_EQ(seek[0][0].toDouble(), 1.0);
    QTest::keyClick(p.pane.transport.volume, Qt::Key_Left);
    ASSERT_EQ(volume.count(), 1);
    EXPECT_DOUBLE_EQ(volume[0][0].toDouble(), 0.75);
    EXPECT_EQ(p.pane.transport.volume->accessibleDescription(), "75%");
    QTest::keyClick(p.pane.transport.auto_, Qt::Key_Space);
    ASSERT_EQ(autoplay.count(), 1);
    EXPECT_FALSE(autoplay[0][0].toBool());
}

TEST_F(PreviewPaneTest, TheSliderStaysWhileTheUserHoldsIt) {
    Pane p;
    p.show("a.wav");
    p.pane.showReady(100);
    QSlider* seek = p.pane.transport.seek;
    QTest::mousePress(seek, Qt::LeftButton, Qt::NoModifier, {7, seek->height() / 2});
    QTest::mouseMove(seek, {seek->width() / 2, seek->height() / 2});
    const int held = seek->value();
    EXPECT_GT(held, 20'000);
    p.pane.showClock(3, 100);
    EXPECT_EQ(seek->value(), held);
    EXPECT_EQ(p.pane.transport.time->text(), "0:03 / 1:40");
    QTest::mouseRelease(seek, Qt::LeftButton, Qt::NoModifier, {seek->width() / 2, seek->height() / 2});
    p.pane.showClock(4, 100);
    EXPECT_EQ(seek->value(), 4000);
}

TEST_F(PreviewPaneTest, EveryButtonReportsItsRequest) {
    Pane p;
    p.show("a.wav");
    QStringList requests;
    const auto note = [&](const char* name) { return [&requests, name] { requests << name; }; };
    QObject::connect(&p.pane, &PreviewPane::playToggled, note("play"));
    QObject::connect(&p.pane, &PreviewPane::favoriteToggled, note("favorite"));
    QObject::connect(&p.pane, &PreviewPane::revealRequested, note("reveal"));
    QObject::connect(&p.pane, &PreviewPane::copyRequested, note("copy"));
    QObject::connect(&p.pane, &PreviewPane::openRequested, note("open"));
    QObject::connect(&p.pane, &PreviewPane::renameRequested, note("rename"));
    const auto& b = p.pane.fileButtons;
    for (PushButton* button : {p.pane.transport.play, b.favorite, b.reveal, b.copy, b.open, b.rename})
        QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(requests, (QStringList{"play", "favorite", "reveal", "copy", "open", "rename"}));
}

TEST_F(PreviewPaneTest, AccessibleNamesAreSet) {
    const Pane p;
    EXPECT_EQ(p.pane.text.pathLabel->accessibleName(), "素材完整路径");
    EXPECT_EQ(p.pane.transport.seek->accessibleName(), "播放位置");
    EXPECT_EQ(p.pane.transport.seek->accessibleDescription(), "0:00 / 0:00");
    EXPECT_EQ(p.pane.transport.volume->accessibleName(), "音量");
    EXPECT_EQ(p.pane.transport.volume->accessibleDescription(), "80%");
    EXPECT_EQ(p.pane.canvas.artwork->parentWidget()->accessibleName(), "素材预览");
}

TEST_F(PreviewPaneTest, TheCanvasGivesWayAndTheButtonsStayInView) {
    const struct {
        int width;
        int height;
        int canvas;
        int pathLines;
    } sizes[] = {{384, 688, 220, 2}, {349, 548, 153, 2}, {349, 498, 126, 1}, {349, 400, 120, 1}};
    for (const auto& size : sizes) {
        Pane p(size.width, size.height);
        p.show("Take 2.WAV");
        EXPECT_TRUE(waitUntil([&] { return p.onCanvas()->height() == size.canvas; }))
            << size.height << ": " << p.onCanvas()->height();
        EXPECT_EQ(p.pane.text.pathLabel->maximumLines(), size.pathLines) << size.height;
        const bool scrolls = p.pane.findChild<QScrollArea*>()->verticalScrollBar()->maximum() > 0;
        EXPECT_EQ(scrolls, size.height < 450) << size.height;
        const QPushButton* rename = p.pane.fileButtons.rename;
        if (!scrolls) {
            EXPECT_LE(rename->mapTo(&p.pane, rename->rect().bottomLeft()).y(), size.height - 57);
        }
    }
}

TEST_F(PreviewPaneTest, FileButtonsStandInThreeEqualColumns) {
    Pane p;
    p.show("a.wav");
    const auto& b = p.pane.fileButtons;
    EXPECT_EQ(b.favorite->size(), QSize(112, 32));
    for (const PushButton* button : {b.reveal, b.copy, b.open, b.rename})
        EXPECT_EQ(button->size(), b.favorite->size());
    EXPECT_EQ(b.open->y() - b.favorite->y(), 40);
    EXPECT_EQ(p.pane.transport.play->size(), QSize(88, 32));
}

TEST_F(PreviewPaneTest, AKeyboardUserKeepsTheButtonWhileTheFileIsAskedFor) {
    Pane p;
    p.show("a.wav");
    p.pane.activateWindow();
    p.pane.fileButtons.open->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(waitUntil([&] { return p.pane.fileButtons.open->hasFocus(); }));
    p.pane.showAsset(sample("b.wav"), Favorite::No);
    p.pane.showFileState(FileState::Present);
    EXPECT_TRUE(p.pane.fileButtons.open->hasFocus());
}

TEST_F(PreviewPaneTest, PaintingIsHeldOnlyForAMoment) {
    Pane p;
    p.pane.showAsset(sample("a.wav"), Favorite::No);
    EXPECT_FALSE(p.pane.updatesEnabled());
    EXPECT_TRUE(waitUntil([&] { return p.pane.updatesEnabled(); }, 5)) << "a drive that does not answer";
    p.pane.showAsset(sample("b.wav"), Favorite::No);
    p.pane.showFileState(FileState::Present);
    EXPECT_TRUE(p.pane.updatesEnabled());
}

TEST_F(PreviewPaneTest, PicturesAreLetterboxedOnBlack) {
    PictureView view;
    view.resize(352, 220);
    QImage square(1000, 1000, QImage::Format_ARGB32_Premultiplied);
    square.fill(Qt::green);
    view.setPicture(square);
    const QImage shown = view.grab().toImage();
    EXPECT_EQ(shown.pixelColor(176, 110), QColor(Qt::green));
    EXPECT_EQ(shown.pixelColor(176, 3), QColor(Qt::green));
    EXPECT_EQ(shown.pixelColor(30, 110), QColor(Qt::black));
    QImage tiny(16, 16, QImage::Format_ARGB32_Premultiplied);
    tiny.fill(Qt::green);
    view.setPicture(tiny);
    EXPECT_EQ(view.grab().toImage().pixelColor(176, 90), QColor(Qt::black)) << "never enlarged";
}

}  // namespace
}  // namespace morvane::test
