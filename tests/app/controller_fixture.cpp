#include "tests/app/controller_fixture.h"

#include <QApplication>
#include <QPointer>
#include <QTest>
#include <QTreeView>

#include "app/theme/elided_label.h"
#include "app/theme/file_table.h"
#include "app/theme/keyboard_window.h"
#include "app/theme/push_button.h"
#include "app/theme/sheet.h"
#include "app/theme/theme.h"
#include "library_ui/category_tree_model.h"
#include "organizer_ui/project_organizer_view.h"

namespace morvane::test {

ControllerTest::ControllerTest() {
    static const bool themed = (MRVTheme::install(*qApp), true);
    static_cast<void>(themed);
    // Closing the window must not end the test's event loop.
    QApplication::setQuitOnLastWindowClosed(false);
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(folder_ / "data"));
}

ControllerTest::~ControllerTest() {
    stop();
}

Controller& ControllerTest::make() {
    controller_ = std::make_unique<Controller>(std::vector<std::string>{"morvane"});
    return *controller_;
}

Controller& ControllerTest::start() {
    make().applicationDidFinishLaunching();
    controller_->frame().window()->resize(1340, 840);
    EXPECT_TRUE(QTest::qWaitForWindowActive(controller_->frame().window()));
    EXPECT_TRUE(waitUntil([this] {
        return controller_->filter().filterGeneration() > 0 &&
               controller_->filter().filtered().assets != nullptr &&
               !controller_->categoryTree().categories().empty();
    }));
    waitForRefresh();
    return *controller_;
}

void ControllerTest::stop() {
    controller_.reset();
}

void ControllerTest::waitForRefresh() {
    EXPECT_TRUE(waitUntil([this] { return !controller_->index().scanning(); }));
    waitForFilter();
    EXPECT_TRUE(waitUntil([this] {
        const CategoryList& tree = controller_->categoryTree().categories();
        return tree.front()->count == static_cast<std::int64_t>(controller_->index().assets()->size()) &&
               tree.size() == 3 + controller_->settings().roots.size();
    }));
}

void ControllerTest::waitForFilter() {
    EXPECT_TRUE(waitUntil([this] {
        return !controller_->filter().hasQueryWork() && controller_->filter().filtered().assets &&
               controller_->filter().filtered().assets == controller_->index().assets() &&
               controller_->libraryView().table().model()->rowCount() ==
                   static_cast<int>(controller_->filter().filtered().size());
    }));
}

void ControllerTest::saveStoredSettings(const Settings& settings) const {
    std::filesystem::create_directories(store_);
    saveSettings(store_, settings);
}

void ControllerTest::makeMedia() const {
    makeTree(
        media_,
        {{"Take 2.wav", "2"}, {"Take 10.wav", "10"}, {"b/clip.mov", "clip"}, {"b/still.png", "no picture"}});
}

Controller& ControllerTest::startWithMedia() {
    makeMedia();
    Settings settings;
    settings.roots = {media_};
    saveStoredSettings(settings);
    start();
    EXPECT_TRUE(waitUntil([this] { return listed().size() == 4; }));
    EXPECT_TRUE(waitUntil([this] { return topCategories().size() == 4; }));
    return *controller_;
}

QString ControllerTest::status() const {
    return controller_->frame().status().text();
}

std::vector<std::string> ControllerTest::listed() const {
    std::vector<std::string> names;
    const FilterResult& rows = controller_->filter().filtered();
    for (std::size_t row = 0; row < rows.size(); ++row)
        names.emplace_back(rows.at(row).name());
    return names;
}

void ControllerTest::clickRow(const std::string& name, Qt::KeyboardModifiers modifiers) {
    FileTable& table = controller_->libraryView().table();
    const std::vector<std::string> names = listed();
    const auto found = std::find(names.begin(), names.end(), name);
    ASSERT_NE(found, names.end()) << name;
    const QModelIndex index = table.model()->index(static_cast<int>(found - names.begin()), 0);
    table.scrollTo(index);
    QTest::mouseClick(table.viewport(), Qt::LeftButton, modifiers, table.visualRect(index).center());
}

std::vector<std::string> ControllerTest::topCategories() const {
    const QAbstractItemModel* model = controller_->libraryView().outline().model();
    std::vector<std::string> rows;
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex index = model->index(row, 0);
        rows.push_back(index.data(Qt::DisplayRole).toString().toStdString() + " " +
                       std::to_string(index.data(CategoryTreeModel::CountRole).toLongLong()));
    }
    return rows;
}

QString ControllerTest::sheetMessage() const {
    const auto* sheet = controller_->frame().window()->findChild<Sheet*>();
    return sheet != nullptr && sheet->isVisible() ? sheet->content().message : QString();
}

void ControllerTest::answerSheet(int button) {
    const QPointer<Sheet> sheet = controller_->frame().window()->findChild<Sheet*>();
    ASSERT_FALSE(sheet.isNull());
    QTest::mouseClick(sheet->button(button), Qt::LeftButton);
    ASSERT_TRUE(waitUntil([&sheet] { return sheet.isNull(); }));
}

}  // namespace morvane::test
