#include "widgets/progressLabel.h"

#include "widgets/appearance.h"
#include "widgets/markup.h"

#include <QCoreApplication>
#include <QPainter>
#include <QScrollBar>
#include <QtMath>

#include <algorithm>
#include <utility>

progressLabel::progressLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setAutoFillBackground(false);
    setFont(appearance.m_labelFont);
}

fittedLabel::fittedLabel(QWidget *parent) : progressLabel(parent)
{
    m_layout.setCacheEnabled(true);
}

/// Gives the layout the text, if it has changed.
void fittedLabel::takeText() const
{
    source wanted{text(), font(), appearance.m_windowMarkup == windowMarkup::on};
    if (wanted == m_source)
        return;
    m_source = std::move(wanted);
    m_layoutWidth = -1;
    const styledText styled =
        m_source.isMarkup ? fromMarkup(m_source.text, m_source.font) : styledText{m_source.text, {}};
    QTextOption option(styled.text.isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(directionOf(styled.text));
    m_layout.setTextOption(option);
    m_layout.setFont(m_source.font);
    m_layout.setText(QString(styled.text).replace(u'\n', QChar::LineSeparator));
    m_layout.setFormats(styled.formats);
}

/// As it is read, without markup.
QString fittedLabel::plainText() const
{
    takeText();
    return QString(m_layout.text()).replace(QChar::LineSeparator, u'\n');
}

QSize fittedLabel::sizeHint() const
{
    const int height = fontMetrics().lineSpacing();
    const QString plain = plainText();
    if (m_layout.formats().isEmpty())
        return {m_measured.width(plain, *this), height};
    layOut(QWIDGETSIZE_MAX);
    double widest = 0;
    for (int i = 0; i < m_layout.lineCount(); ++i)
        widest = std::max(widest, m_layout.lineAt(i).naturalTextWidth());
    return {qCeil(widest), height};
}

/// Lines are as high as the font asks for, or more where they hold something larger.
void fittedLabel::layOut(int width) const
{
    takeText();
    if (width == m_layoutWidth)
        return;
    m_layoutWidth = width;
    double y = 0;
    m_layout.beginLayout();
    for (QTextLine line = m_layout.createLine(); line.isValid(); line = m_layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, y});
        if (line.textLength() > 0) // behind the last line feed there is none
            y += std::max<double>(fontMetrics().lineSpacing(), qCeil(line.height()));
    }
    m_layout.endLayout();
    m_layoutHeight = std::max(qCeil(y), fontMetrics().lineSpacing());
}

int fittedLabel::heightFor(int width) const
{
    layOut(width);
    return m_layoutHeight;
}

int fittedLabel::keptHeightFor(int width)
{
    const int line = fontMetrics().lineSpacing();
    // A text that its user has made wider needs fewer lines, and no gap below them.
    if (std::exchange(m_keptWidth, width) != width)
        forgetHeight();
    m_keptLines = std::max(m_keptLines, static_cast<double>(heightFor(width)) / line);
    return qRound(m_keptLines * line);
}

void fittedLabel::takePlace(const QRect &place)
{
    setGeometry(place);
    setAccessibleName(appearance.m_windowMarkup == windowMarkup::on ? plainText() : QString());
    m_scrolls = heightFor(width()) > height();
    if (m_scrolls && !m_scroll) {
        m_scroll = new QScrollBar(Qt::Vertical, this);
        connect(m_scroll, &QScrollBar::valueChanged, this, qOverload<>(&QWidget::update));
    }
    if (!m_scroll)
        return;
    m_scroll->setVisible(m_scrolls);
    if (!m_scrolls)
        return m_scroll->setRange(0, 0);
    const int barWidth = m_scroll->sizeHint().width();
    m_scroll->setGeometry(width() - barWidth, 0, barWidth, height());
    m_scroll->setPageStep(height());
    m_scroll->setSingleStep(fontMetrics().lineSpacing());
    m_scroll->setRange(0, std::max(0, heightFor(m_scroll->x()) - height()));
}

void fittedLabel::wheelEvent(QWheelEvent *event)
{
    if (m_scrolls)
        QCoreApplication::sendEvent(m_scroll, event);
    else
        event->ignore();
}

void fittedLabel::paintEvent(QPaintEvent *)
{
    layOut(m_scrolls ? m_scroll->x() : width());
    paintText(*this, QPalette::WindowText, text(), [this](QPainter &painter) {
        m_layout.draw(&painter, QPointF(0, m_scrolls ? -m_scroll->value() : 0), {}, rect());
    });
}
