// The one style: every standard control drawn from the theme's tokens over Fusion.
#pragma once

#include <QProxyStyle>

namespace morvane {

/// Draws push buttons, line edits, pop-ups, check boxes, sliders, table headers, scroll bars, menus, tool
/// tips, splitter handles and tree chevrons; what the product does not use falls back to Fusion in our
/// palette.
class MorvaneStyle : public QProxyStyle {
    Q_OBJECT

public:
    MorvaneStyle();

    void polish(QWidget* widget) override;
    void polish(QPalette& palette) override;
    QPalette standardPalette() const override;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option,
                         const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override;
    QIcon standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override;
};

}  // namespace morvane
