#include "dialog/CProgressDialog.h"

#include "dialog/dialogHost.h"
#include "dialog/dialogLayout.h"
#include "log/dump.h"
#include "widgets/appearance.h"
#include "widgets/progressButton.h"
#include "widgets/progressLabel.h"
#include "widgets/progressProcess.h"

CProgressDialog::~CProgressDialog()
{
    if (m_countsAsOpen || testAttribute(Qt::WA_WState_Visible))
        dump("---- destroying dialog while open", dumpIdentity(this));
}

bool CProgressDialog::hasRow(int id) const
{
    return id >= 0 && id < MAX_ENTRIES && labels[id] && bars[id];
}

bool CProgressDialog::hasButton(int id) const
{
    return id >= 0 && id < MAX_ENTRIES && buttons[id];
}

void CProgressDialog::relayout()
{
    ensureVisible();
    updatePercent();
    update();
}

void CProgressDialog::createBar(int id, const QString &text)
{
    if (!hasRow(id))
        return;
    barVisible[id] = true;
    finished[id] = false;
    labels[id]->setText(text);
    bars[id]->reset();
    bars[id]->setValue(0);
    bars[id]->setPalette(BAR_PALETTE);
    relayout();
}

void CProgressDialog::removeBar(int id)
{
    clearRow(id);
}

int CProgressDialog::createText(int id, const QString &text)
{
    if (hasRow(id)) {
        labels[id]->setText(text);
        labelVisible[id] = true;
        finished[id] = false;
        relayout();
    }
    return id;
}

void CProgressDialog::updateText(int id, const QString &text)
{
    if (!hasRow(id))
        return;
    labels[id]->setText(text);
    m_layout->takeText(id);
}

void CProgressDialog::removeText(int id)
{
    clearRow(id);
}

void CProgressDialog::clearRow(int id)
{
    if (id < 0 || id >= MAX_ENTRIES)
        return;
    labelVisible[id] = false;
    barVisible[id] = false;
    leaveIfEmpty(id);
    relayout();
}

void CProgressDialog::finishSlot(int id)
{
    if (id < 0 || id >= MAX_ENTRIES)
        return;
    finished[id] = true;
    const bool ran = m_timerId != -1;
    takeTimingStep(m_isActive);
    if (ran && m_timerId == -1)
        showAverage();
}

void CProgressDialog::joinSlot(int id, int leaderId)
{
    const auto isSlot = [](int each) { return each >= 0 && each < MAX_ENTRIES; };
    if (!isSlot(id) || !isSlot(leaderId))
        return;
    join(id, leaderId);
    relayout();
}

void CProgressDialog::pulseBar(int id)
{
    if (hasRow(id))
        bars[id]->pulse();
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
    connect(buttons[id], &QPushButton::clicked, this, &CProgressDialog::buttonClicked, Qt::UniqueConnection);
}

void CProgressDialog::removeButton(int id)
{
    if (id < 0 || id >= MAX_ENTRIES)
        return;
    buttonVisible[id] = false;
    leaveIfEmpty(id);
    ensureVisible();
    update();
    if (buttons[id])
        disconnect(buttons[id], &QPushButton::clicked, this, &CProgressDialog::buttonClicked);
}

void CProgressDialog::copyFromDialog(const CProgressDialog &src)
{
    for (int i = 0; i < MAX_ENTRIES; ++i)
        copySlot(i, src);
    m_layout->captionTotalBar();
    m_layout->copyFrom(*src.m_layout);
    m_isActive = src.m_isActive;
    m_currentPercent = src.m_currentPercent;
    m_input.goOnFrom(src.m_input);
    m_startTime = src.m_startTime;
    m_stopTime = src.m_stopTime;
    m_runClock = src.m_runClock;

    m_justcopied = true;
    ensureVisible();
    if (src.m_timerId != -1) {
        m_timerId = startTimer(1000, Qt::PreciseTimer);
        tick();
    }
}

void CProgressDialog::copySlot(int id, const CProgressDialog &src)
{
    finished[id] = src.finished[id];
    leader[id] = src.leader[id];
    coming[id] = src.coming[id];
    const auto copyLook = [](QWidget *to, const QWidget *from) {
        to->setPalette(from->palette());
        to->setFont(from->font());
    };
    if (hasRow(id) && src.hasRow(id)) {
        labelVisible[id] = src.labelVisible[id];
        copyLook(labels[id], src.labels[id]);
        labels[id]->setText(src.labels[id]->text());
        barVisible[id] = src.barVisible[id];
        copyLook(bars[id], src.bars[id]);
        bars[id]->setValue(src.bars[id]->value());
        if (src.bars[id]->isPulsing())
            bars[id]->pulse();
    }
    if (hasButton(id) && src.hasButton(id)) {
        buttonVisible[id] = src.buttonVisible[id];
        copyLook(buttons[id], src.buttons[id]);
        buttons[id]->setText(src.buttons[id]->text());
        if (buttonVisible[id])
            connect(buttons[id], &QPushButton::clicked, this, &CProgressDialog::buttonClicked,
                    Qt::UniqueConnection);
    }
}
