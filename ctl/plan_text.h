// A plan as a tree for people.
#pragma once

#include <string>

#include "project/project_records.h"

namespace morvane {

/// Lines, each with a line feed: the project folder, its folders and files in plan order with sizes,
/// a summary, and the warnings.
std::string planText(const ProjectPlan& plan);
/// Prints planText line by line.
void printPlan(const ProjectPlan& plan);

}  // namespace morvane
