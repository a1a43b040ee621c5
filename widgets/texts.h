#pragma once

#include <QAbstractSlider>
#include <QFont>
#include <QString>

#include <functional>

/// `text` with an invisible place to break a line in each word that is wider than `width` pixels, so that no
/// part of it is.
QString withBreaks(const QString &text, const QFont &font, int width);

/// The direction that a text is read in, its lines and an ellipsis in them included.
Qt::LayoutDirection directionOf(const QString &text);

/// Has `paint` draw `text` on a widget, with its font and the colour of text on the panel or on buttons, at
/// one weight in light and dark colours. Letters with cubic outlines, which the fonts of East Asia have, are
/// blended with a gamma, thinner when they are dark and heavier when they are light, but on opaque ground
/// alone: such a text is drawn apart.
void paintText(QWidget &widget, QPalette::ColorRole color, const QString &text,
               const std::function<void(QPainter &)> &paint);

/// Answers a ToolTip event of a widget whose text is `text`: shows all of it, without markup and in lines of
/// a length that screens have, where the widget itself `isCut`.
void showToolTip(const QEvent &event, QWidget &widget, const QString &text, bool isCut);

/// The width of a text, measured only when the text or the font is another than the last time: every layout
/// pass asks for all widths.
class measuredText
{
public:
    /// Pixels that the widest line of `text` needs in the widget's font: on a screen twice as dense twice as
    /// many, although letters are fitted to whole pixels. With `Qt::TextShowMnemonic` in `flags`, "&" takes
    /// no room.
    int width(const QString &text, const QWidget &widget, int flags = 0);

private:
    QString m_text;
    QFont m_font;
    int m_width = -1;
};

/// What to give the toolkit so that a window has this title, from which "[*]" would vanish.
QString literalTitle(const QString &title);

/// What a key that turns pages (Page Up, Page Down, Home, End) does to a scroll bar; nothing for any other.
QAbstractSlider::SliderAction scrollAction(int key);

QFont scaledFont(QFont font, double factor);

/// Lengths in em of a font, as pixels of the screen that `device` is on: a screen twice as dense shows the
/// same picture twice as large.
class emLength
{
public:
    emLength(const QFont &font, const QWidget &device)
        : m_pixels(font.pointSizeF() > 0 ? font.pointSizeF() * device.logicalDpiY() / pointsAnInch
                                         : font.pixelSize())
    {
    }
    /// In em of the widget's own font.
    explicit emLength(const QWidget &widget) : emLength(widget.font(), widget) {}

    int operator()(double ems) const { return qRound(ems * m_pixels); }
    double exact(double ems) const { return ems * m_pixels; }

private:
    static constexpr double pointsAnInch = 72;
    double m_pixels;
};
