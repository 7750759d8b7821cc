#include "text/ValueCheck.h"

#include <algorithm>

#include "LetterCase.h"
#include "text/PlaceholderFiller.h"

namespace {

constexpr std::string_view kVariable = "$(";
constexpr std::string_view kBlanks = " \t\v\f";
// Commands that the tool also takes without a colon.
constexpr const char* kCommandWords[] = {"GO", "EXIT", "QUIT", "RESET", "ED"};

bool isToolCommand(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    if (line.starts_with(":") || line.starts_with("!!")) return true;
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    const auto end = std::find_if_not(line.begin(), line.end(), isLetter);
    const std::string_view word(line.begin(), end);
    return std::any_of(std::begin(kCommandWords), std::end(kCommandWords),
                       [&word](const char* command) { return equalIgnoringCase(command, word); });
}

std::size_t countOf(std::string_view part, std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size()) ++count;
    return count;
}

std::string named(std::size_t value) {
    return "value " + std::to_string(value);
}

// A line of the statements as it is filled.
struct FilledLine {
    std::string text;
    std::size_t variables = 0;  // "$(" of the statements themselves
    std::size_t value = 0;      // number of its last value, from 1; 0: none

    void addStatements(std::string_view part) {
        text += part;
        variables += countOf(kVariable, part);
    }
    bool completesVariable() const { return countOf(kVariable, text) > variables; }
    std::string problem() const {
        if (value == 0) return {};
        if (completesVariable()) return named(value) + " completes a variable $(.";
        if (isToolCommand(text)) return named(value) + " completes a command of the query tool.";
        return {};
    }
};

}  // namespace

std::string valueProblem(std::string_view body, const std::vector<std::string>& values) {
    FilledLine line;
    std::size_t number = 0;
    for (;;) {
        const std::size_t placeholder =
            number < values.size() ? std::min(body.find(kPlaceholder), body.size()) : body.size();
        const std::size_t lineBreak = body.find('\n');
        if (lineBreak < placeholder) {
            line.addStatements(body.substr(0, lineBreak));
            if (std::string problem = line.problem(); !problem.empty()) return problem;
            if (number == values.size()) return {};
            line = {};
            body.remove_prefix(lineBreak + 1);
            continue;
        }
        line.addStatements(body.substr(0, placeholder));
        if (placeholder == body.size()) return line.problem();
        const std::string& value = values[number++];
        if (value.find_first_of("\r\n") != value.npos) return named(number) + " has a line break.";
        line.text += value;
        line.value = number;
        if (line.completesVariable()) return line.problem();
        body.remove_prefix(placeholder + kPlaceholder.size());
    }
}
