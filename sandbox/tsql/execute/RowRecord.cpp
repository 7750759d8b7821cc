#include "execute/RowRecord.h"

#include <atomic>

namespace tsql {

RowRecord::RowRecord(Connection& connection, const TableInfo& table, std::span<const std::string_view> verbs,
                     bool instead)
    : m_connection(connection), m_target(table) {
    static std::atomic<unsigned> records{0};
    m_name = "tsqlbox_rows" + std::to_string(++records);
    if (instead) {
        m_connection.run("CREATE TEMP VIEW " + m_name + "_target AS SELECT _rowid_ AS _rowid_, " +
                         commaList(table.columns, [](const auto& each) { return quotedName(each.name); }) +
                         " FROM " + table.sqlName());
        m_target.schema = kTempSchema;
        m_target.stored = m_name + "_target";
        m_target.isShadow = true;
    }
    std::string columns, names, again;
    for (const auto prefix : {kOld, kNew})
        for (const auto& each : table.columns) {
            const std::string name = ", " + column(prefix, each.name);
            columns.append(name).append(" ").append(storageClass(each.type));
            names += name;
        }
    for (const auto& each : table.columns)
        again += ", " + column(kNew, each.name) + " = excluded." + column(kNew, each.name);
    m_connection.run("CREATE TEMP TABLE " + m_name + " (ts_row, ts_verb" + columns +
                     ", UNIQUE (ts_row, ts_verb))");
    for (const auto verb : verbs) {
        const auto values = [&](std::string_view row, std::string_view absentFor) {
            return commaList(table.columns, [&](const TableColumn& each) {
                return verb == absentFor ? "NULL" : std::string(row) + quotedName(each.name);
            });
        };
        m_connection.run(
            "CREATE TEMP TRIGGER " + m_name + std::string(verb) + (instead ? " INSTEAD OF " : " AFTER ") +
            std::string(verb) + " ON " + m_target.sqlName() + " BEGIN INSERT INTO " + m_name +
            " (ts_row, ts_verb" + names + ") VALUES (" + (verb == "DELETE" ? "OLD" : "NEW") + "._rowid_, '" +
            std::string(verb) + "', " + values("OLD.", "INSERT") + ", " + values("NEW.", "DELETE") +
            ") ON CONFLICT (ts_row, ts_verb) DO UPDATE SET " + again.substr(2) + "; END");
    }
}

void RowRecord::stop() {
    for (const std::string verb : {"INSERT", "UPDATE", "DELETE"}) drop("TRIGGER", verb);
}

RowRecord::~RowRecord() {
    stop();
    drop("VIEW", "_target");
    drop("TABLE", "");
}

// A rollback may have dropped the object already.
void RowRecord::drop(const std::string& kind, const std::string& suffix) {
    const std::string sql = "DROP " + kind + " IF EXISTS temp." + m_name + suffix;
    sqlite3_exec(m_connection.handle(), sql.c_str(), nullptr, nullptr, nullptr);
}

}  // namespace tsql
