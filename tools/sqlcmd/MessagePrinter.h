// Prints what the server and the driver say, as -m and -r want it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Diagnostic.h"
#include "Options.h"
#include "Output.h"

namespace sqlcmd {

class MessagePrinter {
  public:
    MessagePrinter(const Options& options, Output& output) : m_options(options), m_output(output) {}

    void print(const std::vector<Diagnostic>& diagnostics);

    // Whatever the server says about a login that failed, the tool reports it as its own error.
    void printLoginError(const std::vector<Diagnostic>& diagnostics);

    // Of all messages printed or held back since the last call.
    int takeHighestSeverity();

  private:
    void print(const Diagnostic& diagnostic);
    void printOwn(const Diagnostic& diagnostic);
    void write(std::string_view text, bool toErrorStream);

    const Options& m_options;
    Output& m_output;
    int m_highestSeverity = 0;
};

// "Msg 208, Level 16, State 1, Server S, Procedure P, Line 3", without the procedure where there is none.
std::string messageHeading(const Diagnostic& diagnostic);

}  // namespace sqlcmd
