#include "options/Options.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <span>
#include <string_view>

#include "text/Text.h"
#include "text/Utf.h"

namespace sqlcmd {
namespace {

using Apply = void (*)(Options&, std::string_view value);

enum class Takes {
    Nothing,
    Name,         // a value that does not begin with '-'
    Text,         // any value
    Digit,        // 0 or 1, optional
    Suffix,       // attached characters, optional
    Assignments,  // one or more name=value, up to the next option
};

struct Rule {
    char letter;
    Takes takes;
    const char* help;
    Apply apply;
};

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
    std::string_view value = assignment.substr(equals + 1);
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
        value = value.substr(1, value.size() - 2);
    options.variables.emplace_back(assignment.substr(0, equals), value);
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
    if (level != "" && level != "m" && level != "mandatory" && level != "true" && level != "o" &&
        level != "optional" && level != "false" && level != "disable")
        throwUnexpected(level, "s, m or o");
    const bool isMandatory = level == "" || level == "m" || level == "mandatory" || level == "true";
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

const Rule kRules[] = {
    {'S', Takes::Name, "server[\\instance][,port]", [](Options& o, std::string_view v) { o.server = v; }},
    {'U', Takes::Name, "login name", [](Options& o, std::string_view v) { o.user = v; }},
    {'P', Takes::Text, "password (else SQLCMDPASSWORD)",
     [](Options& o, std::string_view v) { o.password = v, o.hasPassword = true; }},
    {'E', Takes::Nothing, "integrated authentication",
     [](Options& o, std::string_view) { o.trusted = true; }},
    {'d', Takes::Name, "database", [](Options& o, std::string_view v) { o.database = v; }},
    {'H', Takes::Name, "workstation name", [](Options& o, std::string_view v) { o.workstation = v; }},
    {'l', Takes::Name, "login time-out in seconds",
     [](Options& o, std::string_view v) { o.loginTimeout = parseNumber(v, 0, kMaxTimeout); }},
    {'t', Takes::Name, "query time-out in seconds",
     [](Options& o, std::string_view v) { o.queryTimeout = parseNumber(v, 0, kMaxTimeout); }},
    {'N', Takes::Suffix,
     "encrypt the connection: m mandatory, with a verified certificate (default), o optional", setEncryption},
    {'C', Takes::Nothing, "trust the server's certificate",
     [](Options& o, std::string_view) { o.trustCertificate = true; }},
    {'i', Takes::Name, "input files, separated by commas; may be repeated", addInputFiles},
    {'Q', Takes::Text, "run this query and exit",
     [](Options& o, std::string_view v) { o.query = v, o.endsAfterQuery = true; }},
    {'q', Takes::Text, "run this query, then read standard input",
     [](Options& o, std::string_view v) { o.query = v, o.endsAfterQuery = false; }},
    {'o', Takes::Name, "output file", [](Options& o, std::string_view v) { o.outputFile = v; }},
    {'u', Takes::Nothing, "output file in UTF-16",
     [](Options& o, std::string_view) { o.unicodeOutput = true; }},
    {'r', Takes::Digit, "print to standard error: 0 errors, 1 all messages",
     [](Options& o, std::string_view v) {
         o.errorStream = v == "1" ? ErrorStream::All : ErrorStream::Errors;
     }},
    {'b', Takes::Nothing, "exit with code 1 when a batch fails",
     [](Options& o, std::string_view) { o.stopOnError = true; }},
    {'V', Takes::Name, "lowest severity that counts as a failure",
     [](Options& o, std::string_view v) { o.severityLevel = parseNumber(v, 0, kMaxSeverity); }},
    {'m', Takes::Text, "lowest severity to print; -1 all messages, with headings",
     [](Options& o, std::string_view v) { o.messageLevel = parseNumber(v, -1, kMaxSeverity); }},
    {'s', Takes::Text, "column separator",
     [](Options& o, std::string_view v) { o.layout.separator = oneCharacter(v); }},
    {'W', Takes::Nothing, "trim trailing blanks",
     [](Options& o, std::string_view) { o.layout.trimBlanks = true; }},
    {'w', Takes::Name, "line width, 9 to 65535",
     [](Options& o, std::string_view v) {
         o.layout.lineWidth = parseNumber(v, kMinLineWidth, kMaxLineWidth);
     }},
    {'h', Takes::Text, "rows between headings; -1 no heading",
     [](Options& o, std::string_view v) {
         o.layout.rowsPerHeading = parseNumber(v, -1, kMaxRowsPerHeading);
     }},
    {'y', Takes::Name, "width of long types, 0 to 8000; 0 no limit, no heading",
     [](Options& o, std::string_view v) {
         o.layout.longTypeWidth = parseNumber(v, 0, kMaxTypeWidth);
         o.layout.withHeading = o.layout.longTypeWidth != 0;
     }},
    {'Y', Takes::Name, "width of other character types, 0 to 8000; 0 as declared",
     [](Options& o, std::string_view v) { o.layout.shortTypeWidth = parseNumber(v, 0, kMaxTypeWidth); }},
    {'v', Takes::Assignments, "scripting variables, name=value ...", setVariable},
    {'x', Takes::Nothing, "do not expand $(name)",
     [](Options& o, std::string_view) { o.expandVariables = false; }},
    {'I', Takes::Nothing, "QUOTED_IDENTIFIER ON",
     [](Options& o, std::string_view) { o.quotedIdentifier = true; }},
    {'c', Takes::Name, "batch separator instead of GO",
     [](Options& o, std::string_view v) { o.batchEnd = v; }},
    {'e', Takes::Nothing, "print each batch before it runs",
     [](Options& o, std::string_view) { o.echo = true; }},
    {'a', Takes::Name, "packet size in bytes, 512 to 32767",
     [](Options& o, std::string_view v) { o.packetSize = parseNumber(v, kMinPacketSize, kMaxPacketSize); }},
    {'A', Takes::Nothing, "dedicated administrator connection",
     [](Options& o, std::string_view) { o.adminConnection = true; }},
    {'K', Takes::Name, "application intent: ReadOnly or ReadWrite", setIntent},
    {'M', Takes::Nothing, "multi-subnet failover (no effect with FreeTDS)",
     [](Options& o, std::string_view) { o.multiSubnetFailover = true; }},
    {'k', Takes::Suffix, "replace control characters by a blank: 1 each, 2 each run", setControlCharacters},
    {'p', Takes::Suffix, "print statistics: 1 separated by colons", setStatistics},
    {'X', Takes::Suffix, "refuse commands that reach programs, files and servers: 1 and end", setRestriction},
    {'R', Takes::Nothing, "accepted without effect", [](Options&, std::string_view) {}},
    {'j', Takes::Nothing, "accepted without effect", [](Options&, std::string_view) {}},
    {'n', Takes::Nothing, "accepted without effect", [](Options&, std::string_view) {}},
    {'D', Takes::Nothing, "not supported",
     [](Options&, std::string_view) {
         throwUnsupported("Data source names are not read: give the server with -S.");
     }},
    {'F', Takes::Suffix, "not supported",
     [](Options&, std::string_view) { throwUnsupported("Use -W, -s and -y to lay out results."); }},
    {'g', Takes::Nothing, "not supported",
     [](Options&, std::string_view) {
         throwUnsupported("FreeTDS cannot decrypt columns. Use Microsoft's tool.");
     }},
    {'G', Takes::Nothing, "not supported",
     [](Options&, std::string_view) {
         throwUnsupported("Azure Active Directory is not available. Use -U or -E.");
     }},
};

const Rule* findRule(char letter) {
    for (const Rule& rule : kRules)
        if (rule.letter == letter) return &rule;
    return nullptr;
}

void overwrite(char* text) {
    explicit_bzero(text, std::strlen(text));
}

// Applies the arguments to the options. A value is attached to the option's letter or is the next argument.
class ArgumentReader {
  public:
    explicit ArgumentReader(std::span<char*> arguments) : m_arguments(arguments) {}

    void readInto(Options& options) {
        for (m_next = 0; m_next < m_arguments.size();) {
            char* argument = m_arguments[m_next++];
            if (readHelpOrVersion(argument, options)) return;
            const Rule* rule = argument[0] == '-' && argument[1] != '\0' ? findRule(argument[1]) : nullptr;
            if (rule == nullptr) throw UsageError("'" + std::string(argument) + "': Unknown Option");
            m_optionName = {'-', rule->letter};
            readValues(*rule, argument + 2, options);
        }
    }

  private:
    static bool readHelpOrVersion(std::string_view argument, Options& options) {
        if (argument == "-?" || argument == "--help") options.action = Options::Action::Help;
        if (argument == "--version") options.action = Options::Action::Version;
        return options.action != Options::Action::Run;
    }

    void readValues(const Rule& rule, char* attached, Options& options) {
        switch (rule.takes) {
            case Takes::Nothing:
                if (*attached != '\0') throw UsageError("'" + m_optionName + attached + "': Unknown Option");
                return apply(rule, attached, options);
            case Takes::Suffix:
                return apply(rule, attached, options);
            case Takes::Digit:
                return apply(rule, optionalDigit(attached), options);
            case Takes::Name:
            case Takes::Text:
                return apply(rule, *attached != '\0' ? attached : nextValue(rule.takes), options);
            case Takes::Assignments:
                apply(rule, *attached != '\0' ? attached : nextValue(Takes::Name), options);
                while (m_next < m_arguments.size() && m_arguments[m_next][0] != '-')
                    apply(rule, m_arguments[m_next++], options);
        }
    }

    char* optionalDigit(char* attached) {
        const auto isZeroOrOne = [](std::string_view text) { return text == "0" || text == "1"; };
        if (*attached == '\0' && m_next < m_arguments.size() && isZeroOrOne(m_arguments[m_next]))
            return m_arguments[m_next++];
        if (*attached != '\0' && !isZeroOrOne(attached))
            throw UsageError("'" + m_optionName + attached + "': Unknown Option");
        return attached;
    }

    char* nextValue(Takes takes) {
        const bool missing =
            m_next == m_arguments.size() || (takes == Takes::Name && m_arguments[m_next][0] == '-');
        if (missing) throw UsageError("'" + m_optionName + "': Missing argument");
        return m_arguments[m_next++];
    }

    void apply(const Rule& rule, char* value, Options& options) const {
        try {
            rule.apply(options, value);
        } catch (const UsageError& error) {
            throw UsageError("'" + m_optionName + "': " + error.what());
        }
        if (rule.letter == 'P') overwrite(value);
    }

    std::span<char*> m_arguments;
    std::size_t m_next = 0;
    std::string m_optionName;
};

Encryption encryptionNamed(std::string_view name) {
    for (const auto& [known, encryption] : {std::pair("", Encryption::Default),
                                            {"off", Encryption::Off},
                                            {"require", Encryption::Require},
                                            {"verify", Encryption::Verify}})
        if (name == known) return encryption;
    throw UsageError("SQLCMD_ENCRYPT must be verify, require or off");
}

// The host layer's settings, which hold with -X too.
void readEncryption(Options& options) {
    if (const char* file = std::getenv("SQLCMD_CA_FILE")) options.caFile = file;
    const char* encryption = std::getenv("SQLCMD_ENCRYPT");
    if (options.encryption == Encryption::Default && encryption != nullptr)
        options.encryption = encryptionNamed(encryption);
}

// Variables that set options.
struct OptionVariable {
    const char* name;
    char letter;
};

constexpr OptionVariable kOptionVariables[] = {
    {"SQLCMDLOGINTIMEOUT", 'l'},    {"SQLCMDSTATTIMEOUT", 't'},       {"SQLCMDHEADERS", 'h'},
    {"SQLCMDCOLSEP", 's'},          {"SQLCMDCOLWIDTH", 'w'},          {"SQLCMDERRORLEVEL", 'm'},
    {"SQLCMDMAXVARTYPEWIDTH", 'y'}, {"SQLCMDMAXFIXEDTYPEWIDTH", 'Y'},
};

// Sets what the command line has not set. With -X the environment sets nothing but the password.
void readEnvironment(Options& options) {
    const auto readVariable = [&](const char* name, std::string& target) {
        const char* value = options.restriction == Restriction::None ? std::getenv(name) : nullptr;
        if (target.empty() && value != nullptr) target = value;
    };
    readVariable("SQLCMDSERVER", options.server);
    if (!options.trusted) readVariable("SQLCMDUSER", options.user);
    readVariable("SQLCMDDBNAME", options.database);
    readVariable("SQLCMDWORKSTATION", options.workstation);
    if (options.server.empty()) options.server = Options{}.server;
}

void takePasswordFromEnvironment(Options& options) {
    char* value = std::getenv("SQLCMDPASSWORD");
    if (value == nullptr) return;
    if (!options.hasPassword && !options.trusted) {
        options.password = value;
        options.hasPassword = true;
    }
    overwrite(value);
    unsetenv("SQLCMDPASSWORD");
}

// Asks at a terminal only. Without a terminal a missing password is an empty one.
void askForPassword(Options& options) {
    if (options.trusted || options.hasPassword || isatty(STDIN_FILENO) == 0) return;
    if (char* answer = getpass("Password: ")) {
        options.password = answer;
        overwrite(answer);
    }
}

void checkExclusiveOptions(const Options& options, bool userGiven) {
    if (options.trusted && (userGiven || options.hasPassword))
        throw UsageError("The -E and the -U/-P options are mutually exclusive.");
    if (options.query && !options.inputFiles.empty())
        throw UsageError("The -i and the -Q/-q options are mutually exclusive.");
    const Layout& layout = options.layout;
    const bool widthGiven = layout.longTypeWidth != Layout{}.longTypeWidth || layout.shortTypeWidth != 0;
    if (layout.trimBlanks && widthGiven)
        throw UsageError("The -W and the -y/-Y options are mutually exclusive.");
}

}  // namespace

Options parseOptions(int argc, char** argv) {
    Options options;
    options.server.clear();
    ArgumentReader({argv + 1, static_cast<std::size_t>(argc > 0 ? argc - 1 : 0)}).readInto(options);
    checkExclusiveOptions(options, /*userGiven=*/!options.user.empty());
    takePasswordFromEnvironment(options);
    readEnvironment(options);
    readEncryption(options);
    options.trusted = options.user.empty();
    if (options.action == Options::Action::Run) askForPassword(options);
    return options;
}

void setByVariable(Options& options, std::string_view name, std::string_view value) {
    for (const OptionVariable& variable : kOptionVariables)
        if (equalsIgnoringCase(variable.name, name)) return findRule(variable.letter)->apply(options, value);
    throw UsageError("it cannot be set in a script. Give the option on the command line.");
}

std::vector<std::pair<std::string, std::string>> optionVariables(const Options& options) {
    const Layout& layout = options.layout;
    return {{"SQLCMDSERVER", options.server},
            {"SQLCMDUSER", options.user},
            {"SQLCMDDBNAME", options.database},
            {"SQLCMDWORKSTATION", options.workstation},
            {"SQLCMDLOGINTIMEOUT", std::to_string(options.loginTimeout)},
            {"SQLCMDSTATTIMEOUT", std::to_string(options.queryTimeout)},
            {"SQLCMDHEADERS", std::to_string(layout.rowsPerHeading)},
            {"SQLCMDCOLSEP", layout.separator},
            {"SQLCMDCOLWIDTH", std::to_string(layout.lineWidth)},
            {"SQLCMDPACKETSIZE", std::to_string(options.packetSize)},
            {"SQLCMDERRORLEVEL", std::to_string(options.messageLevel)},
            {"SQLCMDMAXVARTYPEWIDTH", std::to_string(layout.longTypeWidth)},
            {"SQLCMDMAXFIXEDTYPEWIDTH", std::to_string(layout.shortTypeWidth)}};
}

std::string usageText() {
    std::string text =
        "usage: sqlcmd [options]\nReads the script from standard input without -i, -Q and -q.\n";
    for (const Rule& rule : kRules) text += std::string("  -") + rule.letter + "  " + rule.help + "\n";
    return text + "  -?  print this help\n  --version\n";
}

}  // namespace sqlcmd
