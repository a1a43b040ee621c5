#include "widgets/busyWidget.h"

#include "log/dump.h"
#include "widgets/appearance.h"
#include "widgets/imageFile.h"
#include "widgets/progressProcess.h"
#include "widgets/pulseClock.h"
#include "widgets/roundedPanel.h"
#include "widgets/texts.h"
#include "widgets/theme.h"

#include <QDateTime>
#include <QFile>
#include <QPainter>
#include <QScreen>

namespace
{

/// In pixels, where neither the settings nor an image give one.
constexpr QSize defaultSize(32, 32);
// Of the window in the middle of the screen, in em.
constexpr double centralSize = 6;
constexpr double wheelRadius = 1.6;
constexpr double dotRadius = 0.32;
constexpr int dots = 8;

} // namespace

busyWidget::busyWidget() : QWidget(nullptr, m_modal_flags), m_progr(new progressProcess(this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoSystemBackground);
    setAutoFillBackground(false);
    setAttribute(Qt::WA_ShowWithoutActivating);

    m_progr->setStyle(&m_style);
    m_progr->setOrientation(Qt::Vertical);
    m_progr->setTextDirection(QProgressBar::BottomToTop);
    m_progr->setFont(appearance.m_barLabelFont);

    takeColors();
    connect(&theme::instance(), &theme::changed, this, &busyWidget::takeColors);
    setBusyPixmap(appearance.m_busyPixmap);
}

void busyWidget::takeColors()
{
    m_progr->setPalette(barPalette(m_progr->palette(), appearance.m_busyInvertedNumberColor,
                                   appearance.m_busyBarColor, appearance.m_busyBarBackgroundColor));
}

void busyWidget::setBusyPixmap(const QString &fileName)
{
    const QSize natural = loadPixmap(fileName);
    const QSize most = largestSize(*this);
    const auto chosen = [](int setting, int otherwise) { return setting >= 1 ? setting : otherwise; };
    setFixedSize(qMin(chosen(appearance.m_busyWidth, natural.width()), most.width()),
                 qMin(chosen(appearance.m_busyHeight, natural.height()), most.height()));
    m_imagePlace = m_icon.isNull() ? rect() : QRect(QPoint(), m_icon.size().boundedTo(size()));
    m_imagePlace.translate((width() - m_imagePlace.width()) / 2, (height() - m_imagePlace.height()) / 2);
    m_progr->setGeometry(m_imagePlace.adjusted(4, 4, -4, -26));
    update();
}

/// Gives the size that the file's image asks for.
QSize busyWidget::loadPixmap(const QString &fileName)
{
    m_icon = QPixmap();
    if (!QFile::exists(fileName)) {
        dump("++++ busy pixmap not found:", 0);
        dump(fileName.toLocal8Bit().constData(), 0);
        return defaultSize;
    }
    m_icon.load(imageFile(fileName));
    const QSize size = m_icon.isNull() ? defaultSize : m_icon.size();
    if (const QSize most = largestSize(*this); size != size.boundedTo(most))
        m_icon = m_icon.copy(QRect(QPoint(), most));
    return size;
}

void busyWidget::setBusyPercent(int percent)
{
    const bool isShown = percent >= 0 && !isCentred();
    if (m_progr->isHidden() == isShown)
        m_progr->setVisible(isShown);
    if (percent >= 0)
        m_progr->setValue(percent);
    if (isVisible())
        update();
}

void busyWidget::movePosition()
{
    if (isCentred()) {
        takeCentralSize();
        QRect place(QPoint(), size());
        place.moveCenter(screen()->availableGeometry().center());
        return move(place.topLeft());
    }
    move(appearance.m_busyXpos + appearance.m_paintOffsetX,
         appearance.m_busyYpos + appearance.m_paintOffsetY);
}

bool busyWidget::hasPosition()
{
    return appearance.m_busyXpos >= 0 && appearance.m_busyYpos >= 0;
}

bool busyWidget::isCentred()
{
    return appearance.m_busyPlace == busyPlace::centre && !hasPosition();
}

/// A size or an image that the client has given stays.
void busyWidget::takeCentralSize()
{
    if (!m_icon.isNull() || appearance.m_busyWidth > 0 || appearance.m_busyHeight > 0)
        return;
    const int side = qRound(emLength(appearance.m_labelFont, *this)(centralSize) * appearance.m_scale);
    setFixedSize(side, side);
    cutCorners(*this, side / centralSize);
}

void busyWidget::showEvent(QShowEvent *)
{
    if (isCentred()) {
        m_progr->hide();
        connect(&pulseClock::instance(), &pulseClock::beat, this, qOverload<>(&QWidget::update),
                Qt::UniqueConnection);
    }
}

void busyWidget::hideEvent(QHideEvent *)
{
    disconnect(&pulseClock::instance(), nullptr, this, nullptr);
}

/// Dots around the middle, the more like the bar's colour the later the light passes them.
void busyWidget::paintWheel(QPainter &painter) const
{
    const double em = width() / centralSize;
    const QColor panel = theme::colorOrLight(&appearanceSettings::m_dialogBackgroundColor);
    const QColor bar = theme::colorOrLight(&appearanceSettings::m_busyBarColor);
    paintRounded(painter, *this, em, theme::colorOrLight(&appearanceSettings::m_dialogFrameColor), panel);
    painter.setPen(Qt::NoPen);
    painter.translate(width() / 2.0, height() / 2.0);
    const int first = static_cast<int>(QDateTime::currentMSecsSinceEpoch() / 125 % dots);
    for (int i = 0; i < dots; ++i) {
        painter.save();
        painter.rotate((first + i) * 360.0 / dots);
        painter.setBrush(mixed(panel, bar, 0.15 + 0.85 * i / (dots - 1)));
        painter.drawEllipse(QPointF(0, -wheelRadius * em), dotRadius * em, dotRadius * em);
        painter.restore();
    }
}

void busyWidget::mousePressEvent(QMouseEvent *)
{
    emit pressed();
}

void busyWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (m_icon.isNull() && isCentred())
        paintWheel(painter);
    else if (m_icon.isNull())
        painter.fillRect(rect(), QColor(255, 255, 255, 125));
    else
        painter.drawPixmap(m_imagePlace.topLeft(), m_icon);
}
