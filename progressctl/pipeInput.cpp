#include "progressctl/pipeInput.h"

#include <algorithm>
#include <strings.h>
#include <utility>

namespace
{

/// In bytes. A longer line is cut; nobody can read it anyway.
constexpr std::size_t longestLine = 1024;
constexpr int mostWhole = 1'000'000;

bool isDigit(char each)
{
    return each >= '0' && each <= '9';
}

bool isBlank(char each)
{
    return each == ' ' || (each >= '\t' && each <= '\r');
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace

std::optional<frontNumber> numberAtFront(std::string_view text)
{
    const bool isNegative = !text.empty() && text.front() == '-';
    if (isNegative || (!text.empty() && text.front() == '+'))
        text.remove_prefix(1);
    const bool isFraction = text.size() > 1 && text.front() == '.' && isDigit(text[1]);
    if (text.empty() || (!isDigit(text.front()) && !isFraction))
        return std::nullopt;
    int whole = 0;
    for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1))
        whole = std::min(whole * 10 + (text.front() - '0'), mostWhole);
    if (!text.empty() && text.front() == '.') {
        text.remove_prefix(1);
        while (!text.empty() && isDigit(text.front()))
            text.remove_prefix(1);
    }
    return frontNumber{isNegative ? std::min(-whole, -1) : whole, text};
}

void pipeInput::feed(std::string_view bytes)
{
    for (;;) {
        const auto isEnd = [](char each) { return each == '\n' || each == '\r'; };
        const auto at = std::find_if(bytes.begin(), bytes.end(), isEnd);
        if (at == bytes.end())
            break;
        const auto size = static_cast<std::size_t>(at - bytes.begin());
        if (m_partialLine.empty()) {
            take(bytes.substr(0, size));
        } else {
            keep(bytes.substr(0, size));
            take(m_partialLine);
            m_partialLine.clear();
        }
        bytes.remove_prefix(size + 1);
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
    if (line.front() == '#') {
        takeText(trimmed(line.substr(1)));
    } else if (const auto number = numberAtFront(line)) {
        m_percent = std::clamp(number->whole, 0, 100);
        if (number->whole != *m_percent)
            complain(m_outOfRangeTold, "a number is not within 0 to 100", line);
    } else {
        takeOther(line);
    }
}

void pipeInput::takeText(std::string_view text)
{
    if (!m_text)
        m_text.emplace();
    m_text->assign(text);
}

void pipeInput::takeOther(std::string_view line)
{
    constexpr std::string_view pulsate = "pulsate:";
    if (line.substr(0, pulsate.size()) == pulsate)
        m_pulsates = ::strcasecmp(std::string(trimmed(line.substr(pulsate.size()))).c_str(), "false") != 0;
    else
        complain(m_notUnderstoodTold, "a line is neither a number nor a text behind \"#\"", line);
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
