#pragma once
#include <QPalette>
#include <QString>
#include <QStringList>

class QApplication;

// The console's look as the system menu chooses it: a theme of the Visual
// Styles menu, a font size and the layout direction. The choice is kept in
// per-user keys: "Theme" by its number (1 the first theme; any other number
// the desktop's own look), "ThemeFontSize" and "RightToLeft".
struct VisualStyle
{
    enum Theme { ThemeDesktop = 0, ThemeBlue = 1, ThemeBlack, ThemeSilver, ThemeScenic };
    enum FontSize { FontSystemDefault = 0, FontNormal, FontLarge, FontExtraLarge };

    int Theme = ThemeBlue;
    int FontSize = FontSystemDefault;
    bool RightToLeft = false;

    // The captions of the two menus, in the order of their numbers
    // (themes from ThemeBlue, font sizes from FontSystemDefault).
    static QStringList ThemeNames();
    static QStringList FontSizeNames();

    // The choice in the per-user keys, and back.
    static VisualStyle Stored();
    void Store() const;

    // The theme's colours over the desktop's palette Base.
    QPalette Palette(const QPalette &Base) const;
    // The ribbon's and the panes' frames in the theme's colours.
    QString StyleSheet() const;
    // The point size of the application's font; SystemSize for the default.
    int PointSize(int SystemSize) const;
    // Applies all of it to the running application. The desktop's palette
    // and font are taken at the first call, so that applying again starts
    // from them.
    void Apply(QApplication &App) const;
};
