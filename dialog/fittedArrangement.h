#pragma once

#include <QRect>
#include <QSize>

#include <vector>

class emLength;

/// The distances of the fitted layout, in pixels.
struct fittedDistances {
    explicit fittedDistances(const emLength &em);

    int margin;
    int row;
    int captionToBar; ///< from a text to the bar that it stands above
    int aboveButtons;
    int buttonGap;
    int pictureGap;
};

/// What is to be shown, in pixels.
struct fittedNeeds {
    struct row {
        int height;
        int leastHeight; ///< less than the height where the row can scroll
        int gapBelow;    ///< to the next row
    };

    std::vector<row> rows;
    std::vector<QSize> buttons; ///< none is wider than the content
    QSize picture;              ///< at the left of the rows; empty for none
};

/// The places for it, relative to the window.
struct fittedPlaces {
    std::vector<QRect> rows;
    std::vector<QRect> buttons;
    QRect picture;
    int height = 0; ///< of the window, before it is stretched
};

/// The width that is left for rows in a window of `width` pixels.
int rowWidth(const QSize &picture, int width, const fittedDistances &distances);

/// The width of a window for such rows and all buttons in one line.
int naturalWidth(const fittedNeeds &needs, int widestRow, const fittedDistances &distances);

/// Places everything in a window of `width` pixels: rows below each other, buttons in lines from left to
/// right, each at the right, at the bottom of a window of at least `leastHeight` pixels. Where the height
/// would be more than `mostHeight`, rows that can scroll give way, the highest first; it is more all the same
/// when they cannot.
fittedPlaces arranged(fittedNeeds needs, int width, int leastHeight, int mostHeight,
                      const fittedDistances &distances);
