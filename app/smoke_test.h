// The self-check of automated runs: renders the window in fixed sizes and workspaces into PNG files
// and writes a JSON summary. Works on the store it is given, opens nothing else, copies nothing.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>

#include "app/window_frame.h"

namespace morvane {

struct SmokeFrame {
    const char* name;  ///< also the PNG's name, without ".png"
    int width;         ///< of the window's content, in points
    int height;
    Workspace workspace;
};

inline constexpr std::array<SmokeFrame, 3> smokeFrames{{
    {"管理素材", 1340, 840, Workspace::Management},
    {"整理素材", 1340, 900, Workspace::Organizer},
    {"整理素材_小窗口", 1100, 700, Workspace::Organizer},
}};

inline constexpr const char* smokeResultsName = "ui-smoke-results.json";
inline constexpr const char* smokeErrorName = "ui-smoke-error.txt";
inline constexpr const char* smokeScope =
    "Isolated AppKit view render/layout; does not operate FCP or user media";
/// Milliseconds between the request and the first frame: the first layout pass and the catalog's
/// results are in place by then.
inline constexpr int smokeDelay = 300;

/// The facts of the library beside the frames.
struct SmokeFacts {
    std::string dataDirectory;
    std::size_t assetCount = 0;
    std::size_t visibleResultCount = 0;
    std::size_t rootsCount = 0;
    std::size_t favoritesCount = 0;
    std::size_t recentCount = 0;
};

/// Creates `outputFolder` with its parents, writes one PNG a frame (at the window's device pixel
/// ratio) and smokeResultsName; on the first error smokeErrorName with its description instead.
/// Results of an earlier run under either name are removed first. `select` brings a workspace
/// into view; `facts` is asked last. Main thread; never throws.
void runSmokeTest(const std::string& outputFolder, WindowFrame& frame,
                  const std::function<void(Workspace)>& select, const std::function<SmokeFacts()>& facts);

}  // namespace morvane
