#include "widgets/noticeBox.h"

#include "language/language.h"
#include "widgets/appearance.h"
#include "widgets/boxIcon.h"
#include "widgets/imageFile.h"
#include "widgets/scrolledText.h"
#include "widgets/texts.h"
#include "widgets/theme.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QScreen>

#include <bit>
#include <memory>
#include <optional>

namespace
{

/// Characters that no screen holds at once; the toolkit's label takes minutes to lay out megabytes.
constexpr qsizetype mostUnscrolled = 10'000;
/// Characters of a longer one that are its name for those who do not see it.
constexpr qsizetype nameLength = 500;
constexpr int readableWidth = 36; // em
constexpr int scrolledLines = 40;
/// What a window manager draws around a window, before that is on the screen.
constexpr int titleLines = 3;
constexpr double pictureSize = 3; // em
/// The toolkit's own bound for the width of a box, in pixels of a usual screen.
constexpr int toolkitsWidth = 500;
constexpr int usualDpi = 96;

/// The markup for a text with a bold first line. Whatever stands in the text is shown as it came.
QString withHeading(const QString &text)
{
    const qsizetype feed = text.indexOf(u'\n');
    return QStringLiteral("<div style='white-space:pre-wrap'><b>%1</b>%2</div>")
        .arg(text.left(feed).toHtmlEscaped(),
             text.sliced(feed).toHtmlEscaped().replace(u'\n', QLatin1String("<br>")));
}

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

/// The widgets of a layout, which is empty afterwards.
QList<QWidget *> taken(QLayout &layout)
{
    QList<QWidget *> widgets;
    while (const std::unique_ptr<QLayoutItem> item{layout.takeAt(0)}) {
        if (item->widget())
            widgets << item->widget();
    }
    return widgets;
}

/// Breaks the one line of buttons, in the order that they have in it, into lines of at most `width` pixels,
/// each at the right. It does so once: a box of several lines stays as it is. The toolkit makes one line
/// again when a button is added or the style changes.
void wrapButtons(QDialogButtonBox &box, int width)
{
    auto *lines = qobject_cast<QBoxLayout *>(box.layout());
    if (!lines || lines->direction() == QBoxLayout::TopToBottom)
        return;
    const QList<QWidget *> buttons = taken(*lines);
    lines->setDirection(QBoxLayout::TopToBottom);
    QBoxLayout *line = nullptr;
    int left = 0;
    for (QWidget *button : buttons) {
        const int needed = button->minimumSizeHint().width();
        if (!line || needed > left) {
            line = new QHBoxLayout;
            lines->addLayout(line);
            line->addStretch();
            left = width;
        }
        line->addWidget(button);
        left -= needed + lines->spacing();
    }
    box.updateGeometry();
}

} // namespace

/// As markup the text could name files, which the toolkit would open and read whole, whatever they are.
noticeBox::noticeBox(const QString &title, const QString &text) : m_text(scrolledText::beginning(text))
{
    setWindowTitle(literalTitle(title.left(mostUnscrolled)));
    // That of the buttons' language; each text has its own.
    setLayoutDirection(directionOf(translated("Cancel")));
    if (appearance.m_windowLayout == windowLayout::fitted) {
        setWindowIcon(fittedIcon());
        if (appearance.m_scale != 1)
            setFont(scaledFont(font(), appearance.m_scale));
    }
    showText(m_text.left(isHopeless() ? nameLength : mostUnscrolled));
    takeColors();
    connect(&theme::instance(), &theme::changed, this, &noticeBox::takeColors);
}

/// Screen readers get it as it came.
void noticeBox::showText(const QString &text)
{
    const bool isStyled = scrolledText::hasHeading(text);
    setTextFormat(isStyled ? Qt::RichText : Qt::PlainText);
    setText(isStyled ? withHeading(text) : text);
    if (QLabel *const shown = label())
        shown->setAccessibleName(isStyled ? m_text.left(mostUnscrolled) : QString());
}

void noticeBox::setPicture(int icon)
{
    setIconPixmap(boxIcon(icon, emLength(*this)(pictureSize)));
}

void noticeBox::takeColors()
{
    if (const std::optional<QPalette> colors = boxPalette())
        setPalette(*colors);
}

QPushButton *noticeBox::addStandard(int code)
{
    if (!isSingleButton(code))
        return nullptr;
    QPushButton *button = addButton(static_cast<StandardButton>(code));
    button->setIcon(QIcon());
    return button;
}

QSize noticeBox::roomOnScreen() const
{
    const int frame = titleLines * fontMetrics().height();
    return screen()->availableSize() - QSize(frame, frame);
}

QLabel *noticeBox::label() const
{
    return findChild<QLabel *>(QStringLiteral("qt_msgbox_label"));
}

/// Of a column of text, in pixels.
int noticeBox::columnWidth() const
{
    return qMin(readableWidth * fontMetrics().height(), roomOnScreen().width() / 2);
}

/// The toolkit computes the size when it is asked to lay out the box. It allows itself 500 pixels, or up to
/// 1,000 for a long word, however dense the screen is, and cuts off what needs more.
void noticeBox::useToolkitSize()
{
    QEvent request(QEvent::LayoutRequest);
    QMessageBox::event(&request);
}

void noticeBox::updateSize()
{
    useToolkitSize();
    widen();
}

/// The width without wraps, within the toolkit's bound as it is meant for a screen of this density.
int noticeBox::roomyWidth() const
{
    QLabel *const shown = label();
    if (m_scrolledText || !shown || !shown->wordWrap())
        return 0;
    const int others = width() - shown->width();
    const int most = qMin(toolkitsWidth * logicalDpiX() / usualDpi, screen()->availableSize().width() / 2);
    shown->setWordWrap(false);
    const int natural = others + shown->sizeHint().width();
    shown->setWordWrap(natural > most);
    return qMin(natural, most);
}

/// Tells whether it has to.
bool noticeBox::widen()
{
    const int most = roomOnScreen().width();
    const auto needed = [this] { return layout()->totalMinimumSize().width(); };
    if (auto *buttons = findChild<QDialogButtonBox *>(); buttons && needed() > most) {
        const QMargins margins = layout()->contentsMargins();
        wrapButtons(*buttons, most - margins.left() - margins.right());
    }
    const int wanted = qMax(roomyWidth(), needed());
    if (!m_isWidened && wanted <= width())
        return false;
    m_isWidened = true;
    const int wider = qMin(qMax(wanted, width()), most);
    setFixedSize(wider, layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(wider)
                                                      : layout()->totalMinimumSize().height());
    return true;
}

/// Where the toolkit's size would cut a long word off. Screen readers get the text as it came.
void noticeBox::breakLongWords()
{
    useToolkitSize();
    QLabel *const shown = label();
    if (!shown)
        return;
    const int others = width() - shown->width();
    if (others + shown->minimumSizeHint().width() <= qMin(width(), roomOnScreen().width()))
        return;
    QFont widest = shown->font();
    widest.setBold(scrolledText::hasHeading(m_text));
    showText(withBreaks(m_text, widest, columnWidth()));
    shown->setAccessibleName(m_text);
}

/// Below the window, above it, or at its side, wherever the screen's work area has room first.
void noticeBox::moveAside()
{
    if (m_clearOf.isEmpty())
        return;
    const int frame = titleLines * fontMetrics().height();
    const int gap = fontMetrics().height() / 2;
    const QRect room = screen()->availableGeometry();
    QRect place(QPoint(), size() + QSize(gap, frame));
    place.moveCenter(m_clearOf.center());
    place.moveLeft(qBound(room.left(), place.left(), room.right() - place.width() + 1));
    place.moveTop(m_clearOf.bottom() + gap);
    if (!room.contains(place))
        place.moveBottom(m_clearOf.top() - gap);
    for (const int x : {m_clearOf.right() + gap, m_clearOf.left() - gap - place.width()}) {
        if (room.contains(place))
            break;
        place.moveCenter(m_clearOf.center());
        place.moveLeft(x);
        place.moveTop(qMax(room.top(), qMin(place.top(), room.bottom() - place.height() + 1)));
    }
    if (room.contains(place))
        move(place.topLeft() + QPoint(gap / 2, frame - gap / 2));
}

/// Whether the text needs more room than there is, however it is laid out.
bool noticeBox::isHopeless() const
{
    return m_text.size() > mostUnscrolled ||
           m_text.count(u'\n') > roomOnScreen().height() / fontMetrics().lineSpacing();
}

/// Once its long words are broken.
bool noticeBox::fitsScreen()
{
    if (isHopeless())
        return false;
    breakLongWords();
    updateSize();
    return height() <= roomOnScreen().height();
}

/// In the label's place. This holds only when the icon has been set, which sets up the layout anew.
void noticeBox::scrollText()
{
    QLabel *const toolkits = label();
    if (!toolkits)
        return;
    m_scrolledText = new scrolledText(m_text, this);
    m_scrolledText->setMinimumWidth(columnWidth());
    m_scrolledText->setFixedHeight(m_scrolledText->heightOfLines(1));
    delete layout()->replaceWidget(toolkits, m_scrolledText);
    toolkits->hide();
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
    if (widen()) {
        // Into the middle again; the box's own part would compute its size anew.
        // NOLINTNEXTLINE(bugprone-parent-virtual-call)
        QDialog::showEvent(event);
    }
    moveAside();
}

/// What makes the toolkit compute its size anew. A window that is seen must not flicker between that and
/// ours. (The toolkit's part of any other event may be the box's end.)
bool noticeBox::event(QEvent *event)
{
    const QEvent::Type type = event->type();
    const bool isLayout = type == QEvent::LayoutRequest;
    if (!isLayout && type != QEvent::FontChange && type != QEvent::StyleChange)
        return QMessageBox::event(event);
    const bool isDone = (isLayout && m_isWidened) || QMessageBox::event(event);
    if (isVisible())
        widen();
    return isDone;
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
    if (m_scrolledText && m_scrolledText->scroll(event->key()))
        return;
    if (event->matches(QKeySequence::Copy))
        QGuiApplication::clipboard()->setText(m_text);
    else
        QMessageBox::keyPressEvent(event);
}
