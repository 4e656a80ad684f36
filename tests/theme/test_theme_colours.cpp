// The table of colours and the contrast the design promises, computed from the tokens themselves.
#include "app/theme/theme.h"

#include <QColor>

#include <gtest/gtest.h>
#include <cmath>
#include <string>
#include <vector>

namespace morvane {
namespace {

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// Contrast ratio after WCAG 2.2, 1 to 21.
double contrast(const QColor& one, const QColor& other) {
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

struct Given {
    const char* name;
    const QColor& color;
    double red, green, blue;
};

TEST(ThemeColours, GivenOnesAreTheDescribedFractions) {
    const std::vector<Given> given = {
        {"background", MRVTheme::background(), 0.031, 0.031, 0.035},
        {"panel", MRVTheme::panel(), 0.067, 0.067, 0.075},
        {"ink", MRVTheme::ink(), 0.961, 0.957, 0.969},
        {"muted", MRVTheme::muted(), 0.639, 0.627, 0.671},
        {"line", MRVTheme::line(), 0.161, 0.153, 0.184},
        {"accent", MRVTheme::accent(), 0.725, 0.635, 0.933},
        {"accentSoft", MRVTheme::accentSoft(), 0.145, 0.114, 0.188},
    };
    constexpr double halfStep = 0.5 / 255 + 1e-4;
    for (const Given& entry : given) {
        EXPECT_NEAR(entry.color.redF(), entry.red, halfStep) << entry.name;
        EXPECT_NEAR(entry.color.greenF(), entry.green, halfStep) << entry.name;
        EXPECT_NEAR(entry.color.blueF(), entry.blue, halfStep) << entry.name;
        EXPECT_EQ(entry.color.alpha(), 255) << entry.name;
    }
}

TEST(ThemeColours, OnlyTheScrimIsTranslucent) {
    EXPECT_NEAR(MRVTheme::scrim().alphaF(), 0.66, 0.002);
    for (const QColor& color :
         {MRVTheme::sheet(), MRVTheme::field(), MRVTheme::raised(), MRVTheme::warningSoft()})
        EXPECT_EQ(color.alpha(), 255);
}

struct Pair {
    const char* what;
    const QColor& front;
    const QColor& back;
    double promised;
};

void expectContrast(const std::vector<Pair>& pairs, double least) {
    for (const Pair& pair : pairs) {
        const double computed = contrast(pair.front, pair.back);
        EXPECT_NEAR(computed, pair.promised, 0.006) << pair.what;
        EXPECT_GE(computed, least) << pair.what;
    }
}

TEST(ThemeColours, TextIsReadableOnEverySurfaceItStandsOn) {
    using T = MRVTheme;
    expectContrast(
        {
            {"ink/background", T::ink(), T::background(), 18.27},
            {"ink/panel", T::ink(), T::panel(), 17.21},
            {"ink/raised", T::ink(), T::raised(), 15.45},
            {"ink/raisedHover", T::ink(), T::raisedHover(), 13.64},
            {"ink/field", T::ink(), T::field(), 17.84},
            {"ink/accentSoft", T::ink(), T::accentSoft(), 14.78},
            {"ink/sheet", T::ink(), T::sheet(), 16.28},
            {"ink/rowHover", T::ink(), T::rowHover(), 16.27},
            {"muted/background", T::muted(), T::background(), 7.79},
            {"muted/panel", T::muted(), T::panel(), 7.34},
            {"muted/raised", T::muted(), T::raised(), 6.59},
            {"muted/raisedHover", T::muted(), T::raisedHover(), 5.82},
            {"muted/field", T::muted(), T::field(), 7.61},
            {"muted/accentSoft", T::muted(), T::accentSoft(), 6.30},
            {"muted/sheet", T::muted(), T::sheet(), 6.94},
            {"muted/rowHover", T::muted(), T::rowHover(), 6.94},
            {"muted/tableHead", T::muted(), T::tableHead(), 7.51},
            {"faint/background", T::faint(), T::background(), 6.11},
            {"faint/panel", T::faint(), T::panel(), 5.76},
            {"faint/field", T::faint(), T::field(), 5.97},
            {"faint/accentSoft", T::faint(), T::accentSoft(), 4.94},
            {"faint/rowHover", T::faint(), T::rowHover(), 5.44},
            {"accent/background", T::accent(), T::background(), 9.02},
            {"accent/panel", T::accent(), T::panel(), 8.50},
            {"accent/raised", T::accent(), T::raised(), 7.63},
            {"accent/field", T::accent(), T::field(), 8.81},
            {"accent/accentSoft", T::accent(), T::accentSoft(), 7.30},
            {"accent/sheet", T::accent(), T::sheet(), 8.04},
            {"systemBlue/panel", T::systemBlue(), T::panel(), 7.84},
            {"systemBlue/accentSoft", T::systemBlue(), T::accentSoft(), 6.73},
            {"systemBlue/rowHover", T::systemBlue(), T::rowHover(), 7.41},
            {"success/background", T::success(), T::background(), 11.14},
            {"success/panel", T::success(), T::panel(), 10.49},
            {"warning/background", T::warning(), T::background(), 11.28},
            {"warning/panel", T::warning(), T::panel(), 10.63},
            {"danger/background", T::danger(), T::background(), 9.08},
            {"danger/panel", T::danger(), T::panel(), 8.55},
            {"onAccent/accent", T::onAccent(), T::accent(), 8.33},
            {"onAccent/accentHover", T::onAccent(), T::accentHover(), 10.44},
            {"onAccent/accentPressed", T::onAccent(), T::accentPressed(), 6.61},
            {"ink/textSelection", T::ink(), T::textSelection(), 6.98},
        },
        4.5);
}

TEST(ThemeColours, EdgesAndStatesAreVisible) {
    using T = MRVTheme;
    expectContrast(
        {
            {"edge/background", T::edge(), T::background(), 3.48},
            {"edge/panel", T::edge(), T::panel(), 3.28},
            {"edge/field", T::edge(), T::field(), 3.40},
            {"edge/sheet", T::edge(), T::sheet(), 3.10},
            {"accent ring/panel", T::accent(), T::panel(), 8.50},
            {"accent/track", T::accent(), T::track(), 5.16},
            {"accentLine/panel", T::accentLine(), T::panel(), 3.03},
            {"disabledText/disabledFill", T::disabledText(), T::disabledFill(), 3.47},
        },
        3.0);
}

}  // namespace
}  // namespace morvane
