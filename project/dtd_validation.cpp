#include "project/dtd_validation.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/data_folder.h"
#include "platform/run_process.h"
#include "project/project_errors.h"
#include "support/file_url.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

constexpr const char* validator = "/usr/bin/xmllint";
/// Bytes of its errors that are told: a definition that refuses everything has something to say about
/// every clip, and a manifest has to stay readable.
constexpr std::size_t longestErrorText = 65'536;

}  // namespace

std::vector<std::string> dtdPlaces(const JobContext& context) {
    std::vector<std::string> places{installedDtd};
    if (const std::string store = context.storeFolder(); !store.empty())
        places.push_back(joinPath(store, dtdName));
    for (const std::string& folder : sharedDataFolders())
        places.push_back(joinPath(joinPath(folder, "morvane"), dtdName));
    return places;
}

std::optional<std::string> findDtd(const JobContext& context) {
    for (const std::string& place : dtdPlaces(context)) {
        std::error_code ignored;
        if (std::filesystem::is_regular_file(place, ignored))
            return place;
    }
    return std::nullopt;
}

void validateAgainstDtd(const JobContext& context, const std::string& dtd, const std::string& path) {
    // The definition's folder has blanks in its name, which several builds of xmllint only accept in
    // the escaped form of a URL; the document is a plain path.
    const std::vector<std::string> arguments{"--nonet", "--noout", "--dtdvalid",
                                             absoluteText(fileLocation(dtd)), path};
    ProcessOutcome outcome;
    try {
        outcome = runProcess(validator, arguments, [&context] { return context.isCancelled(); });
    } catch (const std::system_error& error) {
        failWith(project_text::validatorPrefix, error.what());
    }
    context.throwIfCancelled();
    if (outcome.exitStatus != 0) {
        // A character cut in two at the end becomes a replacement character, too.
        outcome.standardError.resize(std::min(outcome.standardError.size(), longestErrorText));
        const std::string text = withInvalidBytesReplaced(outcome.standardError, "\xef\xbf\xbd");
        failWith(project_text::dtdViolationPrefix, text.empty() ? project_text::unknownError : text);
    }
}

}  // namespace morvane
