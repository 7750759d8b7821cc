#include "packing/PlainPackage.h"

#include <algorithm>
#include <fstream>
#include <string_view>

#include "PackageSeal.h"
#include "console/TextWidth.h"
#include "installation/Installation.h"
#include "package/PackageFile.h"
#include "package/PackageParser.h"
#include "packing/StatementCheck.h"

namespace {

constexpr std::uintmax_t kMostTextGiB = 1;
constexpr std::size_t kMostStatementBytes = std::size_t{1} << 20;  // whose syntax is checked
constexpr std::size_t kPieceLength = 509;                          // the package reader splits longer lines
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The library's way of doubling quotes turns a usage text with more of them into an invalid literal.
constexpr std::ptrdiff_t kMostUsageQuotes = 2;

constexpr std::string_view kMarkerStart = "#START_";
constexpr std::size_t kLongestKey = 40;

constexpr std::string_view kKeys[] = {
    "Creation Time:", "Plexum ID:", "Database Name:", "GUID:", "Developer Name:", "Description:"};
constexpr std::string_view kNumberKeys[] = {"Creation Time:", "Plexum ID:"};
constexpr std::string_view kDatabaseKey = "Database Name:";

bool isNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

// Returns words and a colon at the start of the line, which look like a key; empty if there are none.
std::string_view keyOf(std::string_view line) {
    const std::size_t colon = line.substr(0, kLongestKey).find(':');
    if (colon == line.npos || colon == 0) return {};
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == ' '; };
    const std::string_view words = line.substr(0, colon);
    return std::all_of(words.begin(), words.end(), isLetter) ? line.substr(0, colon + 1) : std::string_view();
}

enum class PlainSection { kNone, kOptions, kUsage, kScript };

class Checker {
  public:
    void checkLine(std::string_view line) {
        ++m_line;
        if (line.find('\r') != line.npos && m_returnLines++ == 0) m_firstReturnLine = m_line;
        if (line.find('\0') != line.npos) error("a NUL byte; packages are UTF-8 text");
        if (!isUtf8(line)) error("bytes that are not UTF-8; packages are UTF-8 text");
        if (hasDirectionControl(line))
            warning("a character that changes the direction of text; the line may not say what it shows");
        if (hostlayer::isSealText(line)) error("begins like the seal of a package");
        if (m_line == 1 && line.starts_with(kByteOrderMark)) {
            error("a byte order mark; the first marker would not be recognised");
            line.remove_prefix(kByteOrderMark.size());
        }
        if (line.ends_with('\r')) line.remove_suffix(1);  // counted above; the text has findings of its own
        if (!enterSection(line)) checkContent(line);
    }

    // The cipher reads lines in the same pieces and skips a piece of one character.
    void checkUnterminatedLine(std::string_view line) {
        if (line.size() % kPieceLength == 1)
            error("no line feed at the end; its last character would be lost");
    }

    PackageCheck finish() {
        if (m_returnLines > 0)  // one finding: a Windows editor writes them in every line
            m_findings.errors.push_back(
                {m_firstReturnLine, "a carriage return (in " + std::to_string(m_returnLines) +
                                        " line(s)); lines end with a line feed only"});
        if (!m_markerSeen) {
            m_findings.errors.push_back({0, "there is no line #START_SCRIPT#"});
        } else if (!m_hasStatements) {
            m_findings.errors.push_back({0, "there are no statements after #START_SCRIPT#"});
        }
        if (m_usageQuotes > kMostUsageQuotes)
            m_findings.errors.push_back(
                {m_quoteLimitLine, "a third single quote in the usage; the catalogue would refuse the text"});
        if (!m_headerSeen) m_findings.remarks.push_back({0, "there is no line #START_OPTIONS#"});
        if (!m_usageSeen)
            m_findings.remarks.push_back({0, "there is no line #START_USAGE#; help shows nothing"});
        if (m_variableLine != 0 && !m_hasToolVariables)
            m_findings.remarks.push_back({m_variableLine,
                                          "$( is not expanded by a strict query tool without "
                                          "the header line " +
                                              std::string(kToolVariablesLine)});
        m_findings.placeholders = m_percentSigns.placeholders();
        const std::size_t declared = m_findings.parameters.size();
        if (m_findings.errors.empty() && declared > 0 && declared != m_findings.placeholders)
            m_findings.errors.push_back({0, std::to_string(declared) + " parameter(s) are declared, and " +
                                                std::to_string(m_findings.placeholders) +
                                                " placeholder(s) are in the script"});
        for (const PackageFinding& finding : m_percentSigns.findings()) m_findings.remarks.push_back(finding);
        if (m_findings.errors.empty() && m_statementBytes > kMostStatementBytes) {
            m_findings.remarks.push_back({0, "more than 1 MiB of statements; their syntax is not checked"});
        } else if (m_findings.errors.empty()) {
            for (PackageFinding& finding : checkStatements(m_statements))
                m_findings.warnings.push_back(std::move(finding));
        }
        return std::move(m_findings);
    }

  private:
    bool enterSection(std::string_view line) {
        if (line == "#START_OPTIONS#") {
            m_section = PlainSection::kOptions;
            m_headerSeen = true;
        } else if (line == "#START_USAGE#") {
            m_section = PlainSection::kUsage;
            m_usageSeen = true;
            m_usageQuotes = 0;
        } else if (line == "#START_SCRIPT#") {
            if (m_markerSeen) warning("a second #START_SCRIPT#; the statements before it are dropped");
            m_section = PlainSection::kScript;
            m_markerSeen = true;
            m_hasStatements = false;
            m_statements.clear();
            m_statementBytes = 0;
            m_percentSigns = {};
        } else {
            return false;
        }
        return true;
    }

    void checkContent(std::string_view line) {
        if (line.empty()) return;
        if (line.substr(0, kMarkerStart.size()) == kMarkerStart)
            remark("begins like a marker but is not one; a marker is a line of its own");
        if (m_section == PlainSection::kNone) warning("text before the first marker is ignored");
        if (m_section == PlainSection::kOptions) checkHeaderLine(line);
        if (m_section == PlainSection::kUsage) countQuotes(line);
        if (m_section == PlainSection::kScript) {
            m_hasStatements = true;
            addStatement(line);
            m_percentSigns.readLine(line, m_line);
            if (m_variableLine == 0 && line.find("$(") != line.npos) m_variableLine = m_line;
            if (line.size() % kPieceLength == 0)
                warning("a line of " + std::to_string(line.size()) + " bytes is joined to the next one");
        } else if (line.size() > kPieceLength) {
            warning("a line of more than 509 bytes is split");
        }
    }

    void addStatement(std::string_view line) {
        m_statementBytes += line.size();
        if (m_statementBytes <= kMostStatementBytes) m_statements.push_back({m_line, std::string(line)});
    }

    void countQuotes(std::string_view line) {
        if (m_usageQuotes > kMostUsageQuotes) return;
        m_usageQuotes += std::count(line.begin(), line.end(), '\'');
        m_quoteLimitLine = m_line;
    }

    // The loader uses the first key of the table that occurs anywhere in the line.
    void checkHeaderLine(std::string_view line) {
        const bool isParameter = line.substr(0, kParameterKey.size()) == kParameterKey;
        for (const std::string_view key : kKeys) {
            const std::size_t at = line.find(key);
            if (at == line.npos) continue;
            if (isParameter) error("\"" + std::string(key) + "\" in the line of a parameter counts as a key");
            if (at > 0) remark("\"" + std::string(key) + "\" counts as a key here too");
            return checkValue(key, line.substr(at + key.size()));
        }
        if (line == kToolVariablesLine) {
            m_hasToolVariables = true;
            return;
        }
        if (isParameter) return checkParameter(line.substr(kParameterKey.size()));
        if (const std::string_view key = keyOf(line); !key.empty())
            remark("the key \"" + std::string(key) + "\" is unknown; the line counts as text");
    }

    void checkParameter(std::string_view text) {
        Parameter parameter;
        std::string problem = parseParameter(text, parameter);
        if (problem.empty() && findParameter(m_findings.parameters, parameter.name) != nullptr)
            problem = "the name " + parameter.name + " is declared twice";
        if (problem.empty() && isOptionOfRun(parameter.name))
            problem = "tscript run has an option --" + parameter.name + "; choose another name";
        if (!problem.empty()) return error("a parameter: " + problem);
        m_findings.parameters.push_back(std::move(parameter));
    }

    void checkValue(std::string_view key, std::string_view value) {
        if (std::find(std::begin(kNumberKeys), std::end(kNumberKeys), key) != std::end(kNumberKeys) &&
            !isNumber(value))
            remark("the value of \"" + std::string(key) + "\" is not a number");
        if (key != kDatabaseKey || value.empty()) return;
        m_findings.database = value;
        if (value.front() == ' ') {
            error("a blank after \"Database Name:\"; it would be part of the name");
        } else if (!isDatabaseOfPackages(m_findings.database)) {
            remark("there is no database of that name");
        }
    }

    void error(const std::string& text) { add(m_findings.errors, text); }
    void warning(const std::string& text) { add(m_findings.warnings, text); }
    void remark(const std::string& text) { add(m_findings.remarks, text); }
    void add(std::vector<PackageFinding>& list, const std::string& text) const {
        if (list.size() < kMostFindings) list.push_back({m_line, text});
    }

    PackageCheck m_findings;
    PercentSigns m_percentSigns;
    PlainSection m_section = PlainSection::kNone;
    std::vector<PackageLine> m_statements;  // the first kMostStatementBytes
    std::size_t m_statementBytes = 0;
    bool m_headerSeen = false;
    bool m_usageSeen = false;
    bool m_markerSeen = false;
    bool m_hasStatements = false;
    bool m_hasToolVariables = false;
    std::size_t m_variableLine = 0;  // of the first "$("; 0: none
    std::ptrdiff_t m_usageQuotes = 0;
    std::size_t m_quoteLimitLine = 0;  // where counting stopped
    std::size_t m_returnLines = 0;     // with a carriage return
    std::size_t m_firstReturnLine = 0;
    std::size_t m_line = 0;
};

}  // namespace

PackageCheck checkPlainPackage(const std::string& file) {
    std::ifstream in = openPackageFile(file, kMostTextGiB);
    Checker checker;
    for (std::string line; std::getline(in, line);) {
        checker.checkLine(line);
        if (in.eof()) checker.checkUnterminatedLine(line);
    }
    requireReadToEnd(in, file);
    return checker.finish();
}

std::string textWithLine(const PackageFinding& finding) {
    if (finding.line == 0) return finding.text;
    std::string place = "line " + std::to_string(finding.line);
    if (finding.column > 0) place += ", column " + std::to_string(finding.column);
    return place + ": " + finding.text;
}
