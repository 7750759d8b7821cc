#include "report/ReportPage.h"

#include <algorithm>
#include <ctime>
#include <set>
#include <utility>

#include "ReportStyle.h"
#include "console/Times.h"
#include "report/Html.h"
#include "report/ReportChart.h"

namespace {

constexpr std::size_t kMostRows = 25;  // of scripts
constexpr std::size_t kLongestInput = 300;
constexpr std::size_t kLongestPreview = 160;

constexpr char kHead[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<meta name="robots" content="noindex">
<title>Tscript runs in {}</title>
<style>
{}</style>
</head>
<body>
<a class="skip" href="#failures">Skip to the failures</a>
<header>
<h1>Tscript runs in <bdi>{}</bdi></h1>
<p>{}</p>
</header>
<main>
)";

constexpr char kEmpty[] = R"(<section class="empty">
<h2>No runs</h2>
<p>{}</p>
</section>
)";

constexpr char kTimeSection[] = R"(<section aria-labelledby="time">
<h2 id="time">Runs over time</h2>
<p>Runs per {}, by the time of their start.</p>
{}<div class="plot">
{}</div>
<details class="numbers">
<summary>The numbers as a table</summary>
<div class="scroll" tabindex="0" role="region" aria-label="Runs per {}">
<table>
<thead><tr><th scope="col">{}</th><th scope="col">Runs</th><th scope="col">Ok</th><th scope="col">Failed</th><th scope="col">Abandoned</th><th scope="col">Other</th></tr></thead>
<tbody>
{}</tbody>
</table>
</div>
</details>
</section>
)";

constexpr char kDurationSection[] = R"(<section aria-labelledby="duration">
<h2 id="duration">Duration by script</h2>
<p>{} Half of a script's runs end within the median, 95 of 100 within the next figure.</p>
<ul class="legend"><li><svg aria-hidden="true"><rect class="median" width="14" height="14"/></svg>median</li><li><svg aria-hidden="true"><rect class="most" width="14" height="14"/></svg>95 %</li><li><svg aria-hidden="true"><line class="longest" x1="7" x2="7" y2="14"/></svg>longest</li></ul>
<table class="scripts" role="table">
<thead role="rowgroup"><tr role="row"><th scope="col" role="columnheader">Script</th><th scope="col" role="columnheader">Runs</th><th scope="col" role="columnheader">Failed</th><th scope="col" role="columnheader">Median</th><th scope="col" role="columnheader">95 %</th><th scope="col" role="columnheader">Longest</th><th scope="col" role="columnheader" class="drawn">{}</th></tr></thead>
<tbody role="rowgroup">
{}</tbody>
</table>
</section>
)";

constexpr char kCompareSection[] = R"(<section aria-labelledby="compare">
<h2 id="compare">Compared with the period before</h2>
<p>The period before began {}: {}, {} succeeded. This period: {}, {} succeeded.</p>
<div class="scroll numbers" tabindex="0" role="region" aria-label="Comparison by script">
<table>
<thead><tr><th scope="col">Script</th><th scope="col">Runs before</th><th scope="col">Runs</th><th scope="col">Failed before</th><th scope="col">Failed</th><th scope="col">Median before</th><th scope="col">Median</th><th scope="col">95 % before</th><th scope="col">95 %</th></tr></thead>
<tbody>
{}</tbody>
</table>
</div>
</section>
)";

constexpr char kCompareRow[] =
    R"(<tr><th scope="row"><bdi>{}</bdi></th><td>{}</td><td>{}</td><td>{}</td><td{}>{}</td><td>{}</td><td>{}</td><td>{}</td><td>{}</td></tr>
)";

constexpr char kScriptRow[] =
    R"(<tr role="row"><th scope="row" role="rowheader"><bdi>{}</bdi></th><td role="cell" data-label="Runs">{}</td><td role="cell" data-label="Failed"{}>{}</td><td role="cell" data-label="Median">{}</td><td role="cell" data-label="95 %">{}</td><td role="cell" data-label="Longest">{}</td><td role="cell" class="drawn">{}</td></tr>
)";

constexpr char kFailure[] = R"(<details class="run {}"{}>
<summary><span class="what"><bdi>{}</bdi> <span class="state">{}</span></span> {}{}</summary>
<dl id="run-{}"><div><dt>Run</dt><dd><a href="#run-{}">{}</a></dd></div><div><dt>Ended</dt><dd>{}</dd></div><div><dt>Took</dt><dd>{}</dd></div>{}{}{}</dl>
{}</details>
)";

constexpr char kUnknownOutput[] =
    "<p class=\"hint\">Its output is unknown: it left no run record, and the log of that time was deleted or "
    "cannot be read.</p>\n";
constexpr char kNoOutput[] = "<p class=\"hint\">It printed nothing.</p>\n";
constexpr char kMoreInRecord[] =
    "<p class=\"hint\">Its first lines; <code>tscript journal show {}</code> prints the rest.</p>\n";
constexpr char kGuessed[] =
    "<p class=\"hint\">It left no run record: this is what the debug log has of a run of that name and "
    "time.{}</p>\n";

std::string detailRow(const char* name, const std::string& text) {
    return fillTemplate("<div><dt>{}</dt><dd>{}</dd></div>", {name, text});
}

std::string shortened(const std::string& text, std::size_t longest) {
    if (text.size() <= longest) return text;
    std::size_t end = longest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;  // keep UTF-8 characters whole
    return text.substr(0, end) + "…";
}

std::string timeElement(std::int64_t seconds) {
    return fillTemplate("<time datetime=\"{}\">{}</time>", {utcTime(seconds), localTime(seconds)});
}

std::string headOf(const Report& report) {
    const std::string database = escaped(report.database);
    std::string range =
        report.since != 0 ? "From " + timeElement(report.since) : "All that the journal holds";
    if (report.until != 0) range += " to " + timeElement(report.until);
    if (!report.pattern.empty()) range += ", names like <bdi><b>" + escaped(report.pattern) + "</b></bdi>";
    range += "; as of " + timeElement(report.now);
    return fillTemplate(kHead, {database, kReportStyle, database, range + "."});
}

// ---- Figures -------------------------------------------------------------------------------------------

std::string figure(const char* name, const std::string& value, const char* style = "") {
    return fillTemplate("<div{}><dt>{}</dt><dd>{}</dd></div>\n", {style, name, value});
}

std::string shareOk(const StateCounts& counts) {
    const std::int64_t ended =
        counts[RunState::kOk] + counts[RunState::kFailed] + counts[RunState::kAbandoned];
    if (ended == 0) return "–";
    const std::int64_t tenths =
        counts[RunState::kOk] * 1000 / ended;  // rounded down: 100 % only if all succeeded
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " %";
}

std::string figuresOf(const Report& report) {
    const StateCounts& counts = report.counts;
    std::string text = "<dl class=\"figures\">\n";
    text += figure("Runs", numberText(counts.all()));
    text += figure("Succeeded", shareOk(counts));
    text += figure("Failed", numberText(counts[RunState::kFailed]),
                   counts[RunState::kFailed] > 0 ? " class=\"failed\"" : "");
    text += figure("Abandoned", numberText(counts[RunState::kAbandoned]),
                   counts[RunState::kAbandoned] > 0 ? " class=\"abandoned\"" : "");
    if (counts[RunState::kRunning] > 0) text += figure("Running", numberText(counts[RunState::kRunning]));
    if (counts[RunState::kUnknown] > 0)
        text += figure("Unknown state", numberText(counts[RunState::kUnknown]));
    return text + "</dl>\n";
}

// ---- Sections ------------------------------------------------------------------------------------------

std::string timeSection(Report& report) {
    const std::string unit = report.timeline.unit().name;
    std::string title = unit;
    title.front() = static_cast<char>(title.front() - 'a' + 'A');
    return fillTemplate(kTimeSection, {unit, chartLegend(report.counts), timelineChart(report.timeline), unit,
                                       title, timelineRows(report.timeline)});
}

using Script = std::pair<const std::string, ScriptFigures>;

// Scripts with the largest total duration, in descending order.
std::vector<const Script*> longestScripts(const ScriptTotals& totals) {
    std::vector<const Script*> scripts;
    for (const Script& script : totals.scripts()) scripts.push_back(&script);
    std::stable_sort(scripts.begin(), scripts.end(), [](const Script* one, const Script* other) {
        return one->second.durations.total() > other->second.durations.total();
    });
    if (scripts.size() > kMostRows) scripts.resize(kMostRows);
    return scripts;
}

std::string scriptRow(const Script& script, std::int64_t longest) {
    const auto& [name, figures] = script;
    const Durations& durations = figures.durations;
    const auto span = [&](std::int64_t seconds) { return durations.empty() ? "–" : spanText(seconds); };
    const std::int64_t failed = figures.counts[RunState::kFailed];
    return fillTemplate(
        kScriptRow, {escaped(name), numberText(figures.counts.all()), failed > 0 ? " class=\"failed\"" : "",
                     numberText(failed), span(durations.quantile(0.5)), span(durations.quantile(0.95)),
                     span(durations.longest()), durations.empty() ? "" : durationBar(durations, longest)});
}

std::string durationSection(const Report& report) {
    const auto scripts = longestScripts(report.totals);
    std::int64_t longest = 1;
    for (const Script* script : scripts) longest = std::max(longest, script->second.durations.longest());
    std::string rows;
    for (const Script* script : scripts) rows += scriptRow(*script, longest);
    const auto known = static_cast<std::int64_t>(report.totals.scripts().size());
    std::string which = countText(known, "script") + ", by the time that their runs took in all.";
    if (known > static_cast<std::int64_t>(scripts.size()))
        which = "The " + std::to_string(scripts.size()) + " of " +
                (report.totals.otherRuns() > 0 ? "more than " : "") + countText(known, "script") +
                " whose runs took the most time in all.";
    return fillTemplate(kDurationSection, {which, durationAxis(longest), rows});
}

// ---- Comparison ----------------------------------------------------------------------------------------

std::string compareRow(const std::string& name, const ScriptFigures& before, const ScriptFigures& now) {
    const auto quantile = [](const ScriptFigures& figures, double part) {
        return figures.durations.empty() ? std::string("–") : spanText(figures.durations.quantile(part));
    };
    const auto failed = [](const ScriptFigures& figures) { return figures.counts[RunState::kFailed]; };
    return fillTemplate(kCompareRow,
                        {escaped(name), numberText(before.counts.all()), numberText(now.counts.all()),
                         numberText(failed(before)), failed(now) > failed(before) ? " class=\"failed\"" : "",
                         numberText(failed(now)), quantile(before, 0.5), quantile(now, 0.5),
                         quantile(before, 0.95), quantile(now, 0.95)});
}

// The scripts that took most time in either period.
std::string compareSection(const Report& report) {
    if (report.before.since == 0) return {};
    std::set<std::string> names;
    for (const ScriptTotals* totals : {&report.totals, &report.before.totals})
        for (const Script* script : longestScripts(*totals)) names.insert(script->first);
    const auto figuresIn = [](const ScriptTotals& totals, const std::string& name) {
        const auto found = totals.scripts().find(name);
        return found != totals.scripts().end() ? found->second : ScriptFigures();
    };
    std::string rows;
    for (const std::string& name : names)
        rows += compareRow(name, figuresIn(report.before.totals, name), figuresIn(report.totals, name));
    return fillTemplate(
        kCompareSection,
        {timeElement(report.before.since), countText(report.before.counts.all(), "run"),
         shareOk(report.before.counts), countText(report.counts.all(), "run"), shareOk(report.counts), rows});
}

std::string outputOf(const BadRun& bad, const RunOutput& output) {
    if (output.text.empty()) return output.isRecorded ? kNoOutput : kUnknownOutput;
    const std::string run = std::to_string(bad.run.id);
    std::string lines;
    for (std::size_t begin = 0, end = 0; end != output.text.npos; begin = end + 1) {
        end = output.text.find('\n', begin);
        const std::string line = output.text.substr(begin, end - begin);
        for (std::size_t part = 0, tab = 0; tab != line.npos;
             part = tab + 1) {  // tabs stay as column separators
            tab = line.find('\t', part);
            lines += escaped(line.substr(part, tab - part)) + (tab != line.npos ? "\t" : "");
        }
        lines += '\n';
    }
    return fillTemplate(
        "<pre tabindex=\"0\" role=\"region\" aria-label=\"Output of run {}\">{}</pre>\n{}",
        {run, lines,
         !output.isRecorded
             ? fillTemplate(kGuessed, {output.more ? " Its first lines; the debug log has more." : ""})
         : output.more ? fillTemplate(kMoreInRecord, {run})
                       : std::string()});
}

std::string failureOf(const BadRun& bad, const RunOutput& output, bool open) {
    const TScriptRun_t& run = bad.run;
    const std::string preview =  // escaping turns line breaks into blanks
        escaped(shortened(output.cause.empty() ? output.text : output.cause, kLongestPreview));
    const std::string number = std::to_string(run.id);
    const bool abandoned = bad.state == RunState::kAbandoned;
    return fillTemplate(
        kFailure,
        {nameOf(bad.state), open ? " open" : "", escaped(run.name), nameOf(bad.state),
         timeElement(run.startTime),
         preview.empty() ? "" : " <span class=\"preview\"><bdi>" + preview + "</bdi></span>", number, number,
         number, abandoned ? "–" : localTime(run.endTime), abandoned ? "–" : spanText(bad.seconds),
         run.userId != 0 ? detailRow("User", std::to_string(run.userId)) : "",
         run.input.empty()
             ? ""
             : detailRow("Input", "<bdi>" + escaped(shortened(run.input, kLongestInput)) + "</bdi>"),
         output.cause.empty() ? "" : detailRow("Cause", "<bdi>" + escaped(output.cause) + "</bdi>"),
         outputOf(bad, output)});
}

std::string failuresSection(const Report& report) {
    const std::int64_t all = report.counts[RunState::kFailed] + report.counts[RunState::kAbandoned];
    const auto shown = static_cast<std::int64_t>(report.badRuns.size());
    std::string text =
        "<section aria-labelledby=\"failures\">\n<h2 id=\"failures\" tabindex=\"-1\">Failures</h2>\n<p>";
    if (all == 0) return text + "No run failed or was abandoned.</p>\n</section>\n";
    text += shown < all ? "The newest " + numberText(shown) + " of " + numberText(all) +
                              " runs that failed or were abandoned."
                        : countText(all, "run") + " failed or abandoned, newest first.";
    text += "</p>\n";
    for (std::size_t i = 0; i < report.badRuns.size(); ++i)
        text += failureOf(report.badRuns[i], report.outputs[i], i == 0);
    return text + "</section>\n";
}

std::string emptySection(const Report& report) {
    const bool narrowed = report.since != 0 || report.until != 0 || !report.pattern.empty();
    return fillTemplate(kEmpty,
                        {narrowed ? "The journal holds no such run. Give an earlier time or another name."
                                  : "The journal is empty: no script has been run yet."});
}

std::string footOf(const Report& report) {
    std::tm time{};
    const std::time_t now = report.now;
    localtime_r(&now, &time);
    return fillTemplate("</main>\n<footer>Made by tscript {}. Times are {}.</footer>\n</body>\n</html>\n",
                        {TSCRIPT_VERSION, escaped(time.tm_zone)});
}

}  // namespace

std::string reportPage(Report& report) {
    std::string page = headOf(report);
    if (report.counts.all() == 0) {
        page += emptySection(report);
    } else {
        page += figuresOf(report) + timeSection(report) + durationSection(report) + compareSection(report) +
                failuresSection(report);
    }
    return page + footOf(report);
}
