// The decisions of the preview pane as plain values: which preview an asset gets, which buttons are
// enabled, what the notice says. No widget, no disk.
#pragma once

#include <QImage>
#include <QString>

namespace morvane {

struct Asset;

enum class PreviewMode { Picture, Audio, Video, Other };
/// By the asset's kind.
PreviewMode previewModeOf(const Asset& asset);

/// What is known about the file of the shown asset.
enum class FileState { Asking, Present, Missing };
enum class Scanning { No, Yes };

/// Enabled states of the five file buttons.
struct FileButtonStates {
    bool favorite = false;
    bool reveal = false;
    bool copy = false;
    bool open = false;
    bool rename = false;
    bool operator==(const FileButtonStates&) const = default;
};
/// With an asset shown: favourite always, the others when the file is there, rename only while no
/// scan runs. Nothing shown is FileButtonStates{}.
FileButtonStates fileButtonsFor(FileState file, Scanning scanning);

/// A notice line: its text, the symbol before it, and whether that symbol warns.
struct Notice {
    enum class Tone { Plain, Warning };
    QString text;
    QString symbol = QStringLiteral("info.circle");
    Tone tone = Tone::Plain;
    bool operator==(const Notice&) const = default;
};

/// Every sentence the notice line can hold, once.
namespace notices {
Notice nothingShown();
Notice fileMissing();
Notice filePresent();
Notice preparingPicture();
Notice pictureShown();
Notice pictureUndecodable();
Notice otherKind();
Notice mediaUndecodable();
/// For `rows` selected rows, two or more.
Notice manySelected(qint64 rows);
}  // namespace notices

/// Whether a picture is in the cache. One prepared ahead has not been seen until it is shown once.
enum class PictureCached { No, Unseen, Seen };

/// What the cache holds for a picture; a null image exactly with PictureCached::No.
struct CachedPicture {
    QImage image;
    PictureCached cached = PictureCached::No;
};

/// The notice once the file's state is known. For a picture that is not in the cache this is "preparing", for
/// one shown for the first time the same as after preparing.
Notice noticeFor(PreviewMode mode, FileState file, PictureCached cached);

}  // namespace morvane
