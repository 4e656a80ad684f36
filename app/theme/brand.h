// The brand images, read from where they are told, with what stands in for them.
#pragma once

#include <QIcon>
#include <QImage>
#include <QString>

namespace morvane {

/// The PNG at `path` as an icon; the application's window icon when it is missing or unreadable.
QIcon brandIcon(const QString& path);
/// The SVG at `path` at its natural size; a transparent 131 x 28 when it is missing or unreadable.
QImage brandWordmark(const QString& path);

}  // namespace morvane
