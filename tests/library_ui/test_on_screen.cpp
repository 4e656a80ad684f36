// What needs a real display: drags and clipboards that other programs read. Every test starts Xvfb and runs
// its inside (a test of the same name in OnScreenInside) in a process of its own on that display.
#include "tests/library_ui/library_fixture.h"

#include "app/theme/file_table.h"
#include "library_ui/asset_actions.h"
#include "support/file_url.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QProcess>
#include <QSignalSpy>
#include <QUrl>
#include <QWindow>

namespace morvane::test {
namespace {

/// An X server of our own.
class Screen {
public:
    Screen() {
        server_.start("Xvfb", {"-displayfd", "1", "-screen", "0", "1400x900x24", "-nolisten", "tcp"});
        waitUntil([this] { return server_.canReadLine() || server_.state() == QProcess::NotRunning; });
        number_ = QString::fromLatin1(server_.readLine()).trimmed();
    }
    ~Screen() {
        server_.terminate();
        server_.waitForFinished();
    }
    /// ":7"; empty when no server could be started.
    QString display() const { return number_.isEmpty() ? QString() : ":" + number_; }

private:
    QProcess server_;
    QString number_;
};

void runInside(const QString& name) {
    const Screen screen;
    ASSERT_FALSE(screen.display().isEmpty()) << "Xvfb did not start";
    QProcess inside;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", screen.display());
    environment.insert("QT_QPA_PLATFORM", "xcb");
    inside.setProcessEnvironment(environment);
    inside.setProcessChannelMode(QProcess::MergedChannels);
    inside.start(QCoreApplication::applicationFilePath(),
                 {"--gtest_also_run_disabled_tests", "--gtest_filter=OnScreenInside.DISABLED_" + name});
    ASSERT_TRUE(waitUntil([&] { return inside.state() == QProcess::NotRunning; }, 90)) << "the inside hangs";
    const QByteArray output = inside.readAll();
    EXPECT_EQ(inside.exitCode(), 0) << output.toStdString();
    EXPECT_TRUE(output.contains("[  PASSED  ] 1 test")) << output.toStdString();
}

/// Runs a program to its end while this process keeps answering the display.
QByteArray run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(waitUntil([&] { return process.state() == QProcess::NotRunning; })) << program.toStdString();
    return process.readAllStandardOutput();
}

QByteArray clipboardAs(const QString& type) {
    return run("xclip", {"-selection", "clipboard", "-t", type, "-o"});
}

struct Files {
    TemporaryFolder folder;
    std::vector<Asset> assets;
    Files() {
        makeTree(folder.path(), {{"a b.wav", "x"}, {"秋.mov", "y"}});
        assets = {assetAt(folder.path(), "a b.wav"), assetAt(folder.path(), "offline.mov"),
                  assetAt(folder.path(), "秋.mov")};
    }
    std::vector<FileRef> refs() const {
        std::vector<FileRef> refs;
        for (const Asset& asset : assets)
            refs.push_back({asset.path, asset.root});
        return refs;
    }
    std::string url(const std::string& name) const { return absoluteText(fileLocation(folder / name)); }
};

/// Takes drops of file URLs and notes what came.
class DropTarget final : public QWidget {
public:
    explicit DropTarget(QWidget* parent) : QWidget(parent) { setAcceptDrops(true); }
    QList<QUrl> urls;
    QStringList formats;
    Qt::DropActions offered;

protected:
    void dragEnterEvent(QDragEnterEvent* event) override { event->acceptProposedAction(); }
    void dropEvent(QDropEvent* event) override {
        urls = event->mimeData()->urls();
        formats = event->mimeData()->formats();
        offered = event->possibleActions();
        event->acceptProposedAction();
    }
};

TEST(OnScreenInside, DISABLED_Drag) {
    const Files files;
    Workspace space(1340, 688);
    space.view->showRows(rowsOf(files.assets), std::nullopt, ListPosition::Top);
    auto* target = new DropTarget(space.window.get());
    target->setGeometry(0, 500, 200, 150);
    target->show();
    target->raise();
    space.clickRow(0);
    space.clickRow(2, Qt::ShiftModifier);

    FileTable& table = space.view->table();
    const QPoint from = table.viewport()->mapToGlobal(table.visualRect(table.model()->index(1, 0)).center());
    const QPoint to = target->mapToGlobal(target->rect().center());
    const auto at = [](QPoint point) {
        return QStringList{QString::number(point.x()), QString::number(point.y())};
    };
    // From the drag's start its own loop runs until the button is released: the hand is a process of its own.
    QStringList hand = {"mousemove"};
    hand += at(from) + QStringList{"mousedown", "1"};
    for (const QPoint point : {from + QPoint(20, 0), from + QPoint(60, 20), to - QPoint(9, 9), to})
        hand += QStringList{"sleep", "0.2", "mousemove"} + at(point);
    hand += QStringList{"sleep", "0.2", "mouseup", "1"};
    QProcess script;
    script.start("xdotool", hand);
    ASSERT_TRUE(waitUntil([&] { return !target->urls.isEmpty(); }));
    EXPECT_EQ(target->urls,
              (QList<QUrl>{QUrl::fromLocalFile(QString::fromStdString(files.folder / "a b.wav")),
                           QUrl::fromLocalFile(QString::fromStdString(files.folder / "秋.mov"))}))
        << "an offline row gives no item";
    EXPECT_EQ(target->offered, Qt::CopyAction);
    EXPECT_TRUE(target->formats.contains("text/uri-list"));
    EXPECT_FALSE(target->formats.contains("text/plain"));
    EXPECT_EQ(space.selectedRows(), (std::vector<int>{0, 1, 2})) << "the drag has selected nothing";
    EXPECT_TRUE(waitUntil([&] { return script.state() == QProcess::NotRunning; }));
}

TEST(OnScreenInside, DISABLED_CopyFiles) {
    const Files files;
    FileChecker checker;
    AssetActions actions(checker);
    QSignalSpy status(&actions, &AssetActions::statusText);
    actions.copyFiles(files.refs());
    ASSERT_TRUE(waitUntil([&] { return status.count() == 1; }));
    const std::string first = files.url("a b.wav");
    const std::string second = files.url("秋.mov");
    EXPECT_EQ(clipboardAs("text/uri-list").toStdString(), first + "\r\n" + second + "\r\n");
    EXPECT_EQ(clipboardAs("x-special/gnome-copied-files").toStdString(), "copy\n" + first + "\n" + second);
    EXPECT_EQ(clipboardAs("application/x-kde-cutselection"), "0");
    EXPECT_EQ(clipboardAs("UTF8_STRING").toStdString(),
              files.folder / "a b.wav\n" + (files.folder / "秋.mov"));
}

TEST(OnScreenInside, DISABLED_CopyPath) {
    const Files files;
    FileChecker checker;
    AssetActions actions(checker);
    actions.copyPath(files.refs());
    EXPECT_EQ(clipboardAs("UTF8_STRING").toStdString(),
              files.folder / "a b.wav\n" + (files.folder / "offline.mov\n") + (files.folder / "秋.mov"));
}

TEST(OnScreen, ADragCarriesTheExistingFilesAsCopies) {
    runInside("Drag");
}

TEST(OnScreen, CopiedFilesCanBePastedByOtherPrograms) {
    runInside("CopyFiles");
}

TEST(OnScreen, CopiedPathsCanBePastedByOtherPrograms) {
    runInside("CopyPath");
}

}  // namespace
}  // namespace morvane::test
