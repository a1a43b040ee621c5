#include "dialog/gridLayout.h"

#include "platform/windowSystem.h"
#include "stats/estimate.h"
#include "widgets/appearance.h"
#include "widgets/busyWidget.h"
#include "widgets/imageFile.h"
#include "widgets/progressButton.h"
#include "widgets/progressLabel.h"
#include "widgets/progressProcess.h"
#include "widgets/theme.h"

#include <QFontMetrics>
#include <QLinearGradient>
#include <QPainter>

#include <algorithm>

namespace
{

// In pixels.
constexpr int frameWidth = 4;
constexpr int xgap = 6; ///< between buttons, and beside rows

/// What the window's outline looks like for one size. Dialogs have mostly the same size, so one shape is
/// kept for all of them, built for the size that was painted last.
struct windowShape {
    QSize size;
    QRegion outer;
    QRegion frameregion;
};

const windowShape &shapeOf(const QSize &size)
{
    static windowShape shape;
    if (size == shape.size)
        return shape;

    constexpr int outerRadius = 4;
    constexpr int innerRadius = 1;
    const QRect whole(QPoint(0, 0), size);
    const QRect inside = whole.adjusted(frameWidth, frameWidth, -frameWidth, -frameWidth);
    const QRegion outer = roundRectRegion(whole, outerRadius);
    shape = {size, outer, outer - roundRectRegion(inside, innerRadius)};
    return shape;
}

/// From top to bottom: a shadow, the even colour `col`, a shadow.
QLinearGradient backgroundGradient(int height, const QColor &col)
{
    QLinearGradient grad1(0, 0, 0, height);
    grad1.setColorAt(0.0, appearance.m_shadowLightColor);
    grad1.setColorAt(0.05, col);
    grad1.setColorAt(0.95, col);
    grad1.setColorAt(1.0, appearance.m_shadowDarkColor);
    return grad1;
}

QPixmap stretched(const QPixmap &image, const QSize &size)
{
    if (image.size() == size)
        return image;
    const double wRatio = double(size.width()) / image.width();
    const double hRatio = double(size.height()) / image.height();
    return image.transformed(QTransform::fromScale(wRatio, hRatio), Qt::FastTransformation);
}

} // namespace

gridLayout::gridLayout(QWidget &window, dialogSlots &content)
    : dialogLayout(window, content), m_desktop(appearance.m_desktopWidth, appearance.m_desktopHeight),
      m_frameColor(appearance.m_dialogFrameColor), m_backgroundColor(appearance.m_dialogBackgroundColor),
      m_alphaValue(appearance.m_dialogBackgroundAlphaval)
{
    m_window.setAttribute(Qt::WA_TranslucentBackground);
    m_window.setAttribute(Qt::WA_NoSystemBackground);
    m_window.setAutoFillBackground(false);
    m_window.setWindowIcon(QIcon(imageFile(appearance.m_windowIcon)));
    chooseScreenProfile();
    createWidgets<progressLabel, progressProcess, progressButton>();
    m_content.m_totalBar->setStyle(&m_style);
    for (int i = 0; i < m_content.maxBars; ++i) {
        m_content.bars[i]->setStyle(&m_style);
        colorLabel(*m_content.labels[i]);
    }
    shareBarPalette();
    fixSize();
    m_bgpixmap = dialogBackground(m_size, stretched);
}

void gridLayout::chooseScreenProfile()
{
    constexpr int lowScreenHeight = 279;
    if (m_desktop.height() > lowScreenHeight)
        return;
    m_margin = 1;
    m_ygap = 4;
    m_content.maxBars = 5;
    m_content.maxButtons = 2;
    m_buttonRows = 1;
}

/// Text lines have the toolkit's black unless the settings say more.
void gridLayout::colorLabel(progressLabel &label) const
{
    const QColor text = themedText(appearance.m_panelTextColor, m_backgroundColor);
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
    dialogLayout::takeColors();
    for (int i = 0; i < m_content.maxBars; ++i)
        colorLabel(*m_content.labels[i]);
    progressButton::forgetColors();
}

void gridLayout::fixSize()
{
    // The settings' fonts are made before the toolkit knows the screen and measure for 100 dots an inch;
    // on a denser screen the text is taller than that, and the cells must grow with it.
    const int cellHeight = std::max(QFontMetrics(appearance.m_barNumFont).lineSpacing(),
                                    QFontMetrics(appearance.m_barNumFont, &m_window).lineSpacing());
    const int width = m_desktop.height() > 240 ? m_desktop.width() / 2 : m_desktop.width() * 3 / 4;
    const int height = (cellHeight + m_ygap + 10) * (m_buttonRows + m_content.maxBars);
    const int edges = 2 * (frameWidth + m_margin);
    m_size = QSize(width + edges, height + edges).boundedTo(largestSize(m_window));
    m_window.resize(m_size);
    // A compositor would give it another one.
    if (onWayland())
        m_window.setFixedSize(m_window.size());
}

void gridLayout::movePosition()
{
    m_window.move((m_desktop.width() - m_size.width()) / 2 + appearance.m_paintOffsetX,
                  (m_desktop.height() - m_size.height()) / 2 + appearance.m_paintOffsetY);
}

/// A copy across the two screen profiles keeps its own grid: the counts must fit its own widgets.
void gridLayout::copyFrom(const dialogLayout &other)
{
    const auto *src = dynamic_cast<const gridLayout *>(&other);
    if (!src)
        return;
    m_frameColor = src->m_frameColor;
    m_backgroundColor = src->m_backgroundColor;
    m_alphaValue = src->m_alphaValue;
    if (m_buttonRows == src->m_buttonRows) {
        m_desktop = src->m_desktop;
        m_size = src->m_size;
    }
    if (!src->m_bgpixmap.isNull())
        m_bgpixmap = stretched(src->m_bgpixmap, m_size);
}

/// The figures that one layout pass works with, in pixels.
struct gridLayout::figures {
    explicit figures(const gridLayout &layout)
        : margin(frameWidth + layout.m_margin), right(layout.m_window.width()), centerw(right - 2 * margin),
          cellh((layout.m_window.height() - 2 * margin) / (layout.m_buttonRows + layout.m_content.maxBars)),
          buty(layout.m_window.height() - layout.m_buttonRows * cellh), xoffs(xgap / 2),
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
    const int hidew = placeHideButton(grid);
    m_content.m_totalBar->setGeometry(grid.margin + grid.xoffs, grid.buty - grid.cellh + grid.yoffs,
                                      grid.centerw - 2 * xgap - hidew, grid.cellh - m_ygap);
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
        const QRect row(grid.margin + grid.xoffs, ly + grid.yoffs, grid.centerw - xgap, grid.cellh - m_ygap);
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
    const auto nbut = static_cast<int>(
        std::count(m_content.buttonVisible, m_content.buttonVisible + m_content.maxButtons, true));
    const int dx = buttonCellWidth(grid, nbut);
    const bool lowScreen = m_content.maxButtons <= 2;
    const int top = grid.yoffs - (lowScreen ? 1 : 0);
    const QSize size(lowScreen && nbut == 1 ? dx : dx - xgap, lowScreen ? grid.cellh : grid.cellh - m_ygap);
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
    if (m_content.m_totalBar->isHidden())
        m_content.m_totalBar->show();
}

void gridLayout::hideTotalBar()
{
    if (!m_content.m_totalBar->isHidden())
        m_content.m_totalBar->hide();
}

QRegion roundRectRegion(const QRect &g, int r)
{
    const QRect shape = g.adjusted(0, 0, -1, -1);
    const int cut = r - 1;
    // The rectangle without a square of side `cut` in each corner.
    QRegion region(shape.adjusted(cut, 0, -cut, 0));
    region += shape.adjusted(0, cut, 0, -cut);
    const int diameter = 2 * r;
    for (const int x : {g.left(), g.right() - diameter}) {
        for (const int y : {g.top(), g.bottom() - diameter})
            region += QRegion(x, y, diameter, diameter, QRegion::Ellipse);
    }
    return region;
}

/// Paints the whole window. What is left out stays transparent: the corners, except under an image.
void gridLayout::paint(const QPaintEvent &)
{
    const QRect all = m_window.rect();
    const windowShape &shape = shapeOf(all.size());
    QPainter painter(&m_window);
    if (!m_bgpixmap.isNull()) {
        // Holds for the frame as well.
        painter.setOpacity(m_alphaValue / 255.0);
        painter.drawPixmap(0, 0, m_bgpixmap);
    } else {
        QColor col = m_backgroundColor;
        col.setAlpha(m_alphaValue);
        painter.setClipRegion(shape.outer, Qt::ReplaceClip);
        painter.fillRect(all, backgroundGradient(all.height(), col));
    }
    painter.setClipRegion(shape.frameregion, Qt::ReplaceClip);
    painter.fillRect(all, QBrush(m_frameColor));
}
