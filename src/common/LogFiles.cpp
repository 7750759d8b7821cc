#include "LogFiles.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <span>
#include <utility>

#include "CallerText.h"
#include "CommonMessages.h"
#include "DVUtilities/commonFunc.h"
#include "ExceptionGuard.h"
#include "FX.h"
#include "FileDescriptor.h"
#include "OpenFile.h"
#include "Registry.h"
#include "RegistryNames.h"

namespace {

constexpr std::size_t kTimeLength = sizeof "YYYY/MM/DD hh:mm:ss";
constexpr std::size_t kCopiedLineSize = 8192;  // a longer line is copied in pieces of 8,191 bytes
constexpr std::size_t kReportMessageSize = 8192;

// Appends a number, padded with zeros to `width`. Avoids printf because every log line comes through here.
void appendNumber(std::string& text, long long number, std::size_t width) {
    std::array<char, 24> digits{};
    const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    const auto length = static_cast<std::size_t>(end - digits.data());
    if (length < width) text.append(width - length, '0');
    text.append(digits.data(), length);
}

void appendTime(std::string& text, std::time_t when, bool dateOnly) {
    std::tm local{};
    tzset();  // localtime_r() alone need not follow a changed time zone
    localtime_r(&when, &local);
    appendNumber(text, local.tm_year + 1900LL, 4);
    const std::pair<char, int> parts[] = {{'/', local.tm_mon + 1},
                                          {'/', local.tm_mday},
                                          {' ', local.tm_hour},
                                          {':', local.tm_min},
                                          {':', local.tm_sec}};
    for (const auto& [mark, number] : std::span(parts).first(dateOnly ? 2 : 5)) {
        text += mark;
        appendNumber(text, number, 2);
    }
}

// Current time as text. Formatted once a second: following a changed time zone takes system calls. A change
// of TZ is followed at once. Static destructors may log, so nothing here has a destructor.
std::string_view currentTime() {
    struct Formatted {
        std::time_t second;
        std::size_t zone;
        std::array<char, kTimeLength> text;
        std::size_t length;  // 0: nothing is formatted yet
    };
    thread_local Formatted last{};
    const std::time_t now = std::time(nullptr);
    const std::size_t zone = std::hash<std::string_view>()(textOrEmpty(std::getenv("TZ")));
    if (last.length == 0 || last.second != now || last.zone != zone) {
        std::string text;
        appendTime(text, now, /*dateOnly=*/false);
        last = {now, zone, {}, std::min(text.size(), last.text.size())};
        std::copy_n(text.begin(), last.length, last.text.begin());
    }
    return {last.text.data(), last.length};
}

// Whether echoed lines are also logged. Off without an instance and when the setting cannot be read.
bool isEchoLogged(bool echo, const char* instance) {
    unsigned int setting = 0;
    std::string ignored;
    if (echo && instance != nullptr)
        readRegistryNumber(registry::key::kDatabase, registry::value::kLogScriptResult, setting, ignored);
    return setting != 0;
}

std::string_view withoutNewline(std::string_view line) {
    if (!line.empty() && line.back() == '\n') line.remove_suffix(1);
    return line;
}

// Destination of a copied file.
struct CopyTarget {
    const char* logFile;
    bool echo;
    bool echoLogged;

    void write(const char* piece) const {
        if (echo) std::fputs(piece, stdout);
        if (logFile == nullptr) return;
        if (!echo) LogToFile(logFile, std::string(withoutNewline(piece)).c_str(), /*raw=*/false);
        if (echoLogged) LogToFile(logFile, piece, /*raw=*/true);
    }

    void end() const {
        if (!echo) return;
        std::printf("\n");
        if (echoLogged) LogToFile(logFile, "\n", /*raw=*/true);
    }
};

// A piece ends at its first NUL.
void copyLines(std::FILE* source, const CopyTarget& target) {
    std::array<char, kCopiedLineSize> line{};
    while (std::fgets(line.data(), kCopiedLineSize, source) != nullptr) target.write(line.data());
    target.end();
}

// True for a regular file that has two or more names, and for one that cannot be inspected. Asks for nothing
// else: after a request for the modification time (fstat()), the kernel writes a new time with each line,
// which takes longer than the line.
bool hasSecondName(int descriptor) {
    struct statx status {};
    if (::statx(descriptor, "", AT_EMPTY_PATH, STATX_TYPE | STATX_NLINK, &status) == 0)
        return S_ISREG(status.stx_mode) && status.stx_nlink > 1;
    struct stat whole {};  // some sandboxes forbid statx()
    return ::fstat(descriptor, &whole) != 0 || (S_ISREG(whole.st_mode) && whole.st_nlink > 1);
}

// Follows no link but those of /dev, does not wait for a pipe, and refuses a file with a second name: whoever
// may write to the log's folder could have the entries appended to another file of this user.
FileDescriptor openLog(const char* path) {
    constexpr mode_t kPermissions = 0666;  // less the umask, like fopen()
    constexpr std::string_view kDevices = "/dev/";
    const int links = std::string_view(path).starts_with(kDevices) ? 0 : O_NOFOLLOW;
    FileDescriptor log(path, O_RDWR | O_CREAT | O_APPEND | O_NONBLOCK | O_NOCTTY | links, kPermissions);
    if (!log.isOpen() || !hasSecondName(log.get())) return log;
    log = FileDescriptor();
    errno = EMLINK;
    return log;
}

}  // namespace

std::string currentTimeString() {
    return std::string(currentTime());
}

void appendToLog(const char* logFile, std::string_view entry) {
    const FileDescriptor log = openLog(logFile);
    if (!log.isOpen())
        std::printf(common_messages::kCannotOpenLog, logFile, errno);
    else if (!writeAll(log, entry))
        std::printf(common_messages::kCannotWriteLog, logFile, errno);
}

const char* GetTimeString(char* buffer, int length, long when, bool dateOnly) {
    guarded([&] {
        std::string text;
        appendTime(text, when, dateOnly);
        copyCut(buffer, static_cast<std::size_t>(std::max(length, 0)), text);
    });
    return buffer;
}

void LogToFile(const char* logFile, const char* text, bool raw) {
    guarded([&] {
        if (logFile == nullptr) {
            std::printf(common_messages::kInvalidLogName);
            return;
        }
        const std::string_view written = textOrEmpty(text);
        std::string entry;
        entry.reserve(kTimeLength + written.size() + 4);
        if (raw) {
            entry = written;
        } else {
            entry.append(currentTime()).append(" - ").append(written).append("\n");
        }
        appendToLog(logFile, entry);
    });
}

void LogFileContent(const char* sourceFile, const char* logFile, bool echo, const char* instance) {
    guarded([&] {
        if (sourceFile == nullptr) return;
        // "r+" because callers rely on a file that is not writable counting as one that cannot be opened.
        const OpenFile source(sourceFile, "r+");
        if (!source.isOpen()) {
            const std::string message = FXString::Format(common_messages::kCannotOpenReport, sourceFile);
            LogToFile(logFile, cutTo(message, kReportMessageSize - 1).c_str(), /*raw=*/false);
            return;
        }
        // The copy of a file into itself would never end.
        const bool isItsLog = logFile != nullptr && isSameFile(sourceFile, logFile);
        copyLines(source.get(),
                  {isItsLog ? nullptr : logFile, echo, !isItsLog && isEchoLogged(echo, instance)});
    });
}

int DVUtilities_fopen_s(FILE** stream, const char* path, const char* mode) {
    if (stream == nullptr || path == nullptr || mode == nullptr) return -1;
    *stream = std::fopen(path, mode);
    return *stream != nullptr ? 0 : errno;
}
