#include "widgets/scrolledText.h"

#include "language/language.h"
#include "widgets/texts.h"

#include <QScrollBar>
#include <QTextCursor>
#include <QTextDocument>
#include <QtMath>

namespace
{

constexpr qsizetype mostCharacters = 100'000;
/// What is laid out at a time.
constexpr qsizetype partCharacters = 4'000;
constexpr int partLines = 50;

/// Where the part that starts at `start` ends: behind a line, or in the middle of a long one.
qsizetype endOfPart(const QString &text, qsizetype start)
{
    const qsizetype most = qMin(start + partCharacters, text.size());
    qsizetype end = start;
    for (int line = 0; line < partLines; ++line) {
        const qsizetype next = text.indexOf(u'\n', end) + 1;
        if (next == 0 || next > most)
            return end > start ? end : most;
        end = next;
    }
    return end;
}

} // namespace

QString scrolledText::beginning(const QString &text)
{
    if (text.size() <= mostCharacters)
        return text;
    const QString note =
        translated("[… the first %1 of %2 characters]", static_cast<unsigned long>(text.size()));
    return text.left(mostCharacters) + u'\n' + note.arg(mostCharacters).arg(text.size());
}

bool scrolledText::hasHeading(const QString &text)
{
    const qsizetype feed = text.indexOf(u'\n');
    return feed > 0 && !QStringView(text).sliced(feed).trimmed().isEmpty();
}

scrolledText::scrolledText(const QString &text, QWidget *parent) : QPlainTextEdit(parent), m_text(text)
{
    setUndoRedoEnabled(false);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    setFocusPolicy(Qt::ClickFocus);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QTextOption option = document()->defaultTextOption();
    option.setAlignment(text.isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft);
    document()->setDefaultTextOption(option);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    // Not every way of scrolling makes the bar tell its value.
    connect(this, &QPlainTextEdit::updateRequest, this, &scrolledText::fill, Qt::QueuedConnection);
}

/// Below the last line there is no margin while the text goes on.
int scrolledText::heightOfLines(int count) const
{
    return count * fontMetrics().lineSpacing() + qCeil(document()->documentMargin()) + 2 * frameWidth();
}

bool scrolledText::scroll(int key)
{
    const QAbstractSlider::SliderAction action = scrollAction(key);
    while (action == QAbstractSlider::SliderToMaximum && m_shown < m_text.size())
        addPart();
    verticalScrollBar()->triggerAction(action);
    return action != QAbstractSlider::SliderNoAction;
}

void scrolledText::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    fill();
}

/// A page more than is seen is laid out.
void scrolledText::fill()
{
    const QScrollBar *bar = verticalScrollBar();
    while (m_shown < m_text.size() && bar->maximum() - bar->value() < bar->pageStep())
        addPart();
}

void scrolledText::addPart()
{
    const qsizetype end = endOfPart(m_text, m_shown);
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    if (m_shown == 0 && hasHeading(m_text)) {
        QTextCharFormat bold;
        bold.setFontWeight(QFont::Bold);
        m_shown = std::min(end, m_text.indexOf(u'\n'));
        cursor.insertText(m_text.left(m_shown), bold);
    }
    cursor.insertText(m_text.mid(m_shown, end - m_shown), QTextCharFormat());
    m_shown = end;
}
