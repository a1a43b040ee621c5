#include "server/receiver.h"

#include "app/dump.h"
#include "dialog/CProgressDialog.h"
#include "server/limits.h"
#include "widgets/busyWidget.h"

#include <QStringTokenizer>
#include <QStringView>

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

/// "windowPixmap=" and "windowStyle=" make the background less transparent.
constexpr int styledAlpha = 242;

void setWindowFonts(QStringView value)
{
    fieldReader(value, u'|') >> receiver::m_buttonFont >> receiver::m_barNumFont >>
        receiver::m_barLabelFont >> receiver::m_labelFont;
}

void setBusyIndicator(QStringView value)
{
    fieldReader fields(value, u'|');
    QString pixmap;
    fields >> receiver::m_busyXpos >> receiver::m_busyYpos >> receiver::m_busyWidth >>
        receiver::m_busyHeight >> pixmap;
    if (!fields)
        return;
    if (pixmap != QLatin1String("empty"))
        receiver::m_busyPixmap = pixmap;

    if (!receiver::m_splash)
        return;
    dump("---- setting busy pixmap ", 0);
    receiver::m_splash->setBusyPixmap(receiver::m_busyPixmap);
    if (receiver::m_splash->isVisible())
        receiver::m_splash->movePosition();
}

void setPaintOffset(QStringView value)
{
    fieldReader fields(value, u'|');
    fields >> receiver::m_paintOffsetX >> receiver::m_paintOffsetY;
    if (!fields)
        return;
    if (receiver::m_splash && receiver::m_splash->isVisible())
        receiver::m_splash->movePosition();
    if (receiver::m_progress && receiver::m_progress->isVisible())
        receiver::m_progress->movePosition();
}

void setScreenGeometry(QStringView value)
{
    fieldReader(value, u',') >> receiver::m_desktopWidth >> receiver::m_desktopHeight;
}

void setWindowTitle(QStringView value)
{
    receiver::m_windowTitle = value.left(longestCaption).toString();
}

void setWindowPixmap(QStringView value)
{
    receiver::m_windowPixmap = value.toString();
    receiver::m_dialogBackgroundAlphaval = styledAlpha;
}

void setWindowIcon(QStringView value)
{
    receiver::m_windowIcon = value.toString();
}

void setWindowStyle(QStringView value)
{
    fieldReader fields(value, u'|');
    fields >> receiver::m_barColor >> receiver::m_invertedNumberColor >> receiver::m_busyBarColor >>
        receiver::m_busyInvertedNumberColor >> receiver::m_dialogBackgroundColor >>
        receiver::m_dialogFrameColor;
    if (!fields)
        return;
    receiver::m_busyBarBackgroundColor = receiver::m_dialogBackgroundColor;
    receiver::m_barBackgroundColor = receiver::m_dialogBackgroundColor;
    receiver::m_dialogBackgroundAlphaval = styledAlpha;
}

void setWindowControls(QStringView value)
{
    fieldReader(value, u'|') >> receiver::m_shadowLightColor >> receiver::m_shadowDarkColor >>
        receiver::m_buttonBaseColor >> receiver::m_focusFrameColor;
}

void setWindowModal(QStringView value)
{
    m_modal_dialog = value.toString().toLower() == QLatin1String("on");
    m_dialog_flags = m_modal_dialog ? m_modal_flags : m_nonmodal_flags;
}

struct configurationKey {
    QLatin1String name;
    void (*apply)(QStringView value);
};

const configurationKey keys[] = {
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
};

} // namespace

void receiver::doConfiguration(const QString &description)
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
