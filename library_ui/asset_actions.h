// What the user does with indexed files: copy them or their paths to the clipboard, show them in the
// file manager, open them, drag them out. Files are only named, never changed. Every "does it exist" is
// asked through a FileChecker, so nothing here waits for a drive.
#pragma once

#include "library_ui/file_checker.h"

#include <QObject>

#include <memory>
#include <string>
#include <vector>

class QMimeData;

namespace morvane {

/// Clipboard content for `paths` (absolute, existing files, in list order): "text/uri-list",
/// "x-special/gnome-copied-files" (copy), "application/x-kde-cutselection" ("0": copy) and the paths, one
/// a line, as "text/plain".
std::unique_ptr<QMimeData> fileMimeData(const std::vector<std::string>& paths);

/// Drag content for `paths`: "text/uri-list" alone, so that a text field never takes a path for a text.
std::unique_ptr<QMimeData> dragMimeData(const std::vector<std::string>& paths);

/// Main thread only.
class AssetActions final : public QObject {
    Q_OBJECT
public:
    /// `checker` must outlive this object.
    explicit AssetActions(FileChecker& checker, QObject* parent = nullptr);

    /// Puts the existing ones of `files` on the clipboard, then emits statusText; nothing happens when none
    /// exists. Of two quick calls the later one wins.
    void copyFiles(std::vector<FileRef> files);
    /// Puts the paths on the clipboard as text, one a line, whether the files exist or not, and emits
    /// statusText; an empty list does nothing.
    void copyPath(const std::vector<FileRef>& files);
    /// Shows the existing ones of `files` selected in one file-manager window and emits used.
    void revealFile(std::vector<FileRef> files);
    /// Opens the file with its default application, when it exists, and emits used.
    void openFile(const FileRef& file);

Q_SIGNALS:
    /// A line for the status bar.
    void statusText(const QString& text);
    /// These files were opened or shown: they belong at the top of the recent list, in this order.
    void used(const std::vector<std::string>& paths);

private:
    FileChecker& checker_;
    quint64 copyTicket_ = 0;
};

}  // namespace morvane
