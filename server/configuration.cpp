#include "server/handlers.h"

#include "dialog/CProgressDialog.h"
#include "log/dump.h"
#include "server/limits.h"
#include "stats/estimateMode.h"
#include "widgets/appearance.h"
#include "widgets/busyWidget.h"
#include "widgets/theme.h"

#include <QStringTokenizer>

#include <algorithm>

namespace
{

/// Reads the fields of an entry's value one after the other. Behind the last one that is present, nothing
/// more is written.
class fieldReader
{
public:
    fieldReader(QStringView value, QChar separator) : m_fields(value.split(separator)) {}

    fieldReader &operator>>(int &number)
    {
        if (next())
            number = std::clamp(m_field.toInt(), -farthestCoordinate, farthestCoordinate);
        return *this;
    }
    fieldReader &operator>>(QFont &font)
    {
        if (next())
            font.fromString(m_field.toString());
        return *this;
    }
    fieldReader &operator>>(QColor &color)
    {
        if (next())
            color = QColor::fromString(m_field);
        return *this;
    }
    fieldReader &operator>>(QString &text)
    {
        if (next())
            text = m_field.toString();
        return *this;
    }
    /// Whether all fields asked for were there.
    explicit operator bool() const { return m_complete; }

private:
    bool next()
    {
        m_complete = m_next < m_fields.size();
        if (m_complete)
            m_field = m_fields[m_next++];
        return m_complete;
    }

    QList<QStringView> m_fields;
    QStringView m_field;
    qsizetype m_next = 0;
    bool m_complete = true;
};

activeDialog &windows()
{
    return handlers::instance().m_active;
}

/// "windowPixmap=" and "windowStyle=" make the background less transparent.
constexpr int styledAlpha = 242;

void setWindowFonts(QStringView value)
{
    fieldReader(value, u'|') >> appearance.m_buttonFont >> appearance.m_barNumFont >>
        appearance.m_barLabelFont >> appearance.m_labelFont;
}

void setBusyIndicator(QStringView value)
{
    fieldReader fields(value, u'|');
    QString pixmap;
    fields >> appearance.m_busyXpos >> appearance.m_busyYpos >> appearance.m_busyWidth >>
        appearance.m_busyHeight >> pixmap;
    if (!fields)
        return;
    if (pixmap != QLatin1String("empty"))
        appearance.m_busyPixmap = pixmap;

    busyWidget *busyWindow = windows().busyWindow();
    if (!busyWindow)
        return;
    dump("---- setting busy pixmap ", 0);
    busyWindow->setBusyPixmap(appearance.m_busyPixmap);
    if (busyWindow->isVisible())
        busyWindow->movePosition();
}

void setPaintOffset(QStringView value)
{
    fieldReader fields(value, u'|');
    fields >> appearance.m_paintOffsetX >> appearance.m_paintOffsetY;
    if (!fields)
        return;
    if (busyWidget *busyWindow = windows().busyWindow(); busyWindow && busyWindow->isVisible())
        busyWindow->movePosition();
    if (windows().isShown())
        windows().dialog()->movePosition();
}

void setScreenGeometry(QStringView value)
{
    fieldReader(value, u',') >> appearance.m_desktopWidth >> appearance.m_desktopHeight;
    appearance.m_desktopIsKnown = true;
}

void setWindowTitle(QStringView value)
{
    appearance.m_windowTitle = value.left(longestCaption).toString();
}

void setWindowPixmap(QStringView value)
{
    appearance.m_windowPixmap = value.toString();
    appearance.m_dialogBackgroundAlphaval = styledAlpha;
}

void setWindowIcon(QStringView value)
{
    appearance.m_windowIcon = value.toString();
}

void setWindowStyle(QStringView value)
{
    fieldReader fields(value, u'|');
    fields >> appearance.m_barColor >> appearance.m_invertedNumberColor >> appearance.m_busyBarColor >>
        appearance.m_busyInvertedNumberColor >> appearance.m_dialogBackgroundColor >>
        appearance.m_dialogFrameColor;
    if (!fields)
        return;
    appearance.m_busyBarBackgroundColor = appearance.m_dialogBackgroundColor;
    appearance.m_barBackgroundColor = appearance.m_dialogBackgroundColor;
    appearance.m_dialogBackgroundAlphaval = styledAlpha;
}

void setWindowControls(QStringView value)
{
    fieldReader(value, u'|') >> appearance.m_shadowLightColor >> appearance.m_shadowDarkColor >>
        appearance.m_buttonBaseColor >> appearance.m_focusFrameColor;
}

void setWindowModal(QStringView value)
{
    appearance.m_modal_dialog = value.toString().toLower() == QLatin1String("on");
    appearance.m_dialog_flags = appearance.m_modal_dialog ? m_modal_flags : m_nonmodal_flags;
}

void setWindowLayout(QStringView value)
{
    if (value == QLatin1String("fitted"))
        appearance.m_windowLayout = windowLayout::fitted;
    else if (value == QLatin1String("grid"))
        appearance.m_windowLayout = windowLayout::grid;
}

void setWindowTheme(QStringView value)
{
    if (value == QLatin1String("light"))
        theme::instance().apply(windowTheme::light);
    else if (value == QLatin1String("dark"))
        theme::instance().apply(windowTheme::dark);
    else if (value == QLatin1String("auto"))
        theme::instance().apply(windowTheme::automatic);
}

void setWindowText(QStringView value)
{
    fieldReader(value, u'|') >> appearance.m_panelTextColor >> appearance.m_buttonTextColor;
}

void setWindowWidth(QStringView value)
{
    fieldReader(value, u'|') >> appearance.m_leastWidth;
}

void setEstimate(QStringView value)
{
    if (value == QLatin1String("adaptive"))
        m_estimateMode = estimateMode::adaptive;
    else if (value == QLatin1String("exact"))
        m_estimateMode = estimateMode::exact;
}

struct configurationKey {
    QLatin1String name;
    void (*apply)(QStringView value);
};

const configurationKey keys[] = {
    {QLatin1String("estimate="), setEstimate},
    {QLatin1String("windowFonts="), setWindowFonts},
    {QLatin1String("busyIndicator="), setBusyIndicator},
    {QLatin1String("paintOffset="), setPaintOffset},
    {QLatin1String("screenGeometry="), setScreenGeometry},
    {QLatin1String("windowTitle="), setWindowTitle},
    {QLatin1String("windowPixmap="), setWindowPixmap},
    {QLatin1String("windowIcon="), setWindowIcon},
    {QLatin1String("windowStyle="), setWindowStyle},
    {QLatin1String("windowControls="), setWindowControls},
    {QLatin1String("windowModal="), setWindowModal},
    {QLatin1String("windowLayout="), setWindowLayout},
    {QLatin1String("windowTheme="), setWindowTheme},
    {QLatin1String("windowText="), setWindowText},
    {QLatin1String("windowWidth="), setWindowWidth},
};

} // namespace

void handlers::doConfiguration(const QString &description)
{
    for (const QStringView entry : QStringView(description).tokenize(u';')) {
        if (entry.size() > longestEntry)
            continue;
        for (const configurationKey &key : keys) {
            if (entry.startsWith(key.name))
                key.apply(entry.sliced(key.name.size()));
        }
    }
}
