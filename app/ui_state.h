// What the window remembers of its own looks between runs: "ui-state.json" in the store folder.
// Kept apart from settings.json: losing or spoiling it loses nothing but a window size.
#pragma once

#include <functional>
#include <string>

#include <QObject>
#include <QTimer>

#include "library_ui/library_layout.h"
#include "support/serial_queue.h"

namespace morvane {

inline constexpr const char* uiStateFilename = "ui-state.json";

struct UiState {
    /// Opaque, as QWidget::saveGeometry gives it, in base64; empty for the first start.
    std::string geometry;
    LibraryLayout layout;

    bool operator==(const UiState&) const = default;
};

/// The file in `storeFolder`; anything missing, unreadable or malformed gives the initial state.
UiState loadUiState(const std::string& storeFolder);
/// Replaces the file; failures are silent. Not for the main thread.
void saveUiState(const std::string& storeFolder, const UiState& state);

/// Saves the looks in the background once they have rested. Main thread only.
class UiStateKeeper final : public QObject {
    Q_OBJECT
public:
    /// `capture` gives the looks of the moment; it is asked by rest() and, when something is left
    /// to save, by the destructor.
    UiStateKeeper(std::string storeFolder, std::function<UiState()> capture);
    /// Saves what has not rested yet and waits until it is written.
    ~UiStateKeeper() override;

    /// The looks changed: they are saved when they have not changed for `restTime`.
    void changed();

    /// Milliseconds.
    static constexpr int restTime = 500;

private:
    void save();

    const std::string storeFolder_;
    const std::function<UiState()> capture_;
    QTimer rest_;
    SerialQueue queue_;
};

}  // namespace morvane
