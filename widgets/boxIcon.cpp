#include "widgets/boxIcon.h"

#include <QIcon>
#include <QMessageBox>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <iterator>

namespace
{

// All drawn in a square of 24 units.
constexpr double units = 24;

struct look {
    const char *themeName;
    int which; ///< of QMessageBox::Icon
    QRgb bodyColor;
};

constexpr look looks[] = {
    {"dialog-information", QMessageBox::Information, 0x2f74d0},
    {"dialog-warning", QMessageBox::Warning, 0xe5a50a},
    {"dialog-error", QMessageBox::Critical, 0xd0332e},
    {"dialog-question", QMessageBox::Question, 0x2f74d0},
};

void drawBody(QPainter &painter, const look &wanted)
{
    const QColor color(wanted.bodyColor);
    painter.setBrush(color);
    if (wanted.which == QMessageBox::Warning) {
        const QPointF corners[] = {{12, 3.5}, {22, 20.5}, {2, 20.5}};
        painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPolygon(corners, 3);
    } else {
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(QPointF(12, 12), 11, 11);
    }
}

void drawSign(QPainter &painter, int which)
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

} // namespace

QPixmap boxIcon(int which, int side)
{
    const auto *const wanted = std::ranges::find(looks, which, &look::which);
    if (wanted == std::end(looks))
        return {};
    if (const QIcon icon = QIcon::fromTheme(QLatin1String(wanted->themeName)); !icon.isNull())
        return icon.pixmap(side, side);
    QPixmap picture(side, side);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / units, side / units);
    drawBody(painter, *wanted);
    drawSign(painter, which);
    return picture;
}
