#include "querytool/ToolOutput.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <memory>
#include <utility>

#include "Causes.h"
#include "FX.h"
#include "FileDescriptor.h"
#include "VTPI.h"
#include "parts/DatabaseMessages.h"

namespace {

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;
constexpr int kHeadingLines = 2;  // the column names and the line of dashes
constexpr char kBlank = ' ';
constexpr mode_t kOwnerOnly = 0600;
constexpr std::time_t kMarkSeconds = 60;  // OutputWatch; nobody deletes a file of that age as an old one

// Reader of a file's lines in large blocks. Memory: one block and one line that crosses blocks.
class LineReader {
  public:
    // A file that is not open leaves errno.
    explicit LineReader(FileDescriptor file)
        : m_file(std::move(file)), m_error(m_file.isOpen() ? 0 : errno), m_block(new char[kBlockSize]) {}

    // errno of the open or read that failed; 0: none did.
    int error() const { return m_error; }

    // Returns the next line without its newline, valid until the next call; false at the end and after an
    // error. Text behind the last newline is a line, too.
    bool next(std::string_view& line) {
        m_carried.clear();
        while (!m_rest.empty() || readBlock()) {
            const auto* newline = static_cast<const char*>(std::memchr(m_rest.data(), '\n', m_rest.size()));
            if (newline != nullptr) {
                line = cutFromBlock(static_cast<std::size_t>(newline - m_rest.data()));
                m_rest.remove_prefix(1);
                return true;
            }
            m_carried += m_rest;
            m_rest = {};
        }
        line = m_carried;
        return !m_carried.empty() && m_error == 0;
    }

  private:
    // Removes the next `length` bytes from the block and returns them after what earlier blocks left over.
    std::string_view cutFromBlock(std::size_t length) {
        const std::string_view bytes = m_rest.substr(0, length);
        m_rest.remove_prefix(length);
        if (m_carried.empty()) return bytes;
        m_carried += bytes;
        return m_carried;
    }

    bool readBlock() {
        if (m_error != 0) return false;
        ssize_t size = -1;
        do {
            size = ::read(m_file.get(), m_block.get(), kBlockSize);
        } while (size < 0 && errno == EINTR);
        if (size < 0) m_error = errno;
        if (size > 0) m_rest = {m_block.get(), static_cast<std::size_t>(size)};
        return size > 0;
    }

    FileDescriptor m_file;
    int m_error;
    std::unique_ptr<char[]> m_block;
    std::string_view m_rest;  // of the block
    std::string m_carried;
};

// A regular file of this user without a second name.
bool isOwnFile(const struct stat& status) {
    return S_ISREG(status.st_mode) && status.st_uid == ::geteuid() && status.st_nlink == 1;
}

bool createOrClaim(const char* path) {
    struct stat status {};
    // O_NONBLOCK: the open of a pipe in the file's place must not wait.
    const FileDescriptor file(path, O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK, kOwnerOnly);
    if (!file.isOpen()) return ::lstat(path, &status) != 0;
    return ::fstat(file.get(), &status) == 0 && isOwnFile(status) && ::fchmod(file.get(), kOwnerOnly) == 0 &&
           ::ftruncate(file.get(), 0) == 0;
}

}  // namespace

std::string rowOfLine(std::string_view line, char separator, int count) {
    line = line.substr(0, line.find('\0'));
    // Byte by byte: fields are short, and calls for each of them take longer.
    std::string row(line.size() + 1, separator);  // the fields are written between the separators
    char* end = row.data();
    const char* next = line.data();
    const char* const lineEnd = next + line.size();
    for (int field = 0; field < std::max(count, 1);) {
        while (next != lineEnd && *next == kBlank) ++next;
        if (next == lineEnd) break;
        while (next != lineEnd && *next != kBlank) *end++ = *next++;
        if (++field < count) ++end;  // behind a separator
    }
    row.resize(static_cast<std::size_t>(end - row.data()));
    return row;
}

namespace {

bool readRows(LineReader reader, const char* path, char separator, int count,
              std::vector<std::string>& rows) {
    std::string_view line;
    for (int i = 0; i < kHeadingLines; ++i) reader.next(line);
    while (reader.next(line) && !line.empty()) rows.push_back(rowOfLine(line, separator, count));
    if (reader.error() != 0) reportFileFailure(path, reader.error());
    return reader.error() == 0;
}

}  // namespace

bool readToolOutput(const char* path, char separator, int count, std::vector<std::string>& rows) {
    return readRows(LineReader(FileDescriptor(path, O_RDONLY)), path, separator, count, rows);
}

bool readToolOutput(const char* path, char separator, int count, std::vector<std::string>& rows,
                    const DatabaseReport& report) {
    return readToolOutput(path, separator, count, rows) ||
           report.fail(FXString::Format(database_messages::kOutputNotOpened, path));
}

bool readOwnToolOutput(const char* path, char separator, int count, std::vector<std::string>& rows,
                       const DatabaseReport& report) {
    return readRows(LineReader(openPlainFile(path, O_RDONLY)), path, separator, count, rows) ||
           report.fail(FXString::Format(database_messages::kOutputNotOpened, path));
}

std::string temporaryOutputPath() {
    const VTPI_Base installation;
    return FXString::Format("%s/sqlFile_%lld.txt", installation.getZephraTempDirectory().c_str(),
                            static_cast<long long>(std::time(nullptr)));
}

bool claimToolOutput(const std::string& path) {
    if (createOrClaim(path.c_str())) return true;
    reportCause({.where = kDVUFile, .subject = path, .text = database_messages::kOutputNotOwn});
    return false;
}

bool isOwnToolOutput(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || isOwnFile(status)) return true;
    reportCause({.where = kDVUFile, .subject = path, .text = database_messages::kOutputNotOwn});
    return false;
}

OutputWatch::OutputWatch(std::string path)
    : m_path(std::move(path)), m_existed(::lstat(m_path.c_str(), &m_before) == 0) {
    if (!m_existed || !isOwnFile(m_before) || m_before.st_size != 0) return;
    const timespec earlier = {.tv_sec = m_before.st_mtim.tv_sec - kMarkSeconds, .tv_nsec = 0};
    const timespec marked[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, earlier};
    m_isMarked = ::utimensat(AT_FDCWD, m_path.c_str(), marked, AT_SYMLINK_NOFOLLOW) == 0;
    if (m_isMarked) m_before.st_mtim = earlier;
}

OutputWatch::~OutputWatch() {
    struct stat now {};
    if (!m_isMarked || ::lstat(m_path.c_str(), &now) != 0 || !isUnchanged(now)) return;
    const timespec current[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, {.tv_sec = 0, .tv_nsec = UTIME_NOW}};
    ::utimensat(AT_FDCWD, m_path.c_str(), current, AT_SYMLINK_NOFOLLOW);
}

bool OutputWatch::isUnwritten() const {
    struct stat now {};
    if (::lstat(m_path.c_str(), &now) != 0) return true;
    return m_existed && S_ISREG(now.st_mode) && isUnchanged(now);
}

bool OutputWatch::isUnchanged(const struct stat& now) const {
    return now.st_ino == m_before.st_ino && now.st_size == m_before.st_size &&
           now.st_mtim.tv_sec == m_before.st_mtim.tv_sec && now.st_mtim.tv_nsec == m_before.st_mtim.tv_nsec;
}

void dropUnwrittenOutput(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0 && isOwnFile(status) && status.st_size == 0)
        FXFile::Remove(path.c_str());
}
