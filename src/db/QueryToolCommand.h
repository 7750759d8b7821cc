// Command lines of Microsoft's query tool `sqlcmd`. They carry the password: wipe them, and log none of them.
#pragma once

#include <string>

// Whom the tool is started as. Texts are borrowed; the server is not quoted in the command, the password is.
struct ToolLogin {
    const char* toolPath;
    const char* serverInstance;
    const char* userName;
    const char* password;
    bool windowsAuthentication;  // user name and password are then left out
};

// What is run, and where its output goes. Null texts count as empty; an empty database is "Dorvas". Nothing
// is escaped: the texts stand between double quotes as they are.
struct ToolInput {
    const char* sql;  // a file's path or, for the string commands, the statement itself
    const char* outputFile;
    const char* dbName;
};

// Bits of the `_TS` runners' options; others are ignored.
inline constexpr int kErrorLevelOption = 2;      // "-m 1" in place of "-m 0"
inline constexpr int kUnlimitedWidthOption = 4;  // "-y 0" in place of "-W"
inline constexpr int kUnicodeOption = 8;         // "-u"

std::string fileCommand(const ToolLogin& login, const ToolInput& input, bool errorLevel);
// With "-n": the form of RunFileQuery() for files that the tool's own syntax is not used in.
std::string plainFileCommand(const ToolLogin& login, const ToolInput& input);
std::string scriptFileCommand(const ToolLogin& login, const ToolInput& input, int options);
std::string scriptStringCommand(const ToolLogin& login, const ToolInput& input, int options);
std::string csvCommand(const ToolLogin& login, const ToolInput& input, const char* separator);
// Always with user name and password, whatever the authentication; without a column separator, which is the
// layout that parseOutputFile() reads; cut to 4,095 bytes. Callers rely on all three.
std::string stringCommand(const ToolLogin& login, const ToolInput& input);
