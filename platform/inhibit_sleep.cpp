#include "platform/inhibit_sleep.h"

#include <fcntl.h>

#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusUnixFileDescriptor>
#include <QString>

namespace morvane {

namespace {

constexpr auto answerWithin = std::chrono::seconds(1);

UniqueFd requestLock(const QString& why) {
    const QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
        return {};
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call.setArguments(
        {QStringLiteral("sleep:idle"), QStringLiteral("MORVANE"), why, QStringLiteral("block")});
    const QDBusReply<QDBusUnixFileDescriptor> reply =
        bus.call(call, QDBus::Block, static_cast<int>(std::chrono::milliseconds(answerWithin).count()));
    if (!reply.isValid())
        return {};
    return UniqueFd(::fcntl(reply.value().fileDescriptor(), F_DUPFD_CLOEXEC, 0));
}

}  // namespace

// On a thread that nobody waits for beyond the second: connecting to a bus that accepts and then
// says nothing has no time limit of its own. A lock that comes too late is closed on arrival.
SleepInhibitor::SleepInhibitor(const std::string& why) {
    const auto answer = std::make_shared<std::promise<UniqueFd>>();
    std::future<UniqueFd> lock = answer->get_future();
    std::thread([answer, text = QString::fromStdString(why)] {
        answer->set_value(requestLock(text));
    }).detach();
    if (lock.wait_for(answerWithin) == std::future_status::ready)
        lock_ = lock.get();
}

SleepInhibitor::~SleepInhibitor() = default;

}  // namespace morvane
