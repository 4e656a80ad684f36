// The user's choices and their file "settings.json".
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "support/serial_queue.h"

namespace morvane {

inline constexpr std::string_view settingsFilename = "settings.json";
inline constexpr std::size_t recentLimit = 150;

struct Settings {
    std::vector<std::string> roots;             ///< library folders in the order they were added
    std::unordered_set<std::string> favorites;  ///< paths
    std::vector<std::string> recent;            ///< paths, newest first, at most recentLimit
    bool autoplay = false;                      ///< play as soon as an asset is selected
    std::optional<bool> pendingRefresh;         ///< true: the last refresh did not finish

    bool operator==(const Settings&) const = default;
};

/// The text of the file: one compact JSON object; "pendingRefresh" only when it has a value. Entries that
/// are no UTF-8 are left out.
std::string encodeSettings(const Settings& settings);
/// Throws JsonError when one of the four required keys is missing or anything has another type.
Settings decodeSettings(std::string_view json);

/// The settings of `store`; the defaults when the file is missing, unreadable or does not decode.
Settings loadSettings(const std::string& store);
/// Replaces the file of `store` atomically and flushes it; failures are ignored.
void saveSettings(const std::string& store, const Settings& settings);

/// Saves in the background, in the order of the calls, so that a slow disk never holds up the caller.
class SettingsWriter {
public:
    explicit SettingsWriter(std::string store);
    /// Waits until everything handed in is written.
    ~SettingsWriter();
    /// Takes a copy; returns at once.
    void save(const Settings& settings);
    /// Blocks until everything handed in before is written.
    void flush();

private:
    const std::string store_;
    SerialQueue queue_;
};

/// Moves `path` to the front of `recent`, dropping what exceeds recentLimit.
void rememberPath(std::vector<std::string>& recent, const std::string& path);
/// Lets favorites and the recent list follow a renamed file; the recent order stays.
void followRename(Settings& settings, const std::string& oldPath, const std::string& newPath);

}  // namespace morvane
