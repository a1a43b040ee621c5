#include "dialog/fittedPanel.h"

#include "widgets/appearance.h"
#include "widgets/imageFile.h"
#include "widgets/roundedPanel.h"
#include "widgets/theme.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QWidget>

namespace
{

/// Not larger than the screen.
QPixmap boundedTo(const QPixmap &image, const QSize &screen)
{
    const QSize size = image.size().boundedTo(screen);
    return size == image.size() ? image : image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

fittedPanel::fittedPanel(QWidget &window, bool isFrameless) : m_window(window), m_isFrameless(isFrameless)
{
    m_image = dialogBackground(m_window.screen()->virtualSize(), boundedTo);
    takeColors();
}

void fittedPanel::takeColors()
{
    constexpr double trackShare = 0.14;
    const QColor panel = theme::colorOrLight(&appearanceSettings::m_dialogBackgroundColor);
    const QColor text = readableText(appearance.m_panelTextColor, panel);
    const QColor button = theme::colorOrLight(&appearanceSettings::m_buttonBaseColor);
    QPalette palette;
    palette.setColor(QPalette::Window, panel);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, mixed(panel, text, trackShare));
    palette.setColor(QPalette::Mid, theme::colorOrLight(&appearanceSettings::m_dialogFrameColor));
    palette.setColor(QPalette::Highlight, theme::colorOrLight(&appearanceSettings::m_barColor));
    palette.setColor(QPalette::Button, button);
    palette.setColor(QPalette::ButtonText, readableText(appearance.m_buttonTextColor, button));
    palette.setColor(QPalette::Link, theme::colorOrLight(&appearanceSettings::m_focusFrameColor));
    m_window.setPalette(palette);
}

void fittedPanel::dropImages()
{
    m_image = m_scaledImage = QPixmap();
}

/// The image is stretched when it is painted, since not every size is.
void fittedPanel::takeSize(double em)
{
    if (em == m_em && m_window.size() == m_size)
        return;
    m_em = em;
    m_size = m_window.size();
    m_scaledImage = QPixmap();
    if (m_isFrameless)
        cutCorners(m_window, m_em);
}

void fittedPanel::paint(const QPaintEvent &event)
{
    if (!m_image.isNull() && m_scaledImage.isNull())
        m_scaledImage = m_image.scaled(m_window.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (m_isFrameless) {
        paintFrameless(event.rect());
        return;
    }
    QPainter painter(&m_window);
    if (m_scaledImage.isNull())
        painter.fillRect(event.rect(), m_window.palette().color(QPalette::Window));
    else
        painter.drawPixmap(0, 0, m_scaledImage);
}

void fittedPanel::paintFrameless(const QRect &dirty) const
{
    const int radius = roundedRadius(m_em);
    const QColor panel = m_window.palette().color(QPalette::Window);
    QPainter painter(&m_window);
    if (m_scaledImage.isNull() && m_window.rect().adjusted(radius, radius, -radius, -radius).contains(dirty))
        return painter.fillRect(dirty, panel);
    paintRounded(painter, m_window, m_em, m_window.palette().color(QPalette::Mid),
                 m_scaledImage.isNull() ? QBrush(panel) : QBrush(m_scaledImage));
}
