#include "platform/data_folder.h"

#include <pwd.h>
#include <unistd.h>

#include <stdexcept>
#include <string_view>

#include <QByteArray>

#include "support/path_text.h"

namespace morvane {

namespace {

bool isAbsolute(std::string_view path) {
    return path.starts_with('/');
}

// The environment's word, else the user database's; empty when neither knows.
std::string homeFolder() {
    std::string home = qgetenv("HOME").toStdString();
    if (isAbsolute(home))
        return home;
    std::vector<char> buffer(std::size_t{1} << 14);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return {};
    home = found->pw_dir;
    return isAbsolute(home) ? home : std::string();
}

}  // namespace

std::string userDataFolder() {
    const std::string named = qgetenv("XDG_DATA_HOME").toStdString();
    if (isAbsolute(named))
        return standardizedPath(named);
    const std::string home = homeFolder();
    if (home.empty())
        throw std::runtime_error("no home folder is known: set HOME or XDG_DATA_HOME");
    return standardizedPath(joinPath(home, ".local/share"));
}

std::vector<std::string> sharedDataFolders() {
    std::string list = qgetenv("XDG_DATA_DIRS").toStdString();
    if (list.empty())
        list = "/usr/local/share:/usr/share";
    std::vector<std::string> folders;
    std::string_view rest = list;
    for (;;) {
        const std::size_t colon = rest.find(':');
        const std::string_view folder = rest.substr(0, colon);
        if (isAbsolute(folder))
            folders.push_back(standardizedPath(folder));
        if (colon == std::string_view::npos)
            return folders;
        rest.remove_prefix(colon + 1);
    }
}

}  // namespace morvane
