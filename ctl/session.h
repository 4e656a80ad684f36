// What every command of the command line shares: where the store is, how it ends, how it prints.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

namespace CLI {
class App;
}

namespace morvane {

/// The exit status of the process.
enum class ExitStatus : int {
    Done = 0,
    Failed = 1,       ///< the operation failed; one line on standard error says why
    Incomplete = 3,   ///< it ran to its end, but files failed or differ
    WrongUsage = 64,  ///< the arguments make no sense; nothing was touched
    Stopped = 130     ///< SIGINT or SIGTERM
};

/// `path` as the system resolves it from the current folder, made absolute: ".." behind a link leads out of
/// the folder the link names. An empty path stays empty: it names nothing.
std::string locatedPath(const std::string& path);

/// Filled while the arguments are read; the chosen command runs afterwards.
struct Session {
    std::string store;                   ///< --store as given; empty for the user's own store
    std::function<ExitStatus()> action;  ///< set by the chosen command

    /// The store folder in use, created when it is missing (failures show up later, on use).
    std::string storeFolder() const;
    /// The folder --store names, not touched; empty for the user's own store.
    std::string givenStoreFolder() const { return locatedPath(store); }
};

/// An argument that no rule of the parser catches; ends with ExitStatus::WrongUsage.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// SIGINT or SIGTERM arrived; ends with ExitStatus::Stopped.
class StoppedError : public std::runtime_error {
public:
    StoppedError();
    explicit StoppedError(const char* text);
};

/// Each adds its commands to `app`; `session` outlives the parser.
void addLibraryCommands(CLI::App& app, Session& session);
void addSearchCommand(CLI::App& app, Session& session);
void addCategoriesCommand(CLI::App& app, Session& session);
void addProjectCommands(CLI::App& app, Session& session);
void addProbeCommand(CLI::App& app, Session& session);

/// Writes `document` as the one JSON document of the run; bytes that are no UTF-8 become U+FFFD.
void printJson(const nlohmann::ordered_json& document);
/// One line for people. On a terminal control characters in it are shown as "?".
void printLine(std::string_view text);
/// One line on standard error, line breaks and control characters in it made harmless.
void printError(std::string_view text);

/// `path` made absolute against the current folder, "." and ".." resolved by text. An empty path stays
/// empty: it names nothing.
std::string absolutePath(const std::string& path);

}  // namespace morvane
