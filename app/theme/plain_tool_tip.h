// Tool tips that show file names as they are.
#pragma once

#include <QString>

namespace morvane {

/// `text` as a tool tip that is never taken for markup.
QString plainToolTip(const QString& text);

}  // namespace morvane
