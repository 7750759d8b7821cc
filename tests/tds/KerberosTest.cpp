// Windows authentication, with a KDC of the test's own.
#include <gssapi/gssapi_ext.h>
#include <gssapi/gssapi_krb5.h>
#include <gtest/gtest.h>

#include "ByteReader.h"
#include "RawClient.h"
#include "Realm.h"
#include "TsqlBox.h"

namespace support {
namespace {

constexpr std::uint8_t kLogin7 = 16, kSspiMessage = 17;
constexpr char kSspiToken = '\xED';

class Kerberos : public testing::Test {
  protected:
    Kerberos() { realm.addService(box.port()); }
    std::string service() const { return "MSSQLSvc/localhost:" + std::to_string(box.port()); }

    const Realm realm;
    TsqlBox box{{"--keytab", realm.keytab()}};
};

TEST_F(Kerberos, FreeTdsLogsInWithoutAPassword) {
    const std::string port = std::to_string(box.port());
    const std::string odbc = "Driver=FreeTDS;TDS_Version=7.4;Port=" + port + ";Server=";
    const std::pair<std::vector<std::string>, bool> cases[] = {
        {{"tsql", "-H", "localhost", "-p", port, "-o", "q"}, true},
        {{"tsql", "-H", "127.0.0.1", "-p", port, "-o", "q"}, false},  // no principal has this name
        {{"isql", "-b", "-k", odbc + "localhost;Trusted_Connection=yes"}, true},
        {{"isql", "-b", "-k", odbc + "localhost"}, true},  // neither this nor a user name
        {{"isql", "-b", "-k", odbc + "127.0.0.1;Trusted_Connection=yes"}, false},
        {{"isql", "-b", "-k", odbc + "127.0.0.1;Trusted_Connection=yes;ServerSPN=" + service()}, true},
    };
    ProgramOptions options;
    options.input = "SELECT SUSER_SNAME()\nGO\n";
    for (const std::string name : {"person", "other"}) {
        realm.logIn(name);
        for (const auto& [client, logsIn] : cases) {
            const ProgramResult result = runProgram(client, options);
            EXPECT_EQ(result.output.find(name + "@EXAMPLE.TEST") != std::string::npos, logsIn)
                << client[0] << " " << client[3] << result.output << result.errors << box.errors();
        }
    }
}

// The client's side of a GSSAPI login.
class GssLogin {
  public:
    GssLogin(const std::string& service, gss_OID mechanism, OM_uint32 flags)
        : m_mechanism(mechanism), m_flags(flags) {
        gss_buffer_desc text{service.size(), const_cast<char*>(service.data())};
        gss_import_name(&m_minor, &text, GSS_KRB5_NT_PRINCIPAL_NAME, &m_service);
    }
    ~GssLogin() {
        gss_delete_sec_context(&m_minor, &m_context, GSS_C_NO_BUFFER);
        gss_release_name(&m_minor, &m_service);
    }
    GssLogin(const GssLogin&) = delete;
    GssLogin& operator=(const GssLogin&) = delete;

    // Returns the token that follows the server's.
    std::string next(std::string_view received) {
        gss_buffer_desc in{received.size(), const_cast<char*>(received.data())};
        gss_buffer_desc out = GSS_C_EMPTY_BUFFER;
        gss_init_sec_context(&m_minor, GSS_C_NO_CREDENTIAL, &m_context, m_service, m_mechanism, m_flags, 0,
                             GSS_C_NO_CHANNEL_BINDINGS, &in, nullptr, &out, nullptr, nullptr);
        const std::string token(static_cast<char*>(out.value), out.length);
        gss_release_buffer(&m_minor, &out);
        return token;
    }

  private:
    const gss_OID m_mechanism;
    const OM_uint32 m_flags;
    OM_uint32 m_minor = 0;
    gss_name_t m_service = GSS_C_NO_NAME;
    gss_ctx_id_t m_context = GSS_C_NO_CONTEXT;
};

// Sends tokens of GSSAPI until the server accepts or refuses the login, and returns its last response.
std::string logIn(int port, const std::string& service, gss_OID mechanism, OM_uint32 flags, bool longLength) {
    GssLogin gss(service, mechanism, flags);
    const std::string token = gss.next({});
    std::string login = loginPacket({}, {});
    const auto put = [&](std::size_t place, std::size_t value) {
        login[place] = static_cast<char>(value);
        login[place + 1] = static_cast<char>(value >> 8);
    };
    constexpr std::size_t kLength = 0, kFlags2 = 25, kSspi = 78, kSspiLength = 80, kLongLength = 90;
    login[kFlags2] = '\x80';
    put(kSspi, login.size());
    put(kSspiLength, longLength ? 0xFFFF : token.size());
    put(kLongLength, longLength ? token.size() : 0);
    login += token;
    put(kLength, login.size());
    RawClient client(port);
    client.send(packet(kLogin7, login));
    std::string response = client.response();
    for (std::string answer; !response.empty() && response[0] == kSspiToken;) {
        tds::ByteReader reader(std::string_view(response).substr(1));
        answer = gss.next(reader.bytes(reader.u16()));
        if (!reader.atEnd()) break;
        client.send(packet(kSspiMessage, answer));
        response = client.response();
    }
    return response;
}

TEST_F(Kerberos, ServerAcceptsBareAndNegotiatedTokensInAnyNumberOfSteps) {
    realm.logIn("person");
    gss_OID_desc spnego{6, const_cast<char*>("\x2b\x06\x01\x05\x05\x02")};
    constexpr OM_uint32 kMutual = GSS_C_MUTUAL_FLAG, kThreeSteps = kMutual | GSS_C_DCE_STYLE;
    constexpr unsigned kError = 2;
    const struct {
        std::string service;
        gss_OID mechanism;
        OM_uint32 flags;
        bool longLength;
        unsigned status;
    } cases[] = {{service(), gss_mech_krb5, 0, false, 0},
                 {service(), gss_mech_krb5, kMutual, false, 0},
                 {service(), gss_mech_krb5, kThreeSteps, false, 0},
                 {service(), &spnego, kMutual, true, 0},
                 {service(), &spnego, kThreeSteps, false, 0},
                 {"MSSQLSvc/nowhere", &spnego, kMutual, false, kError}};  // no ticket: an empty token
    for (const auto& c : cases)
        EXPECT_EQ(finalStatus(logIn(box.port(), c.service, c.mechanism, c.flags, c.longLength)), c.status)
            << c.service << " " << c.flags << "\n"
            << box.errors();
}

}  // namespace
}  // namespace support
