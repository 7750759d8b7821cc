// Encrypted connections, with the bytes on the wire.
#include <gtest/gtest.h>

#include "ByteWriter.h"
#include "OdbcClient.h"
#include "Proxy.h"
#include "ServerProcess.h"

namespace support {
namespace {

const Certificates& certificates() {
    static const Certificates all;
    return all;
}

// A freetds.conf with one server, "box", whose certificate is verified.
std::string configuration(const TempDir& folder, int port, const std::string& host = "localhost") {
    const std::string file = folder / "freetds.conf";
    writeFile(file, "[box]\nhost = " + host + "\nport = " + std::to_string(port) +
                        "\ntds version = 7.4\nencryption = require\nca file = " +
                        certificates().file("ca.pem") + "\n");
    return file;
}

TEST(Tls, EncryptsWhatServerAndClientAgreeOn) {
    enum Seen { kNothing = 0, kLogin = 1, kBatch = 2, kBoth = 3, kRefused = 4 };
    struct Case {
        std::string server;
        Seen off, request, require;  // readable on the wire, by the client's setting
    };
    const Case cases[] = {{"none", kBoth, kBoth, kRefused},
                          {"login", kBoth, kBatch, kNothing},
                          {"on", kBoth, kNothing, kNothing},
                          {"required", kNothing, kNothing, kNothing}};
    for (const Case& c : cases) {
        const TsqlBox box(certificates().options("good", {"--encryption", c.server}));
        for (const auto& [client, expected] :
             {std::pair("off", c.off), {"request", c.request}, {"require", c.require}}) {
            SCOPED_TRACE(c.server + ", client: " + client);
            const Proxy proxy(box.port());
            std::string connection = box.odbcConnectionString() + ";Encryption=" + client;
            connection.replace(connection.find(std::to_string(box.port())), std::to_string(box.port()).size(),
                               std::to_string(proxy.port()));
            try {
                EXPECT_EQ(OdbcClient(connection).value("SELECT 'secret' AS s"), "secret");
            } catch (const std::runtime_error&) {
                EXPECT_EQ(expected, kRefused);
                continue;
            }
            const auto isReadable = [wire = proxy.wire()](const std::string& text) {
                return wire.find(tds::utf16FromUtf8(text)) != std::string::npos;
            };
            EXPECT_EQ(isReadable(box.login()), (expected & kLogin) != 0);
            EXPECT_EQ(isReadable("SELECT 'secret'"), (expected & kBatch) != 0);
        }
    }
}

TEST(Tls, CarriesEveryPacketSizeAndLongResults) {
    const TsqlBox box(certificates().options("good"));
    for (const std::string size : {"512", "4096", "32767"}) {
        OdbcClient client(box.odbcConnectionString() + ";Encryption=require;PacketSize=" + size);
        EXPECT_EQ(client.value("SELECT LEN(REPLICATE(CAST(N'x' AS nvarchar(max)), 100000))"), "100000");
        const std::string rows = "WITH n AS (SELECT 1 AS i UNION ALL SELECT i + 1 FROM n WHERE i < 20000) ";
        EXPECT_EQ(client.run(rows + "SELECT i, REPLICATE('y', 100) FROM n OPTION (MAXRECURSION 0)").size(),
                  20'000U);
        EXPECT_EQ(client.value("SELECT '" + std::string(200'000, 'z') + "'"), std::string(200'000, 'z'));
    }
}

TEST(Tls, HundredsOfConnectionsAtATime) {
    const TsqlBox box(certificates().options("good"));
    std::vector<std::unique_ptr<OdbcClient>> clients;
    for (int i = 0; i < 200; ++i)
        clients.push_back(std::make_unique<OdbcClient>(box.odbcConnectionString() + ";Encryption=require"));
    for (const auto& client : clients) EXPECT_EQ(client->value("SELECT 7"), "7");
}

// FreeTDS reads the authority from its configuration file only.
TEST(Tls, FreeTdsSendsThePasswordOnlyToAVerifiedServer) {
    const std::tuple<std::string, std::string, bool> cases[] = {
        {"good", "localhost", true},     {"good", "127.0.0.1", false},  {"other-host", "localhost", false},
        {"expired", "localhost", false}, {"early", "localhost", false}, {"unknown", "localhost", false}};
    for (const auto& [certificate, host, isTrusted] : cases) {
        SCOPED_TRACE(certificate + " for " + host);
        const TsqlBox box(certificates().options(certificate));
        const TempDir folder;
        ProgramOptions options;
        options.environment = {"FREETDSCONF=" + configuration(folder, box.port(), host)};
        options.input = "SELECT 6 * 7\nGO\n";
        const std::vector<std::string> clients[] = {
            {"tsql", "-S", "box", "-U", box.login(), "-P", box.password(), "-o", "q"},
            {"isql", "-b", "-k", "Driver=FreeTDS;Servername=box;UID=sa;PWD={" + box.password() + "};"}};
        for (const std::vector<std::string>& client : clients) {
            const ProgramResult result = runProgram(client, options);
            EXPECT_EQ(result.output.find("42") != std::string::npos, isTrusted)
                << client[0] << result.output << result.errors;
        }
    }
}

TEST(Tls, SpeaksTheVersionsOfTheServerAndSurvivesOtherClients) {
    const std::tuple<std::string, std::string, std::string> cases[] = {{"1.2", "TLSv1_1", ""},
                                                                       {"1.2", "TLSv1_2", "TLSv1.2\n"},
                                                                       {"1.2", "TLSv1_3", ""},
                                                                       {"1.3", "TLSv1_2", "TLSv1.2\n"},
                                                                       {"1.3", "TLSv1_3", "TLSv1.3\n"}};
    const auto run = [](const TsqlBox& box, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"python3", TDS_CLIENTS "/tls_client.py",
                                             std::to_string(box.port()), certificates().file("ca.pem")});
        return runProgram(arguments);
    };
    for (const auto& [newest, clients, output] : cases) {
        SCOPED_TRACE(newest + ", client: " + clients);
        const TsqlBox box(certificates().options("good", {"--tls-max", newest}));
        EXPECT_EQ(run(box, {clients}).output, output);
        EXPECT_EQ(run(box, {"TLSv1_2", "cut"}).exitCode, 0);
        OdbcClient client(box.odbcConnectionString() + ";Encryption=off");
        EXPECT_EQ(client.value("SELECT 1"), "1");
    }
    TsqlBox required(certificates().options("good", {"--encryption", "required"}));
    RawClient plain(required.port());
    plain.send(packet(kLogin7, loginPacket(required.login(), required.password())));
    EXPECT_TRUE(plain.isClosed());
    EXPECT_NE(required.errors().find("which the server requires"), std::string::npos);
}

TEST(Tls, OtherClientsLogIn) {
    const TsqlBox box(certificates().options("good", {"--encryption", "required"}));
    const std::string script =
        "import sys, pymssql\n"
        "c = pymssql.connect(server='127.0.0.1', port=sys.argv[1], user='sa', password=sys.argv[2],"
        " tds_version='7.3').cursor()\n"
        "c.execute('SELECT 6 * 7')\nprint(c.fetchall())";
    const ProgramResult result =
        runProgram({"/usr/bin/python3", "-c", script, std::to_string(box.port()), box.password()});
    EXPECT_EQ(result.output, "[(42,)]\n") << result.errors;
}

TEST(Tls, SelfSignedCertificateIsKeptWhileItIsValidForTheNames) {
    const TempDir folder;
    const std::string file = folder / "cert.pem";
    const auto certificateFor = [&](const std::string& names) {
        const TsqlBox box({"--tls-cert", file, "--tls-key", folder / "key.pem", "--tls-self-signed", names});
        OdbcClient client(box.odbcConnectionString() + ";Encryption=require");
        EXPECT_EQ(client.value("SELECT 1"), "1");
        return readFile(file);
    };
    const std::string first = certificateFor("localhost,127.0.0.1");
    EXPECT_EQ(certificateFor("localhost"), first);
    EXPECT_NE(certificateFor("db.example.org"), first);
    std::filesystem::copy_file(certificates().file("good.key"), folder / "key.pem",
                               std::filesystem::copy_options::overwrite_existing);
    const std::string second = readFile(file);
    EXPECT_NE(certificateFor("db.example.org"), second) << "the key is not the certificate's";
    EXPECT_EQ(std::filesystem::status(folder / "key.pem").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

}  // namespace
}  // namespace support
