#include "catalog/settings.h"

#include <algorithm>
#include <exception>
#include <utility>

#include <nlohmann/json.hpp>

#include "support/atomic_file.h"
#include "support/json_read.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

template <class Texts>
nlohmann::json encodedTexts(const Texts& texts) {
    auto array = nlohmann::json::array();
    for (const std::string& text : texts)
        if (isValidUtf8(text))
            array.push_back(text);
    return array;
}

}  // namespace

std::string encodeSettings(const Settings& settings) {
    nlohmann::json object = {{"roots", encodedTexts(settings.roots)},
                             {"favorites", encodedTexts(settings.favorites)},
                             {"recent", encodedTexts(settings.recent)},
                             {"autoplay", settings.autoplay}};
    if (settings.pendingRefresh)
        object["pendingRefresh"] = *settings.pendingRefresh;
    return object.dump();
}

Settings decodeSettings(std::string_view json) {
    const nlohmann::json object = parseJson(json);
    Settings settings;
    settings.roots = requiredTexts(object, "roots");
    for (std::string& path : requiredTexts(object, "favorites"))
        settings.favorites.insert(std::move(path));
    settings.recent = requiredTexts(object, "recent");
    settings.autoplay = requiredFlag(object, "autoplay");
    settings.pendingRefresh = optionalFlag(object, "pendingRefresh");
    return settings;
}

Settings loadSettings(const std::string& store) {
    try {
        return decodeSettings(readFile(joinPath(store, settingsFilename)));
    } catch (const std::exception&) {
        return {};
    }
}

void saveSettings(const std::string& store, const Settings& settings) {
    try {
        replaceFile(joinPath(store, settingsFilename), encodeSettings(settings), Durability::RenameAndSync);
    } catch (const std::exception&) {
        return;  // by design: the change lives until the process ends
    }
}

SettingsWriter::SettingsWriter(std::string store)
    : store_(std::move(store)), queue_("com.morvane.library.settings") {}

SettingsWriter::~SettingsWriter() {
    queue_.drain();
}

void SettingsWriter::save(const Settings& settings) {
    queue_.post([this, settings] { saveSettings(store_, settings); });
}

void SettingsWriter::flush() {
    queue_.drain();
}

void rememberPath(std::vector<std::string>& recent, const std::string& path) {
    std::string kept = path;  // `path` may be an entry of `recent`
    std::erase(recent, kept);
    recent.insert(recent.begin(), std::move(kept));
    if (recent.size() > recentLimit)
        recent.resize(recentLimit);
}

void followRename(Settings& settings, const std::string& oldPath, const std::string& newPath) {
    if (settings.favorites.erase(oldPath) > 0)
        settings.favorites.insert(newPath);
    std::replace(settings.recent.begin(), settings.recent.end(), std::string(oldPath), newPath);
}

}  // namespace morvane
