// Prints messages of the server and the driver according to the options -m and -r.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/Diagnostic.h"
#include "options/Options.h"
#include "text/Output.h"

namespace sqlcmd {

class MessagePrinter {
  public:
    // The arguments must outlive the printer. `errors` receives the errors of the server; null: the output,
    // or standard error with -r.
    MessagePrinter(const Options& options, Output& output, Output* errors = nullptr)
        : m_options(options), m_output(output), m_errors(errors) {}

    void print(const Diagnostic& diagnostic);

    // Prints the messages of a failed login. All of them, also the server's, are printed as errors of the
    // tool.
    void printLoginError(const std::vector<Diagnostic>& diagnostics);

    // Highest severity of all messages passed to print(), printed or not.
    int highestSeverity() const { return m_highestSeverity; }

    // Number of the first message whose state ends the tool (127).
    std::optional<int> endingNumber() const { return m_endingNumber; }

  private:
    void printServerMessage(const Diagnostic& diagnostic);
    void printToolError(const Diagnostic& diagnostic);
    std::string textOf(const Diagnostic& diagnostic) const;
    void write(std::string_view text, bool toErrorStream);

    const Options& m_options;
    Output& m_output;
    Output* m_errors;
    int m_highestSeverity = 0;
    std::optional<int> m_endingNumber;
};

// Returns "Msg 208, Level 16, State 1, Server S, Procedure P, Line 3"; outside procedures without "Procedure
// P".
std::string messageHeading(const Diagnostic& diagnostic);

}  // namespace sqlcmd
