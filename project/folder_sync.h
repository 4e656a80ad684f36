// Making what was written survive a power cut.
#pragma once

#include <cstddef>
#include <cstdint>

namespace morvane {

/// Flushes the names of an open folder. File systems that keep no such state are passed over
/// silently; other failures throw std::system_error.
void syncFolder(int folder);

/// Writes all of `bytes` at the file's position, again after interruptions. Throws std::system_error.
void writeAll(int file, const char* bytes, std::size_t count);

/// Asks the system to begin writing this range to the medium, so that the final flush has less to
/// wait for. Promises nothing and never fails.
void startWriteBack(int file, std::int64_t offset, std::int64_t count);

}  // namespace morvane
