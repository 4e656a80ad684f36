#include "project/project_records.h"

#include <array>
#include <utility>

namespace morvane {

namespace {

constexpr std::array<std::pair<ProjectFileState, std::string_view>, 5> stateTexts{{
    {ProjectFileState::pending, "pending"},
    {ProjectFileState::copying, "copying"},
    {ProjectFileState::verified, "verified"},
    {ProjectFileState::failed, "failed"},
    {ProjectFileState::cancelled, "cancelled"},
}};

}  // namespace

std::string_view rawText(ProjectFileState state) {
    for (const auto& [value, text] : stateTexts)
        if (value == state)
            return text;
    return {};
}

std::optional<ProjectFileState> fileState(std::string_view rawText) {
    for (const auto& [value, text] : stateTexts)
        if (text == rawText)
            return value;
    return std::nullopt;
}

}  // namespace morvane
