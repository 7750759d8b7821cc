// Command lines of Microsoft's query tool `sqlcmd`. They contain the password: wipe them and do not log them.
#pragma once

#include <string>

// Login of the query tool. Non-owning. The command line quotes the password but not server and user.
struct ToolLogin {
    const char* toolPath;
    const char* serverInstance;
    const char* userName;
    const char* password;
    bool windowsAuthentication;  // without user name and password
};

// Input and output of the query tool. Null strings count as empty, unless stated otherwise; an empty database
// means "Dorvas". SQL, file names and separator are put between double quotes without escaping.
struct ToolInput {
    const char* sql;  // a file's path or, in the string commands, the statement itself
    const char* outputFile;
    const char* dbName;
    const char* separator = nullptr;  // of columns, for csvCommand() only; null means ","
};

// Option bits of the script commands; other bits are ignored.
inline constexpr int kErrorLevelOption = 2;      // "-m 1" in place of "-m 0"
inline constexpr int kUnlimitedWidthOption = 4;  // "-y 0" in place of "-W"
inline constexpr int kUnicodeOption = 8;         // "-u"

std::string fileCommand(const ToolLogin& login, const ToolInput& input, bool errorLevel);
// With "-n": for RunFileQuery() without the tool's own syntax.
std::string plainFileCommand(const ToolLogin& login, const ToolInput& input);
std::string scriptFileCommand(const ToolLogin& login, const ToolInput& input, int options);
std::string scriptStringCommand(const ToolLogin& login, const ToolInput& input, int options);
std::string csvCommand(const ToolLogin& login, const ToolInput& input);
// Always uses user name and password, whatever the authentication. Uses no column separator:
// parseOutputFile() reads that layout. The command line is cut to 4,095 bytes. Callers rely on all three.
std::string stringCommand(const ToolLogin& login, const ToolInput& input);
