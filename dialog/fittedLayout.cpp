#include "dialog/fittedLayout.h"

#include "stats/estimate.h"
#include "platform/wayland.h"
#include "widgets/appearance.h"
#include "widgets/busyWidget.h"
#include "widgets/fittedBar.h"
#include "widgets/fittedButton.h"
#include "widgets/imageFile.h"
#include "widgets/progressLabel.h"
#include "widgets/texts.h"

#include <QIcon>
#include <QScreen>

namespace
{

constexpr Qt::WindowFlags managedFlags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                         Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                                         Qt::WindowCloseButtonHint;

/// Not larger than the screen.
QPixmap boundedTo(const QPixmap &image, const QSize &screen)
{
    const QSize size = image.size().boundedTo(screen);
    return size == image.size() ? image : image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

fittedLayout::fittedLayout(QWidget &window, dialogSlots &content) : dialogLayout(window, content)
{
    if (appearance.m_modal_dialog && !onWayland())
        m_window.setAttribute(Qt::WA_TranslucentBackground);
    else
        m_window.setWindowFlags(managedFlags);
    usePalette();
}

QIcon fittedLayout::icon() const
{
    const QIcon image = dialogLayout::icon();
    return image.isNull() ? QIcon::fromTheme(QStringLiteral("progressd")) : image;
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

int fittedLayout::shownBars() const
{
    int count = 0;
    for (int i = 0; i < m_content.maxBars; ++i)
        count += m_content.showsBar(i);
    return count;
}

bool fittedLayout::showsTotalRow() const
{
    return m_estimateIsShown && !m_left.isEmpty() && shownBars() != 1;
}

void fittedLayout::showChildren()
{
    m_content.m_totalLabel->hide();
    auto &total = static_cast<fittedBar &>(*m_content.m_totalBar);
    total.setVisible(showsTotalRow());
    total.showCaption(QStringLiteral("Total progress"));
    total.expectRemaining(true);
    const bool isSingle = shownBars() == 1;
    for (int i = 0; i < m_content.maxBars; ++i) {
        label(i).setVisible(m_content.labelVisible[i]);
        bar(i).setVisible(m_content.showsBar(i));
        if (m_content.showsBar(i))
            bar(i).showCaption(label(i).text());
        bar(i).expectRemaining(isSingle);
    }
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
    static_cast<fittedBar &>(*m_content.m_totalBar).showRemaining(left);
}

void fittedLayout::captionTotalBar()
{
    m_left.clear();
    showEstimate();
}

void fittedLayout::showRemaining(const remainingTime &remaining)
{
    m_left = remaining.isOverdue ? QStringLiteral("longer than usual") : timeLeft(remaining.calmSeconds);
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

void fittedLayout::loadBackground()
{
    static imageCache cache;
    m_image = cache.image(appearance.m_windowPixmap, m_window.screen()->virtualSize(), boundedTo);
}

void fittedLayout::dropImages()
{
    m_image = m_scaledImage = QPixmap();
}

void fittedLayout::copyFrom(const dialogLayout &other)
{
    const auto *src = dynamic_cast<const fittedLayout *>(&other);
    if (!src)
        return;
    m_image = src->m_image;
    m_left = src->m_left;
    m_estimateIsShown = src->m_estimateIsShown;
    std::copy(std::begin(src->m_grownLines), std::end(src->m_grownLines), m_grownLines);
    if (src->m_window.isVisible()) {
        m_grownWidth = src->m_grownWidth;
        m_window.move(src->m_window.pos());
        m_anchor = src->m_anchor;
        m_wasMoved = src->m_wasMoved;
    }
}
