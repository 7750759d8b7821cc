#include "run/FailurePlace.h"

#include <string.h>
#include <strings.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string_view>

#include "package/Batches.h"

namespace {

using Batch = PackageBatch;

bool contains(const Batch& batch, const std::string& word) {
    return std::any_of(batch.lines.begin(), batch.lines.end(), [&](const PackageLine& line) {
        return strcasestr(line.text.c_str(), word.c_str()) != nullptr;
    });
}

std::string_view trimmed(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    return line.substr(0, line.find_last_not_of(" \t\r;") + 1);
}

bool startsWith(std::string_view line, std::string_view keyword) {
    return line.size() >= keyword.size() && strncasecmp(line.data(), keyword.data(), keyword.size()) == 0;
}

// ---- What a run shows about the batch that failed ------------------------------------------------------

using Batches = std::vector<const Batch*>;

// Keeps the batches that fit; all of them if none does.
void keepIfAny(Batches& batches, const std::function<bool(const Batch&)>& fits) {
    Batches kept;
    std::copy_if(batches.begin(), batches.end(), std::back_inserter(kept),
                 [&](const Batch* batch) { return fits(*batch); });
    if (!kept.empty()) batches = std::move(kept);
}

// The message quotes an object, a column or a value: those batches remain that name it, themselves or by a
// value of a placeholder.
void narrowByMessage(Batches& batches, const RunTraces& traces) {
    for (std::size_t at = 0; (at = traces.message.find('\'', at)) != std::string::npos;) {
        const std::size_t end = traces.message.find('\'', at + 1);
        if (end == std::string::npos) return;
        const std::string word = traces.message.substr(at + 1, end - at - 1);
        at = end + 1;
        const bool isValue =
            std::find(traces.values.begin(), traces.values.end(), word) != traces.values.end();
        if (!word.empty())
            keepIfAny(batches, [&](const Batch& batch) {
                return contains(batch, word) || (isValue && contains(batch, "%s"));
            });
    }
}

// The text of "PRINT 'text'"; empty for any other line.
std::string printedBy(const PackageLine& line) {
    constexpr std::string_view kPrint = "PRINT '";
    const std::string_view text = trimmed(line.text);
    if (!startsWith(text, kPrint)) return {};
    const std::string_view literal = text.substr(kPrint.size());
    const bool isWhole = literal.find('\'') == literal.size() - 1 && literal.find('%') == literal.npos;
    return isWhole ? std::string(literal.substr(0, literal.size() - 1)) : std::string();
}

bool hasLine(const std::string& output, const std::string& line) {
    return ("\n" + output + "\n").find("\n" + line + "\n") != std::string::npos;
}

// A batch whose own text was printed has begun, and so the failed one is not before it; a batch that begins
// with PRINT and has not printed has not begun, or failed at once.
void narrowByPrints(Batches& batches, const std::vector<Batch>& all, const RunTraces& traces) {
    std::size_t first = 1;
    std::size_t last = all.size();
    for (const Batch& batch : all) {
        for (const PackageLine& line : batch.lines) {
            const std::string text = printedBy(line);
            const auto prints = [&](const Batch& other) { return contains(other, "'" + text + "'"); };
            if (text.empty() || std::count_if(all.begin(), all.end(), prints) != 1) continue;
            if (hasLine(traces.output, text))
                first = std::max(first, batch.number);
            else if (&line == &batch.lines.front())
                last = std::min(last, batch.number);
        }
    }
    keepIfAny(batches, [&](const Batch& batch) { return first <= batch.number && batch.number <= last; });
}

// Number of counts, "(1 rows affected)", that a line's statement prints; nothing where that is not plain from
// the line.
std::optional<int> countsOf(const PackageLine& line) {
    const std::string_view text = trimmed(line.text);
    const auto isOneOf = [&](std::initializer_list<const char*> keywords) {
        return std::any_of(keywords.begin(), keywords.end(),
                           [&](const char* keyword) { return startsWith(text, keyword); });
    };
    if (isOneOf({"SELECT @", "SET NOCOUNT"})) return std::nullopt;
    if (startsWith(text, "INSERT ") && strcasestr(line.text.c_str(), "VALUES") == nullptr)
        return std::nullopt;
    if (isOneOf({"SELECT ", "INSERT ", "UPDATE ", "DELETE "})) return 1;
    if (isOneOf({"PRINT ", "SET ", "DECLARE ", "USE ", "CREATE TABLE ", "DROP ", "TRUNCATE ", "FROM ",
                 "WHERE ", "ORDER BY ", "GROUP BY ", "--"}))
        return 0;
    return std::nullopt;
}

int printedCounts(const std::string& output) {
    int count = 0;
    for (const std::string_view end : {" rows affected)", " row affected)"})
        for (std::size_t at = 0; (at = output.find(end, at)) != std::string::npos; at += end.size()) ++count;
    return count;
}

// Compares the counts in the output with those of the statements before the failed one. The statements behind
// it in its batch may run as well.
void narrowByCounts(Batches& batches, const std::vector<Batch>& all, int failedLine,
                    const RunTraces& traces) {
    const int printed = printedCounts(traces.output);
    int before = 0;
    std::vector<std::size_t> fitting;
    for (const Batch& batch : all) {
        int ahead = 0;
        int behind = 0;
        for (std::size_t i = 0; i < batch.lines.size(); ++i) {
            const std::optional<int> counts = countsOf(batch.lines[i]);
            if (!counts) return;
            const bool isAhead = static_cast<int>(i) + 1 < failedLine;
            (isAhead ? ahead : behind) += *counts;
        }
        if (before + ahead <= printed && printed <= before + ahead + behind) fitting.push_back(batch.number);
        before += ahead + behind;
    }
    keepIfAny(batches, [&](const Batch& batch) {
        return std::find(fitting.begin(), fitting.end(), batch.number) != fitting.end();
    });
}

}  // namespace

std::vector<FailurePlace> possiblePlaces(const std::string& packageFile, int line, const RunTraces& traces) {
    const auto hasLineBreak = [](const std::string& value) { return value.find('\n') != value.npos; };
    if (line < 1 || std::any_of(traces.values.begin(), traces.values.end(), hasLineBreak)) return {};
    const std::vector<Batch> all = divideStatements(statementLines(packageFile)).batches;
    const auto index = static_cast<std::size_t>(line) - 1;
    Batches batches;
    for (const Batch& batch : all)
        if (index < batch.lines.size()) batches.push_back(&batch);
    narrowByMessage(batches, traces);
    narrowByPrints(batches, all, traces);
    narrowByCounts(batches, all, line, traces);
    std::vector<FailurePlace> places;
    for (const Batch* batch : batches)
        places.push_back({batch->number, batch->lines[index].number, batch->lines[index].text});
    return places;
}
