#include "ClientConnection.h"

#include <cstdio>
#include <thread>

#include "Login.h"
#include "ResponseSink.h"
#include "WireType.h"

namespace tds {
namespace {

constexpr std::string_view kDefaultDatabase = "master";
constexpr std::string_view kLanguage = "us_english";

constexpr int kLoginFailed = 18456;
constexpr int kIntegratedLoginFailed = 18452;
constexpr int kCannotOpenDatabase = 4060;
constexpr int kDatabaseContextChanged = 5701;
constexpr int kLanguageChanged = 5703;
constexpr int kValueNotConvertible = 8114;
constexpr int kInternalError = 50000;

enum TransactionRequest : std::uint16_t { kBegin = 5, kCommit = 7, kRollback = 8 };

struct IsolationLevel {
    std::uint8_t number;
    const char* name;
};
constexpr IsolationLevel kIsolationLevels[] = {{1, "READ UNCOMMITTED"},
                                               {2, "READ COMMITTED"},
                                               {3, "REPEATABLE READ"},
                                               {4, "SERIALIZABLE"},
                                               {5, "SNAPSHOT"}};

tsql::Message error(int number, int severity, std::string text) {
    return {number, severity, 1, 1, {}, std::move(text)};
}

Bytes descriptorBytes(std::uint64_t descriptor) {
    ByteWriter out;
    out.u64(descriptor);
    return out.data();
}

// The level and name of a transaction that begins, and the batch for it.
std::string beginBatch(ByteReader& in) {
    std::string batch;
    const std::uint8_t asked = in.u8();
    for (const IsolationLevel& level : kIsolationLevels)
        if (level.number == asked) batch = "SET TRANSACTION ISOLATION LEVEL " + std::string(level.name) + " ";
    in.skip(in.u8());  // its name has no use here
    return batch + "BEGIN TRANSACTION";
}

}  // namespace

ClientConnection::ClientConnection(int socket, int sessionId, tsql::Engine& engine,
                                   const ConnectionSettings& settings)
    : m_engine(engine),
      m_settings(settings),
      m_sessionId(sessionId),
      m_channel(socket, static_cast<std::uint16_t>(sessionId)),
      m_tokens(settings.serverName) {}

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
    m_version = login.version;
    m_tokens.setVersion(login.version);
    if (!accept(login)) {
        refuse(login);
        return false;
    }
    greet(login);
    return true;
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

bool ClientConnection::accept(const Login& login) {
    if (login.integrated) {
        m_tokens.message(error(kIntegratedLoginFailed, 14,
                               "Login failed. Only logins with a name and a password are accepted here."));
        return false;
    }
    if (!m_engine.checkLogin(login.userName, login.password)) return false;
    m_login = login.userName;
    m_initialDatabase = login.database.empty() ? kDefaultDatabase : login.database;
    if (m_engine.databaseExists(m_initialDatabase)) return true;
    m_tokens.message(error(
        kCannotOpenDatabase, 11,
        "Cannot open database \"" + m_initialDatabase + "\" requested by the login. The login failed."));
    return false;
}

void ClientConnection::refuse(const Login& login) {
    std::this_thread::sleep_for(m_settings.refusalDelay);
    m_tokens.message(error(kLoginFailed, 14, "Login failed for user '" + login.userName + "'."));
    m_tokens.done(Token::Done, kDoneError, -1, false);
    m_channel.sendLast(m_tokens.data());
}

void ClientConnection::greet(const Login& login) {
    m_session = std::make_unique<tsql::Session>(m_engine, m_login, m_initialDatabase, m_sessionId);
    const std::string database(m_session->database());
    const std::string language(kLanguage);
    m_tokens.textChange(EnvChange::Database, database, kDefaultDatabase);
    m_tokens.message(
        {kDatabaseContextChanged, 0, 2, 1, {}, "Changed database context to '" + database + "'."});
    m_tokens.collation();
    m_tokens.textChange(EnvChange::Language, kLanguage, {});
    m_tokens.message({kLanguageChanged, 0, 1, 1, {}, "Changed language setting to " + language + "."});
    m_tokens.loginAck();
    m_tokens.textChange(EnvChange::PacketSize, std::to_string(login.packetSize), "4096");
    m_tokens.done(Token::Done, kDoneFinal, -1, false);
    m_channel.sendLast(m_tokens.data());
    m_channel.setPacketSize(login.packetSize);
    m_channel.loginIsDone();
}

// ---- Requests ---------------------------------------------------------------------------------------

void ClientConnection::serveRequests() {
    while (serve(m_channel.readRequest())) continue;
}

// False when the session is over.
bool ClientConnection::serve(const Request& request) {
    ResponseSink sink(m_channel, m_tokens);
    if (request.resetsSession) resetSession(sink);
    bool goesOn = true;
    if (request.type == PacketType::Attention) {
        sink.acknowledgeAttention();
    } else if (request.type == PacketType::SqlBatch) {
        goesOn = runBatch(utf8FromUtf16(withoutHeaders(request.data)), sink);
    } else if (request.type == PacketType::Rpc) {
        goesOn = runCalls(withoutHeaders(request.data), sink);
    } else {
        goesOn = runTransactionRequest(withoutHeaders(request.data), sink);
    }
    sink.finish();
    return goesOn;
}

// Since 7.2 each request starts with headers, whose total length stands first: 2.2.5.3.
ByteView ClientConnection::withoutHeaders(ByteView data) const {
    if (m_version < Version::V72) return data;
    const std::uint32_t length = ByteReader(data).u32();
    if (length < 4 || length > data.size())
        throw ProtocolError("a request's headers are longer than the request");
    return data.substr(length);
}

// What a connection pool asks for when it hands a connection on.
void ClientConnection::resetSession(ResponseSink& sink) {
    const std::string before(m_session->database());
    m_session.reset();
    m_session = std::make_unique<tsql::Session>(m_engine, m_login, m_initialDatabase, m_sessionId);
    m_prepared = {};
    m_tokens.bytesChange(EnvChange::ResetAcknowledged, {}, {});
    if (before != m_initialDatabase) sink.databaseChanged(before, m_initialDatabase);
}

bool ClientConnection::runBatch(std::string_view text, ResponseSink& sink) {
    try {
        return m_session->runBatch(text, sink);
    } catch (const ValueError& problem) {
        sink.message(error(kValueNotConvertible, 16, problem.what()));
    } catch (const ConnectionClosed&) {
        throw;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "session %d: %s\n", m_sessionId, problem.what());
        sink.message(
            error(kInternalError, 20, std::string("The server failed at this batch: ") + problem.what()));
        return false;
    }
    return true;
}

// ---- Procedure calls ----------------------------------------------------------------------------------

bool ClientConnection::runCalls(ByteView body, ResponseSink& sink) {
    for (const RpcCall& call : parseRpc(body)) {
        sink.beginCall(kOutputMarker);
        if (!runCall(call, sink)) return false;
        sink.endCall();
        if (sink.attention()) break;
    }
    return true;
}

bool ClientConnection::runCall(const RpcCall& call, ResponseSink& sink) {
    RpcBatch batch;
    try {
        batch = m_prepared.batchFor(call);
    } catch (const RpcError& problem) {
        sink.message(problem.message);
        return true;
    }
    if (!batch.text.empty() && !runBatch(batch.text, sink)) return false;
    sink.flushDone();
    sendOutputs(batch, sink);
    return true;
}

void ClientConnection::sendOutputs(const RpcBatch& batch, const ResponseSink& sink) {
    const auto& outputs = sink.outputs();
    const std::size_t first = batch.returnsStatus ? 1 : 0;
    std::int32_t status = 0;
    if (batch.returnsStatus && !outputs.empty())
        if (const auto* value = std::get_if<std::int64_t>(&outputs[0].value))
            status = static_cast<std::int32_t>(*value);
    m_tokens.returnStatus(status);
    for (const Parameter& known : batch.known)
        m_tokens.returnValue(known.name, known.type, tsql::CellView(std::int64_t{std::stoi(*known.value)}));
    for (std::size_t i = 0; i < batch.outputs.size() && first + i < outputs.size(); ++i)
        m_tokens.returnValue(batch.outputs[i].name, outputs[first + i].type, outputs[first + i].view());
}

// ---- Transaction manager requests, 2.2.6.9 --------------------------------------------------------------

bool ClientConnection::runTransactionRequest(ByteView body, ResponseSink& sink) {
    ByteReader in(body);
    const std::uint16_t request = in.u16();
    if (request == kBegin) return changeTransaction(beginBatch(in), EnvChange::BeginTransaction, sink);
    if (request != kCommit && request != kRollback) {
        sink.message(error(kInternalError, 16,
                           "Transaction manager request " + std::to_string(request) +
                               " is not one that this server takes."));
        return true;
    }
    in.skip(in.u8());  // the transaction's name
    const bool beginsNext = (in.u8() & 1) != 0;
    const bool goesOn = request == kCommit
                            ? changeTransaction("COMMIT TRANSACTION", EnvChange::CommitTransaction, sink)
                            : changeTransaction("ROLLBACK TRANSACTION", EnvChange::RollbackTransaction, sink);
    if (!goesOn || !beginsNext) return goesOn;
    return changeTransaction(beginBatch(in), EnvChange::BeginTransaction, sink);
}

bool ClientConnection::changeTransaction(std::string_view batch, EnvChange change, ResponseSink& sink) {
    const bool goesOn = runBatch(batch, sink);
    if (sink.anyError()) return goesOn;
    sink.flushDone();
    if (change == EnvChange::BeginTransaction)
        m_tokens.bytesChange(change, descriptorBytes(++m_transaction), {});
    else
        m_tokens.bytesChange(change, {}, descriptorBytes(m_transaction));
    return goesOn;
}

}  // namespace tds
