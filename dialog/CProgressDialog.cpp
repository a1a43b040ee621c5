#include "dialog/CProgressDialog.h"

#include "dialog/dialogHost.h"
#include "dialog/fittedLayout.h"
#include "dialog/gridLayout.h"
#include "log/dump.h"
#include "widgets/appearance.h"
#include "widgets/progressButton.h"
#include "widgets/progressLabel.h"
#include "widgets/progressProcess.h"
#include "widgets/texts.h"
#include "widgets/theme.h"

#include <QCloseEvent>

#include <algorithm>
#include <utility>

namespace
{

/// The layout that the settings ask for.
std::unique_ptr<dialogLayout> newLayout(QWidget &window, dialogSlots &content)
{
    if (appearance.m_windowLayout == windowLayout::fitted)
        return std::make_unique<fittedLayout>(window, content);
    return std::make_unique<gridLayout>(window, content);
}

void copyLook(QWidget &to, const QWidget &from)
{
    to.setPalette(from.palette());
    to.setFont(from.font());
}

} // namespace

CProgressDialog::CProgressDialog(dialogHost &host)
    : QWidget(nullptr, appearance.m_dialog_flags), m_host(host), m_layout(newLayout(*this, *this)),
      m_run(*this, *this, *m_layout, host), m_input(*this, *this, *m_layout, m_run, host)
{
    connect(m_hideButton, &QPushButton::clicked, this, [this] { m_input.pressHide(); });
    for (int i = 0; i < maxButtons; ++i)
        connect(buttons[i], &QPushButton::clicked, this, [this, i] { m_input.press(i); });
    movePosition();
    setWindowTitle(literalTitle(appearance.m_windowTitle));
    installEventFilter(this);
    connect(&theme::instance(), &theme::changed, this, &CProgressDialog::takeColors);
}

CProgressDialog::~CProgressDialog()
{
    if (m_countsAsOpen || testAttribute(Qt::WA_WState_Visible))
        dump("---- destroying dialog while open", dumpIdentity(this));
}

void CProgressDialog::giveBack()
{
    m_run.stop();
    // What is still on its way to it finds no children any more.
    removeEventFilter(this);
    theme::instance().disconnect(this);
    m_layout->dropImages();
    destroy();
    static_cast<dialogSlots &>(*this) = {};
    qDeleteAll(findChildren<QWidget *>(Qt::FindDirectChildrenOnly));
}

void CProgressDialog::takeColors()
{
    m_layout->takeColors();
    for (auto *child : findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
        child->update();
    update();
}

bool CProgressDialog::takesKeyboard() const
{
    return !m_layout->takesDesktopKeys();
}

void CProgressDialog::movePosition()
{
    m_layout->movePosition();
}

void CProgressDialog::paintEvent(QPaintEvent *event)
{
    m_layout->paint(*event);
}

/// A close request just hides the window; the content stays.
void CProgressDialog::closeEvent(QCloseEvent *event)
{
    event->ignore();
    m_input.close();
}

bool CProgressDialog::eventFilter(QObject *obj, QEvent *ev)
{
    if (m_input.filter(obj, ev))
        return true;
    if (obj != this)
        return false;
    if (ev->type() == QEvent::LayoutRequest)
        m_layout->placeAgain();
    else if (ev->type() == QEvent::Resize)
        m_layout->takeResized();
    else if (ev->type() == QEvent::Show)
        buttons[0]->setFocus();
    return false;
}

/// The layout pass.
void CProgressDialog::ensureVisible()
{
    placeChildren();
    const bool inAction = hasContent();
    const bool isChanged = std::exchange(m_isActive, inAction) != inAction;
    m_run.takeContent();
    if (isChanged)
        m_host.progressVisibilityChanged(inAction);
}

void CProgressDialog::placeChildren()
{
    m_layout->place(m_run.isUnderWay());
    m_hideButton->setFocus();
    if (const bool *first = std::find(buttonVisible, buttonVisible + maxButtons, true);
        first != buttonVisible + maxButtons)
        buttons[first - buttonVisible]->setFocus();
}

void CProgressDialog::relayout()
{
    ensureVisible();
    m_run.updatePercent();
    update();
}

void CProgressDialog::createBar(int id, const QString &text)
{
    if (!hasRow(id))
        return;
    barVisible[id] = true;
    finished[id] = false;
    labels[id]->setText(text);
    bars[id]->setValue(0);
    bars[id]->setPalette(BAR_PALETTE);
    relayout();
}

void CProgressDialog::removeBar(int id)
{
    if (!isSlot(id))
        return;
    labelVisible[id] = false;
    barVisible[id] = false;
    leaveIfEmpty(id);
    relayout();
}

void CProgressDialog::createText(int id, const QString &text)
{
    if (!hasRow(id))
        return;
    labels[id]->setText(text);
    labelVisible[id] = true;
    finished[id] = false;
    relayout();
}

void CProgressDialog::updateText(int id, const QString &text)
{
    if (!hasRow(id))
        return;
    labels[id]->setText(text);
    m_layout->takeText(id);
}

void CProgressDialog::updateBar(int id, int percent)
{
    if (hasRow(id)) {
        if (percent == -1) {
            dump("   ++ progress bar would be canceled, value -1 given", 0);
            percent = 100;
        }
        bars[id]->setValue(percent);
    }
    m_run.updatePercent();
}

void CProgressDialog::pulseBar(int id)
{
    if (hasRow(id))
        bars[id]->pulse();
}

void CProgressDialog::finishSlot(int id)
{
    if (!isSlot(id))
        return;
    finished[id] = true;
    m_run.takeFinished();
}

void CProgressDialog::joinSlot(int id, int leaderId)
{
    if (!isSlot(id) || !isSlot(leaderId))
        return;
    join(id, leaderId);
    relayout();
}

void CProgressDialog::addButton(int id, const QString &text)
{
    if (!hasButton(id))
        return;
    buttons[id]->setText(text);
    buttonVisible[id] = true;
    finished[id] = false;
    ensureVisible();
    update();
}

void CProgressDialog::removeButton(int id)
{
    if (!isSlot(id))
        return;
    buttonVisible[id] = false;
    leaveIfEmpty(id);
    ensureVisible();
    update();
}

/// The children are placed without a look at what has appeared or vanished: nothing has.
void CProgressDialog::copyFromDialog(const CProgressDialog &src)
{
    for (int i = 0; i < MAX_ENTRIES; ++i)
        copySlot(i, src);
    m_layout->copyFrom(*src.m_layout);
    m_isActive = src.m_isActive;
    m_input.goOnFrom(src.m_input);
    placeChildren();
    m_run.goOnFrom(src.m_run);
}

void CProgressDialog::copySlot(int id, const CProgressDialog &src)
{
    finished[id] = src.finished[id];
    leader[id] = src.leader[id];
    coming[id] = src.coming[id];
    if (hasRow(id) && src.hasRow(id)) {
        labelVisible[id] = src.labelVisible[id];
        copyLook(*labels[id], *src.labels[id]);
        labels[id]->setText(src.labels[id]->text());
        barVisible[id] = src.barVisible[id];
        copyLook(*bars[id], *src.bars[id]);
        bars[id]->setValue(src.bars[id]->value());
        if (src.bars[id]->isPulsing())
            bars[id]->pulse();
    }
    if (hasButton(id) && src.hasButton(id)) {
        buttonVisible[id] = src.buttonVisible[id];
        copyLook(*buttons[id], *src.buttons[id]);
        buttons[id]->setText(src.buttons[id]->text());
    }
}
