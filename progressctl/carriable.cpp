#include "progressctl/carriable.h"

#include <algorithm>

namespace
{

constexpr char zeroWidthSpace[] = "\xE2\x80\x8B";
constexpr char greekQuestionMark[] = "\xCD\xBE";

std::string replaced(std::string text, std::string_view part, const std::string &by)
{
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += by.size())
        text.replace(at, part.size(), by);
    return text;
}

} // namespace

std::string carriable(std::string text, std::string_view kind)
{
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    const std::string name = std::string(kind) + '>';
    return replaced(std::move(text), "</" + name, "</" + (zeroWidthSpace + name));
}

std::string oneLine(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char each) { return each < ' '; }, ' ');
    return text;
}

std::string titleSetting(const std::string &title)
{
    return replaced(carriable(oneLine(title), "configuration"), ";", greekQuestionMark);
}
