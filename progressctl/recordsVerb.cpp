#include "progressctl/commandLine.h"
#include "wire/places.h"
#include "wire/recordLine.h"

#include <cstdio>
#include <ctime>
#include <memory>
#include <sstream>
#include <unistd.h>

namespace
{

constexpr std::size_t mostRecords = 1024;

/// That of a private daemon, if there is one, else in /var/instrument, else in /var/tmp.
std::string recordsPath(const std::string &identifier)
{
    if (const std::string own = wire::learnedPath(identifier); ::access(own.c_str(), R_OK) == 0)
        return own;
    const std::string name = "/currentTimestamps_" + identifier + ".txt";
    const std::string preferred = "/var/instrument" + name;
    return ::access(preferred.c_str(), R_OK) == 0 ? preferred : "/var/tmp" + name;
}

std::string localTime(unsigned seconds)
{
    const std::time_t time = seconds;
    std::tm parts{};
    char text[32];
    if (seconds == 0 || !::localtime_r(&time, &parts) ||
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts) == 0)
        return "-";
    return text;
}

/// Lines that are no records are left out, as the daemon leaves them out, and so is what goes beyond its
/// table.
void showRecords(const std::string &path)
{
    std::istringstream lines(readTextFile(path));
    std::printf("%4s  %-19s  %8s  %6s  %9s  %9s\n", "run", "last seen", "seconds", "times", "snapshots",
                "amount");
    wire::recordReader reader;
    wire::recordLine record{};
    std::string line;
    for (std::size_t number = 0; number < mostRecords && std::getline(lines, line);) {
        if (!reader.read(line, record))
            continue;
        std::printf("%4zu  %-19s  %8d  %6d  %9zu  %9s\n", ++number, localTime(record.time).c_str(),
                    record.total, record.found, record.snapshots.size(),
                    record.amount > 0 ? std::to_string(record.amount).c_str() : "-");
    }
}

} // namespace

void addRecordsVerb(commandLineSetup &setup)
{
    auto file = std::make_shared<std::string>();
    auto *verb = setup.app.add_subcommand("records", "Prints the runs that the daemon has learned");
    verb->add_option("--file", *file, "Reads this file instead of the daemon's");
    verb->callback(
        [&setup, file] { showRecords(file->empty() ? recordsPath(setup.common.identifier) : *file); });
}
