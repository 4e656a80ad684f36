// Showing files in the file manager: against a file manager of our own on a bus of our own, and
// what happens when none answers.
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QDesktopServices>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <gtest/gtest.h>

#include "platform/reveal_files.h"
#include "tests/private_bus.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using test::waitUntil;

// Takes the place of the desktop's programs for file URLs.
class OpenedFolders : public QObject {
    Q_OBJECT

public:
    OpenedFolders() { QDesktopServices::setUrlHandler("file", this, "open"); }
    ~OpenedFolders() override { QDesktopServices::unsetUrlHandler("file"); }
    const QStringList& urls() const { return urls_; }

public Q_SLOTS:
    void open(const QUrl& url) { urls_.append(QString::fromUtf8(url.toEncoded())); }

private:
    QStringList urls_;
};

class FakeFileManager : public QDBusVirtualObject {
public:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        calls_.append(message.member());
        urls_.append(message.arguments().value(0).toStringList());
        return connection.send(message.createReply());
    }
    const QStringList& calls() const { return calls_; }
    const QList<QStringList>& urls() const { return urls_; }

private:
    QStringList calls_;
    QList<QStringList> urls_;
};

class RevealFiles : public testing::Test {
protected:
    // The process connects to its session's bus once.
    static void SetUpTestSuite() {
        bus_ = std::make_unique<test::PrivateBus>();
        ASSERT_FALSE(bus_->address().empty());
        ::setenv("DBUS_SESSION_BUS_ADDRESS", bus_->address().c_str(), 1);
    }
    static void TearDownTestSuite() { bus_.reset(); }

    static inline std::unique_ptr<test::PrivateBus> bus_;
};

TEST_F(RevealFiles, ShowsAllFilesInOneCall) {
    QDBusConnection server = QDBusConnection::connectToBus(QString::fromStdString(bus_->address()), "files");
    FakeFileManager manager;
    const OpenedFolders opened;
    ASSERT_TRUE(server.registerVirtualObject("/org/freedesktop/FileManager1", &manager));
    ASSERT_TRUE(server.registerService("org.freedesktop.FileManager1"));
    revealFiles({"/a/空 镜.mov", "/a/100%\xFF.mov", "/b/c#d"});
    revealFolder("/a/b");
    EXPECT_TRUE(manager.calls().isEmpty());  // asked for, not waited for
    ASSERT_TRUE(waitUntil([&manager] { return manager.calls().size() == 2; }));
    EXPECT_EQ(manager.calls(), (QStringList{"ShowItems", "ShowFolders"}));
    EXPECT_EQ(manager.urls()[0], (QStringList{"file:///a/%E7%A9%BA%20%E9%95%9C.mov",
                                              "file:///a/100%25%FF.mov", "file:///b/c%23d"}));
    EXPECT_EQ(manager.urls()[1], QStringList{"file:///a/b/"});
    EXPECT_TRUE(opened.urls().isEmpty());
    server.unregisterService("org.freedesktop.FileManager1");
    QDBusConnection::disconnectFromBus("files");
}

TEST_F(RevealFiles, OpensTheFolderWhenNoFileManagerAnswers) {
    const OpenedFolders opened;
    revealFiles({"/a\xFF/b.mov", "/c/d.mov"});
    ASSERT_TRUE(waitUntil([&opened] { return opened.urls().size() == 1; }));
    revealFolder("/e");
    ASSERT_TRUE(waitUntil([&opened] { return opened.urls().size() == 2; }));
    EXPECT_EQ(opened.urls(), (QStringList{"file:///a%FF/", "file:///e/"}));
}

TEST_F(RevealFiles, NoFilesAreNothingToShow) {
    const OpenedFolders opened;
    revealFiles({});
    revealFolder("/");  // comes after whatever the call before would have opened
    ASSERT_TRUE(waitUntil([&opened] { return !opened.urls().isEmpty(); }));
    EXPECT_EQ(opened.urls(), QStringList{"file:///"});
}

[[noreturn]] void revealWithoutABus() {
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/does/not/exist", 1);
    const OpenedFolders opened;
    revealFiles({"/a/b.mov"});
    std::exit(opened.urls() == QStringList{"file:///a/"} ? 0 : 1);
}

TEST(RevealFilesWithoutABus, OpensTheFolder) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(revealWithoutABus(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace morvane

#include "test_reveal_files.moc"
