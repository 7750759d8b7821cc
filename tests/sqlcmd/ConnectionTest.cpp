#include "client/Connection.h"

#include <gtest/gtest.h>

#include "client/ServerBrowser.h"

using namespace sqlcmd;

namespace {

Options optionsFor(std::string_view server, std::string_view password) {
    Options options;
    options.server = server;
    options.user = "u";
    options.password = password;
    return options;
}

TEST(ConnectionString, NamesTheServerInTheFormOfEachDriver) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"host", "Server=host;", "Server=tcp:host;"},
        {"tcp:host,1500", "Server=host;Port=1500;", "Server=tcp:host,1500;"},
        {"host\\inst", "Server=host\\inst;", "Server=tcp:host\\inst;"},
        {"host\\inst, 1500", "Server=host;Port=1500;", "Server=tcp:host\\inst,1500;"},
        {"[::1],1500", "Server=::1;Port=1500;", "Server=tcp:[::1],1500;"},
        {"host,65535", "Server=host;Port=65535;", "Server=tcp:host,65535;"},
        {".", "Server=localhost;", "Server=tcp:localhost;"},
    };
    for (const auto& [server, freeTds, microsoft] : cases) {
        const Options options = optionsFor(server, "p");
        EXPECT_EQ(connectionString(options, "FreeTDS"),
                  "DRIVER={FreeTDS};" + std::string(freeTds) +
                      "APP=SQLCMD;TDS_Version=7.4;ClientCharset=UTF-8;UID={u};PWD={p};");
        EXPECT_EQ(connectionString(options, "ODBC Driver 18 for SQL Server"),
                  "DRIVER={ODBC Driver 18 for SQL Server};" + std::string(microsoft) +
                      "APP=SQLCMD;UID={u};PWD={p};");
    }
}

TEST(ConnectionString, BracesPasswords) {
    const std::string text = connectionString(optionsFor("h", "a;b}c="), "/opt/libtdsodbc.so");
    EXPECT_TRUE(text.ends_with("PWD={a;b}c=};")) << text;
    EXPECT_TRUE(connectionString(optionsFor("h", "a;}b"), "Other").ends_with("PWD={a;}}b};"));
    EXPECT_THROW(connectionString(optionsFor("h", "a};b"), "FreeTDS"), ToolError);
}

TEST(ServerName, RejectsInvalidNames) {
    for (const char* text :
         {"", ",1", "h,", "h,0", "h,65536", "h,1x", "h\\", "np:h", "h:1433", "h;UID=x", "{h}", "[::1"})
        EXPECT_THROW(parseServerName(text), UsageError) << text;
}

TEST(ServerBrowser, ReadsResponses) {
    using Names = std::vector<std::string>;
    const auto response = [](const std::string& data, int sizeError = 0) {
        const auto size = static_cast<int>(data.size()) + sizeError;
        return "\5" + std::string{static_cast<char>(size & 0xFF), static_cast<char>(size >> 8)} + data;
    };
    const std::string two =
        "ServerName;H;InstanceName;MSSQLSERVER;IsClustered;No;Version;15.0;tcp;1433;;"
        "ServerName;H;InstanceName;A;Version;15.0;;";
    const std::pair<std::string, Names> cases[] = {
        {response(two), {"H", "H\\A"}},
        {response(two, -10), {"H", "H\\A"}},
        {response(two, 1000), {"H", "H\\A"}},
        {response("InstanceName;A;;"), {}},
        {response("ServerName;H;InstanceName;A\x1B[m;;"), {}},
        {response("ServerName"), {}},
        {response(";;;;"), {}},
        {"\6\1\1x", {}},
        {"\5", {}},
        {"", {}},
    };
    for (const auto& [bytes, names] : cases) EXPECT_EQ(serversIn(bytes), names) << bytes;
}

}  // namespace
