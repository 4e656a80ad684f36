#include "support/user_locale.h"

#include <algorithm>

#include <QByteArray>

namespace morvane {

std::string userLocale(const char* category) {
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        // qgetenv holds Qt's environment lock, which getenv does not.
        std::string name = qgetenv(variable).toStdString();
        if (name.empty())
            continue;
        name.resize(std::min(name.find_first_of(".@"), name.size()));
        return name == "C" || name == "POSIX" || name.empty() ? "zh_CN" : name;
    }
    return "zh_CN";
}

}  // namespace morvane
