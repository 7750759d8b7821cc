// Reports of a database operation: the last message and the log file.
#pragma once

#include <string>
#include <utility>

#include "DVUtilities/commonFunc.h"

struct DatabaseReport {
    std::string& message;  // the last one, of success too
    const std::string& logFile;

    void log(const std::string& line) const { LogToFile(logFile.c_str(), line.c_str(), /*raw=*/false); }
    // Makes the text the last message and logs it.
    void report(std::string text) const {
        message = std::move(text);
        log(message);
    }
    // report() for a failure: always false.
    bool fail(std::string text) const {
        report(std::move(text));
        return false;
    }
};
