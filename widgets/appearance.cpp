#include "widgets/appearance.h"

QString appearance::m_busyPixmap = QStringLiteral("Busy.png");
QString appearance::m_windowTitle = QStringLiteral("unknown");
QString appearance::m_windowPixmap = QStringLiteral("unknown");
QString appearance::m_windowIcon = QStringLiteral("unknown");

QFont appearance::m_labelFont(QStringLiteral("Arial"), 8, QFont::Normal);
QFont appearance::m_barNumFont(QStringLiteral("Arial"), 10, QFont::Normal);
QFont appearance::m_barLabelFont(QStringLiteral("Arial"), 10, QFont::Normal);
QFont appearance::m_buttonFont(QStringLiteral("Arial"), 8, QFont::Normal);

QColor appearance::m_barColor;
QColor appearance::m_invertedNumberColor;
QColor appearance::m_busyBarColor;
QColor appearance::m_busyInvertedNumberColor;
QColor appearance::m_dialogBackgroundColor;
QColor appearance::m_dialogFrameColor;
QColor appearance::m_barBackgroundColor;
QColor appearance::m_busyBarBackgroundColor;
QColor appearance::m_shadowLightColor;
QColor appearance::m_shadowDarkColor;
QColor appearance::m_buttonBaseColor;
QColor appearance::m_focusFrameColor;

QPalette BAR_PALETTE;
