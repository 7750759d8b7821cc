#include "script/BatchReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <utility>

#include "text/Errors.h"
#include "text/Text.h"

namespace sqlcmd {
namespace {

constexpr std::size_t kMaxIncludeDepth = 32;
constexpr std::size_t kMaxBatch = std::size_t{256} << 20;      // bytes; SQL Server accepts less
constexpr std::size_t kMaxEditedBatch = std::size_t{1} << 20;  // bytes; a longer one is not kept for :ed
constexpr std::string_view kReservedPrefix = "SQLCMD";  // of the variables that hold the tool's options

// Commands that are also recognised without a colon, as older tools spell them.
constexpr std::string_view kWithoutColon[] = {"exit", "quit", "reset"};

// Commands that -X forbids.
constexpr std::string_view kRestricted[] = {"!!", "ed", "r", "out", "error", "perftrace", "connect"};
constexpr std::string_view kShellCommand = "!!";
constexpr std::string_view kEditCommand = "ed";

constexpr const char* kHelp =
    "GO [n]                          run the batch, n times\n"
    ":connect SERVER [-l S] [-U NAME -P PASSWORD]\n"
    "                                connect to another server\n"
    ":ed                             edit the batch, or the last one\n"
    ":error FILE|STDERR|STDOUT       print errors there\n"
    ":exit [([QUERY])]               end; with parentheses, run the batch first\n"
    ":help                           print this list\n"
    ":list                           print the batch\n"
    ":listvar                        print the scripting variables\n"
    ":on error exit|ignore           end at the first batch that fails, or continue\n"
    ":out FILE|STDERR|STDOUT         print results there\n"
    ":perftrace FILE|STDERR|STDOUT   print the statistics of -p there\n"
    ":quit                           end without running the batch\n"
    ":r FILE                         insert the contents of a file\n"
    ":reset                          discard the batch\n"
    ":serverlist                     list the servers of the network\n"
    ":setvar NAME [VALUE]            set or remove a scripting variable\n"
    ":xml on|off                     print the first column only, unformatted\n"
    ":!! COMMAND                     run a shell command\n";

Step stepOf(Step::Kind kind) {
    Step step;
    step.kind = kind;
    return step;
}

Step refusalOf(std::string_view command) {
    Step step = stepOf(Step::Kind::Refused);
    step.name = command;
    return step;
}

bool isOneOf(std::span<const std::string_view> names, std::string_view name) {
    return std::any_of(names.begin(), names.end(),
                       [&](std::string_view other) { return equalsIgnoringCase(name, other); });
}

// Updates the state by the character at i, or by the two-character token there; i then is at its last
// character.
void advance(LexicalState& state, std::string_view text, std::size_t& i) {
    const char c = text[i];
    const char after = i + 1 < text.size() ? text[i + 1] : '\0';
    const bool opensComment = c == '/' && after == '*' && state.closing == 0;
    const bool closesComment = c == '*' && after == '/' && state.commentDepth > 0;
    const bool isDoubled = c == state.closing && c == after;
    if (opensComment || closesComment || isDoubled) {
        state.commentDepth += opensComment ? 1 : closesComment ? -1 : 0;
        ++i;
    } else if (state.commentDepth > 0) {
        return;
    } else if (state.closing != 0) {
        if (c == state.closing) state.closing = 0;
    } else if (c == '\'' || c == '"') {
        state.closing = c;
    } else if (c == '[') {
        state.closing = ']';
    }
}

// Returns the position of the first character, from `start`, that may change the lexical state or begin a
// variable reference or comment; the size of the text if there is none.
std::size_t nextSpecial(std::string_view text, std::size_t start) {
    static constexpr auto kIsSpecial = [] {
        std::array<bool, 256> table{};
        for (const char c : {'\'', '"', '[', ']', '/', '*', '-', '$'})
            table[static_cast<unsigned char>(c)] = true;
        return table;
    }();
    while (start < text.size() && !kIsSpecial[static_cast<unsigned char>(text[start])]) ++start;
    return start;
}

// Search for the parenthesis that closes the one at the beginning of a text, which grows by lines.
class ParenthesisSearch {
  public:
    // Searches the characters that were appended since the last call. Returns npos while the parenthesis is
    // missing.
    std::size_t find(std::string_view text) {
        for (; m_position < text.size(); ++m_position) {
            if (m_state.inBatchText()) {
                const char c = text[m_position];
                if (c == '(') ++m_depth;
                if (c == ')' && --m_depth == 0) return m_position;
                if (text.substr(m_position).starts_with("--")) {
                    m_position = std::min(text.find('\n', m_position), text.size() - 1);
                    continue;
                }
            }
            advance(m_state, text, m_position);
        }
        return std::string_view::npos;
    }

  private:
    LexicalState m_state;
    std::size_t m_position = 0;
    int m_depth = 0;
};

std::string unquoted(std::string_view text) {
    if (text.size() < 2 || text.front() != '"' || text.back() != '"') return std::string(text);
    std::string result;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        result += text[i];
        if (text[i] == '"' && i + 2 < text.size() && text[i + 1] == '"') ++i;  // "" means one quote
    }
    return result;
}

}  // namespace

BatchReader::BatchReader(ScriptSource source, Variables& variables, ScriptRules rules)
    : m_variables(variables), m_rules(std::move(rules)) {
    m_sources.push_back(std::move(source));
}

Step BatchReader::next() {
    while (nextLine()) {
        if (!m_state.inBatchText()) {
            appendLine();
        } else if (const std::optional<int> count = batchEndCount(m_line)) {
            if (hasBatch() && *count > 0) return takeBatch(*count);
            m_batch.clear();
        } else if (const std::optional<Step> command = readCommand()) {
            if (command->kind != Step::Kind::None) return *command;
        } else {
            appendLine();
        }
    }
    return hasBatch() ? takeBatch(1) : stepOf(Step::Kind::End);
}

bool BatchReader::mayWait() const {
    return std::any_of(m_sources.begin(), m_sources.end(),
                       [](const ScriptSource& source) { return source.mayWait(); });
}

bool BatchReader::nextLine() {
    while (!m_sources.empty()) {
        if (m_sources.back().nextLine(m_line)) return true;
        if (m_sources.size() == 1) return false;
        m_sources.pop_back();
    }
    return false;
}

// Returns the number of executions if the line ends a batch: the separator, an optional number, an optional
// comment.
std::optional<int> BatchReader::batchEndCount(std::string_view line) const {
    line = trimmed(line);
    if (!equalsIgnoringCase(line.substr(0, m_rules.batchEnd.size()), m_rules.batchEnd)) return std::nullopt;
    line.remove_prefix(m_rules.batchEnd.size());
    line = line.substr(0, line.find("--"));
    if (trimmed(line).empty()) return 1;
    const bool isLongerWord = kBlanks.find(line.front()) == std::string_view::npos;
    if (isLongerWord) return std::nullopt;
    int count = 0;
    const std::string number = expanded(trimmed(line));
    const char* end = number.data() + number.size();
    const auto [stop, error] = std::from_chars(number.data(), end, count);
    const bool isNumber = error == std::errc{} && stop == end && count >= 0;
    return isNumber ? std::optional(count) : std::nullopt;
}

int BatchReader::batchLine() const {
    return 1 + static_cast<int>(std::count(m_batch.begin(), m_batch.end(), '\n'));
}

std::string BatchReader::discardInput() {
    replaceBatch({});
    const std::string outermost = m_sources.size() > 1 ? m_sources[1].name() : "";
    while (m_sources.size() > 1) m_sources.pop_back();
    return outermost;
}

// Returns nullopt if the line is not a command.
std::optional<Step> BatchReader::readCommand() {
    const std::string_view line = trimmed(m_line);
    const auto nameLength = std::min(line.find_first_of(" \t("), line.size());
    const std::string_view name = line.substr(0, nameLength);
    if (isOneOf(kWithoutColon, name)) return runCommand(name, line.substr(nameLength));
    if (std::optional<Step> program = readProgramCommand(line)) return program;
    const bool isCommand = line.starts_with(':') && !line.starts_with("::");  // ::fn_name() is T-SQL
    if (!isCommand) return std::nullopt;
    if (m_rules.isRestricted && isOneOf(kRestricted, name.substr(1))) return refusalOf(name);
    std::optional<Step> step = runCommand(name.substr(1), line.substr(nameLength));
    if (!step) throwCommandError(name);
    return step;
}

// Reads "!! COMMAND" and "ED", with or without a colon. Returns nullopt if the line is neither.
std::optional<Step> BatchReader::readProgramCommand(std::string_view line) const {
    const bool hasColon = line.starts_with(':');
    const std::string_view command = line.substr(hasColon ? 1 : 0);
    const bool isShell = command.starts_with(kShellCommand);
    if (!isShell && !equalsIgnoringCase(command, kEditCommand)) return std::nullopt;
    const std::string_view name =
        line.substr(0, (hasColon ? 1 : 0) + (isShell ? kShellCommand : kEditCommand).size());
    if (m_rules.isRestricted) return refusalOf(name);
    if (!m_rules.startsPrograms)
        throw ToolError("Sqlcmd: Error: '" + std::string(name) +
                        "' is disabled: the program that has started sqlcmd permits no other programs.");
    Step step = stepOf(isShell ? Step::Kind::RunProgram : Step::Kind::Edit);
    if (isShell)
        step.text = expanded(trimmed(command.substr(kShellCommand.size())));
    else
        step.text = hasBatch() ? m_batch : m_lastBatch;
    return step;
}

// Returns nullopt for an unknown name or invalid arguments.
std::optional<Step> BatchReader::runCommand(std::string_view name, std::string_view arguments) {
    arguments = trimmed(arguments);
    if (equalsIgnoringCase(name, "setvar")) return setVariable(arguments);
    if (equalsIgnoringCase(name, "r")) return includeFile(arguments), stepOf(Step::Kind::None);
    if (equalsIgnoringCase(name, "exit")) return readExit(std::string(arguments));
    if (equalsIgnoringCase(name, "reset") && arguments.empty())
        return m_batch.clear(), stepOf(Step::Kind::None);
    if (equalsIgnoringCase(name, "quit") && arguments.empty()) return stepOf(Step::Kind::Exit);
    const auto readSwitch = [&](Step::Kind kind, std::string_view yes,
                                std::string_view no) -> std::optional<Step> {
        Step step = stepOf(kind);
        step.on = equalsIgnoringCase(arguments, yes);
        return step.on || equalsIgnoringCase(arguments, no) ? std::optional(step) : std::nullopt;
    };
    if (equalsIgnoringCase(name, "xml")) return readSwitch(Step::Kind::Xml, "on", "off");
    if (equalsIgnoringCase(name, "on") && equalsIgnoringCase(takeWord(arguments), "error"))
        return readSwitch(Step::Kind::OnError, "exit", "ignore");
    return readOtherCommand(name, arguments);
}

std::optional<Step> BatchReader::readOtherCommand(std::string_view name, std::string_view arguments) {
    const auto stepWith = [](Step::Kind kind, std::string text) {
        Step step = stepOf(kind);
        step.text = std::move(text);
        return step;
    };
    if (!arguments.empty()) {
        if (equalsIgnoringCase(name, "connect")) return stepWith(Step::Kind::Connect, expanded(arguments));
        if (equalsIgnoringCase(name, "out")) return stepWith(Step::Kind::Out, expanded(unquoted(arguments)));
        if (equalsIgnoringCase(name, "error"))
            return stepWith(Step::Kind::Error, expanded(unquoted(arguments)));
        if (equalsIgnoringCase(name, "perftrace"))
            return stepWith(Step::Kind::PerfTrace, expanded(unquoted(arguments)));
        return std::nullopt;
    }
    if (equalsIgnoringCase(name, "list")) return stepWith(Step::Kind::Print, m_batch);
    if (equalsIgnoringCase(name, "help")) return stepWith(Step::Kind::Print, kHelp);
    if (equalsIgnoringCase(name, "serverlist")) return stepOf(Step::Kind::ListServers);
    if (equalsIgnoringCase(name, "listvar")) return stepOf(Step::Kind::ListVariables);
    return std::nullopt;
}

// :exit ends at once. :exit() runs the batch first. :exit(query) runs the batch and the query; the exit code
// is the query's value. The query ends at the closing parenthesis, which may be on a later line.
std::optional<Step> BatchReader::readExit(std::string arguments) {
    if (arguments.empty()) return stepOf(Step::Kind::Exit);
    if (arguments.front() != '(') return std::nullopt;
    ParenthesisSearch search;
    std::size_t end;
    while ((end = search.find(arguments)) == std::string::npos) {
        if (!nextLine()) throwCommandError("exit");
        arguments += '\n' + m_line;
    }
    const std::string_view text = arguments;
    if (!trimmed(text.substr(end + 1)).empty()) throwCommandError("exit");
    const std::string_view query = trimmed(text.substr(1, end - 1));
    Step step = stepOf(Step::Kind::ExitQuery);
    step.on = !query.empty();
    step.text = std::exchange(m_batch, {}) + expanded(query);
    if (trimmed(step.text).empty()) step.kind = Step::Kind::Exit;
    return step;
}

Step BatchReader::setVariable(std::string_view arguments) {
    const std::string_view name = takeWord(arguments);
    if (!Variables::isName(name)) throwCommandError(":setvar");
    Step step = stepOf(Step::Kind::None);
    if (equalsIgnoringCase(name.substr(0, kReservedPrefix.size()), kReservedPrefix)) {
        step.kind = Step::Kind::SetOption;
        step.name = name;
        step.text = expanded(unquoted(arguments));
    } else if (arguments.empty()) {
        m_variables.remove(name);
    } else {
        m_variables.set(name, expanded(unquoted(arguments)));
    }
    return step;
}

void BatchReader::includeFile(std::string_view arguments) {
    if (arguments.empty()) throwCommandError(":r");
    if (m_sources.size() == kMaxIncludeDepth)
        throw ToolError("Sqlcmd: Error: ':r' files are nested more than 32 deep at '" +
                        std::string(arguments) + "'. Does a file include itself?");
    m_sources.push_back(ScriptSource::ofFile(expanded(unquoted(arguments)), m_rules.codePage));
}

// Tracks strings, quoted names and comments. Expands variables everywhere but in comments.
void BatchReader::appendLine() {
    for (std::size_t i = 0; i < m_line.size(); ++i) {
        const std::size_t special = nextSpecial(m_line, i);
        m_batch.append(m_line, i, special - i);
        i = special;
        if (i == m_line.size()) break;
        if (m_state.commentDepth == 0 && expandAt(m_line, i, m_batch)) continue;
        if (m_state.inBatchText() && m_line.compare(i, 2, "--") == 0) {
            m_batch.append(m_line, i);
            break;
        }
        appendCharacter(i);
    }
    m_batch += '\n';
    if (m_batch.size() > kMaxBatch)
        throw ToolError("Sqlcmd: Error: a batch is longer than 256 MB. Divide the script with " +
                        m_rules.batchEnd + " lines.");
}

// Appends the character at i to the batch and updates the lexical state. Two-character tokens are appended
// whole; i then is at their last character.
void BatchReader::appendCharacter(std::size_t& i) {
    const std::size_t start = i;
    advance(m_state, m_line, i);
    m_batch.append(m_line, start, i - start + 1);
}

std::string BatchReader::expanded(std::string_view text) const {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (!expandAt(text, i, result)) result += text[i];
    return result;
}

// If a variable reference begins at i, appends its value, moves i to its last character and returns true.
bool BatchReader::expandAt(std::string_view text, std::size_t& i, std::string& out) const {
    if (!m_rules.expandVariables || !text.substr(i).starts_with("$(")) return false;
    const auto end = text.find(')', i);
    if (end == std::string_view::npos) return false;
    const std::string_view name = text.substr(i + 2, end - i - 2);
    if (!Variables::isName(name)) return false;
    const auto value = m_variables.find(name);
    if (!value) throw ToolError("'" + std::string(name) + "' scripting variable not defined.");
    out += *value;
    i = end;
    return true;
}

bool BatchReader::hasBatch() const {
    return !trimmed(m_batch).empty();
}

Step BatchReader::takeBatch(int count) {
    Step step = stepOf(Step::Kind::Batch);
    step.text = std::exchange(m_batch, {});
    step.count = count;
    if (step.text.size() <= kMaxEditedBatch) m_lastBatch = step.text;
    m_state = {};
    return step;
}

void BatchReader::throwCommandError(std::string_view command) const {
    const ScriptSource& source = m_sources.back();
    std::string text = "Sqlcmd: Error: Syntax error at line " + std::to_string(source.lineNumber()) +
                       " near command '" + std::string(command) + "'";
    if (!source.name().empty()) text += " in file '" + source.name() + "'";
    throw ToolError(text + ".");
}

}  // namespace sqlcmd
