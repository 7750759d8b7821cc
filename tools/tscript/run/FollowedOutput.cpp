#include "run/FollowedOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "console/Secret.h"

namespace {

constexpr std::size_t kLongestLine = std::size_t{64} << 10;
constexpr std::size_t kKeptBegin = 4096;

// Command line of a process, its words ended by NUL. It may hold the login's password.
Secret commandLineOf(const std::string& process) {
    constexpr std::size_t kLongest = std::size_t{64} << 10;
    Secret words(kLongest);
    words.text().resize(kLongest);
    const int file = open(("/proc/" + process + "/cmdline").c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = file >= 0 ? read(file, words.text().data(), kLongest) : 0;
    if (file >= 0) close(file);
    words.text().resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return words;
}

// Argument of -o; empty if there is none. Until the child has become the query tool, its command line is that
// of this process, which may have an option -o as well.
std::string outputFileOf(pid_t tool) {
    constexpr std::string_view kOption{"\0-o\0", 4};
    const Secret words = commandLineOf(std::to_string(tool));
    const std::string& text = words.text();
    const std::size_t at = text.find(kOption);
    if (at == text.npos || text == commandLineOf("self").text()) return {};
    return text.c_str() + at + kOption.size();
}

}  // namespace

FollowedOutput::~FollowedOutput() {
    if (m_file >= 0) close(m_file);
}

std::string_view FollowedOutput::nextLines(pid_t tool) {
    if (m_hasEnded) return {};
    if (m_file < 0) {
        const std::string path = outputFileOf(tool);
        if (!path.empty()) m_file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
        if (m_file < 0) return {};
        m_buffer.resize(kLongestLine);
    }
    const ssize_t count = pread(m_file, m_buffer.data(), m_buffer.size(), static_cast<off_t>(m_size));
    if (count <= 0) return {};
    const std::string_view text(m_buffer.data(), static_cast<std::size_t>(count));
    const std::string_view readable = text.substr(0, text.find('\0'));
    const std::string_view lines = readable.substr(0, readable.rfind('\n') + 1);  // npos + 1 is 0
    const bool isLineTooLong = lines.empty() && text.size() == m_buffer.size();
    m_hasEnded = readable.size() < text.size() || isLineTooLong;
    m_begin += lines.substr(0, kKeptBegin - std::min(kKeptBegin, m_begin.size()));
    m_size += lines.size();
    return lines;
}

// A failed run's message comes before the tool's output.
std::string FollowedOutput::rest(std::string output) const {
    const std::size_t at = output.find(m_begin);
    if (at != output.npos && output.size() - at >= m_size) output.erase(at, m_size);
    return output;
}
