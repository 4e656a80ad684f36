#include "app/theme/theme.h"

#include "app/theme/accessible.h"
#include "app/theme/focus_ring.h"
#include "app/theme/style.h"
#include "app/theme/text_rendering.h"

#include <QApplication>
#include <QFontDatabase>
#include <QPalette>
#include <QProxyStyle>
#include <QToolTip>

namespace morvane {

namespace {

bool motionReduced = false;

QFont themeFont(int px, QFont::Weight weight) {
    static const QStringList families = {QStringLiteral("Noto Sans CJK SC"), QStringLiteral("Noto Sans SC"),
                                         QFontDatabase::systemFont(QFontDatabase::GeneralFont).family()};
    QFont font;
    font.setFamilies(families);
    font.setPixelSize(px);
    font.setWeight(weight);
    return font;
}

QPalette makePalette() {
    QPalette palette;
    const auto set = [&palette](QPalette::ColorRole role, const QColor& color) {
        palette.setColor(role, color);
    };
    set(QPalette::Window, MRVTheme::background());
    set(QPalette::Base, MRVTheme::panel());
    set(QPalette::AlternateBase, MRVTheme::panel());
    set(QPalette::WindowText, MRVTheme::ink());
    set(QPalette::Text, MRVTheme::ink());
    set(QPalette::ButtonText, MRVTheme::ink());
    set(QPalette::BrightText, MRVTheme::ink());
    set(QPalette::Button, MRVTheme::raised());
    set(QPalette::Highlight, MRVTheme::textSelection());
    set(QPalette::HighlightedText, MRVTheme::ink());
    set(QPalette::PlaceholderText, MRVTheme::faint());
    set(QPalette::ToolTipBase, MRVTheme::sheet());
    set(QPalette::ToolTipText, MRVTheme::ink());
    set(QPalette::Link, MRVTheme::accent());
    set(QPalette::LinkVisited, MRVTheme::accent());
    // Bevel shades, for the few controls that are Fusion's own (file dialogs).
    set(QPalette::Light, MRVTheme::raisedHover());
    set(QPalette::Midlight, MRVTheme::controlLineHover());
    set(QPalette::Mid, MRVTheme::controlLine());
    set(QPalette::Dark, MRVTheme::line());
    set(QPalette::Shadow, MRVTheme::background());
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                                           QPalette::HighlightedText, QPalette::PlaceholderText})
        palette.setColor(QPalette::Disabled, role, MRVTheme::disabledText());
    return palette;
}

}  // namespace

QFont MRVTheme::font(int px) {
    return themeFont(px, QFont::Normal);
}

QFont MRVTheme::boldFont(int px) {
    return themeFont(px, QFont::Bold);
}

int MRVTheme::lineHeight(int px) {
    switch (px) {
        case 21:
            return 26;
        case 15:
            return 22;
        case 14:
        case 13:
            return 20;
        case 12:
            return 18;
        case 11:
            return 17;
        case 10:
            return 14;
        default:
            return (px * 3 + 1) / 2;
    }
}

const QPalette& MRVTheme::palette() {
    static const QPalette palette = makePalette();
    return palette;
}

void MRVTheme::install(QApplication& application) {
    keepStemWeight();
    application.setStyle(new MorvaneStyle);
    application.setPalette(palette());
    application.setFont(font(12));
    application.setWindowIcon(icon());
    QToolTip::setPalette(palette());
    QToolTip::setFont(font(11));
    for (const Qt::UIEffect effect : {Qt::UI_AnimateMenu, Qt::UI_FadeMenu, Qt::UI_AnimateCombo,
                                      Qt::UI_AnimateTooltip, Qt::UI_FadeTooltip, Qt::UI_AnimateToolBox})
        QApplication::setEffectEnabled(effect, false);
    trackKeyboardFocus(application);
    installAccessibility();
}

bool MRVTheme::reducedMotion() {
    if (motionReduced || QGuiApplication::platformName() == QLatin1String("offscreen") ||
        QGuiApplication::platformName() == QLatin1String("minimal"))
        return true;
    // Our own style answers 0, because nothing but what the theme moves itself may move: ask the one below,
    // which knows the desktop's wish.
    const auto* style = qobject_cast<const QProxyStyle*>(QApplication::style());
    return style != nullptr && style->baseStyle()->styleHint(QStyle::SH_Widget_Animation_Duration) == 0;
}

void MRVTheme::setReducedMotion(bool reduced) {
    motionReduced = reduced;
}

}  // namespace morvane
