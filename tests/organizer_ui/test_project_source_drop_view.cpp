// Drag and drop with real events.
#include "organizer_ui/project_source_drop_view.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/theme/theme.h"

namespace morvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::unique_ptr<QMimeData> uriList(const QByteArray& text) {
    auto data = std::make_unique<QMimeData>();
    data->setData(QStringLiteral("text/uri-list"), text);
    return data;
}

std::vector<std::string> paths(const std::vector<FileUrl>& urls) {
    std::vector<std::string> result;
    for (const FileUrl& url : urls)
        result.push_back(url.path);
    return result;
}

class DropView : public testing::Test {
protected:
    DropView() {
        view_.resize(400, 200);
        view_.onURLs = [this](const std::vector<FileUrl>& urls) { dropped_ = paths(urls); };
    }

    /// Whether entering with `data` is accepted.
    bool enter(const QMimeData& data, Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction) {
        QDragEnterEvent event(QPoint(10, 10), offered, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&view_, &event);
        return event.isAccepted() && event.dropAction() == Qt::CopyAction;
    }
    bool move(const QMimeData& data) {
        QDragMoveEvent event(QPoint(12, 12), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&view_, &event);
        return event.isAccepted();
    }
    bool drop(const QMimeData& data) {
        QDropEvent event(QPointF(12, 12), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&view_, &event);
        return event.isAccepted();
    }
    QColor fill() { return view_.grab().toImage().pixelColor(200, 12); }

    ProjectSourceDropView view_;
    std::vector<std::string> dropped_;
};

TEST_F(DropView, TakesSeveralFilesInTheirOrder) {
    view_.acceptsDrop = [] { return true; };
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/m/相机 1/")),
                  QUrl::fromLocalFile(QStringLiteral("/m/b.mov")),
                  QUrl(QStringLiteral("https://example.org/c.mov"))});
    EXPECT_TRUE(enter(data));
    EXPECT_TRUE(view_.isHighlighted());
    EXPECT_EQ(fill(), MRVTheme::accentSoft());
    EXPECT_TRUE(move(data));
    EXPECT_TRUE(drop(data));
    EXPECT_FALSE(view_.isHighlighted());
    EXPECT_EQ(fill(), MRVTheme::panel());
    EXPECT_THAT(dropped_, ElementsAre("/m/相机 1", "/m/b.mov"));
}

TEST_F(DropView, RefusesWithoutPermission) {
    const auto data = uriList("file:///m/a\r\n");
    EXPECT_FALSE(enter(*data)) << "no acceptsDrop at all";
    bool allowed = false;
    view_.acceptsDrop = [&allowed] { return allowed; };
    EXPECT_FALSE(enter(*data));
    EXPECT_FALSE(view_.isHighlighted());
    EXPECT_FALSE(drop(*data));
    EXPECT_THAT(dropped_, IsEmpty());
    allowed = true;
    EXPECT_TRUE(enter(*data));
    allowed = false;  // a job began while the drag hovered
    EXPECT_FALSE(move(*data));
    EXPECT_FALSE(view_.isHighlighted());
    EXPECT_FALSE(drop(*data));
    EXPECT_THAT(dropped_, IsEmpty());
}

TEST_F(DropView, RefusesWhatCarriesNoFiles) {
    view_.acceptsDrop = [] { return true; };
    QMimeData text;
    text.setText(QStringLiteral("/m/a"));
    EXPECT_FALSE(enter(text));
    EXPECT_FALSE(enter(*uriList("https://example.org/a\r\n# comment\r\n")));
    EXPECT_FALSE(enter(*uriList("file:///m/a\r\n"), Qt::MoveAction)) << "what may only be moved is not ours";
}

TEST_F(DropView, LeavingClearsTheHighlight) {
    view_.acceptsDrop = [] { return true; };
    EXPECT_TRUE(enter(*uriList("file:///m/a\r\n")));
    QDragLeaveEvent leave;
    QApplication::sendEvent(&view_, &leave);
    EXPECT_FALSE(view_.isHighlighted());
}

TEST_F(DropView, DropsWithoutAReceiverAreHarmless) {
    view_.acceptsDrop = [] { return true; };
    view_.onURLs = nullptr;
    const auto data = uriList("file:///m/a\r\n");
    EXPECT_TRUE(enter(*data));
    EXPECT_TRUE(drop(*data));
}

TEST(DroppedFiles, KeepsEveryByteOfAName) {
    EXPECT_THAT(paths(droppedFiles(
                    *uriList("# list\r\nfile:///m/a%20b%FF.mov\r\n\r\nfile://localhost/m/c\nftp://x/y\n"))),
                ElementsAre("/m/a b\xff.mov", "/m/c"));
    EXPECT_THAT(droppedFiles(QMimeData()), IsEmpty());
}

}  // namespace
}  // namespace morvane
