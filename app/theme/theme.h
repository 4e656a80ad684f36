// The visual vocabulary of both workspaces: one table of colours, the type scale, the brand images
// and the header they make up. Nothing outside this folder names a colour by its numbers.
#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QImage>
#include <QString>

class QApplication;
class QPalette;
class QWidget;

namespace morvane {

/// Static values, each made once on first use. Main thread only. All colours are opaque sRGB, `scrim` alone
/// is translucent.
struct MRVTheme {
    // Surfaces and text.
    static const QColor& background();     ///< window
    static const QColor& panel();          ///< panes, cards, footer
    static const QColor& ink();            ///< primary text
    static const QColor& muted();          ///< secondary text
    static const QColor& faint();          ///< counts, placeholders, chevrons, shortcuts
    static const QColor& line();           ///< separators, card borders
    static const QColor& tableHead();      ///< behind a table's header
    static const QColor& rowHover();       ///< row under the pointer
    static const QColor& textSelection();  ///< behind selected text (ink on it)

    // The accent.
    static const QColor& accent();
    static const QColor& accentSoft();     ///< selected row, selected segment, artwork gradient
    static const QColor& accentHover();    ///< accent fill under the pointer
    static const QColor& accentPressed();  ///< accent fill held down
    static const QColor& accentLine();     ///< border of a selected segment, stopped or partial progress
    static const QColor& onAccent();       ///< text and symbols on an accent fill

    // Controls.
    static const QColor& raised();
    static const QColor& raisedHover();
    static const QColor& raisedPressed();
    static const QColor& controlLine();
    static const QColor& controlLineHover();
    static const QColor& field();  ///< text inputs, segmented trough, path box
    static const QColor& edge();   ///< border of inputs, check boxes, the empty drop area
    static const QColor& edgeHover();
    static const QColor& disabledText();
    static const QColor& disabledFill();
    static const QColor& disabledLine();
    static const QColor& track();  ///< empty part of a slider
    static const QColor& disabledKnob();
    static const QColor& progressTrack();  ///< empty part of a progress edge
    static const QColor& scrollThumb();
    static const QColor& scrollThumbHover();

    // Meaning. Always beside a text that says the same.
    static const QColor& systemBlue();  ///< list symbol of every kind but audio
    static const QColor& success();
    static const QColor& warning();
    static const QColor& danger();
    static const QColor& warningSoft();  ///< tile behind a warning glyph

    // Above the window.
    static const QColor& sheet();  ///< sheets, menus, tool tips
    static const QColor& sheetLine();
    static const QColor& scrim();  ///< veil over the window behind a sheet

    /// The application icon; the application's own window icon when the resource cannot be read.
    static const QIcon& icon();
    /// The wordmark at its natural 1309 x 282; an empty image of 131 x 28 when the resource cannot be read.
    static const QImage& wordmark();

    /// The interface family at `px` logical pixels. The two weights of the design are Regular and Bold.
    static QFont font(int px);
    static QFont boldFont(int px);
    /// The line height in logical pixels that belongs to a font size of the type scale (21, 15, 14, 13, 12,
    /// 11, 10).
    static int lineHeight(int px);

    static const QPalette& palette();
    /// Makes the application look like this, always dark, whatever the desktop says: style, palette, fonts,
    /// tool tips, keyboard-focus tracking, accessibility of the widgets of this folder. Once, before the
    /// first widget.
    static void install(QApplication& application);

    /// The wordmark in a widget exactly `width` wide and width * 282 / 1309 high (rounded), named "MORVANE"
    /// for accessibility. The caller owns it.
    static QWidget* wordmarkView(int width);
    /// The brand at the top of a workspace: icon 62, gap 14, then wordmark 132 wide, `product` (21 px, ink)
    /// and `detail` (11 px, muted, elided at the end, the first to give way). No outer margins. The caller
    /// owns it; the labels have the object names "product" and "detail".
    static QWidget* nativeHeader(const QString& product, const QString& detail);

    /// True when nothing may move: the desktop's animations are off, the platform shows nothing, or
    /// setReducedMotion(true) was called (default false).
    static bool reducedMotion();
    static void setReducedMotion(bool reduced);
};

}  // namespace morvane
