#include "ctl/plan_text.h"

#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ctl/session.h"
#include "support/format_text.h"
#include "support/path_text.h"

namespace morvane {
namespace {

struct Folder;

/// A line of the tree: a folder, or a file with its plan item.
struct Entry {
    std::string_view name;
    std::unique_ptr<Folder> folder;
    const ProjectPlanItem* item = nullptr;
};

struct Folder {
    std::vector<Entry> entries;  // in plan order
    std::unordered_map<std::string_view, std::size_t> folders;
    std::int64_t files = 0;
    std::int64_t bytes = 0;
};

Folder& subfolder(Folder& parent, std::string_view name) {
    const auto [place, isNew] = parent.folders.try_emplace(name, parent.entries.size());
    if (isNew)
        parent.entries.push_back({name, std::make_unique<Folder>(), nullptr});
    return *parent.entries[place->second].folder;
}

void add(Folder& root, const ProjectPlanItem& item) {
    Folder* folder = &root;
    const std::vector<std::string_view> pieces = pathPieces(item.relativeDestination);
    for (std::size_t depth = 0; depth < pieces.size(); ++depth) {
        ++folder->files;
        folder->bytes += item.size;
        if (depth + 1 == pieces.size())
            folder->entries.push_back({pieces[depth], nullptr, &item});
        else
            folder = &subfolder(*folder, pieces[depth]);
    }
}

std::string contentText(const Folder& folder) {
    return formatCount(folder.files) + " 个文件 · " + formatBytes(folder.bytes);
}

void write(const Folder& folder, const std::string& indent, std::string& text) {
    for (const Entry& entry : folder.entries) {
        text += indent;
        text += entry.name;
        if (entry.folder) {
            text += "/  （" + contentText(*entry.folder) + "）\n";
            write(*entry.folder, indent + "  ", text);
        } else {
            text += "  " + formatBytes(entry.item->size);
            if (entry.item->duplicateOf)
                text += "  重复素材";
            text += '\n';
        }
    }
}

}  // namespace

std::string planText(const ProjectPlan& plan) {
    Folder root;
    for (const ProjectPlanItem& item : plan.items)
        add(root, item);
    std::string text = plan.rootURL.path + "/\n";
    write(root, "  ", text);
    text += contentText(root) + '\n';
    for (const std::string& warning : plan.warnings)
        text += "• " + warning + '\n';
    return text;
}

void printPlan(const ProjectPlan& plan) {
    const std::string text = planText(plan);
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        printLine(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
}

}  // namespace morvane
