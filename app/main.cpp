// Process entry: the command-line rule first, then one window per store.
#include <cstdio>
#include <cstdlib>

#include <QApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include "app/command_line.h"
#include "app/controller.h"
#include "app/theme/theme.h"
#include "catalog/store_folder.h"
#include "platform/single_instance.h"

namespace morvane {
namespace {

constexpr const char* noDisplayText =
    "无法打开窗口：没有可用的图形显示环境。请在桌面会话中启动，或使用命令行 morvanectl。";
constexpr const char* storeTakenText = "素材库正由 morvanectl 使用，请待其完成后再启动。";

void complain(std::string_view text) {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(text.size()), text.data());
}

/// Toolkit faults before the first window (a display that does not answer) end the process with one
/// clear line instead of an abort.
void onToolkitMessage(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg)
        return;
    complain(noDisplayText);
    std::_Exit(EXIT_FAILURE);
}

bool isGiven(const char* variable) {
    return !qEnvironmentVariableIsEmpty(variable);
}

bool hasDisplay() {
    return isGiven("DISPLAY") || isGiven("WAYLAND_DISPLAY") || isGiven("QT_QPA_PLATFORM");
}

/// A smoke test needs no display. A server that is named but does not answer is as good as none, so the
/// toolkit gets the platforms in the order to try.
void fallBackToOffscreen() {
    if (isGiven("QT_QPA_PLATFORM"))
        return;
    QByteArray platforms = "offscreen";
    if (hasDisplay())
        platforms.prepend("xcb;");
    if (isGiven("WAYLAND_DISPLAY"))
        platforms.prepend("wayland;");
    qputenv("QT_QPA_PLATFORM", platforms);
}

/// The standard dialogs speak the language of the product.
void installTranslation(QApplication& application) {
    auto* translator = new QTranslator(&application);
    if (translator->load("qtbase_zh_CN", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(translator);
}

int runWindow(Controller& controller, SingleInstance* claim) {
    if (claim != nullptr)
        claim->onRaise([&controller] { controller.bringForward(); });
    controller.applicationDidFinishLaunching();
    return QApplication::exec();
}

int run(int argc, char** argv, const std::vector<std::string>& arguments, const CommandLine& line) {
    const QtMessageHandler usual = qInstallMessageHandler(onToolkitMessage);
    QApplication application(argc, argv);
    qInstallMessageHandler(usual);
    QApplication::setApplicationName("morvane");
    QApplication::setApplicationDisplayName("MORVANE 素材助手");
    QApplication::setApplicationVersion("1.2.0");
    QGuiApplication::setDesktopFileName("com.morvane.assistant");
    MRVTheme::install(application);
    MRVTheme::setReducedMotion(line.smokeTestFolder.has_value());
    installTranslation(application);
    // A smoke test has a store of its own and is no window anyone could bring forward.
    if (line.smokeTestFolder) {
        Controller controller(arguments);
        return runWindow(controller, nullptr);
    }
    SingleInstance claim(storeFolder(arguments));
    if (!claim.isFirst()) {
        if (claim.raiseFirst())
            return EXIT_SUCCESS;
        complain(storeTakenText);
        return EXIT_FAILURE;
    }
    Controller controller(arguments);
    return runWindow(controller, &claim);
}

}  // namespace
}  // namespace morvane

int main(int argc, char** argv) {
    using namespace morvane;
    const std::vector<std::string> arguments(argv, argv + argc);
    const CommandLine line = readCommandLine(arguments);
    if (line.isFaulty) {
        complain(smokeTestUsageText);
        return usageExitStatus;
    }
    if (line.smokeTestFolder) {
        fallBackToOffscreen();
    } else if (!hasDisplay()) {
        complain(noDisplayText);
        return EXIT_FAILURE;
    }
    try {
        return run(argc, argv, arguments, line);
    } catch (const std::exception& error) {
        complain(error.what());
        return EXIT_FAILURE;
    }
}
