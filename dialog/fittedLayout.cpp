#include "dialog/fittedLayout.h"

#include "dialog/fittedArrangement.h"
#include "stats/estimate.h"
#include "widgets/appearance.h"
#include "widgets/fittedBar.h"
#include "widgets/fittedButton.h"
#include "widgets/imageFile.h"
#include "widgets/progressLabel.h"
#include "widgets/texts.h"

#include <QIcon>
#include <QLabel>

#include <algorithm>

namespace
{

// In em of the font of text lines.
constexpr double leastWindowWidth = 24;
constexpr double mostWindowWidth = 40;
/// A content that gets wider by little and little must not pull the window along each time.
constexpr double widthStep = 4;
constexpr double iconSize = 3;
constexpr double largestPicture = 10;
/// Lines of a text that has to scroll.
constexpr int leastLines = 3;

/// What a row needs at this width.
fittedNeeds::row needsOf(const fittedChildren::row &each, int width)
{
    if (each.text) {
        const int height = each.text->keptHeightFor(width);
        return {height, std::min(height, leastLines * each.text->fontMetrics().lineSpacing()), 0};
    }
    const QWidget *const other = each.bar ? each.bar : each.buttons.front();
    return {other->sizeHint().height(), other->sizeHint().height(), 0};
}

/// Buttons stand close below what they belong to, and a bar without a caption below its text.
int gapBetween(const fittedChildren::row &each, const fittedChildren::row &next,
               const fittedDistances &distances)
{
    const bool isClose =
        !next.buttons.isEmpty() || (each.text && next.bar && next.bar->accessibleName().isEmpty());
    return isClose ? distances.captionToBar : distances.row;
}

int windowWidth(int natural, int grown, int most, const emLength &em)
{
    const int step = std::max(1, em(widthStep));
    const int least = std::max({em(leastWindowWidth), appearance.m_leastWidth, grown});
    const int usual = std::max(em(mostWindowWidth), least);
    return std::min(std::clamp((natural + step - 1) / step * step, least, usual), most);
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

/// The settings' picture: the image of a file, or an icon of the theme. Null for none.
QPixmap pictureAt(const emLength &em)
{
    const QSize most = QSize(1, 1) * em(largestPicture);
    QPixmap picture(imageFile(appearance.m_windowImage));
    if (picture.isNull()) {
        const int side = qRound(em(iconSize) * appearance.m_scale);
        picture = iconNamed(appearance.m_windowImage).pixmap(side, side);
        picture.setDevicePixelRatio(appearance.m_scale);
    } else if (picture.width() > most.width() || picture.height() > most.height())
        picture = picture.scaled(most, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return picture;
}

} // namespace

/// The children that are shown, and their places in a window of this size, which can be made smaller by its
/// user down to the least one.
struct fittedLayout::plan {
    std::vector<fittedChildren::row> rows;
    QList<QWidget *> buttons;
    fittedPlaces places;
    QSize size;
    QSize leastSize;
};

fittedLayout::fittedLayout(QWidget &window, dialogSlots &content)
    : dialogLayout(window, content), m_frame(window), m_panel(window, !m_frame.isManaged()),
      m_children(content)
{
    m_window.setWindowIcon(fittedIcon());
    createWidgets<fittedLabel, fittedBar, fittedButton>();
    shareBarPalette();
    const emLength em(appearance.m_labelFont, m_window);
    m_window.resize(em(leastWindowWidth), 2 * fittedDistances(em).margin);
    const QPixmap picture = pictureAt(em);
    if (picture.isNull())
        return;
    m_picture = new QLabel(&m_window);
    m_picture->setPixmap(picture);
    m_picture->setScaledContents(true);
}

void fittedLayout::takeColors()
{
    m_panel.takeColors();
    dialogLayout::takeColors();
}

void fittedLayout::copyFrom(const dialogLayout &other)
{
    const auto *src = dynamic_cast<const fittedLayout *>(&other);
    if (!src)
        return;
    m_panel.takeBackground(src->m_panel);
    m_children.goOnFrom(src->m_children);
    if (src->m_window.isVisible())
        m_frame.goOnFrom(src->m_frame);
}

void fittedLayout::takeText(int id)
{
    if (m_children.takeText(id))
        placeAgain();
}

void fittedLayout::showRemaining(const remainingTime &remaining)
{
    showLeft(remaining.isOverdue ? overdueText() : timeLeft(remaining.calmSeconds));
}

/// Without a new arrangement, unless the total row comes or goes.
void fittedLayout::showLeft(const QString &left)
{
    if (m_children.takeLeft(left))
        placeAgain();
}

void fittedLayout::place(bool runs)
{
    if (!runs || !m_content.hasContent())
        m_children.takeLeft({});
    if (!m_content.hasContent())
        m_frame.forget();
    placeAgain();
}

void fittedLayout::placeAgain()
{
    m_children.show();
    const bool isGiven = m_window.isMaximized();
    carryOut(planned(isGiven ? m_window.size() : m_frame.room(), isGiven));
}

/// The window has the user's size, or the window manager's. Where that is too small for the content, the
/// window asks for more; a manager who does not grant it has the content made smaller.
void fittedLayout::takeResized()
{
    if (!m_frame.takeResized())
        return;
    const QSize given = m_window.size();
    const plan wanted = planned({given.width(), m_frame.room().height()}, true);
    m_window.setMinimumSize(wanted.leastSize);
    if (m_window.size() == given)
        carryOut(wanted.size == given ? wanted : planned(given, true));
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
    m_children.useFonts(scale);
    const emLength em(*m_content.m_totalLabel);
    const fittedDistances distances(em);
    plan result{m_children.rows(), m_children.buttons(), {}, {}, {}};
    fittedNeeds needs;
    if (m_picture)
        needs.picture = (m_picture->pixmap().deviceIndependentSize() * scale).toSize();
    int widest = 0;
    for (const fittedChildren::row &each : result.rows) {
        if (each.text || each.bar)
            widest = std::max(widest, (each.text ? each.text->sizeHint() : each.bar->sizeHint()).width());
    }
    for (const QWidget *button : std::as_const(result.buttons))
        needs.buttons.push_back(button->sizeHint());
    const int natural = naturalWidth(needs, widest, distances);
    const int width =
        isGiven ? room.width() : windowWidth(natural, m_frame.grown().width(), room.width(), em);
    for (QSize &button : needs.buttons)
        button.setWidth(std::min(button.width(), rowWidth({}, width, distances)));
    for (const fittedChildren::row &each : result.rows)
        needs.rows.push_back(needsOf(each, rowWidth(needs.picture, width, distances)));
    for (std::size_t i = 1; i < needs.rows.size(); ++i)
        needs.rows[i - 1].gapBelow = gapBetween(result.rows[i - 1], result.rows[i], distances);

    const int leastHeight = isGiven ? m_window.height() : std::min(m_frame.grown().height(), room.height());
    result.places = arranged(needs, width, leastHeight, room.height(), distances);
    result.size = {width, std::max(result.places.height, leastHeight)};
    result.leastSize = {windowWidth(natural, 0, room.width(), em), result.places.height};
    return result;
}

void fittedLayout::carryOut(const plan &wanted)
{
    for (std::size_t i = 0; i < wanted.rows.size(); ++i) {
        const fittedChildren::row &each = wanted.rows[i];
        const QRect &place = wanted.places.rows[i];
        if (each.text)
            each.text->takePlace(place);
        else if (each.bar)
            each.bar->setGeometry(place);
        else
            placeAtRight(each.buttons, place);
    }
    for (qsizetype i = 0; i < wanted.buttons.size(); ++i)
        wanted.buttons[i]->setGeometry(wanted.places.buttons[static_cast<std::size_t>(i)]);
    if (m_picture)
        m_picture->setGeometry(wanted.places.picture);
    m_frame.take(wanted.size, wanted.leastSize);
    if (!m_content.hasContent())
        m_frame.forget();
    m_panel.takeSize(emLength(*m_content.m_totalLabel).exact(1));
}
