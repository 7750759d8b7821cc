#include "ClientConnection.h"

#include <algorithm>
#include <cstdio>
#include <thread>

#include "Login.h"
#include "Prelogin.h"
#include "Rpc.h"
#include "TransactionRequest.h"

namespace tds {
namespace {

constexpr std::string_view kDefaultDatabase = "master";

constexpr int kLoginFailed = 18456;
constexpr int kIntegratedLoginFailed = 18452;
constexpr int kCannotOpenDatabase = 4060;
constexpr int kDatabaseContextChanged = 5701;
constexpr int kLanguageChanged = 5703;
constexpr int kValueNotConvertible = 8114;
constexpr int kNotPrepared = 8180;
constexpr int kInternalError = 50000;

tsql::Message error(int number, int severity, std::string text) {
    return {number, severity, 1, 1, {}, std::move(text)};
}

tsql::Message loginFailed(const Login& login) {
    return error(kLoginFailed, 14, "Login failed for user '" + login.userName + "'.");
}

}  // namespace

ClientConnection::ClientConnection(int socket, int sessionId, tsql::Engine& engine,
                                   const ConnectionSettings& settings)
    : m_engine(engine),
      m_settings(settings),
      m_sessionId(sessionId),
      m_channel(socket, static_cast<std::uint16_t>(sessionId)),
      m_response(m_channel, settings.serverName) {}

void ClientConnection::run() noexcept {
    try {
        m_channel.setLoginDeadline(PacketChannel::Clock::now() + m_settings.loginLimit);
        if (logIn()) serveRequests();
    } catch (const ConnectionClosed&) {
        // The client's good right.
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "session %d ended: %s\n", m_sessionId, problem.what());
    }
}

// ---- Login ----------------------------------------------------------------------------------------

bool ClientConnection::logIn() {
    const Login login = readLogin();
    m_response.setVersion(login.version);
    const auto refusal = refusalOf(login);
    if (!refusal) {
        greet(login);
        return true;
    }
    std::this_thread::sleep_for(m_settings.refusalDelay);
    m_response.message(*refusal);
    if (refusal->number != kLoginFailed) m_response.message(loginFailed(login));
    m_response.finish();
    return false;
}

Login ClientConnection::readLogin() {
    Request request = m_channel.readRequest();
    if (request.type == PacketType::Prelogin) {
        Bytes reply = preloginReply(request.data);
        m_channel.sendLast(reply);
        request = m_channel.readRequest();
    }
    if (request.type != PacketType::Login7) throw ProtocolError("the login is missing");
    return parseLogin(request.data);
}

std::optional<tsql::Message> ClientConnection::refusalOf(const Login& login) {
    if (login.integrated)
        return error(kIntegratedLoginFailed, 14,
                     "Login failed. Only logins with a name and a password are accepted here.");
    if (!m_settings.credentials.match(login.userName, login.password)) return loginFailed(login);
    m_client = {login.userName, login.hostName, login.programName};
    m_initialDatabase = login.database.empty() ? kDefaultDatabase : login.database;
    if (m_engine.storage.exists(m_initialDatabase)) return std::nullopt;
    return error(
        kCannotOpenDatabase, 11,
        "Cannot open database \"" + m_initialDatabase + "\" requested by the login. The login failed.");
}

void ClientConnection::greet(const Login& login) {
    m_session = std::make_unique<tsql::Session>(m_engine, m_client, m_initialDatabase, m_sessionId);
    const std::string database(m_session->database());
    m_response.textChange(EnvChange::Database, database, kDefaultDatabase);
    m_response.message(
        {kDatabaseContextChanged, 0, 2, 1, {}, "Changed database context to '" + database + "'."});
    m_response.binaryChange(EnvChange::Collation, kCollation);
    m_response.textChange(EnvChange::Language, "us_english", {});
    m_response.message({kLanguageChanged, 0, 1, 1, {}, "Changed language setting to us_english."});
    m_response.loginAck();
    m_response.textChange(EnvChange::PacketSize, std::to_string(login.packetSize), "4096");
    m_response.finish();
    m_channel.setPacketSize(login.packetSize);
    m_channel.loginIsDone();
}

// ---- Requests ---------------------------------------------------------------------------------------

void ClientConnection::serveRequests() {
    while (serve(m_channel.readRequest())) continue;
}

// False when the session is over.
bool ClientConnection::serve(const Request& request) {
    if (request.reset != Request::Reset::None) resetSession(request.reset);
    if (request.type == PacketType::Attention) {
        m_response.acknowledgeAttention();
        return true;
    }
    if (request.isTakenBack) {
        m_response.refuse();
        return true;
    }
    const bool goesOn = run([&] {
        if (request.isTooLong)
            throw tsql::SqlError(kInternalError,
                                 "The request is longer than tsqlbox takes at once (64 MiB).");
        switch (request.type) {
            case PacketType::SqlBatch:
                return m_session->runBatch(utf8FromUtf16(withoutHeaders(request.data)), m_response);
            case PacketType::Rpc:
                return runCalls(withoutHeaders(request.data));
            default:
                return m_session->runBatch(transactionBatch(withoutHeaders(request.data)), m_response);
        }
    });
    m_response.finish();
    return goesOn;
}

// Since 7.2 each request starts with headers, whose total length stands first: 2.2.5.3.
ByteView ClientConnection::withoutHeaders(ByteView data) const {
    if (m_response.version() < Version::V72) return data;
    const std::uint32_t length = ByteReader(data).u32();
    if (length < 4 || length > data.size())
        throw ProtocolError("a request's headers are longer than the request");
    return data.substr(length);
}

// What a connection pool asks for when it hands a connection on.
void ClientConnection::resetSession(Request::Reset reset) {
    const std::string before(m_session->database());
    const bool keeps = reset == Request::Reset::AroundTransaction;
    if (!keeps || !m_session->resetAroundTransaction(m_initialDatabase)) {
        m_session.reset();
        m_session = std::make_unique<tsql::Session>(m_engine, m_client, m_initialDatabase, m_sessionId);
    }
    m_prepared = {};
    m_response.binaryChange(EnvChange::ResetAcknowledged);
    if (before != m_initialDatabase) m_response.databaseChanged(before, m_initialDatabase);
}

// What fails is told to the client, which is all that may be lost: but for a fault of the server's own the
// session goes on.
template <typename Work>
bool ClientConnection::run(Work work) {
    try {
        return work();
    } catch (const tsql::SqlError& problem) {
        m_response.message({problem.number, problem.severity, problem.state, 1, {}, problem.what()});
        return true;
    } catch (const ValueError& problem) {
        m_response.message(error(kValueNotConvertible, 16, problem.what()));
        return true;
    } catch (const ConnectionClosed&) {
        throw;
    } catch (const ProtocolError&) {
        throw;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "session %d: %s\n", m_sessionId, problem.what());
        m_response.message(
            error(kInternalError, 20, std::string("The server failed at this batch: ") + problem.what()));
        return false;
    }
}

// ---- Procedure calls ----------------------------------------------------------------------------------

bool ClientConnection::runCalls(ByteView body) {
    for (tsql::ProcedureCall& call : parseRpc(body)) {
        m_response.beginCall();
        if (!run([&] { return runCall(std::move(call)); })) return false;
        m_response.endCall();
        if (m_response.attention()) break;
    }
    return true;
}

bool ClientConnection::runCall(tsql::ProcedureCall call) {
    CallPlan plan = m_prepared.plan(std::move(call));
    if (plan.run && !m_session->call(*plan.run, m_response)) return false;
    if (plan.run && plan.run->describeOnly && m_response.anyError()) {
        m_prepared.forget(*plan.handle);
        throw tsql::SqlError(kNotPrepared, "Statement(s) could not be prepared.");
    }
    sendOutputs(plan);
    return true;
}

void ClientConnection::sendOutputs(const CallPlan& plan) {
    m_response.returnStatus(plan.run ? plan.run->status : 0);
    const auto send = [this](const tsql::ProcedureCall::Argument& argument) {
        if (argument.output)
            m_response.returnValue(argument.name, argument.type, tsql::viewOf(argument.value));
    };
    if (plan.handle) send(*plan.handle);
    if (plan.run) std::for_each(plan.run->arguments.begin(), plan.run->arguments.end(), send);
}

}  // namespace tds
