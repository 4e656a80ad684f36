// Folders that are shown as one document: the fixed list of package extensions.
#pragma once

#include <string_view>

namespace morvane {

/// True when the extension of `name` (any case) is a package type: app, bundle, framework, plugin,
/// kext, fcpbundle, photoslibrary, ... Whether `name` is a folder is the caller's to know.
bool hasPackageExtension(std::string_view name);

}  // namespace morvane
