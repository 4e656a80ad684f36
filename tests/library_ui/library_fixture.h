// What the tests of the library workspace share: sample lists and trees, the workspace in a window of a
// given size, pictures of it.
#pragma once

#include "library_ui/file_checker.h"
#include "library_ui/library_view.h"
#include "library_ui/preview_pane.h"
#include "tests/test_support.h"

#include <QWidget>

#include <memory>
#include <string>
#include <vector>

namespace morvane::test {

/// Installs the theme in the test's application, once.
void useTheme();

Asset assetAt(const std::string& root, const std::string& relative, std::int64_t size = 1000,
              double modified = 1);

/// All of `assets`, in their order.
FilterResult rowsOf(const std::vector<Asset>& assets);

/// The fourteen rows the pictures of the workspace show, under "/run/media/lin/影像素材A".
std::vector<Asset> sampleAssets();
/// The paths of sampleAssets() that are favourites there.
bool isSampleFavorite(const std::string& path);
/// The tree the pictures show.
CategoryList sampleCategories();

/// The whole library workspace below the header, in a window.
class Workspace {
public:
    /// `width` x `height` of the workspace in logical pixels.
    explicit Workspace(int width = 1340, int height = 688);

    FileChecker checker;
    PreviewPane* preview;
    LibraryView* view;
    std::unique_ptr<QWidget> window;

    /// What the window looks like now.
    QImage picture();
    /// A click on the middle of `row` in the list.
    void clickRow(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    std::vector<int> selectedRows() const;
};

}  // namespace morvane::test
