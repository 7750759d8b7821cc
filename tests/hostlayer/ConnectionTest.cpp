#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <utility>

#include "Program.h"
#include "Proxy.h"
#include "TestStore.h"
#include "VTSimpleDBConn.h"
#include "VtCauses.h"

namespace {

constexpr const char* kFreeTds = "[host]\nodbcAttributes = 'TDS_Version=7.4'\n";
constexpr const char* kMicrosoft =
    "[host]\nodbcDriver = 'ODBC Driver 18 for SQL Server'\nodbcAttributes = ''\n";

std::string connectionString(const char* server, const char* user = "sa", const char* password = "pw",
                             bool windows = false, bool encrypt = false) {
    return VTSimpleDBConnObject().getConnectionString(server, "db", user, password, windows, encrypt);
}

TEST(ConnectionString, WritesTheServerAsTheDriverWantsIt) {
    // Null: refused.
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"db1", "Server={db1};Port=1433;", "Server={db1};"},
        {"db1,14330", "Server={db1};Port=14330;", "Server={db1,14330};"},
        {"TCP:db1,1", "Server={db1};Port=1;", "Server={db1,1};"},
        {"db1\\SQL1", "Server={db1\\SQL1};", "Server={db1\\SQL1};"},
        {"db1\\SQL1,1500", "Server={db1};Port=1500;", "Server={db1,1500};"},
        {".", "Server={localhost};Port=1433;", "Server={localhost};"},
        {"(local)\\X", "Server={localhost\\X};", "Server={localhost\\X};"},
        {"a;PWD=x", "Server={a;PWD=x};Port=1433;", "Server={a;PWD=x};"},
        {"a}b}", "Server={a}b}};Port=1433;", "Server={a}}b}}};"},
        {"a};b\\X", nullptr, "Server={a}};b\\X};"},
        {"", nullptr, nullptr},
        {"db1,", nullptr, nullptr},
        {"db1,0", nullptr, nullptr},
        {"db1,65536", nullptr, nullptr},
        {"db1,1x", nullptr, nullptr},
        {",1433", nullptr, nullptr}};
    for (const auto& [server, freeTds, microsoft] : cases) {
        const TestStore store(kFreeTds);
        EXPECT_EQ(connectionString(server), freeTds == nullptr
                                                ? ""
                                                : "Driver={FreeTDS};" + std::string(freeTds) +
                                                      "Database={db};UID={sa};PWD={pw};TDS_Version=7.4");
        store.write(kMicrosoft);
        EXPECT_EQ(connectionString(server),
                  microsoft == nullptr ? ""
                                       : "Driver={ODBC Driver 18 for SQL Server};" + std::string(microsoft) +
                                             "Database={db};UID={sa};PWD={pw};Encrypt=no;");
    }
}

TEST(ConnectionString, BracesValuesAndChoosesTheIdentity) {
    const TestStore store(kFreeTds);
    EXPECT_NE(connectionString("h", "u;x", "a;b}c").find("UID={u;x};PWD={a;b}c};"), std::string::npos);
    EXPECT_EQ(connectionString("h", "sa", "a};Server=evil"), "");  // FreeTDS has no way to take it
    const std::string windows = connectionString("h", "sa", "pw", true, true);
    EXPECT_NE(windows.find("Trusted_Connection=yes;Encryption=require;"), std::string::npos) << windows;
    EXPECT_EQ(windows.find("pw"), std::string::npos);
    store.write(kMicrosoft);
    EXPECT_NE(connectionString("h", "sa", "a};b").find("PWD={a}};b};"), std::string::npos);
    store.write("[host]\nodbcDriver = 'msodbcsql'\nodbcAttributes = 'Encrypt=strict'\n");
    EXPECT_NE(connectionString("h").find("PWD={pw};Encrypt=strict"), std::string::npos);
}

TEST(ConnectionString, HasOneMeaningOfEncryptForEveryDriver) {
    const TestStore store("");
    // Null: refused.
    const std::tuple<std::string, const char*, const char*> cases[] = {
        {"encrypt = 'off'", "PWD={pw};Encryption=off;", "PWD={pw};Encrypt=no;"},
        {"encrypt = 'require'", "PWD={pw};Encryption=require;",
         "PWD={pw};Encrypt=yes;TrustServerCertificate=yes;"},
        {"encrypt = 'verify'", "Servername=server1;Database={db};UID={sa};PWD={pw};",
         "PWD={pw};Encrypt=yes;TrustServerCertificate=no;"},
        {"encrypt = 'verify'\ncaFile = '/ca.pem'", "Servername=server2;",
         "Encrypt=yes;TrustServerCertificate=no;"},
        {"encrypt = 'verify'\ncaFile = '" + std::string(201, 'x') + "'", nullptr, "Encrypt=yes;"},
        {"encrypt = 'yes'", nullptr, nullptr},
        {"encrypt = 'verify'\nodbcAttributes = 'encrypt=no'", nullptr, nullptr}};
    for (const auto& [settings, freeTds, microsoft] : cases) {
        SCOPED_TRACE(settings);
        const std::string attributes =
            settings.find("odbcAttributes") == std::string::npos ? "odbcAttributes = ''\n" : "";
        for (const auto& [driver, expected] : {std::pair("FreeTDS", freeTds), {"msodbcsql", microsoft}}) {
            store.write("[host]\n" + attributes + "odbcDriver = '" + driver + "'\n" + settings);
            const std::string text = connectionString("h");
            EXPECT_EQ(text.empty(), expected == nullptr);
            EXPECT_NE(text.find(expected != nullptr ? expected : ""), std::string::npos) << text;
        }
    }
}

// Of the file that parent and child shared, both would have used the next section's name.
TEST(ConnectionString, VerifiedServersAreThoseOfTheProcess) {
    const TestStore store("[host]\nencrypt = 'verify'\n");
    const std::string known = connectionString("known");
    const pid_t child = ::fork();
    if (child == 0) {
        ::unsetenv("FREETDSCONF");  // FreeTDS would not find the sections
        const bool isKept = connectionString("known") == known;
        const std::string own = connectionString("child");
        const std::string file = support::readFile(std::getenv("FREETDSCONF"));
        const bool hasBoth = file.find("host = known\n") != std::string::npos &&
                             file.find("host = child\n") != std::string::npos;
        const bool isRefused =
            ::chroot(store.folder.path().c_str()) != 0 || connectionString("known").empty();
        ::_exit(isKept && own != known && hasBoth && isRefused ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    connectionString("parent");
    const std::string file = support::readFile(std::getenv("FREETDSCONF"));
    EXPECT_NE(file.find("host = parent\n"), std::string::npos);
    EXPECT_EQ(file.find("host = child\n"), std::string::npos);
    // The program closes descriptors that it does not know, and uses their numbers.
    const std::string name = std::getenv("FREETDSCONF");
    const std::string own = store.folder / "own";
    const support::Descriptor ownFile(::open(own.c_str(), O_RDWR | O_CREAT, 0600));
    const support::Descriptor reused(::dup2(ownFile.get(), std::stoi(name.substr(name.rfind('/') + 1))));
    EXPECT_EQ(connectionString("known"), known);
    EXPECT_NE(support::readFile(std::getenv("FREETDSCONF")).find("host = known\n"), std::string::npos);
    EXPECT_EQ(support::readFile(own), "");
}

std::string problemText;
void keepProblem(const VtCause& cause) {
    problemText = cause.text;
}

TEST(ConnectionString, RefusalNamesWhatCannotBeUsed) {
    const TestStore store("");
    VtCauseListener const before = VtListenToCauses(keepProblem);
    for (const auto& [settings, problem] :
         {std::pair("caFile = '" + std::string(201, 'x') + "'", "caFile cannot be opened"),
          {"odbcAttributes = 'Encryption=off'", "Both encrypt and odbcAttributes"},
          {"odbcDriver = '" + std::string(1001, 'x') + "'", "odbcDriver under [host] is longer"}}) {
        store.write("[host]\nencrypt = 'verify'\n" + settings);
        EXPECT_EQ(connectionString("h"), "");
        EXPECT_NE(problemText.find(problem), std::string::npos) << problemText;
    }
    VtListenToCauses(before);
}

TEST(Connection, ReportsWhyItCannotBeOpened) {
    const TestStore store("[host]\nloginTimeout = 2\n");
    VTSimpleDBConnObject connection;
    EXPECT_NE(connection.executeQuery("SELECT 1", false), 0);
    VTDBAutoBindResult result;
    EXPECT_EQ(connection.autoBind(result), -1);
    EXPECT_EQ(result.getNextRow(), -1);
    EXPECT_TRUE(result.column(0).isNull() && result.column(-1).asUtf8().empty());
    for (const std::string& text :
         {std::string(), std::string(40000, 'x'), std::string("Driver={no such driver}"),
          connectionString("127.0.0.1,1", "sa", "very secret")}) {
        EXPECT_NE(connection.OpenSQLConnectionUsingConnectionString(text.c_str(), false), 0);
    }
    EXPECT_EQ(connection.CloseSQLConnection(), 0);
}

constexpr int kLongerThanTheTimeout = 10'000;  // milliseconds, and less than the default of 15 s

// A server on loopback with one thread, which `serve` runs on.
class FakeServer {
  public:
    explicit FakeServer(std::function<void(int listener)> serve)
        : m_thread(std::move(serve), m_listener.descriptor.get()) {}
    // Returns the result of a connection to the server that has ended.
    int connectTo() {
        const int result = VTSimpleDBConnObject().OpenSQLConnectionUsingConnectionString(
            connectionString(m_listener.server().c_str()).c_str(), false);
        m_thread.join();
        return result;
    }

  private:
    const support::ListeningSocket m_listener;
    std::thread m_thread;
};

TEST(Connection, AServerThatNeverAnswersIsLeftAfterTheLoginTimeout) {
    const TestStore store("[host]\nloginTimeout = 1\n");
    bool isLeft = false;
    FakeServer silent([&](int listener) {
        const support::Descriptor client(::accept(listener, nullptr, nullptr));
        pollfd waiting{client.get(), POLLIN, 0};
        char request[512];
        while (!isLeft && ::poll(&waiting, 1, kLongerThanTheTimeout) == 1)
            isLeft = ::recv(client.get(), request, sizeof request, 0) <= 0;
    });
    EXPECT_NE(silent.connectTo(), 0);
    EXPECT_TRUE(isLeft);
}

// After the failed login, the reason is looked for over a second connection. On it, the server agrees to
// encrypt, and then sends packets without content.
TEST(Connection, AServerThatNeverStopsSendingIsLeftAfterTheLoginTimeout) {
    using std::chrono::steady_clock;
    const TestStore store("[host]\nloginTimeout = 1\n");
    bool isLeft = false;
    FakeServer endless([&](int listener) {
        support::Descriptor(::accept(listener, nullptr, nullptr));
        const support::Descriptor client(::accept(listener, nullptr, nullptr));
        std::string sent("\4\1\0\x0f\0\0\0\0\1\0\6\0\1\xff\1", 15);
        const auto end = steady_clock::now() + std::chrono::milliseconds(kLongerThanTheTimeout);
        while (!isLeft && steady_clock::now() < end) {
            isLeft = ::send(client.get(), sent.data(), sent.size(), MSG_NOSIGNAL) < 0;
            sent.clear();
            for (int i = 0; i < 8000; ++i) sent.append("\4\1\0\x08\0\0\0\0", 8);
        }
    });
    EXPECT_NE(endless.connectTo(), 0);
    EXPECT_TRUE(isLeft);
}

}  // namespace
