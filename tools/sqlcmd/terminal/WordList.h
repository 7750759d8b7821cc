// Words that Tab completes at the prompt.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace sqlcmd {

// T-SQL's frequent keywords, the tool's commands, and the names in the lines that were added: the server is
// not asked for its tables, since a query would change the session, @@ROWCOUNT for instance.
class WordList {
  public:
    WordList();
    void addWordsOf(std::string_view line);

    // Returns the words that begin with the prefix, in any case. Keywords are in the prefix's case.
    std::vector<std::string> completionsOf(std::string_view prefix) const;

  private:
    struct IgnoringCase {
        bool operator()(const std::string& a, const std::string& b) const;
    };
    std::set<std::string, IgnoringCase> m_words;
};

// Returns the longest beginning, in any case, that all words have.
std::string commonPrefix(const std::vector<std::string>& words);

// True for characters of a word: those of names, '@', '#', '$' and ':'.
bool isCompletable(char c);

}  // namespace sqlcmd
