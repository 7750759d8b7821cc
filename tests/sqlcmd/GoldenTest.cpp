// Runs every case of the golden files against a tsqlbox and compares what the tool prints.
//
// A case is:   > arguments
//              the script, on standard input
//              = exit code
//              the output
// Lines that begin with '#' before a case are comments. The server's name is replaced by S.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <sstream>

#include "TempDir.h"
#include "TerminalProgram.h"
#include "TsqlBox.h"

namespace {

struct Case {
    std::vector<std::string> arguments;
    std::string script;
    int exitCode = 0;
    std::string output;
};

std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word == "TAB" ? "\t" : word);
    return words;
}

std::vector<Case> readCases(const std::filesystem::path& path) {
    std::vector<Case> cases;
    std::istringstream stream(support::readFile(path));
    std::string* part = nullptr;
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with('>')) {
            cases.emplace_back().arguments = wordsOf(line.substr(1));
            part = &cases.back().script;
        } else if (line.starts_with("= ")) {
            cases.back().exitCode = std::stoi(line.substr(2));
            part = &cases.back().output;
        } else if (part != nullptr && !line.starts_with('#')) {
            *part += line + '\n';
        }
    }
    return cases;
}

TEST(Golden, OutputIsAsRecorded) {
    const support::TsqlBox server;
    for (const auto& file : std::filesystem::directory_iterator(GOLDEN_FOLDER)) {
        for (const Case& c : readCases(file)) {
            std::vector<std::string> command{SQLCMD_PROGRAM, "-S", server.server(),  "-U",
                                             server.login(), "-P", server.password()};
            command.insert(command.end(), c.arguments.begin(), c.arguments.end());
            support::ProgramOptions options;
            options.input = c.script;
            const auto result = support::runProgram(command, options);
            const std::string output =
                std::regex_replace(result.output, std::regex("Server [^,\n]+"), "Server S");
            EXPECT_EQ(output + result.errors, c.output) << file.path().filename() << ":\n" << c.script;
            EXPECT_EQ(result.exitCode, c.exitCode) << c.script;
        }
    }
}

// A shell runs `command` with the program and its login options in "$@".
support::ProgramResult inShell(const support::TsqlBox& server, const std::string& command,
                               const std::filesystem::path& folder = {}) {
    support::ProgramOptions options;
    options.workingDirectory = folder;
    return support::runProgram({"sh", "-c", command, "sh", SQLCMD_PROGRAM, "-S", server.server(), "-U",
                                server.login(), "-P", server.password()},
                               options);
}

TEST(Script, IsReadFromSeveralFilesAndFromANamedPipe) {
    const support::TsqlBox server;
    const support::TempDir folder;
    support::writeFile(folder / "a.sql", "PRINT 'a'\n");
    support::writeFile(folder / "b,c.sql", "PRINT 'b'\n");
    EXPECT_EQ(inShell(server, "\"$@\" -i a.sql,b,c.sql -i a.sql", folder.path()).output, "a\nb\na\n");
    EXPECT_EQ(inShell(server, "mkfifo p && { echo \"PRINT 'p'\" > p & \"$@\" -i p; }", folder.path()).output,
              "p\n");
}

TEST(Script, PrintsAMessageWhileItsBatchRuns) {
    const support::TsqlBox server;
    const support::TempDir folder;
    EXPECT_EQ(
        inShell(server,
                "mkfifo p; \"$@\" -Q \"RAISERROR('now', 0, 1) WITH NOWAIT WAITFOR DELAY '00:10'\" > p & "
                "read line < p; kill $!; echo \"$line\"",
                folder.path())
            .output,
        "now\n");
}

// What a shell command with the tool prints to both streams, and its exit code.
TEST(Script, UsesFilesStreamsAndPrograms) {
    const support::TsqlBox server;
    const support::TempDir folder;
    support::writeFile(folder / "start.sql", "PRINT 'start'\n");
    support::writeFile(folder / "page.sql", "PRINT N'\xE9'\n");
    // A command, the end of its output, its exit code.
    const std::tuple<const char*, const char*, int> rows[] = {
        {"SQLCMDINI=start.sql \"$@\" -Q \"PRINT 'q'\"", "start\nq\n", 0},
        {"SQLCMDINI=start.sql \"$@\" -X -Q \"PRINT 'q'\"", "q\n", 0},
        {"SQLCMDINI=none.sql \"$@\"", "'none.sql': Invalid filename. No such file or directory.\n", 1},
        {"SQLCMD_NO_PROGRAMS=1 \"$@\" -Q '!! ls'",
         "'!!' is disabled: the program that has started sqlcmd permits no other programs.\n", 1},
        {"\"$@\" -Q \"PRINT 'o'\" -o /dev/stdout", "o\n", 0},
        {"\"$@\" -Q \"PRINT 'e'\" -o /dev/stderr 2>e; cat e", "e\n", 0},
        {"\"$@\" -Q \"PRINT '3'\" -o /dev/fd/3 3>e; cat e", "3\n", 0},
        {"\"$@\" -Q \"PRINT '3'\" -o /dev/fd/9", "output file '/dev/fd/9': Bad file descriptor.\n", 1},
        {"\"$@\" -Q \"PRINT 'n'\" -o /dev/null", "", 0},
        {"\"$@\" -Q 'SELECT 1' -o /dev/full", "cannot write to '/dev/full': No space left on device.\n", 1},
        {"\"$@\" -Q 'SELECT 1' -o .", "cannot open output file '.': Is a directory.\n", 1},
        {"mkfifo p; \"$@\" -Q 'SELECT 1' -o p", "cannot open output file 'p': nobody reads from it.\n", 1},
        {"mkfifo q; { sleep 1; cat q; } & \"$@\" -Q \"PRINT 'q'\" -o q; wait", "q\n", 0},
        {"\"$@\" -i .", "'.': Invalid filename. Is a directory.\n", 1},
        {"printf 'P\\0R\\0I' | \"$@\"", "Sqlcmd: standard input: the last character is incomplete.\n", 1},
        {"\"$@\" --csv -h -1 -Q \"SELECT 'a', NULL, '', 1 \"", "a,,\"\",1\n", 0},
        {"\"$@\" -f 1252 -i page.sql -o out; cat out", "\xE9\n", 0},
        {"\"$@\" -f 1252 -Q \"PRINT N'é世'\" -o out; cat out", "\xE9?\n", 0},
        {"printf \":out out\\nPRINT 'u'\\n\" | \"$@\" -u; od -An -c out", "   u  \\0  \\n  \\0\n", 0},
        {"printf \"PRINT 'a\\0b'\\n\" | \"$@\"", "it contains a NUL character.\n", 1},
        {"\"$@\" --progress -Q 'SELECT 1' 2>&1 >e | sed 's/, .*//'", "Sqlcmd: batch 1: 1 rows\n", 0},
        {"\"$@\" -p1 -Q ':perftrace e\nSELECT 1' >o; sed 's/1:.*//' e", "\n4096:\n", 0},
        {"\"$@\" -? >/dev/full", "cannot write to standard output: No space left on device.\n", 1},
        {"trap '' XFSZ; ulimit -f 8; printf \"PRINT 'x' --%05000d\\n:ed\\n\" 0 | EDITOR=true \"$@\"",
         ".sql': File too large.\n", 1},
        // Without a descriptor for the script, nothing runs and the tool fails.
        {"echo \"PRINT 'ran'\" >in; for n in 4 5 6 7 8 9; do "
         "printed=$(exec <in 2>e; ulimit -n $n; exec \"$@\") && case $printed in ran) ran=$printed;; "
         "*) silent=\"$silent $n\";; esac; done; echo \"$ran, silent:$silent\"",
         "ran, silent:\n", 0},
        // tsqlbox keeps the old password.
        {"\"$@\" -Z new",
         "Login failed for user 'sa'..\nSqlcmd: Error: FreeTDS : Unable to connect to data source.\n", 1},
        {"SQLCMD_ODBC_DRIVER=FreeTDS \"$@\" -j -Q 'SELECT * FROM none'",
         "\n[FreeTDS][SQL Server]Invalid object name 'none'.\n", 0},
        {"\"$@\" -h -1 -Q \"SELECT REPLICATE(CAST('a' AS varchar(max)), 200000) UNION ALL SELECT 'b'\" -y 0 "
         "| tail -c 23",
         "a\nb\n\n(2 rows affected)\n", 0},
        {"\"$@\" -Q \"SELECT REPLICATE(CAST('a' AS varchar(max)), 200000) UNION ALL SELECT 'b'\" -o "
         "/dev/full",
         "cannot write to '/dev/full': No space left on device.\n", 1},
    };
    for (const auto& [command, output, exitCode] : rows) {
        const auto result = inShell(server, command, folder.path());
        EXPECT_TRUE((result.output + result.errors).ends_with(output))
            << command << result.output << result.errors;
        EXPECT_EQ(result.exitCode, exitCode) << command;
    }
}

// The JSON document stays open.
TEST(Script, ReportsALostServer) {
    support::TsqlBox server;
    support::TerminalProgram program(
        {SQLCMD_PROGRAM, "-S", server.server(), "-U", server.login(), "-P", server.password(), "--json", "-Q",
         "SELECT 1 AS a RAISERROR('runs', 0, 1) WITH NOWAIT WAITFOR DELAY '00:10'"},
        {});
    ASSERT_TRUE(program.shows("runs")) << program.screen();
    server.kill();
    EXPECT_EQ(program.end(), 1);
    EXPECT_NE(program.screen().find("Sqlcmd: Error: FreeTDS : "), std::string::npos) << program.screen();
    EXPECT_EQ(program.screen().find("\n]\r"), std::string::npos) << program.screen();
}

// A value is read in pieces of 65,536 bytes.
TEST(Script, PrintsValuesLongerThanAPiece) {
    const support::TsqlBox server;
    for (const int length : {65535, 65536, 65537, 200'000}) {
        const auto result = inShell(
            server, "\"$@\" -y 0 -h -1 -Q \"SET NOCOUNT ON SELECT REPLICATE(CAST(N'é' AS nvarchar(max)), " +
                        std::to_string(length) + ") + N'.'\"");
        std::string expected;
        for (int i = 0; i < length; ++i) expected += "é";
        EXPECT_EQ(result.output.substr(0, expected.size() + 2), expected + ".\n") << length;
    }
}

TEST(Script, ChangesItsServerAndItsOutputs) {
    const support::TsqlBox server, other;
    const support::TempDir folder;
    std::filesystem::create_symlink("elsewhere.txt", folder / "linked.txt");
    support::ProgramOptions options;
    options.workingDirectory = folder.path();
    options.input = "CREATE TABLE of_the_first (i int)\nGO\n:connect " + other.server() + " -U " +
                    other.login() + " -P \"$(word)\"\n:error errors.txt\n:out results.txt\n" +
                    "SELECT * FROM of_the_first\nGO\nPRINT '$(SQLCMDSERVER)'\nGO\n:out linked.txt\n";
    const auto result = support::runProgram({SQLCMD_PROGRAM, "-S", server.server(), "-U", server.login(),
                                             "-P", server.password(), "-v", "word=" + other.password()},
                                            options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.errors.find("cannot open output file 'linked.txt'"), std::string::npos) << result.errors;
    EXPECT_FALSE(std::filesystem::exists(folder / "elsewhere.txt"));
    EXPECT_TRUE(support::readFile(folder / "results.txt").starts_with(other.server() + "\n"));
    EXPECT_NE(support::readFile(folder / "errors.txt").find("Invalid object name 'of_the_first'"),
              std::string::npos);
}

TEST(Terminal, PromptsForThePassword) {
    const support::TsqlBox server;
    support::TerminalProgram program(
        {SQLCMD_PROGRAM, "-S", server.server(), "-U", server.login(), "-Q", "PRINT 'in'"}, {});
    ASSERT_TRUE(program.shows("Password: ")) << program.screen();
    program.type(server.password() + "\n");
    EXPECT_EQ(program.end(), 0);
    EXPECT_TRUE(program.screen().ends_with("in\r\n")) << program.screen();
    EXPECT_EQ(program.screen().find(server.password()), std::string::npos);
}

// Ctrl-C cancels a running batch, or discards the typed one; an error does not end the session; Ctrl-D does.
// Lines are wrapped at 80; a result that is wider than the terminal goes to the pager. The history (key ^P)
// has no lines of a batch that mentions a password.
TEST(Terminal, KeepsItsSessionUntilTheEndOfInput) {
    const support::TsqlBox server;
    support::TerminalProgram program({SQLCMD_PROGRAM, "-S", server.server(), "-U", server.login(), "-P",
                                      server.password(), "-W", "-h", "-1", "--pager"},
                                     {"TERM=dumb", "PAGER=sed s/^/paged:/"}, 100);
    const auto answers = [&](std::string_view typed, const char* shown) {
        program.type(typed);
        ASSERT_TRUE(program.shows(shown)) << program.screen();
    };
    ASSERT_TRUE(program.shows("1> "));
    answers("SELECT 'é' + '1',\n", "2> ");
    answers("2\nGO\n", "é1 2\r\n\r\n(1 rows affected)\r\n1> ");
    answers("RAISERROR('runs', 0, 1) WITH NOWAIT WAITFOR DELAY '00:10'\nGO\n", "\nruns\r\n");
    answers(support::kControlC, "Sqlcmd: the batch was cancelled.\r\n1> ");
    answers("SELECT CAST('yz' + REPLICATE('x', 79) AS char(81))\nGO\n",
            "x\r\nx\r\n\r\n(1 rows affected)\r\n1> ");
    answers("SELECT REPLICATE('x', 81)\nGO\n", "xx\r\n\r\n(1 rows affected)\r\n1> ");
    EXPECT_NE(program.screen().find("\npaged:xxx"), std::string::npos) << program.screen();
    for (int i = 0; i < 20; ++i) {  // at once after the prompt
        answers("PRINT 'wrong'\n", "PRINT 'wrong'\r\n2> ");
        answers(support::kControlC, "^C\r\n1> ");
    }
    answers("PRINT $(nothing)\n", "'nothing' scripting variable not defined.\r\n1> ");
    answers(":nothing\n", "near command ':nothing'.\r\n1> ");
    answers("prin\t", "1> print ");
    answers("'a\tb'\nGO\n", "a\tb\r\n1> ");
    answers("PRINT 'kept'\nGO\n", "kept\r\n1> ");
    answers("-- password\n'a secret'\nGO\n", "'a secret'.\r\n1> ");
    answers("\x10\x10 + '!'\nGO\n", "kept!\r\n1> ");
    // An error, a failed :connect and Ctrl-C end the :r file that is being read.
    const support::TempDir folder;
    const std::string rest = "GO\nPRINT 'the' + ' rest'\nGO\n";
    support::writeFile(folder / "error", "IF $(nothing) = 1\n" + rest);
    support::writeFile(folder / "connect", ":connect 127.0.0.1,1 -U u -P p\n" + rest);
    support::writeFile(folder / "wait",
                       "RAISERROR('waits', 0, 1) WITH NOWAIT WAITFOR DELAY '00:10'\n" + rest);
    answers(":r " + (folder / "error").string() + "\n", "error' is not run.\r\n1> ");
    answers(":r " + (folder / "connect").string() + "\n", "connect' is not run.\r\n1> ");
    answers(":r " + (folder / "wait").string() + "\n", "waits\r\n");
    answers(support::kControlC, "wait' is not run.\r\n1> ");
    program.type(support::kControlD);
    EXPECT_EQ(program.end(), 0) << program.screen();
    EXPECT_EQ(program.screen().find("wrong\r\n1>"), std::string::npos) << program.screen();
    EXPECT_EQ(program.screen().find("the rest\r\n"), std::string::npos) << program.screen();
}

// Otherwise the server's socket would take descriptor 0 or 1.
TEST(Script, ReportsClosedStandardFiles) {
    const support::TsqlBox server;
    EXPECT_EQ(inShell(server, "\"$@\" <&-").errors, "Sqlcmd: standard input: Bad file descriptor.\n");
    EXPECT_EQ(inShell(server, "\"$@\" -Q \"PRINT 'x'\" >&-").errors,
              "Sqlcmd: Error: cannot write to standard output: Bad file descriptor.\n");
}

// The driver would cut the batch at the first byte that is not UTF-8.
TEST(Script, OfAnotherEncodingIsRejected) {
    const support::TsqlBox server;
    support::ProgramOptions options;
    options.input = "PRINT 'first'\nGO\nPRINT 'part' -- f\xFCr\nPRINT 'rest'\n";
    const auto result = support::runProgram(
        {SQLCMD_PROGRAM, "-S", server.server(), "-U", server.login(), "-P", server.password()}, options);
    EXPECT_EQ(result.output, "first\n");
    EXPECT_NE(result.errors.find("its line 1 is not UTF-8"), std::string::npos) << result.errors;
    EXPECT_EQ(result.exitCode, 1);
}

}  // namespace
