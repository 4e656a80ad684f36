#include "platform/reveal_files.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QStringList>
#include <QUrl>

#include "support/file_url.h"
#include "support/path_text.h"

namespace morvane {

namespace {

// From text, never from a QString path: the escapes keep bytes that are no UTF-8.
QString urlText(const FileUrl& url) {
    return QString::fromStdString(absoluteText(url));
}

void openFolder(const QString& folderUrl) {
    QDesktopServices::openUrl(QUrl::fromEncoded(folderUrl.toUtf8(), QUrl::StrictMode));
}

// Calls `method` of the file manager; `fallbackFolder` is opened when nobody answers.
void callFileManager(const QString& method, const QStringList& urls, const QString& fallbackFolder) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openFolder(fallbackFolder);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), method);
    call.setArguments({urls, QString()});  // no startup identifier
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [fallbackFolder](QDBusPendingCallWatcher* finished) {
                         if (QDBusPendingReply<>(*finished).isError())
                             openFolder(fallbackFolder);
                         finished->deleteLater();
                     });
}

}  // namespace

void revealFiles(const std::vector<std::string>& files) {
    if (files.empty())
        return;
    QStringList urls;
    for (const std::string& file : files)
        urls.append(urlText(fileLocation(file)));
    const std::string folder(parentPath(files.front()));
    callFileManager(QStringLiteral("ShowItems"), urls, urlText(folderLocation(folder)));
}

void revealFolder(const std::string& folder) {
    const QString url = urlText(folderLocation(folder));
    callFileManager(QStringLiteral("ShowFolders"), {url}, url);
}

}  // namespace morvane
