// sqlcmd: runs T-SQL scripts through ODBC and prints their results in the format of SQL Server's tool.
#include <fcntl.h>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>

#include "options/CommandLine.h"
#include "session/Tool.h"
#include "text/Output.h"

namespace {

constexpr const char* kVersion = "sqlcmd " SQLCMD_VERSION " (ODBC)\n";

// Opens /dev/null at the numbers of closed standard streams: a file or socket opened later would get them. It
// is opened for the wrong direction, so that using the stream fails.
void occupyClosedStreams() {
    for (const int stream : {0, 1, 2})
        if (fcntl(stream, F_GETFD) < 0) open("/dev/null", stream == 0 ? O_WRONLY : O_RDONLY);
}

// Throws ToolError if standard output cannot be written.
int print(const std::string& text) {
    sqlcmd::Output output("");
    output.write(text);
    output.flush();
    return 0;
}

int run(int argc, char** argv) {
    sqlcmd::Options options = sqlcmd::parseOptions(argc, argv);
    switch (options.action) {
        case sqlcmd::Options::Action::Help:
            return print(kVersion + sqlcmd::usageText());
        case sqlcmd::Options::Action::Version:
            return print(kVersion);
        case sqlcmd::Options::Action::ListServers:
            return print(sqlcmd::serverList(/*namesOnly=*/false));
        case sqlcmd::Options::Action::ListServersOnly:
            return print(sqlcmd::serverList(/*namesOnly=*/true));
        case sqlcmd::Options::Action::Run:
            break;
    }
    return sqlcmd::Tool(options).run();
}

}  // namespace

int main(int argc, char** argv) {
    occupyClosedStreams();
    std::signal(SIGPIPE, SIG_IGN);        // a closed pipe is reported as a write error
    std::setlocale(LC_CTYPE, "C.UTF-8");  // drivers convert strings to the locale's encoding
    try {
        return run(argc, argv);
    } catch (const sqlcmd::UsageError& error) {
        std::fprintf(stderr, "Sqlcmd: %s\n\n%s", error.what(), sqlcmd::usageText().c_str());
    } catch (const sqlcmd::AlreadyReported&) {
    } catch (const sqlcmd::ToolError& error) {
        std::fprintf(stderr, "%s\n", error.what());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "Sqlcmd: Error: %s\n", error.what());
    }
    return 1;
}
