#pragma once

#include "progressctl/common.h"
#include "progressctl/look.h"

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

/// The words behind the program's name. Where that is "zenity", "yad", "dialog" or "whiptail", those of a
/// `pipe` if they ask for a progress window; everything else is handed on to the next program of that name in
/// PATH, and this one is gone, or throws `failure`.
std::vector<std::string> wordsOfStandIn(int argc, char **argv);

givenWords wordsFrom(const std::vector<std::string> &all);

/// The command line while it is put together: each verb adds itself to `app` and, when it was given, does its
/// work as the last step of the parsing, and leaves the exit status if that is not 0.
struct commandLineSetup {
    CLI::App &app;
    commonOptions common;
    std::vector<std::string> command; ///< behind "--", of `pipe`
    int status = statusOk;
};

/// One file each.
void addDaemonVerbs(commandLineSetup &setup);
void addDialogVerbs(commandLineSetup &setup);
void addBoxVerbs(commandLineSetup &setup);
void addEventsVerb(commandLineSetup &setup);
void addPipeVerb(commandLineSetup &setup);
void addRecordsVerb(commandLineSetup &setup);

/// `--layout` and `--theme`.
void addLookOptions(CLI::App &verb, lookOptions &look);

/// For an option's value: one that `isFine`. Of another it is said that it `fault`, "is no number" say.
CLI::Validator valueThat(const std::function<bool(const std::string &)> &isFine, const std::string &fault);

/// For an option's value: seconds from `least` to `most`, a number that is one.
CLI::Validator secondsWithin(double least, double most);
