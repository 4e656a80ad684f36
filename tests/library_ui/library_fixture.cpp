#include "tests/library_ui/library_fixture.h"

#include "app/theme/file_table.h"
#include "app/theme/theme.h"

#include <QApplication>
#include <QItemSelectionModel>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>
#include <numeric>

namespace morvane::test {

namespace {

const std::string& sampleRoot() {
    static const std::string root = "/run/media/lin/影像素材A";
    return root;
}

std::shared_ptr<Category> entry(const std::string& title, std::int64_t count, CategoryList children = {},
                                const std::string& key = {}) {
    auto made = std::make_shared<Category>();
    made->title = title;
    made->key = key.empty() ? "/k/" + title : key;
    made->count = count;
    made->children = std::move(children);
    return made;
}

}  // namespace

void useTheme() {
    static const bool installed = [] {
        MRVTheme::install(*qApp);
        return true;
    }();
    (void)installed;
}

Asset assetAt(const std::string& root, const std::string& relative, std::int64_t size, double modified) {
    return {.path = root + "/" + relative,
            .root = root,
            .relative = relative,
            .size = size,
            .modified = modified};
}

FilterResult rowsOf(const std::vector<Asset>& assets) {
    AssetList::Builder builder;
    for (const Asset& asset : assets)
        builder.add(asset.path, asset.root, asset.relative, asset.size, asset.modified);
    FilterResult result;
    result.assets = builder.finish();
    result.rows.resize(result.assets->size());
    std::iota(result.rows.begin(), result.rows.end(), 0U);
    return result;
}

std::vector<Asset> sampleAssets() {
    const std::string& root = sampleRoot();
    const std::string trip = "2026 秋日旅拍/";
    return {
        assetAt(root, trip + "A机 Day 1/A001_C0012_清晨湖面.MOV", 2'840'000'000),
        assetAt(root, trip + "A机 Day 1/A001_C0013_湖边长镜头_慢速.MOV", 4'120'000'000),
        assetAt(root, trip + "B机 Day 1/B002_C0004_山路跟拍.MP4", 1'360'000'000),
        assetAt(root, trip + "航拍/DJI_0087_航拍环绕.MP4", 986'400'000),
        assetAt(root, trip + "A机 Day 1/DSC_2041.JPG", 18'600'000),
        assetAt(root, trip + "B机 Day 1/IMG_4410_花絮.HEIC", 3'200'000),
        assetAt(root, trip + "同期声/Take 2_溪流近景.WAV", 86'400'000),
        assetAt(root, trip + "同期声/Take 10_林间风声_立体声_48k24bit_原始.WAV", 124'900'000),
        assetAt(root, trip + "包装/封面候选_03.PSD", 246'800'000),
        assetAt(root, trip + "同期声/湖面环境声_清晨.WAV", 64'100'000),
        assetAt(root, trip + "包装/旅拍主题曲_定稿.MP3", 9'700'000),
        assetAt(root, trip + "包装/片头动画_v4.MOV", 612'300'000),
        assetAt(root, trip + "包装/秋日调色_Rec709.cube", 1'200'000),
        assetAt(root, trip + "包装/字幕模板_双语.mogrt", 4'800'000),
    };
}

bool isSampleFavorite(const std::string& path) {
    return path.ends_with("山路跟拍.MP4") || path.ends_with("溪流近景.WAV") || path.ends_with("定稿.MP3");
}

CategoryList sampleCategories() {
    const std::string& root = sampleRoot();
    return {
        entry("全部素材", 12486, {}, "all"),
        entry("我的收藏", 64, {}, "favorites"),
        entry("最近使用", 150, {}, "recent"),
        entry("影像素材A", 8214,
              {entry("2026 城市夜景", 936, {entry("A机", 900)}),
               entry("2026 秋日旅拍", 1284,
                     {entry("A机 Day 1", 412), entry("A机 Day 2", 320), entry("B机 Day 1", 268),
                      entry("包装", 40), entry("航拍", 96), entry("同期声", 148)},
                     root + "/2026 秋日旅拍"),
               entry("品牌短片", 2107, {entry("成片", 3)}), entry("人物访谈", 3887, {entry("外景", 3)})},
              root),
        entry("音乐音效库", 3620,
              {entry("环境声", 842, {entry("雨", 3)}), entry("配乐", 1472, {entry("钢琴", 3)}),
               entry("转场与拟音", 1306, {entry("门", 3)})}),
        entry("图形包装", 652, {entry("LUT", 40), entry("字幕", 12)}),
    };
}

Workspace::Workspace(int width, int height) {
    useTheme();
    window = std::make_unique<QWidget>();
    auto* whole = new QVBoxLayout(window.get());
    whole->setContentsMargins(0, 0, 0, 0);
    view = new LibraryView(checker);
    preview = new PreviewPane;
    view->buildManagementView(preview);
    whole->addWidget(view);
    window->resize(width, height);
    window->show();
    waitUntil([this] { return QTest::qWaitForWindowExposed(window.get(), 1); });
}

QImage Workspace::picture() {
    return window->grab().toImage();
}

void Workspace::clickRow(int row, Qt::KeyboardModifiers modifiers) {
    FileTable& table = view->table();
    const QRect cell = table.visualRect(table.model()->index(row, 0));
    QTest::mouseClick(table.viewport(), Qt::LeftButton, modifiers, cell.center());
}

std::vector<int> Workspace::selectedRows() const {
    std::vector<int> rows;
    for (const QModelIndex& index : view->table().selectionModel()->selectedRows())
        rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

}  // namespace morvane::test
