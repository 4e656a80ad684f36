// A whole application on a store and media folders of its own, on the offscreen platform.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/controller.h"
#include "catalog/settings.h"
#include "tests/test_support.h"

namespace morvane::test {

/// A fixture whose user data folder is temporary. Nothing starts before start().
class ControllerTest : public testing::Test {
protected:
    ControllerTest();
    ~ControllerTest() override;

    /// Makes the controller without starting it.
    Controller& make();
    /// Makes and starts it, waits for the catalog, the first list and the tree.
    Controller& start();
    /// Ends the application and waits until everything is written.
    void stop();
    /// Waits until no refresh runs and everything it led to has arrived.
    void waitForRefresh();
    /// Waits until the filter passes asked for have been delivered.
    void waitForFilter();

    void saveStoredSettings(const Settings& settings) const;
    Settings storedSettings() const { return loadSettings(store_); }
    /// Four media files below media_: Take 2.wav, Take 10.wav, b/clip.mov, b/still.png.
    void makeMedia() const;
    /// Starts with media_ as the only library folder and waits for its index.
    Controller& startWithMedia();

    QString status() const;
    /// File names of the list, in order.
    std::vector<std::string> listed() const;
    /// Clicks the row whose file has this name; `modifiers` as the user holds them.
    void clickRow(const std::string& name, Qt::KeyboardModifiers modifiers = {});
    /// The titles of the tree's top-level rows with their counts, "全部素材 4".
    std::vector<std::string> topCategories() const;
    /// The message of the sheet that is open; empty without one.
    QString sheetMessage() const;
    /// Presses a button of the open sheet.
    void answerSheet(int button);

    const TemporaryFolder folder_;
    const std::string store_ = folder_ / "data/LumvexAssetLibrary";
    const std::string media_ = folder_ / "media";
    std::unique_ptr<Controller> controller_;
};

}  // namespace morvane::test
