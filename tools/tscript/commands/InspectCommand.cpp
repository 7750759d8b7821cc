// inspect: what an enciphered package holds, and whether all of it is authentic.
#include <array>
#include <memory>
#include <optional>

#include "DVUtilities/commonFunc.h"
#include "HostSetup.h"
#include "PackageParser.h"
#include "VTPassword.h"
#include "commands/Commands.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "installation/Installation.h"
#include "package/PercentSigns.h"
#include "package/RecordReader.h"

namespace {

constexpr std::size_t kPlainRoom = 511;  // of a record's text, as the library has it

struct InspectOptions {
    std::string file;
    bool body = false;
    bool json = false;
};

struct Inspection {
    std::uintmax_t size = 0;
    std::size_t records = 0;
    std::size_t badRecords = 0;
    std::size_t firstBadLine = 0;
    std::string firstReason;
    PackageContent content;
    std::size_t bodyLines = 0;
    std::size_t placeholders = 0;

    bool isAuthentic() const { return records > 0 && badRecords == 0; }
};

// Cuts the plain text into the pieces in which the loader reads it.
class PieceFeed {
  public:
    explicit PieceFeed(PackageContent& content) : m_parser(content, [](PackageParser::Section) {}) {}

    void take(std::string_view text) {
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

// A key that cannot be used says nothing about the package.
void requireKey() {
    std::array<char, 2048> record{};
    unsigned long size = record.size();
    VTPassword cipher;
    if (cipher.encrypt("", record.data(), &size) != 0) return;
    throw Failure(ExitCode::kInstallation, hostlayer::cipherErrorText(cipher.getLastError()));
}

void countBody(Inspection& found) {
    PercentSigns percentSigns;
    const std::string_view body = found.content.scriptBody;
    for (std::size_t at = 0; at < body.size();) {
        const std::size_t end = std::min(body.find('\n', at), body.size());
        percentSigns.take(body.substr(at, end - at), ++found.bodyLines);
        at = end + 1;
    }
    found.placeholders = percentSigns.placeholders();
}

Inspection inspect(const std::string& file) {
    RecordReader reader(file);
    requireKey();
    Inspection found;
    PieceFeed feed(found.content);
    VTPassword cipher;
    found.size = reader.size();
    for (std::string record; reader.next(record); ++found.records) {
        std::array<char, kPlainRoom> plain{};
        unsigned long size = plain.size();
        if (cipher.decrypt(record.c_str(), plain.data(), &size) != 0) {
            if (found.badRecords == 0) feed.take({plain.data(), size});
        } else if (++found.badRecords == 1) {
            found.firstBadLine = reader.line();
            found.firstReason = hostlayer::cipherErrorText(cipher.getLastError());
        }
    }
    feed.finish();
    countBody(found);
    return found;
}

// Sections begin with a line break and so do the lines within.
std::string trimmed(const std::string& text) {
    return text.substr(std::min(text.find_first_not_of('\n'), text.size()));
}

std::string creationText(const PackageContent& content) {
    std::array<char, 32> text{};
    if (content.creationTime == 0) return {};
    return GetTimeString(text.data(), static_cast<int>(text.size()), content.creationTime, false);
}

Json headerJson(const PackageContent& content) {
    Json header;
    header["created"] = content.creationTime;
    header["site"] = content.plexumId;
    header["database"] = content.databaseName;
    header["guid"] = content.guid;
    header["developer"] = trimmed(content.developerName);
    header["description"] = trimmed(content.description);
    return header;
}

Json toJson(const InspectOptions& options, const Inspection& found) {
    Json result;
    result["file"] = options.file;
    result["bytes"] = found.size;
    result["records"] = found.records;
    result["authentic"] = found.isAuthentic();
    result["badRecords"] = found.badRecords;
    if (found.badRecords > 0)
        result["firstBad"] = {{"line", found.firstBadLine}, {"reason", found.firstReason}};
    if (!found.isAuthentic()) return result;
    result["header"] = headerJson(found.content);
    result["usage"] = trimmed(found.content.usage);
    result["bodyBytes"] = found.content.scriptBody.size();
    result["bodyLines"] = found.bodyLines;
    result["placeholders"] = found.placeholders;
    if (options.body) result["body"] = found.content.scriptBody;
    return result;
}

// A field with its lines below each other; none without a value.
void writeField(const char* name, const std::string& value) {
    if (value.empty()) return;
    std::string text = std::string(name) + std::string(13 - std::string_view(name).size(), ' ');
    for (const char c : value) text += c == '\n' ? "\n             " : std::string(1, c);
    writeResult(text);
}

std::string authenticityText(const Inspection& found) {
    if (found.isAuthentic()) return "yes, every record";
    if (found.records == 0) return "no: there is no record";
    return "no: " + std::to_string(found.badRecords) + " of " + std::to_string(found.records) +
           " record(s); the first in line " + std::to_string(found.firstBadLine) + ": " + found.firstReason;
}

void writeListing(const InspectOptions& options, const Inspection& found) {
    const PackageContent& content = found.content;
    writeField("package", options.file);
    writeField("size",
               std::to_string(found.size) + " bytes, " + std::to_string(found.records) + " record(s)");
    writeField("authentic", authenticityText(found));
    if (!found.isAuthentic()) return;
    writeField("database", content.databaseName);
    writeField("created", creationText(content));
    writeField("site", content.plexumId == 0 ? "any" : std::to_string(content.plexumId));
    writeField("guid", content.guid);
    writeField("developer", trimmed(content.developerName));
    writeField("description", trimmed(content.description));
    writeField("usage", trimmed(content.usage));
    writeField("body", std::to_string(content.scriptBody.size()) + " bytes, " +
                           std::to_string(found.bodyLines) + " line(s), " +
                           std::to_string(found.placeholders) + " placeholder(s)");
    if (options.body) writeResult("\n" + content.scriptBody);
}

ExitCode inspectPackage(const InspectOptions& options) {
    requireStore();
    const Inspection found = inspect(options.file);
    if (options.json) {
        writeJson(toJson(options, found));
    } else {
        writeListing(options, found);
    }
    if (found.isAuthentic()) return ExitCode::kDone;
    throw Failure(ExitCode::kInstallation, options.file + " is not authentic",
                  "Pack it again from its plain text, or bring it back from a backup.");
}

}  // namespace

void addInspectCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<InspectOptions>();
    CLI::App* command =
        addCommand(&app, action, "inspect",
                   "Show a package's header, usage and size, and whether every record is authentic", options,
                   inspectPackage);
    command->add_option("FILE", options->file, "The package")->required();
    command->add_flag("--body", options->body, "Show the statements as well");
    command->add_flag("--json", options->json, "Write JSON");
}
