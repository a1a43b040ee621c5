#include "dialog/fittedLayout.h"

#include "widgets/appearance.h"
#include "widgets/fittedBar.h"
#include "widgets/fittedButton.h"
#include "widgets/progressLabel.h"
#include "widgets/texts.h"

#include <QLabel>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace
{

// In em of the font of text lines.
constexpr double leastWindowWidth = 24;
constexpr double mostWindowWidth = 40;
/// A content that gets wider by little and little must not pull the window along each time.
constexpr double widthStep = 4;
/// What a window manager puts above and below its windows.
constexpr double frameHeight = 3;
/// Lines of a text that has to scroll.
constexpr int leastLines = 3;

void setScaledFont(QWidget &widget, const QFont &setting, double scale)
{
    QFont font = setting;
    if (scale != 1 && font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * scale);
    else if (scale != 1)
        font.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * scale)));
    widget.setFont(font);
}

QRect centredAt(const QPoint &centre, const QSize &size)
{
    QRect rect(QPoint(), size);
    rect.moveCenter(centre);
    return rect;
}

/// Where the work area has room for it, unless it is out of that altogether.
QRect pushedInto(const QRect &room, QRect place)
{
    if (!room.intersects(place))
        return place;
    place.moveRight(std::min(place.right(), room.right()));
    place.moveBottom(std::min(place.bottom(), room.bottom()));
    place.moveTopLeft({std::max(place.x(), room.x()), std::max(place.y(), room.y())});
    return place;
}

/// In one line; where they are wider than that, all narrower.
void placeAtRight(const QList<QWidget *> &buttons, const QRect &place)
{
    const int gap = fittedDistances{emLength(*buttons.front())}.buttonGap;
    const int most = (place.width() + gap) / static_cast<int>(buttons.size()) - gap;
    int right = place.right() + 1;
    for (auto each = buttons.rbegin(); each != buttons.rend(); ++each) {
        const int width = std::min((*each)->sizeHint().width(), std::max(1, most));
        (*each)->setGeometry(right - width, place.top(), width, place.height());
        right -= width + gap;
    }
}

} // namespace

/// The children that are shown, and their places in a window of this size, which can be made smaller by its
/// user down to the least one.
struct fittedLayout::plan {
    QList<QWidget *> rows; ///< null for one of buttons
    QList<QList<QWidget *>> rowButtons;
    QList<QWidget *> buttons;
    fittedPlaces places;
    QSize size;
    QSize leastSize;
};

void fittedLayout::fixSize()
{
    const emLength em(appearance.m_labelFont, m_window);
    m_window.resize(em(leastWindowWidth), 2 * fittedDistances(em).margin);
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
    m_anchor = screen.center();
    m_window.move(centredAt(m_anchor, m_window.size()).topLeft());
}

void fittedLayout::takeMoved()
{
    m_anchor = m_window.geometry().center();
    m_wasMoved = true;
}

void fittedLayout::place(bool runs)
{
    if (!runs)
        captionTotalBar();
    if (!m_content.hasContent()) {
        m_grown = {};
        std::fill(std::begin(m_grownLines), std::end(m_grownLines), 0.0);
        m_estimateIsShown = false;
    }
    placeAgain();
}

void fittedLayout::placeAgain()
{
    showChildren();
    const bool isGiven = m_window.isMaximized();
    carryOut(planned(isGiven ? m_window.size() : roomOnScreen(), isGiven));
}

/// The window has the user's size, or the window manager's. Where that is too small for the content, the
/// window asks for more; a manager who does not grant it has the content made smaller.
void fittedLayout::takeResized()
{
    if (!isManaged() || m_window.size() == m_arrangedSize)
        return;
    const QSize given = m_window.size();
    m_grown = m_arrangedSize = given;
    const plan wanted = planned({given.width(), roomOnScreen().height()}, true);
    m_window.setMinimumSize(wanted.leastSize);
    if (m_window.size() == given)
        carryOut(wanted.size == given ? wanted : planned(given, true));
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

QList<QWidget *> fittedLayout::shownRows() const
{
    QList<QWidget *> rows;
    for (const int i : m_content.order()) {
        if (m_content.labelVisible[i])
            rows << &label(i);
        else if (m_content.barVisible[i])
            rows << &bar(i);
        if (groupBelow(i) >= 0)
            rows << nullptr;
    }
    if (showsTotalRow())
        rows << m_content.m_totalBar;
    return rows;
}

/// Of slots that stand together; with -1, those at the bottom of the window.
QList<QWidget *> fittedLayout::shownButtons(int group) const
{
    QList<QWidget *> buttons;
    if (group < 0 && !m_content.m_hideButton->isHidden())
        buttons << m_content.m_hideButton;
    for (int i = 0; i < m_content.maxButtons; ++i) {
        if (m_content.buttonVisible[i] && m_content.groupOf(i) == group)
            buttons << m_content.buttons[i];
    }
    return buttons;
}

/// The slots that stand together, if this is the last of them and they have a row of buttons; else -1.
int fittedLayout::groupBelow(int id) const
{
    const auto order = m_content.order();
    const auto next = std::find(order.begin(), order.end(), id) + 1;
    const int group = m_content.groupOf(id);
    const bool isLast = next == order.end() || m_content.groupOf(*next) != group;
    return isLast && !shownButtons(group).isEmpty() ? group : -1;
}

int fittedLayout::windowWidth(int natural, int grown, const QSize &room) const
{
    const emLength em(*m_content.m_totalLabel);
    const int step = std::max(1, em(widthStep));
    const int least = std::max({em(leastWindowWidth), appearance.m_leastWidth, grown});
    const int most = std::max(em(mostWindowWidth), least);
    return std::min(std::clamp((natural + step - 1) / step * step, least, most), room.width());
}

/// For a window as large as the content asks for, and at most `room`; or, where that is the size that it
/// `isGiven`, for this one.
fittedLayout::plan fittedLayout::planned(const QSize &room, bool isGiven)
{
    constexpr int tries = 5;
    plan result;
    double scale = appearance.m_scale;
    for (int i = 0; i < tries; ++i) {
        result = plannedAt(scale, room, isGiven);
        if (result.places.height <= room.height())
            break;
        scale *= static_cast<double>(room.height()) / result.places.height;
    }
    return result;
}

fittedLayout::plan fittedLayout::plannedAt(double scale, const QSize &room, bool isGiven)
{
    useFonts(scale);
    const fittedDistances distances{emLength(*m_content.m_totalLabel)};
    plan result{shownRows(), {}, shownButtons(-1), {}, {}, {}};
    for (const int i : m_content.order()) {
        if (const int group = groupBelow(i); group >= 0)
            result.rowButtons << shownButtons(group);
    }
    fittedNeeds needs;
    if (m_picture)
        needs.picture = (m_picture->pixmap().deviceIndependentSize() * scale).toSize();
    int widest = 0;
    for (const QWidget *row : result.rows)
        widest = std::max(widest, row ? row->sizeHint().width() : 0);
    for (const QWidget *button : result.buttons)
        needs.buttons.push_back(button->sizeHint());
    const int natural = naturalWidth(needs, widest, distances);
    const int width = isGiven ? room.width() : windowWidth(natural, m_grown.width(), room);
    for (QSize &button : needs.buttons)
        button.setWidth(std::min(button.width(), rowWidth({}, width, distances)));
    needs.rows = rowsAt(rowWidth(needs.picture, width, distances));

    const int leastHeight = isGiven ? m_window.height() : std::min(m_grown.height(), room.height());
    result.places = arranged(needs, width, leastHeight, room.height(), distances);
    result.size = {width, std::max(result.places.height, leastHeight)};
    result.leastSize = {windowWidth(natural, 0, room), result.places.height};
    return result;
}

/// What the rows need at this width.
std::vector<fittedNeeds::row> fittedLayout::rowsAt(int width)
{
    std::vector<fittedNeeds::row> rows;
    bool isBelowText = false;
    for (const int i : m_content.order()) {
        double &grown = m_grownLines[i];
        if (!m_content.labelVisible[i])
            grown = 0;
        if (m_content.labelVisible[i]) {
            const int line = label(i).fontMetrics().lineSpacing();
            grown = std::max(grown, static_cast<double>(label(i).heightFor(width)) / line);
            const int height = qRound(grown * line);
            rows.push_back({height, std::min(height, leastLines * line), false});
        } else if (m_content.barVisible[i]) {
            const int height = bar(i).sizeHint().height();
            if (isBelowText)
                rows.back().captionsNextRow = label(i).text().isEmpty();
            rows.push_back({height, height, false});
        }
        if (m_content.labelVisible[i] || m_content.barVisible[i])
            isBelowText = m_content.labelVisible[i];
        if (groupBelow(i) < 0)
            continue;
        const int height = m_content.m_hideButton->sizeHint().height();
        if (!rows.empty())
            rows.back().captionsNextRow = true;
        rows.push_back({height, height, false});
        isBelowText = false;
    }
    if (showsTotalRow())
        rows.push_back({totalBar().sizeHint().height(), totalBar().sizeHint().height(), false});
    return rows;
}

void fittedLayout::carryOut(const plan &wanted)
{
    qsizetype buttonRow = 0;
    for (qsizetype i = 0; i < wanted.rows.size(); ++i) {
        const QRect &place = wanted.places.rows[static_cast<std::size_t>(i)];
        if (!wanted.rows[i])
            placeAtRight(wanted.rowButtons[buttonRow++], place);
        else if (auto *text = dynamic_cast<fittedLabel *>(wanted.rows[i]))
            text->takePlace(place);
        else
            wanted.rows[i]->setGeometry(place);
    }
    for (qsizetype i = 0; i < wanted.buttons.size(); ++i)
        wanted.buttons[i]->setGeometry(wanted.places.buttons[static_cast<std::size_t>(i)]);
    if (m_picture)
        m_picture->setGeometry(wanted.places.picture);
    const QRect before = m_window.geometry();
    const bool isFresh = m_grown.isEmpty() && !m_window.isVisible() && !m_wasMoved;
    m_grown = m_content.hasContent() ? wanted.size : QSize();
    m_arrangedSize = wanted.size;
    if (!isManaged())
        m_window.setFixedSize(wanted.size);
    else
        m_window.setMinimumSize(m_window.minimumSize().boundedTo(wanted.leastSize));
    if (isFresh) {
        m_window.resize(wanted.size);
        movePosition();
    } else if (wanted.size != before.size())
        growTo(wanted.size, before);
    if (isManaged())
        m_window.setMinimumSize(wanted.leastSize);
    m_panel.takeSize(emLength(*m_content.m_totalLabel).exact(1));
}

/// Around its centre. One that a manager has not placed yet has none.
void fittedLayout::growTo(const QSize &size, const QRect &before)
{
    QRect room = m_window.screen()->availableGeometry();
    if (!isManaged())
        return m_window.setGeometry(pushedInto(room, centredAt(m_anchor, size)));
    if (!m_window.isVisible() || !m_window.windowHandle()->isExposed())
        return m_window.resize(size);
    const QRect frame = m_window.frameGeometry();
    room.adjust(before.left() - frame.left(), before.top() - frame.top(), before.right() - frame.right(),
                before.bottom() - frame.bottom());
    m_window.setGeometry(pushedInto(room, centredAt(before.center(), size)));
}
