#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Reads the lines that progress windows are fed with: a number sets the percent, a line that starts with "#"
/// the text. Keeps the newest of each, so a writer of any speed costs no more than the reading.
///
/// Numbers have a decimal point in every locale and may end in "%". What is out of range is taken as the
/// nearest percent; what is not understood changes nothing. Each kind of trouble is told once.
class pipeInput
{
public:
    void feed(std::string_view bytes);
    /// The input has ended: what stands behind the last line feed is a line, too.
    void end();

    /// The newest percent, 0 to 100, if there was any.
    std::optional<int> percent() const { return m_percent; }
    /// The newest text, UTF-8, without ";", if there was any.
    const std::optional<std::string> &text() const { return m_text; }
    /// What there is to complain about since the last call.
    std::vector<std::string> takeComplaints();

private:
    void keep(std::string_view part);
    void take(std::string_view line);
    void takeText(std::string_view text);
    void takeNumber(std::string_view line);
    void complain(bool &told, const std::string &what, std::string_view line);

    std::string m_partialLine;
    std::optional<int> m_percent;
    std::optional<std::string> m_text;
    std::vector<std::string> m_complaints;
    bool m_outOfRangeTold = false;
    bool m_notUnderstoodTold = false;
    bool m_separatorTold = false;
    bool m_tooLongTold = false;
};
