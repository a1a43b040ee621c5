#pragma once

/// The words of windows and terminals in the user's language, from the catalogues `progressd` of gettext:
/// that of LANGUAGE (a list), else of LC_ALL, LC_MESSAGES or LANG. English in the locales C and POSIX, in any
/// locale named C without LANGUAGE, and where there is no catalogue. Nothing else follows the language:
/// neither numbers nor what the system calls its errors. The texts are UTF-8, whatever the locale says, and
/// stay as long as the process.

/// Whether the user's language is one that has a catalogue. The first call finds out, and may set LANGUAGE:
/// call it before there are threads.
bool isTranslated();

const char *translated(const char *english);
/// In the form for `count`; in English all are the same, as with "s" for seconds.
const char *translated(const char *english, unsigned long count);

/// A word that is translated where it is used, not here.
constexpr const char *toTranslate(const char *english)
{
    return english;
}
