#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// A number as progress windows read it: digits behind a sign, of which a fraction does not count.
struct frontNumber {
    int whole = 0; ///< a million at most, either way; a negative one counts as -1 at least
    std::string_view rest;
};

std::optional<frontNumber> numberAtFront(std::string_view text);

/// The m of the first "n/m" or "n of m" in a text, n being at most m, and m 1 to 2^53; 0 without one.
std::int64_t amountIn(std::string_view text);

/// Reads the lines that progress windows are fed with: one that begins with a digit sets the percent, one
/// that begins with "#" the text, and "pulsate:true" makes the bar move to and fro. "N:" in front means the
/// N-th bar. Lines of rsync, curl and apt are read as percents, too. Lines end with a line feed, a carriage
/// return or a zero byte. Keeps the newest of each, so a writer of any speed costs no more than the reading.
///
/// What is out of range is taken as the nearest percent; what is not understood changes nothing. Each kind of
/// trouble is told once.
class pipeInput
{
public:
    /// What is said of a bar: its newest percent, 0 to 100, and, behind "N:#", its newest text.
    struct barWords {
        std::optional<int> percent;
        std::string text;
    };

    /// `bars` is 0 for one that has no number.
    explicit pipeInput(std::size_t bars) : m_bars(std::max<std::size_t>(bars, 1)), m_isNumbered(bars > 0) {}
    /// From here on, lines between two "XXX" are a percent and a text of one or more lines.
    void expectBlocks() { m_hasBlocks = true; }

    void feed(std::string_view bytes);
    /// The input has ended: what stands behind the last line's end is a line, too.
    void end();

    const std::vector<barWords> &bars() const { return m_bars; }
    std::optional<int> percent() const { return m_bars.front().percent; }
    /// The first bar has been at 100.
    bool wasFull() const { return m_wasFull; }
    /// The newest text as it came, if there was any.
    const std::optional<std::string> &text() const { return m_text; }
    /// The newest word about moving to and fro, if there was any.
    std::optional<bool> pulsates() const { return m_pulsates; }
    /// How much there is to do, by the first line or text that says so; 0 while none has.
    std::int64_t amount() const { return m_amount; }

private:
    void keep(std::string_view part);
    void take(std::string_view line);
    void takeNumber(std::string_view line);
    int percentAmongWords(std::string_view line, const frontNumber &first);
    void takeText(std::string_view text);
    bool takeBlock(std::string_view line);
    bool takeFromOthers(std::string_view line);
    void takeOther(std::string_view line);
    void setPercent(std::size_t bar, int percent);
    void lookForAmount(std::string_view text);
    void complainOnce(const std::string &what, std::string_view line);

    std::string m_partialLine;
    std::vector<barWords> m_bars;
    const bool m_isNumbered;
    bool m_wasFull = false;
    std::optional<std::string> m_text;
    std::optional<bool> m_pulsates;
    std::int64_t m_amount = 0;
    bool m_hasBlocks = false;
    std::optional<std::string> m_block; ///< the text so far, within one
    std::set<std::string> m_told;       ///< kinds of trouble
};
