// Record of the rows that a statement changes: a temporary table that triggers of SQLite fill.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "catalogue/Catalogue.h"

namespace tsql {

class RowRecord {
  public:
    // Records what the verbs (INSERT, UPDATE, DELETE) do to rows of the table until stop(). instead: the
    // changes of target() are only recorded.
    RowRecord(Connection& connection, const TableInfo& table, std::span<const std::string_view> verbs,
              bool instead = false);
    ~RowRecord();
    RowRecord(const RowRecord&) = delete;
    RowRecord& operator=(const RowRecord&) = delete;
    void stop();

    // Name of the table with the row id (ts_row), the verb (ts_verb) and the values before and after the
    // change. A row that is changed in several steps is recorded once.
    const std::string& name() const { return m_name; }
    const TableInfo& target() const { return m_target; }  // the table, or the view that stands for it
    static std::string column(std::string_view prefix, const std::string& name) {
        return quotedName(std::string(prefix) + name);
    }
    static constexpr std::string_view kOld = "old ", kNew = "new ";

  private:
    void drop(const std::string& kind, const std::string& suffix);

    Connection& m_connection;
    std::string m_name;
    TableInfo m_target;
};

}  // namespace tsql
