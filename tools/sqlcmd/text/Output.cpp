#include "text/Output.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <optional>
#include <thread>
#include <utility>

#include "text/Errors.h"
#include "text/Text.h"
#include "text/Utf.h"

namespace sqlcmd {

namespace {

// Returns N for /dev/fd/N and the names of the standard streams, which are links.
std::optional<int> ownDescriptor(std::string_view path) {
    constexpr std::string_view kFolder = "/dev/fd/";
    if (path == "/dev/stdout") return STDOUT_FILENO;
    if (path == "/dev/stderr") return STDERR_FILENO;
    if (!path.starts_with(kFolder)) return std::nullopt;
    int number = 0;
    const char* end = path.data() + path.size();
    const auto [stop, error] = std::from_chars(path.data() + kFolder.size(), end, number);
    return error == std::errc{} && stop == end && number >= 0 ? std::optional(number) : std::nullopt;
}

// Empties a regular file. One that is empty already only gets the time, by which the library sees that the
// tool has opened it: ext4 writes a file that has been truncated to the disk when it is closed.
bool makeEmpty(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) return false;
    if (!S_ISREG(status.st_mode)) return true;
    return (status.st_size == 0 && futimens(descriptor, nullptr) == 0) || ftruncate(descriptor, 0) == 0;
}

// Opens or creates a file. A named pipe opens when it has a reader, for which this waits some seconds; then
// errno is ENXIO.
int openForWriting(const std::string& path) {
    using namespace std::chrono_literals;
    constexpr auto kPatience = 10s;
    constexpr auto kPause = 20ms;
    const auto end = std::chrono::steady_clock::now() + kPatience;
    constexpr int kFlags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    int descriptor = open(path.c_str(), kFlags, 0666);
    while (descriptor < 0 && errno == ENXIO && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(kPause);
        descriptor = open(path.c_str(), kFlags, 0666);
    }
    if (descriptor >= 0) fcntl(descriptor, F_SETFL, O_WRONLY);  // without O_NONBLOCK
    return descriptor;
}

int openOutput(const std::string& path) {
    const std::optional<int> own = ownDescriptor(path);
    const int descriptor = own ? fcntl(*own, F_DUPFD_CLOEXEC, 0) : openForWriting(path);
    if (descriptor >= 0 && (own || makeEmpty(descriptor))) return descriptor;
    const std::string reason = errno == ENXIO ? "nobody reads from it" : std::strerror(errno);
    if (descriptor >= 0) close(descriptor);
    throw ToolError("Sqlcmd: Error: cannot open output file '" + path + "': " + reason + ".");
}

bool isRegular(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

// For a descriptor that another process has made non-blocking, as some do with a terminal or pipe they share.
void waitUntilWritable(int descriptor) {
    pollfd entry{descriptor, POLLOUT, 0};
    poll(&entry, 1, -1);
}

}  // namespace

Output::Output(const std::string& path, int codePage)
    : m_path(path),
      m_codePage(codePage),
      m_descriptor(path.empty() ? STDOUT_FILENO : openOutput(path)),
      m_isRegularFile(isRegular(m_descriptor)) {
    m_buffer.reserve(2 * kBufferSize);
    if (codePage != kUtf8 && codePage != kUtf16Le)
        m_encoder = std::make_unique<CodePage>(codePage, CodePage::Direction::FromUtf8);
}

void Output::redirect(const std::string& target) {
    flush();
    const bool isStandard = equalsIgnoringCase(target, "stdout") || equalsIgnoringCase(target, "stderr");
    const int descriptor = !isStandard                            ? openOutput(target)
                           : equalsIgnoringCase(target, "stderr") ? STDERR_FILENO
                                                                  : STDOUT_FILENO;
    if (isFile()) close(m_descriptor);
    m_path = isStandard ? std::string() : target;
    m_descriptor = descriptor;
    m_isRegularFile = isRegular(descriptor);
}

void Output::divert(int descriptor) {
    flush();
    m_diverted = std::exchange(m_descriptor, descriptor);
}

void Output::endDiversion() {
    flush();
    m_descriptor = std::exchange(m_diverted, -1);
}

bool Output::isTerminal() const {
    return isatty(m_descriptor) != 0;
}

Output::~Output() {
    if (isFile()) close(m_descriptor);
}

void Output::flush() {
    flushWholeCharacters();
    if (!m_buffer.empty()) {  // an incomplete character
        std::string bytes;
        appendUtf8(bytes, kReplacementCharacter);
        m_buffer.clear();
        std::string encoded;
        encode(bytes, encoded);
        writeBytes(encoded);
    }
}

void Output::flushEarly() {
    if (isEncoded() || m_buffer.empty()) return;
    const ssize_t count = ::write(m_descriptor, m_buffer.data(), m_buffer.size());
    if (count > 0) m_buffer.erase(0, static_cast<std::size_t>(count));
}

void Output::flushWholeCharacters() {
    if (!isEncoded()) {
        writeBytes(m_buffer);
        return m_buffer.clear();
    }
    const std::size_t whole = m_buffer.size() - utf8IncompleteTail(m_buffer);
    std::string bytes;
    bytes.reserve(2 * whole);
    encode(std::string_view(m_buffer).substr(0, whole), bytes);
    writeBytes(bytes);
    m_buffer.erase(0, whole);
}

void Output::encode(std::string_view text, std::string& bytes) {
    if (m_encoder)
        m_encoder->convert(text, bytes);
    else
        appendUtf16Le(bytes, text);
}

void Output::writeBytes(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(m_descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) {
            waitUntilWritable(m_descriptor);
            continue;
        }
        if (count < 0 && errno == EPIPE && m_diverted >= 0) return;
        if (count < 0) {
            const std::string reason = std::strerror(errno);
            m_buffer.clear();
            throw ToolError("Sqlcmd: Error: cannot write to " +
                            (isFile() ? "'" + m_path + "'" : "standard output") + ": " + reason + ".");
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

}  // namespace sqlcmd
