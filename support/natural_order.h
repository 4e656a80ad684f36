// The order in which a file browser lists names: the user's locale, case-insensitive, numbers by
// value (ICU collation).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// Negative, zero or positive, as `left` sorts before, with or after `right`. The locale is the
/// environment's (LC_ALL, LC_COLLATE, LANG), zh_CN where it names none (unset, C, POSIX). Any thread.
int compareNaturally(std::string_view left, std::string_view right);

/// The stable order of `names`: result[i] is the index of the name that comes i-th. Uses sort
/// keys, never a collator call per comparison, and two threads for large lists. Any thread.
std::vector<std::uint32_t> naturalOrder(const std::vector<std::string_view>& names);

}  // namespace morvane
