#include "app/ui_state.h"

#include <exception>

#include "support/atomic_file.h"
#include "support/json_read.h"
#include "support/path_text.h"

namespace morvane {
namespace {

constexpr const char* geometryKey = "geometry";
constexpr std::size_t sizeLimit = 65'536;
constexpr std::int64_t widest = 10'000;

struct WidthKey {
    const char* key;
    int LibraryLayout::*width;
};
constexpr WidthKey widthKeys[] = {{"treeWidth", &LibraryLayout::treeWidth},
                                  {"previewWidth", &LibraryLayout::previewWidth},
                                  {"nameWidth", &LibraryLayout::nameWidth},
                                  {"folderWidth", &LibraryLayout::folderWidth}};

int readWidth(const nlohmann::json& file, const char* key) {
    const std::int64_t width = requiredInteger(file, key);
    if (width < 1 || width > widest)
        throw JsonError(key);
    return static_cast<int>(width);
}

}  // namespace

UiState loadUiState(const std::string& storeFolder) {
    try {
        const nlohmann::json file = parseJson(readFile(joinPath(storeFolder, uiStateFilename), sizeLimit));
        UiState state;
        state.geometry = requiredText(requiredObject(file), geometryKey);
        for (const WidthKey& entry : widthKeys)
            state.layout.*entry.width = readWidth(file, entry.key);
        return state;
    } catch (const std::exception&) {
        return {};
    }
}

void saveUiState(const std::string& storeFolder, const UiState& state) {
    nlohmann::json file = {{geometryKey, state.geometry}};
    for (const WidthKey& entry : widthKeys)
        file[entry.key] = state.layout.*entry.width;
    try {
        replaceFile(joinPath(storeFolder, uiStateFilename), file.dump(), Durability::Rename);
    } catch (const std::exception&) {
        return;  // the next start opens with the initial looks
    }
}

UiStateKeeper::UiStateKeeper(std::string storeFolder, std::function<UiState()> capture)
    : storeFolder_(std::move(storeFolder)),
      capture_(std::move(capture)),
      queue_("com.morvane.window.state", SerialQueue::Priority::Utility) {
    rest_.setSingleShot(true);
    rest_.setInterval(restTime);
    connect(&rest_, &QTimer::timeout, this, &UiStateKeeper::save);
}

UiStateKeeper::~UiStateKeeper() {
    if (rest_.isActive())
        save();
    queue_.drain();
}

void UiStateKeeper::changed() {
    rest_.start();
}

void UiStateKeeper::save() {
    rest_.stop();
    queue_.post([folder = storeFolder_, state = capture_()] { saveUiState(folder, state); });
}

}  // namespace morvane
