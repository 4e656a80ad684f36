// The one table of colours.
#include "app/theme/theme.h"

namespace morvane {

const QColor& MRVTheme::background() {
    static const QColor colour(0x080809);
    return colour;
}

const QColor& MRVTheme::panel() {
    static const QColor colour(0x111113);
    return colour;
}

const QColor& MRVTheme::ink() {
    static const QColor colour(0xF5F4F7);
    return colour;
}

const QColor& MRVTheme::muted() {
    static const QColor colour(0xA3A0AB);
    return colour;
}

const QColor& MRVTheme::faint() {
    static const QColor colour(0x908C9B);
    return colour;
}

const QColor& MRVTheme::line() {
    static const QColor colour(0x29272F);
    return colour;
}

const QColor& MRVTheme::tableHead() {
    static const QColor colour(0x0E0E10);
    return colour;
}

const QColor& MRVTheme::rowHover() {
    static const QColor colour(0x18171C);
    return colour;
}

const QColor& MRVTheme::textSelection() {
    static const QColor colour(0x5B4A82);
    return colour;
}

const QColor& MRVTheme::accent() {
    static const QColor colour(0xB9A2EE);
    return colour;
}

const QColor& MRVTheme::accentSoft() {
    static const QColor colour(0x251D30);
    return colour;
}

const QColor& MRVTheme::accentHover() {
    static const QColor colour(0xCBBAF4);
    return colour;
}

const QColor& MRVTheme::accentPressed() {
    static const QColor colour(0xA68DE0);
    return colour;
}

const QColor& MRVTheme::accentLine() {
    static const QColor colour(0x6A578F);
    return colour;
}

const QColor& MRVTheme::onAccent() {
    static const QColor colour(0x17111F);
    return colour;
}

const QColor& MRVTheme::raised() {
    static const QColor colour(0x1D1C21);
    return colour;
}

const QColor& MRVTheme::raisedHover() {
    static const QColor colour(0x28262D);
    return colour;
}

const QColor& MRVTheme::raisedPressed() {
    static const QColor colour(0x151417);
    return colour;
}

const QColor& MRVTheme::controlLine() {
    static const QColor colour(0x2B2930);
    return colour;
}

const QColor& MRVTheme::controlLineHover() {
    static const QColor colour(0x3B3843);
    return colour;
}

const QColor& MRVTheme::field() {
    static const QColor colour(0x0C0C0E);
    return colour;
}

const QColor& MRVTheme::edge() {
    static const QColor colour(0x686472);
    return colour;
}

const QColor& MRVTheme::edgeHover() {
    static const QColor colour(0x86818F);
    return colour;
}

const QColor& MRVTheme::disabledText() {
    static const QColor colour(0x6F6B78);
    return colour;
}

const QColor& MRVTheme::disabledFill() {
    static const QColor colour(0x17161A);
    return colour;
}

const QColor& MRVTheme::disabledLine() {
    static const QColor colour(0x201F24);
    return colour;
}

const QColor& MRVTheme::track() {
    static const QColor colour(0x3B3843);
    return colour;
}

const QColor& MRVTheme::disabledKnob() {
    static const QColor colour(0x5A5663);
    return colour;
}

const QColor& MRVTheme::progressTrack() {
    static const QColor colour(0x2B2833);
    return colour;
}

const QColor& MRVTheme::scrollThumb() {
    static const QColor colour(0x3A3742);
    return colour;
}

const QColor& MRVTheme::scrollThumbHover() {
    static const QColor colour(0x5A5663);
    return colour;
}

const QColor& MRVTheme::systemBlue() {
    static const QColor colour(0x6AA9FF);
    return colour;
}

const QColor& MRVTheme::success() {
    static const QColor colour(0x7BD3A2);
    return colour;
}

const QColor& MRVTheme::warning() {
    static const QColor colour(0xE9BC62);
    return colour;
}

const QColor& MRVTheme::danger() {
    static const QColor colour(0xFF8F86);
    return colour;
}

const QColor& MRVTheme::warningSoft() {
    static const QColor colour(0x2A2415);
    return colour;
}

const QColor& MRVTheme::sheet() {
    static const QColor colour(0x18171B);
    return colour;
}

const QColor& MRVTheme::sheetLine() {
    static const QColor colour(0x37343E);
    return colour;
}

const QColor& MRVTheme::scrim() {
    static const QColor colour(0x04, 0x04, 0x05, 168);  // 66 %
    return colour;
}

}  // namespace morvane
