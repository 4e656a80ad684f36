// The JSON form of the organizer's records: keys sorted, pretty-printed, "/" written as "\/", dates in
// UTC without fraction, locations as URL text, optional keys absent. Reading is strict.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "project/project_records.h"

namespace morvane {

/// "2026-11-15T02:30:00Z" for seconds since 1970 UTC.
std::string dateText(std::int64_t seconds);

/// The plan as one JSON object.
std::string encodePlan(const ProjectPlan& plan);
std::string encodeManifest(const ProjectManifest& manifest);
/// Bytes of the largest manifest a run of this plan writes while none of its files fails.
std::size_t expectedManifestSize(const ProjectPlan& plan);

/// Throws JsonError for text that is no JSON, a missing key, or a value of the wrong type or form.
ProjectManifest decodeManifest(std::string_view text);

/// The text of a manifest that can follow changes of single records without being built again: every
/// record stands in a field wide enough for its verified form, filled up with spaces behind it.
class ManifestText {
public:
    struct Range {
        std::size_t offset;
        std::size_t count;
    };

    explicit ManifestText(const ProjectManifest& manifest);

    const std::string& text() const { return text_; }
    /// Brings record `index` up to date in place; false (and nothing changed) when it needs more room
    /// than its field has.
    bool setRecord(std::size_t index, const ProjectFileRecord& record);
    /// Brings `revision` and `updatedAt` up to date in place.
    void setHead(std::int64_t revision, std::int64_t updatedAt);
    /// Where record `index` stands, and where "revision" to "updatedAt" stand.
    Range record(std::size_t index) const { return records_[index]; }
    Range head() const { return head_; }

private:
    std::int64_t schemaVersion_;
    std::string text_;
    std::vector<Range> records_;
    Range head_{};
};

}  // namespace morvane
