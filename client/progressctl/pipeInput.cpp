#include "client/progressctl/pipeInput.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace
{

/// In bytes. A longer line is cut; nobody can read it anyway.
constexpr std::size_t longestLine = 1024;

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<double> numberFrom(std::string_view text)
{
    if (text.back() == '%')
        text = trimmed(text.substr(0, text.size() - 1));
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    double number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc{} || end != text.data() + text.size() || !std::isfinite(number))
        return std::nullopt;
    return number;
}

} // namespace

void pipeInput::feed(std::string_view bytes)
{
    for (;;) {
        const std::size_t end = bytes.find('\n');
        if (end == std::string_view::npos)
            break;
        if (m_partialLine.empty()) {
            take(bytes.substr(0, end));
        } else {
            keep(bytes.substr(0, end));
            take(m_partialLine);
            m_partialLine.clear();
        }
        bytes.remove_prefix(end + 1);
    }
    keep(bytes);
}

/// One byte more than a line may have is kept, to tell that it is too long.
void pipeInput::keep(std::string_view part)
{
    m_partialLine.append(part.substr(0, longestLine + 1 - std::min(m_partialLine.size(), longestLine + 1)));
}

void pipeInput::end()
{
    take(m_partialLine);
    m_partialLine.clear();
}

void pipeInput::take(std::string_view line)
{
    if (line.size() > longestLine) {
        line = line.substr(0, longestLine);
        complain(m_tooLongTold, "a line is too long and was cut", line);
    }
    line = trimmed(line);
    if (line.empty())
        return;
    if (line.front() == '#')
        takeText(trimmed(line.substr(1)));
    else
        takeNumber(line);
}

void pipeInput::takeText(std::string_view text)
{
    if (!m_text)
        m_text.emplace();
    m_text->assign(text);
    if (text.find(';') == std::string_view::npos)
        return;
    complain(m_separatorTold, "a text cannot hold \";\", it is shown as \",\"", text);
    std::replace(m_text->begin(), m_text->end(), ';', ',');
}

void pipeInput::takeNumber(std::string_view line)
{
    const auto number = numberFrom(line);
    if (!number) {
        complain(m_notUnderstoodTold, "a line is neither a number nor a text behind \"#\"", line);
        return;
    }
    if (*number < 0 || *number > 100)
        complain(m_outOfRangeTold, "a number is not within 0 to 100", line);
    m_percent = static_cast<int>(std::clamp(*number, 0.0, 100.0));
}

void pipeInput::complain(bool &told, const std::string &what, std::string_view line)
{
    if (std::exchange(told, true))
        return;
    std::string shown(line.substr(0, 60));
    std::replace_if(
        shown.begin(), shown.end(), [](char each) { return static_cast<unsigned char>(each) < ' '; }, '?');
    m_complaints.push_back(what + ": " + shown);
}

std::vector<std::string> pipeInput::takeComplaints()
{
    return std::exchange(m_complaints, {});
}
