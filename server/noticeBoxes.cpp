#include "server/noticeBoxes.h"

#include "dialog/CProgressDialog.h"
#include "server/activeDialog.h"
#include "server/windowOrder.h"
#include "widgets/appearance.h"
#include "widgets/noticeBox.h"
#include "wire/words.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPushButton>

namespace
{

/// More boxes than this at a time nobody can answer.
constexpr qsizetype maxOpenBoxes = 32;

struct question {
    noticeBox *box;
    /// Maps the code of the button that was clicked, 0 for none, to that of the answer.
    std::function<quint32(quint32)> answerTo;
};

question assertionBox(const QString &message)
{
    auto *box = new noticeBox(QStringLiteral("Zerbak Quillet Assertion"), message);
    for (const auto button :
         {QMessageBox::Yes, QMessageBox::Save, QMessageBox::YesToAll, QMessageBox::Retry, QMessageBox::Abort})
        box->addStandard(button);
    return {box, [message](quint32 clicked) -> quint32 {
                if (clicked != quint32{QMessageBox::Save})
                    return clicked;
                if (QClipboard *clipboard = QGuiApplication::clipboard())
                    clipboard->setText(message);
                return QMessageBox::Yes;
            }};
}

question describedBox(const QString &description)
{
    QStringList fields = description.split(QString::fromLatin1(wire::fieldSeparator));
    const QStringList buttonFields = fields.mid(3, wire::mostButtons);
    fields.resize(3);
    auto *box = new noticeBox(fields[1], fields[2]);
    box->setPicture(fields[0].toInt());

    for (const QString &field : buttonFields) {
        // Besides the button's code it holds, in two bits, what else that is.
        const int number = field.toInt();
        QPushButton *button = box->addStandard(number & QMessageBox::ButtonMask);
        if (button && number & QMessageBox::Default)
            box->setDefaultButton(button);
    }
    const bool hasNone = box->buttons().isEmpty();
    if (hasNone)
        box->addStandard(QMessageBox::Ok);
    return {box, [hasNone](quint32 clicked) { return hasNone ? 0 : clicked; }};
}

} // namespace

noticeBoxes::noticeBoxes(activeDialog &active, windowOrder &order) : m_active(active), m_order(order) {}

void noticeBoxes::open(messageKind kind, const QString &text, const answerFunction &answer,
                       const QObject *waiting)
{
    if (m_open.size() >= maxOpenBoxes)
        return answer(0);
    const auto [box, answerTo] = kind == messageKind::assertion ? assertionBox(text) : describedBox(text);
    box->setWindowFlag(Qt::WindowStaysOnTopHint);
    connect(box, &QDialog::finished, this, [this, box = box, answerTo = answerTo, answer] {
        const quint32 result = answerTo(box->standardButton(box->clickedButton()));
        close(box);
        answer(result);
    });
    if (waiting)
        connect(waiting, &QObject::destroyed, box, [this, box = box] {
            if (m_open.contains(box))
                box->done(0);
        });
    m_active.cancelRun();
    if (appearance.m_windowLayout == windowLayout::fitted && m_active.isShown())
        box->keepClearOf(m_active.dialog()->frameGeometry());
    m_open.append(box);
    m_order.openBox(box, m_active.dialog());
    m_active.setUrgent(true);
}

void noticeBoxes::close(QMessageBox *box)
{
    m_open.removeOne(box);
    box->deleteLater();
    m_active.cancelRun();
    m_order.closeBox(box, m_active.dialog());
    m_active.setUrgent(m_order.boxIsOpen());
}

void noticeBoxes::dismiss()
{
    while (!m_open.isEmpty()) {
        QMessageBox *box = m_open.constLast();
        box->done(0);
        delete box;
    }
}
