#include "app/theme/plain_tool_tip.h"

#include <QTextDocument>

namespace morvane {

QString plainToolTip(const QString& text) {
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal) : text;
}

}  // namespace morvane
