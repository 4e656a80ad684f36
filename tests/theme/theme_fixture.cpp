#include "tests/theme/theme_fixture.h"

#include "app/theme/theme.h"

#include <QApplication>
#include <QCursor>
#include <QTest>

#include <cmath>
#include <cstdlib>

namespace morvane {

namespace {

constexpr int deadlineMilliseconds = 10000;

void installOnce() {
    static const bool installed = [] {
        MRVTheme::install(*qApp);
        return true;
    }();
    ASSERT_TRUE(installed);
}

}  // namespace

ThemeTest::ThemeTest() : window_(std::make_unique<QWidget>()) {
    installOnce();
    window_->resize(800, 600);
}

ThemeTest::~ThemeTest() = default;

void ThemeTest::activate() {
    window_->show();
    window_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    window_->setFocus(Qt::MouseFocusReason);
    QCursor::setPos(window_->mapToGlobal(window_->rect().bottomRight()));
}

void ThemeTest::tabTo(QWidget* widget) {
    constexpr int most = 20;
    for (int press = 0; press < most && !widget->hasFocus(); ++press) {
        QWidget* from = QApplication::focusWidget();
        QTest::keyClick(from != nullptr ? from : window_.get(), Qt::Key_Tab);
    }
    ASSERT_TRUE(widget->hasFocus());
}

void ThemeTest::pointAt(QWidget* widget, QPoint position) {
    QCursor::setPos(widget->mapToGlobal(position));
    waitUntil([&] { return widget->underMouse(); }, "the pointer to be over the widget");
}

void waitUntil(const std::function<bool()>& holds, const char* what) {
    EXPECT_TRUE(QTest::qWaitFor(holds, deadlineMilliseconds)) << "waited in vain for " << what;
}

QImage drawn(QWidget& widget, qreal ratio) {
    QImage image((QSizeF(widget.size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    widget.render(&image);
    return image;
}

QColor colourAt(const QImage& image, QPointF position) {
    const qreal ratio = image.devicePixelRatio();
    return image.pixelColor(static_cast<int>(std::floor(position.x() * ratio)),
                            static_cast<int>(std::floor(position.y() * ratio)));
}

testing::AssertionResult isColour(const QColor& found, const QColor& expected, int tolerance) {
    const bool same = std::abs(found.red() - expected.red()) <= tolerance &&
                      std::abs(found.green() - expected.green()) <= tolerance &&
                      std::abs(found.blue() - expected.blue()) <= tolerance &&
                      std::abs(found.alpha() - expected.alpha()) <= tolerance;
    if (same)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << found.name(QColor::HexArgb).toStdString() << " is not "
                                       << expected.name(QColor::HexArgb).toStdString();
}

bool holdsColour(const QImage& image, const QRect& where, const QColor& colour, int tolerance) {
    for (int y = where.top(); y <= where.bottom(); ++y)
        for (int x = where.left(); x <= where.right(); ++x)
            if (isColour(colourAt(image, QPointF(x, y)), colour, tolerance))
                return true;
    return false;
}

}  // namespace morvane
