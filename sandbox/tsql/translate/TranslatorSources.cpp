// FROM: tables, functions, derived and common tables, joins.
#include "translate/Translator.h"

namespace tsql {

namespace {

bool reads(const TableRef& table, std::string_view name) {
    if (const auto* join = std::get_if<Join>(&table.node))
        return reads(*join->left, name) || reads(*join->right, name);
    const auto* named = std::get_if<NamedTable>(&table.node);
    return named && named->name.schema.empty() && sameText(named->name.name, name);
}

// Returns the recursive parts of the table in reverse order, and its anchor behind them; else its query.
std::vector<const Query*> partsOf(const CommonTable& table) {
    std::vector<const Query*> parts{table.query.get()};
    const auto readsItself = [&](auto& from) { return reads(*from, table.name); };
    while (const auto* operation = std::get_if<SetOperation>(&parts.back()->body)) {
        const auto* next = std::get_if<Select>(&operation->right->body);
        if (operation->op != kUnionAll || !next || std::ranges::none_of(next->from, readsItself)) break;
        parts.back() = operation->right.get();
        parts.push_back(operation->left.get());
    }
    return parts;
}

// Throws the error of a query through which no table can be changed.
void requireOneTable(const Query& query, std::string_view name, bool applied) {
    const auto* select = std::get_if<Select>(&query.body);
    if (!select) throw sqlError(kChangedUnion, {name});
    if (select->distinct || !select->groupBy.empty() || select->having || select->sets > 1 || select->pivots)
        throw sqlError(kChangedGroups, {name});
    const auto* from = select->from.size() == 1 ? select->from.front().get() : nullptr;
    const auto* named = from ? std::get_if<NamedTable>(&from->node) : nullptr;
    const bool isTable = named ? !named->arguments : from && std::holds_alternative<DerivedTable>(from->node);
    if (applied || query.xml || !isTable)
        throw unsupported("changes through a query ('" + std::string(name) + "') of other than one table");
}

}  // namespace

// Whether the SQL uses, outside of its strings, one of the first sources that nextAlias() has named.
int Translator::lastSource(std::string sql, int sources) {
    bool quoted = false;
    std::erase_if(sql, [&](char c) { return (quoted = quoted != (c == '\'')); });
    for (; sources > 0 && sql.find("s" + std::to_string(sources) + ".") == std::string::npos;) --sources;
    return sources;
}

std::string Translator::from(const std::vector<TableRefPtr>& tables) {
    std::vector<std::string> texts;
    bool hasJoin = false;
    for (const auto& table : tables) {
        const bool isJoin = std::holds_alternative<Join>(table->node);
        // The first join comes first, so that it needs no parentheses, which hide its row ids.
        const bool isFirst = isJoin && !std::exchange(hasJoin, hasJoin || isJoin);
        const std::string one = tableRef(*table);
        texts.insert(isFirst ? texts.begin() : texts.end(), isJoin && !isFirst ? "(" + one + ")" : one);
    }
    return texts.empty() ? "" : " FROM " + commaList(texts);
}

std::string Translator::nextAlias() {
    constexpr int kMostTables = 256;  // nested views could multiply the tables without limit
    if (++m_aliases > kMostTables) throw sqlError(kTooManyTables);
    return "s" + std::to_string(m_aliases);
}

std::string Translator::tableRef(const TableRef& table, bool applied) {
    const auto* joined = std::get_if<Join>(&table.node);
    if (joined && applied) throw unsupported("APPLY of a join in parentheses");
    if (joined) return join(*joined);
    const auto* derived = std::get_if<DerivedTable>(&table.node);
    std::string sql = derived
                          ? derivedTable(*derived->query, table.alias, derived->columns, table.alias, applied)
                          : namedTable(std::get<NamedTable>(table.node), table.alias, applied);
    Source& added = m_scope->sources.back();
    if (!table.alias.empty()) added.schemaName.clear();
    for (const auto& each : m_scope->sources)
        if (&each != &added && each.database == added.database &&
            sameText(each.schemaName, added.schemaName) && sameText(each.exposed, added.exposed))
            throw sqlError(table.alias.empty() ? kSameExposedNames : kRepeatedCorrelationName,
                           {added.exposed, added.exposed});
    return sql;
}

void Translator::addSource(const TableInfo& table, const std::string& exposed, const std::string& alias) {
    const std::string prefix = alias.empty() ? "" : alias + ".";
    auto& source = m_scope->sources.emplace_back(
        Source{exposed, table.database, table.schemaName, prefix + "_rowid_", table.sqlName(), {}});
    for (const auto& column : table.shown)
        source.columns.push_back({column, prefix + quotedName(column.own)});
    if (!table.through.empty()) return;
    for (const auto& column : table.columns) {
        source.columns.push_back({column, prefix + quotedName(column.name)});
        source.columns.back().own = column.name;
    }
}

std::string Translator::commonTable(std::size_t index, const std::string& alias) {
    const CommonTable& table = *m_with[index].table;
    if (!m_with[index].recursive.empty()) {
        if (!m_depth.empty()) throw sqlError(kSeveralRecursiveReferences, {table.name});
        const std::string reference = addSource(m_with[index].columns, alias);
        m_depth = "ts_deeper(" + reference + ".depth, " + std::to_string(m_maxRecursion) + ")";
        return m_with[index].recursive + " AS " + reference;
    }
    const Temporarily before(m_with, std::vector(m_with.begin(), m_with.begin() + std::ptrdiff_t(index)));
    if (partsOf(table).size() > 1 && !m_returnsRowId) return recursiveTable(table, alias);
    return derivedTable(*table.query, table.name, table.columns, alias);
}

std::string Translator::namedTable(const NamedTable& table, const std::string& alias, bool applied) {
    const std::string exposed = alias.empty() ? table.name.name : alias;
    if (table.name.schema.empty() && !table.arguments)
        for (std::size_t i = m_with.size(); i-- > 0;)
            if (sameText(m_with[i].table->name, table.name.name)) return commonTable(i, exposed);
    auto info = table.arguments ? std::nullopt : m_names.findTable(table.name);
    std::optional<StoredModule> stored;
    if (!info) stored = m_names.module(table.name, table.arguments ? kTableFunction : kView);
    if (!stored && table.arguments) stored = m_names.module(table.name, kRowsFunction);
    if (!stored && table.arguments) return splitText(table, exposed, applied);
    std::vector<std::string> arguments;
    const int sources = m_aliases;
    if (table.arguments) arguments = beside(applied, [&] { return argumentsOf(*stored, *table.arguments); });
    if (stored && m_returnsRowId && (stored->module->checksRows || m_names.hasTriggers(*stored)))
        throw unsupported("changes through a view with triggers for other changes or WITH CHECK OPTION");
    if (stored && !stored->module->rows)
        return storedTable(*stored, arguments, exposed, applied && table.arguments);
    if (std::ranges::any_of(arguments, [&](auto& each) { return lastSource(each, sources) > 0; }))
        throw unsupported("columns as arguments of a table function of several statements");
    if (stored) info = m_names.calledTable(*stored, arguments, *this);
    const std::string sqlAlias = nextAlias();
    const auto view = info ? std::nullopt : m_names.view(table.name);
    // Table variables are those of a frame, and system views show the moment.
    m_isLasting = m_isLasting && !stored && !view && !table.name.name.starts_with('@');
    if (view) {
        info.emplace().columns = view->columns;
        info->schemaName = table.name.schema;
        info->database = table.name.database;
    } else if (!info) {
        info = m_names.table(table.name);
    }
    addSource(*info, exposed, sqlAlias);
    if (m_returnsRowId && !view && !stored) m_behind = *info;
    if (!view) return info->sqlName() + " AS " + sqlAlias;
    m_scope->sources.back().rowid.clear();
    m_scope->sources.back().systemView = view->name;
    return "(" + view->sql + ") AS " + sqlAlias;
}

// Returns the query of a view or function. It does not see the sources of the statement.
std::string Translator::storedTable(const StoredModule& stored, const std::vector<std::string>& values,
                                    const std::string& alias, bool applied) {
    WordMap<std::string> arguments;
    for (std::size_t i = 0; i < values.size(); ++i) arguments[stored.module->parameters[i].name] = values[i];
    std::string sql;
    m_names.within(stored, [&] {
        const Temporarily noCommonTables(m_with, std::vector<NamedQuery>());
        const Temporarily onlyArguments(m_live, std::move(arguments));
        const Temporarily noOuterQuery(m_scope->outer, nullptr);
        sql = derivedTable(*stored.module->query, stored.key(), stored.module->columns, alias, applied);
    });
    m_scope->sources.back().database = stored.database;
    m_scope->sources.back().schemaName = stored.schemaName;
    return sql;
}

// STRING_SPLIT(text, separator)
std::string Translator::splitText(const NamedTable& table, const std::string& alias, bool applied) {
    if (!table.name.schema.empty() || !sameWord(table.name.name, "STRING_SPLIT")) {
        m_names.table(table.name);
        throw sqlError(kArgumentsOfTable, {table.name.name});
    }
    if (table.arguments->size() != 2) throw sqlError(kTooManyArguments, {"STRING_SPLIT"});
    const auto pieces = beside(applied, [&] { return values(*table.arguments); });
    const Typed &text = pieces.front(), &separator = pieces.back();
    for (std::size_t i = 0; i < pieces.size(); ++i)
        if (!isText(pieces[i].type.id) && !pieces[i].nullLiteral)
            throw sqlError(kInvalidArgumentType,
                           {baseName(pieces[i].type.id), std::to_string(i + 1), "string_split"});
    const SqlType type = isNational(text.type.id) ? nvarcharType(text.type.length) : text.type;
    return packedTable("ts_split(" + coerce(text, nvarcharType(SqlType::kMax)).sql + "," +
                           coerce(separator, nvarcharType(SqlType::kMax)).sql + ")",
                       {{{"value", type}, {}}}, alias);
}

// A source whose rows are the result of ts_pack() for each row, in a JSON array. Unlike a subquery, `rows`
// may use the columns of the sources before it.
std::string Translator::packedTable(const std::string& rows, const std::vector<OutputColumn>& columns,
                                    const std::string& alias) {
    const std::string sqlAlias = addSource(columns, alias);
    int place = 0;
    for (auto& column : m_scope->sources.back().columns)
        column.sql = "ts_unpack(" + sqlAlias + ".value, " + std::to_string(place++) + ")";
    return "json_each(" + rows + ") AS " + sqlAlias;
}

void Translator::rename(QueryText& text, const std::vector<std::string>& names, const std::string& of,
                        int unnamed, int repeated) {
    if (!names.empty() && names.size() != text.columns.size())
        throw sqlError(names.size() > text.columns.size() ? kFewerColumnsThanNames : kMoreColumnsThanNames,
                       {of});
    for (std::size_t i = 0; i < names.size(); ++i) text.columns[i].name = names[i];
    std::set<std::string> seen;
    for (const OutputColumn& column : text.columns) {
        if (column.name.empty()) throw sqlError(unnamed, {column.alias.substr(1), of});
        if (!seen.insert(toLower(column.name)).second) throw sqlError(repeated, {column.name, of});
    }
}

// Adds a source with these columns to the scope and returns its alias in SQLite.
std::string Translator::addSource(const std::vector<OutputColumn>& columns, const std::string& exposed) {
    std::string alias = nextAlias();
    auto& source = m_scope->sources.emplace_back(Source{exposed, {}, {}, {}, {}, {}});
    for (const OutputColumn& column : columns) source.columns.push_back({column, alias + "." + column.alias});
    return alias;
}

std::string Translator::derivedTable(const Query& query, const std::string& key,
                                     const std::vector<std::string>& names, const std::string& alias,
                                     bool applied) {
    const bool isChanged = m_returnsRowId || key == m_through;
    const Temporarily withRowId(m_returnsRowId, isChanged);
    if (isChanged) requireOneTable(query, bareName(key), applied);
    QueryText text = beside(applied, [&] { return this->query(query); });
    std::string rowid;
    if (isChanged) {
        if (text.oneRow) throw sqlError(kChangedGroups, {bareName(key)});
        rowid = text.columns.back().alias;
        text.columns.pop_back();
    }
    rename(text, names, alias);
    if (applied)
        return packedTable("(SELECT json_group_array(ts_pack(" +
                               commaList(text.columns, &OutputColumn::alias) + ")) FROM (" + text.sql + "))",
                           text.columns, alias);
    const std::string sqlAlias = addSource(text.columns, alias);
    if (isChanged) m_scope->sources.back().rowid = sqlAlias + "." + rowid;
    if (isChanged) m_scope->sources.back().table = key;
    return "(" + text.sql + ") AS " + sqlAlias;
}

TableInfo Translator::tableBehind(const TableRef& query, const Change& change) {
    useCommonTables(change);
    Scope scope;
    const Temporarily inner(m_scope, &scope);
    m_returnsRowId = true;
    tableRef(query);
    if (m_behind.name.empty()) throw unsupported("changes through a query of a function or system view");
    const Source& source = scope.sources.back();
    m_behind.through = source.table;
    m_behind.shown.assign(source.columns.begin(), source.columns.end());
    return m_behind;
}

// Anchor UNION ALL recursive parts. Every row has its depth, which is checked against the recursion limit.
std::string Translator::recursiveTable(const CommonTable& table, const std::string& alias) {
    const auto parts = partsOf(table);
    const std::string name = "r" + nextAlias();
    QueryText anchor;
    std::string rows;
    beside(/*applied=*/false, [&] {
        anchor = query(*parts.back());
        rename(anchor, table.columns, table.name);
        for (auto& output : anchor.columns) output.nullable = true;
        m_with.push_back({&table, name, anchor.columns});
        for (std::size_t part = parts.size() - 1; part-- > 0;) {
            const QueryText next = query(*parts[part]);
            if (next.columns.size() != anchor.columns.size()) throw sqlError(kSetOperationColumnCounts);
            for (std::size_t i = 0; i < anchor.columns.size(); ++i)
                if (anchor.columns[i].type != next.columns[i].type && !next.columns[i].nullLiteral)
                    throw sqlError(kRecursiveTypesDiffer, {anchor.columns[i].name, table.name});
            rows += " UNION ALL " + next.sql;
        }
    });
    const std::string list = commaList(anchor.columns, &OutputColumn::alias) + ", ";
    return "(WITH RECURSIVE " + name + "(" + list + "depth) AS (SELECT " + list + "0 FROM (" + anchor.sql +
           ")" + rows + ") SELECT * FROM " + name + ") AS " + addSource(anchor.columns, alias);
}

std::string Translator::join(const Join& join) {
    for (const auto& table : m_with)  // outer rows would make the recursion endless
        if (!table.recursive.empty() && join.kind != "INNER" && join.kind != "CROSS")
            throw sqlError(kOuterJoinInRecursion, {table.table->name});
    const std::size_t begin = m_scope->sources.size();
    std::string left = tableRef(*join.left);
    const std::size_t middle = m_scope->sources.size();
    const Temporarily onlyOfJoin(m_scope->firstSource, begin);
    std::string right = tableRef(*join.right, join.applies);
    if (join.applies && m_scope->sawAggregate) throw sqlError(kAggregateOfApplied);
    for (std::size_t i = begin; i < m_scope->sources.size(); ++i)  // NULLs of rows without a match
        if (join.kind == "FULL" || join.kind == (i < middle ? "RIGHT" : "LEFT"))
            for (auto& column : m_scope->sources[i].columns) column.nullable = true;
    const bool isNested = std::holds_alternative<Join>(join.right->node);
    // SQLite hides the row ids of a join in parentheses, which a change of its tables needs. Hence the join
    // comes first, if it can.
    const bool swaps = isNested && !std::holds_alternative<Join>(join.left->node);
    if (isNested && !swaps) right = "(" + right + ")";
    if (swaps) std::swap(left, right);
    const bool turns = swaps && (join.kind == "LEFT" || join.kind == "RIGHT");
    const std::string_view kind = !turns ? join.kind : join.kind == "LEFT" ? "RIGHT" : "LEFT";
    left.append(" ").append(kind).append(" JOIN ").append(right);
    return join.on ? left + " ON " + condition(*join.on) : left;
}

}  // namespace tsql
