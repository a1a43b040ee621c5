#include "widgets/texts.h"

#include <QFontMetrics>
#include <QHelpEvent>
#include <QImage>
#include <QPainter>
#include <QStringTokenizer>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>

namespace
{

QString toolTipText(const QString &text)
{
    constexpr qsizetype longestLine = 80;
    QStringList lines;
    for (const QStringView paragraph : QStringTokenizer(text, u'\n')) {
        qsizetype start = 0;
        do {
            qsizetype length = std::min(longestLine, paragraph.size() - start);
            if (start + length < paragraph.size() && paragraph[start + length].isLowSurrogate())
                ++length;
            lines << paragraph.sliced(start, length).toString().toHtmlEscaped();
            start += length;
        } while (start < paragraph.size());
    }
    return QStringLiteral("<p style='white-space:pre'>") + lines.join(QStringLiteral("<br>")) +
           QStringLiteral("</p>");
}

} // namespace

QString withBreaks(const QString &text, const QFont &font, int width)
{
    constexpr QChar zeroWidthSpace(0x200b);
    QTextLayout layout(QString(text).replace(u'\n', QChar::LineSeparator), font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    QString result;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        result += QStringView(text).mid(line.textStart(), line.textLength());
        if (!result.isEmpty() && !result.back().isSpace())
            result += zeroWidthSpace;
    }
    layout.endLayout();
    return result;
}

Qt::LayoutDirection directionOf(const QString &text)
{
    return text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
}

void paintText(QWidget &widget, QPalette::ColorRole color, const QString &text,
               const std::function<void(QPainter &)> &paint)
{
    constexpr char16_t eastAsia = 0x2e80;
    const QColor pen = widget.window()->palette().color(color);
    if (std::none_of(text.begin(), text.end(), [](QChar letter) { return letter >= eastAsia; })) {
        QPainter painter(&widget);
        painter.setPen(pen);
        return paint(painter);
    }
    constexpr double inchesAMetre = 1 / 0.0254;
    static QImage layer;
    if (layer.size() != layer.size().expandedTo(widget.size()))
        layer = QImage(layer.size().expandedTo(widget.size()), QImage::Format_ARGB32_Premultiplied);
    layer.setDotsPerMeterX(qRound(widget.logicalDpiX() * inchesAMetre));
    layer.setDotsPerMeterY(qRound(widget.logicalDpiY() * inchesAMetre));
    QPainter painter(&layer);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(widget.rect(), Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setClipRect(widget.rect());
    painter.setFont(widget.font());
    painter.setPen(pen);
    paint(painter);
    painter.end();
    QPainter(&widget).drawImage(QPoint(), layer, widget.rect());
}

QFont scaledFont(QFont font, double factor)
{
    if (factor != 1 && font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else if (factor != 1)
        font.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * factor)));
    return font;
}

int measuredText::width(const QString &text, const QWidget &widget, int flags)
{
    if (m_width >= 0 && text == m_text && widget.font() == m_font)
        return m_width;
    m_text = text;
    m_font = widget.font();
    // So large that fitting the letters to whole pixels makes no difference.
    constexpr int magnification = 8;
    const QFont large = scaledFont(m_font, magnification);
    const int evenWidth = QFontMetrics(large, &widget).size(flags, text).width();
    m_width = std::max(QFontMetrics(m_font, &widget).size(flags, text).width(),
                       (evenWidth + magnification - 1) / magnification);
    return m_width;
}

void showToolTip(const QEvent &event, QWidget &widget, const QString &text, bool isCut)
{
    QToolTip::showText(static_cast<const QHelpEvent &>(event).globalPos(),
                       isCut ? toolTipText(text) : QString(), &widget);
}

QString literalTitle(const QString &title)
{
    return QString(title).replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
}

QAbstractSlider::SliderAction scrollAction(int key)
{
    switch (key) {
    case Qt::Key_PageUp:
        return QAbstractSlider::SliderPageStepSub;
    case Qt::Key_PageDown:
        return QAbstractSlider::SliderPageStepAdd;
    case Qt::Key_Home:
        return QAbstractSlider::SliderToMinimum;
    case Qt::Key_End:
        return QAbstractSlider::SliderToMaximum;
    default:
        return QAbstractSlider::SliderNoAction;
    }
}
