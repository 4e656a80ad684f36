#include "library_ui/asset_actions.h"

#include "library_ui/asset_text.h"

#include "platform/reveal_files.h"
#include "support/file_url.h"

#include <QByteArray>
#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>

#include <utility>

namespace morvane {

namespace {

/// `paths` as URLs, each after `before` and followed by `after`.
std::string urlLines(const std::vector<std::string>& paths, const char* before, const char* after) {
    std::string lines;
    for (const std::string& path : paths)
        lines += before + absoluteText(fileLocation(path)) + after;
    return lines;
}

QString pathLines(const std::vector<std::string>& paths) {
    std::string lines;
    for (const std::string& path : paths) {
        if (!lines.empty())
            lines += '\n';
        lines += path;
    }
    return shownText(lines);
}

}  // namespace

std::unique_ptr<QMimeData> dragMimeData(const std::vector<std::string>& paths) {
    auto data = std::make_unique<QMimeData>();
    data->setData(QStringLiteral("text/uri-list"), QByteArray::fromStdString(urlLines(paths, "", "\r\n")));
    return data;
}

std::unique_ptr<QMimeData> fileMimeData(const std::vector<std::string>& paths) {
    auto data = dragMimeData(paths);
    data->setData(QStringLiteral("x-special/gnome-copied-files"),
                  QByteArray::fromStdString("copy" + urlLines(paths, "\n", "")));
    data->setData(QStringLiteral("application/x-kde-cutselection"), QByteArrayLiteral("0"));
    data->setText(pathLines(paths));
    return data;
}

AssetActions::AssetActions(FileChecker& checker, QObject* parent) : QObject(parent), checker_(checker) {}

void AssetActions::copyFiles(std::vector<FileRef> files) {
    const quint64 ticket = ++copyTicket_;
    checker_.findExisting(std::move(files), this, [this, ticket](const std::vector<std::string>& existing) {
        if (ticket != copyTicket_ || existing.empty())
            return;
        QGuiApplication::clipboard()->setMimeData(fileMimeData(existing).release());
        Q_EMIT statusText(QStringLiteral("已复制 %1 个文件 · 在 Finder 中按 ⌘V 粘贴").arg(existing.size()));
    });
}

void AssetActions::copyPath(const std::vector<FileRef>& files) {
    if (files.empty())
        return;
    ++copyTicket_;
    std::vector<std::string> paths;
    paths.reserve(files.size());
    for (const FileRef& file : files)
        paths.push_back(file.path);
    QGuiApplication::clipboard()->setText(pathLines(paths));
    Q_EMIT statusText(QStringLiteral("已复制完整文件路径"));
}

void AssetActions::revealFile(std::vector<FileRef> files) {
    checker_.findExisting(std::move(files), this, [this](const std::vector<std::string>& existing) {
        if (existing.empty())
            return;
        revealFiles(existing);
        Q_EMIT used(existing);
    });
}

void AssetActions::openFile(const FileRef& file) {
    checker_.findExisting({file}, this, [this](const std::vector<std::string>& existing) {
        if (existing.empty())
            return;
        QDesktopServices::openUrl(
            QUrl::fromEncoded(QByteArray::fromStdString(absoluteText(fileLocation(existing.front())))));
        Q_EMIT used(existing);
    });
}

}  // namespace morvane
