#include "EvDebug.h"

#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <vector>

#include "HostSettings.h"
#include "VTPI.h"
#include "VTPlatformInfo.h"
#include "files/Descriptor.h"
#include "store/Store.h"

namespace {

constexpr const char* kDefaultName = "ZephraDebug";
constexpr std::size_t kDefaultFileBytes = std::size_t{16} << 20;
constexpr std::size_t kSmallestFileBytes = std::size_t{64} << 10;
constexpr std::size_t kKeptFiles = 5;  // rotated ones
constexpr std::size_t kEntryBytes = std::size_t{4}
                                    << 20;  // a longer entry is cut and gets a note of its length
constexpr mode_t kLogMode = 0640;
constexpr int kErrors = 1;
constexpr int kWarnings = 2;
constexpr int kDefaultLevel = 3;

// Settings of the store's [host] table. They have precedence over what a program asks for.
constexpr const char* kLevelSetting = "debugLogLevel";  // 0: no debug log
constexpr const char* kFileSetting = "debugLogFile";    // name of the default log's file in the log folder
constexpr const char* kBytesSetting = "debugLogBytes";  // size at which the file is rotated

// Creates the log file with its mode, or checks that an existing one may be opened: the log folder may be
// writable for everybody, so links, devices and other users' files are refused. spdlog itself would create
// the file with the umask's mode.
void createOrCheckLogFile(const std::string& path) {
    const hostlayer::Descriptor created(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kLogMode));
    struct stat status {};
    if (created || ::lstat(path.c_str(), &status) != 0) return;
    if (!S_ISREG(status.st_mode) || status.st_nlink > 1 ||
        (status.st_uid != ::geteuid() && status.st_uid != 0))
        throw spdlog::spdlog_ex("not a regular file of this user, or a file with a second name: " + path);
}

void setModeAndCloseOnExec(std::FILE* file) {
    ::fchmod(::fileno(file), kLogMode);
    ::fcntl(::fileno(file), F_SETFD, FD_CLOEXEC);
}

// Where a log is opened, and how.
struct Opening {
    std::string path{};
    int level = kDefaultLevel;
    std::size_t fileBytes = kDefaultFileBytes;
    bool isBuffered = false;
};

// The log folder of the instance in focus; empty when it is no folder.
std::string logFolder() {
    const VTPI_Base base;
    std::string folder = VTPI_EventManager(base).getLogFilesDirectory();
    struct stat status {};
    const bool isFolder = ::stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    return isFolder ? folder : std::string();
}

// The rotating file. spdlog's own sink has no file after a rotation that cannot open the new one, for example
// because the log folder is gone, and its next entry would be written to a null stream. This one opens the
// file again; entries are dropped while that fails.
class LogFile : public spdlog::sinks::base_sink<std::mutex> {
  public:
    explicit LogFile(Opening opening) : m_opening(std::move(opening)) { open(); }

  protected:
    void sink_it_(const spdlog::details::log_msg& entry) override {
        if (!m_isOpen && Clock::now() - m_lastAttempt > kRetryInterval) open();
        if (m_isOpen) m_file->log(entry);
    }
    void flush_() override {
        if (m_isOpen) m_file->flush();
    }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds kRetryInterval{1};  // an attempt that fails takes 50 ms

    // Throws spdlog_ex.
    void open() {
        m_lastAttempt = Clock::now();
        spdlog::file_event_handlers handlers;
        handlers.before_open = createOrCheckLogFile;
        handlers.after_open = [this](const std::string&, std::FILE* file) {
            setModeAndCloseOnExec(file);
            m_isOpen = true;
        };
        handlers.before_close = [this](const std::string&, std::FILE*) { m_isOpen = false; };
        m_file.emplace(m_opening.path, m_opening.fileBytes, kKeptFiles, /*rotate_on_open=*/false, handlers);
        m_file->set_pattern("%Y-%m-%d %H:%M:%S.%e %P %t %L %v");
    }

    Opening m_opening;
    bool m_isOpen = false;
    Clock::time_point m_lastAttempt;
    std::optional<spdlog::sinks::rotating_file_sink_st> m_file;
};

std::shared_ptr<spdlog::logger> openLogger(const Opening& opening) {
    auto logger = std::make_shared<spdlog::logger>(kDefaultName, std::make_shared<LogFile>(opening));
    logger->set_level(spdlog::level::trace);
    logger->flush_on(opening.isBuffered ? spdlog::level::err : spdlog::level::trace);
    logger->set_error_handler([](const std::string&) {});  // spdlog's own prints to standard error
    return logger;
}

// The beginning of a formatted entry, at most kEntryBytes, and the length of the whole. Entries may be
// outputs of the query tool, too large for a second copy in memory.
struct Formatted {
    std::string beginning;
    std::size_t size = 0;
};

// Write function of the stdio stream that an entry is formatted into, fopencookie(3).
ssize_t keepBeginning(void* cookie, const char* bytes, std::size_t count) noexcept {
    auto& formatted = *static_cast<Formatted*>(cookie);
    try {
        formatted.beginning.append(bytes, std::min(count, kEntryBytes - formatted.beginning.size()));
    } catch (const std::bad_alloc&) {
        return 0;  // ends the formatting; the bytes kept so far are logged
    }
    formatted.size += count;
    return static_cast<ssize_t>(count);
}

__attribute__((format(printf, 2, 0))) Formatted formatEntry(std::string_view prefix, const char* format,
                                                            va_list arguments) {
    Formatted result;
    keepBeginning(&result, prefix.data(), prefix.size());
    cookie_io_functions_t functions{};
    functions.write = keepBeginning;
    std::FILE* stream = fopencookie(&result, "w", functions);
    if (stream == nullptr) return result;
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has called va_start
    std::vfprintf(stream, format, arguments);
    std::fclose(stream);
    return result;
}

// False for line breaks and control characters; a tab is harmless.
bool isKeptInEntry(char character) {
    const auto code = static_cast<unsigned char>(character);
    return character == '\t' || (code >= 0x20 && code != 0x7F);
}

// Returns a line break with an indentation, or \xNN for a control character.
std::string replacement(char character) {
    if (character == '\n') return "\n    ";
    constexpr const char* kDigits = "0123456789ABCDEF";
    const auto code = static_cast<unsigned char>(character);
    return {'\\', 'x', kDigits[code >> 4], kDigits[code & 15]};
}

// Returns the entry in a form that cannot imitate further entries: every line after the first is indented,
// control characters other than line breaks and tabs become \xNN.
std::string sanitized(const Formatted& entry) {
    const std::string_view text = entry.beginning;
    std::string_view rest = text.substr(0, text.find_last_not_of("\r\n") + 1);
    std::string safe;
    safe.reserve(rest.size() + 32);
    while (!rest.empty()) {
        const auto kept =
            static_cast<std::size_t>(std::ranges::find_if_not(rest, isKeptInEntry) - rest.begin());
        safe += rest.substr(0, kept);
        if (kept < rest.size()) safe += replacement(rest[kept]);
        rest.remove_prefix(std::min(kept + 1, rest.size()));
    }
    if (entry.size > text.size()) safe += "... [cut, " + std::to_string(entry.size) + " bytes]";
    return safe;
}

spdlog::level::level_enum severityOf(int level) {
    if (level <= kErrors) return spdlog::level::err;
    return level == kWarnings ? spdlog::level::warn : spdlog::level::debug;
}

}  // namespace

// A log of the process. The loggers that it has had live as long as the process, so that writers need no
// lock.
struct EvDebug::Log {
    std::string name;
    std::mutex opening;
    std::string path;  // of the current logger
    std::vector<std::shared_ptr<spdlog::logger>> loggers;
    std::atomic<spdlog::logger*> logger{nullptr};
    std::atomic<int> level{kDefaultLevel};
    std::atomic<bool> isInitialized{false};

    static Log* named(const char* fileInstance);
    bool accepts(int entryLevel);
    bool open(const Opening& wanted);
    bool openBySettings(Opening wanted, std::string fileName);
    bool openOnFirstUse();
    void write(spdlog::level::level_enum severity, const Formatted& entry) const {
        logger.load()->log(severity, sanitized(entry));
    }
};

EvDebug::Log* EvDebug::Log::named(const char* fileInstance) {
    static std::mutex& lock = *new std::mutex;
    static auto& logs = *new std::map<std::string, Log>;  // never destroyed: static destructors may still log
    const std::string name = fileInstance != nullptr && *fileInstance != '\0' ? fileInstance : kDefaultName;
    const std::lock_guard guard(lock);
    const auto [log, isNew] = logs.try_emplace(name);
    if (isNew) log->second.name = name;
    return &log->second;
}

bool EvDebug::Log::accepts(int entryLevel) {
    return (logger != nullptr || openOnFirstUse()) && entryLevel <= level;
}

bool EvDebug::Log::open(const Opening& wanted) {
    const std::lock_guard guard(opening);
    if (logger == nullptr || path != wanted.path) {
        try {
            loggers.push_back(openLogger(wanted));
        } catch (const spdlog::spdlog_ex&) {
            return false;
        }
        path = wanted.path;
        logger = loggers.back().get();
    }
    level = wanted.level;
    return true;
}

// Opens the file `fileName` of the log folder, or the default one, as the store's settings say.
bool EvDebug::Log::openBySettings(Opening wanted, std::string fileName) {
    wanted.level = hostlayer::numberSetting(kLevelSetting, wanted.level);
    wanted.fileBytes =
        std::max(hostlayer::numberSetting(kBytesSetting, kDefaultFileBytes), kSmallestFileBytes);
    if (fileName.empty()) fileName = name + ".log";
    if (name == kDefaultName) fileName = hostlayer::hostSetting(kFileSetting, fileName.c_str());
    const std::string folder = logFolder();
    if (wanted.level <= 0 || folder.empty() || fileName.find('/') != std::string::npos) return false;
    const bool isFirst = logger == nullptr;
    wanted.path = folder + "/" + fileName;
    if (!open(wanted)) return false;
    // The store was read before the log was open and could not report its problem there.
    const auto store = hostlayer::currentStore();
    if (isFirst && !store->problem.empty())
        write(spdlog::level::err, {.beginning = store->problem, .size = store->problem.size()});
    return true;
}

// Opens the default log for a program that does not initialise it, if the store names a log folder and does
// not turn the log off. A failed attempt costs about as much as a read of the store, and the next entry makes
// another one.
bool EvDebug::Log::openOnFirstUse() {
    thread_local bool isOpening = false;  // reading the store may itself log a problem
    if (isOpening || name != kDefaultName) return false;
    const struct OpeningScope {
        OpeningScope() { isOpening = true; }
        ~OpeningScope() { isOpening = false; }
    } scope;
    std::string folder;
    const bool isNamed = VTPlatformInfo().getString("EventManager", "dEVLOGDIR", &folder) != 0;
    return isNamed && openBySettings({.level = kDefaultLevel}, "");
}

EvDebug::EvDebug(const char* fileInstance) : m_log(Log::named(fileInstance)) {}

bool EvDebug::initialize(unsigned int facility, int level, bool asynchronous, const char* fileName) {
    static_cast<void>(facility);  // for platforms on which the suite's programs share one log service
    if (IsInitialized()) return true;
    const Opening wanted{.level = level > 0 ? level : kDefaultLevel, .isBuffered = asynchronous};
    m_log->isInitialized = m_log->openBySettings(wanted, fileName != nullptr ? fileName : "");
    return IsInitialized();
}

bool EvDebug::IsInitialized() const {
    return m_log->isInitialized;
}

void EvDebug::Debug(const char* tag, const char* format, ...) const {
    if (!m_log->accepts(kErrors)) return;
    va_list arguments;
    va_start(arguments, format);
    const Formatted entry =
        formatEntry("[" + std::string(tag != nullptr ? tag : "") + "] ", format, arguments);
    va_end(arguments);
    m_log->write(spdlog::level::info, entry);
}

void EvDebug::DebugLevel(int level, const char* format, ...) const {
    if (!m_log->accepts(level)) return;
    va_list arguments;
    va_start(arguments, format);
    const Formatted entry = formatEntry({}, format, arguments);
    va_end(arguments);
    m_log->write(severityOf(level), entry);
}
