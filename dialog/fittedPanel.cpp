#include "dialog/fittedPanel.h"

#include "widgets/appearance.h"
#include "widgets/imageFile.h"
#include "widgets/theme.h"

#include <QBitmap>
#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QWidget>

namespace
{

constexpr double cornerRadius = 0.6; // em

QColor textOn(const QColor &background, const QColor &setting)
{
    return setting.isValid() ? setting : readableOn(background);
}

/// Not larger than the screen.
QPixmap boundedTo(const QPixmap &image, const QSize &screen)
{
    const QSize size = image.size().boundedTo(screen);
    return size == image.size() ? image : image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

fittedPanel::fittedPanel(QWidget &window, bool isFrameless) : m_window(window), m_isFrameless(isFrameless)
{
    static imageCache cache;
    m_image = cache.image(appearance.m_windowPixmap, m_window.screen()->virtualSize(), boundedTo);
    takeColors();
}

void fittedPanel::takeColors()
{
    constexpr double trackShare = 0.14;
    const QColor panel = theme::colorOrLight(&appearanceSettings::m_dialogBackgroundColor);
    const QColor text = textOn(panel, appearance.m_panelTextColor);
    const QColor button = theme::colorOrLight(&appearanceSettings::m_buttonBaseColor);
    QPalette palette;
    palette.setColor(QPalette::Window, panel);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, mixed(panel, text, trackShare));
    palette.setColor(QPalette::Mid, theme::colorOrLight(&appearanceSettings::m_dialogFrameColor));
    palette.setColor(QPalette::Highlight, theme::colorOrLight(&appearanceSettings::m_barColor));
    palette.setColor(QPalette::Button, button);
    palette.setColor(QPalette::ButtonText, textOn(button, appearance.m_buttonTextColor));
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
        cutCorners();
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
    const int radius = qRound(cornerRadius * m_em);
    const QColor panel = m_window.palette().color(QPalette::Window);
    QPainter painter(&m_window);
    const QRect inside = m_window.rect().adjusted(radius, radius, -radius, -radius);
    if (m_scaledImage.isNull() && inside.contains(dirty)) {
        painter.fillRect(dirty, panel);
        return;
    }
    const double line = std::max(1.0, m_em / 12);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(m_window.palette().color(QPalette::Mid), line));
    painter.setBrush(m_scaledImage.isNull() ? QBrush(panel) : QBrush(m_scaledImage));
    painter.drawRoundedRect(QRectF(m_window.rect()).adjusted(line / 2, line / 2, -line / 2, -line / 2),
                            radius, radius);
}

/// Without a compositing manager, what is not painted is black. The mask takes away what the rounded outline
/// covers least, and leaves the rest of its edge for a compositing manager to blend.
void fittedPanel::cutCorners()
{
    const double radius = cornerRadius * m_em - 0.5;
    QImage shape(m_window.size(), QImage::Format_ARGB32_Premultiplied);
    shape.fill(Qt::transparent);
    QPainter painter(&shape);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::black);
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(m_window.rect(), radius, radius);
    painter.end();
    m_window.setMask(QBitmap::fromImage(shape.createAlphaMask(Qt::ThresholdDither | Qt::AvoidDither)));
}
