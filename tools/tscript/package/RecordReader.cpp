#include "package/RecordReader.h"

#include <array>
#include <filesystem>
#include <limits>
#include <string_view>

#include "console/Outcome.h"

namespace {

constexpr std::uintmax_t kLargest = std::uintmax_t{2} << 30;  // a record takes half as much again as its text
constexpr std::size_t kLongestRecord = 2046;                  // as the library reads them
constexpr std::size_t kShortestLine = 2;                      // with its line break; shorter ones are skipped

}  // namespace

RecordReader::RecordReader(const std::string& file) : m_file(file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        throw Failure(ExitCode::kUsage,
                      file + " is no file" + (error ? ": " + error.message() : std::string()));
    m_size = std::filesystem::file_size(file, error);
    if (error || m_size > kLargest) throw Failure(ExitCode::kUsage, file + " is larger than 2 GiB");
    m_in.open(file, std::ios::binary);
    if (!m_in) throw Failure(ExitCode::kUsage, file + " cannot be read");
}

bool RecordReader::next(std::string& record) {
    std::array<char, kLongestRecord + 1> buffer{};
    for (;;) {
        m_in.getline(buffer.data(), buffer.size());
        auto length = static_cast<std::size_t>(m_in.gcount());
        if (m_in.bad()) throw Failure(ExitCode::kInstallation, m_file + " cannot be read to its end");
        if (length == 0 && m_in.eof()) return false;
        ++m_line;
        const bool tooLong = m_in.fail() && !m_in.eof();
        if (tooLong) {
            m_in.clear();
            m_in.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
        }
        if (!tooLong && length < kShortestLine) continue;
        if (!tooLong && !m_in.eof()) --length;  // the line break is counted
        std::string_view line(buffer.data(), length);
        if (!m_in.eof() && !line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.empty() && !tooLong) continue;
        record = tooLong || line.find('\0') != line.npos ? std::string_view() : line;
        return true;
    }
}
