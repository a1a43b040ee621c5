#include "progressctl/safeName.h"

#include <algorithm>

std::string safeName(std::string text)
{
    constexpr std::size_t longest = 100;
    std::size_t size = std::min(text.size(), longest);
    // Not within a character of several bytes.
    while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
        --size;
    text.resize(size);
    std::replace_if(
        text.begin(), text.end(),
        [](unsigned char each) { return each < ' ' || each == '/' || each == 0x7F; }, '_');
    if (!text.empty() && text.front() == '.')
        text.front() = '_';
    return text;
}

std::string baseName(const std::string &path)
{
    return path.substr(path.find_last_of('/') + 1);
}
