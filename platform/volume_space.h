// Free space of the volume that holds a path (statvfs: f_bavail x f_frsize).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace morvane {

/// Bytes available to this user; nothing when the file system does not say.
std::optional<std::int64_t> availableBytes(const std::string& path);

}  // namespace morvane
