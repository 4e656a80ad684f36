// Clearing away what a dead run left in its project.
#pragma once

#include "project/project_records.h"

namespace morvane {

/// Removes temporary files (exactly our own name pattern, regular files) from the project folder and
/// from those of the hand-off and of the plan's destinations, never following a link and never a file that
/// the plan itself put there. Only while the project's lock is held. What cannot be removed stays.
void removeStaleFiles(const ProjectPlan& plan);

}  // namespace morvane
