// The sheets around a run: warnings before copying, the report after it, the hand-off.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "project/project_records.h"

class QWidget;

namespace morvane {

/// What the report says about a run.
struct ReportTexts {
    std::string message;
    std::string informative;
    std::string body;
};
ReportTexts reportTexts(const ProjectResult& result);

/// Message of the sheet that shows `count` warnings before copying.
std::string warningsMessage(std::size_t count);
/// The texts with an empty line between them.
std::string joinedByBlankLines(const std::vector<std::string>& texts);

/// Each shows a sheet on the window of `view` and returns; main thread. `confirmed` runs when the user
/// goes on with the copy.
void presentPlanWarnings(QWidget* view, const std::vector<std::string>& warnings,
                         std::function<void()> confirmed);
void presentReport(QWidget* view, const ProjectResult& result);
/// Only with an fcpxmlURL in `result`.
void presentHandOff(QWidget* view, const ProjectResult& result);

}  // namespace morvane
