#include "server/receiver.h"

#include "dialog/CProgressDialog.h"
#include "widgets/literalTitle.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QTcpSocket>
#include <QtEndian>

#include <utility>

namespace
{

/// A button field holds a button's code and, in these bits, what else it is.
constexpr int defaultFlag = QMessageBox::Default;
constexpr int escapeFlag = QMessageBox::Escape;
constexpr size_t maxButtonFields = 10;
/// More boxes than this at a time nobody can answer.
constexpr qsizetype maxOpenBoxes = 32;
/// Answers that may wait in a channel whose client does not read, in bytes.
constexpr qint64 maxUnreadAnswers = 1024 * 1024;

/// Characters of a title or text that are shown; a screen holds less, and the toolkit takes minutes to lay
/// out megabytes.
constexpr qsizetype longestText = 10'000;

/// Closing the window is what Escape is. (The toolkit tells of the end before it knows the button.)
class noticeBox : public QMessageBox
{
protected:
    void closeEvent(QCloseEvent *event) override
    {
        event->ignore();
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        keyPressEvent(&escape);
    }
};

/// The text is shown as it came. As markup it could name files, which the toolkit would open and read whole,
/// whatever they are.
QMessageBox *newBox(const QString &title, const QString &text)
{
    auto *box = new noticeBox;
    box->setWindowTitle(literalTitle(title.left(longestText)));
    box->setTextFormat(Qt::PlainText);
    box->setText(text.left(longestText));
    return box;
}

} // namespace

void receiver::doAssertion(const QString &message)
{
    if (refuseBox())
        return;
    QMessageBox *box = newBox(QStringLiteral("Zerbak Quillet Assertion"), message);
    for (const auto button :
         {QMessageBox::Yes, QMessageBox::Save, QMessageBox::YesToAll, QMessageBox::Retry, QMessageBox::Abort})
        box->addButton(button);

    openBox(box, [box, message](const QAbstractButton *clicked) -> quint32 {
        if (!clicked)
            return 0;
        const auto button = box->standardButton(const_cast<QAbstractButton *>(clicked));
        if (button != QMessageBox::Save)
            return static_cast<quint32>(button);
        if (QClipboard *clipboard = QGuiApplication::clipboard())
            clipboard->setText(message);
        return QMessageBox::Yes;
    });
}

void receiver::doMessage(const QString &description)
{
    if (refuseBox())
        return;
    QStringList fields = description.split(QStringLiteral("[#]"));
    const QStringList buttonFields = fields.mid(3, maxButtonFields);
    fields.resize(3);
    QMessageBox *box = newBox(fields[1], fields[2]);
    box->setIcon(static_cast<QMessageBox::Icon>(fields[0].toInt()));

    QList<std::pair<QPushButton *, int>> buttons;
    for (const QString &field : buttonFields) {
        const int number = field.toInt();
        const int code = number & ~(defaultFlag | escapeFlag);
        QPushButton *button = box->addButton(static_cast<QMessageBox::StandardButton>(code));
        if (!button || box->buttonRole(button) == QMessageBox::InvalidRole)
            continue;
        buttons.append({button, code});
        if (number & defaultFlag)
            box->setDefaultButton(button);
    }
    if (buttons.isEmpty())
        box->addButton(QMessageBox::Ok);

    openBox(box, [buttons](const QAbstractButton *clicked) -> quint32 {
        for (const auto &[button, code] : buttons) {
            if (button == clicked)
                return static_cast<quint32>(code);
        }
        return 0;
    });
}

/// Opens the box without a nested event loop: everything else goes on, and boxes can be answered in any
/// order. The box blocks no window of the toolkit's; the dialog and the busy window ask `boxIsOpen()`.
void receiver::openBox(QMessageBox *box, const answerCode &code)
{
    const QPointer<QTcpSocket> asker = m_client;
    box->setWindowFlags(box->windowFlags() | Qt::WindowStaysOnTopHint);
    connect(box, &QDialog::finished, this,
            [this, box, asker, code] { boxAnswered(box, asker, code(box->clickedButton())); });
    cancelRun();
    m_openBoxes.append(box);
    box->open();
    keepBoxesInFront();
}

void receiver::boxAnswered(QMessageBox *box, QTcpSocket *asker, quint32 code)
{
    m_openBoxes.removeOne(box);
    box->deleteLater();
    answer(asker, code);
    cancelRun();
    if (boxIsOpen())
        m_openBoxes.constLast()->activateWindow();
    else if (dialogBypassesManager() && m_progress->isVisible()) {
        // It has given way to the boxes, and nobody else hands it the keyboard.
        m_progress->raise();
        m_progress->activateWindow();
    }
    // The messages behind the box's have waited for its answer.
    QMetaObject::invokeMethod(this, &receiver::dispatch, Qt::QueuedConnection);
}

void receiver::answer(QTcpSocket *asker, quint32 code)
{
    if (!asker || !asker->isOpen() || asker->bytesToWrite() > maxUnreadAnswers)
        return;
    asker->write(reinterpret_cast<const char *>(&code), sizeof code);
    asker->flush();
}

/// While as many boxes are open as can be, further ones are answered with 0 at once.
bool receiver::refuseBox()
{
    if (m_openBoxes.size() < maxOpenBoxes)
        return false;
    answer(m_client, 0);
    return true;
}

/// The user's time in front of a box is not the run's: such a run is not worth learning.
void receiver::cancelRun()
{
    if (m_progress)
        m_progress->willCancel();
}

bool receiver::dialogBypassesManager()
{
    return m_progress && m_progress->windowFlags().testFlag(Qt::X11BypassWindowManagerHint);
}

/// A dialog that bypasses the window manager lies above all managed windows, boxes included, so it gives
/// way; any other is simply behind the boxes.
void receiver::keepBoxesInFront()
{
    if (dialogBypassesManager())
        m_progress->lower();
    for (QMessageBox *box : std::as_const(m_openBoxes))
        box->raise();
}

/// Answers every open box with 0, as a box that is closed without a button.
void receiver::dismissBoxes()
{
    while (boxIsOpen()) {
        QMessageBox *box = m_openBoxes.constLast();
        box->done(0);
        delete box;
    }
}
