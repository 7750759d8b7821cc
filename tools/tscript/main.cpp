// tscript: runs tscripts and looks after their installation.
#include <signal.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "commands/Commands.h"
#include "commands/Suggestion.h"
#include "console/Confirmation.h"
#include "console/Console.h"
#include "console/Terminal.h"

namespace {

constexpr const char* kDescription = "Runs tscripts, packs them, and looks after their installation.";
constexpr const char* kFooter = R"(
Exit codes:
  0    done
  1    the script failed
  2    wrong usage
  3    something is wrong with the installation
  4    no connection to the database
  5    refused: authentication, a secured script, or a package of another site
  130  interrupted)";

constexpr void (*kFamilies[])(CLI::App&, Action&) = {
    addScriptCommands,     addJournalCommands, addPackageCommands, addDatabaseCommands, addKeyCommands,
    addCredentialCommands, addSandboxCommands, addDoctorCommand,   addConfigCommands,   addReportCommand,
};

int fail(ExitCode code, const std::string& what, const std::string& advice) {
    writeNote("tscript: " + what);
    writeNote(advice);
    return static_cast<int>(code);
}

int endOfParsing(const CLI::App& app, const CLI::ParseError& end, int argc, char** argv) {
    const std::string mistyped = unknownCommand(app, argc, argv);
    const bool isAnswered = end.get_exit_code() == 0;  // --help and --version
    if (isAnswered && mistyped.empty()) return app.exit(end);
    return fail(ExitCode::kUsage, mistyped.empty() ? end.what() : mistyped, "See tscript --help.");
}

int flushOutput(ExitCode code) {
    if (std::fflush(resultStream()) == 0 && !std::ferror(resultStream())) return static_cast<int>(code);
    return fail(ExitCode::kInstallation, "standard output cannot be written", "Is the disk full?");
}

int runTool(int argc, char** argv) {
    CLI::App app(kDescription, "tscript");
    app.footer(kFooter);
    app.fallthrough();
    app.require_subcommand(1);
    app.set_version_flag("--version", TSCRIPT_VERSION);
    app.add_option_function<std::string>(
           "--store", [](const std::string& file) { setenv("ZEPHRA_REGISTRY", file.c_str(), 1); },
           "Configuration store (default: $ZEPHRA_REGISTRY, else /etc/zephra/registry.toml)")
        ->type_name("FILE");
    addNoInput(app);
    Action action;
    for (const auto addFamily : kFamilies) addFamily(app, action);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& end) {
        return endOfParsing(app, end, argc, argv);
    }
    separateResults();
    return flushOutput(action());
}

}  // namespace

int main(int argc, char** argv) {
    occupyClosedStreams();
    std::setlocale(LC_CTYPE, "C.UTF-8");  // what is UTF-8, and how wide; nothing else follows the locale
    signal(SIGXFSZ, SIG_IGN);             // a limit of file sizes then fails a write, as a full disk does
    try {
        return runTool(argc, argv);
    } catch (const Failure& failure) {
        std::fflush(resultStream());
        return fail(failure.code(), failure.what(), failure.advice());
    } catch (const std::exception& error) {
        std::fflush(resultStream());
        return fail(ExitCode::kInstallation, error.what(), {});
    }
}
