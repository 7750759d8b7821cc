#include "Rows.h"

#include <algorithm>
#include <string>

#include "EvDebug.h"

namespace hostlayer {
namespace {

constexpr std::size_t kBytesPerCharacter = 4;     // of UTF-8, at most
constexpr std::size_t kLongestDeclared = 8000;    // longest length of a column that is not a (max) type
constexpr std::size_t kDisplaySizeShortfall = 8;  // drivers omit a decimal's leading zero and a real's digits
constexpr std::size_t kBlockBytes = std::size_t{256} << 10;
constexpr std::size_t kBlockRows = 128;
constexpr std::size_t kPieceBytes = std::size_t{64} << 10;
constexpr std::size_t kLongestValue = std::size_t{2} << 30;  // limit of SQL Server
constexpr SQLSMALLINT kFirstDriverType = -100;  // numbers below it are types of one driver: xml, sql_variant

bool isCharacterType(SQLSMALLINT type) {
    return type == SQL_CHAR || type == SQL_VARCHAR || type == SQL_WCHAR || type == SQL_WVARCHAR;
}

// Types whose values have no useful length limit.
bool isLongType(SQLSMALLINT type) {
    return type == SQL_LONGVARCHAR || type == SQL_WLONGVARCHAR || type == SQL_LONGVARBINARY ||
           type < kFirstDriverType;
}

// ColumnDescription::textBytes of a column.
std::size_t longestText(SQLSMALLINT type, SQLLEN displaySize) {
    if (isLongType(type) || displaySize <= 0) return 0;
    const auto characters = static_cast<std::size_t>(displaySize);
    if (type == SQL_BINARY || type == SQL_VARBINARY)  // two hexadecimal digits a byte
        return characters <= 2 * kLongestDeclared ? characters + 1 : 0;
    if (characters > kLongestDeclared) return 0;
    return (isCharacterType(type) ? characters * kBytesPerCharacter : characters + kDisplaySizeShortfall) + 1;
}

// Buffers of a column for one block of rows.
struct BoundColumn {
    std::size_t width = 0;              // bytes per value
    std::unique_ptr<char[]> texts;      // uninitialised: only what the driver has written is read
    std::unique_ptr<SQLLEN[]> lengths;  // bytes, or SQL_NULL_DATA
};

// Fetches blocks of rows into bound columns.
class BlockReader : public RowReader {
  public:
    explicit BlockReader(const OdbcHandle& statement) : m_statement(statement) {}

    ~BlockReader() override {
        ::SQLFreeStmt(m_statement.get(), SQL_UNBIND);
        ::SQLSetStmtAttr(m_statement.get(), SQL_ATTR_ROWS_FETCHED_PTR, nullptr, 0);
        ::SQLSetStmtAttr(m_statement.get(), SQL_ATTR_ROW_STATUS_PTR, nullptr, 0);
    }
    BlockReader(const BlockReader&) = delete;
    BlockReader& operator=(const BlockReader&) = delete;

    bool bind(const std::vector<ColumnDescription>& columns) {
        std::size_t rowBytes = 1;
        for (const ColumnDescription& column : columns) rowBytes += column.textBytes;
        const std::size_t rows = std::clamp<std::size_t>(kBlockBytes / rowBytes, 1, kBlockRows);
        m_status.resize(rows);
        bool isBound = setAttribute(SQL_ATTR_ROW_ARRAY_SIZE, odbcNumber(rows)) &&
                       setAttribute(SQL_ATTR_ROWS_FETCHED_PTR, &m_rowCount) &&
                       setAttribute(SQL_ATTR_ROW_STATUS_PTR, m_status.data());
        for (const ColumnDescription& column : columns)
            isBound = isBound && bindColumn(column.textBytes, rows);
        return isBound;
    }

    Fetched next(std::vector<std::optional<std::string_view>>& values) override {
        if (m_row >= m_rowCount) {
            const Fetched result = fetchBlock();
            if (result != Fetched::kRow) return result;
        }
        if (m_status[m_row] == SQL_ROW_ERROR) return Fetched::kFailure;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            const BoundColumn& column = m_columns[i];
            const SQLLEN length = column.lengths[m_row];
            if (length == SQL_NULL_DATA) {
                values[i].reset();
            } else if (length < 0 || static_cast<std::size_t>(length) >= column.width) {
                EvDebug().DebugLevel(kErrorDebugLevel,
                                     "Fetch: a value of column %zu is longer than its description says",
                                     i + 1);
                return Fetched::kFailure;
            } else {
                values[i].emplace(&column.texts[m_row * column.width], static_cast<std::size_t>(length));
            }
        }
        ++m_row;
        return Fetched::kRow;
    }

    bool hasBufferedRow() const override { return m_row < m_rowCount; }

  private:
    bool setAttribute(SQLINTEGER attribute, SQLPOINTER value) {
        return m_statement.check(::SQLSetStmtAttr(m_statement.get(), attribute, value, 0), "Set rowset");
    }

    bool bindColumn(std::size_t width, std::size_t rows) {
        BoundColumn& column = m_columns.emplace_back();
        column.width = width;
        column.texts.reset(new char[width * rows]);
        column.lengths.reset(new SQLLEN[rows]);
        return m_statement.check(
            ::SQLBindCol(m_statement.get(), static_cast<SQLUSMALLINT>(m_columns.size()), SQL_C_CHAR,
                         column.texts.get(), static_cast<SQLLEN>(width), column.lengths.get()),
            "Bind column");
    }

    Fetched fetchBlock() {
        m_row = 0;
        m_rowCount = 0;
        if (m_failsAfterBlock) return Fetched::kFailure;
        const SQLRETURN result = ::SQLFetch(m_statement.get());
        if (result == SQL_NO_DATA) return Fetched::kEnd;
        m_failsAfterBlock = result == SQL_SUCCESS_WITH_INFO && m_statement.hasErrorRecord();
        if (m_failsAfterBlock) m_statement.reportFailure("Fetch");
        return (m_failsAfterBlock || m_statement.check(result, "Fetch")) && m_rowCount > 0
                   ? Fetched::kRow
                   : Fetched::kFailure;
    }

    const OdbcHandle& m_statement;
    std::vector<BoundColumn> m_columns;
    std::vector<SQLUSMALLINT> m_status;
    SQLULEN m_rowCount = 0;          // of the current block
    SQLULEN m_row = 0;               // the next one in the block
    bool m_failsAfterBlock = false;  // an error has ended the result set after this block's rows
};

// Fetches one row at a time and reads its values in pieces.
class PieceReader : public RowReader {
  public:
    PieceReader(const OdbcHandle& statement, std::size_t columnCount)
        : m_statement(statement), m_texts(columnCount), m_piece(kPieceBytes) {}

    Fetched next(std::vector<std::optional<std::string_view>>& values) override {
        const SQLRETURN result = ::SQLFetch(m_statement.get());
        if (result == SQL_NO_DATA) return Fetched::kEnd;
        if (!m_statement.check(result, "Fetch")) return Fetched::kFailure;
        for (std::size_t i = 0; i < m_texts.size(); ++i) {
            bool isNull = false;
            if (!readColumn(i, isNull)) return Fetched::kFailure;
            values[i].reset();
            if (!isNull) values[i].emplace(m_texts[i]);
        }
        return Fetched::kRow;
    }

    bool hasBufferedRow() const override { return false; }

  private:
    bool readColumn(std::size_t index, bool& isNull) {
        std::string& text = m_texts[index];
        text.clear();
        for (;;) {
            SQLLEN left = 0;  // bytes left before this piece
            const SQLRETURN result =
                ::SQLGetData(m_statement.get(), static_cast<SQLUSMALLINT>(index + 1), SQL_C_CHAR,
                             m_piece.data(), static_cast<SQLLEN>(m_piece.size()), &left);
            if (result == SQL_NO_DATA) return true;
            if (result != SQL_SUCCESS && result != SQL_SUCCESS_WITH_INFO)
                return m_statement.check(result, "Read column");
            isNull = left == SQL_NULL_DATA;
            if (isNull) return true;
            const bool isLast = left >= 0 && static_cast<std::size_t>(left) < m_piece.size();
            text.append(m_piece.data(), isLast ? static_cast<std::size_t>(left) : m_piece.size() - 1);
            if (isLast) return true;
            if (text.size() > kLongestValue) return false;
        }
    }

    const OdbcHandle& m_statement;
    std::vector<std::string> m_texts;
    std::vector<char> m_piece;
};

}  // namespace

bool describeColumns(const OdbcHandle& statement, std::vector<ColumnDescription>& columns) {
    SQLSMALLINT count = 0;
    if (!statement.check(::SQLNumResultCols(statement.get(), &count), "Count columns")) return false;
    for (SQLUSMALLINT i = 1; i <= count; ++i) {
        SQLLEN type = 0;
        SQLLEN size = 0;
        const auto readAttribute = [&](SQLUSMALLINT field, SQLLEN& value) {
            return statement.check(::SQLColAttribute(statement.get(), i, field, nullptr, 0, nullptr, &value),
                                   "Describe column");
        };
        if (!readAttribute(SQL_DESC_CONCISE_TYPE, type) || !readAttribute(SQL_DESC_DISPLAY_SIZE, size))
            return false;
        const auto concise = static_cast<SQLSMALLINT>(type);
        columns.push_back({concise, longestText(concise, size)});
    }
    return true;
}

std::unique_ptr<RowReader> makeRowReader(const OdbcHandle& statement,
                                         const std::vector<ColumnDescription>& columns) {
    const auto isLong = [](const ColumnDescription& column) { return column.textBytes == 0; };
    if (std::any_of(columns.begin(), columns.end(), isLong))
        return std::make_unique<PieceReader>(statement, columns.size());
    auto reader = std::make_unique<BlockReader>(statement);
    if (!reader->bind(columns)) return nullptr;
    return reader;
}

}  // namespace hostlayer
