#include "package/Inspection.h"

#include <algorithm>
#include <string_view>

#include "HostSetup.h"
#include "VTPassword.h"
#include "console/Outcome.h"
#include "installation/CipherKey.h"
#include "package/PackageFile.h"
#include "package/PercentSigns.h"
#include "package/PlainRecord.h"
#include "package/RecordReader.h"

namespace {

// Splits the plain text into the pieces in which the loader reads it, and parses them.
class PieceParser {
  public:
    explicit PieceParser(PackageContent& content) : m_parser(content, [](PackageParser::Section) {}) {}

    void append(std::string_view text) {
        m_pending.append(text);
        for (std::size_t end = pieceEnd(); end > 0; end = pieceEnd()) {
            m_parser.parse(std::string_view(m_pending).substr(0, end));
            m_pending.erase(0, end);
        }
    }
    void finish() {
        if (!m_pending.empty()) m_parser.parse(m_pending);
    }

  private:
    std::size_t pieceEnd() const {
        constexpr std::size_t kPiece = PackageParser::kPieceBuffer - 1;
        const std::size_t lineBreak = m_pending.find('\n');
        if (lineBreak < kPiece) return lineBreak + 1;
        return m_pending.size() >= kPiece ? kPiece : 0;
    }

    PackageParser m_parser;
    std::string m_pending;
};

void countBody(Inspection& found) {
    PercentSigns percentSigns;
    const std::string_view body = found.content.scriptBody;
    for (std::size_t at = 0; at < body.size();) {
        const std::size_t end = std::min(body.find('\n', at), body.size());
        percentSigns.readLine(body.substr(at, end - at), ++found.bodyLines);
        at = end + 1;
    }
    found.placeholders = percentSigns.placeholders();
}

}  // namespace

Inspection inspectPackage(const std::string& file) {
    RecordReader reader(file);
    // Every record would fail, which says nothing about the package.
    if (const std::string problem = keyProblem(); !problem.empty())
        throw Failure(ExitCode::kInstallation, problem);
    Inspection found;
    PieceParser parser(found.content);
    hostlayer::PackageSealCheck seal;
    VTPassword cipher;
    found.size = reader.size();
    const auto addBlankLines = [&] {
        if (!reader.blankLines().empty()) seal.addLine({}, reader.blankLines(), {});
    };
    for (std::string record; reader.next(record); ++found.records) {
        PlainRecord plain;
        addBlankLines();
        if (plain.decrypt(cipher, record)) {
            const bool isContent = seal.addLine(record, reader.lineEnd(), plain.text());
            if (found.badRecords == 0 && isContent) parser.append(plain.text());
        } else if (++found.badRecords == 1) {
            found.firstBadLine = reader.line();
            found.firstReason = hostlayer::cipherErrorText(cipher.getLastError());
        }
    }
    addBlankLines();
    if (found.records > 0 && found.badRecords == 0) {
        found.sealProblem = seal.problem(packageName(file));
        if (seal.seal() != nullptr) found.seal = *seal.seal();
    }
    parser.finish();
    countBody(found);
    return found;
}
