// The open panel on a window: real folders, keys and clicks.
#include "organizer_ui/open_panel.h"

#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTest>
#include <QWidget>
#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/theme/elided_label.h"
#include "app/theme/push_button.h"
#include "app/theme/sheet.h"
#include "organizer_ui/folder_browser.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using test::waitUntil;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class OpenPanel : public testing::Test {
protected:
    OpenPanel() {
        test::makeTree(folder_.path(),
                       {{"卡 A/PRIVATE/x.mp4", "x"}, {"素材/b.mov", "22"}, {"a.mov", "1"}, {"c.mov", "333"}});
        window_.resize(1100, 700);
        window_.show();
    }

    void present(Choosable choosable, BrowseRules::Count count,
                 BrowseRules::NewFolders newFolders = BrowseRules::NewFolders::no) {
        OpenPanelRequest request;
        request.message = "说明";
        request.prompt = "选择";
        request.rules = {choosable, count, newFolders};
        request.startFolder = folder_.path();
        presentOpenPanel(&window_, request, queue_, [this](const std::vector<FileUrl>& urls) {
            chosen_.emplace();
            for (const FileUrl& url : urls)
                chosen_->push_back(url.path + (url.isDirectory ? "/" : ""));
        });
        ASSERT_NE(sheet(), nullptr);
        ASSERT_TRUE(settled());
    }
    Sheet* sheet() { return window_.findChild<Sheet*>(); }
    FolderBrowser* browser() { return sheet()->findChild<FolderBrowser*>(); }
    QListView* entries() { return sheet()->findChild<QListView*>(QStringLiteral("entries")); }
    QLineEdit* pathField() { return sheet()->findChild<QLineEdit*>(QStringLiteral("pathField")); }
    template <class Widget>
    Widget* part(const char* name) {
        return sheet()->findChild<Widget*>(QLatin1String(name));
    }
    PushButton* confirm() { return sheet()->button(0); }
    bool settled() {
        return waitUntil([this] { return !browser()->isLoading(); });
    }
    bool gone() {
        return waitUntil([this] { return sheet() == nullptr; });
    }
    /// Replaces the path as a user does, by an input method or a paste.
    void typePath(const std::string& path) {
        pathField()->setFocus();
        pathField()->selectAll();
        pathField()->insert(QString::fromStdString(path));
    }
    QString statusText() { return part<ElidedLabel>("browserStatus")->text(); }
    QModelIndex row(const QString& name) {
        for (int i = 0; i < entries()->model()->rowCount(); ++i)
            if (entries()->model()->index(i, 0).data().toString() == name)
                return entries()->model()->index(i, 0);
        return {};
    }
    void click(const QModelIndex& index, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(entries()->viewport(), Qt::LeftButton, modifiers,
                          entries()->visualRect(index).center());
    }
    void doubleClick(const QModelIndex& index) {
        click(index);
        QTest::mouseDClick(entries()->viewport(), Qt::LeftButton, {}, entries()->visualRect(index).center());
    }

    test::TemporaryFolder folder_;
    SerialQueue queue_{"test.browse"};
    QWidget window_;
    std::optional<std::vector<std::string>> chosen_;
};

TEST_F(OpenPanel, TakesFilesAndFoldersTogether) {
    present(Choosable::filesAndFolders, BrowseRules::Count::several);
    EXPECT_EQ(sheet()->content().message, QStringLiteral("说明"));
    EXPECT_EQ(confirm()->text(), QStringLiteral("选择"));
    click(row(QStringLiteral("卡 A")));
    click(row(QStringLiteral("a.mov")), Qt::ControlModifier);
    click(row(QStringLiteral("c.mov")), Qt::ControlModifier);
    confirm()->click();
    ASSERT_TRUE(chosen_);
    EXPECT_THAT(*chosen_, UnorderedElementsAre(folder_ / "卡 A/", folder_ / "a.mov", folder_ / "c.mov"));
    EXPECT_TRUE(gone());
}

TEST_F(OpenPanel, WithNothingSelectedMeansTheFolderOnScreen) {
    present(Choosable::filesAndFolders, BrowseRules::Count::several);
    EXPECT_TRUE(confirm()->isEnabled());
    confirm()->click();
    ASSERT_TRUE(chosen_);
    EXPECT_THAT(*chosen_, ElementsAre(folder_.path() + "/"));
}

TEST_F(OpenPanel, OpensFoldersAndGoesUpByKeyboard) {
    present(Choosable::filesAndFolders, BrowseRules::Count::several);
    entries()->setCurrentIndex(row(QStringLiteral("素材")));
    QTest::keyClick(entries(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([this] { return browser()->folder() == folder_ / "素材"; }));
    EXPECT_FALSE(chosen_) << "Return on a folder enters it";
    EXPECT_EQ(pathField()->text().toStdString(), folder_ / "素材");
    QTest::keyClick(entries(), Qt::Key_Backspace);
    ASSERT_TRUE(waitUntil([this] { return browser()->folder() == folder_.path(); }));
    QTest::keyClick(entries(), Qt::Key_Up, Qt::AltModifier);
    ASSERT_TRUE(waitUntil([this] { return browser()->folder() != folder_.path(); }));
    part<QPushButton>("upButton")->click();
    EXPECT_TRUE(settled());
}

TEST_F(OpenPanel, GoesWhereThePathSays) {
    present(Choosable::filesAndFolders, BrowseRules::Count::several);
    pathField()->setText(QString::fromStdString(folder_ / "素材/b.mov"));
    QTest::keyClick(pathField(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([this] { return browser()->folder() == folder_ / "素材"; }));
    ASSERT_NE(sheet(), nullptr) << "Return in the path does not confirm";
    confirm()->click();
    ASSERT_TRUE(chosen_);
    EXPECT_THAT(*chosen_, ElementsAre(folder_ / "素材/b.mov"));
}

TEST_F(OpenPanel, StaysWhereItIsWhenThePathIsWrong) {
    present(Choosable::filesAndFolders, BrowseRules::Count::several);
    pathField()->setText(QStringLiteral("没有这个"));
    QTest::keyClick(pathField(), Qt::Key_Enter);
    ASSERT_TRUE(settled());
    EXPECT_EQ(browser()->folder(), folder_.path());
    EXPECT_EQ(statusText().toStdString(), "找不到此位置：" + folder_ / "没有这个");
    EXPECT_TRUE(browser()->chosen().empty()) << "the folder on screen is not what was asked for";
    confirm()->click();
    ASSERT_TRUE(settled());
    ASSERT_NE(sheet(), nullptr);
    EXPECT_FALSE(chosen_);
    click(row(QStringLiteral("素材")));
    EXPECT_EQ(statusText(), QStringLiteral("已选 1 项"));
    confirm()->click();
    ASSERT_TRUE(chosen_);
    EXPECT_THAT(*chosen_, ElementsAre(folder_ / "素材/"));
}

TEST_F(OpenPanel, ConfirmsTheTypedFolder) {
    present(Choosable::folders, BrowseRules::Count::one);
    typePath(folder_ / "素材");
    confirm()->click();
    EXPECT_FALSE(chosen_) << "the place is looked at first";
    EXPECT_TRUE(gone());
    ASSERT_TRUE(chosen_);
    EXPECT_THAT(*chosen_, ElementsAre(folder_ / "素材/"));
}

TEST_F(OpenPanel, ConfirmsTheTypedFile) {
    present(Choosable::files, BrowseRules::Count::one);
    EXPECT_FALSE(confirm()->isEnabled());
    typePath(folder_ / "素材/b.mov");
    EXPECT_TRUE(confirm()->isEnabled());
    confirm()->click();
    EXPECT_TRUE(gone());
    ASSERT_TRUE(chosen_);
    EXPECT_THAT(*chosen_, ElementsAre(folder_ / "素材/b.mov"));
}

TEST_F(OpenPanel, StaysOpenWhereTheTypedPathCannotBeChosen) {
    present(Choosable::folders, BrowseRules::Count::one);
    typePath(folder_ / "素材/b.mov");
    confirm()->click();
    ASSERT_TRUE(settled());
    ASSERT_NE(sheet(), nullptr) << "a file is no answer, and its folder was not asked for";
    EXPECT_EQ(browser()->folder(), folder_ / "素材");
    typePath(folder_ / "nowhere");
    confirm()->click();
    ASSERT_TRUE(settled());
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(statusText().toStdString(), "找不到此位置：" + folder_ / "nowhere");
    EXPECT_EQ(pathField()->text().toStdString(), folder_ / "nowhere");
    typePath(folder_.path());
    confirm()->click();
    EXPECT_TRUE(gone());
    ASSERT_TRUE(chosen_);
    EXPECT_THAT(*chosen_, ElementsAre(folder_.path() + "/"));
}

TEST_F(OpenPanel, ANewerEditWithdrawsTheWishToConfirm) {
    present(Choosable::folders, BrowseRules::Count::one);
    std::mutex disk;
    disk.lock();
    queue_.post([&disk] { const std::lock_guard<std::mutex> wait(disk); });
    typePath(folder_ / "素材");
    confirm()->click();
    EXPECT_TRUE(browser()->isLoading());
    QTest::keyClicks(pathField(), QStringLiteral("x"));
    disk.unlock();
    ASSERT_TRUE(settled());
    ASSERT_NE(sheet(), nullptr);
    EXPECT_FALSE(chosen_);
    EXPECT_EQ(pathField()->text().toStdString(), folder_ / "素材x") << "what is being typed stays";
    QTest::keyClick(pathField(), Qt::Key_Backspace);
    confirm()->click();
    ASSERT_TRUE(chosen_) << "that folder is on screen by now";
    EXPECT_THAT(*chosen_, ElementsAre(folder_ / "素材/"));
}

TEST_F(OpenPanel, ASelectedEntryReplacesTheTypedPath) {
    present(Choosable::filesAndFolders, BrowseRules::Count::several);
    typePath(folder_ / "素材");
    click(row(QStringLiteral("a.mov")));
    EXPECT_EQ(pathField()->text().toStdString(), folder_.path());
    confirm()->click();
    ASSERT_TRUE(chosen_);
    EXPECT_THAT(*chosen_, ElementsAre(folder_ / "a.mov"));
}

TEST_F(OpenPanel, DoubleClickOnAFileChoosesIt) {
    present(Choosable::files, BrowseRules::Count::one);
    EXPECT_FALSE(confirm()->isEnabled()) << "a folder is no answer here";
    click(row(QStringLiteral("素材")));
    EXPECT_FALSE(confirm()->isEnabled());
    doubleClick(row(QStringLiteral("a.mov")));
    ASSERT_TRUE(chosen_);
    EXPECT_THAT(*chosen_, ElementsAre(folder_ / "a.mov"));
}

TEST_F(OpenPanel, OfFoldersLeavesFilesOut) {
    present(Choosable::folders, BrowseRules::Count::one);
    click(row(QStringLiteral("a.mov")));
    EXPECT_FALSE(entries()->selectionModel()->hasSelection());
    click(row(QStringLiteral("素材")));
    confirm()->click();
    ASSERT_TRUE(chosen_);
    EXPECT_THAT(*chosen_, ElementsAre(folder_ / "素材/"));
}

TEST_F(OpenPanel, MakesFoldersWhereAllowed) {
    present(Choosable::folders, BrowseRules::Count::one, BrowseRules::NewFolders::allowed);
    auto* name = part<QLineEdit>("folderNameField");
    part<QPushButton>("newFolderButton")->click();
    EXPECT_TRUE(name->isVisible());
    name->setText(QStringLiteral("素材"));
    QTest::keyClick(name, Qt::Key_Return);
    ASSERT_TRUE(waitUntil(
        [this] { return part<ElidedLabel>("browserStatus")->text() == QStringLiteral("已存在同名项目。"); }));
    EXPECT_EQ(browser()->folder(), folder_.path());
    EXPECT_FALSE(confirm()->isEnabled()) << "an error is shown";
    QTest::keyClick(name, Qt::Key_Escape);
    EXPECT_TRUE(confirm()->isEnabled());
    EXPECT_FALSE(name->isVisible());
    ASSERT_NE(sheet(), nullptr) << "Esc only left the name";
    part<QPushButton>("newFolderButton")->click();
    name->setText(QStringLiteral(" 新 项目 "));
    QTest::keyClick(name, Qt::Key_Return);
    ASSERT_TRUE(
        waitUntil([this] { return browser()->folder() == folder_ / "新 项目" && !browser()->isLoading(); }));
    confirm()->click();
    ASSERT_TRUE(chosen_);
    EXPECT_THAT(*chosen_, ElementsAre(folder_ / "新 项目/"));
}

TEST_F(OpenPanel, EscapeChangesNothing) {
    present(Choosable::filesAndFolders, BrowseRules::Count::several);
    QTest::keyClick(entries(), Qt::Key_Escape);
    EXPECT_TRUE(gone());
    EXPECT_FALSE(chosen_);
}

TEST_F(OpenPanel, StaysUsableWhileADiskIsSlow) {
    // A queue that is busy stands for a disk that does not answer.
    std::mutex disk;
    disk.lock();
    queue_.post([&disk] { const std::lock_guard<std::mutex> wait(disk); });
    OpenPanelRequest request;
    request.message = "说明";
    request.prompt = "选择";
    request.startFolder = folder_.path();
    presentOpenPanel(&window_, request, queue_, [this](const auto& urls) { chosen_.emplace(urls.size()); });
    EXPECT_TRUE(browser()->isLoading());
    EXPECT_FALSE(confirm()->isEnabled()) << "nothing is known of the folder yet";
    browser()->browse(folder_ / "素材");
    EXPECT_TRUE(browser()->isLoading());
    disk.unlock();
    ASSERT_TRUE(settled());
    EXPECT_EQ(browser()->folder(), folder_ / "素材") << "the answer to the older wish is dropped";
    QTest::keyClick(entries(), Qt::Key_Escape);
    EXPECT_TRUE(gone());
}

TEST_F(OpenPanel, GoesAwayWhileADiskIsSlow) {
    std::mutex disk;
    disk.lock();
    queue_.post([&disk] { const std::lock_guard<std::mutex> wait(disk); });
    OpenPanelRequest request;
    request.message = "说明";
    request.prompt = "选择";
    presentOpenPanel(&window_, request, queue_, [](const auto&) { FAIL(); });
    QTest::keyClick(entries(), Qt::Key_Escape);
    EXPECT_TRUE(gone());
    disk.unlock();
    queue_.drain();
}

}  // namespace
}  // namespace morvane
