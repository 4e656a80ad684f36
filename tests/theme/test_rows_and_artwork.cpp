// Rows, the file table, the artwork and the brand header as drawn.
#include "app/theme/artwork.h"
#include "app/theme/brand.h"
#include "app/theme/elided_label.h"
#include "app/theme/file_table.h"
#include "app/theme/row_view.h"
#include "app/theme/theme.h"
#include "tests/theme/theme_fixture.h"

#include <QAccessible>
#include <QApplication>
#include <QPainter>
#include <QStandardItemModel>
#include <QTest>

namespace morvane {
namespace {

class RowsAndArtwork : public ThemeTest {};

QImage row(MRVRowView::States states) {
    QImage image(200, 48, QImage::Format_ARGB32_Premultiplied);
    image.fill(MRVTheme::panel());
    QPainter painter(&image);
    MRVRowView::drawSelection(painter, QRect(0, 0, 200, 48), states);
    return image;
}

TEST_F(RowsAndArtwork, ASelectedRowIsInsetRoundedAndTicked) {
    const QImage image = row(MRVRowView::Selected);
    EXPECT_TRUE(isColour(image.pixelColor(100, 24), MRVTheme::accentSoft()));
    EXPECT_TRUE(isColour(image.pixelColor(3, 24), MRVTheme::panel()));
    EXPECT_TRUE(isColour(image.pixelColor(196, 24), MRVTheme::panel()));
    EXPECT_TRUE(isColour(image.pixelColor(195, 24), MRVTheme::accentSoft()));
    EXPECT_TRUE(isColour(image.pixelColor(100, 1), MRVTheme::panel()));
    EXPECT_TRUE(isColour(image.pixelColor(100, 2), MRVTheme::accentSoft()));
    EXPECT_TRUE(isColour(image.pixelColor(100, 46), MRVTheme::panel()));
    EXPECT_TRUE(isColour(image.pixelColor(4, 2), MRVTheme::panel()));  // the corner, radius 7
    for (const int x : {4, 5})
        EXPECT_TRUE(isColour(image.pixelColor(x, 24), MRVTheme::accent()));
    EXPECT_TRUE(isColour(image.pixelColor(6, 24), MRVTheme::accentSoft()));
    EXPECT_TRUE(isColour(image.pixelColor(4, 17), MRVTheme::accent()));
    EXPECT_TRUE(isColour(image.pixelColor(4, 14), MRVTheme::accentSoft()));
}

TEST_F(RowsAndArtwork, HoverAndFocusAreDrawnApart) {
    EXPECT_TRUE(isColour(row(MRVRowView::Hovered).pixelColor(100, 24), MRVTheme::rowHover()));
    EXPECT_TRUE(isColour(row(MRVRowView::Hovered | MRVRowView::Selected).pixelColor(100, 24),
                         MRVTheme::accentSoft()));
    QImage plain(200, 48, QImage::Format_ARGB32_Premultiplied);
    plain.fill(MRVTheme::panel());
    EXPECT_EQ(row(MRVRowView::Plain), plain);
    EXPECT_EQ(row(MRVRowView::Focused), plain);
    EXPECT_EQ(row(MRVRowView::Current), plain);
    const QImage ringed = row(MRVRowView::Focused | MRVRowView::Current | MRVRowView::Selected);
    EXPECT_TRUE(isColour(ringed.pixelColor(100, 2), MRVTheme::accent()));
    EXPECT_FALSE(isColour(ringed.pixelColor(100, 3), MRVTheme::accentSoft()));  // half of the ring
    EXPECT_TRUE(isColour(ringed.pixelColor(100, 4), MRVTheme::accentSoft()));
}

class TableTest : public RowsAndArtwork {
protected:
    TableTest() : table_(place(new FileTable, {0, 0})), model_(100, 3) {
        for (int line = 0; line < 100; ++line)
            for (int column = 0; column < 3; ++column)
                model_.setItem(line, column, new QStandardItem(QStringLiteral("x")));
        model_.setHorizontalHeaderLabels(
            {QStringLiteral("素材名称"), QStringLiteral("分类"), QStringLiteral("大小")});
        table_->setModel(&model_);
        table_->resize(600, 400);
        table_->tableHeader()->setStretchLastSection(true);
    }

    FileTable* table_;
    QStandardItemModel model_;
};

TEST_F(TableTest, MeasuresAsDesigned) {
    EXPECT_EQ(table_->rowHeight(0), 48);
    EXPECT_EQ(table_->tableHeader()->height(), 28);
    EXPECT_FALSE(table_->showGrid());
    EXPECT_EQ(table_->selectionBehavior(), QAbstractItemView::SelectRows);
}

TEST_F(TableTest, PaintsSelectionAcrossTheWholeRow) {
    activate();
    table_->selectRow(1);
    const QImage image = drawn(*table_);
    const qreal y = 28 + 48 + 24;
    for (const int x : {100, 300, 500})
        EXPECT_TRUE(isColour(colourAt(image, QPointF(x, y + 15)), MRVTheme::accentSoft())) << x;
    EXPECT_TRUE(isColour(colourAt(image, {4.5, y - 7}), MRVTheme::accent()));
    EXPECT_TRUE(isColour(colourAt(image, {300, y - 48 + 15}), MRVTheme::panel()));
}

TEST_F(TableTest, TheRowUnderThePointerIsLit) {
    activate();
    EXPECT_EQ(table_->hoveredRow(), -1);
    pointAt(table_->viewport(), {300, 2 * 48 + 20});
    waitUntil([&] { return table_->hoveredRow() == 2; }, "the row to be hovered");
    EXPECT_TRUE(isColour(colourAt(drawn(*table_), {300, 28 + 2 * 48 + 40}), MRVTheme::rowHover()));
    pointAt(table_->tableHeader()->viewport(), {300, 10});
    waitUntil([&] { return table_->hoveredRow() == -1; }, "the row to be left");
}

TEST_F(TableTest, TheCurrentRowIsRingedAfterTab) {
    activate();
    table_->selectRow(0);
    table_->setFocus(Qt::MouseFocusReason);
    const QPointF edge(300, 28 + 2);
    EXPECT_TRUE(isColour(colourAt(drawn(*table_), edge), MRVTheme::accentSoft()));
    window().setFocus(Qt::OtherFocusReason);
    tabTo(table_);
    EXPECT_TRUE(isColour(colourAt(drawn(*table_), edge), MRVTheme::accent()));
}

TEST_F(TableTest, HeaderLabelsAreMutedAndSetIn) {
    table_->tableHeader()->setTextInset(0, 40, 4);
    const QImage image = drawn(*table_);
    EXPECT_TRUE(isColour(colourAt(image, {2, 14}), MRVTheme::tableHead()));
    EXPECT_TRUE(isColour(colourAt(image, {2, 0}), MRVTheme::line()));
    EXPECT_TRUE(isColour(colourAt(image, {2, 27}), MRVTheme::line()));
    EXPECT_FALSE(holdsColour(image, QRect(0, 4, 38, 20), MRVTheme::muted(), 60));
    EXPECT_TRUE(holdsColour(image, QRect(40, 4, 50, 20), MRVTheme::muted(), 60));
}

// --- Artwork

TEST_F(RowsAndArtwork, ArtworkShowsItsModeOverTheGradient) {
    auto* art = place(new Artwork);
    art->resize(352, 220);
    EXPECT_EQ(art->mode(), QStringLiteral("waveform"));
    const QImage image = drawn(*art);
    EXPECT_TRUE(isColour(colourAt(image, {0, 0}), MRVTheme::accentSoft()));
    EXPECT_TRUE(isColour(colourAt(image, {351, 219}), MRVTheme::panel()));
    // 35 degrees below the horizontal: at the same height the leading side is nearer to accentSoft, and the
    // top is nearer than the bottom, less so.
    const auto redness = [&](qreal x, qreal y) { return colourAt(image, {x, y}).red(); };
    EXPECT_GT(redness(20, 110), redness(330, 110));
    EXPECT_GT(redness(60, 5), redness(60, 215));
    EXPECT_GT(redness(20, 110) - redness(120, 110), redness(60, 60) - redness(60, 160) - 1);
    EXPECT_TRUE(holdsColour(image, QRect(147, 81, 58, 58), MRVTheme::accent()));
    art->setMode(QStringLiteral("photo"));
    EXPECT_NE(drawn(*art), image);
}

TEST_F(RowsAndArtwork, ArtworkCornersCanBeRounded) {
    auto* art = place(new Artwork);
    art->resize(352, 220);
    art->setCornerRadius(10);
    const QImage image = drawn(window());
    EXPECT_TRUE(isColour(colourAt(image, {40, 40}), MRVTheme::background(), 6));
    EXPECT_TRUE(isColour(colourAt(image, {40 + 176, 40}), MRVTheme::line()));
}

// --- Brand

TEST_F(RowsAndArtwork, TheWordmarkKeepsItsProportion) {
    const std::unique_ptr<QWidget> wide(MRVTheme::wordmarkView(264));
    EXPECT_EQ(wide->width(), 264);
    EXPECT_NEAR(wide->height(), 264 * 282.0 / 1309.0, 0.5);
    EXPECT_EQ(wide->accessibleName(), QStringLiteral("MORVANE"));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(wide.get())->role(), QAccessible::Graphic);
    EXPECT_TRUE(holdsColour(drawn(*wide), wide->rect(), MRVTheme::ink(), 4));
    EXPECT_EQ(MRVTheme::wordmark().size(), QSize(1309, 282));
}

TEST_F(RowsAndArtwork, TheHeaderIsLaidOutAsDescribed) {
    QWidget* header =
        place(MRVTheme::nativeHeader(QStringLiteral("素材助手"), QStringLiteral("管理素材，准备每一次剪辑")),
              {20, 20});
    header->resize(220, 90);
    activate();
    const auto find = [&](const char* name) {
        return header->findChild<QWidget*>(QString::fromLatin1(name));
    };
    QWidget* icon = find("icon");
    QWidget* wordmark = find("wordmark");
    QWidget* product = find("product");
    QWidget* detail = find("detail");
    EXPECT_EQ(icon->size(), QSize(62, 62));
    EXPECT_NEAR(icon->geometry().center().y(), 44, 1);
    EXPECT_EQ(wordmark->size(), QSize(132, 28));
    EXPECT_EQ(wordmark->x(), 62 + 14);
    EXPECT_EQ(product->x(), wordmark->x());
    EXPECT_EQ(detail->x(), wordmark->x());
    EXPECT_EQ(product->y(), wordmark->geometry().bottom() + 1 + 5);
    EXPECT_EQ(detail->y(), product->geometry().bottom() + 1 + 5);
    EXPECT_EQ(product->font().pixelSize(), 21);
    EXPECT_EQ(detail->font().pixelSize(), 11);
    EXPECT_TRUE(holdsColour(drawn(*product), product->rect(), MRVTheme::ink(), 20));
    EXPECT_TRUE(holdsColour(drawn(*detail), detail->rect(), MRVTheme::muted(), 30));
}

TEST_F(RowsAndArtwork, TheDetailGivesWayFirst) {
    QWidget* header =
        place(MRVTheme::nativeHeader(QStringLiteral("素材助手"),
                                     QStringLiteral("一段很长很长的说明文字，放不下也没有关系")),
              {20, 20});
    header->resize(220, 90);
    activate();
    auto* product = header->findChild<ElidedLabel*>(QStringLiteral("product"));
    auto* detail = header->findChild<ElidedLabel*>(QStringLiteral("detail"));
    EXPECT_TRUE(detail->isElided());
    EXPECT_FALSE(product->isElided());
    EXPECT_EQ(header->findChild<QWidget*>(QStringLiteral("wordmark"))->width(), 132);
}

TEST_F(RowsAndArtwork, MissingImagesAreStoodInFor) {
    EXPECT_EQ(brandWordmark(QStringLiteral(":/no/such.svg")).size(), QSize(131, 28));
    const QIcon standIn = brandIcon(QStringLiteral(":/no/such.png"));
    EXPECT_EQ(standIn.cacheKey(), QApplication::windowIcon().cacheKey());
    EXPECT_FALSE(MRVTheme::icon().isNull());
}

}  // namespace
}  // namespace morvane
