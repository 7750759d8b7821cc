// From the lines of scripts to what is to be done: batches and the tool's own commands.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ScriptSource.h"
#include "Variables.h"

namespace sqlcmd {

// One thing that the script asks for.
struct Step {
    enum class Kind {
        Batch,      // run the text `count` times
        ExitQuery,  // run the text and end; by `on`, its last row's first column is the exit code
        Exit,       // end without running what stands in the batch
        Xml,        // :XML, by `on`
        OnError,    // :on error, `on` for exit
        End,        // the script has ended
    };
    Kind kind = Kind::End;
    std::string text;
    int count = 1;
    bool on = false;
};

// Inside what a line begins. T-SQL's block comments nest.
struct LexicalState {
    char closing = 0;      // the character that ends the string or name; 0 outside of them
    int commentDepth = 0;  // of block comments

    bool inBatchText() const { return closing == 0 && commentDepth == 0; }
};

class BatchReader {
  public:
    // Without expandVariables, $(name) is text like any other.
    BatchReader(ScriptSource source, Variables& variables, bool expandVariables, std::string batchEnd);

    // Throws ToolError for a command that is not understood and for an undefined variable.
    Step next();

  private:
    bool nextLine();
    bool isBatchEnd(std::string_view line, int& count) const;
    bool readCommand(Step& step);
    bool runCommand(std::string_view name, std::string_view rest, Step& step);
    bool readExit(std::string_view rest, Step& step);
    void setVariable(std::string_view rest);
    void includeFile(std::string_view rest);
    void appendLine();
    void scanCharacter(std::size_t& i);
    std::string expanded(std::string_view text) const;
    bool expandAt(std::string_view text, std::size_t& i, std::string& out) const;
    Step batch(int count);
    [[noreturn]] void failAtLine(std::string_view command) const;

    std::vector<ScriptSource> m_sources;  // the innermost :r last
    Variables& m_variables;
    bool m_expandVariables;
    std::string m_batchEnd;
    std::string m_line;
    std::string m_batch;
    LexicalState m_state;
};

}  // namespace sqlcmd
