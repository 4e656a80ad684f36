#include "ctl/session.h"

#include <unistd.h>

#include <filesystem>
#include <iostream>

#include <nlohmann/json.hpp>

#include "catalog/store_folder.h"
#include "ctl/terminal_text.h"
#include "support/path_text.h"

namespace morvane {

StoppedError::StoppedError() : std::runtime_error("已停止。") {}

StoppedError::StoppedError(const char* text) : std::runtime_error(text) {}

std::string Session::storeFolder() const {
    std::string folder = store.empty() ? morvane::storeFolder({}) : givenStoreFolder();
    createStoreFolder(folder);
    return folder;
}

void printJson(const nlohmann::ordered_json& document) {
    std::cout << document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

void printLine(std::string_view text) {
    static const bool isTerminal = isatty(STDOUT_FILENO) == 1;
    if (isTerminal)
        std::cout << withoutControls(text) << '\n';
    else
        std::cout << text << '\n';
}

void printError(std::string_view text) {
    std::cerr << "morvanectl: " << withoutControls(text) << '\n';
}

std::string locatedPath(const std::string& path) {
    if (path.empty() || path.starts_with('/'))
        return path;
    // "./" in front would only make messages longer.
    std::string_view rest = path;
    while (rest.starts_with("./"))
        rest.remove_prefix(2);
    const std::string here = std::filesystem::current_path().native();
    return rest.empty() || rest == "." ? here : joinPath(here, rest);
}

std::string absolutePath(const std::string& path) {
    // Not the working folder: an empty argument is a variable that was never set.
    if (path.empty())
        return path;
    if (path.starts_with('/'))
        return standardizedPath(path);
    return standardizedPath(joinPath(std::filesystem::current_path().native(), path));
}

}  // namespace morvane
