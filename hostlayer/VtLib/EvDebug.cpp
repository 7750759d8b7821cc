#include "EvDebug.h"

#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <mutex>
#include <string_view>

#include "Store.h"
#include "VTPI.h"

namespace {

constexpr const char* kDefaultName = "ZephraDebug";
constexpr std::size_t kFileBytes = std::size_t{16} << 20;
constexpr std::size_t kKeptFiles = 5;
constexpr std::size_t kEntryBytes = std::size_t{4} << 20;  // a longer entry is cut, and says so
constexpr mode_t kLogMode = 0640;
constexpr int kErrors = 1;
constexpr int kWarnings = 2;
constexpr int kDefaultLevel = 3;

// The log folder may be one that everybody writes to: nobody's link or device is opened as the log.
void refuseForeignFile(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return;  // made by the open that follows
    if (!S_ISREG(status.st_mode) || (status.st_uid != ::geteuid() && status.st_uid != 0))
        throw spdlog::spdlog_ex("not a regular file of this user: " + path);
}

void setUpOpened(std::FILE* file) {
    ::fchmod(::fileno(file), kLogMode);
    ::fcntl(::fileno(file), F_SETFD, FD_CLOEXEC);
}

std::shared_ptr<spdlog::logger> openLogger(const std::string& path, bool buffered) {
    spdlog::file_event_handlers handlers;
    handlers.before_open = refuseForeignFile;
    handlers.after_open = [](const std::string&, std::FILE* file) { setUpOpened(file); };
    auto sink =
        std::make_shared<spdlog::sinks::rotating_file_sink_mt>(path, kFileBytes, kKeptFiles, false, handlers);
    auto logger = std::make_shared<spdlog::logger>(kDefaultName, std::move(sink));
    logger->set_pattern("%Y-%m-%d %H:%M:%S.%e %P %t %L %v");
    logger->set_level(spdlog::level::trace);
    logger->flush_on(buffered ? spdlog::level::err : spdlog::level::trace);
    logger->set_error_handler([](const std::string&) {});  // the host program's standard error is not ours
    return logger;
}

// Line breaks stay, but a line that is not an entry's first is indented, so that no text can pass for
// an entry of its own; other control characters are written as \xNN.
std::string withoutForgery(std::string_view text) {
    const std::size_t end = std::min(text.find_last_not_of("\r\n") + 1, kEntryBytes);
    std::string safe;
    safe.reserve(end + 32);
    for (const char character : text.substr(0, end)) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '\n') {
            safe += "\n    ";
        } else if ((code < 0x20 && character != '\t') || code == 0x7F) {
            constexpr const char* kDigits = "0123456789ABCDEF";
            safe.append("\\x").append(1, kDigits[code >> 4]).append(1, kDigits[code & 15]);
        } else {
            safe += character;
        }
    }
    if (text.size() > kEntryBytes) safe += "... [cut, " + std::to_string(text.size()) + " bytes]";
    return safe;
}

// Behind the prefix; a long entry stands in memory once.
__attribute__((format(printf, 2, 0))) std::string formatted(std::string text, const char* format,
                                                            va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the checker does not follow va_copy
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    const std::size_t prefix = text.size();
    if (length <= 0) return text;
    text.resize(prefix + static_cast<std::size_t>(length));
    std::vsnprintf(text.data() + prefix, static_cast<std::size_t>(length) + 1, format, arguments);
    return text;
}

spdlog::level::level_enum severityOf(int level) {
    if (level <= kErrors) return spdlog::level::err;
    return level == kWarnings ? spdlog::level::warn : spdlog::level::debug;
}

}  // namespace

// One log of the process. Its logger is set once and then kept to the end, so that writers take no lock.
struct EvDebug::Log {
    std::string name;
    std::mutex opening;
    std::shared_ptr<spdlog::logger> owner;
    std::atomic<spdlog::logger*> logger{nullptr};
    std::atomic<int> level{kDefaultLevel};

    static Log* named(const char* fileInstance);
    bool open(const std::string& path, int wantedLevel, bool buffered);
    void write(spdlog::level::level_enum severity, std::string_view text) const {
        logger.load()->log(severity, withoutForgery(text));
    }
};

EvDebug::Log* EvDebug::Log::named(const char* fileInstance) {
    static std::mutex& lock = *new std::mutex;
    static auto& logs = *new std::map<std::string, Log>;  // never destroyed: written to until the last moment
    const std::string name = fileInstance != nullptr && *fileInstance != '\0' ? fileInstance : kDefaultName;
    const std::lock_guard guard(lock);
    const auto [log, isNew] = logs.try_emplace(name);
    if (isNew) log->second.name = name;
    return &log->second;
}

bool EvDebug::Log::open(const std::string& path, int wantedLevel, bool buffered) {
    const std::lock_guard guard(opening);
    if (owner) return true;
    try {
        owner = openLogger(path, buffered);
    } catch (const spdlog::spdlog_ex&) {
        return false;
    }
    level = wantedLevel > 0 ? wantedLevel : kDefaultLevel;
    logger = owner.get();
    return true;
}

EvDebug::EvDebug(const char* fileInstance) : m_log(Log::named(fileInstance)) {}

bool EvDebug::initialize(unsigned int facility, int level, bool asynchronous, const char* fileName) {
    static_cast<void>(facility);  // tells the suite's programs apart where they share a log service
    if (IsInitialized()) return true;
    const std::string file = fileName != nullptr && *fileName != '\0' ? fileName : m_log->name + ".log";
    if (file.find('/') != std::string::npos) return false;
    const VTPI_Base base;
    const std::string folder = VTPI_EventManager(base).getLogFilesDirectory();
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return false;
    if (!m_log->open(folder + "/" + file, level, asynchronous)) return false;
    const auto store = hostlayer::currentStore();  // what was wrong before there was a log to say it in
    if (!store->problem.empty()) DebugLevel(kErrors, "%s", store->problem.c_str());
    return true;
}

bool EvDebug::IsInitialized() const {
    return m_log->logger != nullptr;
}

void EvDebug::Debug(const char* tag, const char* format, ...) const {
    if (!IsInitialized()) return;
    va_list arguments;
    va_start(arguments, format);
    const std::string text =
        formatted("[" + std::string(tag != nullptr ? tag : "") + "] ", format, arguments);
    va_end(arguments);
    m_log->write(spdlog::level::info, text);
}

void EvDebug::DebugLevel(int level, const char* format, ...) const {
    if (!IsInitialized() || level > m_log->level) return;
    va_list arguments;
    va_start(arguments, format);
    const std::string text = formatted({}, format, arguments);
    va_end(arguments);
    m_log->write(severityOf(level), text);
}
