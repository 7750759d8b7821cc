// A client's connection, from its first packet to its last: login, then requests.
#pragma once

#include "Credentials.h"
#include "Login.h"
#include "Response.h"
#include "Sspi.h"
#include "execute/Engine.h"

namespace tds {

struct ConnectionSettings {
    tsql::Engine& engine;
    const Credentials& credentials;
    std::string serverName;
    Encryption encryption = Encryption::None;
    TlsContext tls;                  // not null unless the mode is None
    std::unique_ptr<Keytab> keytab;  // null: Windows authentication is refused
    std::chrono::milliseconds loginLimit{15'000};
    std::chrono::milliseconds refusalDelay{250};  // before a refused login is answered
};

class ClientConnection {
  public:
    // The caller owns the connected socket. All arguments must outlive the connection. `loginArrived` is
    // called when the client has sent its login.
    ClientConnection(int socket, int sessionId, const ConnectionSettings& settings,
                     std::function<void()> loginArrived);

    // Serves the client until it leaves or its socket is shut down. Any other end is reported on standard
    // error.
    void run() noexcept;

  private:
    bool logIn();
    Login readLogin();
    void checkLogin(Login& login);
    bool authenticate(Login& login);
    void acceptLogin(const Login& login);
    void refuseLogin(const Login& login, const tsql::SqlError& error);
    bool serveRequest(const Request& request);
    bool execute(const Request& request);
    void resetSession(bool keepsTransaction);
    bool runCalls(ByteView body);
    bool reportErrors(const std::function<bool()>& work);
    ByteView withoutHeaders(ByteView data) const;

    const ConnectionSettings& m_settings;
    int m_sessionId;
    std::function<void()> m_loginArrived;
    PacketChannel m_channel;
    Response m_response;
    tsql::Client m_client;
    std::string m_initialDatabase;
    std::unique_ptr<tsql::Session> m_session;
};

}  // namespace tds
