#include "BatchReader.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <utility>

#include "Errors.h"
#include "Text.h"

namespace sqlcmd {
namespace {

constexpr std::size_t kMaxIncludeDepth = 32;
constexpr std::size_t kMaxBatch = std::size_t{256} << 20;  // bytes; no server takes a longer batch

// Commands from before there was a colon.
constexpr std::string_view kWithoutColon[] = {"exit", "quit", "reset"};

// Commands of Microsoft's tool that this one does not have.
constexpr std::string_view kNotSupported[] = {"!!",   "connect", "ed",  "error",     "help",
                                              "list", "listvar", "out", "perftrace", "serverlist"};

bool isOneOf(std::span<const std::string_view> names, std::string_view name) {
    return std::any_of(names.begin(), names.end(),
                       [&](std::string_view other) { return equalsIgnoringCase(name, other); });
}

std::string unquoted(std::string_view text) {
    if (text.size() < 2 || text.front() != '"' || text.back() != '"') return std::string(text);
    std::string result;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        result += text[i];
        if (text[i] == '"' && i + 2 < text.size() && text[i + 1] == '"') ++i;  // "" stands for one
    }
    return result;
}

}  // namespace

BatchReader::BatchReader(ScriptSource source, Variables& variables, bool expandVariables,
                         std::string batchEnd)
    : m_variables(variables), m_expandVariables(expandVariables), m_batchEnd(std::move(batchEnd)) {
    m_sources.push_back(std::move(source));
}

Step BatchReader::next() {
    Step step;
    while (nextLine()) {
        int count = 1;
        if (m_state.inBatchText()) {
            if (isBatchEnd(m_line, count)) {
                if (trimmed(m_batch).empty() || count == 0) {
                    m_batch.clear();
                    continue;
                }
                return batch(count);
            }
            const bool isCommand = readCommand(step);
            if (step.kind != Step::Kind::End) return step;
            if (isCommand) continue;
        }
        appendLine();
    }
    return trimmed(m_batch).empty() ? Step{} : batch(1);
}

bool BatchReader::nextLine() {
    while (!m_sources.empty()) {
        if (m_sources.back().nextLine(m_line)) return true;
        if (m_sources.size() == 1) return false;
        m_sources.pop_back();
    }
    return false;
}

// A line of its own: the word, perhaps how often the batch is to run, and perhaps a comment.
bool BatchReader::isBatchEnd(std::string_view line, int& count) const {
    line = trimmed(line);
    if (!equalsIgnoringCase(line.substr(0, m_batchEnd.size()), m_batchEnd)) return false;
    line.remove_prefix(m_batchEnd.size());
    line = line.substr(0, line.find("--"));
    if (trimmed(line).empty()) return true;
    if (kBlanks.find(line.front()) == std::string_view::npos) return false;
    const std::string number = expanded(trimmed(line));
    const char* end = number.data() + number.size();
    const auto [stop, error] = std::from_chars(number.data(), end, count);
    return error == std::errc{} && stop == end && count >= 0;
}

// True when the line is a command; what the caller must do about it stands in the step.
bool BatchReader::readCommand(Step& step) {
    const std::string_view line = trimmed(m_line);
    const auto nameLength = std::min(line.find_first_of(" \t("), line.size());
    const std::string_view name = line.substr(0, nameLength);
    if (isOneOf(kWithoutColon, name)) return runCommand(name, line.substr(nameLength), step);
    if (line.starts_with("!!") || equalsIgnoringCase(line, "ed")) failAtLine(line.substr(0, 2));
    if (!line.starts_with(':') || line.starts_with("::")) return false;  // ::fn_name() is T-SQL
    if (!runCommand(name.substr(1), line.substr(nameLength), step)) failAtLine(name);
    return true;
}

bool BatchReader::runCommand(std::string_view name, std::string_view rest, Step& step) {
    rest = trimmed(rest);
    if (equalsIgnoringCase(name, "setvar")) return setVariable(rest), true;
    if (equalsIgnoringCase(name, "r")) return includeFile(rest), true;
    if (equalsIgnoringCase(name, "exit")) return readExit(rest, step);
    if (equalsIgnoringCase(name, "reset") && rest.empty()) return m_batch.clear(), true;
    if (equalsIgnoringCase(name, "quit") && rest.empty()) {
        step.kind = Step::Kind::Exit;
        return true;
    }
    const auto readSwitch = [&](Step::Kind kind, std::string_view yes, std::string_view no) {
        step.on = equalsIgnoringCase(rest, yes);
        if (!step.on && !equalsIgnoringCase(rest, no)) return false;
        step.kind = kind;
        return true;
    };
    if (equalsIgnoringCase(name, "xml")) return readSwitch(Step::Kind::Xml, "on", "off");
    if (!equalsIgnoringCase(name, "on") || !equalsIgnoringCase(takeWord(rest), "error")) return false;
    return readSwitch(Step::Kind::OnError, "exit", "ignore");
}

// :exit ends at once, :exit() runs the batch first, :exit(query) runs both and gives the query's value.
bool BatchReader::readExit(std::string_view rest, Step& step) {
    if (rest.empty()) {
        step.kind = Step::Kind::Exit;
        return true;
    }
    if (rest.size() < 2 || rest.front() != '(' || rest.back() != ')') return false;
    const std::string_view query = trimmed(rest.substr(1, rest.size() - 2));
    step.on = !query.empty();
    step.text = std::exchange(m_batch, {}) + expanded(query);
    step.kind = trimmed(step.text).empty() ? Step::Kind::Exit : Step::Kind::ExitQuery;
    return true;
}

void BatchReader::setVariable(std::string_view rest) {
    const std::string_view name = takeWord(rest);
    if (!Variables::isName(name)) failAtLine(":setvar");
    if (equalsIgnoringCase(name.substr(0, 6), "SQLCMD"))  // Microsoft's tool keeps its options in these
        throw ToolError("Sqlcmd: Error: ':setvar " + std::string(name) +
                        "' sets no option. Give the option on the command line.");
    if (rest.empty()) return m_variables.remove(name);
    m_variables.set(name, expanded(unquoted(rest)));
}

void BatchReader::includeFile(std::string_view rest) {
    if (rest.empty()) failAtLine(":r");
    if (m_sources.size() == kMaxIncludeDepth)
        throw ToolError("Sqlcmd: Error: ':r' files are nested more than 32 deep at '" + std::string(rest) +
                        "'. Does a file include itself?");
    m_sources.push_back(ScriptSource::ofFile(expanded(unquoted(rest))));
}

// Follows strings, quoted names and comments, and expands variables everywhere but in comments.
void BatchReader::appendLine() {
    for (std::size_t i = 0; i < m_line.size(); ++i) {
        if (m_state.commentDepth == 0 && expandAt(m_line, i, m_batch)) continue;
        if (m_state.inBatchText() && m_line.compare(i, 2, "--") == 0) {
            m_batch.append(m_line, i);
            break;
        }
        scanCharacter(i);
    }
    m_batch += '\n';
    if (m_batch.size() > kMaxBatch)
        throw ToolError("Sqlcmd: Error: a batch is longer than 256 MB. Divide the script by " + m_batchEnd +
                        " lines.");
}

// Takes one character to the batch, or two that belong together.
void BatchReader::scanCharacter(std::size_t& i) {
    const char c = m_line[i];
    const char after = i + 1 < m_line.size() ? m_line[i + 1] : '\0';
    m_batch += c;
    const bool opensComment = c == '/' && after == '*' && m_state.closing == 0;
    const bool closesComment = c == '*' && after == '/' && m_state.commentDepth > 0;
    const bool isDoubled = c == m_state.closing && c == after;
    if (opensComment || closesComment || isDoubled) {
        m_state.commentDepth += opensComment ? 1 : closesComment ? -1 : 0;
        m_batch += m_line[++i];
    } else if (m_state.commentDepth > 0) {
        return;
    } else if (m_state.closing != 0) {
        if (c == m_state.closing) m_state.closing = 0;
    } else if (c == '\'' || c == '"') {
        m_state.closing = c;
    } else if (c == '[') {
        m_state.closing = ']';
    }
}

std::string BatchReader::expanded(std::string_view text) const {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (!expandAt(text, i, result)) result += text[i];
    return result;
}

// When a variable stands at i: appends its value and leaves i at its last character.
bool BatchReader::expandAt(std::string_view text, std::size_t& i, std::string& out) const {
    if (!m_expandVariables || !text.substr(i).starts_with("$(")) return false;
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

Step BatchReader::batch(int count) {
    Step step;
    step.kind = Step::Kind::Batch;
    step.text = std::exchange(m_batch, {});
    step.count = count;
    m_state = {};
    return step;
}

void BatchReader::failAtLine(std::string_view command) const {
    const ScriptSource& source = m_sources.back();
    const bool isKnown = isOneOf(kNotSupported, command.substr(command.starts_with(':') ? 1 : 0));
    std::string text = std::string("Sqlcmd: Error: ") + (isKnown ? "Unsupported command" : "Syntax error") +
                       " at line " + std::to_string(source.lineNumber()) + " near command '" +
                       std::string(command) + "'";
    if (!source.name().empty()) text += " in file '" + source.name() + "'";
    throw ToolError(text + ".");
}

}  // namespace sqlcmd
