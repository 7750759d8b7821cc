#include "text/Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "text/Errors.h"
#include "text/Text.h"
#include "text/Utf.h"

namespace sqlcmd {

namespace {

int openOutput(const std::string& path) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (descriptor < 0)
        throw ToolError("Sqlcmd: Error: cannot open output file '" + path + "': " + std::strerror(errno) +
                        ".");
    return descriptor;
}

}  // namespace

Output::Output(const std::string& path, bool utf16)
    : m_path(path),
      m_utf16(utf16 && !path.empty()),
      m_descriptor(path.empty() ? STDOUT_FILENO : openOutput(path)) {
    m_buffer.reserve(2 * kBufferSize);
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
}

Output::~Output() {
    if (isFile()) close(m_descriptor);
}

void Output::flush() {
    flushWholeCharacters();
    if (m_utf16 && !m_buffer.empty()) {  // an incomplete character
        std::string units;
        appendUtf16Le(units, m_buffer);
        writeBytes(units);
    }
    m_buffer.clear();
}

void Output::flushWholeCharacters() {
    if (!m_utf16) {
        writeBytes(m_buffer);
        return m_buffer.clear();
    }
    const std::size_t whole = m_buffer.size() - utf8IncompleteTail(m_buffer);
    std::string units;
    units.reserve(2 * whole);
    appendUtf16Le(units, std::string_view(m_buffer).substr(0, whole));
    writeBytes(units);
    m_buffer.erase(0, whole);
}

void Output::writeBytes(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(m_descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
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
