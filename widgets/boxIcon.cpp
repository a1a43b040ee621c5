#include "widgets/boxIcon.h"

#include <QIcon>
#include <QPainter>
#include <QPainterPath>

namespace
{

// All drawn in a square of 24 units.
constexpr double units = 24;

QPolygonF triangle()
{
    return {{QPointF(12, 3.5), QPointF(22, 20.5), QPointF(2, 20.5)}};
}

void drawBody(QPainter &painter, QMessageBox::Icon which)
{
    const QColor color = which == QMessageBox::Warning    ? QColor(0xe5a50a)
                         : which == QMessageBox::Critical ? QColor(0xd0332e)
                                                          : QColor(0x2f74d0);
    painter.setBrush(color);
    if (which == QMessageBox::Warning) {
        painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPolygon(triangle());
    } else {
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(QPointF(12, 12), 11, 11);
    }
}

void drawSign(QPainter &painter, QMessageBox::Icon which)
{
    const QColor color = which == QMessageBox::Warning ? Qt::black : Qt::white;
    painter.setPen(QPen(color, 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    const auto dot = [&painter](double y) { painter.drawLine(QPointF(12, y), QPointF(12, y + 0.01)); };
    switch (which) {
    case QMessageBox::Information:
        dot(7.2);
        painter.drawLine(QPointF(12, 11.5), QPointF(12, 17));
        break;
    case QMessageBox::Warning:
        painter.drawLine(QPointF(12, 9), QPointF(12, 13.5));
        dot(17.4);
        break;
    case QMessageBox::Critical:
        painter.drawLine(QPointF(8, 8), QPointF(16, 16));
        painter.drawLine(QPointF(16, 8), QPointF(8, 16));
        break;
    default: {
        QPainterPath hook(QPointF(8.8, 9.2));
        hook.arcTo(QRectF(8.8, 6, 6.4, 6.4), 180, -240);
        hook.lineTo(12, 14);
        painter.drawPath(hook);
        dot(17.8);
    }
    }
}

const char *themeName(QMessageBox::Icon which)
{
    switch (which) {
    case QMessageBox::Information:
        return "dialog-information";
    case QMessageBox::Warning:
        return "dialog-warning";
    case QMessageBox::Critical:
        return "dialog-error";
    case QMessageBox::Question:
        return "dialog-question";
    default:
        return nullptr;
    }
}

} // namespace

QPixmap boxIcon(QMessageBox::Icon which, int side)
{
    const char *const name = themeName(which);
    if (!name)
        return {};
    if (const QIcon icon = QIcon::fromTheme(QLatin1String(name)); !icon.isNull())
        return icon.pixmap(side, side);
    QPixmap picture(side, side);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / units, side / units);
    drawBody(painter, which);
    drawSign(painter, which);
    return picture;
}
