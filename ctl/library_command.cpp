// library list | refresh | add | remove
#include <sys/stat.h>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "catalog/library_index.h"
#include "ctl/progress_line.h"
#include "ctl/session.h"
#include "ctl/stop_signals.h"
#include "ctl/store_access.h"
#include "ctl/verbatim_arguments.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {
namespace {

struct LibraryArguments {
    std::vector<std::string> folders;
    bool json = false;
};

/// Passes a stop signal on to a stop source while it lives.
class SignalBridge {
public:
    explicit SignalBridge(std::stop_source& target)
        : watcher_([this, &target](const std::stop_token& ended) { watch(ended, target); }) {}

private:
    void watch(const std::stop_token& ended, std::stop_source& target) {
        std::unique_lock lock(mutex_);
        while (!wake_.wait_for(lock, ended, std::chrono::milliseconds(50), [] { return stopRequested(); }))
            if (ended.stop_requested())
                return;
        target.request_stop();
    }

    std::mutex mutex_;
    std::condition_variable_any wake_;
    std::jthread watcher_;
};

RefreshedLibrary walkAndSave(StoreWriter& store, SharedAssets previous) {
    std::stop_source stop;
    const SignalBridge bridge(stop);
    ProgressLine line;
    ScanRequest request;
    request.roots = store.settings.roots;
    request.previous = std::move(previous);
    request.progress = [&line](std::size_t found) { line.show(scanProgressText(found)); };
    request.stop = stop.get_token();
    line.show(scanStartedText);
    throwIfStopped();
    try {
        return refreshLibrary(store.catalog, request);
    } catch (const ScanStopped&) {
        throw StoppedError();
    }
}

/// As the window does it: the mark "not finished" stays in the settings unless the save succeeded. Without
/// the catalog's list, which holds what offline folders keep, nothing is begun.
ExitStatus refresh(StoreWriter& store, const LibraryArguments& arguments) {
    SharedAssets previous = store.catalog.query({});
    store.settings.pendingRefresh = true;
    saveSettings(store.folder, store.settings);
    const RefreshedLibrary library = walkAndSave(store, std::move(previous));
    if (library.notice.empty()) {
        store.settings.pendingRefresh = false;
        saveSettings(store.folder, store.settings);
    }
    const std::string summary = scanSummaryText(store.settings.roots.size(), library.scan, library.notice);
    if (arguments.json)
        printJson({{"summary", summary},
                   {"assetCount", library.scan.assets->size()},
                   {"offline", library.scan.offline},
                   {"unreadable", library.scan.unreadable},
                   {"notice", library.notice}});
    else
        printLine(summary);
    if (!library.notice.empty())
        throw std::runtime_error("索引保存失败。");
    return ExitStatus::Done;
}

ExitStatus listFolders(const Session& session, const LibraryArguments& arguments) {
    const StoreReader store(session);
    if (arguments.json) {
        printJson(store.settings.roots);
        return ExitStatus::Done;
    }
    for (const std::string& root : store.settings.roots)
        printLine(root);
    return ExitStatus::Done;
}

std::string existingFolder(const std::string& typed) {
    std::string path = absolutePath(typed);
    struct stat facts = {};
    if (::stat(path.c_str(), &facts) != 0 || !S_ISDIR(facts.st_mode))
        throw std::runtime_error("不是可用的文件夹：" + path);
    if (!isValidUtf8(path))
        throw std::runtime_error("文件夹名称不是有效的 UTF-8：" + path);
    return path;
}

ExitStatus addFolders(const Session& session, const LibraryArguments& arguments) {
    std::vector<std::string> folders;
    for (const std::string& typed : arguments.folders)
        folders.push_back(existingFolder(typed));
    StoreWriter store(session);
    std::vector<std::string>& roots = store.settings.roots;
    for (const std::string& folder : folders)
        if (std::find(roots.begin(), roots.end(), folder) == roots.end())
            roots.push_back(folder);
    return refresh(store, arguments);
}

/// The library folder that `typed` names, as the settings hold it: letter by letter, else the same place in
/// another spelling.
std::string storedFolder(const std::vector<std::string>& roots, const std::string& typed) {
    if (std::find(roots.begin(), roots.end(), typed) != roots.end())
        return typed;
    const std::string place = absolutePath(typed);
    const auto found = std::find_if(roots.begin(), roots.end(), [&place](const std::string& root) {
        return root == place || standardizedPath(root) == place;
    });
    if (found == roots.end())
        throw std::runtime_error("不是素材库文件夹：" + typed);
    return *found;
}

ExitStatus removeFolders(const Session& session, const LibraryArguments& arguments) {
    StoreWriter store(session);
    std::vector<std::string>& roots = store.settings.roots;
    std::vector<std::string> named;
    for (const std::string& typed : arguments.folders)
        named.push_back(storedFolder(roots, typed));
    std::erase_if(roots, [&named](const std::string& root) {
        return std::find(named.begin(), named.end(), root) != named.end();
    });
    return refresh(store, arguments);
}

ExitStatus refreshAll(const Session& session, const LibraryArguments& arguments) {
    StoreWriter store(session);
    return refresh(store, arguments);
}

using Command = ExitStatus (*)(const Session&, const LibraryArguments&);
enum class Folders { None, Some };

void addCommand(CLI::App& library, Session& session, const char* name, const char* help, Folders folders,
                Command command) {
    auto arguments = std::make_shared<LibraryArguments>();
    CLI::App* app = library.add_subcommand(name, help);
    app->add_flag("--json", arguments->json, "在标准输出给出一份 JSON");
    if (folders == Folders::Some)
        addTexts(*app, "DIR", arguments->folders, "素材文件夹")->required();
    app->callback([&session, arguments, command] {
        session.action = [&session, arguments, command] { return command(session, *arguments); };
    });
}

}  // namespace

void addLibraryCommands(CLI::App& app, Session& session) {
    CLI::App* library = app.add_subcommand("library", "管理素材文件夹与索引");
    library->require_subcommand(1);
    addCommand(*library, session, "list", "列出素材文件夹", Folders::None, listFolders);
    addCommand(*library, session, "refresh", "刷新索引", Folders::None, refreshAll);
    addCommand(*library, session, "add", "添加素材文件夹并刷新索引", Folders::Some, addFolders);
    addCommand(*library, session, "remove", "移除素材文件夹并刷新索引（不会删除文件）", Folders::Some,
               removeFolders);
}

}  // namespace morvane
