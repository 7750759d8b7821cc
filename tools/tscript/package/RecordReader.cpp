#include "package/RecordReader.h"

#include <array>
#include <filesystem>
#include <limits>
#include <string_view>

#include "console/Outcome.h"
#include "package/PackageFile.h"

namespace {

constexpr std::uintmax_t kMostRecordGiB = 2;  // a record is half as long again as its text
constexpr std::size_t kLongestRecord = 2046;  // the library splits longer lines

}  // namespace

RecordReader::RecordReader(const std::string& file)
    : m_file(file), m_in(openPackageFile(file, kMostRecordGiB)), m_size(std::filesystem::file_size(file)) {}

bool RecordReader::next(std::string& record) {
    std::array<char, kLongestRecord + 1> buffer{};
    m_blankLines.clear();
    for (;;) {
        m_in.getline(buffer.data(), buffer.size());
        auto length = static_cast<std::size_t>(m_in.gcount());
        requireReadToEnd(m_in, m_file);
        if (length == 0 && m_in.eof()) return false;
        ++m_line;
        const bool tooLong = m_in.fail() && !m_in.eof();
        if (tooLong) {
            m_in.clear();
            m_in.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
        }
        const bool hasLineBreak = !tooLong && !m_in.eof();
        if (hasLineBreak) --length;  // gcount() includes the line break
        std::string_view line(buffer.data(), length);
        m_lineEnd = hasLineBreak ? "\n" : "";
        if (hasLineBreak && !line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
            m_lineEnd = "\r\n";
        }
        if (line.empty() && !tooLong) {
            m_blankLines += m_lineEnd;
            continue;
        }
        record = tooLong || line.find('\0') != line.npos ? std::string_view() : line;
        return true;
    }
}
