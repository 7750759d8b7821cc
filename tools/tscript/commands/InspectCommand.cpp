// Command `inspect`: shows the contents of a package and whether every record is authentic.
#include <algorithm>
#include <array>
#include <memory>

#include "DVUtilities/commonFunc.h"
#include "commands/Commands.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "installation/Installation.h"
#include "package/Inspection.h"
#include "package/ParameterListing.h"

namespace {

struct InspectOptions {
    std::string file;
    bool body = false;
    bool json = false;
};

// The parser puts a line break before every line of a section.
std::string withoutLeadingBreaks(const std::string& text) {
    return text.substr(std::min(text.find_first_not_of('\n'), text.size()));
}

std::string creationText(const PackageContent& content) {
    std::array<char, 32> text{};
    if (content.creationTime == 0) return {};
    return GetTimeString(text.data(), static_cast<int>(text.size()), content.creationTime, false);
}

std::string descriptionOf(const PackageContent& content, const std::vector<Parameter>& parameters) {
    const std::string text = withoutLeadingBreaks(content.description);
    return parameters.empty() ? text : withoutParameterLines(text);
}

Json headerJson(const PackageContent& content, const std::vector<Parameter>& parameters) {
    Json header;
    header["created"] = content.creationTime;
    header["site"] = content.plexumId;
    header["database"] = content.databaseName;
    header["guid"] = content.guid;
    header["developer"] = withoutLeadingBreaks(content.developerName);
    header["description"] = descriptionOf(content, parameters);
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
    if (found.seal)
        result["seal"] = {
            {"name", found.seal->name}, {"version", found.seal->version}, {"signer", found.seal->signer}};
    if (!found.sealProblem.empty()) result["sealProblem"] = found.sealProblem;
    if (!found.isAuthentic()) return result;
    const std::vector<Parameter> parameters = readParameters(options.file).parameters;
    result["header"] = headerJson(found.content, parameters);
    if (!parameters.empty()) result["parameters"] = parametersJson(parameters);
    result["usage"] = withoutLeadingBreaks(found.content.usage);
    result["bodyBytes"] = found.content.scriptBody.size();
    result["bodyLines"] = found.bodyLines;
    result["placeholders"] = found.placeholders;
    if (options.body) result["body"] = found.content.scriptBody;
    return result;
}

// Writes a field and indents its further lines; writes nothing if it is empty.
void writeField(const char* name, const std::string& value) {
    if (value.empty()) return;
    constexpr std::size_t kValueColumn = 13;
    std::string text = name;
    text.resize(kValueColumn, ' ');
    for (const char c : value) text += c == '\n' ? "\n" + std::string(kValueColumn, ' ') : std::string(1, c);
    writeResult(text);
}

std::string authenticityText(const Inspection& found) {
    if (found.isAuthentic()) return found.seal ? "yes, every record and the package" : "yes, every record";
    if (!found.sealProblem.empty()) return "no: " + found.sealProblem;
    if (found.records == 0) return "no: there is no record";
    return "no: " + std::to_string(found.badRecords) + " of " + std::to_string(found.records) +
           " record(s) are bad; the first in line " + std::to_string(found.firstBadLine) + ": " +
           found.firstReason;
}

std::string sealText(const Inspection& found) {
    if (!found.seal) return "none: removed, moved and exchanged records are not noticed";
    const std::string signer = found.seal->signer.empty() ? "not signed" : "signed by " + found.seal->signer;
    return "version " + std::to_string(found.seal->version) + ", " + signer;
}

void writeListing(const InspectOptions& options, const Inspection& found) {
    const PackageContent& content = found.content;
    writeField("package", options.file);
    writeField("size",
               std::to_string(found.size) + " bytes, " + std::to_string(found.records) + " record(s)");
    writeField("authentic", authenticityText(found));
    if (!found.isAuthentic()) return;
    writeField("seal", sealText(found));
    writeField("database", content.databaseName);
    writeField("created", creationText(content));
    writeField("site", content.plexumId == 0 ? "any" : std::to_string(content.plexumId));
    writeField("guid", content.guid);
    writeField("developer", withoutLeadingBreaks(content.developerName));
    const std::vector<Parameter> parameters = readParameters(options.file).parameters;
    writeField("description", descriptionOf(content, parameters));
    writeField("parameters", parametersText(parameters));
    writeField("usage", withoutLeadingBreaks(content.usage));
    writeField("body", std::to_string(content.scriptBody.size()) + " bytes, " +
                           std::to_string(found.bodyLines) + " line(s), " +
                           std::to_string(found.placeholders) + " placeholder(s)");
    if (options.body) writeResult("\n" + content.scriptBody);
}

ExitCode inspect(const InspectOptions& options) {
    requireStore();
    const Inspection found = inspectPackage(options.file);
    if (options.json) {
        writeJson(toJson(options, found));
    } else {
        writeListing(options, found);
    }
    if (found.isAuthentic()) return ExitCode::kDone;
    throw Failure(ExitCode::kInstallation, options.file + " is not authentic",
                  "Pack it again from its plain text, or restore it from a backup.");
}

}  // namespace

void addInspectCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<InspectOptions>();
    CLI::App* command = addCommand(
        &app, action, "inspect",
        "Show a package's header, usage and size, and whether every record is authentic", options, inspect);
    addOption(command, "FILE", options->file, "The package", {.required = true});
    addFlag(command, "--body", options->body, "Show the statements as well");
    addFlag(command, "--json", options->json, "Write JSON");
}
