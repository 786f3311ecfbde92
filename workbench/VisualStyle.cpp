#include "VisualStyle.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"

#include <QApplication>
#include <QColor>
#include <QFont>
#include <QStyle>
#include <QStyleFactory>

namespace {

// The colours a theme gives the frames around the lists: the lists and
// edit boxes themselves stay dark text on white in every theme.
struct ThemeColours
{
    QColor Frame;      // windows, dialogs, panes
    QColor FrameText;  // text on the frame
    QColor Button;
    QColor Group;      // a ribbon group's face
    QColor Border;     // a ribbon group's edge
    QColor Title;      // a ribbon group's caption, dock titles
    QColor TitleBar;   // dock title bars
    QColor Highlight;  // selections
    QColor Alternate;  // every other row of a list
};

const ThemeColours *ColoursOf(int Theme)
{
    static const ThemeColours blue{"#d6e3f3", "#15428b", "#e4edf8", "#dfe9f5", "#8db2e3", "#15428b", "#bfd4ee", "#3d7bc6", "#eef4fb"};
    static const ThemeColours black{"#535353", "#f2f2f2", "#6a6a6a", "#474747", "#8c8c8c", "#f2f2f2", "#2f2f2f", "#e69a2e", "#ededed"};
    static const ThemeColours silver{"#e3e6eb", "#3c3c3c", "#eef0f3", "#e9ebef", "#a7acb5", "#4c535c", "#cfd3da", "#7f8da3", "#f2f3f5"};
    static const ThemeColours scenic{"#f3f6fb", "#1e395b", "#ffffff", "#f8fafd", "#b6c8de", "#1e395b", "#dde8f5", "#3399ff", "#f3f7fc"};
    switch (Theme) {
    case VisualStyle::ThemeBlue:
        return &blue;
    case VisualStyle::ThemeBlack:
        return &black;
    case VisualStyle::ThemeSilver:
        return &silver;
    case VisualStyle::ThemeScenic:
        return &scenic;
    default:
        return nullptr;
    }
}

QString Section()
{
    return Global.ProductName;
}

// What the desktop gave the application before any theme was applied.
struct DesktopLook
{
    QString Style;
    QPalette Palette;
    QFont Font;
};

const DesktopLook &Desktop(QApplication &App)
{
    static const DesktopLook look{App.style()->name(), App.palette(), App.font()};
    return look;
}

} // namespace

QStringList VisualStyle::ThemeNames()
{
    return {QStringLiteral("Blue"), QStringLiteral("Black"), QStringLiteral("Silver"), QStringLiteral("Scenic")};
}

QStringList VisualStyle::FontSizeNames()
{
    return {QStringLiteral("System Default"), QStringLiteral("Normal"), QStringLiteral("Large"), QStringLiteral("Extra Large")};
}

VisualStyle VisualStyle::Stored()
{
    VisualStyle style;
    style.Theme = GetUserSetting(Section(), QStringLiteral("Theme"), QString::number(ThemeBlue)).toInt();
    style.FontSize = GetUserSetting(Section(), QStringLiteral("ThemeFontSize"), QStringLiteral("0")).toInt();
    if (style.FontSize < FontSystemDefault || style.FontSize > FontExtraLarge)
        style.FontSize = FontSystemDefault;
    style.RightToLeft = GetUserBool(Section(), QStringLiteral("RightToLeft"), false);
    return style;
}

void VisualStyle::Store() const
{
    SaveUserSetting(Section(), QStringLiteral("Theme"), Theme);
    SaveUserSetting(Section(), QStringLiteral("ThemeFontSize"), FontSize);
    SaveUserSetting(Section(), QStringLiteral("RightToLeft"), RightToLeft);
    Global.Settings.Theme = Theme;
    Global.Settings.ThemeFontSize = qint16(FontSize);
    Global.Settings.RightToLeft = RightToLeft;
}

QPalette VisualStyle::Palette(const QPalette &Base) const
{
    const ThemeColours *colours = ColoursOf(Theme);
    if (!colours)
        return Base;
    QPalette palette(Base);
    palette.setColor(QPalette::Window, colours->Frame);
    palette.setColor(QPalette::WindowText, colours->FrameText);
    palette.setColor(QPalette::Button, colours->Button);
    palette.setColor(QPalette::ButtonText, colours->FrameText);
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, colours->Alternate);
    palette.setColor(QPalette::Text, Qt::black);
    palette.setColor(QPalette::ToolTipBase, QColor(0xff, 0xff, 0xe1));
    palette.setColor(QPalette::ToolTipText, Qt::black);
    palette.setColor(QPalette::PlaceholderText, Qt::gray);
    palette.setColor(QPalette::Highlight, colours->Highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, colours->FrameText.lighter(Theme == ThemeBlack ? 60 : 250));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, colours->FrameText.lighter(Theme == ThemeBlack ? 60 : 250));
    palette.setColor(QPalette::Disabled, QPalette::Text, Qt::gray);
    return palette;
}

QString VisualStyle::StyleSheet() const
{
    const ThemeColours *colours = ColoursOf(Theme);
    if (!colours)
        return QString();
    return QStringLiteral("#CommandBar QGroupBox { background-color: %1; border: 1px solid %2; border-radius: 4px;"
                          " margin-top: 1.2em; padding-top: 2px; }"
                          "#CommandBar QGroupBox::title { subcontrol-origin: margin; subcontrol-position: top center;"
                          " padding: 0 4px; color: %3; }"
                          "QDockWidget::title { background-color: %4; padding: 3px; }")
        .arg(colours->Group.name(), colours->Border.name(), colours->Title.name(), colours->TitleBar.name());
}

int VisualStyle::PointSize(int SystemSize) const
{
    switch (FontSize) {
    case FontNormal:
        return 9;
    case FontLarge:
        return 11;
    case FontExtraLarge:
        return 13;
    default:
        return SystemSize;
    }
}

void VisualStyle::Apply(QApplication &App) const
{
    const DesktopLook &desktop = Desktop(App);
    App.setStyle(QStyleFactory::create(ColoursOf(Theme) ? QStringLiteral("Fusion") : desktop.Style));
    App.setPalette(Palette(desktop.Palette));
    App.setStyleSheet(StyleSheet());
    QFont font = desktop.Font;
    if (FontSize != FontSystemDefault)
        font.setPointSize(PointSize(font.pointSize()));
    App.setFont(font);
    App.setLayoutDirection(RightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
}
