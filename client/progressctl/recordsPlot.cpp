#include "client/progressctl/recordsPlot.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace
{

// Pixels of the picture, and of the margins around the plot itself.
constexpr int width = 900;
constexpr int height = 540;
constexpr int left = 70;
constexpr int right = 180;
constexpr int top = 50;
constexpr int bottom = 60;
constexpr int legendLines = 20;

constexpr const char *colours[] = {"#1b66c9", "#d1495b", "#2e8b57", "#e08e0b",
                                   "#7b4fb5", "#0f8b8d", "#8d5524", "#5c6b73"};

__attribute__((format(printf, 2, 3))) void append(std::string &to, const char *format, ...)
{
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    to += text;
}

std::string escaped(const std::string &text)
{
    std::string made;
    for (const char letter : text) {
        if (letter == '<')
            made += "&lt;";
        else if (letter == '&')
            made += "&amp;";
        else
            made += letter;
    }
    return made;
}

/// A round step (1, 2 or 5 times a power of ten) that divides `range` into five to ten parts or so.
long long tickStep(long long range)
{
    for (long long power = 1;; power *= 10) {
        for (const long long factor : {1, 2, 5}) {
            if (range / (factor * power) <= 10)
                return factor * power;
        }
    }
}

class plot
{
public:
    explicit plot(const std::vector<runRecord> &records) : m_records(records)
    {
        for (const runRecord &record : records) {
            m_seconds = std::max<long long>(m_seconds, record.seconds);
            for (const runMoment &moment : record.course) {
                m_seconds = std::max<long long>(m_seconds, moment.seconds);
                m_progress = std::max<long long>(m_progress, moment.progress);
            }
        }
    }

    std::string draw(const std::string &title)
    {
        append(m_svg,
               "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 0 %d %d\"",
               width, height, width, height);
        m_svg += " font-family=\"sans-serif\" font-size=\"13\">\n<rect width=\"100%\" height=\"100%\" "
                 "fill=\"#ffffff\"/>\n";
        append(m_svg, "<text x=\"%d\" y=\"28\" font-size=\"17\">", left);
        m_svg += escaped(title) + "</text>\n";
        drawAxes();
        for (std::size_t i = 0; i < m_records.size(); ++i)
            drawRun(i);
        m_svg += "</svg>\n";
        return std::move(m_svg);
    }

private:
    double xOf(long long seconds) const
    {
        return left + static_cast<double>(seconds) * (width - left - right) / static_cast<double>(m_seconds);
    }
    double yOf(long long progress) const
    {
        return height - bottom -
               static_cast<double>(progress) * (height - top - bottom) / static_cast<double>(m_progress);
    }

    void drawAxes()
    {
        const long long xStep = tickStep(m_seconds);
        for (long long x = 0; x <= m_seconds; x += xStep) {
            append(m_svg, "<path d=\"M%.1f %d V%d\" stroke=\"#e2e6ea\"/>", xOf(x), top, height - bottom);
            append(m_svg, "<text x=\"%.1f\" y=\"%d\" text-anchor=\"middle\">%lld</text>\n", xOf(x),
                   height - bottom + 20, x);
        }
        const long long yStep = tickStep(m_progress);
        for (long long y = 0; y <= m_progress; y += yStep) {
            append(m_svg, "<path d=\"M%d %.1f H%d\" stroke=\"#e2e6ea\"/>", left, yOf(y), width - right);
            append(m_svg, "<text x=\"%d\" y=\"%.1f\" text-anchor=\"end\">%lld</text>\n", left - 8, yOf(y) + 4,
                   y);
        }
        append(m_svg, "<path d=\"M%d %d V%d H%d\" fill=\"none\" stroke=\"#333333\"/>\n", left, top,
               height - bottom, width - right);
        append(m_svg, "<text x=\"%d\" y=\"%d\" text-anchor=\"middle\">seconds</text>\n",
               (left + width - right) / 2, height - 15);
        append(m_svg,
               "<text transform=\"translate(20 %d) rotate(-90)\" text-anchor=\"middle\">progress</text>\n",
               (top + height - bottom) / 2);
    }

    void drawRun(std::size_t index)
    {
        const runRecord &record = m_records[index];
        const char *colour = colours[index % std::size(colours)];
        append(m_svg, "<polyline fill=\"none\" stroke=\"%s\" stroke-width=\"1.5\" points=\"", colour);
        for (const runMoment &moment : record.course)
            append(m_svg, "%.1f,%.1f ", xOf(moment.seconds), yOf(moment.progress));
        if (!record.course.empty())
            append(m_svg, "%.1f,%.1f", xOf(record.seconds), yOf(record.course.back().progress));
        append(m_svg, "\"><title>run %zu: %d s, found %d times</title></polyline>\n", index + 1,
               record.seconds, record.timesFound);
        if (index < legendLines)
            append(m_svg, "<text x=\"%d\" y=\"%d\" fill=\"%s\">%zu: %d s, %d times</text>\n",
                   width - right + 15, top + 15 + 20 * static_cast<int>(index), colour, index + 1,
                   record.seconds, record.timesFound);
    }

    const std::vector<runRecord> &m_records;
    long long m_seconds = 1;
    long long m_progress = 100;
    std::string m_svg;
};

} // namespace

std::string plotOf(const std::vector<runRecord> &records, const std::string &title)
{
    return plot(records).draw(title);
}
