#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A number as progress windows read it: digits behind a sign, of which a fraction does not count.
struct frontNumber {
    int whole = 0; ///< a million at most, either way; a negative one counts as -1 at least
    std::string_view rest;
};

std::optional<frontNumber> numberAtFront(std::string_view text);

/// Reads the lines that progress windows are fed with: one that begins with a number sets the percent, one
/// that begins with "#" the text, and "pulsate:true" makes the bar move to and fro. Lines end with a line
/// feed or a carriage return. Keeps the newest of each, so a writer of any speed costs no more than the
/// reading.
///
/// What is out of range is taken as the nearest percent; what is not understood changes nothing. Each kind of
/// trouble is told once.
class pipeInput
{
public:
    void feed(std::string_view bytes);
    /// The input has ended: what stands behind the last line's end is a line, too.
    void end();

    /// The newest percent, 0 to 100, if there was any.
    std::optional<int> percent() const { return m_percent; }
    /// The newest text as it came, if there was any.
    const std::optional<std::string> &text() const { return m_text; }
    /// The newest word about moving to and fro, if there was any.
    std::optional<bool> pulsates() const { return m_pulsates; }
    /// What there is to complain about since the last call.
    std::vector<std::string> takeComplaints();

private:
    void keep(std::string_view part);
    void take(std::string_view line);
    void takeText(std::string_view text);
    void takeOther(std::string_view line);
    void complain(bool &told, const std::string &what, std::string_view line);

    std::string m_partialLine;
    std::optional<int> m_percent;
    std::optional<std::string> m_text;
    std::optional<bool> m_pulsates;
    std::vector<std::string> m_complaints;
    bool m_outOfRangeTold = false;
    bool m_notUnderstoodTold = false;
    bool m_tooLongTold = false;
};
