#include "app/smoke_test.h"

#include <filesystem>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QLayout>
#include <QPixmap>

#include "app/theme/elided_label.h"
#include "app/theme/keyboard_window.h"
#include "support/atomic_file.h"
#include "support/path_text.h"

namespace morvane {
namespace {

using Json = nlohmann::ordered_json;

/// Visible, not empty, and wholly inside the window's content.
bool isInView(const QWidget& widget, const QWidget& window) {
    const QRect place(widget.mapTo(&window, QPoint(0, 0)), widget.size());
    return widget.isVisibleTo(&window) && !place.isEmpty() && window.rect().contains(place);
}

void writePicture(const QPixmap& picture, const std::string& path) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!picture.save(&buffer, "PNG"))
        throw std::runtime_error("无法生成界面图片。");
    replaceFile(path, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())),
                Durability::Rename);
}

Json renderFrame(const SmokeFrame& frame, const std::string& outputFolder, WindowFrame& window) {
    KeyboardWindow& content = *window.window();
    content.resize(frame.width, frame.height);
    // Layout requests and resizes of nested layouts arrive as events of their own.
    QApplication::sendPostedEvents();
    writePicture(content.grab(), joinPath(outputFolder, std::string(frame.name) + ".png"));
    return {{"name", frame.name},
            {"width", frame.width},
            {"height", frame.height},
            {"statusVisible", isInView(window.status(), content)},
            {"workspaceVisible", isInView(window.currentWorkspaceView(), content)}};
}

Json summary(Json frames, const SmokeFacts& facts) {
    return {{"scope", smokeScope},
            {"frames", std::move(frames)},
            {"dataDirectory", facts.dataDirectory},
            {"assetCount", facts.assetCount},
            {"visibleResultCount", facts.visibleResultCount},
            {"rootsCount", facts.rootsCount},
            {"favoritesCount", facts.favoritesCount},
            {"recentCount", facts.recentCount}};
}

void writeError(const std::string& outputFolder, std::string_view description) {
    try {
        replaceFile(joinPath(outputFolder, smokeErrorName), description, Durability::Rename);
    } catch (const std::exception&) {
        return;  // where the error cannot be written nothing can be told
    }
}

}  // namespace

void runSmokeTest(const std::string& outputFolder, WindowFrame& frame,
                  const std::function<void(Workspace)>& select, const std::function<SmokeFacts()>& facts) {
    try {
        std::filesystem::create_directories(outputFolder);
        std::filesystem::remove(joinPath(outputFolder, smokeResultsName));
        std::filesystem::remove(joinPath(outputFolder, smokeErrorName));
        Json frames = Json::array();
        for (const SmokeFrame& entry : smokeFrames) {
            select(entry.workspace);
            frames.push_back(renderFrame(entry, outputFolder, frame));
        }
        const std::string text =
            summary(std::move(frames), facts()).dump(2, ' ', false, Json::error_handler_t::replace);
        replaceFile(joinPath(outputFolder, smokeResultsName), text + "\n", Durability::Rename);
    } catch (const std::exception& error) {
        writeError(outputFolder, error.what());
    }
}

}  // namespace morvane
