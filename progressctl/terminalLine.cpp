#include "progressctl/terminalLine.h"

#include "progressctl/texts.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <locale.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

/// The features are letters in a row, each a capital with what follows it; progress is "P" alone.
bool hasProgressFeature(const std::string &features)
{
    for (std::size_t i = 0; i < features.size(); ++i) {
        const bool isAlone =
            i + 1 == features.size() || !std::islower(static_cast<unsigned char>(features[i + 1]));
        if (features[i] == 'P' && isAlone)
            return true;
    }
    return false;
}

bool takesProgressSequence()
{
    constexpr int firstVte = 7900;
    const std::string program = environment("TERM_PROGRAM");
    return hasProgressFeature(environment("TERM_FEATURES")) || program == "WezTerm" || program == "ghostty" ||
           !environment("WT_SESSION").empty() || environment("ConEmuANSI") == "ON" ||
           std::atoi(environment("VTE_VERSION").c_str()) >= firstVte;
}

int columns()
{
    winsize size{};
    if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    return 80;
}

/// What of it has room in so many columns. What is no character, or would move the cursor, becomes a blank.
std::string cutToColumns(const std::string &text, int columns)
{
    static const locale_t utf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
    const locale_t before = ::uselocale(utf8);
    std::string made;
    for (std::size_t at = 0, size = 0; at < text.size() && columns >= 0; at += size) {
        wchar_t character = 0;
        std::mbstate_t state{};
        size = std::mbrtowc(&character, &text[at], text.size() - at, &state);
        const bool isCharacter = size > 0 && size <= text.size();
        const int width = isCharacter ? ::wcwidth(character) : -1;
        size = isCharacter ? size : 1;
        columns -= std::abs(width);
        if (columns >= 0)
            made += width < 0 ? " " : text.substr(at, size);
    }
    ::uselocale(before);
    return made;
}

std::string barOf(int percent)
{
    constexpr int width = 20;
    const int full = percent * width / 100;
    return '[' + std::string(static_cast<std::size_t>(full), '#') +
           std::string(static_cast<std::size_t>(width - full), '.') + ']';
}

std::string captionOf(const pipeContent &content)
{
    return oneLine(content.text.empty() ? content.bars[0].caption : content.text);
}

} // namespace

terminalLine::terminalLine()
    : m_isTerminal(::isatty(STDERR_FILENO) != 0), m_takesProgress(m_isTerminal && takesProgressSequence())
{
}

terminalLine::~terminalLine()
{
    if (m_takesProgress)
        std::fputs("\x1B]9;4;0;0\x1B\\", stderr);
    if (!m_drawn.empty())
        std::fputc('\n', stderr);
}

void terminalLine::show(const pipeContent &content, int remainingSeconds)
{
    if (!m_isTerminal) {
        print(content);
        return;
    }
    std::string line;
    for (const pipeBar &bar : content.bars) {
        const bool pulsates = content.pulsates && &bar == &content.bars[0];
        line += pulsates ? "[...] " : barOf(bar.percent) + ' ' + std::to_string(bar.percent) + "% ";
    }
    line += timeLeft(remainingSeconds);
    line = cutToColumns(line + captionOf(content), columns() - 1);
    if (line != m_drawn)
        draw(line, content);
}

/// Nothing for a time that has stood for longer than it says.
std::string terminalLine::timeLeft(int seconds)
{
    using std::chrono::steady_clock;
    if (seconds < 0)
        return {};
    const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(steady_clock::now() - m_start);
    const int shown = m_calm.shown(seconds, static_cast<int>(elapsed.count()));
    return m_calm.isOverdue(static_cast<int>(elapsed.count())) ? std::string()
                                                               : translatedRemaining(shown) + ' ';
}

void terminalLine::draw(const std::string &line, const pipeContent &content)
{
    std::fprintf(stderr, "\r%s\x1B[K", line.c_str());
    if (m_takesProgress && content.pulsates)
        std::fputs("\x1B]9;4;3;0\x1B\\", stderr);
    else if (m_takesProgress)
        std::fprintf(stderr, "\x1B]9;4;1;%d\x1B\\", content.bars[0].percent);
    m_drawn = line;
}

void terminalLine::print(const pipeContent &content)
{
    const std::string text = captionOf(content);
    const int tenth = content.bars[0].percent / 10;
    if (text == m_printedText && tenth == m_printedTenth)
        return;
    std::fprintf(stderr, "%3d%% %s\n", content.bars[0].percent, text.c_str());
    m_printedText = text;
    m_printedTenth = tenth;
}
