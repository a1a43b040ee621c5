#include "dialog/CProgressDialog.h"

#include "widgets/appearance.h"
#include "widgets/progressStyle.h"

#include <QPainter>

void CProgressDialog::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), m_backgroundColor);
}

void CProgressDialog::setBackgroundPixmap(const QPixmap &newpixmap)
{
    QPalette palette;
    if (newpixmap.isNull()) {
        palette.setBrush(backgroundRole(), QBrush(Qt::lightGray));
    } else {
        scalePixmap(newpixmap);
        palette.setBrush(backgroundRole(), QBrush(*m_bgpixmap));
    }
    setPalette(palette);
}

void CProgressDialog::scalePixmap(const QPixmap &newpixmap)
{
    m_bgpixmap = std::make_unique<QPixmap>(newpixmap.scaled(m_Width, m_Height));
}

void CProgressDialog::reloadPixmap()
{
    if (m_bgpixmap && !m_bgpixmap->isNull())
        setBackgroundPixmap(QPixmap(*m_bgpixmap));
}
