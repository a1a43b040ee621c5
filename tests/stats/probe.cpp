// Reads one case a line: steps separated by ";", each a word and its arguments. Every case starts from
// nothing. Prints what the steps answer, separated by ";" too. Courses are written as in the file:
// "0.1000.2005", "-" for none.

#include "stats/statistics.h"

#include <QThread>

#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using arguments = std::vector<std::string>;

adaptiveEstimate m_adaptive;

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

std::string listed(const std::vector<int> &values, const char *separator = " ")
{
    std::string result;
    for (const int value : values)
        result += (result.empty() ? "" : separator) + std::to_string(value);
    return result;
}

std::string records()
{
    std::string result;
    for (const runRecord &record : statistics.table().records()) {
        result += (result.empty() ? "" : " ") + std::to_string(record.total) + ':' +
                  std::to_string(record.found) + ':' + listed(record.snapshots, ".");
        if (record.amount > 0)
            result += ':' + std::to_string(record.amount);
    }
    return result;
}

std::string found()
{
    std::vector<int> counts;
    for (const runRecord &record : statistics.table().records())
        counts.push_back(record.found);
    return listed(counts);
}

/// Total, found count, course, time and amount.
void addRecord(const arguments &given)
{
    const wire::recordLine record{static_cast<unsigned>(number(given, 3, 1000)), number(given, 0),
                                  number(given, 1), course(given.at(2)), number(given, 4)};
    statistics.table().put(statistics.table().count(), {record, {}});
}

void changeRecord(const arguments &given)
{
    runRecord record = statistics.table()[number(given, 0)];
    record.snapshots = course(given.at(1));
    record.comparison = {};
    statistics.table().put(number(given, 0), std::move(record));
}

void addSnapshots(const arguments &given)
{
    for (const int snapshot : course(given.at(0))) {
        statistics.setElapsed(snapshot / snapshotScale);
        statistics.addSnapshot(snapshot % snapshotScale);
    }
}

std::string tick(const arguments &given)
{
    const char *const steps[] = {"nothing ", "dropped ", "vanished ", "display "};
    statistics.setElapsed(number(given, 0));
    const auto step = statistics.advance(number(given, 1), number(given, 2));
    return steps[static_cast<int>(step)] + std::to_string(statistics.estimate().total()) + ' ' +
           std::to_string(statistics.estimate().found());
}

std::string nearest()
{
    const nearestRecord nearest = findNearest(statistics.table(), statistics.run());
    return QString::asprintf("%d %d %.9g", nearest.total, nearest.index, nearest.distance).toStdString();
}

std::string remaining(const arguments &given)
{
    statistics.setElapsed(number(given, 0));
    const auto left = m_adaptive.remaining(statistics.table(), statistics.run(), number(given, 1));
    if (!left)
        return "none";
    return QString::asprintf("%.3f", left->seconds).toStdString() + (left->isOverdue ? " overdue" : "");
}

/// What a calm reader sees of remaining times, each a second after the one before.
std::string calm(const arguments &given)
{
    wire::calmTime time;
    std::vector<int> shown;
    for (std::size_t i = 0; i < given.size(); ++i)
        shown.push_back(time.shown(number(given, i), static_cast<int>(i)));
    return listed(shown);
}

/// What the layouts show after a number of seconds.
std::string left(const arguments &given)
{
    const remainingTime time = statistics.estimate().remaining(number(given, 0));
    return listed(std::vector{time.seconds, time.calmSeconds});
}

const std::map<std::string, void (*)(const arguments &)> m_actions = {
    {"record", addRecord},
    {"change", changeRecord},
    {"pool", addSnapshots},
    {"at", [](auto &given) { statistics.setElapsed(number(given, 0)); }},
    {"add", [](auto &given) { statistics.addSnapshot(number(given, 0)); }},
    {"amount", [](auto &given) { statistics.setAmount(wire::readAmount(given.at(0))); }},
    {"start", [](auto &) { statistics.startRun(); }},
    {"end", [](auto &) { statistics.endRun(0); }},
    {"run", [](auto &given) { statistics.endRun(number(given, 0)); }},
    {"exact", [](auto &) { statistics.m_estimateMode = estimateMode::exact; }},
    {"adaptive", [](auto &) { statistics.m_estimateMode = estimateMode::adaptive; }},
    {"load", [](auto &given) { statistics.load(given.at(0).c_str()); }},
    {"own", [](auto &given) { statistics.load(given.at(0).c_str(), statisticsPlace::user); }},
    {"wait", [](auto &given) { QThread::msleep(static_cast<unsigned long>(number(given, 0))); }},
    {"save",
     [](auto &given) { given.empty() ? statistics.save() : statistics.saveFinally(given[0].c_str()); }},
};

const std::map<std::string, std::string (*)(const arguments &)> m_questions = {
    {"last", [](auto &) { return std::to_string(statistics.run().snapshots().back()); }},
    {"tick", tick},
    {"nearest", [](auto &) { return nearest(); }},
    {"remaining", remaining},
    {"shown", [](auto &given) { return remainingText(number(given, 0)).toStdString(); }},
    {"records", [](auto &) { return records(); }},
    {"calm", calm},
    {"left", left},
    {"found", [](auto &) { return found(); }},
    {"fits", [](auto &) { return listed(statistics.table().fits()); }},
    {"file", [](auto &) { return statistics.file().path(); }},
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
    for (std::string line; std::getline(std::cin, line);) {
        statistics = {};
        m_adaptive = {};
        statistics.startRun();
        std::istringstream steps(line);
        for (std::string step; std::getline(steps, step, ';');)
            std::cout << answer(step) << ';';
        std::cout << std::endl;
    }
}
