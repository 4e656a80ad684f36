// project plan | create | resume | verify
#include <sys/stat.h>

#include <charconv>
#include <iostream>
#include <memory>
#include <optional>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "ctl/plan_text.h"
#include "ctl/progress_line.h"
#include "ctl/project_progress.h"
#include "ctl/session.h"
#include "ctl/stop_signals.h"
#include "ctl/verbatim_arguments.h"
#include "platform/inhibit_sleep.h"
#include "project/execution.h"
#include "project/planning.h"
#include "project/project_errors.h"
#include "project/project_json.h"
#include "project/verification.h"
#include "support/format_text.h"

namespace morvane {
namespace {

/// The arguments of one project command, as typed.
struct ProjectArguments {
    std::string name;
    std::string parent;
    bool withoutFcp = false;
    std::int64_t frameRate = 25;
    std::string size = "1920x1080";
    std::vector<std::string> sources;
    std::string manifest;
    bool json = false;
    std::string store;  ///< where a DTD of the user's own may lie
};

bool isFolder(const std::string& path) {
    struct stat facts = {};
    return ::stat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

FileUrl location(const std::string& typed) {
    const std::string path = locatedPath(typed);
    return isFolder(path) ? folderLocation(path) : fileLocation(path);
}

/// "1920x1080" as two numbers; nothing for any other form.
std::optional<std::pair<std::int64_t, std::int64_t>> readSize(const std::string& text) {
    const auto number = [](std::string_view digits) -> std::optional<std::int64_t> {
        std::int64_t value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (error != std::errc() || end != digits.data() + digits.size())
            return std::nullopt;
        return value;
    };
    const std::size_t cross = text.find('x');
    if (cross == std::string::npos)
        return std::nullopt;
    const auto width = number(std::string_view(text).substr(0, cross));
    const auto height = number(std::string_view(text).substr(cross + 1));
    if (!width || !height)
        return std::nullopt;
    return std::pair(*width, *height);
}

ProjectRequest makeRequest(const ProjectArguments& arguments) {
    const auto size = readSize(arguments.size);
    if (!size)
        throw UsageError("--size 需要 宽x高，例如 1920x1080。");
    ProjectRequest request;
    request.name = arguments.name;
    request.parentURL = folderLocation(locatedPath(arguments.parent));
    for (const std::string& source : arguments.sources)
        request.sources.push_back(location(source));
    request.createFCP = !arguments.withoutFcp;
    request.frameRate = arguments.frameRate;
    request.width = size->first;
    request.height = size->second;
    return request;
}

/// Runs `work` with a job that stops on a signal and shows its progress; the engine's cancelled
/// case becomes StoppedError with the engine's text.
template <class Work>
auto runJob(const ProjectArguments& arguments, Work work) {
    ProjectProgressLine line;
    JobContext context(stopRequested,
                       [&line](const ProjectProgress& progress, JobContext::Delivery delivery) {
                           line.show(progress, delivery);
                       });
    context.setStoreFolder(arguments.store);
    try {
        return work(context);
    } catch (const ProjectCoreError& error) {
        if (error.isCancelled())
            throw StoppedError(error.what());
        throw;
    }
}

ExitStatus plan(const ProjectArguments& arguments) {
    const ProjectRequest request = makeRequest(arguments);
    const ProjectPlan plan =
        runJob(arguments, [&](JobContext& context) { return planSynchronously(context, request); });
    if (arguments.json)
        std::cout << encodePlan(plan);
    else
        printPlan(plan);
    return ExitStatus::Done;
}

nlohmann::ordered_json resultJson(const ProjectResult& result) {
    nlohmann::ordered_json document = {
        {"rootURL", absoluteText(result.rootURL)}, {"manifestURL", absoluteText(result.manifestURL)},
        {"copiedCount", result.copiedCount},       {"failedCount", result.failedCount},
        {"cancelled", result.cancelled},           {"warnings", result.warnings}};
    if (result.fcpxmlURL)
        document["fcpxmlURL"] = absoluteText(*result.fcpxmlURL);
    return document;
}

void printResult(const ProjectResult& result) {
    printLine("项目：" + result.rootURL.path);
    printLine("清单：" + result.manifestURL.path);
    if (result.fcpxmlURL)
        printLine("FCPXML：" + result.fcpxmlURL->path);
    printLine("已校验 " + formatCount(result.copiedCount) + " 个文件，失败 " +
              formatCount(result.failedCount) + " 个。");
    for (const std::string& warning : result.warnings)
        printLine("• " + warning);
}

ExitStatus report(const ProjectArguments& arguments, const ProjectResult& result) {
    if (arguments.json)
        printJson(resultJson(result));
    else
        printResult(result);
    if (result.cancelled)
        throw StoppedError(project_text::stopped.data());
    return result.failedCount > 0 ? ExitStatus::Incomplete : ExitStatus::Done;
}

ExitStatus create(const ProjectArguments& arguments) {
    const ProjectRequest request = makeRequest(arguments);
    const SleepInhibitor awake("正在复制并校验拍摄项目");
    return report(arguments, runJob(arguments, [&](JobContext& context) {
                      return executeSynchronously(context, planSynchronously(context, request));
                  }));
}

ExitStatus resume(const ProjectArguments& arguments) {
    const FileUrl manifest = fileLocation(locatedPath(arguments.manifest));
    const SleepInhibitor awake("正在继续整理拍摄项目");
    return report(arguments, runJob(arguments, [&](JobContext& context) {
                      return retrySynchronously(context, manifest);
                  }));
}

ExitStatus verify(const ProjectArguments& arguments) {
    const FileUrl manifest = fileLocation(locatedPath(arguments.manifest));
    const VerifyReport found =
        runJob(arguments, [&](JobContext& context) { return verifyProject(context, manifest); });
    if (arguments.json) {
        printJson({{"checked", found.checked}, {"changed", found.changed}, {"missing", found.missing}});
    } else {
        for (const std::string& path : found.changed)
            printLine("已改变：" + path);
        for (const std::string& path : found.missing)
            printLine("缺失：" + path);
        printLine("已核对 " + formatCount(found.checked) + " 个文件。");
    }
    return found.changed.empty() && found.missing.empty() ? ExitStatus::Done : ExitStatus::Incomplete;
}

using Command = ExitStatus (*)(const ProjectArguments&);

/// The callback that makes `command` the chosen one.
std::function<void()> choose(Session& session, std::shared_ptr<ProjectArguments> arguments, Command command) {
    return [&session, arguments, command] {
        session.action = [&session, arguments, command] {
            arguments->store = session.givenStoreFolder();
            return command(*arguments);
        };
    };
}

void addRequestCommand(CLI::App& project, Session& session, const char* name, const char* help,
                       Command command) {
    auto arguments = std::make_shared<ProjectArguments>();
    CLI::App* app = project.add_subcommand(name, help);
    app->add_option("--name", arguments->name, "项目名称")->required()->type_name("N");
    app->add_option("--into", arguments->parent, "项目保存位置")->required()->type_name("DIR");
    app->add_flag("--no-fcp", arguments->withoutFcp, "不生成 FCP 交接文件");
    app->add_option("--frame-rate", arguments->frameRate, "主剪辑帧率：24、25、30、50 或 60（默认 25）")
        ->type_name("F");
    app->add_option("--size", arguments->size, "主剪辑分辨率（默认 1920x1080）")->type_name("WxH");
    app->add_flag("--json", arguments->json, "在标准输出给出一份 JSON");
    addTexts(*app, "SOURCE", arguments->sources, "来源：相机卡、文件夹或文件")->required();
    app->callback(choose(session, arguments, command));
}

void addManifestCommand(CLI::App& project, Session& session, const char* name, const char* help,
                        Command command) {
    auto arguments = std::make_shared<ProjectArguments>();
    CLI::App* app = project.add_subcommand(name, help);
    app->add_flag("--json", arguments->json, "在标准输出给出一份 JSON");
    app->add_option("MANIFEST", arguments->manifest, "项目清单文件（MORVANE项目清单.json）")
        ->required()
        ->type_name(" ");
    app->callback(choose(session, arguments, command));
}

}  // namespace

void addProjectCommands(CLI::App& app, Session& session) {
    CLI::App* project = app.add_subcommand("project", "预演、创建、继续与核对拍摄项目");
    project->require_subcommand(1);
    addRequestCommand(*project, session, "plan", "预演：显示每个文件的去向，不创建任何内容", plan);
    addRequestCommand(*project, session, "create", "复制并校验到新项目", create);
    addManifestCommand(*project, session, "resume", "从项目清单继续未完成的任务", resume);
    addManifestCommand(*project, session, "verify", "重新核对清单中已校验的副本，不改动任何内容", verify);
}

}  // namespace morvane
