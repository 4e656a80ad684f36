#include "platform/volume_space.h"

#include <sys/statvfs.h>

#include <limits>

namespace morvane {

std::optional<std::int64_t> availableBytes(const std::string& path) {
    struct statvfs volume {};
    if (::statvfs(path.c_str(), &volume) != 0)
        return std::nullopt;
    if (volume.f_blocks == 0 || volume.f_frsize == 0)
        return std::nullopt;  // a file system without storage of its own (proc, sysfs)
    constexpr auto limit = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const auto blocks = static_cast<std::uint64_t>(volume.f_bavail);
    const auto size = static_cast<std::uint64_t>(volume.f_frsize);
    return static_cast<std::int64_t>(blocks > limit / size ? limit : blocks * size);
}

}  // namespace morvane
