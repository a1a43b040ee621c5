#include "dialog/gridLayout.h"

#include "platform/wayland.h"
#include "stats/estimate.h"
#include "widgets/appearance.h"
#include "widgets/busyWidget.h"
#include "widgets/progressButton.h"
#include "widgets/progressLabel.h"
#include "widgets/progressProcess.h"
#include "widgets/progressStyle.h"
#include "widgets/theme.h"

#include <QFontMetrics>
#include <QScreen>

#include <algorithm>

gridLayout::gridLayout(QWidget &window, dialogSlots &content)
    : dialogLayout(window, content), m_style(std::make_unique<progressStyle>()),
      m_desktopWidth(appearance.m_desktopWidth), m_desktopHeight(appearance.m_desktopHeight),
      m_frameColor(appearance.m_dialogFrameColor), m_backgroundColor(appearance.m_dialogBackgroundColor),
      m_alphaValue(appearance.m_dialogBackgroundAlphaval)
{
    m_window.setAttribute(Qt::WA_TranslucentBackground);
    m_window.setAttribute(Qt::WA_NoSystemBackground);
    m_window.setAutoFillBackground(false);
    chooseScreenProfile();
}

gridLayout::~gridLayout() = default;

void gridLayout::chooseScreenProfile()
{
    constexpr int lowScreenHeight = 279;
    if (m_desktopHeight > lowScreenHeight)
        return;
    m_margin = 1;
    m_ygap = 4;
    m_content.maxBars = 5;
    m_content.maxButtons = 2;
    m_buttonRows = 1;
}

progressLabel *gridLayout::newLabel()
{
    auto *label = new progressLabel(&m_window);
    colorLabel(*label);
    return label;
}

progressProcess *gridLayout::newBar()
{
    auto *bar = new progressProcess(&m_window);
    bar->setStyle(m_style.get());
    return bar;
}

progressButton *gridLayout::newButton()
{
    return new progressButton(&m_window);
}

/// Text lines have the toolkit's black unless the settings say more.
void gridLayout::colorLabel(progressLabel &label) const
{
    const QColor text = panelTextColor(m_backgroundColor);
    if (!text.isValid())
        return;
    QPalette palette = label.palette();
    palette.setBrush(QPalette::All, QPalette::WindowText, QBrush(text));
    label.setPalette(palette);
}

void gridLayout::takeColors()
{
    m_frameColor = appearance.m_dialogFrameColor;
    m_backgroundColor = appearance.m_dialogBackgroundColor;
    shareBarPalette();
    for (int i = 0; i < m_content.maxBars; ++i) {
        m_content.bars[i]->setPalette(BAR_PALETTE);
        colorLabel(*m_content.labels[i]);
    }
    progressButton::forgetColors();
}

void gridLayout::fixSize()
{
    // The settings' fonts are made before the toolkit knows the screen and measure for 100 dots an inch;
    // on a denser screen the text is taller than that, and the cells must grow with it.
    const int cellHeight = std::max(QFontMetrics(appearance.m_barNumFont).lineSpacing(),
                                    QFontMetrics(appearance.m_barNumFont, &m_window).lineSpacing());
    m_Width = m_desktopHeight > 240 ? m_desktopWidth / 2 : m_desktopWidth * 3 / 4;
    m_Height = (cellHeight + m_ygap + 10) * (m_buttonRows + m_content.maxBars);
    // Whatever screen is configured, no window needs to be larger than the real one.
    const QSize screen = m_window.screen()->virtualSize();
    m_Width = std::min(m_Width + 2 * (m_framewidth + m_margin), screen.width());
    m_Height = std::min(m_Height + 2 * (m_framewidth + m_margin), screen.height());
    m_window.resize(m_Width, m_Height);
    // A compositor would give it another one.
    if (onWayland())
        m_window.setFixedSize(m_window.size());
}

void gridLayout::movePosition()
{
    m_window.move((m_desktopWidth - m_Width) / 2 + appearance.m_paintOffsetX,
                  (m_desktopHeight - m_Height) / 2 + appearance.m_paintOffsetY);
}

/// A copy across the two screen profiles keeps its own grid: the counts must fit its own widgets.
void gridLayout::copyFrom(const dialogLayout &other)
{
    const auto *src = dynamic_cast<const gridLayout *>(&other);
    if (!src)
        return;
    if (src->m_bgpixmap)
        m_bgpixmap = std::make_unique<QPixmap>(*src->m_bgpixmap);
    m_frameColor = src->m_frameColor;
    m_backgroundColor = src->m_backgroundColor;
    m_alphaValue = src->m_alphaValue;
    if (m_buttonRows != src->m_buttonRows) {
        reloadPixmap();
        return;
    }
    m_desktopWidth = src->m_desktopWidth;
    m_desktopHeight = src->m_desktopHeight;
    m_framewidth = src->m_framewidth;
    m_margin = src->m_margin;
    m_xgap = src->m_xgap;
    m_ygap = src->m_ygap;
    m_Height = src->m_Height;
    m_Width = src->m_Width;
}

/// The figures that one layout pass works with, in pixels.
struct gridLayout::figures {
    explicit figures(const gridLayout &layout)
        : margin(layout.m_framewidth + layout.m_margin), right(layout.m_window.width()),
          centerw(right - 2 * margin),
          cellh((layout.m_window.height() - 2 * margin) / (layout.m_buttonRows + layout.m_content.maxBars)),
          buty(layout.m_window.height() - layout.m_buttonRows * cellh), xoffs(layout.m_xgap / 2),
          yoffs(layout.m_ygap / 2)
    {
    }

    int margin;  ///< from the window's edge to its content
    int right;   ///< width of the window
    int centerw; ///< width of the content
    int cellh;   ///< height of a cell
    int buty;    ///< top of the first button row
    int xoffs;
    int yoffs;
};

void gridLayout::place(bool runs)
{
    const figures grid(*this);
    placeTotalBar(grid, placeHideButton(grid));
    if (!runs)
        captionTotalBar();
    m_content.m_totalLabel->hide();
    placeRows(grid);
    placeButtons(grid);
}

/// Returns the width that the button takes from the total bar's row.
int gridLayout::placeHideButton(const figures &grid)
{
    progressButton &button = *m_content.m_hideButton;
    const bool shown = busyWidget::hasPosition();
    const int hidew = shown ? button.sizeHint().width() : 0;
    button.setVisible(shown);
    button.setGeometry(grid.right - grid.margin - hidew, grid.buty - grid.cellh + grid.yoffs - 4, hidew,
                       grid.cellh - m_ygap + 8);
    return hidew;
}

void gridLayout::placeTotalBar(const figures &grid, int hidew)
{
    m_content.m_totalBar->setGeometry(grid.margin + grid.xoffs, grid.buty - grid.cellh + grid.yoffs,
                                      grid.centerw - 2 * m_xgap - hidew, grid.cellh - m_ygap);
}

void gridLayout::placeRows(const figures &grid)
{
    int ly = grid.cellh / 2;
    for (int i = 0; i < m_content.maxBars; ++i) {
        progressLabel &label = *m_content.labels[i];
        progressProcess &bar = *m_content.bars[i];
        label.setVisible(m_content.labelVisible[i]);
        bar.setVisible(m_content.showsBar(i));
        if (!m_content.labelVisible[i] && !m_content.showsBar(i))
            continue;
        const QRect row(grid.margin + grid.xoffs, ly + grid.yoffs, grid.centerw - m_xgap,
                        grid.cellh - m_ygap);
        if (m_content.showsBar(i)) {
            bar.setGeometry(row);
            bar.setCaption(label.text());
        } else {
            label.setGeometry(row);
        }
        ly += grid.cellh;
    }
}

int gridLayout::buttonCellWidth(const figures &grid, int nbut) const
{
    const int k = m_content.maxButtons / 3 + 1;
    if (nbut > k)
        return grid.centerw / m_content.maxButtons / m_buttonRows;
    if (nbut == 1 && m_content.maxButtons == 2)
        return grid.centerw;
    return k > 1 ? grid.centerw / (k / 2) : grid.centerw;
}

void gridLayout::placeButtons(const figures &grid)
{
    const int nbut = m_content.shownButtons();
    const int dx = buttonCellWidth(grid, nbut);
    const bool lowScreen = m_content.maxButtons <= 2;
    const int top = grid.yoffs - (lowScreen ? 1 : 0);
    const QSize size(lowScreen && nbut == 1 ? dx : dx - m_xgap, lowScreen ? grid.cellh : grid.cellh - m_ygap);
    int butx = grid.margin;
    int buty = grid.buty;
    for (int i = 0; i < m_content.maxButtons; ++i) {
        QPushButton &button = *m_content.buttons[i];
        button.setVisible(m_content.buttonVisible[i]);
        if (!m_content.buttonVisible[i])
            continue;
        button.setGeometry(QRect(QPoint(butx, buty + top), size));
        butx += dx;
        if (butx + dx > grid.right) {
            buty += grid.cellh;
            butx = grid.margin;
        }
    }
}

void gridLayout::captionTotalBar()
{
    m_content.m_totalBar->setCaption(m_content.m_totalLabel->text());
}

void gridLayout::showRemaining(const remainingTime &remaining)
{
    m_content.m_totalBar->setLabel(QStringLiteral("in progress... ") + remainingText(remaining.seconds));
}

void gridLayout::showTotalBar(bool shown)
{
    if (m_content.m_totalBar->isHidden() == shown)
        m_content.m_totalBar->setVisible(shown);
}
