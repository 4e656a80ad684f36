// The one folder that holds everything the library keeps.
#pragma once

#include <string>
#include <vector>

namespace morvane {

/// The folder "IsolatedTestData" below the argument after the first "--ui-smoke-test", when one
/// follows; else "LumvexAssetLibrary" in the user's data folder. `arguments` begins with the program
/// path. Nothing is created. Throws std::runtime_error when there is no data folder.
std::string storeFolder(const std::vector<std::string>& arguments);
/// Creates `store` and the folders above it; failures are ignored and show when files are used.
void createStoreFolder(const std::string& store);

}  // namespace morvane
