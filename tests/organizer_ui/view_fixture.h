// A window with the organizer workspace in it, and short ways to its controls.
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPainter>
#include <QTreeView>
#include <QWidget>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/theme/elided_label.h"
#include "app/theme/push_button.h"
#include "app/theme/sheet.h"
#include "app/theme/theme.h"
#include "organizer_ui/project_organizer_view.h"
#include "organizer_ui/request_panel.h"
#include "project/project_errors.h"
#include "tests/test_support.h"

namespace morvane::test {

class OrganizerWindow : public testing::Test {
protected:
    OrganizerWindow() {
        static const bool installed = [] {
            MRVTheme::install(*qApp);
            return true;
        }();
        EXPECT_TRUE(installed);
        window_.resize(1340, 748);
        view_ = new ProjectOrganizerView(&window_);
        view_->setGeometry(window_.rect());
        view_->onStatus = [this](const QString& text) { statuses_.push_back(text.toStdString()); };
        view_->onProjectCreated = [this](const FileUrl& folder) { created_.push_back(folder.path); };
        window_.show();
        window_.activateWindow();
    }

    template <class Widget>
    Widget* part(const char* name) const {
        auto* found = view_->findChild<Widget*>(QLatin1String(name));
        if (!found)
            throw std::runtime_error(std::string("no control ") + name);
        return found;
    }
    PushButton* button(const char* name) const { return part<PushButton>(name); }
    bool shown(const char* name) const { return part<QWidget>(name)->isVisibleTo(view_); }
    bool enabled(const char* name) const { return part<QWidget>(name)->isEnabled(); }
    std::string label(const char* name) const { return part<QLabel>(name)->text().toStdString(); }
    std::string elided(const char* name) const { return part<ElidedLabel>(name)->text().toStdString(); }
    std::string title() const { return label("footerTitle"); }
    std::string detail() const { return elided("footerDetail"); }
    std::string warnings() const { return part<QWidget>("warningsLabel")->accessibleName().toStdString(); }
    QLineEdit* nameField() const { return part<QLineEdit>("nameField"); }
    QListView* sourceTable() const { return part<QListView>("sourceTable"); }
    QTreeView* outline() const { return part<QTreeView>("outline"); }
    Sheet* sheet() const { return window_.findChild<Sheet*>(); }

    bool reached(Phase phase) const {
        return waitUntil([this, phase] { return view_->phase() == phase; }, 60);
    }
    /// Waits until the tree on screen is the plan's.
    bool treeShown() const {
        return waitUntil([this] {
            int files = 0;
            for (int i = 0; i < outline()->model()->rowCount(); ++i)
                files += outline()->model()->rowCount(outline()->model()->index(i, 0)) > 0 ? 1 : 0;
            return files > 0;
        });
    }
    std::vector<std::string> sourcePaths() const {
        std::vector<std::string> paths;
        for (const FileUrl& url : view_->sources())
            paths.push_back(url.path);
        return paths;
    }
    void selectRows(const std::vector<int>& rows) const {
        for (const int row : rows)
            sourceTable()->selectionModel()->select(sourceTable()->model()->index(row, 0),
                                                    QItemSelectionModel::Select);
    }

    QWidget window_;
    ProjectOrganizerView* view_ = nullptr;
    std::vector<std::string> statuses_;
    std::vector<std::string> created_;
};

/// A plan in one piece: the folders of a card, a duplicate, some music.
inline ProjectPlan examplePlan(std::vector<std::string> warnings) {
    ProjectPlan plan;
    plan.rootURL = folderLocation("/disk/2026 秋日旅拍");
    for (const char* destination : {"02_原始素材/相机卡备份/FX3/PRIVATE/M4ROOT/CLIP/C0001.MP4",
                                    "02_原始素材/航拍/DJI_0087.MP4", "04_音乐/主题曲.WAV"}) {
        ProjectPlanItem item;
        item.relativeDestination = destination;
        item.sourceURL = fileLocation(std::string("/cards/") + destination);
        item.category = plan.items.size() == 2 ? "音乐" : "拍摄素材";
        item.isCameraCard = plan.items.empty();
        item.size = 1'500'000;
        plan.items.push_back(item);
    }
    plan.warnings = std::move(warnings);
    return plan;
}

/// A window over some media, with short ways into every phase.
class FilledOrganizer : public OrganizerWindow {
protected:
    FilledOrganizer() {
        makeTree(media_.path(), {{"卡/PRIVATE/a.mp4", "x"}, {"b.mov", "y"}, {"target/", ""}});
    }

    void fillRequest() {
        nameField()->setText(QStringLiteral("2026 秋日旅拍"));
        view_->setTargetURL(folderLocation(media_ / "target"));
        view_->appendSources({folderLocation(media_ / "卡"), fileLocation(media_ / "b.mov")});
    }
    void plan(std::vector<std::string> warnings = {}) {
        view_->primaryAction();
        Outcome<ProjectPlan> outcome;
        outcome.value = examplePlan(std::move(warnings));
        view_->finishPlanning(outcome);
    }
    void failPlanning(const std::string& text) {
        Outcome<ProjectPlan> outcome;
        outcome.error = std::make_exception_ptr(ProjectCoreError::message(text));
        view_->finishPlanning(outcome);
    }
    void finish(std::int64_t copied, std::int64_t failed, bool cancelled, bool handOff = false) {
        Outcome<ProjectResult> outcome;
        outcome.value.emplace();
        outcome.value->rootURL = folderLocation("/disk/2026 秋日旅拍");
        outcome.value->manifestURL = fileLocation("/disk/2026 秋日旅拍/MORVANE项目清单.json");
        outcome.value->copiedCount = copied;
        outcome.value->failedCount = failed;
        outcome.value->cancelled = cancelled;
        if (handOff)
            outcome.value->fcpxmlURL = fileLocation("/disk/2026 秋日旅拍/01_项目工程/x.fcpxml");
        view_->finish(outcome);
    }
    /// Brings a filled view to `phase`. The engine is told to retry a manifest that does not exist, so
    /// that it has nothing to do; what it answers comes too late and must be dropped.
    void bringTo(Phase phase) {
        fillRequest();
        if (phase == Phase::planning || phase == Phase::failed)
            view_->primaryAction();
        if (phase == Phase::failed)
            failPlanning("目标磁盘可用空间不足；需要容纳剩余副本和项目清单。");
        if (phase == Phase::ready)
            plan({"一", "二"});
        if (phase == Phase::copying || phase == Phase::cancelling || phase == Phase::finished)
            view_->startRecovery(fileLocation(media_ / "none.json"));
        if (phase == Phase::cancelling)
            view_->cancelWork();
        if (phase == Phase::finished)
            finish(3, 0, false);
        ASSERT_EQ(view_->phase(), phase);
    }
    void screenshot(const std::string& name) {
        const QDir folder(QStringLiteral(MORVANE_BIN_DIR "/../screenshots"));
        ASSERT_TRUE(folder.mkpath(QStringLiteral(".")));
        QPixmap picture = window_.grab();
        if (sheet() != nullptr) {
            QPainter painter(&picture);
            painter.drawPixmap(sheet()->pos() - window_.mapToGlobal(QPoint()), sheet()->grab());
        }
        EXPECT_EQ(picture.deviceIndependentSize().toSize(), window_.size());
        EXPECT_TRUE(picture.save(
            folder.filePath(QStringLiteral("organizer-%1.png").arg(QString::fromStdString(name)))));
    }

    TemporaryFolder media_;
};

}  // namespace morvane::test
