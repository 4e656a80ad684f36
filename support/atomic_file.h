// Whole-file reading and atomic replacement.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace morvane {

enum class Durability { Rename, RenameAndSync };

/// Replaces `path` by `bytes` in one step: a temporary file in the same folder (mode `mode`),
/// flushed when asked, then renamed over; a reader sees the old or the new content. Throws
/// std::system_error and removes the temporary file on any failure. A `path` that is a symbolic
/// link is itself replaced, never followed.
void replaceFile(const std::string& path, std::string_view bytes, Durability durability,
                 unsigned mode = 0644);

/// The whole content. Throws std::system_error, also when the file holds more than `limit` bytes.
std::string readFile(const std::string& path, std::size_t limit = static_cast<std::size_t>(-1));

}  // namespace morvane
