// The locale the environment names for one category.
#pragma once

#include <string>

namespace morvane {

/// The locale for `category` ("LC_COLLATE", "LC_NUMERIC"), without its character set and modifier:
/// the first of LC_ALL, the category itself and LANG that is set and not empty; "zh_CN" when that
/// is C or POSIX, or when none is set. Reads the environment at every call. Any thread.
std::string userLocale(const char* category);

}  // namespace morvane
