// Page of a report: no text of journal or output becomes markup.
#include "report/ReportPage.h"

#include <algorithm>
#include <string>

#include "Fuzz.h"
#include "report/ReportData.h"

namespace {

struct Texts {
    std::string database, pattern, script, input, output, cause;
};

std::string pageOf(const Texts& texts, std::uint8_t number) {
    constexpr std::int64_t kStart = 1'700'000'000;
    Report report{
        .database = texts.database, .pattern = texts.pattern, .since = kStart - 7200, .now = kStart};
    report.badRuns.push_back({{.id = number,
                               .status = 2,
                               .startTime = kStart - number * 20,
                               .endTime = kStart,
                               .name = texts.script,
                               .input = texts.input},
                              RunState::kFailed,
                              number});
    report.outputs.push_back(
        {.text = texts.output, .more = number % 2 == 0, .isRecorded = true, .cause = texts.cause});
    const RunView view(report.badRuns.front().run, /*staleHours=*/24);
    report.counts[view.state]++;
    report.timeline.add(view.run.startTime, view.state);
    report.totals.add(view);
    reportJson(report);
    reportCsv(report);
    return reportPage(report);
}

Texts textsOf(std::vector<std::string> parts) {
    parts.resize(6);
    return {parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    std::vector<std::string> parts, harmless;
    for (const std::string_view part : fuzz::partsOf(fuzz::textOf(data + 1, size - 1))) {
        harmless.emplace_back(parts.emplace_back(part));
        std::replace_if(
            harmless.back().begin(), harmless.back().end(),
            [](char c) { return c == '<' || c == '>' || c == '"' || c == '\''; }, '!');
    }
    const std::string page = pageOf(textsOf(parts), data[0]), other = pageOf(textsOf(harmless), data[0]);
    for (const char markup : {'<', '>', '"'})
        fuzz::require(std::count(page.begin(), page.end(), markup) ==
                      std::count(other.begin(), other.end(), markup));
    return 0;
}
