#include "platform/taskbarEntry.h"

#include "platform/sessionBus.h"
#include "platform/windowSystem.h"

#include <QWidget>

taskbarEntry::~taskbarEntry()
{
    clear();
}

void taskbarEntry::follow(QWidget *window)
{
    m_window = window;
    setTaskbarProgress(*window, m_told.percent);
}

void taskbarEntry::clear()
{
    m_state = {};
    tell();
}

void taskbarEntry::timerEvent(QTimerEvent *)
{
    m_pause.stop();
    tell();
}

void taskbarEntry::tell()
{
    if (m_state == m_told)
        return;
    constexpr int pauseMs = 200;
    m_told = m_state;
    sessionBus::instance().updateLauncher(m_told.percent, m_told.isUrgent);
    if (m_window)
        setTaskbarProgress(*m_window, m_told.percent);
    m_pause.start(pauseMs, this);
}
