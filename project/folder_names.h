// Listing a folder that is already open.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "support/unique_fd.h"

namespace morvane {

/// The names in an open folder, without "." and "..", in byte order; nothing when `folder` is empty or
/// cannot be listed.
std::optional<std::vector<std::string>> folderNames(const UniqueFd& folder);

}  // namespace morvane
