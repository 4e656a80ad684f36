#include "catalog/store_folder.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/data_folder.h"
#include "support/path_text.h"

namespace morvane {

std::string storeFolder(const std::vector<std::string>& arguments) {
    const auto flag = std::find(arguments.begin(), arguments.end(), "--ui-smoke-test");
    if (flag != arguments.end() && flag + 1 != arguments.end())
        return joinPath(*(flag + 1), "IsolatedTestData");
    return joinPath(userDataFolder(), "LumvexAssetLibrary");
}

void createStoreFolder(const std::string& store) {
    std::error_code ignored;
    std::filesystem::create_directories(store, ignored);
}

}  // namespace morvane
