#include "translate/Translator.h"

namespace tsql {

namespace {

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
std::string distinctSet(std::string_view op, const std::string& left, const std::string& right,
                        const QueryText& text) {
    if (op == kUnion) return distinctRows(left + " UNION ALL " + right, text);
    return distinctRows("SELECT * FROM (" + left + ") AS l WHERE " + (op == kExcept ? "NOT " : "") +
                            "EXISTS (SELECT " + keysOf(text, "l.") + " INTERSECT SELECT " +
                            keysOf(text, "r.") + " FROM (" + right + ") AS r)",
                        text);
}

const Select& firstSelect(const SetOperation& operation) {
    const auto* select = std::get_if<Select>(&operation.left->body);
    return select ? *select : firstSelect(std::get<SetOperation>(operation.left->body));
}

// Returns the output column that an ORDER BY item denotes by number or name, if it does.
std::optional<std::size_t> outputPosition(const Expr& expr, const QueryText& text) {
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

// Throws the error of a clause that the recursive part of a common table may not have.
void Translator::requireRecursive(const Select& select, bool aggregates) const {
    const int number = select.distinct ? kDistinctInRecursion
                       : select.top    ? kTopInRecursion
                       : aggregates    ? kGroupingInRecursion
                                       : 0;
    if (number) throw sqlError(number, {m_with.back().table->name});
}

QueryText Translator::select(const Select& select, const Query& query) {
    const bool topLevel = std::exchange(m_topLevel, false);
    if (m_scope && m_scope->aggregateDepth > 0) throw sqlError(kAggregateOfAggregate);
    Scope scope{.outer = m_scope, .outerSources = m_aliases};
    const Temporarily inner(m_scope, &scope);
    const Temporarily clause(m_nextValue, kNextValueInClause);
    const Temporarily within(m_through, std::string());
    const Temporarily outsideOfWhere(m_inWhere, false);
    QueryText text;
    const std::string fromSql = from(select.from);
    const bool returnsRowId = std::exchange(m_returnsRowId, false);
    const std::string depth = std::exchange(m_depth, {});
    const std::string whereSql = where(select.where, topLevel);
    const std::string groupSql = groupBy(select);

    for (const auto& item : select.items)  // its expressions see what it assigns to variables, row by row
        if (topLevel && !item.variable.empty()) m_live[item.variable] = liveValue(item.variable);
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

    if (returnsRowId) addOutput(text, list, {}, {scope.sources.front().rowid, {}}, /*collate=*/false);
    const std::string limitSql = limit(&select, query);
    if (!depth.empty()) {
        requireRecursive(select, grouped || scope.sawAggregate);
        list += ", " + depth;
    }
    std::string rows = fromSql + whereSql + groupSql + havingSql;
    // SQLite detects grouping only in the select list.
    if (grouped && select.groupBy.empty() && !listHasAggregate) rows = " FROM (SELECT count(*)" + rows + ")";
    const bool comparesBytes = select.distinct && hasVarBinary(text);
    text.sql = (select.distinct && !comparesBytes ? "SELECT DISTINCT " : "SELECT ") + list + keys + rows;
    if (comparesBytes) text.sql = distinctRows(text.sql, text);
    text.sql = select.placesRows() ? placed(select, text, orderSql) : text.sql + orderSql + limitSql;
    if (!keys.empty() && !select.placesRows())
        text.sql = "SELECT " + commaList(text.columns, &OutputColumn::alias) + " FROM (" + text.sql + ")";
    text.oneRow = groupSql.empty() && (scope.sawAggregate || select.from.empty());
    return text;
}

std::string Translator::where(const ExprPtr& tested, bool binds) {
    const Temporarily within(m_inWhere, m_binds && binds);
    const std::string sql = tested ? " WHERE " + condition(*tested) : "";
    if (m_scope->sawAggregate) throw sqlError(kAggregateInWhere);
    return sql;
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

void Translator::addOutput(QueryText& text, std::string& list, Column column, const Typed& value,
                           bool collate) {
    const std::string alias = "c" + std::to_string(text.columns.size() + 1);
    list += (list.empty() ? "" : ", ") + (collate ? collated(value, kTypeNotDistinct) : value.sql) + " AS " +
            alias;
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
        if (const SourceColumn* found = findColumn(*ref, *m_scope, source))
            column.identity = found->identity, column.own = found->own;
    }
    addOutput(text, list, std::move(column), typed, collate);
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
            addOutput(text, list, column, {column.sql, column.type}, collate);
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
            if (keys && ((all && !distinctList) || lastSource(key, m_scope->outerSources) > 0)) {
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
    if (lastSource(rows.sql, sources) > 0) throw unsupported("a column as the number of TOP or OFFSET");
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
    m_topLevel = false;
    const Temporarily inner(m_nextValue, m_nextValue ? m_nextValue : kNextValueOfSet);
    QueryText left = this->query(*operation.left);
    const QueryText right = this->query(*operation.right);
    if (left.columns.size() != right.columns.size()) throw sqlError(kSetOperationColumnCounts);
    std::string leftList, rightList;
    const bool distinct = operation.op != kUnionAll;
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
        text.sql = (flat ? left.sql : leftRows) + " " + std::string(operation.op) + " " + rightRows;
    }
    text.sql += orderBy(query.orderBy, text, /*distinctList=*/nullptr, &firstSelect(operation)) +
                limit(nullptr, query);
    return text;
}

}  // namespace tsql
