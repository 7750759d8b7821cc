// What the consumer checks with: a failed check is told with its place, and the program goes on.
#pragma once

#include <cstdio>
#include <string>

struct Checks {
    int passed = 0;
    int failed = 0;

    void that(bool holds, const char* what, const char* file, int line) {
        if (holds) {
            ++passed;
            return;
        }
        ++failed;
        std::fprintf(stderr, "%s:%d: %s\n", file, line, what);
    }
};

inline bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

#define CHECK(condition) checks.that((condition), #condition, __FILE__, __LINE__)

// Where the sample installation stands, and how its server is reached.
struct Site {
    std::string folder;
    std::string server;
    std::string user;
    std::string password;
    std::string logFile;  // a log of the consumer's own
};

void checkHostFacts(const Site& site, Checks& checks);
void checkDatabase(const Site& site, Checks& checks);
void checkScripts(const Site& site, Checks& checks);
