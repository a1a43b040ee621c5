#pragma once

#include <string>
#include <vector>

/// A command line, cut where the parser would read it otherwise than it is meant.
struct givenWords {
    std::vector<std::string> words;   ///< for the parser; "--name=" in two words, name and empty value
    std::vector<std::string> command; ///< behind `pipe … --`, untouched
};

givenWords wordsFrom(int argc, char **argv);
