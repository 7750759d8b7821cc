#include "packing/StatementCheck.h"

#include <strings.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "installation/Installation.h"
#include "messages/Messages.h"
#include "package/Batches.h"
#include "syntax/Parser.h"

namespace {

// Stands in for a placeholder, which may be a number, a name or a part of one.
constexpr std::string_view kNumber = "00";
constexpr std::string_view kName = "zz";

struct CommandRisk {
    std::string_view command;
    const char* text;
};
constexpr CommandRisk kRisks[] = {
    {"!!", "starts a program; a strict query tool refuses that"},
    {"ed", "starts an editor; a strict query tool refuses that"},
    {"r", "reads a file of the host that runs the script; a strict query tool refuses that"},
    {"connect", "connects to another server; a strict query tool refuses that"},
    {"out", "writes results to another file; a strict query tool refuses that"},
    {"error", "writes errors to another file; a strict query tool refuses that"},
    {"perftrace", "writes statistics to another file; a strict query tool refuses that"},
    {"exit", "ends the script"},
    {"quit", "ends the script"},
    {"reset", "drops the statements before it, up to the last GO"},
};

constexpr const char* kSystemDatabases[] = {"master", "tempdb", "msdb", "model"};
constexpr const char* kSchemas[] = {"dbo", "sys", "information_schema", "inserted", "deleted"};

template <typename Words>
bool isOneOf(const std::string& word, const Words& words) {
    return std::any_of(std::begin(words), std::end(words),
                       [&](const char* known) { return strcasecmp(known, word.c_str()) == 0; });
}

// ---- Commands of the query tool ---------------------------------------------------------------------------

const char* riskOf(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (line.substr(0, 1) == ":") line.remove_prefix(1);
    const std::size_t end =
        line.substr(0, 2) == "!!" ? 2 : std::min(line.find_first_of(" \t(;"), line.size());
    const std::string_view word = line.substr(0, end);
    for (const CommandRisk& risk : kRisks)
        if (risk.command.size() == word.size() &&
            strncasecmp(risk.command.data(), word.data(), word.size()) == 0)
            return risk.text;
    return nullptr;
}

// ---- Batches ------------------------------------------------------------------------------------------

struct Place {
    std::size_t offset = 0;  // in the text of the batch
    std::string_view word;
};

struct BatchError {
    std::string text;
    Place place;
    bool isPlaceholder = false;
};

// Replaces the placeholders and variables by `standIn`, and doubled percent signs by one and a blank. The
// length of the text stays.
std::string withStandIns(std::string text, std::string_view standIn) {
    for (std::size_t at = 0; (at = text.find('%', at)) != text.npos; at += 2) {
        const char next = at + 1 < text.size() ? text[at + 1] : '\0';
        if (next == 's') text.replace(at, 2, standIn);
        if (next == '%') text[at + 1] = ' ';
    }
    for (std::size_t at = 0; (at = text.find("$(", at)) != text.npos;) {
        const std::size_t end = text.find(')', at);
        if (end == text.npos) break;
        text.replace(at, end + 1 - at, end + 1 - at, standIn.front());
    }
    return text;
}

std::size_t lineStart(std::string_view text, int line) {
    std::size_t at = 0;
    for (int i = 1; i < line && text.find('\n', at) != text.npos; ++i) at = text.find('\n', at) + 1;
    return at;
}

// The place of an error before the parser's first step: an unclosed string or comment, or a strange
// character.
Place placeOfLexicalError(std::string_view text, const tsql::SyntaxError& error) {
    const std::size_t start = lineStart(text, error.line);
    const std::string_view message = error.what();
    const std::size_t quote = message.find('\'');
    const std::string_view quoted = quote == message.npos ? "" : message.substr(quote + 1, 1);
    std::size_t at = text.find(error.number == tsql::kMissingEndOfComment ? "/*" : quoted, start);
    if (error.number == tsql::kUnclosedQuotationMark) at = text.find_first_of("'\"[", start);
    at = std::min(at, text.size());
    return {at == text.size() ? start : at, text.substr(at, 1)};
}

std::optional<BatchError> findError(const std::string& text, std::string_view standIn,
                                    bool quotedIdentifiers) {
    const std::string parsed = withStandIns(text, standIn);
    std::optional<tsql::Parser> parser;
    try {
        parser.emplace(parsed, quotedIdentifiers);
        parser->batch();
        return std::nullopt;
    } catch (const tsql::SyntaxError& error) {
        Place place = placeOfLexicalError(parsed, error);
        if (parser) {
            const std::string_view word = parser->faulty().raw;
            place = {static_cast<std::size_t>(word.data() - parsed.data()), word};
            place.offset = std::min(place.offset, parsed.size());
        }
        // The word as it was written; the stand-ins have its length.
        const std::string_view written = std::string_view(text).substr(place.offset, place.word.size());
        return BatchError{error.what(), {place.offset, written}, written != place.word};
    }
}

// The error of the reading that comes furthest: a placeholder may be a number or a name, and text in double
// quotes a string or a name.
std::optional<BatchError> firstError(const std::string& text) {
    std::optional<BatchError> furthest;
    for (const std::string_view standIn : {kNumber, kName}) {
        for (const bool quotedIdentifiers : {false, true}) {
            std::optional<BatchError> error = findError(text, standIn, quotedIdentifiers);
            if (!error) return std::nullopt;
            if (!furthest || error->place.offset > furthest->place.offset) furthest = std::move(error);
        }
    }
    return furthest;
}

PackageFinding findingAt(const PackageBatch& batch, const std::string& text, const Place& place,
                         const std::string& what) {
    const auto line = static_cast<std::size_t>(
        std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(place.offset), '\n'));
    const std::size_t start = place.offset == 0 ? 0 : text.rfind('\n', place.offset - 1) + 1;
    return {batch.lines[line].number, what, place.offset - start + 1, std::string(place.word)};
}

// Names with a database: "USE name", "name..object", "name.schema.object".
void findDatabases(const PackageBatch& batch, const std::string& text,
                   std::vector<PackageFinding>& findings) {
    const std::string parsed = withStandIns(text, kName);
    std::vector<tsql::Token> tokens;
    try {
        tokens = tsql::tokenize(parsed);
    } catch (const tsql::SyntaxError&) {
        return;  // firstError() has found it
    }
    const auto at = [&](std::size_t i) { return i < tokens.size() ? tokens[i].raw : std::string_view(); };
    const auto isName = [&](std::size_t i) {
        return i < tokens.size() && (tokens[i].kind == tsql::TokenKind::Bracketed ||
                                     (tokens[i].kind == tsql::TokenKind::Word && !tokens[i].reserved));
    };
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const bool isUsed = i > 0 && strncasecmp(at(i - 1).data(), "USE", 3) == 0 && at(i - 1).size() == 3;
        const bool isBehindDot = i > 0 && at(i - 1) == ".";
        const bool isQualifier =
            at(i + 1) == "." && !isBehindDot &&
            (at(i + 2) == "." || (isName(i + 2) && at(i + 3) == "." && isName(i + 4) && at(i + 5) != "("));
        if (!isName(i) || (!isUsed && !isQualifier)) continue;
        const std::string name = tsql::unquoted(tokens[i]);
        const Place place{static_cast<std::size_t>(tokens[i].raw.data() - parsed.data()), tokens[i].raw};
        const bool isPlaceholder = text.compare(place.offset, place.word.size(), place.word) != 0;
        const bool isKnown = isDatabaseOfPackages(name) || isOneOf(name, kSystemDatabases) ||
                             (!isUsed && isOneOf(name, kSchemas));
        if (isPlaceholder || isKnown) continue;
        findings.push_back(findingAt(batch, text, place, "the suite has no database '" + name + "'"));
    }
}

}  // namespace

std::vector<PackageFinding> checkStatements(const std::vector<PackageLine>& lines) {
    const PackageBatches divided = divideStatements(lines);
    std::vector<PackageFinding> findings;
    for (const PackageLine& command : divided.commands)
        if (const char* risk = riskOf(command.text))
            findings.push_back({command.number, risk, 1, command.text});
    for (const PackageBatch& batch : divided.batches) {
        const std::string text = batch.text();
        const std::optional<BatchError> error = firstError(text);
        if (error && !error->isPlaceholder)
            findings.push_back(findingAt(batch, text, error->place, error->text));
        findDatabases(batch, text, findings);
    }
    findings.resize(std::min(findings.size(), kMostFindings));
    return findings;
}
