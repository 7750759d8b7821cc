#include "direct/DirectQuery.h"

#include "Causes.h"
#include "VTSimpleDBConn.h"
#include "parts/DatabaseMessages.h"

namespace {

// Results of getNextRow() and autoBind().
constexpr int kNextRow = 0;
constexpr int kNoMoreRows = 1;
constexpr int kBound = 0;
constexpr int kNoColumns = 1;

bool runAndBind(VTSimpleDBConnObject& connection, const char* sql, VTDBAutoBindResult& result) {
    if (connection.executeQuery(sql, /*prepared=*/false) != 0) return false;
    const int bound = connection.autoBind(result);
    return bound == kBound || bound == kNoColumns;
}

// Always false.
bool failStatement(const ExplainedStep& step, const char* reason = database_messages::kStatementFailed) {
    step.noteUnlessExplained({.where = kDVUStatement, .text = reason});
    return false;
}

std::string rowText(const VTDBAutoBindResult& result, int columns, char separator) {
    std::string row;
    for (int i = 0; i < columns; ++i) {
        if (i > 0) row += separator;
        row += result.column(i).asUtf8();
    }
    return row;
}

}  // namespace

bool readFirstValue(VTSimpleDBConnObject& connection, const char* sql, std::string& value) {
    const ExplainedStep step;
    VTDBAutoBindResult result;
    if (!runAndBind(connection, sql, result)) return failStatement(step);
    const int fetched = result.getNextRow();
    if (fetched == kNoMoreRows) return failStatement(step, database_messages::kNoRow);
    if (fetched != kNextRow) return failStatement(step);
    value = result.column(0).asUtf8();
    return true;
}

bool readRows(VTSimpleDBConnObject& connection, const char* sql, int columns, char separator,
              std::vector<std::string>& rows) {
    const ExplainedStep step;
    VTDBAutoBindResult result;
    if (!runAndBind(connection, sql, result)) return failStatement(step);
    int fetched = kNextRow;
    while ((fetched = result.getNextRow()) == kNextRow) rows.push_back(rowText(result, columns, separator));
    return fetched == kNoMoreRows || failStatement(step);
}
