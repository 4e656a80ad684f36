// The progress bar of the project commands: share, bytes, rate, remaining time.
#pragma once

#include <string>

#include "ctl/progress_line.h"
#include "ctl/rate_estimate.h"
#include "project/job_context.h"

namespace morvane {

/// "[=====>    ]  45%  1.2 GB / 2.6 GB  180 MB/s  剩余 0:08  message"; while the totals are unknown only
/// the count and the message.
std::string progressText(const ProjectProgress& progress, const RateEstimate& rate);

class ProjectProgressLine {
public:
    /// The sink of a JobContext.
    void show(const ProjectProgress& progress, JobContext::Delivery delivery);

private:
    ProgressLine line_;
    RateEstimate rate_;
};

}  // namespace morvane
