// What the tests of the theme share: the installed theme, a window to put controls in, pictures to look at.
#pragma once

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QString>
#include <QWidget>

#include <gtest/gtest.h>
#include <functional>
#include <memory>

namespace morvane {

/// Installs the theme once a process and gives each test an active window of 800 x 600, background colour.
class ThemeTest : public testing::Test {
protected:
    ThemeTest();
    ~ThemeTest() override;

    /// Puts `control` into the window at `position` in its preferred size, shown. The window owns it.
    template <class Control>
    Control* place(Control* control, QPoint position = {40, 40}) {
        control->setParent(window_.get());
        control->move(position);
        control->resize(
            control->sizeHint().expandedTo(control->minimumSize()).boundedTo(control->maximumSize()));
        control->show();
        return control;
    }

    QWidget& window() { return *window_; }
    /// Shows the window, makes it active and waits until it is. No control has the focus or
    /// the pointer then. No control has the focus then, as after a
    /// click.
    void activate();
    /// Presses Tab until the widget has the focus.
    void tabTo(QWidget* widget);
    /// Moves the pointer over a place in the widget, really.
    void pointAt(QWidget* widget, QPoint position);

private:
    std::unique_ptr<QWidget> window_;
};

/// Runs the event loop until `holds`; fails the test after ten seconds.
void waitUntil(const std::function<bool()>& holds, const char* what);

/// The widget drawn at `ratio` device pixels a logical one.
QImage drawn(QWidget& widget, qreal ratio = 1);

/// The colour at a logical position.
QColor colourAt(const QImage& image, QPointF position);

/// Whether a colour is within `tolerance` a channel.
testing::AssertionResult isColour(const QColor& found, const QColor& expected, int tolerance = 2);

/// Whether any pixel of the logical rectangle has (nearly) that colour.
bool holdsColour(const QImage& image, const QRect& where, const QColor& colour, int tolerance = 2);

}  // namespace morvane
