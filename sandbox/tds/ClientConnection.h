// One client from its first packet to its last: login, then requests until it leaves.
#pragma once

#include <chrono>
#include <memory>

#include "Credentials.h"
#include "Engine.h"
#include "PacketChannel.h"
#include "PreparedStatements.h"
#include "Response.h"

namespace tds {

struct Login;

struct ConnectionSettings {
    const Credentials& credentials;
    std::string serverName;
    std::chrono::milliseconds loginLimit{15'000};
    std::chrono::milliseconds refusalDelay{250};  // before a wrong password is answered
};

class ClientConnection {
  public:
    // socket: connected, stays the caller's. All must outlive the connection.
    ClientConnection(int socket, int sessionId, tsql::Engine& engine, const ConnectionSettings& settings);

    // Serves the client until it leaves or its socket is shut down; does not throw.
    // What ended it other than the client's leaving is written to standard error.
    void run() noexcept;

  private:
    bool logIn();
    Login readLogin();
    std::optional<tsql::Message> refusalOf(const Login& login);
    void greet(const Login& login);
    void serveRequests();
    bool serve(const Request& request);
    void resetSession(Request::Reset reset);
    bool runCalls(ByteView body);
    bool runCall(tsql::ProcedureCall call);
    void sendOutputs(const CallPlan& plan);
    template <typename Work>
    bool run(Work work);
    ByteView withoutHeaders(ByteView data) const;

    tsql::Engine& m_engine;
    const ConnectionSettings& m_settings;
    int m_sessionId;
    PacketChannel m_channel;
    Response m_response;
    tsql::Client m_client;
    std::string m_initialDatabase;
    std::unique_ptr<tsql::Session> m_session;
    PreparedStatements m_prepared;
};

}  // namespace tds
