#include "querytool/QueryToolCommand.h"

#include "CallerText.h"
#include "FX.h"
#include "SecretText.h"
#include "parts/DatabaseNames.h"

namespace {

namespace format {
constexpr char kBase[] = "\"%s\" -b -S %s";
constexpr char kPlainBase[] = "\"%s\" -n -b -S %s";
constexpr char kWindowsLogin[] = "%s -E";
constexpr char kSqlLogin[] = "%s -U %s -P \"%s\"";
constexpr char kFile[] = "%s -d %s -m %d -i \"%s\" -o \"%s\" -s \"%c\" %s";
constexpr char kPlainFile[] = "%s -d %s -i \"%s\" -o \"%s\" ";
constexpr char kScriptFile[] = "%s -d %s %s -m %d -i \"%s\" -o \"%s\" -s \"%c\" %s";
constexpr char kScriptString[] = "%s -d %s %s -m %d -Q \"%s\" -o \"%s\" -s \"%c\" %s";
constexpr char kCsv[] = "%s -d %s -i \"%s\" -o \"%s\" -s \"%s\" -W";
constexpr char kString[] = "\"%s\" -b -w 4000 -S %s -U %s -P \"%s\" -d %s -Q \"%s\" -o \"%s\"";
}  // namespace format

constexpr char kDefaultSeparator[] = ",";
constexpr char kColumnSeparator = '\t';
constexpr char kTrimBlanks[] = "-W";
constexpr std::size_t kStringCommandLength = 4095;
constexpr std::size_t kStringDatabaseLength = 255;

const char* databaseOf(const ToolInput& input) {
    return *textOrEmpty(input.dbName) != '\0' ? input.dbName : kManagementDatabase;
}

// The string commands cut the database's name to 255 bytes.
std::string cutDatabaseOf(const ToolInput& input) {
    return cutTo(databaseOf(input), kStringDatabaseLength);
}

SecretText withLogin(const ToolLogin& login, const std::string& base) {
    if (login.windowsAuthentication) return SecretText(FXString::Format(format::kWindowsLogin, base.c_str()));
    return SecretText(FXString::Format(format::kSqlLogin, base.c_str(), login.userName, login.password));
}

SecretText baseCommand(const ToolLogin& login) {
    return withLogin(login, FXString::Format(format::kBase, login.toolPath, login.serverInstance));
}

// An empty string in place of "-u" leaves two blanks behind the database. Callers rely on it.
const char* unicodeSwitch(int options) {
    return (options & kUnicodeOption) != 0 ? "-u" : "";
}
const char* widthSwitch(int options) {
    return (options & kUnlimitedWidthOption) != 0 ? "-y 0" : kTrimBlanks;
}
int errorLevel(int options) {
    return (options & kErrorLevelOption) != 0 ? 1 : 0;
}

}  // namespace

std::string fileCommand(const ToolLogin& login, const ToolInput& input, bool errorLevelSet) {
    return FXString::Format(format::kFile, baseCommand(login).c_str(), databaseOf(input),
                            errorLevelSet ? 1 : 0, textOrEmpty(input.sql), textOrEmpty(input.outputFile),
                            kColumnSeparator, kTrimBlanks);
}

std::string plainFileCommand(const ToolLogin& login, const ToolInput& input) {
    const SecretText start =
        withLogin(login, FXString::Format(format::kPlainBase, login.toolPath, login.serverInstance));
    return FXString::Format(format::kPlainFile, start.c_str(), databaseOf(input), textOrEmpty(input.sql),
                            textOrEmpty(input.outputFile));
}

std::string scriptFileCommand(const ToolLogin& login, const ToolInput& input, int options) {
    return FXString::Format(format::kScriptFile, baseCommand(login).c_str(), databaseOf(input),
                            unicodeSwitch(options), errorLevel(options), textOrEmpty(input.sql),
                            textOrEmpty(input.outputFile), kColumnSeparator, widthSwitch(options));
}

std::string scriptStringCommand(const ToolLogin& login, const ToolInput& input, int options) {
    return FXString::Format(format::kScriptString, baseCommand(login).c_str(), cutDatabaseOf(input).c_str(),
                            unicodeSwitch(options), errorLevel(options), textOrEmpty(input.sql),
                            textOrEmpty(input.outputFile), kColumnSeparator, widthSwitch(options));
}

std::string csvCommand(const ToolLogin& login, const ToolInput& input) {
    return FXString::Format(format::kCsv, baseCommand(login).c_str(), databaseOf(input),
                            textOrEmpty(input.sql), textOrEmpty(input.outputFile),
                            input.separator != nullptr ? input.separator : kDefaultSeparator);
}

std::string stringCommand(const ToolLogin& login, const ToolInput& input) {
    const SecretText command(FXString::Format(format::kString, login.toolPath, login.serverInstance,
                                              login.userName, login.password, cutDatabaseOf(input).c_str(),
                                              textOrEmpty(input.sql), textOrEmpty(input.outputFile)));
    return cutTo(command.text(), kStringCommandLength);
}
