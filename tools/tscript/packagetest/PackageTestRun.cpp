#include "packagetest/PackageTestRun.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

#include "console/Console.h"
#include "console/JsonOutput.h"
#include "console/Outcome.h"
#include "sandbox/SampleInstallation.h"
#include "system/ChildProcess.h"
#include "system/ScratchFolder.h"

namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A sample installation, up as long as the object lives. Commands on it are child processes, because a
// process reads one store.
class TestInstallation {
  public:
    TestInstallation() : m_folder(m_temp.path() / "installation") {
        try {
            require({"sandbox", "up", "--dir", m_folder.path().string()}, ExitCode::kInstallation);
        } catch (...) {
            stop();  // an interrupted start leaves its server
            throw;
        }
    }
    ~TestInstallation() { stop(); }
    TestInstallation(const TestInstallation&) = delete;
    TestInstallation& operator=(const TestInstallation&) = delete;

    fs::path file(const char* name) const { return m_temp.path() / name; }
    const SandboxFolder& folder() const { return m_folder; }

    // Runs a command of this program. Its output is in messages().
    int call(std::vector<std::string> command) const {
        command.insert(command.begin(), fs::read_symlink("/proc/self/exe").string());
        return runChild(command, {.environment = {"ZEPHRA_REGISTRY=" + m_folder.store().string()},
                                  .outputFile = file("messages").string()});
    }
    std::string messages() const { return contentOf(file("messages")); }

    void require(const std::vector<std::string>& command, ExitCode otherwise) const {
        constexpr std::string_view kProgram = "tscript: ";  // which main() adds
        if (call(command) == 0) return;
        const std::string text = messages();
        throw Failure(otherwise, text.starts_with(kProgram) ? text.substr(kProgram.size()) : text);
    }

    // Runs T-SQL with the query tool. Returns its rows as CSV; throws Failure (kUsage) with the server's
    // message.
    std::vector<std::string> query(const std::string& database, const std::string& sql) const {
        const std::optional<RunningServer> server = findServer(m_folder);
        if (!server) throw Failure(ExitCode::kInstallation, "the server of the test has ended");
        const Secret password = readSandboxPassword(m_folder);
        std::ofstream out(file("query.sql"));
        out << sql << "\n" << std::flush;
        if (!out) throw Failure(ExitCode::kInstallation, file("query.sql").string() + " cannot be written");
        const int code =
            runChild({sandboxSqlcmd().string(), "-b", "--csv", "-S", addressOf(server->port), "-U",
                      kSandboxLogin, "-d", database, "-i", file("query.sql").string()},
                     {.environment = {"SQLCMDPASSWORD=" + password.text(), "SQLCMD_ENCRYPT=verify",
                                      "SQLCMD_CA_FILE=" + m_folder.certificate().string()},
                      .outputFile = file("rows").string()});
        if (code != 0) throw Failure(ExitCode::kUsage, sql + ": " + contentOf(file("rows")));
        std::ifstream in(file("rows"));
        std::vector<std::string> rows;
        std::string heading;
        std::getline(in, heading);
        for (std::string row; std::getline(in, row);) rows.push_back(row);
        return rows;
    }

  private:
    // Not by a child process, which an interruption of this one would end.
    void stop() const {
        try {
            if (const std::optional<RunningServer> server = findServer(m_folder))
                stopServer(m_folder, *server);
        } catch (const std::exception& error) {
            writeNote(error.what());
        }
    }

    ScratchFolder m_temp;
    SandboxFolder m_folder;
};

std::vector<std::string> runCommand(const TestedPackage& package, const PackageTest& test,
                                    const fs::path& result) {
    std::vector<std::string> command = {"run", package.name, "--json", "-o", result.string()};
    for (const std::string& value : test.values) command.insert(command.end(), {"-p", value});
    for (const std::string& parameter : test.parameters) command.push_back("--" + parameter);
    return command;
}

// ---- Comparison ---------------------------------------------------------------------------------------

bool hasLine(const std::string& output, const std::string& line) {
    return ("\n" + output + "\n").find("\n" + line + "\n") != std::string::npos;
}

std::string withoutTrailingBlanks(const std::string& text) {
    std::string kept;
    for (const char c : text) {
        if (c == '\n') kept.erase(kept.find_last_not_of(" \t\r") + 1);
        kept += c;
    }
    return kept;
}

void compareOutput(const PackageTest& test, int exitCode, const std::string& error, TestResult& result) {
    const auto expect = [&](bool isMet, const std::string& fault) {
        if (!isMet) result.faults.push_back(fault);
    };
    const std::string reason = error.substr(0, error.find('\n'));
    const auto contains = [](const std::string& text, const std::string& part) {
        return text.find(part) != text.npos;
    };
    expect(exitCode == test.exitCode, "exit code " + std::to_string(exitCode) + ", expected " +
                                          std::to_string(test.exitCode) +
                                          (reason.empty() ? "" : "; " + reason));
    const std::string output = withoutTrailingBlanks(result.output);
    for (const std::string& line : test.outputLines)
        expect(hasLine(output, line), "the output has no line '" + line + "'");
    for (const std::string& text : test.contained)
        expect(contains(output, text), "the output does not contain '" + text + "'");
    for (const std::string& text : test.absent)
        expect(!contains(output, text), "the output contains '" + text + "'");
    for (const std::string& text : test.errors)
        expect(contains(error, text),
               "the error does not contain '" + text + "'" + (reason.empty() ? "" : "; it is: " + error));
}

std::string joined(const std::vector<std::string>& rows) {
    std::string text;
    for (const std::string& row : rows) text += (text.empty() ? "" : " | ") + row;
    return rows.empty() ? "no row" : text;
}

void compareRows(const TestInstallation& installation, const std::string& database, const PackageTest& test,
                 TestResult& result) {
    for (const ExpectedQuery& query : test.queries) {
        const std::vector<std::string> rows = installation.query(database, "SET NOCOUNT ON\n" + query.sql);
        if (rows != query.rows)
            result.faults.push_back(query.sql + ": " + joined(rows) + ", expected " + joined(query.rows));
    }
}

}  // namespace

TestResult runPackageTest(const TestedPackage& package, const PackageTest& test) {
    const auto begin = std::chrono::steady_clock::now();
    TestResult result{.name = test.name};
    const TestInstallation installation;
    const std::string database = package.database.empty() ? "Dorvas" : package.database;
    const fs::path packed = installation.folder().scripts() / (package.name + ".sql");
    installation.require({"pack", package.plain, "-o", packed.string()}, ExitCode::kUsage);
    for (const std::string& sql : test.setup) installation.query(database, sql);
    const fs::path resultFile = installation.file("result.json");
    const int exitCode = installation.call(runCommand(package, test, resultFile));
    std::string error = installation.messages();
    if (const std::optional<Json> json = jsonOfText(contentOf(resultFile))) {
        result.output = json->memberText("output");
        error = json->memberText("error") + "\n" + error;
    }
    compareOutput(test, exitCode, error, result);
    compareRows(installation, database, test, result);
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return result;
}
