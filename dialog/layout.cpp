#include "dialog/CProgressDialog.h"

#include "widgets/appearance.h"
#include "widgets/busyWidget.h"
#include "widgets/imageFile.h"
#include "widgets/literalTitle.h"
#include "widgets/progressButton.h"
#include "widgets/progressLabel.h"
#include "widgets/progressProcess.h"
#include "widgets/progressStyle.h"

#include <QFontMetrics>
#include <QIcon>

#include <algorithm>

CProgressDialog::CProgressDialog(dialogHost &host)
    : QWidget(nullptr, appearance.m_dialog_flags), m_host(host), m_style(std::make_unique<progressStyle>()),
      m_desktopWidth(appearance.m_desktopWidth), m_desktopHeight(appearance.m_desktopHeight),
      m_frameColor(appearance.m_dialogFrameColor), m_backgroundColor(appearance.m_dialogBackgroundColor),
      m_alphaValue(appearance.m_dialogBackgroundAlphaval)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoSystemBackground);
    setAutoFillBackground(false);

    chooseScreenProfile();
    createWidgets();
    fixSize();
    movePosition();
    setWindowTitle(literalTitle(appearance.m_windowTitle));
    setWindowIcon(QIcon(imageFile(appearance.m_windowIcon)));
    loadBackground();
    installEventFilter(this);
}

void CProgressDialog::chooseScreenProfile()
{
    constexpr int lowScreenHeight = 279;
    if (m_desktopHeight > lowScreenHeight)
        return;
    m_margin = 1;
    m_ygap = 4;
    maxBars = 5;
    maxButtons = 2;
    m_buttonRows = 1;
}

void CProgressDialog::createWidgets()
{
    m_totalLabel = new progressLabel(this);
    m_totalLabel->setText(QStringLiteral("total progress"));
    m_totalBar = new progressProcess(this);
    m_totalBar->setStyle(m_style.get());
    m_totalBar->setValue(0);

    m_hideButton = new progressButton(this);
    m_hideButton->setText(QStringLiteral("Hide"));
    connect(m_hideButton, &QPushButton::clicked, this, &CProgressDialog::buttonClicked);

    for (int i = 0; i < maxBars; ++i) {
        labels[i] = new progressLabel(this);
        bars[i] = new progressProcess(this);
        bars[i]->setStyle(m_style.get());
    }
    shareBarPalette();
    for (int i = 0; i < maxButtons; ++i)
        buttons[i] = new progressButton(this);
}

void CProgressDialog::shareBarPalette()
{
    BAR_PALETTE = m_totalBar->palette();
    BAR_PALETTE.setBrush(QPalette::All, QPalette::HighlightedText, QBrush(appearance.m_invertedNumberColor));
    BAR_PALETTE.setBrush(QPalette::All, QPalette::Highlight, QBrush(appearance.m_barColor));
    BAR_PALETTE.setBrush(QPalette::All, QPalette::Window, QBrush(appearance.m_barBackgroundColor));
    m_totalBar->setPalette(BAR_PALETTE);
}

void CProgressDialog::fixSize()
{
    // The settings' fonts are made before the toolkit knows the screen and measure for 100 dots an inch;
    // on a denser screen the text is taller than that, and the cells must grow with it.
    const int cellHeight = std::max(QFontMetrics(appearance.m_barNumFont).lineSpacing(),
                                    QFontMetrics(appearance.m_barNumFont, this).lineSpacing());
    m_Width = m_desktopHeight > 240 ? m_desktopWidth / 2 : m_desktopWidth * 3 / 4;
    m_Height = (cellHeight + m_ygap + 10) * (m_buttonRows + maxBars);
    m_Width = std::min(m_Width + 2 * (m_framewidth + m_margin), longestWindowSide);
    m_Height = std::min(m_Height + 2 * (m_framewidth + m_margin), longestWindowSide);
    resize(m_Width, m_Height);
}

void CProgressDialog::movePosition()
{
    move((m_desktopWidth - m_Width) / 2 + appearance.m_paintOffsetX,
         (m_desktopHeight - m_Height) / 2 + appearance.m_paintOffsetY);
}

void CProgressDialog::loadBackground()
{
    QPixmap progressPixmap;
    if (progressPixmap.load(imageFile(appearance.m_windowPixmap))) {
        setBackgroundPixmap(progressPixmap);
        return;
    }
    QPalette gray;
    gray.setBrush(backgroundRole(), QBrush(Qt::gray));
    setPalette(gray);
}

/// The figures that one layout pass works with, in pixels.
struct CProgressDialog::layoutGrid {
    explicit layoutGrid(const CProgressDialog &dialog)
        : margin(dialog.m_framewidth + dialog.m_margin), right(dialog.width()), centerw(right - 2 * margin),
          cellh((dialog.height() - 2 * margin) / (dialog.m_buttonRows + dialog.maxBars)),
          buty(dialog.height() - dialog.m_buttonRows * cellh), xoffs(dialog.m_xgap / 2),
          yoffs(dialog.m_ygap / 2)
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

bool CProgressDialog::ensureVisible()
{
    const layoutGrid grid(*this);
    placeTotalBar(grid, placeHideButton(grid));
    const bool hasRows = placeRows(grid);
    const bool hasButtons = placeButtons(grid);
    focusFirstButton();
    return takeTimingStep(hasRows || hasButtons);
}

/// Returns the width that the button takes from the total bar's row.
int CProgressDialog::placeHideButton(const layoutGrid &grid)
{
    const bool shown = busyWidget::hasPosition();
    const int hidew = shown ? m_hideButton->sizeHint().width() : 0;
    m_hideButton->setVisible(shown);
    m_hideButton->setGeometry(grid.right - grid.margin - hidew, grid.buty - grid.cellh + grid.yoffs - 4,
                              hidew, grid.cellh - m_ygap + 8);
    return hidew;
}

void CProgressDialog::placeTotalBar(const layoutGrid &grid, int hidew)
{
    m_totalBar->setGeometry(grid.margin + grid.xoffs, grid.buty - grid.cellh + grid.yoffs,
                            grid.centerw - 2 * m_xgap - hidew, grid.cellh - m_ygap);
    if (m_timerId == -1)
        captionTotalBar();
    m_totalLabel->hide();
}

bool CProgressDialog::placeRows(const layoutGrid &grid)
{
    bool inAction = false;
    int ly = grid.cellh / 2;
    for (int i = 0; i < maxBars; ++i) {
        const bool showsBar = barVisible[i] && !labelVisible[i];
        labels[i]->setVisible(labelVisible[i]);
        bars[i]->setVisible(showsBar);
        if (!labelVisible[i] && !showsBar)
            continue;
        const QRect row(grid.margin + grid.xoffs, ly + grid.yoffs, grid.centerw - m_xgap,
                        grid.cellh - m_ygap);
        if (showsBar) {
            bars[i]->setGeometry(row);
            bars[i]->setCaption(labels[i]->text());
        } else {
            labels[i]->setGeometry(row);
        }
        ly += grid.cellh;
        inAction = true;
    }
    return inAction;
}

int CProgressDialog::buttonCellWidth(const layoutGrid &grid, int nbut) const
{
    const int k = maxButtons / 3 + 1;
    if (nbut > k)
        return grid.centerw / maxButtons / m_buttonRows;
    if (nbut == 1 && maxButtons == 2)
        return grid.centerw;
    return k > 1 ? grid.centerw / (k / 2) : grid.centerw;
}

bool CProgressDialog::placeButtons(const layoutGrid &grid)
{
    const int nbut = static_cast<int>(std::count(buttonVisible, buttonVisible + maxButtons, true));
    const int dx = buttonCellWidth(grid, nbut);
    const bool lowScreen = maxButtons <= 2;
    const int top = grid.yoffs - (lowScreen ? 1 : 0);
    const QSize size(lowScreen && nbut == 1 ? dx : dx - m_xgap, lowScreen ? grid.cellh : grid.cellh - m_ygap);
    int butx = grid.margin;
    int buty = grid.buty;
    for (int i = 0; i < maxButtons; ++i) {
        buttons[i]->setVisible(buttonVisible[i]);
        if (!buttonVisible[i])
            continue;
        buttons[i]->setGeometry(QRect(QPoint(butx, buty + top), size));
        butx += dx;
        if (butx + dx > grid.right) {
            buty += grid.cellh;
            butx = grid.margin;
        }
    }
    return nbut > 0;
}

void CProgressDialog::focusFirstButton()
{
    m_hideButton->setFocus();
    const bool *first = std::find(buttonVisible, buttonVisible + maxButtons, true);
    if (first != buttonVisible + maxButtons)
        buttons[first - buttonVisible]->setFocus();
}
