// The panel in which the user chooses files and folders, shown as a sheet.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "organizer_ui/folder_browser.h"
#include "support/file_url.h"
#include "support/serial_queue.h"

class QWidget;

namespace morvane {

struct OpenPanelRequest {
    std::string title;  ///< heading; empty for none, then `message` takes its place
    std::string message;
    std::string prompt;  ///< title of the confirming button
    BrowseRules rules;
    std::string startFolder;  ///< empty: the home folder
};

/// Shows the panel on the window of `view` and returns. `chosen` gets one or more locations when the
/// user confirms and is never called when they do not. A path typed but not gone to yet is gone to
/// first: where it cannot be chosen, the panel stays open. Disks are looked at on `queue`, which must outlive
/// the window. Main thread.
void presentOpenPanel(QWidget* view, const OpenPanelRequest& request, SerialQueue& queue,
                      std::function<void(const std::vector<FileUrl>&)> chosen);

}  // namespace morvane
