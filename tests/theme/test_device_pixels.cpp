// Edges and hairlines on real windows at the scales 1, 1.25, 1.5 and 2: one screen each.
#include "app/theme/paint.h"
#include "app/theme/theme.h"
#include "tests/theme/theme_fixture.h"

#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTemporaryDir>

#include <array>
#include <cmath>
#include <vector>

namespace morvane {
namespace {

/// Describes four screens to the offscreen platform before there is an application.
struct Screens {
    QTemporaryDir folder;

    Screens() {
        QFile file(folder.filePath(QStringLiteral("screens.json")));
        if (!file.open(QIODevice::WriteOnly))
            return;
        file.write(R"({"windowFrameMargins": false, "screens": [)");
        constexpr std::array<const char*, 4> ratios = {"1", "1.25", "1.5", "2"};
        for (std::size_t index = 0; index < ratios.size(); ++index) {
            file.write(index == 0 ? "" : ",");
            file.write(QStringLiteral(R"({"name": "%1", "x": %2, "y": 0, "width": 1600, "height": 1200,
                "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": %3})")
                           .arg(index)
                           .arg(index * 2000)
                           .arg(QLatin1String(ratios[index]))
                           .toUtf8());
        }
        file.write("]}");
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFile::encodeName(file.fileName()));
    }
};
const Screens screens;

/// A box of one fill and one hairline border.
class BoxWidget : public QWidget {
public:
    explicit BoxWidget(QWidget* parent) : QWidget(parent) {}

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        paintBox(painter, rect(), {0, MRVTheme::panel(), MRVTheme::accent()});
    }
};

/// A window on the screen of `ratio`, background colour.
std::unique_ptr<QWidget> windowAt(qreal ratio) {
    for (const QScreen* screen : QGuiApplication::screens()) {
        if (std::abs(screen->devicePixelRatio() - ratio) > 0.01)
            continue;
        auto window = std::make_unique<QWidget>();
        window->setGeometry(QRect(screen->geometry().topLeft() + QPoint(10, 10), QSize(500, 500)));
        return window;
    }
    ADD_FAILURE() << "no screen of ratio " << ratio;
    return std::make_unique<QWidget>();
}

int deviceEdge(int logical, qreal ratio) {
    return static_cast<int>(std::round(logical * ratio));
}

class DevicePixels : public ThemeTest, public testing::WithParamInterface<double> {};

TEST_P(DevicePixels, BordersAreWholeHairlinesOnEverySide) {
    const qreal ratio = GetParam();
    const int hairline = ratio < 1.75 ? 1 : 2;
    const auto window = windowAt(ratio);
    std::vector<BoxWidget*> boxes;
    for (int column = 0; column < 10; ++column) {
        for (int row = 0; row < 10; ++row) {
            auto* box = new BoxWidget(window.get());
            box->setGeometry(3 + column * 37 + row % 3, 5 + row * 39 + column % 4, 20 + column, 20 + row);
            boxes.push_back(box);
        }
    }
    window->show();
    waitUntil([&] { return window->isVisible() && window->devicePixelRatioF() == ratio; },
              "the scaled window");
    const QImage image = window->grab().toImage();
    ASSERT_DOUBLE_EQ(image.devicePixelRatio(), ratio);
    for (const BoxWidget* box : boxes) {
        const QRect g = box->geometry();
        const int left = deviceEdge(g.left(), ratio);
        const int top = deviceEdge(g.top(), ratio);
        const int right = deviceEdge(g.left() + g.width(), ratio) - 1;
        const int bottom = deviceEdge(g.top() + g.height(), ratio) - 1;
        const QPoint middle((left + right) / 2, (top + bottom) / 2);
        const std::array<std::pair<QPoint, QPoint>, 4> edges = {{{{left, middle.y()}, {1, 0}},
                                                                 {{right, middle.y()}, {-1, 0}},
                                                                 {{middle.x(), top}, {0, 1}},
                                                                 {{middle.x(), bottom}, {0, -1}}}};
        for (const auto& [outermost, inwards] : edges) {
            EXPECT_TRUE(isColour(image.pixelColor(outermost - inwards), MRVTheme::background()));
            for (int step = 0; step < hairline; ++step)
                EXPECT_TRUE(isColour(image.pixelColor(outermost + inwards * step), MRVTheme::accent()));
            EXPECT_TRUE(isColour(image.pixelColor(outermost + inwards * hairline), MRVTheme::panel()));
        }
    }
}

class LineWidget : public QWidget {
public:
    LineWidget(Qt::Edge edge, QWidget* parent) : QWidget(parent), edge_(edge) {}

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        paintHairline(painter, rect(), edge_, MRVTheme::accent());
    }

private:
    const Qt::Edge edge_;
};

TEST_P(DevicePixels, HairlinesCoverWholePixelsAlongTheirEdge) {
    const qreal ratio = GetParam();
    const int hairline = ratio < 1.75 ? 1 : 2;
    const auto window = windowAt(ratio);
    auto* bottom = new LineWidget(Qt::BottomEdge, window.get());
    bottom->setGeometry(11, 13, 101, 33);
    auto* left = new LineWidget(Qt::LeftEdge, window.get());
    left->setGeometry(151, 17, 21, 63);
    window->show();
    waitUntil([&] { return window->devicePixelRatioF() == ratio; }, "the scaled window");
    const QImage image = window->grab().toImage();
    int lit = 0;
    for (int y = 0; y < image.height(); ++y)
        lit += isColour(image.pixelColor(deviceEdge(60, ratio), y), MRVTheme::accent()) ? 1 : 0;
    EXPECT_EQ(lit, hairline);
    EXPECT_TRUE(
        isColour(image.pixelColor(deviceEdge(60, ratio), deviceEdge(46, ratio) - 1), MRVTheme::accent()));
    lit = 0;
    for (int x = deviceEdge(140, ratio); x < deviceEdge(200, ratio); ++x)
        lit += isColour(image.pixelColor(x, deviceEdge(40, ratio)), MRVTheme::accent()) ? 1 : 0;
    EXPECT_EQ(lit, hairline);
    EXPECT_TRUE(
        isColour(image.pixelColor(deviceEdge(151, ratio), deviceEdge(40, ratio)), MRVTheme::accent()));
}

INSTANTIATE_TEST_SUITE_P(Scales, DevicePixels, testing::Values(1.0, 1.25, 1.5, 2.0));

}  // namespace
}  // namespace morvane
