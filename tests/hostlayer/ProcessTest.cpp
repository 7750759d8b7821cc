#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "HostSetup.h"
#include "TestStore.h"
#include "VtProcess.h"

namespace {

// Results of starting a child process, a shell script, and of waiting for it.
struct Outcome {
    bool isStarted = false;
    bool isEnded = false;
    int exitCode = -1;
    std::string error;
};

class Process : public ::testing::Test {
  protected:
    std::string script(const std::string& name, const std::string& body) const {
        const std::string path = m_store.folder / name;
        support::writeFile(path, "#!/bin/sh\n" + body + "\n");
        ::chmod(path.c_str(), 0700);
        return path;
    }

    static Outcome run(const std::string& program, const std::string& line,
                       unsigned int limit = VtProcess::kNoTimeout, int errorSize = 1024) {
        Outcome result;
        std::string error(1024, '#');
        VtProcess process;
        process.SetSilence(true);
        result.isStarted = process.Start(program.c_str(), line.c_str(), error.data(), errorSize, 0);
        if (result.isStarted) result.isEnded = process.Wait(&result.exitCode, error.data(), errorSize, limit);
        result.error = error.c_str();
        return result;
    }

    const TestStore m_store{""};
};

TEST_F(Process, SplitsTheCommandLineByDoubleQuotesAlone) {
    const std::string tool = script("words", "for w in \"$@\"; do printf '[%s]\\n' \"$w\" >&2; done");
    // The words are a line each, in brackets; null: refused.
    for (const auto& [line, split] :
         {std::pair("tool a  b\tc ", "[a]\n[b]\n[c]\n"),
          {"tool -Q \"select 'x y'\n\\n\\\" -s \"\t\"", "[-Q]\n[select 'x y'\n\\n\\]\n[-s]\n[\t]\n"},
          {"tool a\"b c\"d \"\" e", "[ab cd]\n[]\n[e]\n"},
          {"\"/a tool\" $HOME `id` ;*", "[$HOME]\n[`id`]\n[;*]\n"},
          {"tool", ""},
          {"", ""},
          {"tool \"open", nullptr},
          {"tool a\"b\" c\"", nullptr}}) {
        const Outcome result = run("\"" + tool + "\"", line);
        EXPECT_EQ(result.isStarted, split != nullptr) << line;
        const std::string words = split != nullptr ? split : "is not closed.";
        EXPECT_NE(result.error.find(words), std::string::npos) << result.error;
        EXPECT_TRUE(split == nullptr || result.error == words) << result.error;
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their runtimes open descriptors
// poll() refuses more descriptors than the limit permits.
TEST_F(Process, EndsWithoutPoll) {
    std::string error(64, '#');
    VtProcess process;
    ASSERT_TRUE(process.Start("/bin/sh", "sh -c \"sleep 0.1; exit 3\"", error.data(), 64, 0)) << error;
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit one{1, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &one), 0);
    int exitCode = -1;
    const bool isEnded = process.Wait(&exitCode, error.data(), 64, 5'000);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_TRUE(isEnded) << error;
    EXPECT_EQ(exitCode, 3);
}
#endif

TEST_F(Process, ReportsHowTheChildEnded) {
    struct Case {
        const char* body;
        bool isEnded;
        int exitCode;
        const char* error;
    };
    for (const Case& end :
         {Case{"exit 0", true, 0, ""}, Case{"echo seen; echo wrong >&2; exit 255", true, 255, "wrong\n"},
          Case{"kill -9 $$", false, -1, "Ended by signal 9 (Killed)."},
          Case{"echo why >&2; kill -15 $$", false, -1, "Ended by signal 15 (Terminated). It wrote:\nwhy\n"},
          Case{"cat; echo $? >&2", true, 0, "0\n"}}) {  // nothing on standard input
        const Outcome result = run(script("tool", end.body), "tool");
        EXPECT_TRUE(result.isStarted);
        EXPECT_EQ(result.isEnded, end.isEnded) << end.body;
        EXPECT_EQ(result.exitCode, end.exitCode) << end.body;
        EXPECT_EQ(result.error, end.error);
    }
}

TEST_F(Process, KeepsTheTailOfALongStandardError) {
    const std::string tool =
        script("loud", "head -c 5000000 /dev/zero | tr '\\0' x >&2; printf 'the end' >&2");
    EXPECT_EQ(run(tool, "loud").error, std::string(1016, 'x') + "the end");
    EXPECT_EQ(run(tool, "loud", VtProcess::kNoTimeout, 4).error, "end");
}

TEST_F(Process, MapsToolNamesToPathsOfTheStore) {
    m_store.write("[host.programs]\nsqlcmd = '" + script("other-sqlcmd", "echo \"$0 $1\" >&2") + "'\n");
    EXPECT_EQ(run("\"/opt/mssql-tools/bin/sqlcmd\"", "\"/opt/mssql-tools/bin/sqlcmd\" -b").error,
              std::string(m_store.folder / "other-sqlcmd") + " -b\n");
    EXPECT_FALSE(run("/opt/mssql-tools/bin/isql", "isql").isStarted);
    if (std::filesystem::exists("/opt/mssql-tools") || std::filesystem::exists("/opt/mssql-tools18")) return;
    m_store.write("");
    const std::string path = std::getenv("PATH");
    const std::string tool = script("sqlcmd", "echo \"$0 $1\" >&2");
    ::setenv("PATH", (m_store.folder.path().string() + ":" + path).c_str(), 1);
    EXPECT_EQ(run("/opt/mssql-tools/bin/sqlcmd", "sqlcmd -b").error, tool + " -b\n");
    EXPECT_EQ(hostlayer::queryToolPath(), tool);
    ::setenv("PATH", path.c_str(), 1);
}

// The tool gets its password in the environment; an option's value that looks like -P stays one.
TEST_F(Process, TheStrictQueryToolHasNoPasswordOnItsCommandLine) {
    struct Case {
        const char* program;
        const char* line;
        const char* strict;  // what the tool prints of its arguments and its environment
        const char* plain;
    };
    const std::string tool = script("sqlcmd",
                                    "for w in \"$@\" \"$SQLCMDPASSWORD\" \"$SQLCMDINI$SQLCMD_NO_PROGRAMS\"; "
                                    "do printf '[%s]' \"$w\" >&2; done");
    const std::string other = script("other", "for w in \"$@\"; do printf '[%s]' \"$w\" >&2; done");
    ::setenv("SQLCMDPASSWORD", "outer", 1);
    ::setenv("SQLCMDINI", "start.sql", 1);
    for (const char* setting : {"1", "0"}) {
        const TestStore store("[host]\nstrictQueryTool = " + std::string(setting) + "\n");
        const bool isStrict = *setting == '1';
        for (const Case& c :
             {Case{tool.c_str(), "sqlcmd -b -S h -U -P -P \"p w\" -d x",
                   "[-x][-X1][-b][-S][h][-U][-P][-d][x][p w][1]",
                   "[-b][-S][h][-U][-P][-P][p w][-d][x][outer][start.sql1]"},
              Case{tool.c_str(), "sqlcmd -b -U  -P \"p w\" -d x", "[-x][-X1][-b][-U][-d][x][p w][1]",
                   "[-b][-U][-P][p w][-d][x][outer][start.sql1]"},
              Case{tool.c_str(), "sqlcmd -b -E -Q \"-P\" -y 0", "[-x][-X1][-b][-E][-Q][-P][-y][0][outer][1]",
                   "[-b][-E][-Q][-P][-y][0][outer][start.sql1]"},
              Case{other.c_str(), "other -P p", "[-P][p]", "[-P][p]"}})
            EXPECT_EQ(run(c.program, c.line).error, isStrict ? c.strict : c.plain) << c.line;
    }
    ::unsetenv("SQLCMDPASSWORD");
    ::unsetenv("SQLCMDINI");
}

TEST_F(Process, ReportsHowToRepairAFailedStart) {
    const Outcome missing = run("\"/no/such/sqlcmd\"", "\"/no/such/sqlcmd\" -P \"secret word\"");
    EXPECT_FALSE(missing.isStarted);
    EXPECT_EQ(missing.error,
              "Cannot start [/no/such/sqlcmd]: No such file or directory. Install it, or set sqlcmd to its "
              "path under [host.programs] in [" +
                  m_store.path().string() + "].");
    m_store.write("[host.programs]\nsqlcmd = '/no/such/tool'\n");
    EXPECT_NE(run("\"/x/sqlcmd\"", "x")
                  .error.find("start [/no/such/tool]: No such file or directory. Install it, or set "
                              "sqlcmd to its path"),
              std::string::npos);
    EXPECT_NE(run("/dev/null", "null").error.find("Permission denied"), std::string::npos);
    const Outcome tooLong = run("/bin/true", "true \"" + std::string(1 << 20, 'x') + "\"");
    EXPECT_NE(tooLong.error.find("Argument list too long. The command line"), std::string::npos)
        << tooLong.error;
    EXPECT_EQ(run("/no/such/sqlcmd", "x", 0, 8).error, "Cannot ");
    char error[64];
    VtProcess idle;
    EXPECT_FALSE(idle.Wait(nullptr, error, sizeof error, 0));
    EXPECT_STREQ(error, "No process was started.");
}

bool isGone(const std::string& pidFile) {
    const pid_t pid = std::stoi(support::readFile(pidFile));
    for (int i = 0; i < 500; ++i) {  // a killed orphan is there until init has reaped it
        std::ifstream status("/proc/" + std::to_string(pid) + "/stat");
        std::string text;
        std::getline(status, text);
        if (text.empty() || text.find(") Z ") != std::string::npos) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

TEST_F(Process, ATimeOutEndsTheWholeGroup) {
    const std::string pids = m_store.folder / "pid";
    for (const std::string& trap : {std::string(), std::string("trap '' TERM;")}) {
        const Outcome result = run(script("slow", trap + "sh -c '" + trap + "echo $$ > \"" + pids +
                                                      "\"; while :; do sleep 1; done' & wait"),
                                   "slow", 300);
        EXPECT_TRUE(result.isStarted);
        EXPECT_FALSE(result.isEnded);
        EXPECT_EQ(result.error.rfind("Ended because it ran longer than 300 ms", 0), 0U) << result.error;
        EXPECT_TRUE(isGone(pids));
    }
}

TEST_F(Process, DoesNotWaitForWhatTheChildLeavesBehind) {
    const std::string pids = m_store.folder / "pid";
    const auto before = std::chrono::steady_clock::now();
    const Outcome result =
        run(script("parent", "sleep 60 & echo $! > \"" + pids + "\"; echo said >&2"), "parent");
    EXPECT_EQ(result.error, "said\n");
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(30));
    ::kill(std::stoi(support::readFile(pids)), SIGKILL);
}

TEST_F(Process, TheChildSeesNothingOfTheHostProgram) {
    const int leaked = ::open("/dev/null", O_RDONLY);  // no close-on-exec
    sigset_t blocked;
    sigset_t before;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
    ::signal(SIGPIPE, SIG_IGN);
    const std::string list = "\"" + (m_store.folder / "descriptors").string() + "\"";
    const Outcome result = run(
        script("look",
               "ls /proc/$$/fd >" + list + "; grep -vxE '1[01]' " + list +
                   " >&2\n"  // 10 and 11: the shell's own
                   "sed -n 's/^Sig...:.*\\(.......\\)$/\\1/p' /proc/$$/status | head -n 3 | tail -n 2 >&2"),
        "look");
    ::signal(SIGPIPE, SIG_DFL);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ::close(leaked);
    EXPECT_EQ(result.error, "0\n1\n2\n0000000\n0000000\n");  // the C library ignores two signals above 28
}

TEST_F(Process, WorksWhereTheHostProgramHasNoStandardDescriptorsAndNoEnvironment) {
    const pid_t child = ::fork();
    if (child == 0) {
        for (const int standard : {0, 1, 2}) ::close(standard);
        ::clearenv();
        const Outcome result = run("/bin/sh", "sh -c \"echo out; echo error >&2\"");
        ::_exit(result.isEnded && result.exitCode == 0 && result.error == "error\n" ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(Process, TheDestructorWaitsForTheChild) {
    const std::string file = m_store.folder / "done";
    {
        VtProcess process;
        char error[64];
        ASSERT_TRUE(process.Start(script("late", "sleep 0.2; echo x > \"" + file + "\"").c_str(), "late",
                                  error, 64, 0));
        EXPECT_FALSE(process.Start("/bin/true", "true", error, 64, 0));
    }
    EXPECT_TRUE(std::filesystem::exists(file));
}

}  // namespace
