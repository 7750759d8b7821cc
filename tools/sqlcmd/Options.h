// The tool's command line.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Errors.h"

namespace sqlcmd {

// How result sets are laid out. Widths are in characters; 0 is without a limit.
struct Layout {
    std::string separator = " ";
    int lineWidth = 0;        // -w: rows are broken there
    bool trimBlanks = false;  // -W
    int rowsPerHeading = 0;   // -h: 0 one heading a result set, -1 none
    int longTypeWidth = 256;  // -y: (max) types, text, xml
    int shortTypeWidth = 0;   // -Y: char, varchar, nvarchar ... of a declared length
    bool withHeading = true;  // -y 0 prints none
};

// Which messages go to standard error instead of standard output (-r).
enum class ErrorStream { None, Errors, All };

struct Options {
    enum class Action { Run, Help, Version };
    Action action = Action::Run;

    std::string server = "localhost";
    std::string user;
    std::string password;  // wiped by the connection once it is used
    bool hasPassword = false;
    bool trusted = false;  // -E
    bool encrypt = false;
    bool trustCertificate = false;
    std::string database;
    std::string workstation;
    int loginTimeout = 8;  // seconds, 0: none
    int queryTimeout = 0;  // seconds, 0: none

    std::vector<std::string> inputFiles;
    std::optional<std::string> query;  // -Q, -q
    std::string outputFile;
    bool unicodeOutput = false;
    ErrorStream errorStream = ErrorStream::None;

    bool quotedIdentifier = false;
    bool expandVariables = true;
    bool echo = false;
    std::string batchEnd = "GO";
    std::vector<std::pair<std::string, std::string>> variables;

    bool stopOnError = false;          // -b
    std::optional<int> severityLevel;  // -V
    int messageLevel = 0;              // -m: -1 shows every message with its heading

    Layout layout;
};

// Reads the arguments and the SQLCMD... defaults of the environment. The bytes of a password are overwritten
// in argv and in the environment, so that neither a process list nor a child sees them. Asks for a password
// that is missing at a terminal. Throws UsageError.
Options parseOptions(int argc, char** argv);

std::string usageText();

}  // namespace sqlcmd
