#include "options/CommandLine.h"

#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

#include "options/OptionRules.h"
#include "text/Text.h"

namespace sqlcmd {
namespace {

void overwrite(char* text) {
    explicit_bzero(text, std::strlen(text));
}

// Applies the arguments to the options. A value is attached to the option's letter, follows the '=' of its
// long name, or is the next argument.
class ArgumentReader {
  public:
    explicit ArgumentReader(std::span<char*> arguments) : m_arguments(arguments) {}

    void readInto(Options& options) {
        while (m_next < m_arguments.size() && !isInformation(options.action)) {
            char* argument = m_arguments[m_next++];
            if (std::string_view(argument).starts_with("--"))
                readLongOption(argument, options);
            else
                readShortOption(argument, options);
        }
    }

    bool hasRead(char letter) const { return m_letters.find(letter) != std::string::npos; }
    int optionCount() const { return m_optionCount; }  // of the options read, repeated ones included

  private:
    static bool isInformation(Options::Action action) {
        return action == Options::Action::Help || action == Options::Action::Version;
    }

    void readShortOption(char* argument, Options& options) {
        const OptionRule* rule = argument[0] == '-' ? findRule(argument[1]) : nullptr;
        if (rule == nullptr) throwUnknown(argument);
        m_optionName = {'-', rule->letter};
        readValues(*rule, argument[2] != '\0' ? argument + 2 : nullptr, options);
    }

    void readLongOption(char* argument, Options& options) {
        char* const equals = std::strchr(argument, '=');
        const std::string_view whole = argument;
        const std::string_view name = whole.substr(2, equals != nullptr ? whole.find('=') - 2 : whole.npos);
        const OptionRule* rule = findRule(name);
        if (rule == nullptr) throwUnknown(whole.substr(0, name.size() + 2));
        m_optionName = "--" + std::string(name);
        readValues(*rule, equals != nullptr ? equals + 1 : nullptr, options);
    }

    // `attached` is null if the argument holds no value.
    void readValues(const OptionRule& rule, char* attached, Options& options) {
        static char nothing[] = "";
        if (rule.letter != '\0') m_letters += rule.letter;
        ++m_optionCount;
        switch (rule.takes) {
            case Takes::Nothing:
                if (attached != nullptr) throwUnknown(m_optionName + (isLong() ? "=" : "") + attached);
                return apply(rule, nothing, options);
            case Takes::Optional:
                if (attached == nullptr && isNextOneOf(rule.words)) attached = m_arguments[m_next++];
                return apply(rule, attached != nullptr ? attached : nothing, options);
            case Takes::Name:
            case Takes::Text:
                if (attached == nullptr) attached = nextValue(rule.takes);
                if (rule.takes == Takes::Name && *attached == '\0') throwMissingValue();
                return apply(rule, attached, options);
            case Takes::Assignments:
                apply(rule, attached != nullptr ? attached : nextValue(Takes::Name), options);
                while (m_next < m_arguments.size() && m_arguments[m_next][0] != '-')
                    apply(rule, m_arguments[m_next++], options);
        }
    }

    bool isLong() const { return m_optionName.starts_with("--"); }

    bool isNextOneOf(std::string_view words) const {
        if (m_next == m_arguments.size()) return false;
        while (!words.empty())
            if (takeWord(words) == m_arguments[m_next]) return true;
        return false;
    }

    char* nextValue(Takes takes) {
        const bool missing =
            m_next == m_arguments.size() || (takes == Takes::Name && m_arguments[m_next][0] == '-');
        if (missing) throwMissingValue();
        return m_arguments[m_next++];
    }

    [[noreturn]] void throwMissingValue() const {
        throw UsageError("'" + m_optionName + "': Missing argument");
    }

    void apply(const OptionRule& rule, char* value, Options& options) const {
        try {
            rule.apply(options, value);
        } catch (const UsageError& error) {
            throw UsageError("'" + m_optionName + "': " + error.what());
        }
        const bool isPassword = rule.letter == 'P' || rule.letter == 'z' || rule.letter == 'Z';
        if (isPassword) overwrite(value);
    }

    [[noreturn]] static void throwUnknown(std::string_view argument) {
        throw UsageError("'" + std::string(argument) + "': Unknown Option");
    }

    std::span<char*> m_arguments;
    std::size_t m_next = 0;
    std::string m_optionName;
    std::string m_letters;  // of the options read
    int m_optionCount = 0;
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
void readHostSettings(Options& options) {
    if (const char* file = std::getenv("SQLCMD_CA_FILE")) options.caFile = file;
    const char* encryption = std::getenv("SQLCMD_ENCRYPT");
    if (options.encryption == Encryption::Default && encryption != nullptr)
        options.encryption = encryptionNamed(encryption);
    if (const char* timeout = std::getenv("SQLCMD_NETWORK_TIMEOUT"))
        std::from_chars(timeout, timeout + std::strlen(timeout), options.networkTimeout);
}

// Variables that set options.
struct OptionVariable {
    const char* name;
    char letter;
    bool isWritable = true;  // :setvar changes the option, too
};

constexpr OptionVariable kOptionVariables[] = {
    {"SQLCMDLOGINTIMEOUT", 'l'},      {"SQLCMDSTATTIMEOUT", 't'},
    {"SQLCMDHEADERS", 'h'},           {"SQLCMDCOLSEP", 's'},
    {"SQLCMDCOLWIDTH", 'w'},          {"SQLCMDERRORLEVEL", 'm'},
    {"SQLCMDPACKETSIZE", 'a', false}, {"SQLCMDMAXVARTYPEWIDTH", 'y'},
    {"SQLCMDMAXFIXEDTYPEWIDTH", 'Y'},
};

// The variable of -w may be 0, its default.
void applyVariable(const OptionVariable& variable, Options& options, const std::string& value) {
    if (variable.letter == 'w' && value == "0")
        options.layout.lineWidth = 0;
    else
        findRule(variable.letter)->apply(options, value);
}

// Sets what the command line has not set. With -X the environment sets nothing but the password.
void readEnvironment(Options& options, const ArgumentReader& arguments) {
    const bool isIgnored = options.restriction != Restriction::None;
    const auto readVariable = [&](std::initializer_list<const char*> names, std::string& target) {
        for (const char* name : names) {
            const char* value = isIgnored ? nullptr : std::getenv(name);
            if (target.empty() && value != nullptr) target = value;
        }
    };
    readVariable({"SQLCMDSERVER", "OSQLSERVER"}, options.server);
    if (!options.trusted) readVariable({"SQLCMDUSER", "OSQLUSER"}, options.user);
    readVariable({"SQLCMDDBNAME"}, options.database);
    readVariable({"SQLCMDWORKSTATION"}, options.workstation);
    readVariable({"SQLCMDINI"}, options.startUpScript);
    if (options.server.empty()) options.server = Options{}.server;
    for (const OptionVariable& variable : kOptionVariables) {
        std::string value;
        readVariable({variable.name}, value);
        if (value.empty() || arguments.hasRead(variable.letter)) continue;
        try {
            applyVariable(variable, options, value);
        } catch (const UsageError& error) {
            throw UsageError(std::string("environment variable ") + variable.name + ": " + error.what());
        }
    }
    options.startsPrograms = std::getenv("SQLCMD_NO_PROGRAMS") == nullptr;
}

void takePasswordFromEnvironment(Options& options) {
    for (const char* name : {"SQLCMDPASSWORD", "OSQLPASSWORD"}) {
        char* value = std::getenv(name);
        if (value == nullptr) continue;
        if (!options.hasPassword && !options.trusted) {
            options.password = value;
            options.hasPassword = true;
        }
        overwrite(value);
        unsetenv(name);
    }
}

// Asks at a terminal only. Without a terminal a missing password is an empty one.
void askForPassword(Options& options) {
    if (options.trusted || options.hasPassword || isatty(STDIN_FILENO) == 0) return;
    if (char* answer = getpass("Password: ")) {
        options.password = answer;
        overwrite(answer);
    }
}

bool listsServers(const Options& options) {
    return options.action == Options::Action::ListServers ||
           options.action == Options::Action::ListServersOnly;
}

void checkExclusiveOptions(const Options& options, int optionCount) {
    const bool userGiven = !options.user.empty();
    if (listsServers(options) && optionCount > 1)
        throw UsageError("The -L option cannot be used together with other options.");
    if (!options.newPassword.empty() && !userGiven)
        throw UsageError("The -z and -Z options change the password of a login: give -U.");
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
    const std::span<char*> arguments(argv + 1, static_cast<std::size_t>(argc > 0 ? argc - 1 : 0));
    ArgumentReader reader(arguments);
    reader.readInto(options);
    checkExclusiveOptions(options, reader.optionCount());
    takePasswordFromEnvironment(options);
    readEnvironment(options, reader);
    readHostSettings(options);
    if (options.format == Format::Csv && !reader.hasRead('s')) options.layout.separator = ",";
    options.trusted = options.user.empty();
    if (options.action == Options::Action::Run) askForPassword(options);
    return options;
}

void setByVariable(Options& options, std::string_view name, std::string_view value) {
    for (const OptionVariable& variable : kOptionVariables) {
        if (!variable.isWritable || !equalsIgnoringCase(variable.name, name)) continue;
        std::string newValue(value);
        if (value.empty())
            for (const auto& [otherName, standard] : optionVariables(Options{}))
                if (otherName == variable.name) newValue = standard;
        return applyVariable(variable, options, newValue);
    }
    if (!equalsIgnoringCase(name, kEditorVariable))
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
            {"SQLCMDMAXFIXEDTYPEWIDTH", std::to_string(layout.shortTypeWidth)},
            {"SQLCMDINI", options.startUpScript}};
}

std::string usageText() {
    constexpr std::size_t kNamesWidth = 37;
    std::string text =
        "usage: sqlcmd [options]\nReads the script from standard input without -i, -Q and -q.\n";
    for (const OptionRule& rule : optionRules()) {
        std::string line = rule.letter != '\0' ? std::string("  -") + rule.letter : "    ";
        if (*rule.longName != '\0') line += std::string(" --") + rule.longName;
        line.resize(kNamesWidth, ' ');
        text += line + rule.help + "\n";
    }
    return text;
}

}  // namespace sqlcmd
