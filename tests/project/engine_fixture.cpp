#include "tests/project/engine_fixture.h"

#include <filesystem>
#include <utility>

#include "project/manifest.h"
#include "project/planning.h"
#include "project/project_errors.h"
#include "project/project_json.h"
#include "project/project_template.h"
#include "project/safe_paths.h"
#include "support/path_text.h"
#include "support/sha256.h"
#include "support/uuid.h"

namespace morvane::test {

Workplace::Workplace() {
    std::filesystem::create_directory(path("src"));
    std::filesystem::create_directory(into());
}

ProjectRequest Workplace::request(const std::string& name, const std::vector<std::string>& sources) const {
    ProjectRequest request;
    request.name = name;
    request.parentURL = folderLocation(into());
    request.createFCP = false;
    for (std::string text : sources) {
        const bool isFolder = text.ends_with('/');
        if (isFolder)
            text.pop_back();
        request.sources.push_back(isFolder ? folderLocation(source(text)) : fileLocation(source(text)));
    }
    return request;
}

ProjectPlan Workplace::plan(const std::string& name, const std::vector<std::string>& sources) const {
    JobContext context;
    return planSynchronously(context, request(name, sources));
}

ProjectPlanItem Workplace::item(const std::string& relativeSource,
                                const std::string& relativeDestination) const {
    ProjectPlanItem item;
    item.id = newUuid();
    item.sourceURL = fileLocation(source(relativeSource));
    item.relativeDestination = relativeDestination;
    item.category = folderAndCategory(item.sourceURL).category;
    const FileAttributes now = attributes(item.sourceURL);
    item.size = now.size;
    item.modified = now.modified;
    return item;
}

std::string errorOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}

bool isCancelledBy(const std::function<void()>& work) {
    try {
        work();
    } catch (const ProjectCoreError& error) {
        return error.isCancelled();
    }
    return false;
}

std::string sentence(std::string_view text, std::string_view tail) {
    return std::string(text).append(tail);
}

Recorder::Recorder(StopWhen stopWhen)
    : context_([this] { return isStopped_.load(); },
               [this, stopWhen = std::move(stopWhen)](const ProjectProgress& progress, JobContext::Delivery) {
                   reports_.push_back(progress);
                   isStopped_ = isStopped_ || (stopWhen && stopWhen(progress));
               }) {}

std::vector<std::string> Recorder::messages() const {
    std::vector<std::string> messages;
    for (const auto& report : reports_)
        messages.push_back(report.message);
    return messages;
}

std::string digestOf(const std::string& bytes) {
    Sha256 digest;
    digest.reset();
    digest.update(bytes);
    return digest.finish();
}

std::string someBytes(std::size_t count, unsigned seed) {
    std::string bytes(count, '\0');
    std::uint32_t state = seed * 2'654'435'761U + 1;
    for (char& byte : bytes) {
        state = state * 1'664'525U + 1'013'904'223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

std::vector<std::string> destinations(const ProjectPlan& plan) {
    std::vector<std::string> paths;
    for (const auto& item : plan.items)
        paths.push_back(item.relativeDestination);
    return paths;
}

double modifiedOf(const std::string& path) {
    return attributes(fileLocation(path)).modified;
}

ProjectManifest manifestAt(const std::string& root) {
    return decodeManifest(readAll(joinPath(root, manifestFilename)));
}

}  // namespace morvane::test
