#include "options/OptionRules.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>
#include <string>

#include "options/Variables.h"
#include "text/CodePage.h"
#include "text/Text.h"
#include "text/Utf.h"

namespace sqlcmd {
namespace {

int parseNumber(std::string_view value, int low, int high) {
    int result = 0;
    const char* end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, result);
    if (error != std::errc{} || stop != end || result < low || result > high)
        throw UsageError("'" + std::string(value) + "' is not a number from " + std::to_string(low) + " to " +
                         std::to_string(high));
    return result;
}

std::string oneCharacter(std::string_view value) {
    if (utf8Length(value) != 1) throw UsageError("the separator must be one character");
    return std::string(value);
}

void setVariable(Options& options, std::string_view assignment) {
    const auto equals = assignment.find('=');
    if (equals == 0 || equals == std::string_view::npos)
        throw UsageError("'" + std::string(assignment) + "' is not of the form name=value");
    const std::string_view name = assignment.substr(0, equals);
    if (!Variables::isName(name)) throw UsageError("'" + std::string(name) + "' is not a variable name");
    std::string_view value = assignment.substr(equals + 1);
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
        value = value.substr(1, value.size() - 2);
    options.variables.emplace_back(name, value);
}

[[noreturn]] void throwUnexpected(std::string_view value, const char* expected) {
    throw UsageError("'" + std::string(value) + "' is not " + expected);
}

// Options of Microsoft's tool that this one cannot have.
[[noreturn]] void throwUnsupported(const char* instead) {
    throw UsageError(std::string("not supported. ") + instead);
}

void setEncryption(Options& options, std::string_view level) {
    if (level == "s" || level == "strict") throwUnsupported("FreeTDS has no strict encryption. Use -Nm.");
    const bool isMandatory = level == "" || level == "m" || level == "mandatory" || level == "true";
    if (!isMandatory && level != "o" && level != "optional" && level != "false" && level != "disable")
        throwUnexpected(level, "s, m or o");
    options.encryption = isMandatory ? Encryption::Verify : Encryption::Default;
}

void setIntent(Options& options, std::string_view intent) {
    if (!equalsIgnoringCase(intent, "ReadOnly") && !equalsIgnoringCase(intent, "ReadWrite"))
        throwUnexpected(intent, "ReadOnly or ReadWrite");
    options.readOnlyIntent = equalsIgnoringCase(intent, "ReadOnly");
}

void setControlCharacters(Options& options, std::string_view level) {
    if (level != "" && level != "1" && level != "2") throwUnexpected(level, "1 or 2");
    options.layout.controlCharacters =
        level == "2" ? ControlCharacters::RunToBlank : ControlCharacters::ToBlank;
}

void setStatistics(Options& options, std::string_view level) {
    if (level != "" && level != "1") throwUnexpected(level, "1");
    options.statistics = level == "1" ? Statistics::Colons : Statistics::Text;
}

void setRestriction(Options& options, std::string_view level) {
    if (level != "" && level != "1") throwUnexpected(level, "1");
    options.restriction = level == "1" ? Restriction::End : Restriction::Warn;
}

void setErrorStream(Options& options, std::string_view level) {
    if (level != "" && level != "0" && level != "1") throwUnexpected(level, "0 or 1");
    options.errorStream = level == "1" ? ErrorStream::All : ErrorStream::Errors;
}

int codePageNumber(std::string_view digits) {
    constexpr int kMaxCodePage = 65535;
    const int number = parseNumber(digits, 1, kMaxCodePage);
    if (!isCodePage(number)) throwUnexpected(digits, "a code page of this host");
    return number;
}

// `pages`: NUMBER, or i:NUMBER and o:NUMBER separated by a comma.
void setCodePages(Options& options, std::string_view pages) {
    const bool isForBoth = pages.find(':') == std::string_view::npos;
    if (isForBoth) {
        options.inputCodePage = options.outputCodePage = codePageNumber(pages);
        return;
    }
    while (!pages.empty()) {
        const std::string_view part = pages.substr(0, pages.find(','));
        const bool isInput = part.starts_with("i:");
        if (!isInput && !part.starts_with("o:")) throwUnexpected(part, "i:NUMBER or o:NUMBER");
        (isInput ? options.inputCodePage : options.outputCodePage) = codePageNumber(part.substr(2));
        pages.remove_prefix(std::min(part.size() + 1, pages.size()));
    }
}

void setBatchEnd(Options& options, std::string_view word) {
    if (trimmed(word).empty()) throw UsageError("the batch separator is empty");
    options.batchEnd = word;
}

void setServerList(Options& options, std::string_view form) {
    if (form != "" && form != "c") throwUnexpected(form, "c");
    options.action = form == "c" ? Options::Action::ListServersOnly : Options::Action::ListServers;
}

void setNewPassword(Options& options, std::string_view password) {
    if (password.empty()) throw UsageError("the new password is empty");
    options.newPassword = password;
}

void setFormat(Options& options, Format format) {
    if (options.format != Format::Text && options.format != format)
        throw UsageError("only one of --csv, --json and --jsonl can be given");
    options.format = format;
}

// Divides the names at commas, unless a file exists whose name contains them.
void addInputFiles(Options& options, std::string_view names) {
    std::error_code ignored;
    while (!std::filesystem::exists(names, ignored)) {
        const std::size_t comma = names.find(',');
        if (comma == std::string_view::npos) break;
        options.inputFiles.emplace_back(names.substr(0, comma));
        names.remove_prefix(comma + 1);
    }
    options.inputFiles.emplace_back(names);
}

constexpr int kMaxTimeout = 65534;  // seconds
constexpr int kMaxSeverity = 25;
constexpr int kMinLineWidth = 9;
constexpr int kMaxLineWidth = 65535;
constexpr int kMaxTypeWidth = 8000;
constexpr int kMinPacketSize = 512;  // bytes
constexpr int kMaxPacketSize = 32767;
constexpr int kMaxRowsPerHeading = std::numeric_limits<int>::max();

const OptionRule kRules[] = {
    {'S', "server", Takes::Name, "server[\\instance][,port]",
     [](Options& o, std::string_view v) { o.server = v; }},
    {'U', "user-name", Takes::Name, "login name", [](Options& o, std::string_view v) { o.user = v; }},
    {'P', "password", Takes::Text, "password (else SQLCMDPASSWORD)",
     [](Options& o, std::string_view v) { o.password = v, o.hasPassword = true; }},
    {'E', "use-trusted-connection", Takes::Nothing, "integrated authentication",
     [](Options& o, std::string_view) { o.trusted = true; }},
    {'d', "database-name", Takes::Name, "database", [](Options& o, std::string_view v) { o.database = v; }},
    {'H', "workstation-name", Takes::Name, "workstation name",
     [](Options& o, std::string_view v) { o.workstation = v; }},
    {'l', "login-timeout", Takes::Name, "login time-out in seconds",
     [](Options& o, std::string_view v) { o.loginTimeout = parseNumber(v, 0, kMaxTimeout); }},
    {'t', "query-timeout", Takes::Name, "query time-out in seconds",
     [](Options& o, std::string_view v) { o.queryTimeout = parseNumber(v, 0, kMaxTimeout); }},
    {'N', "encrypt-connection", Takes::Optional,
     "encrypt the connection: m mandatory, with a verified certificate (default), o optional", setEncryption,
     "s strict m mandatory true o optional false disable"},
    {'C', "trust-server-certificate", Takes::Nothing, "trust the server's certificate",
     [](Options& o, std::string_view) { o.trustCertificate = true; }},
    {'i', "input-file", Takes::Name, "input files, separated by commas; may be repeated", addInputFiles},
    {'Q', "query", Takes::Text, "run this query and exit",
     [](Options& o, std::string_view v) { o.query = v, o.endsAfterQuery = true; }},
    {'q', "initial-query", Takes::Text, "run this query, then read standard input",
     [](Options& o, std::string_view v) { o.query = v, o.endsAfterQuery = false; }},
    {'o', "output-file", Takes::Name, "output file",
     [](Options& o, std::string_view v) { o.outputFile = v; }},
    {'u', "unicode-output-file", Takes::Nothing, "output file in UTF-16",
     [](Options& o, std::string_view) { o.unicodeOutput = true; }},
    {'r', "errors-to-stderr", Takes::Optional, "print to standard error: 0 errors, 1 all messages",
     setErrorStream, "0 1"},
    {'b', "exit-on-error", Takes::Nothing, "exit with code 1 when a batch fails",
     [](Options& o, std::string_view) { o.stopOnError = true; }},
    {'V', "error-severity-level", Takes::Text, "lowest severity that counts as a failure; -1 as 0",
     [](Options& o, std::string_view v) { o.severityLevel = std::max(0, parseNumber(v, -1, kMaxSeverity)); }},
    {'m', "error-level", Takes::Text, "lowest severity to print; -1 all messages, with headings",
     [](Options& o, std::string_view v) { o.messageLevel = parseNumber(v, -1, kMaxSeverity); }},
    {'s', "column-separator", Takes::Text, "column separator",
     [](Options& o, std::string_view v) { o.layout.separator = oneCharacter(v); }},
    {'W', "trim-spaces", Takes::Nothing, "trim trailing blanks",
     [](Options& o, std::string_view) { o.layout.trimBlanks = true; }},
    {'w', "screen-width", Takes::Name, "line width, 9 to 65535 (default: 80 on a terminal)",
     [](Options& o, std::string_view v) {
         o.layout.lineWidth = parseNumber(v, kMinLineWidth, kMaxLineWidth);
     }},
    {'h', "headers", Takes::Text, "rows between headings; -1 no heading",
     [](Options& o, std::string_view v) {
         o.layout.rowsPerHeading = parseNumber(v, -1, kMaxRowsPerHeading);
     }},
    {'y', "variable-type-width", Takes::Name, "width of long types, 0 to 8000; 0 no limit, no heading",
     [](Options& o, std::string_view v) {
         o.layout.longTypeWidth = parseNumber(v, 0, kMaxTypeWidth);
         o.layout.withHeading = o.layout.longTypeWidth != 0;
     }},
    {'Y', "fixed-type-width", Takes::Name, "width of other character types, 0 to 8000; 0 as declared",
     [](Options& o, std::string_view v) { o.layout.shortTypeWidth = parseNumber(v, 0, kMaxTypeWidth); }},
    {'v', "variables", Takes::Assignments, "scripting variables, name=value ...", setVariable},
    {'x', "disable-variable-substitution", Takes::Nothing, "do not expand $(name)",
     [](Options& o, std::string_view) { o.expandVariables = false; }},
    {'I', "enable-quoted-identifiers", Takes::Nothing, "QUOTED_IDENTIFIER ON",
     [](Options& o, std::string_view) { o.quotedIdentifier = true; }},
    {'c', "batch-terminator", Takes::Name, "batch separator instead of GO", setBatchEnd},
    {'e', "echo-input", Takes::Nothing, "print each batch before it runs",
     [](Options& o, std::string_view) { o.echo = true; }},
    {'a', "packet-size", Takes::Name, "packet size in bytes, 512 to 32767",
     [](Options& o, std::string_view v) { o.packetSize = parseNumber(v, kMinPacketSize, kMaxPacketSize); }},
    {'A', "dedicated-admin-connection", Takes::Nothing, "dedicated administrator connection",
     [](Options& o, std::string_view) { o.adminConnection = true; }},
    {'K', "application-intent", Takes::Name, "application intent: ReadOnly or ReadWrite", setIntent},
    {'M', "multi-subnet-failover", Takes::Nothing, "multi-subnet failover (no effect with FreeTDS)",
     [](Options& o, std::string_view) { o.multiSubnetFailover = true; }},
    {'k', "remove-control-characters", Takes::Optional,
     "print a blank for control characters: 1 each (default), 2 each run", setControlCharacters, "1 2"},
    {'p', "print-statistics", Takes::Optional, "print statistics: 1 separated by colons", setStatistics, "1"},
    {'X', "disable-cmd", Takes::Optional, "refuse commands that reach programs, files and servers: 1 and end",
     setRestriction, "1"},
    {'f', "code-page", Takes::Name, "code page of input and output files: NUMBER, or i:NUMBER,o:NUMBER",
     setCodePages},
    {'L', "list-servers", Takes::Optional, "list the servers of the network; c names only", setServerList,
     "c"},
    {'z', "change-password", Takes::Text, "change the password, also an expired one", setNewPassword},
    {'Z', "change-password-exit", Takes::Text, "change the password and exit",
     [](Options& o, std::string_view v) { setNewPassword(o, v), o.endsAfterNewPassword = true; }},
    {'\0', "csv", Takes::Nothing, "print results as CSV, messages to standard error",
     [](Options& o, std::string_view) { setFormat(o, Format::Csv); }},
    {'\0', "json", Takes::Nothing, "print results as one JSON document, messages to standard error",
     [](Options& o, std::string_view) { setFormat(o, Format::Json); }},
    {'\0', "jsonl", Takes::Nothing, "print a JSON object for each row, messages to standard error",
     [](Options& o, std::string_view) { setFormat(o, Format::JsonLines); }},
    {'\0', "progress", Takes::Nothing, "print rows and seconds of the running batch to standard error",
     [](Options& o, std::string_view) { o.progress = true; }},
    {'\0', "pager", Takes::Nothing, "at a terminal: show wide results with PAGER",
     [](Options& o, std::string_view) { o.usesPager = true; }},
    {'?', "help", Takes::Nothing, "print this help",
     [](Options& o, std::string_view) { o.action = Options::Action::Help; }},
    {'\0', "version", Takes::Nothing, "print the version",
     [](Options& o, std::string_view) { o.action = Options::Action::Version; }},
    {'R', "client-regional-setting", Takes::Nothing, "accepted without effect",
     [](Options&, std::string_view) {}},
    {'j', "raw-errors", Takes::Nothing, "print messages with the names that an ODBC driver adds",
     [](Options& o, std::string_view) { o.rawErrors = true; }},
    {'n', "", Takes::Nothing, "accepted without effect", [](Options&, std::string_view) {}},
    {'D', "dsn", Takes::Nothing, "not supported",
     [](Options&, std::string_view) {
         throwUnsupported("Data source names are not read: give the server with -S.");
     }},
    {'F', "server-name-override", Takes::Optional, "not supported",
     [](Options&, std::string_view) { throwUnsupported("Use -W, -s and -y to lay out results."); }},
    {'g', "enable-column-encryption", Takes::Nothing, "not supported",
     [](Options&,
        std::string_view) { throwUnsupported("FreeTDS cannot decrypt columns. Use Microsoft's tool."); }},
    {'G', "use-aad", Takes::Nothing, "not supported",
     [](Options&,
        std::string_view) { throwUnsupported("Azure Active Directory is not available. Use -U or -E."); }},
};

}  // namespace

std::span<const OptionRule> optionRules() {
    return kRules;
}

const OptionRule* findRule(char letter) {
    for (const OptionRule& rule : kRules)
        if (rule.letter == letter && letter != '\0') return &rule;
    return nullptr;
}

const OptionRule* findRule(std::string_view longName) {
    for (const OptionRule& rule : kRules)
        if (equalsIgnoringCase(rule.longName, longName) && !longName.empty()) return &rule;
    return nullptr;
}

}  // namespace sqlcmd
