#include "app/toolkitWords.h"

#include "language/language.h"

#include <QCoreApplication>

#include <algorithm>
#include <string_view>

namespace
{

/// As the toolkit writes them.
constexpr std::string_view words[] = {
    toTranslate("&Yes"),       toTranslate("Yes to &All"),
    toTranslate("&No"),        toTranslate("N&o to All"),
    toTranslate("OK"),         toTranslate("Cancel"),
    toTranslate("Close"),      toTranslate("Save"),
    toTranslate("Open"),       toTranslate("Save All"),
    toTranslate("Abort"),      toTranslate("Retry"),
    toTranslate("Ignore"),     toTranslate("Discard"),
    toTranslate("Help"),       toTranslate("Apply"),
    toTranslate("Reset"),      toTranslate("&Copy"),
    toTranslate("Select All"), toTranslate("Restore Defaults"),
};

} // namespace

toolkitWords::toolkitWords()
{
    if (isTranslated())
        QCoreApplication::installTranslator(this);
}

/// None for the others, which may be names or numbers that the toolkit lets translators choose.
QString toolkitWords::translate(const char *, const char *english, const char *, int) const
{
    const bool isKnown = std::find(std::begin(words), std::end(words), english) != std::end(words);
    return isKnown ? QString(translated(english)) : QString();
}
