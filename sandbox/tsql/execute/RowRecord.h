// Record of the rows that a statement changes: a temporary table that triggers of SQLite fill.
#pragma once

#include <atomic>

#include "catalogue/Catalogue.h"

namespace tsql {

class RowRecord {
  public:
    // Records what the verb (INSERT, UPDATE, DELETE) does to rows of the table until stop(). instead: the
    // changes of target() are only recorded.
    RowRecord(Connection& connection, const TableInfo& table, const std::string& verb, bool instead = false)
        : m_connection(connection), m_target(table) {
        static std::atomic<unsigned> records{0};
        m_name = "tsqlbox_rows" + std::to_string(++records);
        if (instead) {
            if (!table.rows.empty())
                m_connection.run("CREATE TEMP TABLE " + m_name + "_view AS SELECT * FROM (" + table.rows +
                                 ") WHERE " + (verb == "INSERT" ? "0" : "1"));
            m_connection.run("CREATE TEMP VIEW " + m_name + "_target AS SELECT _rowid_ AS _rowid_, * FROM " +
                             (table.rows.empty() ? table.sqlName() : m_name + "_view"));
            m_target.schema = kTempSchema;
            m_target.stored = m_name + "_target";
            m_target.isShadow = true;
        }
        std::string columns, names, again = "ts_row = ts_row";
        for (const std::string prefix : {"old ", "new "})
            for (const auto& each : table.columns) {
                const std::string name = quotedName(prefix + each.name);
                columns.append(", ").append(name).append(" ").append(storageClass(each.type));
                names += ", " + name;
                if (prefix == "new ") again.append(", ").append(name).append(" = excluded.").append(name);
            }
        m_connection.run("CREATE TEMP TABLE " + m_name + " (ts_row UNIQUE" + columns + ")");
        m_connection.run("CREATE TEMP TRIGGER " + m_name + "_change " + (instead ? "INSTEAD OF " : "AFTER ") +
                         verb + " ON " + m_target.sqlName() + " BEGIN INSERT INTO " + m_name + " (ts_row" +
                         names + ") VALUES (" + (verb == "DELETE" ? "OLD._rowid_, " : "NEW._rowid_, ") +
                         values(verb == "INSERT" ? "" : "OLD.") + ", " +
                         values(verb == "DELETE" ? "" : "NEW.") + ") ON CONFLICT (ts_row) DO UPDATE SET " +
                         again + "; END");
    }
    ~RowRecord() {
        stop();
        drop("VIEW", "_target");
        drop("TABLE", "_view");
        drop("TABLE", "");
    }
    RowRecord(RowRecord&&) = delete;  // neither moved nor copied
    void stop() { drop("TRIGGER", "_change"); }

    // Name of the table. It has the row id and, for each column c, "old c" and "new c". A row that is changed
    // in several steps is recorded once.
    const std::string& name() const { return m_name; }
    const TableInfo& target() const { return m_target; }  // the table, or the view that stands for it

  private:
    std::string values(const std::string& row) const {
        return commaList(m_target.columns, [&](const TableColumn& each) {
            const std::string value = row + quotedName(each.name);
            const bool isAbsent = m_target.isShadow && each.identity;  // SQL Server shows 0
            return row.empty() ? "NULL" : isAbsent ? "ifnull(" + value + ", 0)" : value;
        });
    }
    // A rollback may have dropped the object already.
    void drop(const std::string& kind, const std::string& suffix) {
        m_connection.tryRun("DROP " + kind + " IF EXISTS temp." + m_name + suffix);
    }

    Connection& m_connection;
    std::string m_name;
    TableInfo m_target;
};

}  // namespace tsql
