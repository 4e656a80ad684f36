#include "library_ui/asset_actions.h"

#include "tests/test_support.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMimeData>
#include <QSignalSpy>
#include <QUrl>

namespace morvane::test {
namespace {

using Paths = std::vector<std::string>;

/// Stands in for the desktop: takes the file URLs that are to be opened.
class Opener : public QObject {
    Q_OBJECT
public:
    Opener() { QDesktopServices::setUrlHandler("file", this, "open"); }
    ~Opener() override { QDesktopServices::unsetUrlHandler("file"); }
    QList<QUrl> opened;
    Q_INVOKABLE void open(const QUrl& url) { opened << url; }
};

struct Fixture {
    TemporaryFolder folder;
    FileChecker checker;
    AssetActions actions{checker};
    QSignalSpy status{&actions, &AssetActions::statusText};
    std::vector<Paths> used;

    Fixture() {
        makeTree(folder.path(), {{"1 %.wav", "x"}, {"二.mov", "y"}});
        QGuiApplication::clipboard()->setText("before");
        QObject::connect(&actions, &AssetActions::used,
                         [this](const Paths& paths) { used.push_back(paths); });
    }
    FileRef ref(const std::string& name) const { return {folder / name, folder.path()}; }
    /// Lets every question asked so far be answered.
    void settle() {
        bool done = false;
        checker.findExisting({ref("1 %.wav")}, &checker, [&](const Paths&) { done = true; });
        EXPECT_TRUE(waitUntil([&] { return done; }));
    }
};

TEST(FileMimeData, HoldsEveryFormFileManagersPasteFrom) {
    const auto data = fileMimeData({"/r/a b.wav", "/r/二#1.mov"});
    EXPECT_EQ(data->data("text/uri-list"), "file:///r/a%20b.wav\r\nfile:///r/%E4%BA%8C%231.mov\r\n");
    EXPECT_EQ(data->data("x-special/gnome-copied-files"),
              "copy\nfile:///r/a%20b.wav\nfile:///r/%E4%BA%8C%231.mov");
    EXPECT_EQ(data->data("application/x-kde-cutselection"), "0");
    EXPECT_EQ(data->text(), "/r/a b.wav\n/r/二#1.mov");
    EXPECT_EQ(data->urls().size(), 2);
    EXPECT_EQ(dragMimeData({"/r/a b.wav"})->formats(), QStringList{"text/uri-list"});
}

TEST(AssetActions, CopyTakesTheExistingFilesAndSaysHowMany) {
    Fixture f;
    f.actions.copyFiles({f.ref("二.mov"), f.ref("gone.mov"), f.ref("1 %.wav")});
    ASSERT_TRUE(waitUntil([&] { return f.status.count() == 1; }));
    EXPECT_EQ(f.status[0][0].toString(), "已复制 2 个文件 · 在 Finder 中按 ⌘V 粘贴");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(),
              f.folder / "二.mov\n" + (f.folder / "1 %.wav"));
    EXPECT_TRUE(f.used.empty()) << "copying is no use";
}

TEST(AssetActions, CopyOfNothingThatExistsChangesNothing) {
    Fixture f;
    f.actions.copyFiles({f.ref("gone.mov")});
    f.actions.copyFiles({});
    f.settle();
    f.settle();
    EXPECT_EQ(f.status.count(), 0);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "before");
}

TEST(AssetActions, OfTwoCopiesTheLaterOneStays) {
    Fixture f;
    f.actions.copyFiles({f.ref("二.mov")});
    f.actions.copyPath({f.ref("gone.mov")});
    f.settle();
    f.settle();
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), f.folder / "gone.mov");
}

TEST(AssetActions, CopyPathTakesOfflineFilesToo) {
    Fixture f;
    f.actions.copyPath({f.ref("gone.mov"), f.ref("二.mov")});
    EXPECT_EQ(f.status.count(), 1);
    EXPECT_EQ(f.status[0][0].toString(), "已复制完整文件路径");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(),
              f.folder / "gone.mov\n" + (f.folder / "二.mov"));
    f.actions.copyPath({});
    EXPECT_EQ(f.status.count(), 1);
}

TEST(AssetActions, OpenHandsTheFileToTheDesktopAndUsesIt) {
    Fixture f;
    Opener opener;
    f.actions.openFile(f.ref("1 %.wav"));
    ASSERT_TRUE(waitUntil([&] { return !f.used.empty(); }));
    ASSERT_EQ(opener.opened.size(), 1);
    EXPECT_EQ(opener.opened[0].toLocalFile().toStdString(), f.folder / "1 %.wav");
    EXPECT_EQ(f.used, (std::vector<Paths>{{f.folder / "1 %.wav"}}));
    f.actions.openFile(f.ref("gone.mov"));
    f.settle();
    f.settle();
    EXPECT_EQ(opener.opened.size(), 1);
    EXPECT_EQ(f.used.size(), 1U);
}

TEST(AssetActions, RevealUsesTheExistingFiles) {
    Fixture f;
    Opener fallback;
    f.actions.revealFile({f.ref("gone.mov"), f.ref("二.mov"), f.ref("1 %.wav")});
    ASSERT_TRUE(waitUntil([&] { return !f.used.empty(); }));
    EXPECT_EQ(f.used, (std::vector<Paths>{{f.folder / "二.mov", f.folder / "1 %.wav"}}));
    f.actions.revealFile({f.ref("gone.mov")});
    f.settle();
    f.settle();
    EXPECT_EQ(f.used.size(), 1U);
}

}  // namespace
}  // namespace morvane::test

#include "test_asset_actions.moc"
