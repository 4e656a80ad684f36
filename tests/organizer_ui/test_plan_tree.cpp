// The plan as a tree: both modes, order, details, counts, texts; and as an item model.
#include "organizer_ui/plan_tree.h"

#include <QAbstractItemModelTester>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "organizer_ui/plan_tree_model.h"

namespace morvane {
namespace {

struct Spec {
    std::string destination;
    std::string category = "拍摄素材";
    std::int64_t size = 1'000'000;
    bool card = false;
    bool duplicate = false;
};

std::shared_ptr<ProjectPlan> planOf(const std::vector<Spec>& specs) {
    auto plan = std::make_shared<ProjectPlan>();
    plan->rootURL = folderLocation("/disk/2026 秋日旅拍");
    for (const Spec& spec : specs) {
        ProjectPlanItem item;
        item.relativeDestination = spec.destination;
        item.sourceURL = fileLocation("/cards/" + spec.destination.substr(spec.destination.rfind('/') + 1));
        item.category = spec.category;
        item.size = spec.size;
        item.isCameraCard = spec.card;
        if (spec.duplicate)
            item.duplicateOf = "/cards/first";
        plan->items.push_back(item);
    }
    return plan;
}

PreviewRequest requestOf(PreviewMode mode, std::shared_ptr<const ProjectPlan> plan = nullptr,
                         std::string name = {}) {
    PreviewRequest request;
    request.mode = mode;
    request.name = std::move(name);
    request.plan = std::move(plan);
    return request;
}

/// The tree as indented lines "title [symbol] detail".
void describe(const ProjectOutlineNode& node, int depth, std::string& text) {
    for (const auto& child : node.children) {
        text += std::string(static_cast<std::size_t>(depth) * 2, ' ') + child->title + " [" + child->symbol +
                "]" + (child->detail.empty() ? "" : " " + child->detail) + "\n";
        describe(*child, depth + 1, text);
    }
}

std::string describe(const ProjectOutlineNode& root) {
    std::string text;
    describe(root, 0, text);
    return text;
}

constexpr const char* emptyDisk =
    "01_项目工程 [folder] 0 个文件\n02_原始素材 [folder] 0 个文件\n03_音效 [folder] 0 个文件\n"
    "04_音乐 [folder] 0 个文件\n05_网络素材 [folder] 0 个文件\n06_图形与包装 [folder] 0 个文件\n"
    "07_文案与资料 [folder] 0 个文件\n08_字幕 [folder] 0 个文件\n09_输出预览 [folder] 0 个文件\n"
    "10_最终交付 [folder] 0 个文件\n";

TEST(PlanTree, WithoutAPlanShowsTheTemplate) {
    const auto root = buildPlanTree(requestOf(PreviewMode::disk));
    EXPECT_EQ(root->title, "新拍摄项目");
    EXPECT_EQ(root->symbol, "folder.fill");
    EXPECT_TRUE(root->isFolder);
    EXPECT_EQ(root->detail, "");
    EXPECT_EQ(describe(*root), emptyDisk);
}

TEST(PlanTree, WithoutAPlanShowsTheEvents) {
    const auto root = buildPlanTree(requestOf(PreviewMode::fcp, nullptr, "  秋日 \n"));
    EXPECT_EQ(root->title, "秋日");
    EXPECT_EQ(root->symbol, "film.stack");
    EXPECT_EQ(describe(*root),
              "01_拍摄素材 [film.stack]\n02_同期声 [film.stack]\n03_音乐 [film.stack]\n04_音效 [film.stack]\n"
              "05_图形 [film.stack]\n06_剪辑工程 [film.stack]\n  主剪辑 [timeline.selection]\n");
}

TEST(PlanTree, PlacesFilesInTheOrderThePlanReachesThem) {
    const auto plan = planOf({{"02_原始素材/B/2.MOV"},
                              {"02_原始素材/A/x/1.MOV"},
                              {"02_原始素材/B/1.MOV"},
                              {"04_音乐/曲.WAV", "音乐", 2'500'000},
                              {"02_原始素材/直接.MOV"}});
    const auto root = buildPlanTree(requestOf(PreviewMode::disk, plan, "不用这个"));
    EXPECT_EQ(root->title, "2026 秋日旅拍");
    EXPECT_EQ(
        describe(*root->children[1]),
        "B [folder]\n  2.MOV [doc] 1 MB\n  1.MOV [doc] 1 MB\nA [folder]\n  x [folder]\n    1.MOV [doc] 1 MB\n"
        "直接.MOV [doc] 1 MB\n");
    EXPECT_EQ(root->children[1]->detail, "4 个文件");
    EXPECT_EQ(describe(*root->children[3]), "曲.WAV [doc] 2.5 MB\n");
    EXPECT_EQ(root->children[3]->detail, "1 个文件");
    EXPECT_EQ(root->fileCount(), 5u);
    EXPECT_EQ(root->children[0]->detail, "0 个文件");
}

TEST(PlanTree, AFileAndAFolderOfOneNameAreTwoRows) {
    const auto plan = planOf({{"02_原始素材/A"}, {"02_原始素材/A/1.MOV"}});
    const auto root = buildPlanTree(requestOf(PreviewMode::disk, plan));
    EXPECT_EQ(describe(*root->children[1]), "A [doc] 1 MB\nA [folder]\n  1.MOV [doc] 1 MB\n");
}

TEST(PlanTree, DetailNamesTheDuplicateBeforeTheCard) {
    const auto plan = planOf({{"02_原始素材/a", "拍摄素材", 5, true, true},
                              {"02_原始素材/b", "拍摄素材", 5, true, false},
                              {"02_原始素材/c", "拍摄素材", 5, false, true},
                              {"02_原始素材/d", "拍摄素材", 0, false, false}});
    const auto root = buildPlanTree(requestOf(PreviewMode::disk, plan));
    const auto& rows = root->children[1]->children;
    EXPECT_EQ(rows[0]->detail, "重复素材 · 以检查结果为准");
    EXPECT_EQ(rows[1]->detail, "相机卡 · 保持结构");
    EXPECT_EQ(rows[2]->detail, "重复素材 · 以检查结果为准");
    EXPECT_EQ(rows[3]->detail, "0 KB");
}

TEST(PlanTree, EventsHoldTheirCategoryWithoutCameraCards) {
    const auto plan = planOf({{"02_原始素材/1.MOV", "拍摄素材"},
                              {"04_音乐/b.WAV", "音乐"},
                              {"02_原始素材/card.MOV", "拍摄素材", 1, true},
                              {"04_音乐/a.WAV", "音乐"},
                              {"08_字幕/s.srt", "字幕"},
                              {"07_文案与资料/t.txt", "文案资料"}});
    const auto root = buildPlanTree(requestOf(PreviewMode::fcp, plan));
    EXPECT_EQ(
        describe(*root),
        "01_拍摄素材 [film.stack] 1 个待核对\n  1.MOV [doc] 待核对媒体\n02_同期声 [film.stack] 0 个待核对\n"
        "03_音乐 [film.stack] 2 个待核对\n  b.WAV [doc] 待核对媒体\n  a.WAV [doc] 待核对媒体\n"
        "04_音效 [film.stack] 0 个待核对\n05_图形 [film.stack] 0 个待核对\n"
        "06_剪辑工程 [film.stack]\n  主剪辑 [timeline.selection]\n");
}

TEST(PlanTree, DestinationsOutsideTheTemplateAreLeftOut) {
    const auto plan = planOf({{"/02_原始素材/a"}, {"x"}, {"other/a"}, {"02_原始素材/ok"}});
    const auto root = buildPlanTree(requestOf(PreviewMode::disk, plan));
    EXPECT_EQ(root->fileCount(), 1u);
    EXPECT_EQ(root->children.size(), 10u);
}

TEST(PreviewTexts, OfDiskMode) {
    const PreviewTexts before = previewTexts(requestOf(PreviewMode::disk, nullptr, " 名 "));
    EXPECT_EQ(before.title, "磁盘目录预演");
    EXPECT_EQ(before.subtitle, "十分类模板，检查后显示实际整理位置。");
    EXPECT_EQ(before.summary, "先添加素材，检查整理计划");
    EXPECT_EQ(before.note, "");
    EXPECT_EQ(before.rootTitle, "名");
    EXPECT_EQ(before.sourceSummary, "还没有添加来源");
    const auto plan = planOf({{"02_原始素材/a", "拍摄素材", std::numeric_limits<std::int64_t>::max()},
                              {"02_原始素材/b", "拍摄素材", 1}});
    plan->warnings = {"一", "二", "三"};
    PreviewRequest request = requestOf(PreviewMode::disk, plan);
    request.sources = 4;
    const PreviewTexts after = previewTexts(request);
    EXPECT_EQ(after.subtitle, "复制到新项目，原始文件保留。");
    EXPECT_TRUE(after.summary.starts_with("2 个文件 · 9")) << after.summary;
    EXPECT_TRUE(after.summary.ends_with(" · 3 条提醒")) << after.summary;
    EXPECT_EQ(after.sourceSummary, "4 个来源 · 2 个文件");
}

TEST(PreviewTexts, OfFcpMode) {
    PreviewRequest request = requestOf(PreviewMode::fcp);
    PreviewTexts texts = previewTexts(request);
    EXPECT_EQ(texts.title, "FCP 分类预演");
    EXPECT_EQ(texts.subtitle, "按用途建立事件与关键词，仅交接可读的普通单轨媒体。");
    EXPECT_EQ(texts.subtitleToolTip,
              "分类中的数量是待核对候选，不代表已导入。图片、多音轨、时间码轨道、复杂相机卡和不支持的媒体首版"
              "只保留磁盘副本，"
              "不强行导入 FCP。");
    EXPECT_EQ(texts.note,
              "这些文件保留在磁盘项目中。相机卡请使用 FCP 原生相机导入；其他不支持的媒体见整理报告。");
    EXPECT_EQ(texts.summary, "先添加素材，检查整理计划") << "without a plan, in either mode";
    request.createFCP = false;
    request.plan = planOf({{"02_原始素材/a"}});
    texts = previewTexts(request);
    EXPECT_EQ(texts.subtitle, "更多选项中可开启 FCP 交接文件。");
    EXPECT_EQ(texts.summary, "图片 / 多音轨 / 时间码 / 相机卡：仅备份");
}

TEST(PlanTreeModel, KeepsTheRulesOfModels) {
    PlanTreeModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    EXPECT_EQ(model.rowCount(), 10);
    const auto plan = planOf({{"02_原始素材/A/1.MOV"}, {"02_原始素材/2.MOV", "拍摄素材", 5, true}});
    const auto tree =
        std::make_shared<const PlanTree>(PlanTree{buildPlanTree(requestOf(PreviewMode::disk, plan)), plan});
    const auto before = model.setTree(tree);
    EXPECT_EQ(before->plan, nullptr);
    const QModelIndex originals = model.index(1, 0);
    EXPECT_EQ(originals.data().toString(), QStringLiteral("02_原始素材"));
    EXPECT_EQ(model.rowCount(originals), 2);
    const QModelIndex folder = model.index(0, 0, originals);
    EXPECT_TRUE(folder.data(PlanTreeModel::FolderRole).toBool());
    EXPECT_FALSE(folder.data(PlanTreeModel::EmptyFolderRole).toBool());
    const QModelIndex file = model.index(0, 0, folder);
    EXPECT_EQ(file.data(Qt::AccessibleTextRole).toString(), QStringLiteral("1.MOV，1 MB"));
    EXPECT_EQ(file.data(Qt::AccessibleDescriptionRole).toString(), QStringLiteral("来源 /cards/1.MOV"));
    EXPECT_EQ(model.parent(file), folder);
    EXPECT_EQ(model.parent(originals), QModelIndex());
    EXPECT_TRUE(model.index(0, 0).data(PlanTreeModel::EmptyFolderRole).toBool());
    EXPECT_FALSE(model.hasChildren(model.index(0, 0)));
    EXPECT_FALSE(model.index(10, 0).isValid());
}

TEST(PlanTreeModel, TakesAHundredThousandFiles) {
    std::vector<Spec> specs;
    for (int i = 0; i < 100'000; ++i)
        specs.push_back(
            {"02_原始素材/卡 " + std::to_string(i % 500) + "/CLIP/C" + std::to_string(i) + ".MP4"});
    const auto plan = planOf(specs);
    PlanTreeModel model;
    const auto tree =
        std::make_shared<const PlanTree>(PlanTree{buildPlanTree(requestOf(PreviewMode::disk, plan)), plan});
    const auto before = model.setTree(tree);
    EXPECT_EQ(before->plan, nullptr);
    EXPECT_EQ(model.index(1, 0).data(PlanTreeModel::DetailRole).toString(), QStringLiteral("100000 个文件"));
    EXPECT_EQ(model.rowCount(model.index(1, 0)), 500);
    const QModelIndex clip = model.index(0, 0, model.index(499, 0, model.index(1, 0)));
    EXPECT_EQ(model.rowCount(clip), 200);
    EXPECT_EQ(model.index(199, 0, clip).data().toString(), QStringLiteral("C99999.MP4"));
}

}  // namespace
}  // namespace morvane
