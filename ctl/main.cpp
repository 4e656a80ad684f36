// Entry of the command line: reads the arguments, runs the one chosen command, and turns whatever
// it throws into one line and an exit status. This is the only place that catches.
#include <iostream>

#include <CLI/CLI.hpp>
#include <QCoreApplication>

#include "ctl/session.h"
#include "ctl/stop_signals.h"
#include "ctl/usage_text.h"
#include "ctl/verbatim_arguments.h"

namespace morvane {
namespace {

/// The headings of the help are the groups that options and commands belong to.
void nameGroups(CLI::App& app) {
    for (CLI::Option* option : app.get_options())
        option->group("选项");
    for (CLI::App* command : app.get_subcommands({})) {
        command->group("命令");
        nameGroups(*command);
    }
}

void describe(CLI::App& app, Session& session) {
    app.name("morvanectl");
    app.require_subcommand(1);
    app.set_help_flag("-h,--help", "显示说明");
    app.set_version_flag("--version", "morvanectl 1.2.0", "显示版本");
    const auto formatter = app.get_formatter();
    formatter->column_width(32);
    for (const auto& [english, shown] :
         {std::pair("Usage", "用法"), std::pair("Positionals", "参数"), std::pair("OPTIONS", "选项"),
          std::pair("SUBCOMMAND", "命令"), std::pair("REQUIRED", "必填")})
        formatter->label(english, shown);
    app.add_option("--store", session.store, "素材库数据文件夹（默认使用当前用户的数据文件夹）")
        ->type_name("DIR")
        ->check([](const std::string& folder) { return folder.empty() ? "不能为空" : std::string(); });
    addLibraryCommands(app, session);
    addSearchCommand(app, session);
    addCategoriesCommand(app, session);
    addProjectCommands(app, session);
    addProbeCommand(app, session);
    takeVerbatim(app);
    nameGroups(app);
}

/// Nothing when the command is to run, else how the process ends.
std::optional<ExitStatus> readArguments(CLI::App& app, int argc, char** argv) {
    try {
        app.parse(guardedArguments(argc, argv));
        return std::nullopt;
    } catch (const CLI::Success& wish) {  // --help and --version
        app.exit(wish);
        return ExitStatus::Done;
    } catch (const CLI::ParseError& error) {
        printError("参数有误：" + usageText(error));
        return ExitStatus::WrongUsage;
    }
}

ExitStatus runCommand(const Session& session) {
    try {
        return session.action();
    } catch (const StoppedError& error) {
        printError(error.what());
        return ExitStatus::Stopped;
    } catch (const UsageError& error) {
        printError(error.what());
        return ExitStatus::WrongUsage;
    } catch (const std::exception& error) {
        printError(error.what());
        return ExitStatus::Failed;
    }
}

}  // namespace
}  // namespace morvane

int main(int argc, char** argv) {
    using namespace morvane;
    const QCoreApplication application(argc, argv);
    Session session;
    CLI::App app("MORVANE 素材助手的命令行：索引、搜索素材，整理并校验拍摄项目。");
    describe(app, session);
    if (const auto ended = readArguments(app, argc, argv))
        return static_cast<int>(*ended);
    watchStopSignals();
    const ExitStatus status = runCommand(session);
    std::cout.flush();
    if (!std::cout) {
        printError("无法写出结果。");
        return static_cast<int>(ExitStatus::Failed);
    }
    return static_cast<int>(status);
}
