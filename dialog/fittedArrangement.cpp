#include "dialog/fittedArrangement.h"

#include "widgets/texts.h"

#include <algorithm>

namespace
{

struct buttonLine {
    std::vector<QSize> buttons;
    int width = 0;
};

std::vector<buttonLine> linesOf(const std::vector<QSize> &buttons, int width, int gap)
{
    std::vector<buttonLine> lines;
    for (const QSize &button : buttons) {
        if (lines.empty() || lines.back().width + gap + button.width() > width)
            lines.emplace_back();
        buttonLine &line = lines.back();
        line.width += button.width() + (line.buttons.empty() ? 0 : gap);
        line.buttons.push_back(button);
    }
    return lines;
}

/// Of the rows beside the picture.
int contentHeight(const fittedNeeds &needs)
{
    int height = 0;
    for (const fittedNeeds::row &row : needs.rows)
        height += row.height + row.gapBelow;
    return std::max(height, needs.picture.height());
}

/// Takes `excess` pixels from the rows that scroll: none stays higher than the others that gave way.
void lower(std::vector<fittedNeeds::row> &rows, int excess)
{
    if (excess <= 0)
        return;
    const auto loweredTo = [&rows](int most) {
        int gain = 0;
        for (const fittedNeeds::row &row : rows)
            gain += row.height - std::clamp(most, row.leastHeight, row.height);
        return gain;
    };
    int enough = 0;
    int tooHigh = 0;
    for (const fittedNeeds::row &row : rows)
        tooHigh = std::max(tooHigh, row.height);
    while (tooHigh - enough > 1) {
        const int middle = enough + (tooHigh - enough) / 2;
        (loweredTo(middle) < excess ? tooHigh : enough) = middle;
    }
    for (fittedNeeds::row &row : rows)
        row.height = std::clamp(enough, row.leastHeight, row.height);
}

} // namespace

fittedDistances::fittedDistances(const emLength &em)
    : margin(em(1.25)), row(em(1)), captionToBar(em(0.4)), aboveButtons(em(1.5)), buttonGap(em(0.6)),
      pictureGap(em(1))
{
}

int rowWidth(const QSize &picture, int width, const fittedDistances &distances)
{
    const int beside = picture.isEmpty() ? 0 : picture.width() + distances.pictureGap;
    return std::max(1, width - 2 * distances.margin - beside);
}

int naturalWidth(const fittedNeeds &needs, int widestRow, const fittedDistances &distances)
{
    const auto lines = linesOf(needs.buttons, QWIDGETSIZE_MAX, distances.buttonGap);
    const int picture = needs.picture.isEmpty() ? 0 : needs.picture.width() + distances.pictureGap;
    return std::max(widestRow + picture, lines.empty() ? 0 : lines.front().width) + 2 * distances.margin;
}

fittedPlaces arranged(fittedNeeds needs, int width, int leastHeight, int mostHeight,
                      const fittedDistances &distances)
{
    const auto lines = linesOf(needs.buttons, width - 2 * distances.margin, distances.buttonGap);
    const int buttonHeight = lines.empty() ? 0 : lines.front().buttons.front().height();
    const int lineCount = static_cast<int>(lines.size());
    const int buttonsHeight = lineCount * (buttonHeight + distances.buttonGap) - distances.buttonGap;
    const int content = contentHeight(needs);
    int below = distances.margin;
    if (lineCount > 0)
        below += buttonsHeight + (content > 0 ? distances.aboveButtons : 0);
    lower(needs.rows, distances.margin + content + below - mostHeight);

    fittedPlaces places;
    places.height = distances.margin + contentHeight(needs) + below;
    const QPoint start(distances.margin, distances.margin);
    if (!needs.picture.isEmpty())
        places.picture = {start, needs.picture};
    const int rows = rowWidth(needs.picture, width, distances);
    QRect place(width - distances.margin - rows, start.y(), rows, 0);
    for (const fittedNeeds::row &row : needs.rows) {
        place.setHeight(row.height);
        places.rows.push_back(place);
        place.moveTop(place.top() + row.height + row.gapBelow);
    }
    int y = std::max(leastHeight, places.height) - distances.margin - buttonsHeight;
    for (const buttonLine &line : lines) {
        int x = width - distances.margin - line.width;
        for (const QSize &button : line.buttons) {
            places.buttons.emplace_back(QPoint(x, y), button);
            x += button.width() + distances.buttonGap;
        }
        y += buttonHeight + distances.buttonGap;
    }
    return places;
}
