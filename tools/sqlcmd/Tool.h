// One run of the tool: log in, then every batch of every script.
#pragma once

#include <optional>

#include "BatchReader.h"
#include "BatchRunner.h"
#include "Options.h"
#include "Variables.h"

namespace sqlcmd {

class Tool {
  public:
    explicit Tool(Options& options) : m_options(options), m_stopOnError(options.stopOnError) {}

    // The exit code. Throws what stands in Errors.h.
    int run();

  private:
    void setVariables();
    void logInAndRun(Output& output);
    void setQuotedIdentifier(BatchRunner& runner) const;
    // Each gives false when the tool is to end with m_exitCode.
    bool runScript(BatchRunner& runner, Output& output, ScriptSource source);
    bool runStep(BatchRunner& runner, Output& output, const Step& step);
    bool runBatch(BatchRunner& runner, Output& output, const Step& step);
    void runExitQuery(BatchRunner& runner, const Step& step);

    Options& m_options;
    Variables m_variables;
    bool m_stopOnError;
    bool m_xml = false;
    int m_exitCode = 0;
};

}  // namespace sqlcmd
