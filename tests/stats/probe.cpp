// Reads one case a line: steps separated by ";", each a word and its arguments. Every case starts from
// nothing. Prints what the steps answer, separated by ";" too. Courses are written as in the file:
// "0.1000.2005", "-" for none.

#include "stats/adaptiveEstimate.h"
#include "stats/estimate.h"
#include "stats/findNearest.h"
#include "stats/newestCourses.h"
#include "stats/recordRun.h"
#include "stats/remainingText.h"
#include "stats/runTable.h"
#include "stats/snapshots.h"
#include "stats/statisticsFile.h"

#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using arguments = std::vector<std::string>;

int number(const arguments &given, std::size_t at, int otherwise = 0)
{
    return at < given.size() ? std::stoi(given[at]) : otherwise;
}

std::vector<int> course(const std::string &snapshots)
{
    std::vector<int> result;
    std::istringstream parts(snapshots == "-" ? "" : snapshots);
    for (std::string part; std::getline(parts, part, '.');)
        result.push_back(std::stoi(part));
    return result;
}

std::string listed(const int *values, int count, const char *separator = " ")
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += (i ? separator : "") + std::to_string(values[i]);
    return result;
}

std::string records()
{
    std::string result;
    for (int i = 0; i < m_snapshotcount; ++i)
        result += (i ? " " : "") + std::to_string(m_snapshottotal[i]) + ':' +
                  std::to_string(m_snapshotfound[i]) + ':' +
                  listed(m_snapshotdata[i].get(), m_snapshottlen[i], ".");
    return result;
}

void addRecord(const arguments &given)
{
    const int record = m_snapshotcount++;
    m_snapshottotal[record] = number(given, 0);
    m_snapshotfound[record] = number(given, 1);
    m_snapshottime[record] = QDateTime::fromSecsSinceEpoch(number(given, 3, 1000));
    m_snapshotfits[record] = -7;
    setRecordData(record, course(given.at(2)));
}

void addSnapshots(const arguments &given)
{
    for (const int snapshot : course(given.at(0))) {
        holdEstimate(snapshot / snapshotScale);
        addSnapshot(snapshot % snapshotScale);
    }
}

std::string tick(const arguments &given)
{
    const char *const steps[] = {"nothing ", "dropped ", "vanished ", "display "};
    const auto step = advanceEstimate(number(given, 0), number(given, 1), number(given, 2));
    return steps[static_cast<int>(step)] + std::to_string(m_currentTotal) + ' ' +
           std::to_string(m_currentFound);
}

std::string nearest()
{
    double incernity = 42;
    int index = 7;
    const int total = findNearest(incernity, index);
    return QString::asprintf("%d %d %.9g", total, index, incernity).toStdString();
}

std::string remaining(const arguments &given)
{
    const std::span run(m_snapshots, static_cast<std::size_t>(m_nextSnap));
    const auto seconds = adaptiveRemaining(newestCourses(), run, number(given, 0), number(given, 1));
    return seconds ? QString::asprintf("%.3f", *seconds).toStdString() : "none";
}

const std::map<std::string, void (*)(const arguments &)> m_actions = {
    {"record", addRecord},
    {"change", [](auto &given) { setRecordData(number(given, 0), course(given.at(1))); }},
    {"pool", addSnapshots},
    {"at", [](auto &given) { holdEstimate(number(given, 0)); }},
    {"add", [](auto &given) { addSnapshot(number(given, 0)); }},
    {"start", [](auto &) { startEstimate(); }},
    {"end", [](auto &) { resetEstimate(); }},
    {"exact", [](auto &) { m_estimateMode = estimateMode::exact; }},
    {"adaptive", [](auto &) { m_estimateMode = estimateMode::adaptive; }},
    {"run", [](auto &given) { recordRun(number(given, 0)); }},
    {"load", [](auto &given) { loadStatistics(given.at(0).c_str()); }},
    {"save", [](auto &given) { saveStatistics(given.empty() ? nullptr : given[0].c_str()); }},
};

const std::map<std::string, std::string (*)(const arguments &)> m_questions = {
    {"last", [](auto &) { return std::to_string(m_snapshots[m_nextSnap - 1]); }},
    {"tick", tick},
    {"nearest", [](auto &) { return nearest(); }},
    {"remaining", remaining},
    {"shown", [](auto &given) { return remainingText(number(given, 0)).toStdString(); }},
    {"records", [](auto &) { return records(); }},
    {"found", [](auto &) { return listed(m_snapshotfound, m_snapshotcount); }},
    {"fits", [](auto &) { return listed(m_snapshotfits, m_snapshotcount); }},
    {"file", [](auto &) { return std::string(datafile); }},
};

std::string answer(const std::string &step)
{
    std::istringstream words(step);
    std::string name;
    words >> name;
    const arguments given(std::istream_iterator<std::string>(words), {});
    if (!m_actions.contains(name))
        return m_questions.at(name)(given);
    m_actions.at(name)(given);
    return {};
}

} // namespace

int main()
{
    loadStatistics(std::string(2000, '-').c_str()); // too long to be saved anywhere
    for (std::string line; std::getline(std::cin, line);) {
        m_snapshotcount = 0;
        m_estimateMode = estimateMode::exact;
        resetEstimate();
        startEstimate();
        std::istringstream steps(line);
        for (std::string step; std::getline(steps, step, ';');)
            std::cout << answer(step) << ';';
        std::cout << std::endl;
    }
}
