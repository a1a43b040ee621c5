#include "language/language.h"

#include <cstdlib>
#include <filesystem>
#include <libintl.h>
#include <locale.h>
#include <string>
#include <system_error>

namespace
{

constexpr char domain[] = "progressd";
const auto noLocale = static_cast<locale_t>(nullptr);

std::string environment(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

/// The locale of messages as it is named, whether or not the machine has it.
std::string namedLocale()
{
    for (const char *name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const std::string value = environment(name); !value.empty())
            return value;
    }
    return {};
}

/// "de" of "de_AT.UTF-8" and of "de:fr".
std::string languageOf(const std::string &locale)
{
    return locale.substr(0, locale.find_first_of("_.@:"));
}

/// gettext would pass over English, which has no catalogue, to the next of the languages.
bool isEnglish(const std::string &language)
{
    return language.empty() || language == "C" || language == "POSIX" || language == "en";
}

/// Where it is installed, and where the build puts it: at a fixed way from the program.
void bindCatalogues()
{
    std::error_code failure;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
    const auto folder = program.parent_path() / PROGRESS_LOCALE_FOLDER;
    ::bindtextdomain(domain, folder.lexically_normal().c_str());
    ::bind_textdomain_codeset(domain, "UTF-8");
}

/// A locale in which gettext heeds LANGUAGE. It does in none that is named C or begins with "C."; but any
/// other name of that language leads to the one UTF-8 locale that all machines have.
locale_t localeFor(const std::string &name, const std::string &languages)
{
    locale_t made = noLocale;
    if (!isEnglish(languageOf(name)))
        made = ::newlocale(LC_MESSAGES_MASK, name.c_str(), noLocale);
    if (made != noLocale)
        return made;
    ::setenv("LANGUAGE", languages.c_str(), 1);
    return ::newlocale(LC_MESSAGES_MASK, "C_XX.UTF-8", noLocale);
}

/// For as long as it lives, gettext translates.
class inLanguage
{
public:
    explicit inLanguage(locale_t locale) : m_before(::uselocale(locale)) {}
    ~inLanguage() { ::uselocale(m_before); }
    inLanguage(const inLanguage &) = delete;
    inLanguage &operator=(const inLanguage &) = delete;

private:
    const locale_t m_before;
};

/// None where everything stays English.
locale_t findLocale()
{
    const std::string name = namedLocale();
    const std::string list = environment("LANGUAGE");
    const std::string &languages = list.empty() ? name : list;
    if (name == "C" || name == "POSIX" || isEnglish(languageOf(languages)))
        return noLocale;
    bindCatalogues();
    const locale_t made = localeFor(name, languages);
    if (made == noLocale)
        return noLocale;
    {
        const inLanguage now(made);
        if (*::dgettext(domain, "") != '\0')
            return made;
    }
    ::freelocale(made);
    return noLocale;
}

locale_t userLocale()
{
    static const locale_t found = findLocale();
    return found;
}

} // namespace

bool isTranslated()
{
    return userLocale() != noLocale;
}

const char *translated(const char *english)
{
    // The empty text is the catalogue's own description.
    if (!isTranslated() || *english == '\0')
        return english;
    const inLanguage now(userLocale());
    return ::dgettext(domain, english);
}

const char *translated(const char *english, unsigned long count)
{
    if (!isTranslated())
        return english;
    const inLanguage now(userLocale());
    return ::dngettext(domain, english, english, count);
}
