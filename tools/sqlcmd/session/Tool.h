// A run of the tool: connects, then runs the batches of every script.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "options/Options.h"
#include "options/Variables.h"
#include "script/BatchReader.h"
#include "session/BatchRunner.h"

namespace sqlcmd {

// Text of the list of servers (-L); `namesOnly` omits heading and indentation.
std::string serverList(bool namesOnly);

class Tool {
  public:
    // `options` must outlive the tool, which overwrites their passwords.
    explicit Tool(Options& options) : m_options(options), m_stopOnError(options.stopOnError) {}

    // Returns the exit code. Throws the exceptions of Errors.h.
    int run();

  private:
    void setVariables();
    void logInAndRun(Output& output);
    void setUpSession(BatchRunner& runner) const;
    // These return false if the tool must end with m_exitCode.
    bool runScripts(BatchRunner& runner, Output& output);
    bool runStandardInput(BatchRunner& runner, Output& output);
    bool runScript(BatchRunner& runner, Output& output, ScriptSource source);
    bool runTerminal(BatchRunner& runner, Output& output);
    bool runSteps(BatchRunner& runner, Output& output, BatchReader& reader);
    bool runStep(BatchRunner& runner, Output& output, const Step& step);
    // A command after which the script continues.
    void runCommand(BatchRunner& runner, Output& output, const Step& step);
    bool runBatch(BatchRunner& runner, const Step& step);
    void refuse(const std::string& command) const;
    void setOption(const Step& step);
    ScriptRules rules() const;
    std::string editor() const;
    static void redirect(BatchRunner& runner, Output& output, const std::string& target);
    std::unique_ptr<Output> openTarget(const std::string& target) const;
    void connectTo(BatchRunner& runner, std::string_view arguments);
    void printVariables(BatchRunner& runner) const;
    void runExitQuery(BatchRunner& runner, const Step& step);

    Options& m_options;
    Variables m_variables;
    std::unique_ptr<Client> m_client;
    std::unique_ptr<Output> m_errorOutput;  // of :error
    std::unique_ptr<Output> m_traceOutput;  // of :perftrace
    bool m_stopOnError;
    bool m_xml = false;
    int m_exitCode = 0;
};

}  // namespace sqlcmd
