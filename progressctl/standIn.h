#pragma once

#include <string>
#include <vector>

/// The words behind the program's name. Where that is "zenity", "yad", "dialog" or "whiptail", those of a
/// `pipe` if they ask for a progress window; everything else is handed on to the next program of that name in
/// PATH, and this one is gone, or throws `failure`.
std::vector<std::string> wordsOfStandIn(int argc, char **argv);
