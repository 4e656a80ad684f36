// Renames that never replace, and the exchange of two names (renameat2).
#pragma once

#include <string>

namespace morvane {

/// Renames `from` in folder `fromFolder` to `to` in `toFolder` (open folder descriptors), failing
/// when `to` exists. Returns 0 or an errno value (EEXIST; EINVAL where the file system lacks it:
/// there is no fallback).
int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to);
/// The same for absolute paths.
int renameExclusively(const std::string& from, const std::string& to);
/// Swaps two names of one folder atomically. Returns 0 or an errno value.
int exchangeNames(int folder, const char* first, const char* second);

}  // namespace morvane
