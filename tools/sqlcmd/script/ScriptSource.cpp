#include "script/ScriptSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "text/Errors.h"
#include "text/Utf.h"

namespace sqlcmd {
namespace {

constexpr std::size_t kPiece = 65536;                     // bytes
constexpr std::size_t kMaxLine = std::size_t{256} << 20;  // bytes; SQL Server accepts no batch of this size

[[noreturn]] void throwInvalidFile(const std::string& path, int error) {
    throw ToolError("Sqlcmd: '" + path + "': Invalid filename. " + std::strerror(error) + ".");
}

int openScript(const std::string& path) {
    requireReadable(path);
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) throwInvalidFile(path, errno);
    return descriptor;
}

// Returns a descriptor of its own for standard input.
int openStandardInput() {
    const int descriptor = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
    if (descriptor < 0) throw ToolError(std::string("Sqlcmd: standard input: ") + std::strerror(errno) + ".");
    return descriptor;
}

bool isRegularFile(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

std::string shownName(const std::string& name) {
    return name.empty() ? "standard input" : "'" + name + "'";
}

}  // namespace

// Does not open the file: closing a named pipe again would end its writer.
void requireReadable(const std::string& path) {
    struct stat status {};
    if (access(path.c_str(), R_OK) != 0 || stat(path.c_str(), &status) != 0) throwInvalidFile(path, errno);
    if (S_ISDIR(status.st_mode)) throwInvalidFile(path, EISDIR);
}

ScriptSource::ScriptSource(int descriptor, std::string name, int codePage)
    : m_descriptor(descriptor),
      m_name(std::move(name)),
      m_mayWait(descriptor >= 0 && !isRegularFile(descriptor)),
      m_codePage(codePage) {}

ScriptSource ScriptSource::ofFile(const std::string& path, int codePage) {
    return {openScript(path), path, codePage};
}

ScriptSource ScriptSource::ofStandardInput(int codePage) {
    return {openStandardInput(), {}, codePage};
}

ScriptSource ScriptSource::ofText(std::string text) {
    ScriptSource source(-1, {}, kUtf8);
    source.m_text = std::move(text);
    return source;
}

ScriptSource ScriptSource::ofLines(LineFunction readLine) {
    ScriptSource source(-1, {}, kUtf8);
    source.m_readLine = std::move(readLine);
    source.m_mayWait = true;
    return source;
}

ScriptSource::~ScriptSource() {
    if (m_descriptor >= 0) close(m_descriptor);
}

ScriptSource::ScriptSource(ScriptSource&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)),
      m_name(std::move(other.m_name)),
      m_readLine(std::move(other.m_readLine)),
      m_mayWait(other.m_mayWait),
      m_codePage(other.m_codePage),
      m_encoding(other.m_encoding),
      m_decoder(std::move(other.m_decoder)),
      m_raw(std::move(other.m_raw)),
      m_text(std::move(other.m_text)),
      m_position(other.m_position),
      m_highSurrogate(other.m_highSurrogate),
      m_lineNumber(other.m_lineNumber) {}

bool ScriptSource::nextLine(std::string& line) {
    if (m_readLine) return ++m_lineNumber, m_readLine(line);
    std::size_t searched = m_position;
    std::size_t end;
    while ((end = m_text.find('\n', searched)) == std::string::npos) {
        m_text.erase(0, std::exchange(m_position, 0));
        searched = m_text.size();
        if (searched > kMaxLine)
            throw ToolError("Sqlcmd: " + shownName(m_name) + ": a line is longer than 256 MB.");
        if (!readMore()) break;
    }
    if (end == std::string::npos && m_position == m_text.size()) return false;
    line.assign(m_text, m_position, end == std::string::npos ? end : end - m_position);
    m_position = end == std::string::npos ? m_text.size() : end + 1;
    ++m_lineNumber;
    return true;
}

bool ScriptSource::readMore() {
    if (m_descriptor < 0) return false;
    const std::size_t before = m_raw.size();
    m_raw.resize(before + kPiece);
    ssize_t count;
    do count = read(m_descriptor, m_raw.data() + before, kPiece);
    while (count < 0 && errno == EINTR);
    if (count < 0) throw ToolError("Sqlcmd: " + shownName(m_name) + ": " + std::strerror(errno) + ".");
    m_raw.resize(before + static_cast<std::size_t>(count));
    if (count == 0) close(std::exchange(m_descriptor, -1));
    recogniseEncoding();
    decode();
    if (m_descriptor < 0 && (!m_raw.empty() || m_highSurrogate != 0))
        throw ToolError("Sqlcmd: " + shownName(m_name) + ": the last character is incomplete.");
    return true;
}

// Determines the encoding once three bytes, or the whole script, have been read. A script in UTF-16 without a
// byte order mark begins with an ASCII character.
void ScriptSource::recogniseEncoding() {
    if (m_encoding != Encoding::Unknown || (m_raw.size() < 3 && m_descriptor >= 0)) return;
    struct Mark {
        std::string_view bytes;
        Encoding encoding;
    };
    constexpr Mark kMarks[] = {
        {"\xEF\xBB\xBF", Encoding::Utf8}, {"\xFF\xFE", Encoding::Utf16Le}, {"\xFE\xFF", Encoding::Utf16Be}};
    for (const Mark& mark : kMarks)
        if (m_raw.starts_with(mark.bytes)) {
            m_raw.erase(0, mark.bytes.size());
            m_encoding = mark.encoding;
            return;
        }
    const bool isSecondNul = m_raw.size() > 1 && m_raw[0] != '\0' && m_raw[1] == '\0';
    const bool isFirstNul = m_raw.size() > 1 && m_raw[0] == '\0' && m_raw[1] != '\0';
    m_encoding = isSecondNul           ? Encoding::Utf16Le
                 : isFirstNul          ? Encoding::Utf16Be
                 : m_codePage != kUtf8 ? Encoding::CodePage
                                       : Encoding::Utf8;
    if (m_encoding == Encoding::CodePage)
        m_decoder = std::make_unique<CodePage>(m_codePage, CodePage::Direction::ToUtf8);
}

void ScriptSource::decode() {
    switch (m_encoding) {
        case Encoding::Unknown:
            break;
        case Encoding::Utf8:
            m_text += std::exchange(m_raw, {});
            break;
        case Encoding::Utf16Le:
        case Encoding::Utf16Be:
            decodeUtf16();
            break;
        case Encoding::CodePage:
            m_raw.erase(0, m_decoder->convert(m_raw, m_text));
            break;
    }
}

void ScriptSource::decodeUtf16() {
    const std::size_t high = m_encoding == Encoding::Utf16Be ? 0 : 1;
    std::size_t i = 0;
    for (; i + 1 < m_raw.size(); i += 2) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(m_raw[i + at]); };
        const char32_t unit = static_cast<char32_t>(byte(high) << 8 | byte(1 - high));
        const char32_t first = std::exchange(m_highSurrogate, 0);
        if (unit >= 0xD800 && unit < 0xDC00)
            m_highSurrogate = unit;
        else if (unit >= 0xDC00 && unit < 0xE000)
            appendUtf8(m_text, first != 0 ? 0x10000 + ((first - 0xD800) << 10) + (unit - 0xDC00) : 0xFFFD);
        else
            appendUtf8(m_text, unit);
    }
    m_raw.erase(0, i);
}

}  // namespace sqlcmd
