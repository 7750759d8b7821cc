#include "journal/RunOutputs.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <memory>
#include <string_view>
#include <tuple>

#include "HostSettings.h"

namespace {

constexpr int kMostLines = 10;
constexpr std::size_t kMostBytes = 3000;
constexpr std::size_t kMostCandidates = 5000;  // logged runs that may match
constexpr std::size_t kMostLogBytes = 64u << 20;
constexpr int kOldLogs = 5;

// Texts of the library's log entries.
constexpr std::string_view kStarted = "Tscript Execution Started!";
constexpr std::string_view kSucceeded = "Tscript Execution Succeeded!";
constexpr std::string_view kToolFailed = "Failed at Run";
constexpr std::string_view kOutputFile = "Output File: [";
constexpr std::string_view kOutput = "Tscript Output:";
constexpr std::string_view kIndentation = "    ";  // of the lines after an entry's first
constexpr std::size_t kTimeLength = sizeof "YYYY-MM-DD hh:mm:ss.mmm" - 1;

// Collects the first lines of an output.
class FirstLines {
  public:
    void add(std::string_view line) {
        if (m_lines == 0 && line.find_first_not_of(" \t\r") == line.npos) return;
        if (m_lines == kMostLines || m_output.text.size() + line.size() > kMostBytes) {
            m_output.more = true;
            if (m_lines == 0) m_output.text = line.substr(0, kMostBytes);
            m_lines = kMostLines;
            return;
        }
        if (m_lines++ > 0) m_output.text += '\n';
        m_output.text += line;
    }
    const RunOutput& output() const { return m_output; }

  private:
    RunOutput m_output;
    int m_lines = 0;
};

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Calls `consume` with each line of a regular file, without its line break. Lines longer than the buffer are
// truncated.
template <typename Consume>
void readLines(const std::string& path, std::size_t mostBytes, Consume consume) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (fd < 0) return;
    struct stat status {};
    const bool isRegular = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
    const std::unique_ptr<std::FILE, CloseFile> file(isRegular ? fdopen(fd, "r") : nullptr);
    if (!file) {
        close(fd);
        return;
    }
    std::array<char, 4096> buffer{};
    bool isLineStart = true;
    for (std::size_t bytes = 0; bytes < mostBytes && std::fgets(buffer.data(), buffer.size(), file.get());) {
        std::string_view line(buffer.data());
        bytes += line.size() + 1;
        const bool isLineEnd = !line.empty() && line.back() == '\n';
        if (isLineEnd) line.remove_suffix(1);
        if (isLineStart) consume(line);
        isLineStart = isLineEnd;
    }
}

bool sameName(const std::string& one, const std::string& other) {
    return strcasecmp(one.c_str(), other.c_str()) == 0;
}

bool isNear(std::int64_t one, std::int64_t other) {
    return std::llabs(one - other) <= kTolerance;
}

// An entry of a script run: "YYYY-MM-DD hh:mm:ss.mmm PROCESS THREAD I [SCRIPT] <DATABASE>..TEXT".
struct Entry {
    std::string_view time, thread, script, text;
};

bool parseEntry(std::string_view line, std::string_view marker, Entry& entry) {
    const std::size_t tag = line.find(" I [");
    const std::size_t end = line.find(marker);
    if (tag == line.npos || end == line.npos || tag <= kTimeLength || end < tag + 4) return false;
    entry = {line.substr(0, kTimeLength), line.substr(kTimeLength, tag - kTimeLength),
             line.substr(tag + 4, end - tag - 4), line.substr(end + marker.size())};
    return true;
}

std::int64_t momentOf(std::string_view text) {
    std::tm time{};
    if (strptime(std::string(text).c_str(), "%Y-%m-%d %H:%M:%S", &time) == nullptr) return 0;
    time.tm_isdst = -1;
    return std::mktime(&time);
}

struct LoggedRun {
    std::string script;
    std::int64_t start = 0, end = 0;
    FirstLines lines;
    std::string failure;     // text of its failure entry
    std::string outputFile;  // left behind by an interrupted run only

    RunOutput output() const;
};

RunOutput LoggedRun::output() const {
    FirstLines fileLines;
    if (lines.output().text.empty() && !outputFile.empty())
        readLines(outputFile, kMostBytes, [&](std::string_view line) { fileLines.add(line); });
    for (const RunOutput& known : {lines.output(), fileLines.output()})
        if (!known.text.empty()) return known;
    return {.text = failure};
}

// Reads the logs, oldest first, and collects the runs that may match the given ones.
class LogScan {
  public:
    LogScan(const std::string& database, const std::vector<TScriptRun_t>& runs)
        : m_marker("] <" + database + ">.."), m_runs(runs) {}
    void read(const std::string& file) {
        m_outputOf = nullptr;
        readLines(file, kMostLogBytes, [this](std::string_view line) { readLine(line); });
    }
    std::vector<LoggedRun> takeRuns() {
        while (!m_open.empty()) close(m_open.begin());
        return std::move(m_ended);
    }

  private:
    using Open = std::map<std::string, LoggedRun, std::less<>>;

    void readLine(std::string_view line);
    void openRun(const Entry& entry);
    void update(LoggedRun& run, const Entry& entry);
    void close(Open::iterator run) {
        m_ended.push_back(std::move(run->second));
        m_open.erase(run);
    }

    const std::string m_marker;
    const std::vector<TScriptRun_t>& m_runs;
    Open m_open;  // by thread
    std::vector<LoggedRun> m_ended;
    LoggedRun* m_outputOf = nullptr;  // run whose output the next lines are
};

void LogScan::readLine(std::string_view line) {
    if (line.starts_with(kIndentation)) {
        if (m_outputOf != nullptr) m_outputOf->lines.add(line.substr(kIndentation.size()));
        return;
    }
    m_outputOf = nullptr;
    Entry entry;
    if (!parseEntry(line, m_marker, entry)) return;
    if (entry.text.ends_with(kStarted)) return openRun(entry);
    const auto run = m_open.find(entry.thread);
    if (run == m_open.end() || run->second.script != entry.script) return;
    if (entry.text.starts_with(kSucceeded)) {
        m_open.erase(run);
    } else {
        update(run->second, entry);
    }
}

void LogScan::openRun(const Entry& entry) {
    if (const auto before = m_open.find(entry.thread); before != m_open.end()) close(before);
    const std::string script(entry.script);
    const std::int64_t start = momentOf(entry.time);
    const bool isCandidate = std::any_of(m_runs.begin(), m_runs.end(), [&](const TScriptRun_t& run) {
        return sameName(run.name, script) && isNear(run.startTime, start);
    });
    if (!isCandidate || m_open.size() + m_ended.size() >= kMostCandidates) return;
    LoggedRun& run = m_open[std::string(entry.thread)];
    run.script = script;
    run.start = run.end = start;
}

void LogScan::update(LoggedRun& run, const Entry& entry) {
    run.end = momentOf(entry.time);
    if (entry.text.starts_with(kOutput)) m_outputOf = &run;
    if (entry.text.starts_with(kToolFailed)) run.failure = entry.text;
    if (entry.text.starts_with(kOutputFile)) {
        const std::string_view path = entry.text.substr(kOutputFile.size());
        run.outputFile = path.substr(0, path.rfind(']'));
    }
}

struct Match {
    std::int64_t distance;
    std::size_t run;     // counted from the end, so that the oldest of equal matches comes first
    std::size_t logged;  // index
    bool operator<(const Match& other) const {
        return std::tie(distance, run, logged) < std::tie(other.distance, other.run, other.logged);
    }
};

std::vector<Match> possibleMatches(const std::vector<TScriptRun_t>& runs, const std::vector<LoggedRun>& log) {
    std::vector<Match> matches;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        for (std::size_t j = 0; j < log.size(); ++j) {
            const bool open = runs[i].status == 0;
            if (!sameName(runs[i].name, log[j].script) || !isNear(runs[i].startTime, log[j].start)) continue;
            if (!open && !isNear(runs[i].endTime, log[j].end)) continue;
            const std::int64_t atEnd = open ? 0 : std::llabs(runs[i].endTime - log[j].end);
            matches.push_back({std::llabs(runs[i].startTime - log[j].start) + atEnd, runs.size() - i, j});
        }
    }
    std::sort(matches.begin(), matches.end());
    return matches;
}

// The message about the query tool is left out if the output goes on: the cause says the same.
RunOutput recordedOutput(const RunRecord& record) {
    const std::string& text = record.output;
    FirstLines lines;
    for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
        end = std::min(text.find('\n', begin), text.size());
        const std::string_view line = std::string_view(text).substr(begin, end - begin);
        if (!line.starts_with(kToolFailed) || end + 1 >= text.size()) lines.add(line);
    }
    RunOutput output = lines.output();
    output.isRecorded = true;
    if (const DVUCause_t* cause = mainCause(record)) output.cause = causeText(*cause);
    return output;
}

std::vector<RunOutput> loggedOutputs(const std::filesystem::path& logFolder, const std::string& database,
                                     const std::vector<TScriptRun_t>& runs) {
    LogScan scan(database, runs);
    const std::filesystem::path newest =
        logFolder / hostlayer::hostSetting("debugLogFile", "ZephraDebug.log");
    for (int old = kOldLogs; old > 0; --old) {
        std::filesystem::path rotated = newest;
        const std::string extension = newest.extension();
        scan.read(rotated.replace_extension(std::to_string(old) + extension));
    }
    scan.read(newest);
    std::vector<LoggedRun> log = scan.takeRuns();
    std::vector<RunOutput> outputs(runs.size());
    std::vector<bool> hasOutput(runs.size() + 1), isUsed(log.size());
    for (const Match& match : possibleMatches(runs, log)) {
        if (hasOutput[match.run] || isUsed[match.logged]) continue;
        hasOutput[match.run] = isUsed[match.logged] = true;
        outputs[runs.size() - match.run] = log[match.logged].output();
    }
    return outputs;
}

}  // namespace

std::vector<RunOutput> findOutputs(RunRecords& records, const std::filesystem::path& logFolder,
                                   const std::string& database, const std::vector<TScriptRun_t>& runs) {
    std::vector<RunOutput> outputs(runs.size());
    std::vector<TScriptRun_t> others;
    std::vector<std::size_t> placesOfOthers;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        if (const FoundRecord found = records.find(runs[i]); found.record) {
            outputs[i] = recordedOutput(*found.record);
        } else {
            others.push_back(runs[i]);
            placesOfOthers.push_back(i);
        }
    }
    if (others.empty()) return outputs;
    std::vector<RunOutput> logged = loggedOutputs(logFolder, database, others);
    for (std::size_t i = 0; i < logged.size(); ++i) outputs[placesOfOthers[i]] = std::move(logged[i]);
    return outputs;
}
