// Reads scripts: divides their lines into batches and the tool's own commands.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "options/Variables.h"
#include "script/ScriptSource.h"

namespace sqlcmd {

// A batch or command that the reader's caller has to carry out.
struct Step {
    enum class Kind {
        Batch,      // run the text `count` times
        ExitQuery,  // run the text and end; if `on`, the exit code is the first column of its last row
        Exit,       // end without running the pending batch
        Xml,        // :XML ON or OFF, as `on`
        OnError,    // :on error exit (`on`) or ignore
        Connect,    // connect to the server that `text` describes
        Out,        // print results to the file `text`, STDOUT or STDERR
        Error,      // print errors there
        Print,      // print the text
        ListVariables,
        SetOption,  // set the option of the variable `name` to `text`
        Refused,    // `name` is a command that -X forbids
        None,       // nothing: the reader has carried out the command itself
        End,        // end of the script
    };
    Kind kind = Kind::End;
    std::string name;
    std::string text;
    int count = 1;
    bool on = false;
};

// Lexical state at the beginning of a line. T-SQL's block comments nest.
struct LexicalState {
    char closing = 0;      // closing character of the string or quoted name; 0 outside of them
    int commentDepth = 0;  // of block comments

    bool inBatchText() const { return closing == 0 && commentDepth == 0; }
};

class BatchReader {
  public:
    // Without `expandVariables`, $(name) is ordinary text. `batchEnd` is the batch separator, usually GO.
    // `variables` must outlive the reader; :setvar changes them.
    // With `isRestricted` (-X), commands that reach files, programs and other servers are steps of kind
    // Refused.
    BatchReader(ScriptSource source, Variables& variables, bool expandVariables, std::string batchEnd,
                bool isRestricted = false);

    // Returns the next step, never one of kind None. Throws ToolError for an invalid or unsupported command,
    // an undefined variable, a script that cannot be read and a batch of more than 256 MB.
    Step next();

  private:
    bool nextLine();
    std::optional<int> batchEndCount(std::string_view line) const;
    std::optional<Step> readCommand();
    std::optional<Step> runCommand(std::string_view name, std::string_view arguments);
    std::optional<Step> readExit(std::string_view arguments);
    std::optional<Step> readOtherCommand(std::string_view name, std::string_view arguments);
    Step setVariable(std::string_view arguments);
    void includeFile(std::string_view arguments);
    void appendLine();
    void appendCharacter(std::size_t& i);
    std::string expanded(std::string_view text) const;
    bool expandAt(std::string_view text, std::size_t& i, std::string& out) const;
    bool hasBatch() const;
    Step takeBatch(int count);
    [[noreturn]] void throwCommandError(std::string_view command) const;

    std::vector<ScriptSource> m_sources;  // the script and its :r files, the innermost last
    Variables& m_variables;
    bool m_expandVariables;
    bool m_isRestricted;
    std::string m_batchEnd;
    std::string m_line;
    std::string m_batch;
    LexicalState m_state;
};

}  // namespace sqlcmd
