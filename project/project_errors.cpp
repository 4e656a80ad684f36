#include "project/project_errors.h"

#include <utility>

#include "support/text_fold.h"

namespace morvane {

ProjectCoreError::ProjectCoreError(std::string text, bool isCancelled)
    : text_(std::move(text)), isCancelled_(isCancelled) {}

ProjectCoreError ProjectCoreError::message(std::string text) {
    return {std::move(text), false};
}

ProjectCoreError ProjectCoreError::cancelled() {
    return {std::string(project_text::cancelled), true};
}

void failWith(std::string_view text, std::string_view tail) {
    throw ProjectCoreError::message(std::string(text).append(tail));
}

std::string shownName(std::string_view name) {
    return withInvalidBytesReplaced(name, "_");
}

}  // namespace morvane
