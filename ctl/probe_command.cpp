// probe
#include <memory>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "ctl/session.h"
#include "ctl/stop_signals.h"
#include "ctl/verbatim_arguments.h"
#include "media/media_client.h"
#include "project/media_probe.h"

namespace morvane {
namespace {

struct ProbeArguments {
    std::vector<std::string> files;
    bool json = false;
};

/// What the hand-off would know about one file: facts, or the reason why it is left out.
struct ProbedFile {
    std::string path;
    std::optional<MediaFacts> facts;
    std::string reason;
};

ProbedFile probeFile(MediaClient& client, const std::string& path) {
    if (!isSupportedMedia(path))
        return {path, std::nullopt, "交接文件不支持此扩展名"};
    const auto result = client.probe(locatedPath(path), {.cancelled = stopRequested});
    if (result.outcome == MediaOutcome::Cancelled)
        throw StoppedError();
    return {path, result.value, result.reason};
}

nlohmann::ordered_json encode(const MediaTime& time) {
    return {{"value", time.value}, {"timescale", time.timescale}};
}

nlohmann::ordered_json encode(const ProbedFile& file) {
    if (!file.facts)
        return {{"path", file.path}, {"reason", file.reason}};
    return {{"path", file.path},
            {"duration", encode(file.facts->duration)},
            {"video", file.facts->video},
            {"audio", file.facts->audio},
            {"width", file.facts->width},
            {"height", file.facts->height},
            {"frameDuration", encode(file.facts->frameDuration)},
            {"rate", file.facts->rate},
            {"channels", file.facts->channels}};
}

std::string fraction(const MediaTime& time) {
    return std::to_string(time.value) + "/" + std::to_string(time.timescale) + " 秒";
}

std::string describe(const ProbedFile& file) {
    if (!file.facts)
        return file.path + "：" + file.reason;
    std::string text = file.path + "：时长 " + fraction(file.facts->duration);
    if (file.facts->video)
        text += "，视频 " + std::to_string(file.facts->width) + "×" + std::to_string(file.facts->height) +
                "，每帧 " + fraction(file.facts->frameDuration);
    if (file.facts->audio)
        text += "，音频 " + std::to_string(file.facts->rate) + " Hz，" +
                std::to_string(file.facts->channels) + " 声道";
    return text;
}

ExitStatus probeAll(const ProbeArguments& arguments) {
    MediaClient client;
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const std::string& path : arguments.files) {
        throwIfStopped();
        const ProbedFile file = probeFile(client, path);
        if (arguments.json)
            list.push_back(encode(file));
        else
            printLine(describe(file));
    }
    if (arguments.json)
        printJson(list);
    return ExitStatus::Done;
}

}  // namespace

void addProbeCommand(CLI::App& app, Session& session) {
    auto arguments = std::make_shared<ProbeArguments>();
    CLI::App* command = app.add_subcommand("probe", "显示交接文件会怎样看待媒体文件");
    command->add_flag("--json", arguments->json, "在标准输出给出一份 JSON（每个文件一项的数组）");
    addTexts(*command, "FILE", arguments->files, "媒体文件")->required();
    command->callback(
        [&session, arguments] { session.action = [arguments] { return probeAll(*arguments); }; });
}

}  // namespace morvane
