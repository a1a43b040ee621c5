#include "server/handlers.h"

#include "dialog/CProgressDialog.h"
#include "log/dump.h"
#include "stats/statistics.h"
#include "widgets/appearance.h"
#include "widgets/busyWidget.h"
#include "widgets/theme.h"
#include "wire/words.h"

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

    template <typename Value> fieldReader &operator>>(Value &value)
    {
        m_complete = m_next < m_fields.size();
        if (m_complete)
            read(m_fields[m_next++], value);
        return *this;
    }
    /// Whether all fields asked for were there.
    explicit operator bool() const { return m_complete; }

private:
    static void read(QStringView field, int &number)
    {
        number = std::clamp(field.toInt(), -farthestCoordinate, farthestCoordinate);
    }
    static void read(QStringView field, QFont &font) { font.fromString(field.toString()); }
    static void read(QStringView field, QColor &color) { color = QColor::fromString(field); }
    static void read(QStringView field, QString &text) { text = field.toString(); }

    QList<QStringView> m_fields;
    qsizetype m_next = 0;
    bool m_complete = true;
};

/// "windowPixmap=" and "windowStyle=" make the background less transparent.
constexpr int styledAlpha = 242;

void setBusyIndicator(fieldReader &fields, const activeDialog &windows)
{
    QString pixmap;
    fields >> appearance.m_busyXpos >> appearance.m_busyYpos >> appearance.m_busyWidth >>
        appearance.m_busyHeight >> pixmap;
    if (!fields)
        return;
    if (pixmap != QLatin1String("empty"))
        appearance.m_busyPixmap = pixmap;

    busyWidget *busyWindow = windows.busyWindow();
    if (!busyWindow)
        return;
    dump("---- setting busy pixmap ", 0);
    busyWindow->setBusyPixmap(appearance.m_busyPixmap);
    if (busyWindow->isVisible())
        busyWindow->movePosition();
}

void setPaintOffset(fieldReader &fields, const activeDialog &windows)
{
    fields >> appearance.m_paintOffsetX >> appearance.m_paintOffsetY;
    if (!fields)
        return;
    if (busyWidget *busyWindow = windows.busyWindow(); busyWindow && busyWindow->isVisible())
        busyWindow->movePosition();
    if (windows.isShown())
        windows.dialog()->movePosition();
}

void setWindowStyle(fieldReader &fields)
{
    fields >> appearance.m_barColor >> appearance.m_invertedNumberColor >> appearance.m_busyBarColor >>
        appearance.m_busyInvertedNumberColor >> appearance.m_dialogBackgroundColor >>
        appearance.m_dialogFrameColor;
    if (!fields)
        return;
    appearance.m_busyBarBackgroundColor = appearance.m_dialogBackgroundColor;
    appearance.m_barBackgroundColor = appearance.m_dialogBackgroundColor;
    appearance.m_dialogBackgroundAlphaval = styledAlpha;
}

/// Changes `chosen` to the value that the word stands for, the word with number 0 for `first`. An unknown
/// word changes nothing.
template <typename Choice>
bool choose(Choice &chosen, wire::setting which, QStringView word, Choice first = Choice(0))
{
    const auto index = wire::wordIndex(which, word.toLatin1().toStdString());
    if (index)
        chosen = static_cast<Choice>(static_cast<size_t>(first) + *index);
    return index.has_value();
}

void apply(wire::setting which, QStringView value, activeDialog &windows)
{
    using wire::setting;
    fieldReader fields(value, u'|');
    switch (which) {
    case setting::windowFonts:
        fields >> appearance.m_buttonFont >> appearance.m_barNumFont >> appearance.m_barLabelFont >>
            appearance.m_labelFont;
        break;
    case setting::busyIndicator:
        setBusyIndicator(fields, windows);
        break;
    case setting::paintOffset:
        setPaintOffset(fields, windows);
        break;
    case setting::screenGeometry:
        fieldReader(value, u',') >> appearance.m_desktopWidth >> appearance.m_desktopHeight;
        appearance.m_desktopIsKnown = true;
        break;
    case setting::windowTitle:
        appearance.m_windowTitle = value.left(longestCaption).toString();
        break;
    case setting::windowPixmap:
        appearance.m_windowPixmap = value.toString();
        appearance.m_dialogBackgroundAlphaval = styledAlpha;
        break;
    case setting::windowIcon:
        appearance.m_windowIcon = value.toString();
        break;
    case setting::windowStyle:
        setWindowStyle(fields);
        break;
    case setting::windowControls:
        fields >> appearance.m_shadowLightColor >> appearance.m_shadowDarkColor >>
            appearance.m_buttonBaseColor >> appearance.m_focusFrameColor;
        break;
    case setting::windowModal:
        appearance.m_modal_dialog = value.toString().toLower() == QLatin1String("on");
        break;
    case setting::windowLayout:
        choose(appearance.m_windowLayout, which, value);
        break;
    case setting::windowTheme:
        if (windowTheme chosen{}; choose(chosen, which, value, windowTheme::light))
            theme::instance().apply(chosen);
        break;
    case setting::windowText:
        fields >> appearance.m_panelTextColor >> appearance.m_buttonTextColor;
        break;
    case setting::windowWidth:
        fields >> appearance.m_leastWidth;
        break;
    case setting::windowImage:
        appearance.m_windowImage = value.toString();
        break;
    case setting::windowMarkup:
        choose(appearance.m_windowMarkup, which, value);
        break;
    case setting::busyPlace:
        choose(appearance.m_busyPlace, which, value);
        break;
    case setting::estimate:
        choose(statistics.m_estimateMode, which, value);
        break;
    case setting::notifyEnd:
        if (int seconds = 0; fields >> seconds)
            windows.noticeOfEnd().setLeastSeconds(seconds);
        break;
    }
}

} // namespace

void handlers::doConfiguration(const QString &description)
{
    for (const QStringView entry : QStringView(description).tokenize(u';')) {
        if (entry.size() > longestEntry)
            continue;
        const qsizetype equals = entry.indexOf(u'=');
        const QByteArray key = entry.first(std::max<qsizetype>(equals, 0)).toLatin1();
        if (const auto which = wire::settingNamed({key.constData(), static_cast<size_t>(key.size())}))
            apply(*which, entry.sliced(equals + 1), m_active);
    }
}
