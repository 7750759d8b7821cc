#include "translate/Translator.h"

namespace tsql {

namespace {

bool reads(const TableRef& table, std::string_view name) {
    if (const auto* join = std::get_if<Join>(&table.node))
        return reads(*join->left, name) || reads(*join->right, name);
    const auto* named = std::get_if<NamedTable>(&table.node);
    return named && named->name.schema.empty() && sameText(named->name.name, name);
}

bool isRecursive(const CommonTable& table) {
    const auto* operation = std::get_if<SetOperation>(&table.query->body);
    const auto* next = operation && operation->op == SetOp::UnionAll
                           ? std::get_if<Select>(&operation->right->body)
                           : nullptr;
    return next && std::ranges::any_of(next->from, [&](auto& from) { return reads(*from, table.name); });
}

// Whether * has the column.
bool hasColumn(const SelectItem& star, const std::string& column) {
    return std::ranges::none_of(star.replaced, [&](const auto& each) { return sameText(each, column); });
}

bool hasVarBinary(const QueryText& text) {
    return std::ranges::any_of(text.columns, [](auto& each) { return each.type.id == TypeId::VarBinary; });
}

// The columns in the form in which equal values are the same.
std::string keysOf(const QueryText& text, const std::string& prefix = {}) {
    return commaList(text.columns, [&](const OutputColumn& each) { return comparable(each.typed(prefix)); });
}

// One row for all that are equal. SQLite's DISTINCT does not ignore the zeros at the end of binary strings.
std::string distinctRows(const std::string& rows, const QueryText& text) {
    return "SELECT * FROM (" + rows + ") GROUP BY " + keysOf(text);
}

// Returns the output column, by number, that an ORDER BY item of SELECT DISTINCT repeats.
std::string orderKeyOfDistinct(const Typed& item, const std::string& list, const QueryText& text) {
    const std::string all = ", " + list, entry = ", " + collated(item) + " AS c";
    const std::size_t found = all.find(entry);
    if (found == std::string::npos) throw sqlError(kOrderByItemNotInDistinct);
    return collated(text.columns[std::stoul(all.substr(found + entry.size())) - 1].typed());
}

// UNION, EXCEPT or INTERSECT of rows with a varbinary (see distinctRows()).
std::string distinctSet(SetOp op, const std::string& left, const std::string& right, const QueryText& text) {
    if (op == SetOp::Union) return distinctRows(left + " UNION ALL " + right, text);
    return distinctRows("SELECT * FROM (" + left + ") AS l WHERE " + (op == SetOp::Except ? "NOT " : "") +
                            "EXISTS (SELECT " + keysOf(text, "l.") + " INTERSECT SELECT " +
                            keysOf(text, "r.") + " FROM (" + right + ") AS r)",
                        text);
}

// Whether the SQL uses, outside of its strings, one of the first sources that nextAlias() has named.
bool usesSource(std::string sql, int sources) {
    bool quoted = false;
    std::erase_if(sql, [&](char c) { return (quoted = quoted != (c == '\'')); });
    for (; sources > 0 && sql.find("s" + std::to_string(sources) + ".") == std::string::npos;) --sources;
    return sources > 0;
}

const Select& firstSelect(const SetOperation& operation) {
    const auto* select = std::get_if<Select>(&operation.left->body);
    return select ? *select : firstSelect(std::get<SetOperation>(operation.left->body));
}

// Returns the position of a qualified column in a list, unless a star comes before it.
std::optional<std::size_t> positionInList(const Expr& expr, const Select& select) {
    const auto* wanted = std::get_if<ColumnRef>(&expr.node);
    for (std::size_t i = 0; wanted && i < select.items.size() && select.items[i].value; ++i) {
        const auto* column = std::get_if<ColumnRef>(&select.items[i].value->node);
        if (column && std::ranges::equal(column->path, wanted->path, sameText)) return i;
    }
    return std::nullopt;
}

}  // namespace

QueryText Translator::query(const Query& query) {
    const std::size_t common = m_with.size();
    for (const auto& table : query.with) m_with.push_back({&table});
    if (query.maxRecursion) m_maxRecursion = *query.maxRecursion;
    const auto* set = std::get_if<SetOperation>(&query.body);
    QueryText text = set ? setOperation(*set, query) : select(std::get<Select>(query.body), query);
    if (query.xml) text = forXml(text, *query.xml);
    m_with.resize(common);
    return text;
}

QueryText Translator::select(const Select& select, const Query& query) {
    const bool topLevel = std::exchange(m_topLevel, false);
    if (m_scope && m_scope->aggregateDepth > 0) throw sqlError(kAggregateOfAggregate);
    Scope scope{.outer = m_scope, .outerSources = m_aliases};
    const Temporarily inner(m_scope, &scope);
    const Temporarily clause(m_nextValue, kNextValueInClause);
    QueryText text;
    const std::string fromSql = from(select.from);
    const std::string depth = std::exchange(m_depth, {});
    const std::string whereSql = select.where ? " WHERE " + condition(*select.where) : "";
    if (scope.sawAggregate) throw sqlError(kAggregateInWhere);
    const std::string groupSql = groupBy(select);

    if (topLevel)
        for (const auto& item : select.items)
            if (!item.variable.empty()) m_live[item.variable] = liveValue(item.variable);
    m_sorted = !query.orderBy.empty();
    const bool grouped = !groupSql.empty() || select.pivots || select.having || select.sets > 1;
    if (m_sorted && !m_live.empty() && topLevel && !grouped && !select.distinct)
        return assignInOrder(select, query, fromSql + whereSql);
    std::string list = selectList(select, topLevel, clause.before, text);
    refuseLooseColumns(kUngroupedInSelect, grouped);
    const bool listHasAggregate = scope.sawAggregate;
    const std::string havingSql = select.having ? " HAVING " + condition(*select.having) : "";
    refuseLooseColumns(kUngroupedInHaving, grouped);
    scope.windows = true;
    std::string keys;
    const std::string orderSql = orderBy(query.orderBy, text, select.distinct ? &list : nullptr,
                                         /*firstOfSet=*/nullptr, &keys, select.placesRows());
    scope.windows = false;
    refuseLooseColumns(kUngroupedInOrderBy, grouped);

    const std::string limitSql = limit(&select, query);
    const int notInRecursion = select.distinct                 ? kDistinctInRecursion
                               : select.top                    ? kTopInRecursion
                               : grouped || scope.sawAggregate ? kGroupingInRecursion
                                                               : 0;
    if (!depth.empty() && notInRecursion) throw sqlError(notInRecursion, {m_with.back().table->name});
    if (!depth.empty()) list += ", " + depth;
    std::string rows = fromSql + whereSql + groupSql + havingSql;
    // SQLite detects grouping only in the select list.
    if (grouped && select.groupBy.empty() && !listHasAggregate) rows = " FROM (SELECT count(*)" + rows + ")";
    text.sql = select.distinct && hasVarBinary(text)
                   ? distinctRows("SELECT " + list + rows, text)
                   : std::string("SELECT ") + (select.distinct ? "DISTINCT " : "") + list + keys + rows;
    text.sql = select.placesRows() ? placed(select, text, orderSql) : text.sql + orderSql + limitSql;
    if (!keys.empty() && !select.placesRows())
        text.sql = "SELECT " + commaList(text.columns, &OutputColumn::alias) + " FROM (" + text.sql + ")";
    text.oneRow = groupSql.empty() && (scope.sawAggregate || select.from.empty());
    return text;
}

// nextValue: the error for NEXT VALUE FOR where the query stands, 0 for none.
std::string Translator::selectList(const Select& select, bool topLevel, int nextValue, QueryText& text) {
    const std::size_t assigned = m_assignments.size();
    std::string list;
    m_scope->windows = true;
    m_nextValue = nextValue == kNextValueInClause ? kNextValueInSubquery
                  : nextValue                     ? nextValue
                  : select.distinct               ? kNextValueOfSet
                  : m_sorted                      ? kNextValueWithOrderBy
                                                  : 0;
    for (const auto& item : select.items) selectItem(item, text, list, select.distinct);
    m_nextValue = kNextValueInClause;
    m_scope->windows = false;
    if (m_assignments.size() > assigned && (!topLevel || m_assignments.size() != text.columns.size()))
        throw sqlError(kAssignmentAmongResults);
    return list;
}

// SELECT @v = @v + a FROM t ORDER BY b. Rows are sorted before the first value is computed.
QueryText Translator::assignInOrder(const Select& select, const Query& query, const std::string& rows) {
    QueryText text;
    const std::string order = orderBy(query.orderBy, text) + limit(&select, query);
    std::string all = "0", list;
    int columns = 0;
    for (auto& source : m_scope->sources)
        for (auto& column : source.columns) {
            const std::string alias = "o" + std::to_string(++columns);
            all += ", " + std::exchange(column.sql, "ordered." + alias) + " AS " + alias;
        }
    m_scope->loose.clear();
    m_sorted = false;
    for (const auto& item : select.items) selectItem(item, text, list, /*collate=*/false);
    if (m_assignments.size() != text.columns.size()) throw sqlError(kAssignmentAmongResults);
    refuseLooseColumns(kUngroupedInSelect, /*grouped=*/false);
    text.sql =
        "WITH ordered AS MATERIALIZED (SELECT " + all + rows + order + ") SELECT " + list + " FROM ordered";
    return text;
}

// TOP ... PERCENT and WITH TIES: the rows by their places in the order.
std::string Translator::placed(const Select& select, const QueryText& text, const std::string& order) {
    if (select.ties && order.empty()) throw sqlError(kTiesWithoutOrderBy);
    if (!m_assignments.empty()) throw unsupported("variables in SELECT TOP ... PERCENT or WITH TIES");
    const Temporarily outside(m_scope, nullptr);
    const std::string part = coerce(value(*select.top), simpleType(TypeId::Float)).sql;
    const std::string rows = "CASE WHEN " + part + " BETWEEN 0 AND 100 THEN CAST(ceil(" + part +
                             " * 1.0 * ts_all / 100) AS INTEGER) ELSE -1 END";
    const std::string most = select.percent ? checkedRowCount(rows, 0, kPercentOutOfRange)
                                            : rowCount(*select.top, 0, kNegativeRowCount);
    return "SELECT " + commaList(text.columns, &OutputColumn::alias) + " FROM (SELECT *, " +
           (select.ties ? "rank()" : "row_number()") + " OVER (" + order +
           ") AS ts_place, count(*) OVER () AS ts_all FROM (" + text.sql + ")) WHERE ts_place <= " + most +
           " ORDER BY ts_place";
}

// Without this check SQLite would return the column's value from an arbitrary row of the group.
void Translator::refuseLooseColumns(int error, bool grouped) {
    if ((grouped || m_scope->sawAggregate) && !m_scope->loose.empty())
        throw sqlError(error, {m_scope->loose.front()});
}

void Translator::addOutput(QueryText& text, std::string& list, Column column, const std::string& sql) {
    const std::string alias = "c" + std::to_string(text.columns.size() + 1);
    list += (list.empty() ? "" : ", ") + sql + " AS " + alias;
    text.columns.push_back({std::move(column), alias});
}

void Translator::selectItem(const SelectItem& item, QueryText& text, std::string& list, bool collate) {
    if (!item.value) return star(item, text, list, collate);
    Typed typed = value(*item.value);
    if (item.identity) typed.type = item.identity->first;
    if (!item.variable.empty()) {
        m_assignments.push_back({item.variable, typed.type});
        if (const auto live = m_live.find(item.variable); live != m_live.end())
            live->second = coerce(typed, m_names.variableType(item.variable)).sql;
    }
    Column column{item.alias, typed.type, typed.nullable, false};
    if (const auto* ref = std::get_if<ColumnRef>(&item.value->node)) {
        if (column.name.empty()) column.name = ref->path.back();
        const Source* source = nullptr;
        if (const SourceColumn* found = findColumn(*ref, *m_scope, source)) column.identity = found->identity;
    }
    addOutput(text, list, std::move(column), collate ? collated(typed, kTypeNotDistinct) : typed.sql);
    text.columns.back().nullLiteral = typed.nullLiteral;
    if (item.identity) text.columns.back().newIdentity = item.identity->second;
}

void Translator::star(const SelectItem& item, QueryText& text, std::string& list, bool collate) {
    bool any = false;
    for (const auto& source : m_scope->sources) {
        if (!isNamed(source, item.starOf)) continue;
        any = true;
        for (const auto& column : source.columns) {
            if (!hasColumn(item, column.name)) continue;
            if (!m_scope->groupKeys.contains(column.sql)) m_scope->loose.push_back(source.shown(column.name));
            addOutput(text, list, column,
                      collate ? collated({column.sql, column.type}, kTypeNotDistinct) : column.sql);
        }
    }
    if (any) return;
    if (item.starOf.empty()) throw sqlError(kNoTableToSelectFrom);
    throw sqlError(kUnknownColumnPrefix, {item.starOf.back()});
}

std::string Translator::groupBy(const Select& select) {
    std::string sql;
    std::set<std::string> keys;
    const auto add = [&](const Typed& key) {
        keys.insert(key.sql);
        sql += (sql.empty() ? " GROUP BY " : ", ") + comparable(key);
    };
    for (const auto& expr : select.groupBy) {
        const Typed key = value(*expr);
        if (m_scope->loose.empty()) throw sqlError(kGroupByWithoutColumn);
        m_scope->loose.clear();
        add(key);
    }
    for (const auto& source : m_scope->sources)
        for (const auto& column : source.columns)
            if (select.pivots && hasColumn(select.items.front(), column.name)) add({column.sql, column.type});
    m_scope->loose.clear();  // WHERE and ON are evaluated before grouping
    m_scope->groupKeys = std::move(keys);
    for (const auto& expr : select.ungrouped)
        if (const std::string key = value(*expr).sql; !m_scope->groupKeys.contains(key))
            m_scope->nullKeys.insert(key);
    m_scope->loose.clear();
    return sql;
}

// Returns the output column that an ORDER BY item denotes by number or name, if it does.
std::optional<std::size_t> Translator::outputPosition(const Expr& expr, const QueryText& text) const {
    if (const auto* literal = std::get_if<Literal>(&expr.node)) {
        const TypedValue& constant = literal->constant;
        if (constant.type.id != TypeId::Int || isNull(constant.value)) return std::nullopt;
        const std::int64_t position = std::get<std::int64_t>(constant.value);
        if (position < 1 || position > static_cast<std::int64_t>(text.columns.size()))
            throw sqlError(kOrderByPositionOutOfRange, {std::to_string(position)});
        return static_cast<std::size_t>(position - 1);
    }
    const auto* name = std::get_if<ColumnRef>(&expr.node);
    if (!name || name->path.size() != 1) return std::nullopt;
    std::optional<std::size_t> position;
    for (std::size_t i = 0; i < text.columns.size(); ++i)
        if (sameText(text.columns[i].name, name->path.front())) {
            if (position) throw sqlError(kAmbiguousColumnName, {name->path.front()});
            position = i;
        }
    return position;
}

std::string Translator::orderBy(const std::vector<OrderItem>& items, const QueryText& text,
                                const std::string* distinctList, const Select* firstOfSet, std::string* keys,
                                bool all) {
    std::string sql;
    std::set<std::string> columns;
    for (const auto& item : items) {
        const auto& node = item.value->node;
        const bool isLiteral = std::holds_alternative<Literal>(node);
        std::string key;
        auto position = outputPosition(*item.value, text);
        if (firstOfSet && !position) position = positionInList(*item.value, *firstOfSet);
        if (position)
            key = collated(text.columns[*position].typed());
        else if (isLiteral || std::holds_alternative<VariableRef>(node))
            throw sqlError(isLiteral ? kConstantInOrderBy : kVariableInOrderBy,
                           {std::to_string(&item - items.data() + 1)});
        else if (firstOfSet)
            throw firstOfSet->sets == 1
                ? sqlError(kOrderByItemNotInSetOperation)
                : unsupported("ORDER BY of an expression with GROUPING SETS, CUBE or ROLLUP");
        else {
            const Typed typed = value(*item.value);
            key = distinctList ? orderKeyOfDistinct(typed, *distinctList, text) : comparable(typed);
            if (keys && ((all && !distinctList) || usesSource(key, m_scope->outerSources))) {
                const std::string name = "k" + std::to_string(&item - items.data());
                *keys += ", " + std::exchange(key, name) + " AS " + name;
            }
        }
        const bool isColumn = isLiteral || std::holds_alternative<ColumnRef>(node);
        if (isColumn && !columns.insert(key).second) throw sqlError(kRepeatedOrderByColumn);
        sql += (sql.empty() ? " ORDER BY " : ", ") + key + (item.descending ? " DESC" : "");
    }
    return sql;
}

std::string Translator::limit(const Select* select, const Query& query) {
    if (select && select->top && query.offset) throw sqlError(kTopWithOffset);
    if (select && select->placesRows()) return {};
    if (select && select->top) return " LIMIT " + rowCount(*select->top, 0, kNegativeRowCount);
    if (!query.offset) return {};
    const std::string fetch = query.fetch ? rowCount(*query.fetch, 1, kFetchNotPositive) : "-1";
    return " LIMIT " + fetch + " OFFSET " + rowCount(*query.offset, 0, kNegativeOffsetClause);
}

// Row count of TOP, OFFSET or FETCH, which cannot refer to columns of its query. A count below `least` is an
// error; SQLite alone would return all rows.
std::string Translator::rowCount(const Expr& expr, int least, int error) {
    const Temporarily outer(m_scope, m_scope ? m_scope->outer : nullptr);
    const int sources = m_aliases;
    const Typed rows = value(expr);
    if (!isExact(rows.type.id) || rows.type.scale > 0) throw sqlError(kRowCountNotInteger);
    if (usesSource(rows.sql, sources)) throw unsupported("a column as the number of TOP or OFFSET");
    return checkedRowCount(coerce(rows, simpleType(TypeId::BigInt)).sql, least, error);
}

// LIMIT of a change: TOP, or SET ROWCOUNT if that is less.
std::string Translator::changeLimit(const ExprPtr& top) {
    const std::string most = m_names.mostRows() ? std::to_string(m_names.mostRows()) : "";
    if (!top) return most.empty() ? most : " LIMIT " + most;
    const std::string rows = rowCount(*top, 0, kNegativeRowCount);
    return " LIMIT " + (most.empty() ? rows : "min(" + rows + ", " + most + ")");
}

// The rows that INSERT takes of a query.
std::string Translator::limited(const std::string& sql, const ExprPtr& top) {
    const std::string limit = changeLimit(top);
    return limit.empty() ? sql : "SELECT * FROM (" + sql + ")" + limit;
}

QueryText Translator::setOperation(const SetOperation& operation, const Query& query) {
    static constexpr std::string_view kWords[] = {" UNION ", " UNION ALL ", " EXCEPT ", " INTERSECT "};
    m_topLevel = false;
    const Temporarily inner(m_nextValue, m_nextValue ? m_nextValue : kNextValueOfSet);
    QueryText left = this->query(*operation.left);
    const QueryText right = this->query(*operation.right);
    if (left.columns.size() != right.columns.size()) throw sqlError(kSetOperationColumnCounts);
    std::string leftList, rightList;
    const bool distinct = operation.op != SetOp::UnionAll;
    // A long chain is not nested: SQLite limits the nesting.
    bool flat = left.compound && (left.collated || !distinct);
    for (std::size_t i = 0; i < left.columns.size(); ++i) {
        OutputColumn& column = left.columns[i];
        const OutputColumn& other = right.columns[i];
        if (column.newIdentity) throw unsupported("IDENTITY() in a UNION");
        const Typed pieces[] = {column.typed(), other.typed()};
        column.type = tsql::commonType(pieces);
        column.nullLiteral = column.nullLiteral && other.nullLiteral;
        column.nullable = column.nullable || other.nullable;
        column.identity = false;
        const Typed merged = coerce(pieces[0], column.type);
        flat = flat && merged.sql == pieces[0].sql;
        const std::string comma = i ? ", " : "", as = " AS " + column.alias;
        leftList += comma + (distinct ? collated(merged, kTypeNotInSetOperation) : merged.sql) + as;
        rightList += comma + coerce(pieces[1], column.type).sql + as;
    }
    QueryText text{{}, left.columns};
    const std::string leftRows = "SELECT " + leftList + " FROM (" + left.sql + ")";
    const std::string rightRows = "SELECT " + rightList + " FROM (" + right.sql + ")";
    if (distinct && hasVarBinary(text)) {
        text.sql = distinctSet(operation.op, leftRows, rightRows, text);
    } else {
        text.compound = query.orderBy.empty() && !query.offset;
        text.collated = flat ? left.collated : distinct;
        text.sql = (flat ? left.sql : leftRows) +
                   std::string(kWords[static_cast<std::size_t>(operation.op)]) + rightRows;
    }
    text.sql += orderBy(query.orderBy, text, /*distinctList=*/nullptr, &firstSelect(operation)) +
                limit(nullptr, query);
    return text;
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
    std::string sql = derived ? derivedTable(beside(applied, [&] { return query(*derived->query); }),
                                             derived->columns, table.alias, applied)
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
    for (const auto& column : table.columns)
        source.columns.push_back({column, prefix + quotedName(column.name)});
}

std::string Translator::namedTable(const NamedTable& table, const std::string& alias, bool applied) {
    const std::string exposed = alias.empty() ? table.name.name : alias;
    if (table.name.schema.empty() && !table.arguments)
        for (std::size_t i = m_with.size(); i-- > 0;) {
            if (!sameText(m_with[i].table->name, table.name.name)) continue;
            if (!m_with[i].recursive.empty()) {
                if (!m_depth.empty()) throw sqlError(kSeveralRecursiveReferences, {table.name.name});
                const std::string reference = addSource(m_with[i].columns, exposed);
                m_depth = "ts_deeper(" + reference + ".depth, " + std::to_string(m_maxRecursion) + ")";
                return m_with[i].recursive + " AS " + reference;
            }
            const CommonTable& common = *m_with[i].table;
            const Temporarily before(m_with, std::vector(m_with.begin(), m_with.begin() + std::ptrdiff_t(i)));
            if (isRecursive(common)) return recursiveTable(common, exposed);
            return derivedTable(beside(false, [&] { return query(*common.query); }), common.columns, exposed);
        }
    auto info = table.arguments ? std::nullopt : m_names.findTable(table.name);
    std::optional<StoredModule> stored;
    if (!info) stored = m_names.module(table.name, table.arguments ? kTableFunction : kView);
    if (!stored && table.arguments) stored = m_names.module(table.name, kRowsFunction);
    if (!stored && table.arguments) return splitText(table, exposed, applied);
    std::vector<std::string> arguments;
    const int sources = m_aliases;
    if (table.arguments) arguments = beside(applied, [&] { return argumentsOf(*stored, *table.arguments); });
    if (stored && !stored->module->rows)
        return storedTable(*stored, arguments, exposed, applied && table.arguments);
    if (std::ranges::any_of(arguments, [&](auto& each) { return usesSource(each, sources); }))
        throw unsupported("columns as arguments of a table function of several statements");
    if (stored) info = m_names.calledTable(*stored, arguments, *this);
    const std::string sqlAlias = nextAlias();
    const auto view = info ? std::nullopt : m_names.view(table.name);
    if (view) {
        info.emplace().columns = view->columns;
        info->schemaName = table.name.schema;
    } else if (!info) {
        info = m_names.table(table.name);
    }
    addSource(*info, exposed, sqlAlias);
    if (!view) return info->sqlName() + " AS " + sqlAlias;
    m_scope->sources.back().rowid.clear();
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
        sql = derivedTable(beside(false, [&] { return query(*stored.module->query); }),
                           stored.module->columns, alias, applied);
    });
    m_scope->sources.back().database = stored.database;
    m_scope->sources.back().schemaName = stored.schemaName;
    return sql;
}

// STRING_SPLIT(text, separator)
std::string Translator::splitText(const NamedTable& table, const std::string& alias, bool applied) {
    if (!table.name.schema.empty() || !sameWord(table.name.name, "STRING_SPLIT"))
        throw sqlError(kInvalidObjectName,
                       {(table.name.schema.empty() ? "" : table.name.schema + ".") + table.name.name});
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

std::string Translator::derivedTable(QueryText text, const std::vector<std::string>& names,
                                     const std::string& alias, bool applied) {
    rename(text, names, alias);
    if (!applied) return "(" + text.sql + ") AS " + addSource(text.columns, alias);
    return packedTable("(SELECT json_group_array(ts_pack(" + commaList(text.columns, &OutputColumn::alias) +
                           ")) FROM (" + text.sql + "))",
                       text.columns, alias);
}

// Anchor UNION ALL recursive part. Every row has its depth, which is checked against the recursion limit.
std::string Translator::recursiveTable(const CommonTable& table, const std::string& alias) {
    const auto& operation = std::get<SetOperation>(table.query->body);
    const std::string name = "r" + nextAlias();
    QueryText anchor;
    const QueryText next = beside(/*applied=*/false, [&] {
        anchor = query(*operation.left);
        rename(anchor, table.columns, table.name);
        for (auto& output : anchor.columns) output.nullable = true;
        m_with.push_back({&table, name, anchor.columns});
        return query(*operation.right);
    });
    if (next.columns.size() != anchor.columns.size()) throw sqlError(kSetOperationColumnCounts);
    std::string list;
    for (std::size_t i = 0; i < anchor.columns.size(); ++i) {
        const OutputColumn& output = anchor.columns[i];
        if (output.type != next.columns[i].type && !next.columns[i].nullLiteral)
            throw sqlError(kRecursiveTypesDiffer, {output.name, table.name});
        list += output.alias + ", ";
    }
    return "(WITH RECURSIVE " + name + "(" + list + "depth) AS (SELECT " + list + "0 FROM (" + anchor.sql +
           ") UNION ALL " + next.sql + ") SELECT * FROM " + name + ") AS " + addSource(anchor.columns, alias);
}

std::string Translator::join(const Join& join) {
    static constexpr std::string_view kWords[] = {"", " LEFT", " RIGHT", " FULL", " CROSS"};
    static constexpr std::string_view kSwapped[] = {"", " RIGHT", " LEFT", " FULL", " CROSS"};
    for (const auto& table : m_with)  // outer rows would make the recursion endless
        if (!table.recursive.empty() && join.kind != JoinKind::Inner && join.kind != JoinKind::Cross)
            throw sqlError(kOuterJoinInRecursion, {table.table->name});
    const std::size_t begin = m_scope->sources.size();
    std::string left = tableRef(*join.left);
    const std::size_t middle = m_scope->sources.size();
    const Temporarily onlyOfJoin(m_scope->firstSource, begin);
    std::string right = tableRef(*join.right, join.applies);
    const bool whole = join.kind == JoinKind::Full;
    for (std::size_t i = begin; i < m_scope->sources.size(); ++i)  // NULLs of rows without a match
        if (whole || join.kind == (i < middle ? JoinKind::Right : JoinKind::Left))
            for (auto& column : m_scope->sources[i].columns) column.nullable = true;
    const bool isNested = std::holds_alternative<Join>(join.right->node);
    // SQLite hides the row ids of a join in parentheses, which a change of its tables needs. Hence the join
    // comes first, if it can.
    const bool swaps = isNested && !std::holds_alternative<Join>(join.left->node);
    if (isNested && !swaps) right = "(" + right + ")";
    if (swaps) std::swap(left, right);
    const std::string_view word = (swaps ? kSwapped : kWords)[static_cast<std::size_t>(join.kind)];
    left.append(word).append(" JOIN ").append(right);
    return join.on ? left + " ON " + condition(*join.on) : left;
}

}  // namespace tsql
