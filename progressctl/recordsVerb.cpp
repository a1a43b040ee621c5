#include "progressctl/exitStatus.h"
#include "progressctl/recordsPlot.h"
#include "progressctl/runRecords.h"
#include "progressctl/textFile.h"
#include "progressctl/verbs.h"

#include <cstdio>
#include <ctime>
#include <memory>

namespace
{

struct recordsArguments {
    std::string file;
    std::string plot;
};

std::string localTime(std::int64_t seconds)
{
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    char text[32];
    if (seconds == 0 || !::localtime_r(&time, &parts) ||
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts) == 0)
        return "-";
    return text;
}

void print(const std::vector<runRecord> &records)
{
    std::printf("%4s  %-19s  %8s  %6s  %9s\n", "run", "last seen", "seconds", "times", "snapshots");
    int number = 0;
    for (const runRecord &record : records)
        std::printf("%4d  %-19s  %8d  %6d  %9zu\n", ++number, localTime(record.lastSeen).c_str(),
                    record.seconds, record.timesFound, record.course.size());
}

int showRecords(const commonOptions &common, const recordsArguments &given)
{
    const std::string path = given.file.empty() ? recordsPath(common.identifier) : given.file;
    const std::vector<runRecord> records = recordsFromText(readTextFile(path));
    print(records);
    if (!given.plot.empty())
        writeTextFile(given.plot, plotOf(records, "Runs in " + path));
    return statusOk;
}

} // namespace

void addRecordsVerb(commandLineSetup &setup)
{
    auto given = std::make_shared<recordsArguments>();
    auto *verb = setup.app.add_subcommand("records", "Prints the runs that the daemon has learned");
    verb->add_option("--plot", given->plot, "Draws their courses into this SVG file")->type_name("FILE.svg");
    verb->add_option("--file", given->file, "Reads this file instead of the daemon's");
    verb->callback(
        [&setup, given] { setup.chosen = [&setup, given] { return showRecords(setup.common, *given); }; });
}
