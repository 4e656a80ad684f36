#include "organizer_ui/plan_tree.h"

#include <array>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "organizer_ui/organizer_state.h"
#include "project/project_template.h"
#include "support/format_text.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

struct FcpEvent {
    std::string_view category;
    const char* event;
};

constexpr std::array<FcpEvent, 5> fcpEvents = {{{"拍摄素材", "01_拍摄素材"},
                                                {"同期声", "02_同期声"},
                                                {"音乐", "03_音乐"},
                                                {"音效", "04_音效"},
                                                {"图形", "05_图形"}}};

std::unique_ptr<ProjectOutlineNode> folder(std::string title, const char* symbol) {
    return std::make_unique<ProjectOutlineNode>(std::move(title), symbol, true);
}

std::unique_ptr<ProjectOutlineNode> leaf(std::string title, const char* symbol) {
    return std::make_unique<ProjectOutlineNode>(std::move(title), symbol, false);
}

std::string diskDetail(const ProjectPlanItem& item) {
    if (item.duplicateOf)
        return "重复素材 · 以检查结果为准";
    if (item.isCameraCard)
        return "相机卡 · 保持结构";
    return formatBytes(item.size);
}

/// Finds or makes the folder of a destination. Keys are whole folder paths, which live in the plan;
/// files of one folder mostly follow each other, so the last answer is kept.
class FolderFinder {
public:
    void add(ProjectOutlineNode& topLevel) { folders_.emplace(topLevel.title, &topLevel); }

    /// Nothing when the first component is no template folder.
    ProjectOutlineNode* find(std::string_view path) {
        if (path == lastPath_)
            return lastFolder_;
        lastPath_ = path;
        return lastFolder_ = findOrMake(path);
    }

private:
    ProjectOutlineNode* findOrMake(std::string_view path) {
        const auto known = folders_.find(path);
        if (known != folders_.end())
            return known->second;
        const std::size_t slash = path.rfind('/');
        if (slash == std::string_view::npos)
            return nullptr;
        ProjectOutlineNode* above = findOrMake(path.substr(0, slash));
        if (!above)
            return nullptr;
        ProjectOutlineNode& made = above->append(folder(std::string(path.substr(slash + 1)), "folder"));
        folders_.emplace(path, &made);
        return &made;
    }

    std::unordered_map<std::string_view, ProjectOutlineNode*> folders_;
    std::string_view lastPath_;
    ProjectOutlineNode* lastFolder_ = nullptr;
};

void addDiskFolders(ProjectOutlineNode& root, const ProjectPlan* plan) {
    FolderFinder finder;
    for (const auto& name : templateFolders)
        finder.add(root.append(folder(std::string(name), "folder")));
    for (std::size_t i = 0; plan && i < plan->items.size(); ++i) {
        const ProjectPlanItem& item = plan->items[i];
        const std::string_view destination = item.relativeDestination;
        const std::size_t slash = destination.rfind('/');
        if (slash == std::string_view::npos)
            continue;
        ProjectOutlineNode* parent = finder.find(destination.substr(0, slash));
        if (!parent)
            continue;
        ProjectOutlineNode& node = parent->append(leaf(std::string(destination.substr(slash + 1)), "doc"));
        node.detail = diskDetail(item);
        node.item = i;
    }
    for (const auto& top : root.children)
        top->detail = std::to_string(top->fileCount()) + " 个文件";
}

void addFcpEvents(ProjectOutlineNode& root, const ProjectPlan* plan) {
    std::unordered_map<std::string_view, ProjectOutlineNode*> events;
    for (const FcpEvent& row : fcpEvents)
        events.emplace(row.category, &root.append(folder(row.event, "film.stack")));
    for (std::size_t i = 0; plan && i < plan->items.size(); ++i) {
        const ProjectPlanItem& item = plan->items[i];
        const auto event = events.find(item.category);
        if (item.isCameraCard || event == events.end())
            continue;
        ProjectOutlineNode& node = event->second->append(leaf(item.sourceURL.lastComponent(), "doc"));
        node.detail = "待核对媒体";
        node.item = i;
    }
    if (plan)
        for (const auto& event : root.children)
            event->detail = std::to_string(event->children.size()) + " 个待核对";
    root.append(folder("06_剪辑工程", "film.stack")).append(leaf("主剪辑", "timeline.selection"));
}

std::string rootTitle(const PreviewRequest& request) {
    if (request.plan)
        return request.plan->rootURL.lastComponent();
    std::string name = trimmed(request.name);
    return name.empty() ? "新拍摄项目" : name;
}

const char* rootSymbol(PreviewMode mode) {
    return mode == PreviewMode::fcp ? "film.stack" : "folder.fill";
}

}  // namespace

ProjectOutlineNode& ProjectOutlineNode::append(std::unique_ptr<ProjectOutlineNode> child) {
    child->parent = this;
    child->row = children.size();
    children.push_back(std::move(child));
    return *children.back();
}

std::size_t ProjectOutlineNode::fileCount() const {
    std::size_t count = 0;
    for (const auto& child : children)
        count += child->isFolder ? child->fileCount() : 1;
    return count;
}

std::unique_ptr<ProjectOutlineNode> buildPlanTree(const PreviewRequest& request) {
    auto root = folder(rootTitle(request), rootSymbol(request.mode));
    if (request.mode == PreviewMode::fcp)
        addFcpEvents(*root, request.plan.get());
    else
        addDiskFolders(*root, request.plan.get());
    return root;
}

PreviewTexts previewTexts(const PreviewRequest& request) {
    PreviewTexts texts;
    const ProjectPlan* plan = request.plan.get();
    texts.rootTitle = rootTitle(request);
    texts.rootSymbol = rootSymbol(request.mode);
    if (request.mode == PreviewMode::fcp) {
        texts.title = "FCP 分类预演";
        texts.subtitle = request.createFCP ? "按用途建立事件与关键词，仅交接可读的普通单轨媒体。"
                                           : "更多选项中可开启 FCP 交接文件。";
        texts.subtitleToolTip =
            "分类中的数量是待核对候选，不代表已导入。图片、多音轨、时间码轨道、复杂相机卡和不支持的媒体首版只"
            "保留磁盘副本，"
            "不强行导入 FCP。";
        texts.summary = "图片 / 多音轨 / 时间码 / 相机卡：仅备份";
        texts.note = "这些文件保留在磁盘项目中。相机卡请使用 FCP 原生相机导入；其他不支持的媒体见整理报告。";
    } else {
        texts.title = "磁盘目录预演";
        texts.subtitle = plan ? "复制到新项目，原始文件保留。" : "十分类模板，检查后显示实际整理位置。";
        if (plan)
            texts.summary = std::to_string(plan->items.size()) + " 个文件 · " +
                            formatBytes(totalSize(*plan)) + " · " + std::to_string(plan->warnings.size()) +
                            " 条提醒";
    }
    if (!plan)
        texts.summary = "先添加素材，检查整理计划";
    texts.sourceSummary = sourceSummaryText(
        request.sources, plan ? std::optional<std::size_t>(plan->items.size()) : std::nullopt);
    return texts;
}

}  // namespace morvane
