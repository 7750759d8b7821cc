#include "commands/JournalRuns.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <limits>
#include <set>
#include <vector>

#include "DVUtilities/TScriptRecords.h"
#include "commands/RunJson.h"
#include "console/Console.h"
#include "console/Csv.h"
#include "console/Listing.h"
#include "console/Times.h"
#include "journal/Records.h"
#include "journal/RunWatch.h"

namespace {

constexpr int kAll = 0;
constexpr std::size_t kMostFollowed = 100;  // open runs whose end is waited for
constexpr std::chrono::milliseconds kInterval{1000};

constexpr const char* kStatuses[] = {"running", "ok", "failed"};  // by status number of the journal

int statusNumber(const std::string& name) {
    const auto* found = std::find(std::begin(kStatuses), std::end(kStatuses), name);
    return found == std::end(kStatuses) ? -1 : static_cast<int>(found - std::begin(kStatuses));
}

Cells cellsOf(const RunView& view) {
    constexpr Shade kShades[] = {Shade::kActive, Shade::kGood, Shade::kBad, Shade::kUnusual, Shade::kNone};
    const TScriptRun_t& run = view.run;
    return {{std::to_string(run.id)},
            {run.name},
            {statusText(view), kShades[static_cast<int>(view.state)]},
            {localTime(run.startTime)},
            {spanText(view.seconds)},
            {run.input}};
}

// Reader of the runs that the options select.
class SelectedRuns {
  public:
    explicit SelectedRuns(const RecordOptions& options)
        : m_filter(runFilter(options)),
          m_status(statusNumber(options.failed ? "failed" : options.status)),
          m_slowerThan(options.slowerThan.empty() ? -1 : parseSpan(options.slowerThan)),
          m_staleHours(options.staleHours) {
        openRecords(m_records, options.database);
    }

    RunView viewOf(const TScriptRun_t& run) const { return {run, m_staleHours}; }
    bool isSelected(const TScriptRun_t& run) const {
        return (m_status < 0 || run.status == m_status) && viewOf(run).seconds > m_slowerThan;
    }
    // Runs of any status and length, newest first.
    std::vector<TScriptRun_t> page(int beforeId, int length) { return read(m_filter, beforeId, length); }
    // Calls `write` with pages of at most `most` (0: all) selected runs, newest first, until it returns
    // false.
    template <typename Write>
    void forEachPage(int most, Write write);

  private:
    std::vector<TScriptRun_t> read(const TScriptRunFilter_t& filter, int beforeId, int length) {
        std::vector<TScriptRun_t> runs;
        if (!m_records.listRuns(filter, beforeId, length, runs)) throwUnreadable(m_records);
        return runs;
    }

    TScriptRunFilter_t m_filter;
    int m_status;  // -1: any
    std::int64_t m_slowerThan;
    double m_staleHours;
    TScriptRecords m_records;
};

template <typename Write>
void SelectedRuns::forEachPage(int most, Write write) {
    TScriptRunFilter_t filter = m_filter;
    filter.status = m_status;
    filter.longerThan = m_slowerThan;
    std::size_t left =
        most == kAll ? std::numeric_limits<std::size_t>::max() : static_cast<std::size_t>(most);
    const bool isExact = m_slowerThan < 0 || m_status > 0;  // running ones are selected by the clock here
    const int length = isExact && left < kJournalPage ? static_cast<int>(left) : kJournalPage;
    int beforeId = 0;
    bool isLast = false;
    while (left > 0 && !isLast) {
        std::vector<TScriptRun_t> runs = read(filter, beforeId, length);
        isLast = runs.size() < static_cast<std::size_t>(length);
        if (!runs.empty()) beforeId = runs.back().id;
        std::erase_if(runs, [this](const TScriptRun_t& run) { return !isSelected(run); });
        if (runs.size() > left) runs.resize(left);
        left -= runs.size();
        if (!write(runs)) return;
    }
}

enum class Format { kTable, kJson, kJsonLines, kCsv };

// Writes runs to standard output in one of the formats.
class RunWriter {
  public:
    RunWriter(const SelectedRuns& selected, Format format)
        : m_selected(selected),
          m_format(format),
          m_table({{"ID"}, {"NAME", true}, {"STATUS"}, {"STARTED"}, {"DURATION"}, {"INPUT", true}}) {
        if (m_format == Format::kCsv) writeResult(csvHeading(jsonOf(m_selected.viewOf({}))));
    }
    // False when standard output cannot be written any more.
    bool write(const std::vector<TScriptRun_t>& runs);
    void end() {
        if (m_format == Format::kJson) m_array.end();
    }

  private:
    const SelectedRuns& m_selected;
    Format m_format;
    Listing m_table;
    JsonListing m_array;
};

bool RunWriter::write(const std::vector<TScriptRun_t>& runs) {
    std::vector<Cells> rows;
    for (const TScriptRun_t& run : runs) {
        const RunView view = m_selected.viewOf(run);
        if (m_format == Format::kTable) rows.push_back(cellsOf(view));
        if (m_format == Format::kJson) m_array.write(jsonOf(view));
        if (m_format == Format::kJsonLines) writeResult(jsonLine(jsonOf(view)));
        if (m_format == Format::kCsv) writeResult(csvLine(jsonOf(view)));
    }
    if (m_format == Format::kTable) m_table.writePage(rows);
    return std::ferror(resultStream()) == 0;
}

void writeRuns(const RecordOptions& options, int most, Format format) {
    SelectedRuns selected(options);
    RunWriter writer(selected, format);
    selected.forEachPage(most, [&](const auto& runs) { return writer.write(runs); });
    writer.end();
}

// Runs that are new, or have changed, since the last look.
class Follower {
  public:
    Follower(SelectedRuns& selected, int newest) : m_selected(selected), m_newest(newest) {}

    // Notes runs that have not ended.
    void note(const std::vector<TScriptRun_t>& runs) {
        for (const TScriptRun_t& run : runs)
            if (run.status == 0) m_open.insert(run.id);
        while (m_open.size() > kMostFollowed) m_open.erase(m_open.begin());
    }
    // Runs that have ended, then those that have started, oldest first.
    std::vector<TScriptRun_t> changes();

  private:
    SelectedRuns& m_selected;
    int m_newest;
    std::set<int> m_open;
};

std::vector<TScriptRun_t> Follower::changes() {
    std::vector<TScriptRun_t> changed;
    for (auto id = m_open.begin(); id != m_open.end();) {
        const std::vector<TScriptRun_t> row = m_selected.page(*id + 1, /*length=*/1);
        const bool isDeleted = row.empty() || row.front().id != *id;
        const bool isOpen = !isDeleted && row.front().status == 0;
        if (!isDeleted && !isOpen) changed.push_back(row.front());
        id = isOpen ? std::next(id) : m_open.erase(id);
    }
    std::vector<TScriptRun_t> started = m_selected.page(/*beforeId=*/0, kJournalPage);
    std::erase_if(started, [this](const TScriptRun_t& run) { return run.id <= m_newest; });
    if (!started.empty()) m_newest = started.front().id;
    note(started);
    changed.insert(changed.end(), started.rbegin(), started.rend());
    return changed;
}

// Waits. Returns true at once when nobody reads standard output any more: a pipe then reports POLLERR, a
// terminal or socket POLLHUP.
bool isOutputClosedWithin(std::chrono::milliseconds time) {
    pollfd output{.fd = STDOUT_FILENO, .events = 0, .revents = 0};
    return poll(&output, 1, static_cast<int>(time.count())) > 0;
}

void follow(SelectedRuns& selected, Follower& follower, RunWriter& writer) {
    while (!isOutputClosedWithin(kInterval)) {
        std::vector<TScriptRun_t> runs = follower.changes();
        std::erase_if(runs, [&](const TScriptRun_t& run) { return !selected.isSelected(run); });
        if (!writer.write(runs) || std::fflush(resultStream()) != 0) return;
    }
}

}  // namespace

ExitCode listRuns(const RecordOptions& options) {
    if (options.watch) {
        checkPattern(options.name);
        watchRuns({.database = options.database,
                   .pattern = options.name,
                   .staleHours = options.staleHours,
                   .json = options.json});
        return ExitCode::kDone;
    }
    writeRuns(options, options.last, options.json ? Format::kJson : Format::kTable);
    return ExitCode::kDone;
}

ExitCode exportRuns(const RecordOptions& options) {
    writeRuns(options, kAll, options.csv ? Format::kCsv : Format::kJson);
    return ExitCode::kDone;
}

ExitCode tailRuns(const RecordOptions& options) {
    SelectedRuns selected(options);
    const std::vector<TScriptRun_t> newest = selected.page(/*beforeId=*/0, kJournalPage);
    Follower follower(selected, newest.empty() ? 0 : newest.front().id);
    follower.note(newest);
    std::vector<TScriptRun_t> last;
    selected.forEachPage(options.tail, [&](const auto& runs) {
        last.insert(last.end(), runs.begin(), runs.end());
        return true;
    });
    std::reverse(last.begin(), last.end());
    RunWriter writer(selected, options.json ? Format::kJsonLines : Format::kTable);
    const bool isWritten = writer.write(last) && std::fflush(resultStream()) == 0;
    if (isWritten && options.follow) follow(selected, follower, writer);
    return ExitCode::kDone;
}
