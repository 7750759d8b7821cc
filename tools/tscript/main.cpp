// tscript: command line tool that runs tscripts and maintains their installation.
#include <signal.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>
#include <vector>

#include "backup/LastBackup.h"
#include "commands/CommandGroups.h"
#include "commands/Commands.h"
#include "commands/Completion.h"
#include "commands/ManPages.h"
#include "console/CommandLine.h"
#include "console/Confirmation.h"
#include "console/Console.h"
#include "console/Terminal.h"
#include "system/Interrupt.h"

namespace {

constexpr const char* kDescription = "Runs and packs tscripts, and maintains their installation.";
constexpr const char* kFooter = R"(
Exit codes:
  0    done
  1    a script, test or check failed, diff found differences, or a command
       that each runs failed
  2    wrong usage
  3    the installation is not in order
  4    no connection to the database
  5    refused: authentication, a secured script, a package of another site, or
       the lock of another run
  130  interrupted)";

constexpr void (*kAddCommands[])(CLI::App&, Action&) = {
    addScriptCommands,   addJournalCommands, addNewCommand,         addListCommand,     addDiffCommand,
    addTestCommand,      addPackCommand,     addInspectCommand,     addLintCommand,     addRepackCommand,
    addDatabaseCommands, addKeyCommands,     addCredentialCommands, addSandboxCommands, addSchemaCommands,
    addDoctorCommand,    addConfigCommands,  addReportCommand,      addTidyCommand,     addEachCommand,
    addMetricsCommand,   addRotateCommand,
};

int reportFailure(ExitCode code, const std::string& what, const std::string& advice) {
    writeNote("tscript: " + what);
    writeNote(advice);
    return static_cast<int>(code);
}

// Nagios reads standard output, and takes exit code 2, which is wrong usage here, for a critical state.
bool isNagiosCheck(int argc, char** argv) {
    const std::vector<std::string_view> words(argv, std::find(argv, argv + argc, std::string_view("--")));
    const auto holds = [&](std::string_view word) { return std::ranges::count(words, word) > 0; };
    return holds("last-backup") && holds("--nagios");
}

int flushOutput(ExitCode code) {
    if (std::fflush(resultStream()) == 0 && !std::ferror(resultStream())) return static_cast<int>(code);
    return reportFailure(ExitCode::kInstallation, "standard output cannot be written",
                         "Is the disk full, or has the reader of the output ended?");
}

int runTool(int argc, char** argv) {
    CommandLine commandLine(kDescription, "tscript", TSCRIPT_VERSION, kFooter);
    addOptionFunction(
        commandLine.app(), "--store",
        [](const std::string& file) {
            if (file.empty()) throw Failure(ExitCode::kUsage, "--store names no file");
            setenv("ZEPHRA_REGISTRY", file.c_str(), 1);
        },
        "Configuration store (default: $ZEPHRA_REGISTRY, else /etc/zephra/registry.toml)", "FILE");
    addNoInputOption(commandLine.app());
    Action action;
    for (const auto addCommands : kAddCommands) addCommands(commandLine.app(), action);
    groupCommands(commandLine.app());
    const std::string first = argc > 1 ? argv[1] : "";
    if (first == kCompleteWord) {
        redirectLibraryOutput();
        writeCandidates(describe(commandLine.app()), {argv + 2, argv + argc});
        return flushOutput(ExitCode::kDone);
    }
    if (first == kManPagesWord && argc == 3)
        return writeManPages(describe(commandLine.app()), argv[2]) ? 0 : 1;
    if (!commandLine.parse(argc, argv)) return flushOutput(ExitCode::kDone);
    redirectLibraryOutput();
    endWhenDriverFails();
    return flushOutput(action());
}

}  // namespace

int main(int argc, char** argv) {
    endWhenMemoryLacks();
    occupyClosedStreams();
    std::setlocale(LC_CTYPE, "C.UTF-8");  // for TextWidth.h
    signal(SIGXFSZ, SIG_IGN);             // exceeding the file size limit then fails write()
    signal(SIGPIPE, SIG_IGN);             // so does a pipe without a reader
    signal(SIGCHLD, SIG_DFL);             // the exit codes of children are lost while it is ignored
    try {
        return runTool(argc, argv);
    } catch (const Failure& failure) {
        std::fflush(resultStream());
        if (isNagiosCheck(argc, argv)) return reportUnknownBackups(failure.what());
        return reportFailure(failure.code(), failure.what(), failure.advice());
    } catch (const std::bad_alloc&) {
        std::fflush(resultStream());
        return reportFailure(ExitCode::kInstallation, "not enough memory", {});
    } catch (const std::exception& error) {
        std::fflush(resultStream());
        return reportFailure(ExitCode::kInstallation, error.what(), {});
    }
}
