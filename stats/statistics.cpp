#include "stats/statistics.h"

#include <ctime>
#include <utility>

runStatistics statistics;

void runStatistics::load(const char *identifier, statisticsPlace place)
{
    if (auto records = m_file.load(identifier, place))
        m_table.assign(std::move(*records));
}

void runStatistics::saveFinally(const char *identifier)
{
    if (!m_file.isShared())
        m_file.save(m_table, identifier);
    else if (!m_unsaved.empty())
        save();
}

void runStatistics::startRun()
{
    m_run.start();
    m_estimate.start(m_estimateMode, m_table);
}

void runStatistics::endRun(int seconds)
{
    m_estimate.reset();
    if (seconds >= 1 && !m_run.snapshots().empty()) {
        m_unsaved.push_back({m_run, seconds, static_cast<unsigned>(std::time(nullptr))});
        record(m_unsaved.back());
        save();
        if (m_unsaved.size() > runTable::maxRecords)
            m_unsaved.erase(m_unsaved.begin());
    }
    m_run.setAmount(0);
}

void runStatistics::record(const finishedRun &finished)
{
    recordRun(m_table, finished.run, finished.seconds, finished.time);
}

/// What other processes have learned meanwhile is the ground on which this one's runs are recorded anew.
/// (Found counts that have fallen here are as they were there then.) What cannot be saved waits for the next
/// time.
void runStatistics::save()
{
    wire::descriptor lock;
    if (m_file.isShared()) {
        lock = statisticsFile::lock();
        if (!lock)
            return;
        if (auto meanwhile = m_file.loadChanged()) {
            m_table.assign(std::move(*meanwhile));
            for (const finishedRun &finished : m_unsaved)
                record(finished);
        }
    }
    if (m_file.save(m_table, nullptr) || !lock)
        m_unsaved.clear();
}

estimateStep runStatistics::advance(int percent, int dialogIdentity)
{
    return m_estimate.advance(m_estimateMode, m_table, m_run, percent, dialogIdentity);
}
