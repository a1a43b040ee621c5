#include "widgets/fittedButton.h"

#include "widgets/theme.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>

namespace
{

// In em.
constexpr double leastWidth = 5;
constexpr double sidePadding = 1;
constexpr double heightPadding = 0.45;
constexpr double cornerRadius = 0.35;
constexpr double focusWidth = 0.16;

constexpr int textFlags = Qt::TextShowMnemonic | Qt::TextSingleLine;

} // namespace

fittedButton::fittedButton(QWidget *parent) : progressButton(parent)
{
    setAttribute(Qt::WA_Hover);
}

QSize fittedButton::sizeHint() const
{
    const emLength em(*this);
    return {std::max(em(leastWidth), m_measured.width(text(), *this, textFlags) + 2 * em(sidePadding)),
            fontMetrics().height() + 2 * em(heightPadding)};
}

bool fittedButton::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return progressButton::event(event);
    showToolTip(*event, *this, text(),
                m_measured.width(text(), *this, textFlags) > width() - emLength(*this)(sidePadding));
    return true;
}

/// Nearer to the text's colour while the pointer is on it, and more so while it is held down.
QColor fittedButton::bodyColor() const
{
    const double share = isDown() ? 0.2 : underMouse() ? 0.08 : 0;
    return mixed(window()->palette().color(QPalette::Button), window()->palette().color(QPalette::ButtonText),
                 share);
}

void fittedButton::paintEvent(QPaintEvent *)
{
    const emLength em(*this);
    const bool focused = hasFocus();
    const double line = std::max(1.0, focused ? em.exact(focusWidth) : em.exact(1.0 / 12));
    const double inset = line / 2;

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(window()->palette().color(focused ? QPalette::Link : QPalette::Mid), line));
    painter.setBrush(bodyColor());
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), em.exact(cornerRadius),
                            em.exact(cornerRadius));

    const QRect inner = rect().adjusted(em(sidePadding / 2), 0, -em(sidePadding / 2), 0);
    const QString shown =
        fontMetrics().elidedText(text(), Qt::ElideRight, inner.width(), Qt::TextShowMnemonic);
    painter.end();
    paintText(*this, QPalette::ButtonText, text(), [&](QPainter &texts) {
        texts.setLayoutDirection(directionOf(text()));
        texts.drawText(inner, Qt::AlignCenter | textFlags, shown);
    });
}
