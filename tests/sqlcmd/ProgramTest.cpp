// The built program without a database.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "Program.h"
#include "Proxy.h"
#include "TempDir.h"

namespace {

using support::Descriptor;

support::ProgramResult sqlcmd(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), SQLCMD_PROGRAM);
    return support::runProgram(arguments);
}

TEST(Program, PrintsItsUsageAndVersion) {
    const auto help = sqlcmd({"-?"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.output.starts_with("sqlcmd ") &&
                help.output.find("\nusage: sqlcmd") != std::string::npos);
    EXPECT_TRUE(sqlcmd({"--version"}).output.starts_with("sqlcmd "));
    const auto unknown = sqlcmd({"-J"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_TRUE(unknown.errors.starts_with("Sqlcmd: '-J': Unknown Option\n\nusage: sqlcmd"))
        << unknown.errors;
}

TEST(Program, ChecksAllInputFilesFirst) {
    const support::TempDir folder;
    support::writeFile(folder / "in.sql", "select 1\n");
    support::writeFile(folder / "out.txt", "kept");
    const std::string missing = folder / "missing.sql";
    const auto result = sqlcmd({"-i", folder / "in.sql", "-i", missing, "-o", folder / "out.txt"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, "Sqlcmd: '" + missing + "': Invalid filename. No such file or directory.\n");
    EXPECT_EQ(support::readFile(folder / "out.txt"), "kept");
}

TEST(Program, DoesNotOverwriteItsScript) {
    const support::TempDir folder;
    support::writeFile(folder / "in.sql", "select 1\n");
    const auto result = sqlcmd({"-i", folder / "in.sql", "-o", folder.path() / "." / "in.sql"});
    EXPECT_NE(result.errors.find("both the input and the output file"), std::string::npos) << result.errors;
    EXPECT_EQ(support::readFile(folder / "in.sql"), "select 1\n");
}

// Another process may have made standard output non-blocking.
TEST(Program, WaitsForAFullPipe) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    const Descriptor output(ends[0]), input(ends[1]), nothing = support::memoryFile(),
                                                      errors = support::memoryFile();
    const std::string filler(static_cast<std::size_t>(fcntl(input.get(), F_SETPIPE_SZ, 4096)), 'x');
    ASSERT_EQ(write(input.get(), filler.data(), filler.size()), static_cast<ssize_t>(filler.size()));
    const pid_t pid = support::spawn({SQLCMD_PROGRAM, "-?"}, {}, {nothing.get(), input.get(), errors.get()});
    std::string printed;
    int exitCode = -1;
    std::thread reader([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        char piece[4096];
        pollfd entry{output.get(), POLLIN, 0};
        while (poll(&entry, 1, 1000) == 1)
            if (const ssize_t size = read(output.get(), piece, sizeof piece); size > 0)
                printed.append(piece, static_cast<std::size_t>(size));
    });
    support::waitFor(pid, std::chrono::seconds(30), exitCode);
    reader.join();
    EXPECT_EQ(exitCode, 0) << support::contentOf(errors);
    EXPECT_EQ(printed, filler + sqlcmd({"-?"}).output);
}

// A SQL Server Browser on this host.
TEST(Program, ListsTheServersThatAnswer) {
    const Descriptor service(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(1434);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(bind(service.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    std::thread answers([&] {
        for (int i = 0; i < 2; ++i) {
            char question[64];
            sockaddr_in client{};
            socklen_t length = sizeof client;
            const auto size = recvfrom(service.get(), question, sizeof question, 0,
                                       reinterpret_cast<sockaddr*>(&client), &length);
            const std::string list = "ServerName;BOX;InstanceName;ONE;;";
            const std::string answer =
                size == 1 ? "\5" + std::string{static_cast<char>(list.size()), '\0'} + list
                          : std::string("\5\6\0\1\1\0", 6);  // port 1 of the administrator connection
            sendto(service.get(), answer.data(), answer.size(), 0, reinterpret_cast<sockaddr*>(&client),
                   length);
        }
    });
    EXPECT_EQ(sqlcmd({"-Lc"}).output, "BOX\\ONE\n");
    const auto admin = sqlcmd({"-A", "-S", "127.0.0.1\\ONE", "-U", "u", "-P", "p"});
    EXPECT_NE(admin.errors.find("Unable to connect"), std::string::npos) << admin.errors;
    answers.join();
}

TEST(Program, HidesThePasswordFromTheProcessList) {
    const support::ListeningSocket silent;
    const Descriptor nothing = support::memoryFile(), output = support::memoryFile(),
                     errors = support::memoryFile();
    const pid_t pid =
        support::spawn({SQLCMD_PROGRAM, "-S", silent.server(), "-U", "sa", "-P", "secret", "-Q", "select 1"},
                       {}, {nothing.get(), output.get(), errors.get()});
    pollfd client{silent.descriptor.get(), POLLIN, 0};
    ASSERT_EQ(poll(&client, 1, 30'000), 1);
    const std::string commandLine = support::readFile("/proc/" + std::to_string(pid) + "/cmdline");
    EXPECT_NE(commandLine.find("select 1"), std::string::npos);
    EXPECT_EQ(commandLine.find("secret"), std::string::npos);
    kill(pid, SIGKILL);
    int exitCode = 0;
    support::waitFor(pid, std::chrono::seconds(10), exitCode);
}

TEST(Program, StopsLoggingInAtItsTimeout) {
    const support::ListeningSocket silent;
    const support::TempDir folder;
    const auto result = sqlcmd(
        {"-S", silent.server(), "-U", "sa", "-P", "x", "-l", "1", "-Q", "select 1", "-o", folder / "out"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.errors.starts_with("Sqlcmd: Error: Sqlcmd : the server does not send"))
        << result.errors;
    EXPECT_EQ(support::readFile(folder / "out"), result.errors);
}

}  // namespace
