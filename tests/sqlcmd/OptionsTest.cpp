#include "options/CommandLine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

using namespace sqlcmd;

namespace {

// Owner of a writable argument list, as main() gets it.
class Arguments {
  public:
    explicit Arguments(std::vector<std::string> texts) : m_texts(std::move(texts)) {
        m_texts.insert(m_texts.begin(), "sqlcmd");
        for (std::string& text : m_texts) m_pointers.push_back(text.data());
    }
    Options parse() { return parseOptions(static_cast<int>(m_pointers.size()), m_pointers.data()); }
    const std::string& at(std::size_t index) const { return m_texts[index]; }

  private:
    std::vector<std::string> m_texts;
    std::vector<char*> m_pointers;
};

TEST(Options, TakeValuesAttachedOrSeparate) {
    for (const std::vector<std::string>& texts :
         {std::vector<std::string>{"-b", "-n", "-S", "h,1", "-U", "u",    "-P", "-p w", "-d",
                                   "db", "-m", "-1", "-i",  "a",  "-i",   "b",  "-o",   "out",
                                   "-s", "\t", "-y", "0",   "-w", "4000", "-h", "-1",   "-u"},
          std::vector<std::string>{"-b", "-n", "-Sh,1", "-Uu", "-P-p w", "-ddb", "-m-1", "-ia", "-ib",
                                   "-oout", "-s\t", "-y0", "-w4000", "-h-1", "-u"},
          std::vector<std::string>{"--exit-on-error", "--server=h,1", "--user-name", "u", "--password=-p w",
                                   "--database-name=db", "--error-level=-1", "--input-file", "a",
                                   "--input-file=b", "--output-file", "out", "--column-separator=\t",
                                   "--variable-type-width", "0", "--screen-width=4000", "--headers=-1",
                                   "--unicode-output-file"}}) {
        const Options options = Arguments(texts).parse();
        EXPECT_TRUE(options.stopOnError && options.unicodeOutput && !options.trusted);
        EXPECT_EQ(options.server + "|" + options.user + "|" + options.password + "|" + options.database,
                  "h,1|u|-p w|db");
        EXPECT_EQ(options.inputFiles, (std::vector<std::string>{"a", "b"}));
        EXPECT_EQ(options.messageLevel, -1);
        EXPECT_EQ(options.layout.separator, "\t");
        EXPECT_EQ(options.layout.lineWidth, 4000);
        EXPECT_EQ(options.layout.rowsPerHeading, -1);
        EXPECT_EQ(options.layout.longTypeWidth, 0);
        EXPECT_FALSE(options.layout.withHeading);
    }
}

TEST(Options, TakeVariablesUpToTheNextOption) {
    const Options options = Arguments({"-v", "a=1", "b=\"x y\"", "c=", "-r", "1", "-r0", "-V16"}).parse();
    const std::vector<std::pair<std::string, std::string>> expected{{"a", "1"}, {"b", "x y"}, {"c", ""}};
    EXPECT_EQ(options.variables, expected);
    EXPECT_EQ(options.errorStream, ErrorStream::Errors);
    EXPECT_EQ(options.severityLevel, 16);
    EXPECT_EQ(Arguments({"-L", "c"}).parse().action, Options::Action::ListServersOnly);
}

TEST(Options, TakeTheLastValueOfARange) {
    const Options least = Arguments({"-w", "9", "-y", "0", "-l", "0", "-t", "0", "-V", "-1"}).parse();
    EXPECT_EQ(least.layout.lineWidth, 9);
    EXPECT_EQ(least.severityLevel, 0);
    EXPECT_EQ(least.layout.longTypeWidth, 0);
    const Options most = Arguments({"-w", "65535", "-Y", "8000", "-l", "65534", "-t", "65534"}).parse();
    EXPECT_EQ(most.layout.lineWidth, 65535);
    EXPECT_EQ(most.layout.shortTypeWidth, 8000);
    EXPECT_EQ(most.loginTimeout, 65534);
    EXPECT_EQ(most.queryTimeout, 65534);
}

TEST(Options, RejectUnknownOnesAndWrongValues) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"-J"}, "'-J': Unknown Option"},
        {{"-a", "511"}, "'-a': '511' is not a number from 512 to 32767"},
        {{"-a", "32768"}, "'-a': '32768' is not a number from 512 to 32767"},
        {{"-c", " "}, "'-c': the batch separator is empty"},
        {{"-o", ""}, "'-o': Missing argument"},
        {{"--database-name="}, "'--database-name': Missing argument"},
        {{"-v", "a b=1"}, "'-v': 'a b' is not a variable name"},
        {{"-f", "1"}, "'-f': '1' is not a code page of this host"},
        {{"-f", "i:437,x:850"}, "'-f': 'x:850' is not i:NUMBER or o:NUMBER"},
        {{"-L", "-S", "h"}, "The -L option cannot be used together with other options."},
        {{"-z", "new"}, "The -z and -Z options change the password of a login: give -U."},
        {{"-U", "u", "-Z", ""}, "'-Z': the new password is empty"},
        {{"--csv", "--json"}, "'--json': only one of --csv, --json and --jsonl can be given"},
        {{"--servers", "h"}, "'--servers': Unknown Option"},
        {{"--query"}, "'--query': Missing argument"},
        {{"--csv=1"}, "'--csv=1': Unknown Option"},
        {{"-r2"}, "'-r': '2' is not 0 or 1"},
        {{"-k3"}, "'-k': '3' is not 1 or 2"},
        {{"-p2"}, "'-p': '2' is not 1"},
        {{"-X2"}, "'-X': '2' is not 1"},
        {{"-K", "Write"}, "'-K': 'Write' is not ReadOnly or ReadWrite"},
        {{"-Ns"}, "'-N': not supported. FreeTDS has no strict encryption. Use -Nm."},
        {{"-Nx"}, "'-N': 'x' is not s, m or o"},
        {{"-G"}, "'-G': not supported. Azure Active Directory is not available. Use -U or -E."},
        {{"word"}, "'word': Unknown Option"},
        {{"-bx"}, "'-bx': Unknown Option"},
        {{"-Q"}, "'-Q': Missing argument"},
        {{"-S", "-E"}, "'-S': Missing argument"},
        {{"-w", "8"}, "'-w': '8' is not a number from 9 to 65535"},
        {{"-w", "65536"}, "'-w': '65536' is not a number from 9 to 65535"},
        {{"-y", "8001"}, "'-y': '8001' is not a number from 0 to 8000"},
        {{"-t", "65535"}, "'-t': '65535' is not a number from 0 to 65534"},
        {{"-l", "1s"}, "'-l': '1s' is not a number from 0 to 65534"},
        {{"-s", "ab"}, "'-s': the separator must be one character"},
        {{"-v", "ab"}, "'-v': 'ab' is not of the form name=value"},
        {{"-E", "-U", "u"}, "The -E and the -U/-P options are mutually exclusive."},
        {{"-i", "f", "-Q", "q"}, "The -i and the -Q/-q options are mutually exclusive."},
        {{"-W", "-y", "0"}, "The -W and the -y/-Y options are mutually exclusive."},
    };
    for (const auto& [texts, message] : cases) try {
            Arguments(texts).parse();
            ADD_FAILURE() << message;
        } catch (const UsageError& error) {
            EXPECT_STREQ(error.what(), message);
        }
}

TEST(Options, TakeDefaultsFromTheEnvironmentUnlessRestricted) {
    setenv("SQLCMDCOLSEP", "|", 1);
    setenv("OSQLUSER", "outer", 1);
    setenv("SQLCMDINI", "start.sql", 1);
    setenv("SQLCMDHEADERS", "7", 1);
    const Options free = Arguments({"-P", "p", "--headers", "-1"}).parse();
    EXPECT_EQ(free.layout.separator + free.user + free.startUpScript, "|outerstart.sql");
    EXPECT_EQ(free.layout.rowsPerHeading, -1);
    const Options restricted = Arguments({"-X"}).parse();
    EXPECT_EQ(restricted.layout.separator + restricted.user + restricted.startUpScript, " ");
    EXPECT_EQ(restricted.layout.rowsPerHeading, 0);
    setenv("SQLCMDHEADERS", "many", 1);
    EXPECT_THROW(Arguments({"-P", "p"}).parse(), UsageError);
    for (const char* name : {"SQLCMDCOLSEP", "OSQLUSER", "SQLCMDINI", "SQLCMDHEADERS"}) unsetenv(name);
}

TEST(Options, ErasePasswordsFromTheArgumentList) {
    Arguments separate({"-U", "u", "-P", "secret"});
    EXPECT_EQ(separate.parse().password, "secret");
    EXPECT_EQ(separate.at(4), std::string(6, '\0'));
    Arguments attached({"-Uu", "-Psecret"});
    EXPECT_EQ(attached.parse().password, "secret");
    EXPECT_EQ(attached.at(2), "-P" + std::string(6, '\0'));

    EXPECT_EQ(Arguments({"-U", "u", "-P", "p", "--change-password=new"}).parse().newPassword, "new");

    setenv("SQLCMDPASSWORD", "from outside", 1);
    EXPECT_EQ(Arguments({"-U", "u"}).parse().password, "from outside");
    EXPECT_EQ(std::getenv("SQLCMDPASSWORD"), nullptr);
}

}  // namespace
