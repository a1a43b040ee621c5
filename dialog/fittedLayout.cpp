#include "dialog/fittedLayout.h"

#include "language/language.h"
#include "platform/wayland.h"
#include "stats/estimate.h"
#include "widgets/appearance.h"
#include "widgets/busyWidget.h"
#include "widgets/fittedBar.h"
#include "widgets/fittedButton.h"
#include "widgets/imageFile.h"
#include "widgets/progressLabel.h"
#include "widgets/texts.h"

#include <QIcon>
#include <QLabel>
#include <QScreen>

namespace
{

constexpr Qt::WindowFlags managedFlags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                         Qt::WindowSystemMenuHint | Qt::WindowMinMaxButtonsHint |
                                         Qt::WindowCloseButtonHint;

// In em.
constexpr double iconSize = 3;
constexpr double largestPicture = 10;

} // namespace

fittedLayout::fittedLayout(QWidget &window, dialogSlots &content)
    : dialogLayout(window, content), m_panel(window, appearance.m_modal_dialog)
{
    if (appearance.m_modal_dialog && !onWayland())
        m_window.setAttribute(Qt::WA_TranslucentBackground);
    else
        m_window.setWindowFlags(managedFlags);
}

bool fittedLayout::isManaged() const
{
    return !m_window.windowFlags().testFlag(Qt::X11BypassWindowManagerHint);
}

progressLabel *fittedLayout::newLabel()
{
    return new fittedLabel(&m_window);
}

progressProcess *fittedLayout::newBar()
{
    return new fittedBar(&m_window);
}

progressButton *fittedLayout::newButton()
{
    return new fittedButton(&m_window);
}

fittedBar &fittedLayout::bar(int id) const
{
    return static_cast<fittedBar &>(*m_content.bars[id]);
}

fittedLabel &fittedLayout::label(int id) const
{
    return static_cast<fittedLabel &>(*m_content.labels[id]);
}

fittedBar &fittedLayout::totalBar() const
{
    return static_cast<fittedBar &>(*m_content.m_totalBar);
}

QIcon fittedLayout::icon() const
{
    return fittedIcon();
}

int fittedLayout::shownBars() const
{
    int count = 0;
    for (int i = 0; i < m_content.maxBars; ++i)
        count += m_content.showsBar(i);
    return count;
}

/// For several bars; without any for the time that is left.
bool fittedLayout::showsTotalRow() const
{
    const int bars = shownBars();
    return bars > 1 || (bars == 0 && m_estimateIsShown && !m_left.isEmpty());
}

void fittedLayout::showChildren()
{
    m_content.m_totalLabel->hide();
    totalBar().setVisible(showsTotalRow());
    totalBar().showCaption(translated("Total progress"));
    totalBar().expectRemaining(true);
    const bool isSingle = shownBars() == 1;
    for (int i = 0; i < m_content.maxBars; ++i) {
        label(i).setVisible(m_content.labelVisible[i]);
        bar(i).setVisible(m_content.showsBar(i));
        if (m_content.showsBar(i))
            bar(i).showCaption(label(i).text());
        bar(i).expectRemaining(isSingle);
    }
    m_content.m_hideButton->setText(translated("Hide"));
    m_content.m_hideButton->setVisible(busyWidget::hasPosition());
    for (int i = 0; i < m_content.maxButtons; ++i)
        m_content.buttons[i]->setVisible(m_content.buttonVisible[i]);
    tellRemaining();
}

void fittedLayout::takeText(int id)
{
    if (!m_content.showsBar(id))
        return;
    bar(id).showCaption(label(id).text());
    if (bar(id).sizeHint().width() > bar(id).width())
        placeAgain();
}

/// In the row of the only bar, or in the total row.
void fittedLayout::tellRemaining()
{
    const QString left = m_estimateIsShown ? m_left : QString();
    const bool isSingle = shownBars() == 1;
    for (int i = 0; i < m_content.maxBars; ++i)
        bar(i).showRemaining(isSingle && m_content.showsBar(i) ? left : QString());
    totalBar().showRemaining(left);
}

void fittedLayout::captionTotalBar()
{
    m_left.clear();
    showEstimate();
}

void fittedLayout::showRemaining(const remainingTime &remaining)
{
    m_left = remaining.isOverdue ? overdueText() : timeLeft(remaining.calmSeconds);
}

void fittedLayout::showTotalBar(bool shown)
{
    if (!shown && !m_estimateIsShown)
        return;
    m_estimateIsShown = shown;
    showEstimate();
}

/// Without a new arrangement, unless the total row comes or goes.
void fittedLayout::showEstimate()
{
    if (showsTotalRow() == m_content.m_totalBar->isHidden())
        placeAgain();
    else
        tellRemaining();
}

/// The picture is the image of a file, or an icon of the theme.
void fittedLayout::loadBackground()
{
    m_panel.loadBackground();
    const QIcon icon = iconNamed(appearance.m_windowImage);
    if (icon.isNull())
        return;
    const emLength em(appearance.m_labelFont, m_window);
    const QSize most = QSize(1, 1) * em(largestPicture);
    QPixmap picture(imageFile(appearance.m_windowImage));
    if (picture.isNull()) {
        const int side = qRound(em(iconSize) * appearance.m_scale);
        picture = icon.pixmap(side, side);
        picture.setDevicePixelRatio(appearance.m_scale);
    } else if (picture.width() > most.width() || picture.height() > most.height())
        picture = picture.scaled(most, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    m_picture = new QLabel(&m_window);
    m_picture->setPixmap(picture);
    m_picture->setScaledContents(true);
}

void fittedLayout::reloadPixmap()
{
    m_panel.rescale();
}

void fittedLayout::takeColors()
{
    m_panel.takeColors();
    shareBarPalette();
    for (int i = 0; i < m_content.maxBars; ++i)
        m_content.bars[i]->setPalette(BAR_PALETTE);
}

void fittedLayout::copyFrom(const dialogLayout &other)
{
    const auto *src = dynamic_cast<const fittedLayout *>(&other);
    if (!src)
        return;
    m_panel.takeBackground(src->m_panel);
    m_left = src->m_left;
    m_estimateIsShown = src->m_estimateIsShown;
    totalBar().setValue(src->totalBar().value());
    std::copy(std::begin(src->m_grownLines), std::end(src->m_grownLines), m_grownLines);
    if (src->m_window.isVisible()) {
        m_grown = src->m_grown;
        m_window.move(src->m_window.pos());
        m_window.setWindowState(src->m_window.windowState() & Qt::WindowMaximized);
        m_anchor = src->m_anchor;
        m_wasMoved = src->m_wasMoved;
    }
}
