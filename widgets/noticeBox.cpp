#include "widgets/noticeBox.h"

#include "widgets/literalTitle.h"
#include "widgets/scrolledText.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QScreen>

#include <bit>

namespace
{

/// Characters that no screen holds at once; the toolkit's label takes minutes to lay out megabytes.
constexpr qsizetype mostUnscrolled = 10'000;
/// Characters of a longer one that are its name for those who do not see it.
constexpr qsizetype nameLength = 500;
constexpr int scrolledWidth = 36; // em
constexpr int scrolledLines = 40;

bool isSingleButton(int code)
{
    return code >= QMessageBox::FirstButton && code <= QMessageBox::LastButton &&
           std::has_single_bit(static_cast<unsigned>(code));
}

/// The toolkit indents a text that has no icon beside it; a frame would stand askew.
void removeIndent(QLayout *layout)
{
    for (int i = 0; i < layout->count(); ++i) {
        if (QSpacerItem *spacer = layout->itemAt(i)->spacerItem())
            spacer->changeSize(0, 0);
    }
}

} // namespace

/// As markup the text could name files, which the toolkit would open and read whole, whatever they are.
noticeBox::noticeBox(const QString &title, const QString &text) : m_text(scrolledText::beginning(text))
{
    setWindowTitle(literalTitle(title.left(mostUnscrolled)));
    setTextFormat(Qt::PlainText);
    setText(m_text.left(isHopeless() ? nameLength : mostUnscrolled));
}

QPushButton *noticeBox::addStandard(int code)
{
    if (!isSingleButton(code))
        return nullptr;
    QPushButton *button = addButton(static_cast<StandardButton>(code));
    button->setIcon(QIcon());
    return button;
}

/// What the window manager draws around the window is not known before it is shown.
QSize noticeBox::roomOnScreen() const
{
    const int frame = 3 * fontMetrics().height();
    return screen()->availableSize() - QSize(frame, frame);
}

/// The toolkit computes the size when it is asked to lay out the box.
void noticeBox::updateSize()
{
    QEvent request(QEvent::LayoutRequest);
    QCoreApplication::sendEvent(this, &request);
}

/// Whether the text needs more room than there is, however it is laid out.
bool noticeBox::isHopeless() const
{
    return m_text.size() > mostUnscrolled ||
           m_text.count(u'\n') > roomOnScreen().height() / fontMetrics().lineSpacing();
}

bool noticeBox::fitsScreen()
{
    if (isHopeless())
        return false;
    updateSize();
    return height() <= roomOnScreen().height();
}

/// In the label's place. This holds only when the icon has been set, which sets up the layout anew.
void noticeBox::scrollText()
{
    auto *label = findChild<QLabel *>(QStringLiteral("qt_msgbox_label"));
    if (!label)
        return;
    m_scrolledText = new scrolledText(m_text, this);
    m_scrolledText->setMinimumWidth(qMin(scrolledWidth * fontMetrics().height(), roomOnScreen().width() / 2));
    m_scrolledText->setFixedHeight(m_scrolledText->heightOfLines(1));
    delete layout()->replaceWidget(label, m_scrolledText);
    label->hide();
    m_scrolledText->show();
    if (iconPixmap().isNull())
        removeIndent(layout());
}

/// Half the screen is enough to read in, and leaves the rest to be looked at; on large ones less will do.
void noticeBox::shareScreen()
{
    updateSize();
    const int room = roomOnScreen().height();
    const int others = height() - m_scrolledText->height();
    const int lines = qMin(room / 2, room - others) / fontMetrics().lineSpacing();
    m_scrolledText->setFixedHeight(m_scrolledText->heightOfLines(qBound(1, lines, scrolledLines)));
    updateSize();
}

/// The window exists by now, but is not on the screen yet.
void noticeBox::showEvent(QShowEvent *event)
{
    if (!m_scrolledText && !fitsScreen())
        scrollText();
    if (m_scrolledText)
        shareScreen();
    QMessageBox::showEvent(event);
}

/// (The toolkit tells of the end before it knows the button.)
void noticeBox::closeEvent(QCloseEvent *event)
{
    event->ignore();
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QMessageBox::keyPressEvent(&escape);
}

/// The keyboard belongs to the buttons, which have no use for the keys that turn pages.
void noticeBox::keyPressEvent(QKeyEvent *event)
{
    if (m_scrolledText && event->key() == Qt::Key_PageUp)
        m_scrolledText->turnPage(-1);
    else if (m_scrolledText && event->key() == Qt::Key_PageDown)
        m_scrolledText->turnPage(1);
    else
        QMessageBox::keyPressEvent(event);
}
