#include "package/Batches.h"

#include <strings.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view kBareCommands[] = {"exit", "quit", "reset", "ed"};

// Lexical state at the beginning of a line: the query tool looks for GO and commands outside of strings,
// quoted names and block comments, which nest.
class LineContext {
  public:
    bool isInBatchText() const { return m_closing == 0 && m_commentDepth == 0; }

    void readLine(std::string_view line) {
        for (std::size_t at = 0; at < line.size(); ++at) {
            const std::string_view pair = line.substr(at, 2);
            if (m_commentDepth > 0 || (m_closing == 0 && pair == "/*")) {
                if (pair == "/*" || pair == "*/") m_commentDepth += pair == "/*" ? 1 : -1, ++at;
            } else if (m_closing != 0) {
                if (line[at] == m_closing) m_closing = 0;
            } else if (pair == "--") {
                return;
            } else if (line[at] == '\'' || line[at] == '"') {
                m_closing = line[at];
            } else if (line[at] == '[') {
                m_closing = ']';
            }
        }
    }

  private:
    char m_closing = 0;
    int m_commentDepth = 0;
};

std::string_view trimmed(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    return line.substr(0, line.find_last_not_of(" \t\r") + 1);
}

bool startsWithWord(std::string_view line, std::string_view word) {
    return line.size() >= word.size() && strncasecmp(line.data(), word.data(), word.size()) == 0 &&
           (line.size() == word.size() || line.find_first_of(" \t(;", word.size()) == word.size());
}

// True for "GO", "GO 3" and "GO -- comment".
bool endsBatch(std::string_view line) {
    if (!startsWithWord(line, "GO")) return false;
    line.remove_prefix(2);
    return line.substr(0, line.find("--")).find_first_not_of(" \t;0123456789") == line.npos;
}

bool isCommand(std::string_view line) {
    if (line.substr(0, 1) == ":" || line.substr(0, 2) == "!!") return true;
    return std::any_of(std::begin(kBareCommands), std::end(kBareCommands),
                       [line](std::string_view word) { return startsWithWord(line, word); });
}

}  // namespace

std::string PackageBatch::text() const {
    std::string joined;
    for (const PackageLine& line : lines) joined += (joined.empty() ? "" : "\n") + line.text;
    return joined;
}

PackageBatches divideStatements(const std::vector<PackageLine>& lines) {
    PackageBatches divided;
    PackageBatch batch{1, {}};
    LineContext context;
    for (const PackageLine& line : lines) {
        const std::string_view text = trimmed(line.text);
        if (context.isInBatchText() && endsBatch(text)) {
            if (batch.lines.empty()) continue;
            const std::size_t next = batch.number + 1;
            divided.batches.push_back(std::exchange(batch, {next, {}}));
        } else if (context.isInBatchText() && isCommand(text)) {
            divided.commands.push_back(line);
        } else {
            context.readLine(line.text);
            batch.lines.push_back(line);
        }
    }
    if (!batch.lines.empty()) divided.batches.push_back(std::move(batch));
    return divided;
}
