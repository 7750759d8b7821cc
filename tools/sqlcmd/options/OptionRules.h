// Table of the tool's options: names, values, effects.
#pragma once

#include <span>
#include <string_view>

#include "options/Options.h"

namespace sqlcmd {

enum class Takes {
    Nothing,
    Name,         // a value that is not empty and does not begin with '-'
    Text,         // any value
    Optional,     // a value that is attached, or the next argument if it is one of the rule's words
    Assignments,  // one or more name=value, up to the next option
};

struct OptionRule {
    char letter;  // NUL: the option has a long name only
    const char* longName;
    Takes takes;
    const char* help;
    void (*apply)(Options& options, std::string_view value);  // throws UsageError
    const char* words = "";                                   // for Takes::Optional, separated by blanks
};

std::span<const OptionRule> optionRules();

// Return null if there is no such option.
const OptionRule* findRule(char letter);
const OptionRule* findRule(std::string_view longName);

}  // namespace sqlcmd
