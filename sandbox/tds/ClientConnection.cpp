#include "ClientConnection.h"

#include <cstdio>
#include <thread>

#include "Requests.h"

namespace tds {
namespace {

constexpr std::string_view kDefaultDatabase = "master";
constexpr std::string_view kLanguage = "us_english";

}  // namespace

ClientConnection::ClientConnection(int socket, int sessionId, const ConnectionSettings& settings,
                                   std::function<void()> loginArrived)
    : m_settings(settings),
      m_sessionId(sessionId),
      m_loginArrived(std::move(loginArrived)),
      m_channel(socket, static_cast<std::uint16_t>(sessionId)),
      m_response(m_channel, settings.serverName) {}

void ClientConnection::run() noexcept {
    try {
        m_channel.setLoginDeadline(PacketChannel::Clock::now() + m_settings.loginLimit);
        if (!logIn()) return;
        while (serveRequest(m_channel.readRequest())) continue;
    } catch (const ConnectionClosed&) {
        // The normal end: clients leave without a message.
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "session %d ended: %s\n", m_sessionId, problem.what());
    }
}

bool ClientConnection::logIn() {
    Login login = readLogin();
    m_loginArrived();
    m_response.setVersion(login.version);
    try {
        checkLogin(login);
        m_session = tsql::openSession(m_settings.engine, m_client, m_initialDatabase, m_sessionId);
    } catch (const tsql::SqlError& error) {
        refuseLogin(login, error);
        return false;
    }
    acceptLogin(login);
    return true;
}

Login ClientConnection::readLogin() {
    Request request = m_channel.readRequest();
    Encryption encryption = negotiate(m_settings.encryption, Encryption::None);
    if (request.type == PacketType::Prelogin) {
        encryption = negotiate(m_settings.encryption, parsePrelogin(request.data));
        Bytes reply = preloginReply(encryption);
        m_channel.send(reply, PacketChannel::Extent::AllAndEnd);
        if (encryption != Encryption::None) m_channel.startTls(*m_settings.tls);
        request = m_channel.readRequest();
    } else if (encryption != Encryption::None) {
        throw ProtocolError("the client did not start TLS, which the server requires");
    }
    if (request.type != PacketType::Login7) throw ProtocolError("the client did not send a login");
    if (encryption == Encryption::Login) m_channel.endTls();
    return parseLogin(request.data);
}

// Throws SqlError if the client may not log in.
void ClientConnection::checkLogin(Login& login) {
    const bool isIntegrated = !login.sspi.empty();
    if (isIntegrated && (m_settings.keytab == nullptr || !authenticate(login)))
        throw tsql::sqlError(tsql::kUntrustedLogin);
    if (!isIntegrated && !m_settings.credentials.match(login.userName, login.password))
        throw tsql::sqlError(tsql::kLoginFailed, {login.userName});
    m_client = {login.userName, login.hostName, login.programName};
    m_initialDatabase = login.database.empty() ? kDefaultDatabase : login.database;
}

// Windows authentication: exchanges tokens with the client until its principal is known, which becomes the
// name of the login. The client does not learn why it is refused.
bool ClientConnection::authenticate(Login& login) {
    try {
        SspiContext context(*m_settings.keytab);
        m_response.sspi(context.accept(login.sspi));
        while (context.client().empty()) {
            m_response.finishLoginStep();
            const Request request = m_channel.readRequest();
            if (request.type != PacketType::SspiMessage)
                throw ProtocolError("the client did not continue its Windows authentication");
            m_response.sspi(context.accept(request.data));
        }
        login.userName = context.client();
        return true;
    } catch (const SspiError& problem) {
        std::fprintf(stderr, "session %d: %s\n", m_sessionId, problem.what());
        return false;
    }
}

void ClientConnection::refuseLogin(const Login& login, const tsql::SqlError& error) {
    std::this_thread::sleep_for(m_settings.refusalDelay);  // slows down the guessing of passwords
    m_response.message(asMessage(error));
    if (error.number != tsql::kLoginFailed && error.number != tsql::kUntrustedLogin)
        m_response.message(asMessage(tsql::sqlError(tsql::kLoginFailed, {login.userName})));
    m_response.finish();
}

void ClientConnection::acceptLogin(const Login& login) {
    const std::string database(m_session->database());
    m_response.textChange(EnvChange::Database, database, kDefaultDatabase);
    m_response.message(asMessage(tsql::sqlError(tsql::kDatabaseChanged, {database}, /*state=*/2)));
    m_response.binaryChange(EnvChange::Collation, kCollation);
    m_response.textChange(EnvChange::Language, kLanguage, {});
    m_response.message(asMessage(tsql::sqlError(tsql::kLanguageChanged, {kLanguage})));
    m_response.loginAck();
    m_response.textChange(EnvChange::PacketSize, std::to_string(login.packetSize),
                          std::to_string(kDefaultPacketSize));
    m_response.finish();
    m_channel.finishLogin(login.packetSize);
}

// Returns false when the session has ended.
bool ClientConnection::serveRequest(const Request& request) {
    const bool resets = (request.status & kStatusReset) != 0;
    if (resets || (request.status & kStatusResetKeepTransaction) != 0) resetSession(!resets);
    if (request.type == PacketType::Attention) {
        m_response.acknowledgeAttention();
        return true;
    }
    const bool sessionContinues = reportErrors([&] { return execute(request); });
    m_response.finish();
    return sessionContinues;
}

bool ClientConnection::execute(const Request& request) {
    if (request.isIgnored) {
        m_response.refuse();
        return true;
    }
    if (request.isTooLong)
        throw tsql::SqlError(tsql::kUserDefined,
                             "The request is too long. A batch or procedure call may have 64 MiB.");
    if (request.type == PacketType::BulkLoad)
        return m_session->insertBulk(
            [&](const auto& handler) { sendBulkRows(request.data, m_response.version(), handler); },
            m_response);
    const ByteView body = withoutHeaders(request.data);
    if (request.type == PacketType::Rpc) return runCalls(body);
    const bool isText = request.type == PacketType::SqlBatch;
    return m_session->runBatch(isText ? utf8FromUtf16(body) : transactionBatch(body), m_response);
}

// Since TDS 7.2 each request starts with ALL_HEADERS, [MS-TDS] 2.2.5.3, whose first field is its length.
ByteView ClientConnection::withoutHeaders(ByteView data) const {
    constexpr std::uint32_t kLengthField = 4;
    if (m_response.version() < Version::V72) return data;
    const std::uint32_t length = ByteReader(data).u32();
    if (length < kLengthField || length > data.size())
        throw ProtocolError("the headers of a request are longer than the request");
    return data.substr(length);
}

// Connection pools ask for this before they reuse a connection.
void ClientConnection::resetSession(bool keepsTransaction) {
    const std::string previous(m_session->database());
    if (!keepsTransaction || !m_session->resetAroundTransaction(m_initialDatabase)) {
        m_session.reset();  // frees what the new session may need, such as locks
        m_session = tsql::openSession(m_settings.engine, m_client, m_initialDatabase, m_sessionId);
    }
    m_response.binaryChange(EnvChange::ResetAcknowledged);
    if (previous != m_initialDatabase) m_response.databaseChanged(previous, m_initialDatabase);
}

// Runs a step and sends its errors to the client. Only an internal error ends the session: the function then
// returns false. Errors of the connection itself are rethrown.
bool ClientConnection::reportErrors(const std::function<bool()>& work) {
    try {
        return work();
    } catch (const tsql::SqlError& problem) {
        m_response.message(asMessage(problem));
        return true;
    } catch (const ConnectionClosed&) {
        throw;
    } catch (const ProtocolError&) {
        throw;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "session %d: %s\n", m_sessionId, problem.what());
        const std::string text = std::string("Internal error of tsqlbox: ") + problem.what();
        m_response.message(tsql::asMessage({tsql::kUserDefined, text, tsql::kFatalSeverity}));
        return false;
    }
}

bool ClientConnection::runCalls(ByteView body) {
    for (tsql::ProcedureCall& call : parseRpc(body)) {
        m_response.beginCall();
        const auto run = [&] {
            if (!m_session->call(call, m_response)) return false;
            m_response.returnStatus(call.status);
            for (const auto& argument : call.arguments)
                if (argument.output)
                    m_response.returnValue(&argument - call.arguments.data(), argument.name, argument.type,
                                           tsql::viewOf(argument.value));
            return true;
        };
        if (!reportErrors(run)) return false;
        m_response.endCall();
        if (call.aborted || m_response.attention()) break;
    }
    return true;
}

}  // namespace tds
