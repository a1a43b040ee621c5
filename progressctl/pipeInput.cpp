#include "progressctl/pipeInput.h"

#include "progressctl/common.h"
#include "progressctl/texts.h"
#include "wire/words.h"

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

constexpr std::string_view blanks = " \t\n\v\f\r";

std::string_view trimmedAtEnd(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

std::string_view trimmed(std::string_view text)
{
    return trimmedAtEnd(text.substr(std::min(text.find_first_not_of(blanks), text.size())));
}

bool isWordPart(char each)
{
    return isDigit(each) || (each >= 'a' && each <= 'z') || (each >= 'A' && each <= 'Z') || each == '.' ||
           each == '/';
}

/// Takes the digits at the front; -1 without any. What is more than an amount can be is one more than that.
std::int64_t takeDigits(std::string_view &text)
{
    std::int64_t number = text.empty() || !isDigit(text.front()) ? -1 : 0;
    for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1))
        number = std::min(number * 10 + (text.front() - '0'), wire::largestAmount + 1);
    return number;
}

/// The same as a percent that may be too large; 0 without any.
int takeWhole(std::string_view &text)
{
    return static_cast<int>(std::clamp<std::int64_t>(takeDigits(text), 0, mostWhole));
}

bool takePrefix(std::string_view &text, std::string_view prefix)
{
    const bool isThere = text.starts_with(prefix);
    text.remove_prefix(isThere ? prefix.size() : 0);
    return isThere;
}

/// All digits up to a point or comma, whatever stands between them: other progress windows read "1e1" as 11,
/// and their scripts end at what these take for 100.
int joinedDigits(std::string_view text)
{
    std::string digits(text.substr(0, text.find_first_of(".,")));
    std::erase_if(digits, [](char each) { return !isDigit(each); });
    std::string_view left = digits;
    return takeWhole(left);
}

/// "45" of "1,048,576  45% …", as rsync tells the bytes first.
std::optional<frontNumber> percentBehindSize(std::string_view line)
{
    const std::size_t blank = line.find(' ');
    if (blank == std::string_view::npos)
        return std::nullopt;
    const auto number = numberAtFront(trimmed(line.substr(blank)));
    return number && number->rest.starts_with('%') ? number : std::nullopt;
}

/// "45" of "###…###   45.0%", the bar that curl draws.
std::optional<frontNumber> percentBehindBar(std::string_view line)
{
    const std::size_t barEnd = line.find_first_not_of('#');
    const std::size_t at = line.find_first_not_of(' ', barEnd);
    if (at == std::string_view::npos || at == barEnd || (barEnd < 2 && at - barEnd < 2))
        return std::nullopt;
    const auto number = numberAtFront(line.substr(at));
    const bool isLast = number && number->rest == "%" && line.find('.', at) != std::string_view::npos;
    return isLast ? number : std::nullopt;
}

} // namespace

std::int64_t amountIn(std::string_view text)
{
    char before = ' ';
    while (!text.empty()) {
        std::string_view rest = text;
        const std::int64_t part = isWordPart(before) ? -1 : takeDigits(rest);
        const bool isFraction = part >= 0 && (takePrefix(rest, "/") || takePrefix(rest, " of "));
        const std::int64_t whole = isFraction ? takeDigits(rest) : -1;
        // "1/2/2024" is a date, and "1/2.5" no count.
        const bool goesOn =
            rest.size() > 1 && isWordPart(rest.front()) && (rest.front() != '.' || isDigit(rest[1]));
        if (whole > 0 && whole <= wire::largestAmount && part <= whole && !goesOn)
            return whole;
        before = text.front();
        text.remove_prefix(1);
    }
    return 0;
}

std::optional<frontNumber> numberAtFront(std::string_view text)
{
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.remove_prefix(1);
    const bool isFraction = text.size() > 1 && text.front() == '.' && isDigit(text[1]);
    if (text.empty() || (!isDigit(text.front()) && !isFraction))
        return std::nullopt;
    const int whole = takeWhole(text);
    if (takePrefix(text, "."))
        takeDigits(text);
    return frontNumber{isNegative ? std::min(-whole, -1) : whole, text};
}

void pipeInput::feed(std::string_view bytes)
{
    for (;;) {
        const auto isEnd = [](char each) { return each == '\n' || each == '\r' || each == '\0'; };
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
        complainOnce("a line is too long and was cut", line);
    }
    line = trimmedAtEnd(line);
    if (line.empty() || (m_hasBlocks && takeBlock(trimmed(line))) || takeFromOthers(line))
        return;
    if (line.front() == '#')
        takeText(trimmed(line.substr(1)));
    else if (isDigit(line.front()))
        takeNumber(line);
    else
        takeOther(trimmed(line));
}

/// "2:50" and "2:#text" mean the second bar, if they are numbered.
void pipeInput::takeNumber(std::string_view line)
{
    const frontNumber number = *numberAtFront(line);
    const auto bar = static_cast<std::size_t>(number.whole);
    if (m_isNumbered && bar > 0 && bar <= m_bars.size() && number.rest.starts_with(':')) {
        const std::string_view words = trimmed(number.rest.substr(1));
        if (words.starts_with('#'))
            m_bars[bar - 1].text.assign(trimmed(words.substr(1)));
        else if (const auto percent = numberAtFront(words))
            setPercent(bar - 1, percent->whole);
        return;
    }
    const int percent = number.rest.empty() ? number.whole : percentAmongWords(line, number);
    setPercent(0, percent);
    if (percent > 100)
        complainOnce("a number is not within 0 to 100", line);
}

/// Beside how much there is to do, the first number counts.
int pipeInput::percentAmongWords(std::string_view line, const frontNumber &first)
{
    lookForAmount(line);
    if (const auto behindSize = percentBehindSize(line))
        return behindSize->whole;
    return amountIn(line) > 0 ? first.whole : joinedDigits(line);
}

void pipeInput::setPercent(std::size_t bar, int percent)
{
    m_bars[bar].percent = std::clamp(percent, 0, 100);
    m_wasFull = m_wasFull || m_bars[0].percent == 100;
}

void pipeInput::takeText(std::string_view text)
{
    if (!m_text)
        m_text.emplace();
    m_text->assign(text);
    lookForAmount(text);
}

void pipeInput::lookForAmount(std::string_view text)
{
    if (m_amount == 0)
        m_amount = amountIn(text);
}

/// True for a line of a block, or one that begins or ends it.
bool pipeInput::takeBlock(std::string_view line)
{
    if (line == "XXX") {
        if (m_block)
            takeText(*m_block);
        m_block = m_block ? std::nullopt : std::optional(std::string());
        return true;
    }
    if (!m_block)
        return false;
    const auto number = numberAtFront(line);
    if (m_block->empty() && number && number->rest.empty())
        setPercent(0, number->whole);
    else if (m_block->size() < longestLine)
        m_block->append(m_block->empty() ? "" : "\n").append(line);
    return true;
}

/// What programs print that were not made for a progress window: curl's bar and apt's status lines
/// ("dlstatus:1:20.9:Retrieving file 1 of 3").
bool pipeInput::takeFromOthers(std::string_view line)
{
    std::optional<frontNumber> number;
    std::string_view text;
    if (line.front() == '#' || line.front() == ' ') {
        number = percentBehindBar(line);
    } else if (takePrefix(line, "dlstatus:") || takePrefix(line, "pmstatus:")) {
        // A package's name may have a colon in it.
        for (std::size_t at; !number && (at = line.find(':')) != std::string_view::npos;) {
            line.remove_prefix(at + 1);
            number = numberAtFront(line);
            if (number && !takePrefix(text = number->rest, ":"))
                number.reset();
        }
    }
    if (!number)
        return false;
    setPercent(0, number->whole);
    if (!text.empty() && text != "%")
        takeText(text);
    return true;
}

void pipeInput::takeOther(std::string_view line)
{
    if (takePrefix(line, "pulsate:")) {
        m_pulsates = ::strcasecmp(std::string(trimmed(line)).c_str(), "false") != 0;
        return;
    }
    if (const auto percent = percentBehindSize(line))
        setPercent(0, percent->whole);
    else
        complainOnce("a line is neither a number nor a text behind \"#\"", line);
    lookForAmount(line);
}

void pipeInput::complainOnce(const std::string &what, std::string_view line)
{
    if (m_told.insert(what).second)
        complain(what + ": " + oneLine(std::string(line.substr(0, 60))));
}
