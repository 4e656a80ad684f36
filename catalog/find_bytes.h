// Finding a short text in a large block of memory.
#pragma once

#include <cstddef>
#include <string_view>

namespace morvane {

/// Where `word` (not empty) first stands in `block` at or after `from`; npos when it does not. Looks at the
/// first and the last byte of the word in 64 places at once, which is several times faster than the library's
/// search for the short words people type.
std::size_t findBytes(std::string_view block, std::string_view word, std::size_t from);

}  // namespace morvane
