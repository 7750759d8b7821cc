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
        Batch,       // run the text `count` times
        ExitQuery,   // run the text and end; if `on`, the exit code is the first column of its last row
        Exit,        // end without running the pending batch
        Xml,         // :XML ON or OFF, as `on`
        OnError,     // :on error exit (`on`) or ignore
        Connect,     // connect to the server that `text` describes
        Out,         // print results to the file `text`, STDOUT or STDERR
        Error,       // print errors there
        PerfTrace,   // print statistics there
        RunProgram,  // run the shell command `text`
        Edit,        // edit `text` and pass the result to replaceBatch()
        ListServers,
        Print,  // print the text
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

struct ScriptRules {
    bool expandVariables = true;  // without, $(name) is ordinary text
    std::string batchEnd = "GO";
    // -X: commands that reach files, programs and other servers are steps of kind Refused.
    bool isRestricted = false;
    bool startsPrograms = true;  // without, the commands that start programs are errors
    int codePage = kUtf8;        // of :r files
};

// Lexical state at the beginning of a line. T-SQL's block comments nest.
struct LexicalState {
    char closing = 0;      // closing character of the string or quoted name; 0 outside of them
    int commentDepth = 0;  // of block comments

    bool inBatchText() const { return closing == 0 && commentDepth == 0; }
};

class BatchReader {
  public:
    // `variables` must outlive the reader; :setvar changes them.
    BatchReader(ScriptSource source, Variables& variables, ScriptRules rules = {});

    // Returns the next step, never one of kind None. Throws ToolError for an invalid or unsupported command,
    // an undefined variable, a script that cannot be read and a batch of more than 256 MB.
    Step next();

    // Whether next() may wait for more of the script.
    bool mayWait() const;

    // Number of the next line in the batch that is being read, from 1.
    int batchLine() const;
    // Replaces the text of that batch.
    void replaceBatch(std::string text) { m_batch = std::move(text), m_state = {}; }
    // Discards that batch and the rest of all :r files. Returns the path of the outermost of these files,
    // empty if none was being read.
    std::string discardInput();

  private:
    bool nextLine();
    std::optional<int> batchEndCount(std::string_view line) const;
    std::optional<Step> readCommand();
    std::optional<Step> readProgramCommand(std::string_view line) const;
    std::optional<Step> runCommand(std::string_view name, std::string_view arguments);
    std::optional<Step> readExit(std::string arguments);
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
    ScriptRules m_rules;
    std::string m_line;
    std::string m_batch;
    std::string m_lastBatch;  // for :ed
    LexicalState m_state;
};

}  // namespace sqlcmd
