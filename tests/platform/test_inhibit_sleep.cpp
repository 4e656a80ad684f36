// The login1 lock: against a bus of our own with a login1 of our own, a silent bus, and none.
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QVariantList>

#include <gtest/gtest.h>

#include "platform/inhibit_sleep.h"
#include "support/unique_fd.h"
#include "tests/private_bus.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using std::string;
using test::PrivateBus;
using test::TemporaryFolder;
using test::waitUntil;

// Answers Inhibit with the writing end of a pipe: the lock is held as long as that is open.
class FakeLogin : public QDBusVirtualObject {
public:
    FakeLogin() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
            throw std::runtime_error("no pipe");
        watched_.reset(ends[0]);
        given_.reset(ends[1]);
    }
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() != QStringLiteral("Inhibit"))
            return false;
        arguments_ = message.arguments();
        const bool sent =
            connection.send(message.createReply(QVariant::fromValue(QDBusUnixFileDescriptor(given_.get()))));
        given_.reset();
        return sent;
    }
    const QVariantList& arguments() const { return arguments_; }
    bool isHeld() const {
        pollfd watched{watched_.get(), POLLIN, 0};
        ::poll(&watched, 1, 0);
        return (watched.revents & POLLHUP) == 0;
    }

private:
    UniqueFd watched_;
    UniqueFd given_;
    QVariantList arguments_;
};

// The process connects to the system's bus once, so each of these runs in a process of its own;
// the parent's test looks only at how it ended.
class InhibitSleep : public testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    [[noreturn]] static void exitTelling(bool good, const char* what) {
        if (!good)
            std::fprintf(stderr, "failed: %s\n", what);
        std::exit(good ? 0 : 1);
    }

    [[noreturn]] static void againstALogin() {
        const PrivateBus bus;
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str(), 1);
        QDBusConnection server =
            QDBusConnection::connectToBus(QString::fromStdString(bus.address()), "login");
        FakeLogin login;
        if (!server.registerVirtualObject("/org/freedesktop/login1", &login) ||
            !server.registerService("org.freedesktop.login1"))
            exitTelling(false, "the service could not be registered");

        // The call waits for the answer that this thread gives.
        std::unique_ptr<SleepInhibitor> inhibitor;
        std::atomic<bool> made = false;
        std::thread job([&] {
            inhibitor = std::make_unique<SleepInhibitor>("复制素材");
            made = true;
        });
        const bool answered = waitUntil([&made] { return made.load(); });
        job.join();
        if (!answered || login.arguments() != QVariantList{"sleep:idle", "MORVANE", "复制素材", "block"})
            exitTelling(false, "login1 was not asked as it should be");
        if (!login.isHeld())
            exitTelling(false, "the lock was not held");
        inhibitor.reset();
        exitTelling(waitUntil([&login] { return !login.isHeld(); }), "the lock was kept after the end");
    }

    [[noreturn]] static void againstNoBus() {
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/does/not/exist", 1);
        const SleepInhibitor inhibitor("copying");
        exitTelling(true, "");
    }

    [[noreturn]] static void againstABusWithoutLogin() {
        const PrivateBus bus;
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str(), 1);
        { const SleepInhibitor inhibitor("copying"); }
        exitTelling(true, "");
    }

    [[noreturn]] static void againstASilentBus() {
        const TemporaryFolder folder;
        const string path = folder / "bus";
        sockaddr_un where{};
        where.sun_family = AF_UNIX;
        std::strncpy(where.sun_path, path.c_str(), sizeof where.sun_path - 1);
        UniqueFd silent(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (::bind(silent.get(), reinterpret_cast<const sockaddr*>(&where), sizeof where) != 0 ||
            ::listen(silent.get(), 4) != 0)
            exitTelling(false, "no socket");
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);
        const auto start = std::chrono::steady_clock::now();
        { const SleepInhibitor inhibitor("copying"); }
        const bool inTime = std::chrono::steady_clock::now() - start < std::chrono::seconds(10);
        silent.reset();  // the thread left behind sees its bus go, so that the process can end
        exitTelling(inTime, "it waited for a bus that says nothing");
    }
};

TEST_F(InhibitSleep, HoldsTheLockWhileAlive) {
    EXPECT_EXIT(againstALogin(), testing::ExitedWithCode(0), "");
}

TEST_F(InhibitSleep, IsNothingWithoutABus) {
    EXPECT_EXIT(againstNoBus(), testing::ExitedWithCode(0), "");
}

TEST_F(InhibitSleep, IsNothingWithoutALogin) {
    EXPECT_EXIT(againstABusWithoutLogin(), testing::ExitedWithCode(0), "");
}

TEST_F(InhibitSleep, NeverWaitsForASilentBus) {
    EXPECT_EXIT(againstASilentBus(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace morvane
