// Numbers as the user reads them.
#pragma once

#include <cstdint>
#include <string>

namespace morvane {

/// Bytes in the file style, decimal units (1 KB = 1000 bytes): 0 gives "0 KB", 1..999 "n 字节", then
/// KB without fraction, MB with at most one, GB and above with at most two fraction digits, trailing
/// zeros dropped ("986.4 MB", "1.04 GB", "2 MB"). Negative counts read as 0.
std::string formatBytes(std::int64_t bytes);

/// `count` grouped as in the user's locale (LC_ALL, LC_NUMERIC, LANG; zh_CN where none is named):
/// 12486 gives "12,486".
std::string formatCount(std::int64_t count);

}  // namespace morvane
