#include "progressctl/recordsPlot.h"

#include "client/system.h"
#include "progressctl/common.h"
#include "progressctl/exitStatus.h"
#include "progressctl/writer.h"

#include <sys/mman.h>

namespace
{

/// Behind gnuplot's single quotes.
std::string quoted(const std::string &text)
{
    std::string made = "'";
    for (const char each : text)
        made.append(each == '\'' ? 2 : 1, each);
    return made + '\'';
}

std::string scriptFor(const std::vector<runRecord> &records, const std::string &title)
{
    std::string script = "set terminal svg size 900,540 noenhanced\nset title " + quoted(title) +
                         "\nset xlabel 'seconds'\nset ylabel 'progress'\nset key outside\nset grid\n";
    // A plot wants something to draw.
    std::string plot = records.empty() ? "plot [0:1][0:100] 0 notitle" : "plot [0:][0:] ";
    for (std::size_t i = 0; i < records.size(); ++i) {
        const runRecord &record = records[i];
        const std::string name = "$run" + std::to_string(i + 1);
        script += name + " << END\n";
        for (const runMoment &moment : record.course)
            script += std::to_string(moment.seconds) + ' ' + std::to_string(moment.progress) + '\n';
        const int last = record.course.empty() ? 0 : record.course.back().progress;
        script += std::to_string(record.seconds) + ' ' + std::to_string(last) + "\nEND\n";
        plot += (i == 0 ? "" : ", ") + name + " with lines title '" + std::to_string(i + 1) + ": " +
                std::to_string(record.seconds) + " s, " + std::to_string(record.timesFound) + " times'";
    }
    return script + plot + '\n';
}

} // namespace

std::string plotOf(const std::vector<runRecord> &records, const std::string &title)
{
    const descriptor file(::memfd_create("plot", 0));
    const std::string script = scriptFor(records, title);
    if (::write(file.get(), script.data(), script.size()) != static_cast<ssize_t>(script.size()))
        throw failure(statusInternal, "no memory for a plot");
    writer gnuplot({"gnuplot", "/dev/fd/" + std::to_string(file.get())}, false);
    std::string picture = gnuplot.outputToEnd();
    if (const int status = gnuplot.exitStatus(); status != 0)
        throw failure(statusFile,
                      status == 127 ? "--plot needs gnuplot, which is not installed" : "gnuplot has failed");
    return picture;
}
