#include "dialog/fittedLayout.h"

#include "widgets/appearance.h"
#include "widgets/fittedBar.h"
#include "widgets/fittedButton.h"
#include "widgets/progressLabel.h"
#include "widgets/texts.h"

#include <QScreen>

#include <algorithm>
#include <utility>

namespace
{

// In em of the font of text lines.
constexpr double leastWindowWidth = 24;
constexpr double mostWindowWidth = 40;
constexpr double windowMargin = 1.25;
constexpr double rowDistance = 1;
constexpr double buttonsDistance = 1.5;
constexpr double buttonGap = 0.6;
/// What a window manager puts above and below its windows.
constexpr double frameHeight = 3;

void setScaledFont(QWidget &widget, const QFont &setting, double scale)
{
    QFont font = setting;
    if (scale < 1 && font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * scale);
    else if (scale < 1)
        font.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * scale)));
    widget.setFont(font);
}

QPoint middleOfTop(const QRect &rect)
{
    return {rect.center().x(), rect.top()};
}

} // namespace

/// Places for the shown children, in pixels.
struct fittedLayout::arrangement {
    void add(QWidget *child, const QRect &place) { places.emplace_back(child, place); }

    std::vector<std::pair<QWidget *, QRect>> places;
    QSize size;
};

/// The figures that one arrangement is made with, in pixels.
struct fittedLayout::placing {
    explicit placing(const QWidget &label, const QSize &roomOnScreen)
        : em(label), margin(em(windowMargin)), room(roomOnScreen)
    {
    }

    emLength em;
    int margin;
    QSize room;
    int width = 0; ///< of the content
};

void fittedLayout::fixSize()
{
    m_window.resize(emLength(appearance.m_labelFont, m_window)(leastWindowWidth),
                    emLength(appearance.m_labelFont, m_window)(2 * windowMargin));
}

/// A managed window is placed by the manager.
void fittedLayout::movePosition()
{
    if (isManaged())
        return;
    QRect screen = m_window.screen()->availableGeometry();
    if (appearance.m_desktopIsKnown)
        screen = {0, 0, appearance.m_desktopWidth, appearance.m_desktopHeight};
    screen.translate(appearance.m_paintOffsetX, appearance.m_paintOffsetY);
    QRect place(QPoint(), m_window.size());
    place.moveCenter(screen.center());
    m_window.move(place.topLeft());
    m_anchor = middleOfTop(place);
}

void fittedLayout::takeMoved()
{
    m_anchor = middleOfTop(m_window.geometry());
    m_wasMoved = true;
}

void fittedLayout::place(bool runs)
{
    if (!runs)
        captionTotalBar();
    if (!m_content.hasContent()) {
        m_grownWidth = 0;
        std::fill(std::begin(m_grownLines), std::end(m_grownLines), 0);
        m_estimateIsShown = false;
    }
    placeAgain();
}

void fittedLayout::placeAgain()
{
    showChildren();
    const int room = roomOnScreen().height();
    double scale = 1;
    arrangement plan = arranged(scale);
    constexpr int tries = 4;
    for (int i = 0; i < tries && plan.size.height() > room; ++i) {
        scale *= static_cast<double>(room) / plan.size.height();
        plan = arranged(scale);
    }
    carryOut(plan);
}

QSize fittedLayout::roomOnScreen() const
{
    QSize room = m_window.screen()->availableGeometry().size();
    if (isManaged())
        room.rheight() -= emLength(appearance.m_labelFont, m_window)(frameHeight);
    return room;
}

void fittedLayout::useFonts(double scale)
{
    setScaledFont(*m_content.m_totalBar, appearance.m_barLabelFont, scale);
    setScaledFont(*m_content.m_totalLabel, appearance.m_labelFont, scale);
    setScaledFont(*m_content.m_hideButton, appearance.m_buttonFont, scale);
    for (int i = 0; i < m_content.maxBars; ++i) {
        setScaledFont(label(i), appearance.m_labelFont, scale);
        setScaledFont(bar(i), appearance.m_barLabelFont, scale);
    }
    for (int i = 0; i < m_content.maxButtons; ++i)
        setScaledFont(*m_content.buttons[i], appearance.m_buttonFont, scale);
}

fittedLayout::arrangement fittedLayout::arranged(double scale)
{
    useFonts(scale);
    placing sizes(*m_content.m_totalLabel, roomOnScreen());
    sizes.width = contentWidth(sizes);
    arrangement plan;
    plan.size = QSize(sizes.width + 2 * sizes.margin, sizes.margin);
    arrangeRows(plan, sizes);
    arrangeButtons(plan, sizes);
    plan.size.rheight() += sizes.margin;
    return plan;
}

/// As wide as the widest row and all buttons in one line, within the bounds.
int fittedLayout::contentWidth(const placing &sizes) const
{
    int wanted = showsTotalRow() ? m_content.m_totalBar->sizeHint().width() : 0;
    for (int i = 0; i < m_content.maxBars; ++i) {
        if (m_content.labelVisible[i])
            wanted = std::max(wanted, label(i).sizeHint().width());
        else if (m_content.barVisible[i])
            wanted = std::max(wanted, bar(i).sizeHint().width());
    }
    int buttons = m_content.m_hideButton->isHidden() ? 0 : m_content.m_hideButton->sizeHint().width();
    for (int i = 0; i < m_content.maxButtons; ++i) {
        if (m_content.buttonVisible[i])
            buttons += m_content.buttons[i]->sizeHint().width() + (buttons > 0 ? sizes.em(buttonGap) : 0);
    }
    const int margins = 2 * sizes.margin;
    const int least = std::max({sizes.em(leastWindowWidth), appearance.m_leastWidth, m_grownWidth});
    const int most = std::max(sizes.em(mostWindowWidth), least);
    const int width = std::clamp(std::max(wanted, buttons) + margins, least, most);
    return std::max(1, std::min(width, sizes.room.width()) - margins);
}

void fittedLayout::arrangeRows(arrangement &plan, const placing &sizes)
{
    int distance = 0;
    const auto add = [&](QWidget *child, int height) {
        plan.size.rheight() += distance;
        plan.add(child, {sizes.margin, plan.size.height(), sizes.width, height});
        plan.size.rheight() += height;
        distance = sizes.em(rowDistance);
    };
    for (int i = 0; i < m_content.maxBars; ++i) {
        int &lines = m_grownLines[i];
        if (m_content.labelVisible[i]) {
            lines = std::max(lines, label(i).linesFor(sizes.width));
            add(&label(i), lines * label(i).fontMetrics().lineSpacing());
        } else {
            lines = 0;
            if (m_content.barVisible[i])
                add(&bar(i), bar(i).sizeHint().height());
        }
    }
    if (showsTotalRow())
        add(m_content.m_totalBar, m_content.m_totalBar->sizeHint().height());
}

/// In lines from left to right, each of them at the right; Hide at the left of the last.
void fittedLayout::arrangeButtons(arrangement &plan, const placing &sizes) const
{
    const int gap = sizes.em(buttonGap);
    QPushButton *const hide = m_content.m_hideButton->isHidden() ? nullptr : m_content.m_hideButton;
    const int hideWidth = hide ? hide->sizeHint().width() : 0;
    struct line {
        std::vector<QPushButton *> buttons;
        int width = 0;
    };
    std::vector<line> lines(1);
    for (int i = 0; i < m_content.maxButtons; ++i) {
        if (!m_content.buttonVisible[i])
            continue;
        const int width = std::min(m_content.buttons[i]->sizeHint().width(), sizes.width);
        if (!lines.back().buttons.empty() && lines.back().width + gap + width > sizes.width)
            lines.emplace_back();
        lines.back().width += width + (lines.back().buttons.empty() ? 0 : gap);
        lines.back().buttons.push_back(m_content.buttons[i]);
    }
    if (hide && !lines.back().buttons.empty() && lines.back().width + gap + hideWidth > sizes.width)
        lines.emplace_back();
    if (!hide && lines.back().buttons.empty())
        return;

    const int height = m_content.m_hideButton->sizeHint().height();
    int y = plan.size.height() + (plan.places.empty() ? 0 : sizes.em(buttonsDistance));
    for (const line &each : lines) {
        int x = sizes.margin + sizes.width - each.width;
        for (QPushButton *button : each.buttons) {
            const int width = std::min(button->sizeHint().width(), sizes.width);
            plan.add(button, {x, y, width, height});
            x += width + gap;
        }
        y += height + gap;
    }
    y -= gap;
    if (hide)
        plan.add(hide, {sizes.margin, y - height, hideWidth, height});
    plan.size.rheight() = y;
}

void fittedLayout::carryOut(const arrangement &plan)
{
    for (const auto &[child, place] : plan.places)
        child->setGeometry(place);
    const bool isFresh = m_grownWidth == 0 && !m_window.isVisible() && !m_wasMoved;
    const bool isResized = plan.size != m_window.size();
    m_grownWidth = m_content.hasContent() ? plan.size.width() : 0;
    if (isResized) {
        m_window.setFixedSize(plan.size);
        reloadPixmap();
        cutCorners();
    }
    if (isManaged())
        return;
    if (isFresh)
        movePosition();
    else if (isResized)
        settle();
}

/// Puts the window to its anchor, and from there into the work area, unless it is out of that altogether.
void fittedLayout::settle()
{
    const QRect room = m_window.screen()->availableGeometry();
    QRect place(QPoint(), m_window.size());
    place.moveCenter({m_anchor.x(), 0});
    place.moveTop(m_anchor.y());
    if (room.intersects(place)) {
        place.moveRight(std::min(place.right(), room.right()));
        place.moveBottom(std::min(place.bottom(), room.bottom()));
        place.moveTopLeft({std::max(place.x(), room.x()), std::max(place.y(), room.y())});
    }
    m_window.move(place.topLeft());
}
