#include "client/DbLibClient.h"

#include <string.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <utility>

#include "KerberosTicket.h"
#include "NetworkTimeout.h"
#include "client/DbLibValue.h"
#include "client/Encryption.h"
#include "options/ServerName.h"
#include "terminal/Interrupt.h"
#include "text/Errors.h"

namespace sqlcmd {
namespace {

constexpr int kLoginFailed = 18456;  // error number

// Receives the messages of the DB-Library call that is running. The library's handlers are process-wide.
MessageHandler* g_receiver = nullptr;

// Called while the library waits for the server.
std::function<void()> g_tick;

// First exception of a handler. It must not pass through the library, which is C: the call that the library
// returns from throws it.
std::exception_ptr g_handlerFailure;

template <typename Work>
void keepException(Work&& work) {
    try {
        work();
    } catch (...) {
        if (!g_handlerFailure) g_handlerFailure = std::current_exception();
    }
}

void receive(const Diagnostic& message) {
    if (g_receiver != nullptr) keepException([&] { (*g_receiver)(message); });
}

inline void rethrowHandlerFailure() {
    if (g_handlerFailure) [[unlikely]]
        std::rethrow_exception(std::exchange(g_handlerFailure, nullptr));
}

class ReceiverScope {
  public:
    explicit ReceiverScope(MessageHandler& receiver) : m_previous(std::exchange(g_receiver, &receiver)) {}
    ~ReceiverScope() { g_receiver = m_previous; }
    ReceiverScope(const ReceiverScope&) = delete;
    ReceiverScope& operator=(const ReceiverScope&) = delete;

  private:
    MessageHandler* m_previous;
};

std::string stringOf(const char* text) {
    return text != nullptr ? text : "";
}

extern "C" int receiveMessage(DBPROCESS* /*process*/, DBINT number, int state, int severity, char* text,
                              char* server, char* procedure, int line) {
    Diagnostic message;
    message.number = number;
    message.state = state;
    message.severity = severity;
    message.text = stringOf(text);
    message.server = stringOf(server);
    message.procedure = stringOf(procedure);
    message.line = line;
    message.driver = kFreeTdsName;
    message.fromServer = true;
    receive(message);
    return 0;
}

// The library calls it once a second while it waits, and after a signal.
extern "C" int checkInterrupt(void* /*process*/) {
    if (g_tick) keepException(g_tick);
    return isInterrupted() ? TRUE : FALSE;
}

extern "C" int handleInterrupt(void* /*process*/) {
    return INT_CANCEL;
}

// Receives DB-Library's own errors.
extern "C" int receiveError(DBPROCESS* process, int /*severity*/, int number, int /*systemError*/, char* text,
                            char* /*systemText*/) {
    if (number == SYBETIME && isInterrupted()) return INT_TIMEOUT;
    if (number == SYBESMSG) return INT_CANCEL;  // says only that the server has sent an error
    const bool isQueryTimeout = number == SYBETIME && process != nullptr && dbgetuserdata(process) != nullptr;
    Diagnostic message;
    message.number = number;
    message.text = number == SYBETIME ? "Timeout expired" : stringOf(text);
    message.severity = isQueryTimeout ? kErrorSeverity : kFatalSeverity;
    message.driver = kFreeTdsName;
    receive(message);
    return isQueryTimeout ? INT_TIMEOUT
                          : INT_CANCEL;  // INT_TIMEOUT cancels the batch, INT_CANCEL the connection
}

class DbLibBatch : public RunningBatch {
  public:
    DbLibBatch(DBPROCESS* process, const std::string& batch, MessageHandler handler)
        : m_process(process), m_handler([this, handler = std::move(handler)](const Diagnostic& message) {
              m_hasError = m_hasError || message.isError();
              m_isEndedByServer =
                  m_isEndedByServer || (message.fromServer && message.severity >= kFatalSeverity);
              handler(message);
          }) {
        const ReceiverScope scope(m_handler);
        m_running = dbcmd(process, batch.c_str()) == SUCCEED && dbsqlsend(process) == SUCCEED;
        rethrowHandlerFailure();
    }
    ~DbLibBatch() override {
        const ReceiverScope scope(m_handler);
        if (m_running && DBDEAD(m_process) == 0) dbcancel(m_process);
        g_handlerFailure = nullptr;
    }
    DbLibBatch(const DbLibBatch&) = delete;
    DbLibBatch& operator=(const DbLibBatch&) = delete;

    bool nextResult() override {
        const ReceiverScope scope(m_handler);
        if (!std::exchange(m_started, true)) dbsqlok(m_process);
        DBRETCODE code = FAIL;
        // A statement that has failed is followed by the others.
        while (m_running && (code = dbresults(m_process)) == FAIL)
            m_running = DBDEAD(m_process) == 0 && !isInterrupted();
        if (isInterrupted() && DBDEAD(m_process) == 0) dbcancel(m_process);
        m_running = m_running && code == SUCCEED && !isInterrupted();
        rethrowHandlerFailure();
        if (!m_running && !isInterrupted()) reportLoss();
        m_columns.clear();
        m_types.clear();
        const int count = m_running ? dbnumcols(m_process) : 0;
        for (int number = 1; number <= count; ++number) {
            m_columns.push_back(describeColumn(m_process, number));
            m_types.push_back(valueTypeOf(m_process, number));
        }
        return m_running;
    }

    const std::vector<ColumnInfo>& columns() const override { return m_columns; }

    bool nextRow() override {
        const ReceiverScope scope(m_handler);
        m_hasError = false;
        m_rowCode = isInterrupted() ? FAIL : dbnextrow(m_process);
        rethrowHandlerFailure();
        return m_rowCode != FAIL && m_rowCode != NO_MORE_ROWS;
    }

    bool readAllRows() const override { return m_rowCode == NO_MORE_ROWS && !m_hasError; }
    bool mayHaveMoreResults() const override { return m_columns.empty() || DBMORECMDS(m_process) == SUCCEED; }
    long long rowCount() const override { return dbiscount(m_process) != 0 ? dbcount(m_process) : -1; }

    bool appendValue(std::size_t column, std::size_t enough, TextBuffer& text) override {
        return appendColumnValue(m_process, static_cast<int>(column) + 1, m_types[column], enough, text);
    }

  private:
    // DB-Library ends a batch whose connection was reset between two results like one that has succeeded.
    void reportLoss() {
        if (DBDEAD(m_process) != 0 && !m_isEndedByServer) m_handler(lostConnection());
    }

    DBPROCESS* m_process;
    MessageHandler m_handler;
    std::vector<ColumnInfo> m_columns;
    std::vector<ValueType> m_types;  // of the columns
    STATUS m_rowCode = NO_MORE_ROWS;
    bool m_started = false;
    bool m_running = false;
    bool m_isEndedByServer = false;  // by an error that the server has sent
    bool m_hasError = false;         // since the last call of nextRow()
};

// Owner of DB-Library's login record, which holds the password.
class LoginRecord {
  public:
    LoginRecord() : m_record(dblogin()) {
        if (m_record == nullptr) throw std::bad_alloc();
    }
    ~LoginRecord() { dbloginfree(m_record); }
    LoginRecord(const LoginRecord&) = delete;
    LoginRecord& operator=(const LoginRecord&) = delete;

    LOGINREC* get() const { return m_record; }
    void set(int field, const std::string& value) const {
        if (!value.empty() && dbsetlname(m_record, value.c_str(), field) != SUCCEED)
            throw ToolError("Sqlcmd: Error: server, login, password or database is too long.");
    }

  private:
    LOGINREC* m_record;
};

// The server's service principal for Windows authentication; empty: that of the server's name and port.
std::string servicePrincipal() {
    return stringOf(std::getenv("SQLCMD_SERVER_SPN"));
}

void setLogin(const LoginRecord& login, const Options& options) {
    constexpr int kOn = 1;
    login.set(DBSETAPP, "SQLCMD");
    login.set(DBSETCHARSET, "UTF-8");
    login.set(DBSETDBNAME, options.database);
    login.set(DBSETHOST, options.workstation);
    if (options.trusted) {
        login.set(DBSETSERVERPRINCIPAL, servicePrincipal());
    } else {
        login.set(DBSETUSER, options.user);
        login.set(DBSETPWD, options.password);
    }
    dbsetlversion(login.get(), DBVERSION_74);
    if (options.readOnlyIntent) dbsetlbool(login.get(), kOn, DBSETREADONLY);
    dbsetllong(login.get(), options.packetSize, DBSETPACKET);
}

// Returns the server's name in FreeTDS's notation, or that of a section of its configuration with the
// settings of the encryption: DB-Library's own option does not require it. A port identifies the instance.
std::string freeTdsServer(const ServerName& server, const Options& options) {
    if (encryptionOf(options) != Encryption::Default) return encryptedServer(server, options);
    if (server.port != 0) return server.host + ":" + std::to_string(server.port);
    return server.instance.empty() ? server.host : server.host + "\\" + server.instance;
}

// Returns the errors of a failed login: the server's and the library's, in the words of FreeTDS's ODBC
// driver.
std::vector<Diagnostic> loginErrors(std::vector<Diagnostic> messages) {
    std::erase_if(messages,
                  [](const Diagnostic& message) { return message.fromServer && !message.isError(); });
    std::erase_if(messages, [](const Diagnostic& message) { return message.number == SYBEINTF; });
    if (messages.size() > 1)  // the others say why
        std::erase_if(messages, [](const Diagnostic& message) { return message.number == SYBEFCON; });
    std::stable_partition(messages.begin(), messages.end(),
                          [](const Diagnostic& message) { return message.number == kLoginFailed; });
    Diagnostic last;
    last.driver = kFreeTdsName;
    last.text = "Unable to connect to data source";
    messages.push_back(last);
    return messages;
}

// DB-Library does not report why it gets no Kerberos ticket.
void addTicketProblem(std::vector<Diagnostic>& messages, const ServerName& server) {
    constexpr int kDefaultPort = 1433;
    const std::string principal = servicePrincipal();
    if (principal.empty() && server.port == 0 && !server.instance.empty()) return;
    const std::string port = std::to_string(server.port == 0 ? kDefaultPort : server.port);
    Diagnostic message;
    message.driver = kFreeTdsName;
    message.text =
        principal.empty() ? freetds::ticketProblem(server.host, port) : freetds::ticketProblemOf(principal);
    if (!message.text.empty()) messages.insert(messages.begin(), message);
}

}  // namespace

DbLibClient::DbLibClient(Options& options) {
    const std::string server = freeTdsServer(serverOf(options), options);
    if (dbinit() == FAIL) throw std::bad_alloc();
    dbmsghandle(receiveMessage);
    dberrhandle(receiveError);
    std::vector<Diagnostic> messages;
    MessageHandler keep = [&](const Diagnostic& message) { messages.push_back(message); };
    const ReceiverScope scope(keep);
    {
        const LoginRecord login;
        setLogin(login, options);
        explicit_bzero(options.password.data(), options.password.size());
        dbsetlogintime(options.loginTimeout);
        m_process = dbopen(login.get(), server.c_str());
    }
    if (m_process == nullptr) {
        dbexit();
        if (options.trusted) addTicketProblem(messages, serverOf(options));
        throw LoginError(loginErrors(std::move(messages)));
    }
    dbsetuserdata(m_process, reinterpret_cast<BYTE*>(this));  // from now on, a timeout is one of a query
    setQueryTimeout(options.queryTimeout);
    dbsetinterrupt(m_process, checkInterrupt, handleInterrupt);
    hostlayer::setNetworkTimeout(dbiordesc(m_process), std::chrono::seconds(options.networkTimeout));
}

DbLibClient::~DbLibClient() {
    g_tick = nullptr;
    dbclose(m_process);
    dbexit();
}

// FreeTDS requests these settings at the login of its ODBC driver only. Without them, long values are cut.
std::string_view DbLibClient::sessionSettings() const {
    return "SET TEXTSIZE 2147483647 SET ANSI_NULLS, ANSI_PADDING, ANSI_WARNINGS, ANSI_NULL_DFLT_ON, "
           "CONCAT_NULL_YIELDS_NULL ON ";
}

std::unique_ptr<RunningBatch> DbLibClient::run(const std::string& batch, MessageHandler handler) {
    if (batch.find('\0') != std::string::npos)
        throw ToolError("Sqlcmd: Error: the batch is not run: it contains a NUL character.");
    return std::make_unique<DbLibBatch>(m_process, batch, std::move(handler));
}

void DbLibClient::setTick(std::function<void()> tick) {
    g_tick = std::move(tick);
}

void DbLibClient::setQueryTimeout(int seconds) {
    dbsettime(seconds);
}

bool DbLibClient::isDead() const {
    return DBDEAD(m_process) != 0;
}

}  // namespace sqlcmd
