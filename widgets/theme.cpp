#include "widgets/theme.h"

#include "widgets/desktopPreference.h"

#include <QCoreApplication>

namespace
{

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

using settings = appearanceSettings;

struct themeColor {
    QColor settings::*setting;
    QRgb light;
    QRgb dark;
};

constexpr QRgb lightPanel = 0xfff3f5f8;
constexpr QRgb darkPanel = 0xff23272e;
constexpr QRgb lightBar = 0xff1b66c9;
constexpr QRgb darkBar = 0xff62aef8;
constexpr QRgb lightBarText = 0xffffffff;
constexpr QRgb darkBarText = 0xff0d1218;

constexpr themeColor colors[] = {
    {&settings::m_barColor, lightBar, darkBar},
    {&settings::m_invertedNumberColor, lightBarText, darkBarText},
    {&settings::m_busyBarColor, lightBar, darkBar},
    {&settings::m_busyInvertedNumberColor, lightBarText, darkBarText},
    {&settings::m_dialogBackgroundColor, lightPanel, darkPanel},
    {&settings::m_dialogFrameColor, 0xffa9b8cb, 0xff4d5766},
    {&settings::m_barBackgroundColor, lightPanel, darkPanel},
    {&settings::m_busyBarBackgroundColor, lightPanel, darkPanel},
    {&settings::m_shadowLightColor, 0xffffffff, 0xff3b434f},
    {&settings::m_shadowDarkColor, 0xffc3ceda, 0xff15181d},
    {&settings::m_buttonBaseColor, 0xffe4eaf1, 0xff39414d},
    {&settings::m_focusFrameColor, lightBar, darkBar},
};

QColor colorOf(const themeColor &color, bool dark)
{
    return QColor::fromRgb(dark ? color.dark : color.light);
}

void takeFonts()
{
    const auto sans = [](int points) { return QFont(QStringLiteral("Sans Serif"), points); };
    appearance.m_buttonFont = appearance.m_barNumFont = appearance.m_barLabelFont = sans(10);
    appearance.m_labelFont = sans(9);
}

} // namespace

theme::theme(QObject *parent) : QObject(parent), m_preference(new desktopPreference(this))
{
    connect(m_preference, &desktopPreference::told, this, &theme::follow);
}

theme &theme::instance()
{
    static auto *const only = new theme(QCoreApplication::instance());
    return *only;
}

void theme::apply(windowTheme which)
{
    if (which == windowTheme::none)
        return;
    if (which == windowTheme::automatic)
        m_preference->watch();
    appearance.m_windowTheme = which;
    m_isDark = which == windowTheme::dark || (which == windowTheme::automatic && m_preference->prefersDark());
    for (const themeColor &color : colors)
        appearance.*color.setting = colorOf(color, m_isDark);
    appearance.m_panelTextColor = appearance.m_buttonTextColor = QColor();
    constexpr int alpha = 242;
    appearance.m_dialogBackgroundAlphaval = alpha;
    takeFonts();
}

void theme::follow()
{
    if (appearance.m_windowTheme != windowTheme::automatic || m_preference->prefersDark() == m_isDark)
        return;
    for (const themeColor &color : colors) {
        if (appearance.*color.setting == colorOf(color, m_isDark))
            appearance.*color.setting = colorOf(color, !m_isDark);
    }
    m_isDark = !m_isDark;
    emit changed();
}

QColor theme::colorOrLight(QColor appearanceSettings::*setting)
{
    if (const QColor color = appearance.*setting; color.isValid())
        return color;
    for (const themeColor &color : colors) {
        if (color.setting == setting)
            return colorOf(color, false);
    }
    return {};
}

QColor themedText(const QColor &setting, const QColor &background)
{
    return appearance.m_windowTheme == windowTheme::none ? setting : readableText(setting, background);
}

QColor readableText(const QColor &setting, const QColor &background)
{
    return setting.isValid() ? setting : readableOn(background);
}

QPalette barPalette(QPalette palette, const QColor &numbers, const QColor &fill, const QColor &background)
{
    palette.setBrush(QPalette::All, QPalette::HighlightedText, QBrush(numbers));
    palette.setBrush(QPalette::All, QPalette::Highlight, QBrush(fill));
    palette.setBrush(QPalette::All, QPalette::Window, QBrush(background));
    const QColor text = themedText(appearance.m_panelTextColor, background);
    if (!text.isValid())
        return palette;
    palette.setBrush(QPalette::All, QPalette::Text, QBrush(text));
    if (readableOn(background) != Qt::white)
        return palette;
    // The toolkit's panel has a white edge, which glares in the dark.
    palette.setBrush(QPalette::All, QPalette::Dark, QBrush(mixed(background, Qt::black, 0.5)));
    palette.setBrush(QPalette::All, QPalette::Light, QBrush(mixed(background, Qt::white, 0.25)));
    return palette;
}

std::optional<QPalette> boxPalette()
{
    if (appearance.m_windowTheme == windowTheme::none)
        return {};
    const QColor panel = appearance.m_dialogBackgroundColor;
    const QColor button = appearance.m_buttonBaseColor;
    QPalette palette(button, panel);
    const QColor text = readableText(appearance.m_panelTextColor, panel);
    palette.setColor(QPalette::Base, mixed(panel, text, 0.05));
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, readableText(appearance.m_buttonTextColor, button));
    palette.setColor(QPalette::Highlight, appearance.m_focusFrameColor);
    palette.setColor(QPalette::HighlightedText, readableOn(appearance.m_focusFrameColor));
    return palette;
}

double contrast(const QColor &one, const QColor &other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor readableOn(const QColor &background)
{
    const QColor black(Qt::black);
    const QColor white(Qt::white);
    return contrast(black, background) >= contrast(white, background) ? black : white;
}

QColor mixed(const QColor &one, const QColor &other, double share)
{
    const auto channel = [share](int a, int b) { return qRound(a + (b - a) * share); };
    return {channel(one.red(), other.red()), channel(one.green(), other.green()),
            channel(one.blue(), other.blue())};
}
