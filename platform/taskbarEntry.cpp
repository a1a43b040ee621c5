#include "platform/taskbarEntry.h"

#include "platform/sessionBus.h"
#include "platform/x11Windows.h"

#include <QWidget>

#include <algorithm>

namespace
{

constexpr int pauseMs = 200;

} // namespace

taskbarEntry::taskbarEntry()
{
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &taskbarEntry::tell);
}

taskbarEntry::~taskbarEntry()
{
    clear();
}

void taskbarEntry::follow(QWidget *window)
{
    m_window = window;
    setTaskbarProgress(*window, m_told.percent);
}

void taskbarEntry::setPercent(int percent)
{
    m_state.percent = std::min(percent, 100);
    tellSoon();
}

void taskbarEntry::setUrgent(bool isUrgent)
{
    m_state.isUrgent = isUrgent;
    tellSoon();
}

void taskbarEntry::clear()
{
    m_state = {};
    tell();
}

void taskbarEntry::tellSoon()
{
    if (!m_pause.isActive())
        tell();
}

void taskbarEntry::tell()
{
    if (m_state == m_told)
        return;
    m_told = m_state;
    sessionBus::instance().updateLauncher(m_told.percent, m_told.isUrgent);
    if (m_window)
        setTaskbarProgress(*m_window, m_told.percent);
    m_pause.start(pauseMs);
}
