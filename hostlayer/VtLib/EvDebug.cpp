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
#include <new>
#include <string_view>

#include "Descriptor.h"
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

// The log folder may be one that everybody writes to: nobody's link or device is opened as the log, and a new
// one is made here, for the open that follows would leave it to all for a moment.
void makeOrRefuse(const std::string& path) {
    const hostlayer::Descriptor made(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kLogMode));
    struct stat status {};
    if (made || ::lstat(path.c_str(), &status) != 0) return;
    if (!S_ISREG(status.st_mode) || (status.st_uid != ::geteuid() && status.st_uid != 0))
        throw spdlog::spdlog_ex("not a regular file of this user: " + path);
}

void setUpOpened(std::FILE* file) {
    ::fchmod(::fileno(file), kLogMode);
    ::fcntl(::fileno(file), F_SETFD, FD_CLOEXEC);
}

std::shared_ptr<spdlog::logger> openLogger(const std::string& path, bool buffered) {
    spdlog::file_event_handlers handlers;
    handlers.before_open = makeOrRefuse;
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

// A formatted text: as much of its beginning as an entry may hold, and the length of the whole. Whole tool
// outputs are logged, and no second copy of them is to stand in memory for that.
struct Formatted {
    std::string text;
    std::size_t size = 0;
};

// The write function of the stream that a text is formatted into.
ssize_t keepBeginning(void* cookie, const char* bytes, std::size_t count) noexcept {
    auto& formatted = *static_cast<Formatted*>(cookie);
    try {
        formatted.text.append(bytes, std::min(count, kEntryBytes - formatted.text.size()));
    } catch (const std::bad_alloc&) {
        return 0;  // what has been kept is written
    }
    formatted.size += count;
    return static_cast<ssize_t>(count);
}

__attribute__((format(printf, 2, 0))) Formatted formatted(std::string_view prefix, const char* format,
                                                          va_list arguments) {
    Formatted result;
    keepBeginning(&result, prefix.data(), prefix.size());
    cookie_io_functions_t functions{};
    functions.write = keepBeginning;
    std::FILE* stream = fopencookie(&result, "w", functions);
    if (stream == nullptr) return result;
    // The caller began the list. NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    std::vfprintf(stream, format, arguments);
    std::fclose(stream);
    return result;
}

// Line breaks stay, but a line that is not an entry's first is indented, so that no text can pass for
// an entry of its own; other control characters are written as \xNN.
std::string withoutForgery(const Formatted& entry) {
    const std::string_view text = entry.text;
    const std::size_t end = text.find_last_not_of("\r\n") + 1;
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
    if (entry.size > text.size()) safe += "... [cut, " + std::to_string(entry.size) + " bytes]";
    return safe;
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
    void write(spdlog::level::level_enum severity, const Formatted& entry) const {
        logger.load()->log(severity, withoutForgery(entry));
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
    const Formatted entry = formatted("[" + std::string(tag != nullptr ? tag : "") + "] ", format, arguments);
    va_end(arguments);
    m_log->write(spdlog::level::info, entry);
}

void EvDebug::DebugLevel(int level, const char* format, ...) const {
    if (!IsInitialized() || level > m_log->level) return;
    va_list arguments;
    va_start(arguments, format);
    const Formatted entry = formatted({}, format, arguments);
    va_end(arguments);
    m_log->write(severityOf(level), entry);
}
