#include "PlainPackage.h"

#include <filesystem>
#include <fstream>
#include <string_view>

#include "Outcome.h"

namespace {

constexpr std::uintmax_t kLargest = std::uintmax_t{1} << 30;
constexpr std::size_t kMostFindings = 20;
constexpr std::size_t kReaderPiece = 509;  // characters that the package reader takes of a line at a time
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

enum class Section { kNone, kOptions, kUsage, kScript };

class Checker {
  public:
    void take(std::string_view line) {
        ++m_line;
        if (line.find('\r') != line.npos) error("a carriage return; lines end in a line feed alone");
        if (line.find('\0') != line.npos) error("a NUL byte; packages are UTF-8 text");
        if (m_line == 1 && line.substr(0, 3) == kByteOrderMark)
            error("a byte order mark; the first marker would not be recognised");
        if (!enterSection(line)) takeContent(line);
    }

    // The cipher takes a line in the reader's pieces and passes over one of a single character.
    void takeLastLineWithoutBreak(std::string_view line) {
        if (line.size() % kReaderPiece == 1)
            error("no line feed at the end; its last character would be lost");
    }

    PackageCheck finish() {
        if (!m_markerSeen) {
            m_findings.errors.push_back("there is no line #START_SCRIPT#");
        } else if (!m_statements) {
            m_findings.errors.push_back("there are no statements after #START_SCRIPT#");
        }
        return std::move(m_findings);
    }

  private:
    bool enterSection(std::string_view line) {
        if (line == "#START_OPTIONS#") {
            m_section = Section::kOptions;
        } else if (line == "#START_USAGE#") {
            m_section = Section::kUsage;
        } else if (line == "#START_SCRIPT#") {
            if (m_markerSeen) warning("a second #START_SCRIPT#; the statements before it are dropped");
            m_section = Section::kScript;
            m_markerSeen = true;
            m_statements = false;
        } else {
            return false;
        }
        return true;
    }

    void takeContent(std::string_view line) {
        if (line.empty()) return;
        if (m_section == Section::kNone) warning("text before the first marker is ignored");
        if (m_section == Section::kOptions && line.substr(0, 15) == "Database Name: ")
            error("a blank after \"Database Name:\"; it would be part of the name");
        if (m_section == Section::kScript) {
            m_statements = true;
            if (line.size() % kReaderPiece == 0)
                warning("a line of " + std::to_string(line.size()) + " bytes is joined to the next one");
        } else if (line.size() > kReaderPiece) {
            warning("a line of more than 509 bytes is broken into pieces");
        }
    }

    void error(const std::string& text) { add(m_findings.errors, text); }
    void warning(const std::string& text) { add(m_findings.warnings, text); }
    void add(std::vector<std::string>& list, const std::string& text) const {
        if (list.size() < kMostFindings) list.push_back("line " + std::to_string(m_line) + ": " + text);
    }

    PackageCheck m_findings;
    Section m_section = Section::kNone;
    bool m_markerSeen = false;
    bool m_statements = false;
    std::size_t m_line = 0;
};

}  // namespace

PackageCheck checkPlainPackage(const std::string& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        throw Failure(ExitCode::kUsage,
                      file + " is no file" + (error ? ": " + error.message() : std::string()));
    if (std::filesystem::file_size(file, error) > kLargest || error)
        throw Failure(ExitCode::kUsage, file + " is larger than 1 GiB");
    std::ifstream in(file, std::ios::binary);
    if (!in) throw Failure(ExitCode::kUsage, file + " cannot be read");
    Checker checker;
    for (std::string line; std::getline(in, line);) {
        checker.take(line);
        if (in.eof()) checker.takeLastLineWithoutBreak(line);
    }
    return checker.finish();
}
