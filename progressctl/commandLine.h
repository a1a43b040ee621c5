#pragma once

#include "progressctl/common.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

/// A command line, cut where the parser would read it otherwise than it is meant.
struct givenWords {
    std::string verb;                 ///< empty if there is none
    std::vector<std::string> words;   ///< for the parser; "--name=" in two words, name and empty value
    std::vector<std::string> command; ///< behind `pipe … --`, untouched
};

givenWords wordsFrom(const std::vector<std::string> &all);

/// The command line while it is put together: each verb adds itself to `app` and, when it was given, leaves
/// in `chosen` what is to be done, which returns the exit status.
struct commandLineSetup {
    CLI::App &app;
    commonOptions common;
    std::vector<std::string> command; ///< behind "--", of `pipe`
    std::function<int()> chosen;
};

/// One file each.
void addDaemonVerbs(commandLineSetup &setup);
void addDialogVerbs(commandLineSetup &setup);
void addBoxVerbs(commandLineSetup &setup);
void addEventsVerb(commandLineSetup &setup);
void addPipeVerb(commandLineSetup &setup);
void addRecordsVerb(commandLineSetup &setup);

/// For an option's value: seconds from `least` to `most`, a number that is one.
CLI::Validator secondsWithin(double least, double most);

/// For an option's value: one of these words, as they are written.
CLI::Validator oneOf(const std::vector<std::string> &words);
