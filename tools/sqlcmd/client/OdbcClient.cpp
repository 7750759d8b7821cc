#include "client/OdbcClient.h"

#include <algorithm>
#include <utility>

#include "terminal/Interrupt.h"
#include "text/Text.h"
#include "values/ColumnFormat.h"

namespace sqlcmd {
namespace {

constexpr std::size_t kPieceSize = 65536;  // bytes
constexpr std::size_t kMostUtf8 = 4;       // bytes of a character
constexpr std::size_t kShortestBuffer = 64;

// Length of a piece that is not the last one. It ends with a NUL, up to three bytes before the end of the
// buffer if the driver does not divide a character. appendPieces() has filled these bytes with others before.
std::size_t filledLength(const std::vector<char>& piece) {
    return static_cast<std::size_t>(std::find(piece.end() - kMostUtf8, piece.end(), '\0') - piece.begin());
}

class OdbcBatch : public RunningBatch {
  public:
    OdbcBatch(const Connection& connection, const std::string& batch, MessageHandler handler)
        : m_connection(connection),
          m_statement(connection),
          m_handler(std::move(handler)),
          m_piece(kPieceSize) {
        m_code = m_statement.execute(batch);
        m_running = passMessages(m_code);
    }

    bool nextResult() override {
        while (m_running) {
            if (std::exchange(m_started, true)) {
                unbind();
                m_code = m_statement.nextResult();
                m_running = passMessages(m_code) && m_code != SQL_NO_DATA;
            }
            if (m_running && m_code != SQL_ERROR) return bindColumns(), true;
        }
        return false;
    }

    const std::vector<ColumnInfo>& columns() const override { return m_columns; }

    bool nextRow() override {
        m_code = isInterrupted() ? SQL_ERROR : m_statement.fetch();
        m_running = !isInterrupted() && passMessages(m_code);
        return SQL_SUCCEEDED(m_code);
    }

    bool readAllRows() const override { return m_code == SQL_NO_DATA; }
    long long rowCount() const override { return m_statement.rowCount(); }

    bool appendValue(std::size_t column, std::size_t enough, TextBuffer& text) override {
        if (column >= m_cells.size()) {
            const SQLRETURN code = appendPieces(static_cast<SQLUSMALLINT>(column + 1), enough, text);
            if (code == SQL_ERROR) m_running = passMessages(code);  // the value is incomplete
            return code != SQL_NO_DATA;
        }
        const Cell& cell = *m_cells[column];
        if (cell.length == SQL_NULL_DATA) return false;
        const std::size_t capacity = cell.buffer.size() - 1;
        const bool isCut =
            cell.length < 0 || static_cast<std::size_t>(cell.length) > capacity;  // SQL_NO_TOTAL
        text.append({cell.buffer.data(), isCut ? capacity : static_cast<std::size_t>(cell.length)});
        return true;
    }

  private:
    // A column's value in the current row. The columns before the first long one are bound: a fetch fills
    // their buffers. The others are not, because ODBC drivers return values in pieces only for columns after
    // the last bound one, in ascending order.
    struct Cell {
        std::vector<char> buffer;
        SQLLEN length = 0;  // bytes, or SQL_NULL_DATA
    };

    // Passes on the messages of a call. Returns whether the batch can go on: it can after an error of the
    // server, not after one of the driver or one that ends the connection.
    bool passMessages(SQLRETURN code) {
        if (code == SQL_SUCCESS) return true;
        const auto diagnostics = m_statement.diagnostics();
        for (const Diagnostic& diagnostic : diagnostics) m_handler(diagnostic);
        if (SQL_SUCCEEDED(code) || code == SQL_NO_DATA) return true;
        const auto isDrivers = [](const Diagnostic& d) { return !d.fromServer; };
        const bool isLost =
            std::all_of(diagnostics.begin(), diagnostics.end(), isDrivers) && m_connection.isDead();
        if (isLost) m_handler(lostConnection());  // FreeTDS says "Unknown error"
        return !diagnostics.empty() &&
               std::all_of(diagnostics.begin(), diagnostics.end(),
                           [](const Diagnostic& d) { return d.fromServer && d.severity < kFatalSeverity; });
    }

    void bindColumns() {
        bool isBindable = true;
        const int count = m_statement.columnCount();
        for (int number = 1; number <= count; ++number) {
            m_columns.push_back(describe(static_cast<SQLUSMALLINT>(number)));
            const ColumnFormat format = formatOf(m_columns.back(), Layout{});
            isBindable = isBindable && !format.isLong;
            if (isBindable) bind(static_cast<SQLUSMALLINT>(number), format.width);
        }
    }

    // The next result set must not be fetched into freed buffers.
    void unbind() {
        m_statement.functions().freeStmt(m_statement.handle(), SQL_UNBIND);
        m_cells.clear();
        m_columns.clear();
    }

    ColumnInfo describe(SQLUSMALLINT number) const {
        const DriverFunctions& functions = m_statement.functions();
        char name[1024] = {};
        char typeName[256] = {};
        SQLSMALLINT length = 0, type = 0, digits = 0, nullable = 0;
        SQLULEN size = 0;
        functions.describeCol(m_statement.handle(), number, reinterpret_cast<SQLCHAR*>(name), sizeof name - 1,
                              &length, &type, &size, &digits, &nullable);
        functions.colAttribute(m_statement.handle(), number, SQL_DESC_TYPE_NAME, typeName,
                               sizeof typeName - 1, &length, nullptr);
        return {name, lowerCase(std::string_view(typeName)), type, size};
    }

    void bind(SQLUSMALLINT number, std::size_t width) {
        Cell& cell = *m_cells.emplace_back(std::make_unique<Cell>());
        cell.buffer.resize(std::max(width * kMostUtf8, kShortestBuffer) + 1);
        m_statement.functions().bindCol(m_statement.handle(), number, SQL_C_CHAR, cell.buffer.data(),
                                        static_cast<SQLLEN>(cell.buffer.size()), &cell.length);
    }

    // Appends a value piece by piece until it ends or `enough` bytes are appended. Returns SQL_SUCCESS,
    // SQL_NO_DATA for NULL, or SQL_ERROR.
    SQLRETURN appendPieces(SQLUSMALLINT number, std::size_t enough, TextBuffer& text) {
        const std::size_t start = text.size();
        for (;;) {
            std::fill(m_piece.end() - kMostUtf8, m_piece.end(), '\xFF');
            SQLLEN length = 0;
            const SQLRETURN code =
                m_statement.functions().getData(m_statement.handle(), number, SQL_C_CHAR, m_piece.data(),
                                                static_cast<SQLLEN>(m_piece.size()), &length);
            if (!SQL_SUCCEEDED(code)) return SQL_ERROR;
            if (length == SQL_NULL_DATA) return SQL_NO_DATA;
            const bool isComplete = code == SQL_SUCCESS;
            text.append(
                {m_piece.data(), isComplete ? static_cast<std::size_t>(length) : filledLength(m_piece)});
            if (isComplete || (enough != kWholeValue && text.size() - start >= enough)) return SQL_SUCCESS;
        }
    }

    const Connection& m_connection;
    Statement m_statement;
    MessageHandler m_handler;
    std::vector<ColumnInfo> m_columns;
    std::vector<std::unique_ptr<Cell>> m_cells;  // of the bound columns
    std::vector<char> m_piece;
    SQLRETURN m_code = SQL_SUCCESS;
    bool m_started = false;
    bool m_running = true;
};

}  // namespace

std::unique_ptr<RunningBatch> OdbcClient::run(const std::string& batch, MessageHandler handler) {
    return std::make_unique<OdbcBatch>(m_connection, batch, std::move(handler));
}

}  // namespace sqlcmd
