#include "report/ReportChart.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "console/Times.h"
#include "report/Html.h"

namespace {

// From the bottom of a bar to its top.
constexpr RunState kStack[] = {RunState::kFailed, RunState::kAbandoned, RunState::kUnknown,
                               RunState::kRunning, RunState::kOk};

// Stripes and dots distinguish the states without colours.
constexpr char kPatterns[] = R"svg(<defs>
<pattern id="fill-failed" width="5" height="5" patternUnits="userSpaceOnUse" patternTransform="rotate(45)">
<rect width="5" height="5"/><path class="ink" d="M0 0V5"/></pattern>
<pattern id="fill-abandoned" width="5" height="5" patternUnits="userSpaceOnUse">
<rect width="5" height="5"/><circle class="ink" cx="2.5" cy="2.5" r="1.1"/></pattern>
</defs>
)svg";

constexpr std::int64_t kTicks[] = {1, 10, 60, 600, 3600, 36000, 86400, 864000};
constexpr const char* kTickNames[] = {"1 s", "10 s", "1 min", "10 min", "1 h", "10 h", "1 d", "10 d"};

std::string describe(const StateCounts& counts) {
    std::string text;
    for (const RunState state :
         {RunState::kOk, RunState::kFailed, RunState::kAbandoned, RunState::kRunning, RunState::kUnknown}) {
        if (counts[state] == 0) continue;
        text += (text.empty() ? "" : ", ") + numberText(counts[state]) + " " + nameOf(state);
    }
    return text.empty() ? "no runs" : text;
}

// Axis step of 1, 2 or 5 times a power of ten, with at most four steps up to the highest bar.
std::int64_t axisStep(std::int64_t highest) {
    for (std::int64_t power = 1;; power *= 10)
        for (const std::int64_t step : {power, 2 * power, 5 * power})
            if (highest <= 4 * step) return step;
}

std::string axisText(std::int64_t number) {
    if (number >= 1'000'000 && number % 100'000 == 0)
        return std::to_string(number / 1'000'000) +
               (number % 1'000'000 != 0 ? "." + std::to_string(number % 1'000'000 / 100'000) : "") + "M";
    return number >= 10'000 && number % 1000 == 0 ? std::to_string(number / 1000) + "k" : numberText(number);
}

std::string barOf(const std::string& title, const StateCounts& counts, double left, double width,
                  std::int64_t top) {
    std::string text = "<g><title>" + title + ": " + describe(counts) + "</title>";
    double below = 0;
    for (const RunState state : kStack) {
        if (counts[state] == 0) continue;
        const double height = static_cast<double>(counts[state]) / static_cast<double>(top);
        text += fillTemplate(R"(<rect class="{}" x="{}" y="{}" width="{}" height="{}"/>)",
                             {nameOf(state), percentText(left), percentText(1 - below - height),
                              percentText(width), percentText(height)});
        below += height;
    }
    return text + "</g>";
}

// Horizontal lines from 0 to `top`, each with its number.
std::string axisLines(std::int64_t step, std::int64_t top) {
    std::string text;
    for (std::int64_t tick = 0; tick <= top; tick += step) {
        const std::string y = percentText(1 - static_cast<double>(tick) / static_cast<double>(top));
        text += fillTemplate(
            R"(<line x2="100%" y1="{}" y2="{}"/><text x="-8" y="{}" dy="4" class="end">{}</text>)",
            {y, y, y, axisText(tick)});
    }
    return text;
}

std::string timeLabel(const std::string& time, const std::string& x, const char* alignment) {
    return fillTemplate(R"(<text x="{}" y="100%" dy="22" class="{}">{}</text>)", {x, alignment, time});
}

double scaled(std::int64_t seconds, std::int64_t longest) {
    return std::log1p(static_cast<double>(seconds)) /
           std::log1p(static_cast<double>(std::max<std::int64_t>(longest, 1)));
}

}  // namespace

std::string chartLegend(const StateCounts& counts) {
    std::string text = "<ul class=\"legend\">";
    for (const RunState state :
         {RunState::kOk, RunState::kFailed, RunState::kAbandoned, RunState::kRunning, RunState::kUnknown}) {
        if (counts[state] == 0) continue;
        text += fillTemplate(
            R"(<li><svg aria-hidden="true"><rect class="{}" width="14" height="14"/></svg>{}</li>)",
            {nameOf(state), nameOf(state)});
    }
    return text + "</ul>\n";
}

std::string timelineChart(Timeline& timeline) {
    constexpr double kWidth = 0.8;  // of a bar, within its slot
    constexpr std::size_t kFewestSlots = 8;
    const auto& bars = timeline.bars();
    StateCounts all;
    std::int64_t highest = 1;
    for (const auto& [start, counts] : bars) {
        all += counts;
        highest = std::max(highest, counts.all());
    }
    const std::int64_t step = axisStep(highest);
    const std::int64_t top = (highest + step - 1) / step * step;
    const auto name = [&](std::int64_t start) { return localTime(start, timeline.unit().format); };
    const std::string first = name(bars.begin()->first);
    const std::string last = name(bars.rbegin()->first);

    std::string text = fillTemplate(
        "<svg class=\"timeline\" role=\"img\" aria-label=\"Bars: runs per {} from {} to {}. In all {}. "
        "At most {} in one {}.\">\n",
        {timeline.unit().name, first, last, describe(all), numberText(highest), timeline.unit().name});
    text += kPatterns;
    text += axisLines(step, top);
    const double slot = 1 / static_cast<double>(std::max(bars.size(), kFewestSlots));
    double left = slot * (1 - kWidth) / 2;
    for (const auto& [start, counts] : bars) {
        if (counts.all() > 0) text += "\n" + barOf(name(start), counts, left, slot * kWidth, top);
        left += slot;
    }
    text += "\n" + timeLabel(first, "0", "start");
    if (bars.size() >= kFewestSlots) {
        const std::size_t half = bars.size() / 2;
        const auto middle = std::next(bars.begin(), static_cast<std::ptrdiff_t>(half));
        const double place = slot * (static_cast<double>(half) + 0.5);
        text += timeLabel(name(middle->first), percentText(place), "middle");
        text += timeLabel(last, "100%", "end");
    }
    return text + "\n</svg>\n";
}

std::string timelineRows(Timeline& timeline) {
    std::string text;
    for (const auto& [start, counts] : timeline.bars()) {
        if (counts.all() == 0) continue;
        const std::string moment = localTime(start, timeline.unit().format);
        text += fillTemplate("<tr><th scope=\"row\">{}</th>", {moment});
        const std::int64_t others = counts[RunState::kRunning] + counts[RunState::kUnknown];
        for (const std::int64_t number : {counts.all(), counts[RunState::kOk], counts[RunState::kFailed],
                                          counts[RunState::kAbandoned], others})
            text += "<td>" + numberText(number) + "</td>";
        text += "</tr>\n";
    }
    return text;
}

std::string durationBar(const Durations& durations, std::int64_t longest) {
    const double median = scaled(durations.quantile(0.5), longest);
    const double most = scaled(durations.quantile(0.95), longest);
    const std::string end = percentText(scaled(durations.longest(), longest));
    std::string text = R"(<svg class="span" aria-hidden="true">)";
    for (const std::int64_t tick : kTicks)
        if (tick <= longest)
            text += fillTemplate(R"(<line class="grid" x1="{}" x2="{}" y2="100%"/>)",
                                 {percentText(scaled(tick, longest)), percentText(scaled(tick, longest))});
    return text +
           fillTemplate(
               R"(<line class="whole" x2="{}" y1="50%" y2="50%"/><rect class="most" y="25%" width="{}" height="50%"/><rect class="median" y="25%" width="{}" height="50%"/><line class="longest" x1="{}" x2="{}" y1="20%" y2="80%"/></svg>)",
               {end, percentText(most), percentText(median), end, end});
}

std::string durationAxis(std::int64_t longest) {
    constexpr double kClosest = 0.12;  // labels closer than this to the previous one are omitted
    std::string text = R"(<svg class="axis" role="img" aria-label="Logarithmic scale of time">)";
    double previous = -1;
    for (std::size_t i = 0; i < std::size(kTicks) && kTicks[i] <= longest; ++i) {
        const double place = scaled(kTicks[i], longest);
        if (place - previous < kClosest) continue;
        previous = place;
        text += fillTemplate(R"(<text x="{}" y="12" class="{}">{}</text>)",
                             {percentText(place), place > 0.95 ? "end" : "middle", kTickNames[i]});
    }
    return text + "</svg>";
}
