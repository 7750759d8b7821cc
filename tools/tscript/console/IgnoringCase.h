// Order of strings that ignores the case of ASCII letters, for maps.
#pragma once

#include <strings.h>

#include <string>

struct IgnoringCase {
    bool operator()(const std::string& a, const std::string& b) const {
        return strcasecmp(a.c_str(), b.c_str()) < 0;
    }
};
