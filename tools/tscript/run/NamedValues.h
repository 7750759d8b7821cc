// Values of a package's placeholders from a command line that gives them by position and by name.
#pragma once

#include <string>
#include <vector>

#include "package/Parameters.h"

struct NamedValue {
    std::string name;
    std::string value;
};

// Reads the words "--NAME VALUE" and "--NAME=VALUE". Throws Failure (kUsage).
std::vector<NamedValue> namedValues(const std::vector<std::string>& words);

// Returns one value for each of the declared parameters, in their order: the one of its name, else the next
// of `positional`, else its default. Surplus positional values follow. Throws Failure (kUsage) for a name
// that is unknown or doubled, a value that does not fit the type, and a missing value, for which
// `allowMissing` ends the values instead if no later parameter has one.
std::vector<std::string> valuesInOrder(const std::vector<Parameter>& parameters,
                                       const std::vector<std::string>& positional,
                                       const std::vector<NamedValue>& named, bool allowMissing);
