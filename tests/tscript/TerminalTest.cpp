// The command line on a terminal: questions, typed answers, progress, Ctrl-C, colours and widths.
#include <sstream>

#include "Installation.h"
#include "TerminalProgram.h"

namespace {

using support::kControlC;
using support::kControlD;
using support::TerminalProgram;

class OnATerminal : public Installation {
  protected:
    TerminalProgram terminal(Words words, unsigned short columns = 80, Words more = {}) const {
        words.insert(words.begin(), TSCRIPT_PROGRAM);
        Words environment = {"TERM=xterm", "NO_COLOR="};
        environment.insert(environment.end(), more.begin(), more.end());
        environment.push_back(storeVariable());
        return TerminalProgram(words, environment, columns);
    }
};

const Words kLively = {};
const Words kDumb = {"TERM=dumb"};
const Words kColourless = {"NO_COLOR=1"};

TEST_F(OnATerminal, NothingIsLostUnlessYesIsTyped) {
    const pid_t server = serverOf(folder);
    const std::string password = support::readFile(folder / "password");
    const Words reset = {"sandbox", "reset", "--dir", folder};
    const std::pair<std::string_view, std::string> refusals[] = {
        {"no\n", "nothing was changed"},   {"y\n", "nothing was changed"},     {"\n", "nothing was changed"},
        {"yes!\n", "nothing was changed"}, {kControlD, "nothing was changed"}, {kControlC, "^C"},
    };
    for (const auto& [typed, shown] : refusals) {
        TerminalProgram program = terminal(reset);
        ASSERT_TRUE(program.shows("Type yes to go ahead: ")) << program.screen();
        program.type(typed);
        EXPECT_EQ(program.end(), 130) << program.screen();
        EXPECT_NE(program.screen().find(shown), std::string::npos) << program.screen();
    }
    for (const Words& words : {Words{"--no-input", "sandbox", "reset", "--dir", folder},
                               Words{"sandbox", "--dir", folder, "reset", "--no-input"}}) {
        TerminalProgram program = terminal(words);
        EXPECT_EQ(program.end(), 2);
        EXPECT_NE(program.screen().find("Give --yes to go ahead"), std::string::npos) << program.screen();
    }
    EXPECT_EQ(serverOf(folder), server);
    EXPECT_EQ(support::readFile(folder / "password"), password);

    TerminalProgram program = terminal(reset);
    ASSERT_TRUE(program.shows("Type yes"));
    program.type("yes\n");
    EXPECT_EQ(program.end(), 0) << program.screen();
    EXPECT_NE(serverOf(folder), server);
}

TEST_F(OnATerminal, ARestoreIsShownAndRunOnceYesIsTyped) {
    const std::string backup = folder / "backups" / "d.bak";
    ASSERT_EQ(run({"db", "backup", "dorvas", backup}).exitCode, 0);
    TerminalProgram program =
        terminal({"db", "restore", backup, "copy", "--execute", "--to", folder / "backups"});
    ASSERT_TRUE(program.shows("Type yes")) << program.screen();
    EXPECT_NE(program.screen().find("RESTORE DATABASE copy"), std::string::npos);
    EXPECT_EQ(run({"db", "list"}).output, "dorvas\nnq2\n");
    program.type("yes\n");
    EXPECT_EQ(program.end(), 0) << program.screen();
    EXPECT_EQ(run({"db", "list"}).output, "copy\ndorvas\nnq2\n");
}

TEST_F(OnATerminal, APasswordIsTypedUnseen) {
    const std::string before = support::readFile(store());
    const std::string password = support::readFile(folder / "password");
    const Words set = {"credentials", "set", "NQ2", "--user", "sa"};
    for (const std::string_view given : {kControlC, kControlD, std::string_view("\n")}) {
        TerminalProgram program = terminal(set);
        ASSERT_TRUE(program.shows("Password of sa: "));
        program.type(given);
        EXPECT_EQ(program.end(), given == kControlC ? 130 : 2) << program.screen();
    }
    TerminalProgram hostile = terminal({"credentials", "set", "NQ2", "--user", "a\x1b]0;b"});
    EXPECT_TRUE(hostile.shows("Password of a ]0;b: ")) << hostile.screen();
    TerminalProgram unasked = terminal({"credentials", "set", "NQ2", "--user", "sa", "--no-input"});
    EXPECT_EQ(unasked.end(), 2);
    EXPECT_NE(unasked.screen().find("first line of standard input"), std::string::npos) << unasked.screen();
    EXPECT_EQ(support::readFile(store()), before);

    TerminalProgram program = terminal(set);
    ASSERT_TRUE(program.shows("Password of sa: "));
    program.type(password);
    EXPECT_EQ(program.end(), 0) << program.screen();
    EXPECT_EQ(program.screen().find(password.substr(0, 8)), std::string::npos);
    EXPECT_EQ(run({"credentials", "test", "NQ2"}).exitCode, 0);
}

// Ctrl-C ends a run whose progress line is shown. Its journal row is closed as failed, and neither a file nor
// the progress line remains.
TEST_F(OnATerminal, AnInterruptedRunIsClosed) {
    packEndless();
    TerminalProgram program = terminal({"run", "Endless", "--input", std::string(60, 'z')}, 40);
    ASSERT_TRUE(program.shows("1 s  running batch 1  Endless")) << program.screen();
    EXPECT_NE(journal("Endless").find("0|zzz"), std::string::npos);
    program.type(kControlC);
    EXPECT_EQ(program.end(), 130) << program.screen();
    EXPECT_NE(program.screen().find("\r\x1b[K"), std::string::npos);
    EXPECT_NE(program.screen().find("tscript: interrupted"), std::string::npos);
    EXPECT_NE(journal("Endless").find("2|zzz"), std::string::npos);
    EXPECT_TRUE(fs::is_empty(folder / "temp"));
}

// Width of a line without its colours and carriage return. Continuation bytes of UTF-8 have no width.
std::size_t columnsOf(const std::string& line) {
    std::size_t columns = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\x1b') {
            i = line.find_first_of("mK", i);
            continue;
        }
        if (line[i] == '\r') columns = 0;
        columns += line[i] >= ' ' || static_cast<unsigned char>(line[i]) >= 0xC0 ? 1 : 0;
    }
    return columns;
}

TEST_F(OnATerminal, OutputFitsAndIsPlainWhereItMustBe) {
    packBody("ALongNameOfAScriptThatMustBeCut", "WAITFOR DELAY '00:00:01'\nPRINT '%s'\n");
    const Words slow = {"run", "ALongNameOfAScriptThatMustBeCut", "-p", "Zürich\x1b]0;\x07"};
    const Words listings[] = {{"journal"}, {"catalogue"}};
    for (const Words& kind : {kLively, kDumb, kColourless}) {
        TerminalProgram program = terminal(slow, 40, kind);
        EXPECT_EQ(program.end(), 0);
        const bool moves = program.screen().find("running batch 1") != std::string::npos;
        EXPECT_EQ(moves, kind == kLively) << program.screen();
        EXPECT_NE(program.screen().find("Zürich ]0; "), std::string::npos) << program.screen();
    }
    // The first begins an escape sequence, the second reverses the text behind it.
    for (const std::string control : {"\u009B", "\u202E"}) {
        ASSERT_EQ(run({"run", slow[1], "-p", control}).exitCode, 0);
        EXPECT_NE(run({"journal", "--json"}).output.find(control), std::string::npos);
        for (const Words& words : {Words{"journal", "--json"}, Words{"run", slow[1], "-p", control}}) {
            TerminalProgram program = terminal(words);
            EXPECT_EQ(program.end(), 0);
            EXPECT_EQ(program.screen().find(control), std::string::npos) << program.screen();
        }
    }
    for (const Words& kind : {kLively, kDumb, kColourless}) {
        for (const int columns : {20, 40, 80, 110}) {
            for (const Words& words : listings) {
                TerminalProgram program = terminal(words, static_cast<unsigned short>(columns), kind);
                EXPECT_EQ(program.end(), 0);
                std::istringstream lines(program.screen());
                for (std::string line; std::getline(lines, line);) {
                    line.erase(line.find_last_not_of('\r') + 1);
                    EXPECT_LE(columnsOf(line), static_cast<std::size_t>(columns)) << line;
                }
                const bool coloured = program.screen().find("\x1b[32mok\x1b[0m") != std::string::npos;
                EXPECT_EQ(coloured, kind == kLively && words == listings[0]) << program.screen();
            }
        }
    }
}

// A script waits for a table that exists only after its first line has been shown.
TEST_F(OnATerminal, OutputIsShownWhileTheScriptRuns) {
    packBody("Waits",
             "PRINT 'begun'\nGO\nRAISERROR('first', 0, 1) WITH NOWAIT\n"
             "WHILE OBJECT_ID('Gate') IS NULL WAITFOR DELAY '00:00:00.05'\nGO\nPRINT 'last'\n");
    packBody("Opens", "CREATE TABLE Gate (id int)\n");
    packBody("Fails", "PRINT 'begun'\nGO\nRAISERROR('refused', 16, 1)\n");
    TerminalProgram program = terminal({"run", "Waits"}, 40);
    ASSERT_TRUE(program.shows("begun\r\nfirst\r\n")) << program.screen();
    ASSERT_TRUE(program.shows("running batch 2  Waits")) << program.screen();
    ASSERT_EQ(run({"run", "Opens"}).exitCode, 0);
    EXPECT_EQ(program.end(), 0);
    EXPECT_EQ(program.screen().find("begun"), program.screen().rfind("begun"));
    EXPECT_NE(program.screen().find("last\r\n"), std::string::npos) << program.screen();

    const std::string file = folder / "output";
    for (const std::string script : {"Waits", "Fails"}) {
        const support::ProgramResult whole = run({"run", script, "--follow=never"});
        const support::ProgramResult followed = run({"run", script, "--follow", "-o", file});
        EXPECT_EQ(followed.exitCode, whole.exitCode);
        EXPECT_EQ(followed.output.size(), whole.output.size()) << followed.output;
        EXPECT_EQ(support::readFile(file), whole.output);
    }
    expectAll({{{"run", "Waits", "--follow", "--json"}, 2, "", "--follow excludes --json"}});
}

TEST_F(OnATerminal, ListingsAreAligned) {
    packBody("Zürich日", "PRINT 'x'\n");
    ASSERT_EQ(run({"run", "Zürich日"}).exitCode, 0);
    // Width, pattern of names, what the screen begins with.
    const std::tuple<unsigned short, std::string, std::string> cases[] = {
        {80, "tsS*",
         "ID  NAME          KIND       SECURED  AUDIT  CREATED\r\n"
         "3   tsSwitchNode  procedure  secured  2      20"},
        {80, "Z*",
         "ID  NAME      KIND     SECURED  AUDIT  CREATED\r\n"
         "4   Zürich日  package  -        0      20"},
        {30, "Z*",
         "ID       4\r\nNAME     Zürich日\r\nKIND     package\r\nSECURED  -\r\nAUDIT    0\r\n"
         "CREATED  20"},
    };
    for (const auto& [columns, name, screen] : cases) {
        TerminalProgram program = terminal({"catalogue", "--name", name}, columns, kDumb);
        EXPECT_EQ(program.end(), 0);
        EXPECT_EQ(program.screen().substr(0, screen.size()), screen);
    }
}

}  // namespace
