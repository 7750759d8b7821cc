#include "session/Tool.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <limits>

#include "client/Connect.h"
#include "client/ServerBrowser.h"
#include "options/CommandLine.h"
#include "session/Programs.h"
#include "session/TerminalLines.h"
#include "terminal/Interrupt.h"
#include "text/Text.h"

namespace sqlcmd {
namespace {

// Exit codes of :exit(query) without a value.
constexpr int kExitQueryFailed = -100;
constexpr int kExitQueryWithoutRows = -101;
constexpr int kExitValueNotANumber = -102;

// Converts to an integer of four bytes; decimal places are cut.
int exitCodeOf(const std::string& text) {
    const std::string_view digits = trimmed(text);
    double value = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value);
    const bool isInteger = error == std::errc{} && stop == end &&
                           value > static_cast<double>(std::numeric_limits<int>::min()) - 1 &&
                           value < static_cast<double>(std::numeric_limits<int>::max()) + 1;
    return isInteger ? static_cast<int>(value) : kExitValueNotANumber;
}

// Removes the first word, which may be in double quotes, from `text`.
std::string takeArgument(std::string_view& text) {
    const auto end = text.starts_with('"') ? text.find('"', 1) : std::string_view::npos;
    if (end == std::string_view::npos) return std::string(takeWord(text));
    const std::string_view word = text.substr(1, end - 1);
    text = trimmed(text.substr(end + 1));
    return std::string(word);
}

int outputCodePage(const Options& options) {
    return options.unicodeOutput ? kUtf16Le : options.outputCodePage;
}

// Throws if both are the same file: opening the output truncates it.
void requireDifferentFiles(const std::string& input, const std::string& output) {
    std::error_code ignored;
    if (std::filesystem::is_regular_file(input, ignored) &&
        std::filesystem::equivalent(input, output, ignored))
        throw ToolError("Sqlcmd: Error: '" + output + "' is both the input and the output file.");
}

void discardInput(BatchReader& reader) {
    const std::string file = reader.discardInput();
    if (!file.empty()) std::fprintf(stderr, "Sqlcmd: the rest of '%s' is not run.\n", file.c_str());
}

}  // namespace

std::string serverList(bool namesOnly) {
    std::string text = namesOnly ? "" : "\nServers:\n";
    for (const std::string& server : findServers()) text += (namesOnly ? "" : "    ") + server + "\n";
    return text;
}

int Tool::run() {
    for (const std::string& file : m_options.inputFiles) {
        requireReadable(file);
        requireDifferentFiles(file, m_options.outputFile);
    }
    setVariables();
    Output output(m_options.outputFile, outputCodePage(m_options));
    try {
        logInAndRun(output);
    } catch (const LoginError& error) {
        MessagePrinter(m_options, output).printLoginError(error.diagnostics);
        m_exitCode = 1;
    } catch (const ToolError& error) {
        if (output.isFile()) output.write(std::string(error.what()) + "\n");
        output.flush();
        throw;
    } catch (const std::exception&) {
        output.flush();
        throw;
    }
    output.flush();
    return m_exitCode;
}

void Tool::setVariables() {
    if (m_options.restriction != Restriction::None) m_variables.hideEnvironment();
    for (const auto& [name, value] : optionVariables(m_options)) m_variables.set(name, value);
    for (const auto& [name, value] : m_options.variables) m_variables.set(name, value);
}

void Tool::logInAndRun(Output& output) {
    m_client = connect(m_options);
    BatchRunner runner(*m_client, m_options, output);
    setUpSession(runner);
    if (!m_options.endsAfterNewPassword) runScripts(runner, output);
    runner.finishOutput();
}

void Tool::setUpSession(BatchRunner& runner) const {
    runner.setSessionSettings(std::string(m_client->sessionSettings()) + (m_options.quotedIdentifier
                                                                              ? "SET QUOTED_IDENTIFIER ON"
                                                                              : "SET QUOTED_IDENTIFIER OFF"));
}

bool Tool::runScripts(BatchRunner& runner, Output& output) {
    const bool hasStartUpScript =
        !m_options.startUpScript.empty() && m_options.restriction == Restriction::None;
    if (hasStartUpScript &&
        !runScript(runner, output, ScriptSource::ofFile(m_options.startUpScript, m_options.inputCodePage)))
        return false;
    if (m_options.query) {
        const bool goesOn = runScript(runner, output, ScriptSource::ofText(*m_options.query));
        return goesOn && (m_options.endsAfterQuery || runStandardInput(runner, output));
    }
    if (m_options.inputFiles.empty()) return runStandardInput(runner, output);
    for (const std::string& file : m_options.inputFiles)
        if (!runScript(runner, output, ScriptSource::ofFile(file, m_options.inputCodePage))) return false;
    return true;
}

bool Tool::runStandardInput(BatchRunner& runner, Output& output) {
    return isInteractive()
               ? runTerminal(runner, output)
               : runScript(runner, output, ScriptSource::ofStandardInput(m_options.inputCodePage));
}

ScriptRules Tool::rules() const {
    return {.expandVariables = m_options.expandVariables,
            .batchEnd = m_options.batchEnd,
            .isRestricted = m_options.restriction != Restriction::None,
            .startsPrograms = m_options.startsPrograms,
            .codePage = m_options.inputCodePage};
}

bool Tool::runScript(BatchRunner& runner, Output& output, ScriptSource source) {
    BatchReader reader(std::move(source), m_variables, rules());
    return runSteps(runner, output, reader);
}

// An error in a line or a batch does not end the session, but the :r files that are being read: the rest of a
// script must not run without what has failed, nor on the server that a failed :connect keeps.
bool Tool::runTerminal(BatchRunner& runner, Output& output) {
    const InterruptScope interrupts;
    const bool mayPage =
        m_options.usesPager && m_options.startsPrograms && m_options.restriction == Restriction::None;
    if (mayPage) runner.setPager(m_variables.find("PAGER").value_or("less -S"));
    TerminalLines lines;
    BatchReader* target = nullptr;
    const auto readLine = [&](std::string& line) { return lines.read(*target, line); };
    BatchReader reader(ScriptSource::ofLines(readLine), m_variables, rules());
    target = &reader;
    for (;;) {
        try {
            return runSteps(runner, output, reader);
        } catch (const LoginError& error) {
            MessagePrinter(m_options, output).printLoginError(error.diagnostics);
        } catch (const ToolError& error) {
            std::fprintf(stderr, "%s\n", error.what());
        }
        discardInput(reader);
    }
}

bool Tool::runSteps(BatchRunner& runner, Output& output, BatchReader& reader) {
    for (;;) {
        const Step step = reader.next();
        if (step.kind == Step::Kind::End) return true;
        if (step.kind == Step::Kind::Edit) {
            reader.replaceBatch(edited(step.text, editor()));
            continue;
        }
        if (step.kind != Step::Kind::Batch) output.flush();
        if (!runStep(runner, output, step)) return false;
        if (!runner.defersOutput() || reader.mayWait()) output.flush();
        if (isInterrupted()) {
            std::fputs("Sqlcmd: the batch was cancelled.\n", stderr);
            discardInput(reader);
        }
        clearInterrupt();
    }
}

std::string Tool::editor() const {
    for (const char* name : {kEditorVariable, "VISUAL", "EDITOR"})
        if (const auto value = m_variables.find(name); value && !value->empty()) return *value;
    return "vi";
}

bool Tool::runStep(BatchRunner& runner, Output& output, const Step& step) {
    switch (step.kind) {
        case Step::Kind::Batch:
            return runBatch(runner, step);
        case Step::Kind::ExitQuery:
            if (step.on)
                runExitQuery(runner, step);
            else
                runBatch(runner, step);
            return false;
        case Step::Kind::Refused:
            refuse(step.name);
            return true;
        case Step::Kind::Exit:
        case Step::Kind::End:
            return false;
        default:
            runCommand(runner, output, step);
            return true;
    }
}

void Tool::runCommand(BatchRunner& runner, Output& output, const Step& step) {
    switch (step.kind) {
        case Step::Kind::Xml:
            m_xml = step.on;
            break;
        case Step::Kind::OnError:
            m_stopOnError = step.on;
            break;
        case Step::Kind::Connect:
            connectTo(runner, step.text);
            runner.printInformation("Sqlcmd: Successfully connected to server '" + m_options.server + "'.\n");
            break;
        case Step::Kind::Out:
            redirect(runner, output, step.text);
            break;
        case Step::Kind::Error:
            if (auto target = openTarget(step.text)) m_errorOutput = std::move(target);
            runner.setErrorOutput(m_errorOutput.get());
            break;
        case Step::Kind::PerfTrace:
            if (auto target = openTarget(step.text)) m_traceOutput = std::move(target);
            runner.setTraceOutput(m_traceOutput.get());
            break;
        case Step::Kind::RunProgram:
            output.flush();
            runShellCommand(step.text);
            clearInterrupt();
            break;
        case Step::Kind::ListServers:
            runner.printInformation(serverList(/*namesOnly=*/false));
            break;
        case Step::Kind::Print:
            runner.printInformation(step.text);
            break;
        case Step::Kind::ListVariables:
            printVariables(runner);
            break;
        case Step::Kind::SetOption:
            setOption(step);
            break;
        default:
            break;
    }
}

// Throws with -X1; with -X, the script continues after a warning.
void Tool::refuse(const std::string& command) const {
    if (m_options.restriction == Restriction::End)
        throw ToolError("Sqlcmd: Error: '" + command + "' is disabled by -X1.");
    std::fprintf(stderr, "Sqlcmd: Warning: '%s' is disabled by -X.\n", command.c_str());
}

void Tool::setOption(const Step& step) {
    try {
        setByVariable(m_options, step.name, step.text);
    } catch (const UsageError& error) {
        throw ToolError("Sqlcmd: Error: ':setvar " + step.name + "': " + error.what());
    }
    m_variables.set(step.name, step.text);
    m_client->setQueryTimeout(m_options.queryTimeout);
}

// If the file cannot be opened, the results go on to where they went.
void Tool::redirect(BatchRunner& runner, Output& output, const std::string& target) {
    runner.finishOutput();
    try {
        output.redirect(target);
    } catch (const ToolError& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
}

// Returns null, after a message, if the file cannot be opened.
std::unique_ptr<Output> Tool::openTarget(const std::string& target) const {
    auto output = std::make_unique<Output>("", outputCodePage(m_options));
    try {
        output->redirect(target);
    } catch (const ToolError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return nullptr;
    }
    return output;
}

// `arguments`: SERVER [-l SECONDS] [-U NAME [-P PASSWORD]] [-N[m|o]] [-C].
void Tool::connectTo(BatchRunner& runner, std::string_view arguments) {
    std::vector<std::string> words{"sqlcmd", "-S"};
    while (!arguments.empty()) words.push_back(takeArgument(arguments));
    const auto isOtherOption = [](std::string_view word) {
        return word.starts_with('-') && word.find_first_of("SlUPNC", 1) != 1;
    };
    if (std::any_of(words.begin(), words.end(), isOtherOption))
        throw ToolError("Sqlcmd: Error: ':connect' takes a server and the options -l, -U, -P, -N and -C.");
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    Options given;
    try {
        given = parseOptions(static_cast<int>(pointers.size()), pointers.data());
    } catch (const UsageError& error) {
        throw ToolError(std::string("Sqlcmd: Error: ':connect': ") + error.what());
    }
    Options next = m_options;
    next.server = given.server;
    next.user = given.user;
    next.password = given.password;
    next.trusted = given.trusted;
    next.database.clear();
    next.adminConnection = false;
    if (given.loginTimeout != Options{}.loginTimeout) next.loginTimeout = given.loginTimeout;
    if (given.encryption != Encryption::Default) next.encryption = given.encryption;
    next.trustCertificate = given.trustCertificate || m_options.trustCertificate;
    auto client = connect(next);
    m_options = std::move(next);
    m_client = std::move(client);
    runner.setClient(*m_client);
    setUpSession(runner);
    m_variables.set("SQLCMDSERVER", m_options.server);
    m_variables.set("SQLCMDUSER", m_options.user);
    m_variables.set("SQLCMDDBNAME", m_options.database);
}

void Tool::printVariables(BatchRunner& runner) const {
    for (const auto& [name, value] : m_variables.all())
        runner.printInformation(upperCase(name) + " = \"" + value + "\"\n");
}

bool Tool::runBatch(BatchRunner& runner, const Step& step) {
    for (int i = 0; i < step.count; ++i) {
        if (m_options.echo) runner.printInformation(step.text);
        const auto [severity, exitCode] = runner.run(step.text, {.xml = m_xml});
        if (exitCode) {
            m_exitCode = *exitCode;
            return false;
        }
        if (isInterrupted()) return true;
        if (severity < m_options.severityLevel.value_or(kErrorSeverity)) continue;
        if (m_stopOnError) {
            m_exitCode = 1;
            return false;
        }
        if (m_options.severityLevel) m_exitCode = std::max(m_exitCode, severity);
    }
    return true;
}

void Tool::runExitQuery(BatchRunner& runner, const Step& step) {
    std::string value;
    const auto [severity, exitCode] = runner.run(step.text, {.xml = m_xml, .lastValue = &value});
    if (exitCode)
        m_exitCode = *exitCode;
    else if (severity >= kErrorSeverity)  // `value` may be that of an earlier statement
        m_exitCode = kExitQueryFailed;
    else
        m_exitCode = value.empty() ? kExitQueryWithoutRows : exitCodeOf(value);
}

}  // namespace sqlcmd
