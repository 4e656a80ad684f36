#include "app/theme/text_rendering.h"

#include "app/theme/theme.h"

#include <QByteArray>
#include <QFontMetricsF>
#include <QtGlobal>

namespace morvane {

void keepStemWeight() {
    constexpr const char* variable = "FREETYPE_PROPERTIES";
    const QByteArray before = qgetenv(variable);
    if (before.contains("darkening-parameters"))
        return;  // somebody has chosen
    // Four points of stem width and emboldening, all of it none. FreeType reads this once, when the first
    // font is opened; opening one here lets us put the environment back for the programs we start.
    QByteArray ours = before;
    if (!ours.isEmpty())
        ours += ' ';
    qputenv(variable, ours + "cff:darkening-parameters=500,0,1000,0,1667,0,2333,0");
    QFontMetricsF(MRVTheme::font(12)).horizontalAdvance(QStringLiteral("素"));
    if (before.isEmpty())
        qunsetenv(variable);
    else
        qputenv(variable, before);
}

}  // namespace morvane
