// Command `each`: runs a command on several installations.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>

#include "commands/Commands.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "console/Listing.h"
#include "console/TextWidth.h"
#include "console/Times.h"
#include "fleet/FleetRun.h"
#include "system/ScratchFolder.h"

namespace {

constexpr std::size_t kMostOutput = std::size_t{16} << 20;  // of one store; more stays in its file
constexpr int kMostJobs = 64;

struct EachOptions {
    std::vector<std::string> patterns;
    std::string folder;
    int jobs = 1;
    bool keepGoing = false;
    bool quiet = false;
    bool json = false;
};

void checkArguments(const EachOptions& options) {
    const std::vector<std::string>& command = trailingWords();
    if (options.patterns.empty())
        throw Failure(ExitCode::kUsage, "no stores are named",
                      "Name them with a pattern: --stores '/etc/zephra/*.toml'");
    if (command.empty() || command.front().empty())
        throw Failure(ExitCode::kUsage, "there is no command to run",
                      "Write it after two hyphens: tscript each --stores '/etc/zephra/*.toml' -- run NAME");
    if (command.front().front() == '-' || command.front() == "each")
        throw Failure(ExitCode::kUsage, "'" + command.front() + "' cannot be run on each store",
                      "The words after -- begin with a command, such as run.");
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string text(kMostOutput, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    if (text.size() == kMostOutput) text += "\n(the rest was cut; --output-dir keeps it)\n";
    return text;
}

std::string indentedOutput(const std::string& text) {
    std::string lines;
    const std::size_t end = text.find_last_not_of('\n') + 1;
    for (const char c : text.substr(0, end)) lines += c == '\n' ? "\n    " : std::string(1, c);
    return lines.empty() ? lines : "\n    " + lines;
}

// A command that fails says why. If nothing has reached its files, they could not be written.
std::string failureText(const FleetMember& member) {
    const std::string messages = contentOf(member.errors);
    if (messages.empty() && contentOf(member.output).empty())
        return indentedOutput("its messages are lost: " + member.errors.string() +
                              " could not be written; is the disk full?");
    return indentedOutput(messages);
}

std::string resultText(const FleetMember& member) {
    std::string text = nameOf(member.result);
    if (member.result == FleetResult::kFailed) text += " (exit code " + std::to_string(member.exitCode) + ")";
    return text;
}

void writeProgress(const FleetMember& member, std::size_t number, std::size_t all) {
    const bool hasFailed = member.result != FleetResult::kOk;
    writeNote("[" + std::to_string(number) + "/" + std::to_string(all) + "] " +
              withoutControls(member.store.label) + ": " + resultText(member) + ", " +
              spanText(member.seconds) + (hasFailed ? failureText(member) : std::string()));
}

void writeOutput(const FleetMember& member) {
    const std::string output = contentOf(member.output);
    writeResult("==> " + withoutControls(member.store.label));
    if (!output.empty()) writeResult(output);
    std::fflush(resultStream());
}

std::int64_t countOf(const std::vector<FleetMember>& members, FleetResult result) {
    return std::count_if(members.begin(), members.end(),
                         [&](const FleetMember& member) { return member.result == result; });
}

void writeSummaryTable(const std::vector<FleetMember>& members) {
    std::vector<Cells> rows;
    for (const FleetMember& member : members) {
        const bool hasRun = member.result != FleetResult::kNotRun;
        const Shade shade = member.result == FleetResult::kOk ? Shade::kGood
                            : hasRun                          ? Shade::kBad
                                                              : Shade::kUnusual;
        rows.push_back({{member.store.label},
                        {nameOf(member.result), shade},
                        {hasRun ? std::to_string(member.exitCode) : "-"},
                        {hasRun ? spanText(member.seconds) : "-"}});
    }
    Listing({{"STORE", true}, {"RESULT"}, {"EXIT CODE"}, {"TIME"}}).writePage(rows);
}

void writeSummaryJson(const std::vector<FleetMember>& members) {
    Json command = Json::array();
    for (const std::string& word : trailingWords()) command.push_back(word);
    Json stores = Json::array();
    for (const FleetMember& member : members) {
        Json entry = {
            {"store", member.store.file}, {"label", member.store.label}, {"result", nameOf(member.result)}};
        if (member.result != FleetResult::kNotRun) {
            entry["exitCode"] = member.exitCode;
            entry["seconds"] = member.seconds;
            entry["output"] = contentOf(member.output);
            entry["errors"] = contentOf(member.errors);
        }
        stores.push_back(std::move(entry));
    }
    writeJson({{"command", std::move(command)},
               {"stores", std::move(stores)},
               {"ok", countOf(members, FleetResult::kOk)},
               {"failed", countOf(members, FleetResult::kFailed)},
               {"interrupted", countOf(members, FleetResult::kInterrupted)},
               {"notRun", countOf(members, FleetResult::kNotRun)}});
}

ExitCode runOnEach(const EachOptions& options) {
    checkArguments(options);
    std::vector<FleetMember> members;
    for (const InstallationStore& store : findStores(options.patterns)) members.push_back({.store = store});
    const ScratchFolder scratch;
    const FleetPlan plan{.command = trailingWords(),
                         .jobs = options.jobs,
                         .keepGoing = options.keepGoing,
                         .folder = options.folder.empty() ? scratch.path().string() : options.folder};
    const bool showsOutput = !options.json && !options.quiet && options.folder.empty();
    const bool isInterrupted = !runFleet(members, plan, [&](const FleetMember& member, std::size_t number) {
        writeProgress(member, number, members.size());
        if (showsOutput) writeOutput(member);
        return std::ferror(resultStream()) == 0;
    });
    if (options.json) {
        writeSummaryJson(members);
    } else {
        writeSummaryTable(members);
    }
    if (isInterrupted) return ExitCode::kInterrupted;
    const bool areAllGood = countOf(members, FleetResult::kOk) == static_cast<std::int64_t>(members.size());
    return areAllGood ? ExitCode::kDone : ExitCode::kScriptFailed;
}

}  // namespace

void addEachCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<EachOptions>();
    CLI::App* command = addCommand(
        &app, action, "each", "Run a command on several installations, by their stores", options, runOnEach);
    addRepeatable(command, "--stores", options->patterns,
                  "Pattern of the files of the stores, as in a shell; may be repeated", "GLOB");
    addNumber(command, "--jobs", options->jobs, "Number of commands that run at the same time",
              {.type = "N", .least = 1, .most = kMostJobs});
    addFlag(command, "--keep-going", options->keepGoing,
            "Continue after a failure; without it, no further command is started");
    addOption(command, "--output-dir", options->folder,
              "Folder for the output of each command: files LABEL.out and LABEL.err", {.type = "DIR"});
    addFlag(command, "--quiet", options->quiet, "Write only the summary");
    addFlag(command, "--json", options->json, "Write the summary as JSON, with the output of each");
    addTrailingWords(command, "COMMAND", "After --: the command, with its options");
}
