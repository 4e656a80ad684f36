// The controller from its making to the first list: initial values, the start-up sequence and what
// follows the catalog's load.
#include <QCheckBox>
#include <QLabel>
#include <QSlider>
#include <QTreeView>

#include <sqlite3.h>

#include <gmock/gmock.h>

#include "app/theme/artwork.h"
#include "app/theme/elided_label.h"
#include "app/theme/file_table.h"
#include "app/theme/keyboard_window.h"
#include "app/theme/push_button.h"
#include "app/theme/search_field.h"
#include "app/theme/segmented_control.h"
#include "library_ui/empty_list.h"
#include "library_ui/picture_view.h"
#include "organizer_ui/project_organizer_view.h"
#include "tests/app/controller_fixture.h"

namespace morvane {
namespace {

using test::waitUntil;
using testing::ElementsAre;
using testing::IsEmpty;

class Start : public test::ControllerTest {};

/// One field of the described table, by number, with the check of its initial value.
struct Field {
    int number;
    const char* name;
    std::function<bool(Controller&)> holdsInitialValue;
};

QStringList labels(const SegmentedControl& control) {
    QStringList list;
    for (int segment = 0; segment < control.count(); ++segment)
        list.append(control.label(segment));
    return list;
}

bool isSlider(const QSlider& slider, int value, int maximum) {
    return slider.minimum() == 0 && slider.value() == value && slider.maximum() == maximum;
}

const std::vector<Field> fields = {
    {1, "window", [](Controller& c) { return c.frame().window() == nullptr; }},
    {2, "catalog", [](Controller& c) { return c.index().catalog().database() == nullptr; }},
    {3, "catalogQueue",
     [](Controller& c) { return c.index().catalogQueue().label() == "com.morvane.library.catalog"; }},
    {4, "filterGeneration", [](Controller& c) { return c.filter().filterGeneration() == 0; }},
    {5, "categoryGeneration", [](Controller& c) { return c.categoryTree().categoryGeneration() == 0; }},
    {6, "categoryQueue",
     [](Controller& c) {
         return c.categoryTree().categoryQueue().label() == "com.morvane.library.categories";
     }},
    {7, "workspaceControl",
     [](Controller& c) {
         const SegmentedControl& control = c.frame().workspaceControl();
         return labels(control) == QStringList{"管理素材", "整理素材"} && control.selectedSegment() == 0;
     }},
    {8, "workspaceHost",
     [](Controller& c) { return c.frame().workspaceHost().findChildren<QWidget*>().isEmpty(); }},
    {9, "managementView", [](Controller& c) { return c.libraryView().managementView() == nullptr; }},
    {10, "organizerView", [](Controller& c) { return c.organizerView() == nullptr; }},
    {11, "addFolderButton", [](Controller& c) { return c.frame().addFolderButton() == nullptr; }},
    {12, "table", [](Controller& c) { return c.libraryView().table().model()->rowCount() == 0; }},
    {13, "outline", [](Controller& c) { return c.libraryView().outline().model()->rowCount() == 0; }},
    {14, "search", [](Controller& c) { return c.frame().search().text().isEmpty(); }},
    {15, "kindControl",
     [](Controller& c) {
         return labels(c.libraryView().kindControl()) == QStringList{"全部", "音频", "视频", "图片", "其他"};
     }},
    {16, "status", [](Controller& c) { return c.frame().status().text() == "正在读取素材库…"; }},
    {17, "resultCount", [](Controller& c) { return c.libraryView().resultCount().text().isEmpty(); }},
    {18, "previewTitle",
     [](Controller& c) { return c.previewPane().text.previewTitle->text() == "选择一个素材"; }},
    {19, "detail",
     [](Controller& c) {
         return c.previewPane().text.detail->text() == "支持音频试听、视频试看和图片预览。";
     }},
    {20, "pathLabel", [](Controller& c) { return c.previewPane().text.pathLabel->text().isEmpty(); }},
    {21, "notice",
     [](Controller& c) {
         return c.previewPane().text.notice->text() == "从列表拖出文件，即可复制到其他文件夹或导入剪辑软件。";
     }},
    {22, "playerView", [](Controller& c) { return c.previewPane().canvas.playerView != nullptr; }},
    {23, "artwork", [](Controller& c) { return c.previewPane().canvas.artwork->mode() == "waveform"; }},
    {24, "imageView", [](Controller& c) { return c.previewPane().canvas.imageView != nullptr; }},
    {25, "play", [](Controller& c) { return c.previewPane().transport.play->text() == "播放"; }},
    {26, "time", [](Controller& c) { return c.previewPane().transport.time->text() == "0:00 / 0:00"; }},
    {27, "seek", [](Controller& c) { return isSlider(*c.previewPane().transport.seek, 0, 1000); }},
    {28, "volume", [](Controller& c) { return isSlider(*c.previewPane().transport.volume, 800, 1000); }},
    {29, "favorite", [](Controller& c) { return c.previewPane().fileButtons.favorite->text() == "收藏"; }},
    {30, "reveal", [](Controller& c) { return c.previewPane().fileButtons.reveal->text() == "显示位置"; }},
    {31, "copy", [](Controller& c) { return c.previewPane().fileButtons.copy->text() == "复制文件"; }},
    {32, "open", [](Controller& c) { return c.previewPane().fileButtons.open->text() == "外部打开"; }},
    {33, "rename", [](Controller& c) { return c.previewPane().fileButtons.rename->text() == "重命名"; }},
    {34, "auto", [](Controller& c) { return c.previewPane().transport.auto_->text() == "选中后自动试听"; }},
    {35, "refreshButton", [](Controller& c) { return c.frame().refreshButton().text() == "刷新索引"; }},
    {36, "assets", [](Controller& c) { return c.index().assets()->empty(); }},
    {37, "filtered", [](Controller& c) { return c.filter().filtered().size() == 0; }},
    {38, "keys", [](Controller& c) { return c.index().keys()->size() == 0; }},
    {39, "categories", [](Controller& c) { return c.categoryTree().categories().empty(); }},
    {40, "filterKey", [](Controller& c) { return c.filter().filterKey() == "all"; }},
    {41, "settings", [](Controller& c) { return c.settings() == Settings{}; }},
    {42, "player", [](Controller& c) { return !c.playback().hasPlayer(); }},
    // The three observers exist only beside a player.
    {43, "observer", [](Controller& c) { return !c.playback().hasPlayer(); }},
    {44, "failureObservation", [](Controller& c) { return !c.playback().hasPlayer(); }},
    {45, "endToken", [](Controller& c) { return !c.playback().hasPlayer(); }},
    {46, "selected", [](Controller& c) { return !c.selected(); }},
    {47, "scanning", [](Controller& c) { return !c.index().scanning(); }},
    {48, "pendingScan", [](Controller& c) { return !c.index().pendingScan(); }},
    {49, "scanSummary", [](Controller& c) { return c.index().scanSummary().empty(); }},
    {50, "catalogRecovery", [](Controller& c) { return !c.index().catalogRecovery(); }},
    {51, "queryWork", [](Controller& c) { return !c.filter().hasQueryWork(); }},
    {52, "thumbnailQueue",
     [](Controller& c) {
         return c.thumbnails().thumbnailQueue().label() == "com.morvane.library.thumbnails";
     }},
    {53, "thumbnails", [](Controller& c) { return c.thumbnails().cached(Asset{}).isNull(); }},
    {54, "suppressSelection", [](Controller& c) { return !c.libraryView().suppressSelection(); }},
    {55, "store", [](Controller& c) { return c.store().ends_with("/LumvexAssetLibrary"); }},
};

TEST_F(Start, EveryFieldHasItsInitialValue) {
    Controller& controller = make();
    ASSERT_EQ(fields.size(), 55U);
    for (std::size_t index = 0; index < fields.size(); ++index) {
        EXPECT_EQ(fields[index].number, static_cast<int>(index) + 1);
        EXPECT_TRUE(fields[index].holdsInitialValue(controller)) << fields[index].name;
    }
    EXPECT_EQ(controller.store(), store_);
    EXPECT_TRUE(std::filesystem::is_directory(store_));
    EXPECT_THAT(test::listTree(store_), IsEmpty());
}

TEST_F(Start, AFirstStartAsksForAFolderAndScansNothing) {
    Controller& controller = start();
    EXPECT_EQ(status(), "添加素材文件夹开始管理，或切换到整理素材新建拍摄项目。");
    EXPECT_EQ(controller.index().scanSummary(), "0 个素材文件夹 · 0 个素材");
    EXPECT_EQ(controller.thumbnails().costLimit(), 67'108'864);
    EXPECT_EQ(controller.libraryView().resultCount().text(), "0 项");
    EXPECT_THAT(topCategories(), ElementsAre("全部素材 0", "我的收藏 0", "最近使用 0"));
    EXPECT_TRUE(controller.libraryView().isVisible());
    EXPECT_FALSE(controller.organizerView()->isVisible());
    stop();
    // Nothing was changed, so no settings were written.
    EXPECT_FALSE(std::filesystem::exists(store_ + "/settings.json"));
}

TEST_F(Start, FoldersWithAnEmptyCatalogAreIndexedAtOnce) {
    Controller& controller = startWithMedia();
    EXPECT_THAT(listed(), ElementsAre("clip.mov", "still.png", "Take 2.wav", "Take 10.wav"));
    EXPECT_EQ(status(), "1 个素材文件夹 · 4 个素材");
    EXPECT_THAT(topCategories(), ElementsAre("全部素材 4", "我的收藏 0", "最近使用 0", "media 4"));
    EXPECT_EQ(controller.settings().pendingRefresh, false);
    EXPECT_FALSE(controller.index().catalogRecovery());
    stop();
    EXPECT_EQ(storedSettings().pendingRefresh, false);
}

TEST_F(Start, NothingIsCalledMissingWhileTheFirstIndexIsBuilt) {
    std::filesystem::create_directories(media_);
    Controller& controller = start();
    const auto* empty = controller.libraryView().findChild<EmptyList*>();
    EXPECT_EQ(empty->state(), EmptyState::FirstStart);
    controller.organizerView()->onProjectCreated(folderLocation(media_));
    ASSERT_TRUE(controller.index().scanning());
    EXPECT_EQ(empty->state(), EmptyState::None);
    controller.frame().search().setText("word");
    waitForRefresh();
    EXPECT_TRUE(waitUntil([&] { return empty->state() == EmptyState::NoResult; }))
        << "the folder holds nothing";
    controller.frame().search().clear();
    EXPECT_TRUE(waitUntil([&] { return empty->state() == EmptyState::NoResultBare; }));

    test::writeFile(media_ + "/a.wav", "a");
    controller.refresh();
    EXPECT_EQ(empty->state(), EmptyState::None);
    waitForRefresh();
    EXPECT_EQ(empty->state(), EmptyState::None);
    EXPECT_THAT(listed(), ElementsAre("a.wav"));
}

TEST_F(Start, AFullCatalogIsShownWithoutAScan) {
    startWithMedia();
    stop();
    test::writeFile(media_ + "/new.mov", "not seen before the next refresh");
    start();
    EXPECT_EQ(listed().size(), 4U);
    EXPECT_EQ(status(), "1 个素材文件夹 · 4 个素材");
    controller_->refresh();
    waitForRefresh();
    EXPECT_TRUE(waitUntil([this] { return listed().size() == 5; }));
}

TEST_F(Start, APendingRefreshIsDoneAgain) {
    startWithMedia();
    stop();
    test::writeFile(media_ + "/new.mov", "1");
    Settings settings = storedSettings();
    settings.pendingRefresh = true;
    saveStoredSettings(settings);
    start();
    EXPECT_TRUE(waitUntil([this] { return listed().size() == 5; }));
    stop();
    EXPECT_EQ(storedSettings().pendingRefresh, false);
}

TEST_F(Start, SpoiltSettingsMeanTheInitialOnesAndTheFileStays) {
    test::writeFile(store_ + "/settings.json", "{\"roots\":[\"/x\"]}");
    EXPECT_EQ(start().settings(), Settings{});
    stop();
    EXPECT_EQ(test::readAll(store_ + "/settings.json"), "{\"roots\":[\"/x\"]}");
}

class Recovery : public Start {
protected:
    void makeNewerCatalog() {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open((store_ + "/catalog.sqlite").c_str(), &database), SQLITE_OK);
        ASSERT_EQ(
            sqlite3_exec(database, "CREATE TABLE t(x); PRAGMA user_version=2", nullptr, nullptr, nullptr),
            SQLITE_OK);
        sqlite3_close(database);
    }
    void prepare() {
        makeMedia();
        Settings settings;
        settings.roots = {media_};
        saveStoredSettings(settings);
        makeNewerCatalog();
        test::writeFile(store_ + "/index.json",
                        "[{\"path\":\"" + media_ + "/Take 2.wav\",\"root\":\"" + media_ +
                            "\",\"relative\":\"Take 2.wav\",\"size\":1,\"modified\":1.5}]");
    }
};

TEST_F(Recovery, ShowsTheOlderIndexAndSaysSo) {
    prepare();
    const std::string before = test::readAll(store_ + "/catalog.sqlite");
    Controller& controller = start();
    EXPECT_TRUE(controller.index().catalogRecovery());
    EXPECT_THAT(listed(), ElementsAre("Take 2.wav"));
    EXPECT_EQ(status(), "索引暂时无法保存，已保留旧副本。可继续浏览，稍后重试。");
    EXPECT_EQ(controller.index().scanSummary(), "1 个素材文件夹 · 1 个素材 · 索引恢复模式，旧副本已保留");
    EXPECT_EQ(controller.frame().statusGlyph(), StatusGlyph::Warning);
    EXPECT_EQ(test::readAll(store_ + "/catalog.sqlite"), before);
}

TEST_F(Recovery, AFailedSaveKeepsItAndAGoodOneEndsIt) {
    prepare();
    Controller& controller = start();
    controller.refresh();
    waitForRefresh();
    EXPECT_EQ(status(), "1 个素材文件夹 · 4 个素材 · 索引保存失败，本次使用内存结果，请刷新重试");
    EXPECT_TRUE(controller.index().catalogRecovery());
    EXPECT_EQ(controller.settings().pendingRefresh, true);

    std::filesystem::remove(store_ + "/catalog.sqlite");
    controller.refresh();
    waitForRefresh();
    EXPECT_EQ(status(), "1 个素材文件夹 · 4 个素材");
    EXPECT_FALSE(controller.index().catalogRecovery());
    EXPECT_EQ(controller.frame().statusGlyph(), StatusGlyph::None);
    EXPECT_EQ(controller.settings().pendingRefresh, false);
}

TEST_F(Start, TheLooksOfTheWindowAreRememberedApart) {
    Controller& controller = start();
    controller.frame().window()->resize(1210, 760);
    stop();
    EXPECT_TRUE(std::filesystem::exists(store_ + "/ui-state.json"));
    EXPECT_FALSE(std::filesystem::exists(store_ + "/settings.json"));
    make().applicationDidFinishLaunching();
    // The platform may move a window onto its screen; the stored layout is what comes back.
    EXPECT_EQ(loadUiState(store_).layout, controller_->libraryView().libraryLayout());
    EXPECT_NE(loadUiState(store_).geometry, "");
}

}  // namespace
}  // namespace morvane
