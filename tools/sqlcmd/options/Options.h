// The tool's command line.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/CodePage.h"
#include "text/Errors.h"

namespace sqlcmd {

// What happens to control characters in values (-k).
enum class ControlCharacters { Keep, ToBlank, RunToBlank };

// Layout of result sets. Widths are in characters; 0 means no limit.
struct Layout {
    std::string separator = " ";  // -s
    int lineWidth = 0;            // -w: longer lines are wrapped; 0: at 80 on a terminal
    bool trimBlanks = false;      // -W
    int rowsPerHeading = 0;       // -h: 0 one heading per result set, -1 none
    int longTypeWidth = 256;      // -y: (max) types, text, xml
    int shortTypeWidth = 0;       // -Y: char, varchar, nvarchar and others with a declared length
    bool withHeading = true;      // false with -y 0
    ControlCharacters controlCharacters = ControlCharacters::Keep;
};

// Restrictions of scripts (-X): commands that reach other programs, files or servers are skipped with a
// warning, or end the tool.
enum class Restriction { None, Warn, End };

// Statistics after each batch (-p).
enum class Statistics { None, Text, Colons };

// Messages that are printed to standard error instead of standard output (-r).
enum class ErrorStream { None, Errors, All };

enum class Encryption {
    Default,  // as the driver and the server agree
    Off,
    Require,  // without verification of the server's certificate
    Verify,
};

// Form of the results. All but Text print values whole and exact, and messages to standard error.
enum class Format { Text, Csv, Json, JsonLines };

// Variable with the editor of :ed.
constexpr const char* kEditorVariable = "SQLCMDEDITOR";

struct Options {
    enum class Action { Run, Help, Version, ListServers, ListServersOnly };
    Action action = Action::Run;

    std::string server = "localhost";
    std::string user;
    std::string password;  // overwritten by Connection after use
    bool hasPassword = false;
    bool trusted = false;               // -E
    std::string newPassword;            // -z, -Z; empty: none. Becomes the password in connect()
    bool endsAfterNewPassword = false;  // -Z
    Encryption encryption = Encryption::Default;
    bool trustCertificate = false;  // -C: encrypts without verification where Verify is set
    std::string caFile;             // empty: the host's trusted authorities
    std::string database;
    std::string workstation;
    int loginTimeout = 8;         // seconds; 0: none
    int queryTimeout = 0;         // seconds; 0: none
    int networkTimeout = 60;      // seconds without an answer of the server's host; 0: the kernel's limit
    int packetSize = 4096;        // bytes; -a
    bool readOnlyIntent = false;  // -K ReadOnly
    bool multiSubnetFailover = false;  // -M
    bool adminConnection = false;      // -A

    std::string startUpScript;  // SQLCMDINI; empty: none
    std::vector<std::string> inputFiles;
    std::optional<std::string> query;  // -Q, -q
    bool endsAfterQuery = true;        // false with -q
    std::string outputFile;
    bool unicodeOutput = false;
    int inputCodePage = kUtf8;  // of files without a byte order mark
    int outputCodePage = kUtf8;
    Format format = Format::Text;
    bool progress = false;
    bool usesPager = false;  // in interactive use
    ErrorStream errorStream = ErrorStream::None;

    bool quotedIdentifier = false;
    bool expandVariables = true;
    bool echo = false;
    std::string batchEnd = "GO";
    std::vector<std::pair<std::string, std::string>> variables;

    bool stopOnError = false;          // -b
    std::optional<int> severityLevel;  // -V
    bool rawErrors = false;            // -j: with the names that an ODBC driver puts before a message
    int messageLevel = 0;              // -m: -1 prints all messages, each with its heading

    Restriction restriction = Restriction::None;
    bool startsPrograms = true;  // false: !! and :ed are refused, without -X, too
    Statistics statistics = Statistics::None;
    Layout layout;
};

}  // namespace sqlcmd
