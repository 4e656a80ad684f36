// The symbols: all there, of the right size at every scale, tinted exactly, crisp at 16, never thinner than
// said.
#include "app/theme/paint.h"
#include "app/theme/symbol_view.h"
#include "app/theme/symbols.h"
#include "app/theme/theme.h"
#include "tests/theme/theme_fixture.h"

#include <QPainter>

#include <algorithm>

namespace morvane {
namespace {

class Symbols : public ThemeTest {};

TEST_F(Symbols, EveryNameTheProductUsesHasADrawing) {
    for (const char* name : {"arrow.clockwise",
                             "arrow.up.forward.square",
                             "checklist",
                             "checkmark",
                             "checkmark.circle",
                             "chevron.down",
                             "chevron.right",
                             "chevron.up.chevron.down",
                             "doc",
                             "doc.on.doc",
                             "doc.text",
                             "ellipsis",
                             "exclamationmark.triangle",
                             "externaldrive",
                             "externaldrive.badge.xmark",
                             "eye",
                             "film",
                             "film.stack",
                             "folder",
                             "folder.badge.plus",
                             "folder.fill",
                             "gearshape",
                             "info.circle",
                             "line.3.horizontal",
                             "list.bullet.rectangle",
                             "magnifyingglass",
                             "minus",
                             "pause.fill",
                             "pencil",
                             "photo",
                             "play.fill",
                             "play.rectangle",
                             "plus",
                             "reveal",
                             "sdcard",
                             "slider.horizontal.3",
                             "speaker.slash",
                             "speaker.wave.2",
                             "square.and.arrow.up",
                             "star",
                             "star.fill",
                             "stop.fill",
                             "timeline.selection",
                             "tray.and.arrow.down",
                             "waveform",
                             "xmark",
                             "xmark.circle.fill"}) {
        EXPECT_TRUE(hasSymbol(QString::fromLatin1(name))) << name;
        const QImage image = symbolPixmap(QString::fromLatin1(name), 16, MRVTheme::ink(), 1).toImage();
        int strongest = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                strongest = std::max(strongest, image.pixelColor(x, y).alpha());
        EXPECT_GT(strongest, 128) << name;
    }
}

TEST_F(Symbols, UnknownNamesDrawNothing) {
    EXPECT_FALSE(hasSymbol(QStringLiteral("no.such.symbol")));
    EXPECT_TRUE(symbolPixmap(QStringLiteral("no.such.symbol"), 16, MRVTheme::ink(), 1).isNull());
    QImage image(20, 20, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const QImage before = image;
    {
        QPainter painter(&image);
        paintSymbol(painter, QRectF(0, 0, 20, 20), QStringLiteral("no.such.symbol"), MRVTheme::ink());
    }
    EXPECT_EQ(image, before);
}

TEST_F(Symbols, AreRenderedAtSizeTimesRatio) {
    for (const qreal ratio : {1.0, 1.25, 1.5, 2.0}) {
        const QPixmap pixmap = symbolPixmap(QStringLiteral("folder"), 16, MRVTheme::muted(), ratio);
        EXPECT_EQ(pixmap.width(), qRound(16 * ratio)) << ratio;
        EXPECT_EQ(pixmap.height(), qRound(16 * ratio)) << ratio;
        EXPECT_DOUBLE_EQ(pixmap.devicePixelRatio(), ratio);
    }
}

TEST_F(Symbols, AreTintedInTheColourAndNothingElse) {
    const QImage image = symbolPixmap(QStringLiteral("stop.fill"), 24, MRVTheme::systemBlue(), 2)
                             .toImage()
                             .convertToFormat(QImage::Format_ARGB32);
    EXPECT_TRUE(isColour(image.pixelColor(24, 24), MRVTheme::systemBlue(), 0));
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (pixel.alpha() < 128)
                continue;
            QColor opaque = pixel;
            opaque.setAlpha(255);
            ASSERT_TRUE(isColour(opaque, MRVTheme::systemBlue(), 2)) << x << "," << y;
        }
    }
}

TEST_F(Symbols, TheSameSymbolIsRenderedOnce) {
    const QPixmap one = symbolPixmap(QStringLiteral("film"), 20, MRVTheme::accent(), 1.25);
    const QPixmap again = symbolPixmap(QStringLiteral("film"), 20, MRVTheme::accent(), 1.25);
    EXPECT_EQ(one.cacheKey(), again.cacheKey());
    EXPECT_NE(one.cacheKey(), symbolPixmap(QStringLiteral("film"), 20, MRVTheme::muted(), 1.25).cacheKey());
    EXPECT_NE(one.cacheKey(), symbolPixmap(QStringLiteral("film"), 20, MRVTheme::accent(), 1).cacheKey());
}

/// Sum of the coverage down the middle column: how thick a level stroke is, in device pixels.
double strokeThickness(const QImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        sum += image.pixelColor(image.width() / 2, y).alphaF();
    return sum;
}

TEST_F(Symbols, AreCrispAtSixteen) {
    // A level stroke of one pixel fills one row and leaves its neighbours empty.
    for (const char* name : {"plus", "minus"}) {
        for (const qreal ratio : {1.0, 2.0}) {
            const QImage image =
                symbolPixmap(QString::fromLatin1(name), 16, MRVTheme::ink(), ratio).toImage();
            int partial = 0;
            double thickness = 0;
            for (int y = 0; y < image.height(); ++y) {
                const double coverage =
                    image.pixelColor(image.width() / 3, y).alphaF();  // beside an upright stroke
                partial += coverage > 0.05 && coverage < 0.95 ? 1 : 0;
                thickness += coverage;
            }
            EXPECT_EQ(partial, 0) << name << " at " << ratio;
            EXPECT_NEAR(thickness, ratio, 0.05) << name << " at " << ratio;
        }
    }
}

TEST_F(Symbols, SmallOnesKeepAVisibleStroke) {
    for (const int size : {11, 12, 14})
        EXPECT_NEAR(
            strokeThickness(symbolPixmap(QStringLiteral("minus"), size, MRVTheme::ink(), 1).toImage()), 1.25,
            0.06)
            << size;
}

TEST_F(Symbols, ArePaintedCentredAndOnThePixelGrid) {
    QImage image(40, 40, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        paintSymbol(painter, QRectF(10.4, 10.4, 20, 16), QStringLiteral("stop.fill"), MRVTheme::accent());
    }
    const QImage alone = symbolPixmap(QStringLiteral("stop.fill"), 16, MRVTheme::accent(), 1)
                             .toImage()
                             .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(image.copy(12, 10, 16, 16), alone);
}

TEST_F(Symbols, ViewsKeepTheirRoomWithoutASymbol) {
    auto* view = place(new SymbolView(QStringLiteral("info.circle"), 14, MRVTheme::warning()));
    EXPECT_EQ(view->size(), QSize(14, 14));
    EXPECT_TRUE(holdsColour(drawn(*view), QRect(0, 0, 14, 14), MRVTheme::warning(), 30));
    view->setSymbol(QString());
    EXPECT_EQ(view->size(), QSize(14, 14));
    EXPECT_FALSE(holdsColour(drawn(*view), QRect(0, 0, 14, 14), MRVTheme::warning(), 60));
}

}  // namespace
}  // namespace morvane
