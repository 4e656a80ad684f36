#include "project/duplicates.h"

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "project/file_hash.h"
#include "project/project_errors.h"

namespace morvane {

namespace {

using Group = std::vector<std::size_t>;  // item indexes in plan order

/// The groups of two or more members that share a key; groups in the order of their first members.
template <class Key>
std::vector<Group> sharedBy(const Group& members, const std::function<Key(std::size_t)>& keyOf) {
    std::unordered_map<Key, std::size_t> places;
    std::vector<Group> groups;
    for (const std::size_t member : members) {
        const auto [place, isNew] = places.try_emplace(keyOf(member), groups.size());
        if (isNew)
            groups.emplace_back();
        groups[place->second].push_back(member);
    }
    std::erase_if(groups, [](const Group& group) { return group.size() < 2; });
    return groups;
}

class DuplicateCheck {
public:
    DuplicateCheck(JobContext& context, ProjectPlan& plan)
        : context_(context), plan_(plan), hasher_(context) {
        progress_.completedFiles = progress_.totalFiles = static_cast<std::int64_t>(plan.items.size());
    }

    void run() {
        if (plan_.items.empty())
            return;
        report(std::string(project_text::checkingDuplicates));
        Group all(plan_.items.size());
        for (std::size_t index = 0; index < all.size(); ++index)
            all[index] = index;
        for (const Group& size :
             sharedBy<std::int64_t>(all, [this](std::size_t index) { return plan_.items[index].size; }))
            for (const Group& head :
                 sharedBy<std::string>(size, [this](std::size_t index) { return headOf(index); }))
                for (const Group& fast :
                     sharedBy<std::string>(head, [this](std::size_t index) { return fastOf(index); }))
                    for (const std::size_t index : fast)
                        checkWhole(index);
        if (duplicates_ > 0)
            plan_.warnings.push_back(std::string(project_text::duplicatesPrefix) +
                                     std::to_string(duplicates_) +
                                     std::string(project_text::duplicatesSuffix));
    }

private:
    void report(std::string message) {
        progress_.message = std::move(message);
        context_.report(progress_);
    }

    std::string nameOf(std::size_t index) const {
        return shownName(plan_.items[index].sourceURL.lastComponent());
    }

    std::string headOf(std::size_t index) {
        context_.throwIfCancelled();
        report(std::string(project_text::fastCheckPrefix) + nameOf(index));
        return hasher_.headFingerprint(plan_.items[index].sourceURL);
    }

    std::string fastOf(std::size_t index) {
        return hasher_.fastFingerprint(plan_.items[index].sourceURL, plan_.items[index].size);
    }

    void checkWhole(std::size_t index) {
        context_.throwIfCancelled();
        ProjectPlanItem& item = plan_.items[index];
        const std::string before = std::string(project_text::fullCheckPrefix) + nameOf(index) +
                                   std::string(project_text::fullCheckSeparator);
        const std::string after = "/" + std::to_string(item.size);
        item.sourceHash = hasher_.hashFile(
            item.sourceURL, [&](std::int64_t bytes) { report(before + std::to_string(bytes) + after); });
        const auto [first, isNew] = firstWith_.try_emplace(*item.sourceHash, index);
        if (isNew)
            return;
        item.duplicateOf = shownName(plan_.items[first->second].sourceURL.path);
        ++duplicates_;
    }

    JobContext& context_;
    ProjectPlan& plan_;
    FileHasher hasher_;
    ProjectProgress progress_;
    std::unordered_map<std::string, std::size_t> firstWith_;
    std::int64_t duplicates_ = 0;
};

}  // namespace

void findDuplicates(JobContext& context, ProjectPlan& plan) {
    DuplicateCheck(context, plan).run();
}

}  // namespace morvane
