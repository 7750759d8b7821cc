#include "session/Tool.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>

#include "client/Connect.h"
#include "text/Text.h"

namespace sqlcmd {
namespace {

// Exit codes of :exit(query) without a value.
constexpr int kExitQueryFailed = -100;
constexpr int kExitQueryWithoutRows = -101;
constexpr int kExitValueNotANumber = -102;

int exitCodeOf(const std::string& text) {
    int value = 0;
    const std::string_view digits = trimmed(text);
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value);
    return error == std::errc{} && stop == end ? value : kExitValueNotANumber;
}

// Removes the first word, which may be in double quotes, from `text`.
std::string takeArgument(std::string_view& text) {
    const auto end = text.starts_with('"') ? text.find('"', 1) : std::string_view::npos;
    if (end == std::string_view::npos) return std::string(takeWord(text));
    const std::string_view word = text.substr(1, end - 1);
    text = trimmed(text.substr(end + 1));
    return std::string(word);
}

// Throws if both are the same file: opening the output truncates it.
void requireDifferentFiles(const std::string& input, const std::string& output) {
    std::error_code ignored;
    if (std::filesystem::is_regular_file(input, ignored) &&
        std::filesystem::equivalent(input, output, ignored))
        throw ToolError("Sqlcmd: Error: '" + output + "' is both the input and the output file.");
}

}  // namespace

int Tool::run() {
    for (const std::string& file : m_options.inputFiles) {
        requireReadable(file);
        requireDifferentFiles(file, m_options.outputFile);
    }
    setVariables();
    Output output(m_options.outputFile, m_options.unicodeOutput);
    try {
        logInAndRun(output);
    } catch (const LoginError& error) {
        MessagePrinter(m_options, output).printLoginError(error.diagnostics);
        m_exitCode = 1;
    } catch (const ToolError& error) {
        if (output.isFile()) output.write(std::string(error.what()) + "\n");
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
    setUpSession(*m_client, runner);
    if (m_options.query) {
        const bool goesOn = runScript(runner, output, ScriptSource::ofText(*m_options.query));
        if (goesOn && !m_options.endsAfterQuery) runScript(runner, output, ScriptSource::ofStandardInput());
    } else if (m_options.inputFiles.empty()) {
        runScript(runner, output, ScriptSource::ofStandardInput());
    } else {
        for (const std::string& file : m_options.inputFiles)
            if (!runScript(runner, output, ScriptSource::ofFile(file))) return;
    }
}

void Tool::setUpSession(const Client& client, BatchRunner& runner) const {
    runner.run(std::string(client.sessionSettings()) +
                   (m_options.quotedIdentifier ? "SET QUOTED_IDENTIFIER ON" : "SET QUOTED_IDENTIFIER OFF"),
               {.withStatistics = false});
}

bool Tool::runScript(BatchRunner& runner, Output& output, ScriptSource source) {
    BatchReader reader(std::move(source), m_variables, m_options.expandVariables, m_options.batchEnd,
                       m_options.restriction != Restriction::None);
    for (;;) {
        const Step step = reader.next();
        if (step.kind == Step::Kind::End) return true;
        if (!runStep(runner, output, step)) return false;
    }
}

bool Tool::runStep(BatchRunner& runner, Output& output, const Step& step) {
    switch (step.kind) {
        case Step::Kind::Batch:
            return runBatch(runner, output, step);
        case Step::Kind::ExitQuery:
            if (step.on)
                runExitQuery(runner, step);
            else
                runBatch(runner, output, step);
            return false;
        case Step::Kind::Xml:
            m_xml = step.on;
            return true;
        case Step::Kind::OnError:
            m_stopOnError = step.on;
            return true;
        case Step::Kind::Connect:
            connectTo(runner, step.text);
            return true;
        case Step::Kind::Out:
            output.redirect(step.text);
            return true;
        case Step::Kind::Error:
            redirectErrors(runner, step.text);
            return true;
        case Step::Kind::Print:
            output.write(step.text);
            return true;
        case Step::Kind::ListVariables:
            printVariables(output);
            return true;
        case Step::Kind::SetOption:
            setOption(step);
            return true;
        case Step::Kind::Refused:
            return refuse(step.name);
        case Step::Kind::None:
            return true;
        case Step::Kind::Exit:
        case Step::Kind::End:
            break;
    }
    return false;
}

// Returns whether the script continues.
bool Tool::refuse(const std::string& command) const {
    const bool ends = m_options.restriction == Restriction::End;
    if (ends) throw ToolError("Sqlcmd: Error: '" + command + "' is disabled by -X1.");
    std::fprintf(stderr, "Sqlcmd: Warning: '%s' is disabled by -X.\n", command.c_str());
    return true;
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

void Tool::redirectErrors(BatchRunner& runner, const std::string& target) {
    auto errors = std::make_unique<Output>("", /*utf16=*/false);
    errors->redirect(target);
    m_errorOutput = std::move(errors);
    runner.setErrorOutput(m_errorOutput.get());
}

// `arguments`: SERVER [-l SECONDS] [-U NAME [-P PASSWORD]].
void Tool::connectTo(BatchRunner& runner, std::string_view arguments) {
    std::vector<std::string> words{"sqlcmd", "-S"};
    while (!arguments.empty()) words.push_back(takeArgument(arguments));
    const auto isOtherOption = [](std::string_view word) {
        return word.starts_with('-') && word.find_first_of("SlUP", 1) != 1;
    };
    if (std::any_of(words.begin(), words.end(), isOtherOption))
        throw ToolError("Sqlcmd: Error: ':connect' takes a server and the options -l, -U and -P.");
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    Options given;
    try {
        given = parseOptions(static_cast<int>(pointers.size()), pointers.data());
    } catch (const UsageError& error) {
        throw ToolError(std::string("Sqlcmd: Error: ':connect': ") + error.what());
    }
    m_options.server = given.server;
    m_options.user = given.user;
    m_options.password = given.password;
    m_options.trusted = given.trusted;
    m_options.database.clear();
    if (given.loginTimeout != Options{}.loginTimeout) m_options.loginTimeout = given.loginTimeout;
    m_client = connect(m_options);
    runner.setClient(*m_client);
    setUpSession(*m_client, runner);
    m_variables.set("SQLCMDSERVER", m_options.server);
    m_variables.set("SQLCMDUSER", m_options.user);
    m_variables.set("SQLCMDDBNAME", m_options.database);
}

void Tool::printVariables(Output& output) {
    for (const auto& [name, value] : m_variables.all())
        output.write(upperCase(name) + " = \"" + value + "\"\n");
}

bool Tool::runBatch(BatchRunner& runner, Output& output, const Step& step) {
    for (int i = 0; i < step.count; ++i) {
        if (m_options.echo) output.write(step.text);
        const auto [severity, exitCode] = runner.run(step.text, {.xml = m_xml});
        if (exitCode) {
            m_exitCode = *exitCode;
            return false;
        }
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
    else if (!value.empty())
        m_exitCode = exitCodeOf(value);
    else
        m_exitCode = severity < kErrorSeverity ? kExitQueryWithoutRows : kExitQueryFailed;
}

}  // namespace sqlcmd
