#include "translate/Translator.h"

namespace tsql {

namespace {

// (SELECT NULL), for rows in any order. SQLite would sort by it, all rows before the first.
bool isConstantQuery(const Expr& expr) {
    const auto* query = std::get_if<ScalarQuery>(&expr.node);
    const auto* select = query ? std::get_if<Select>(&query->query->body) : nullptr;
    return select && select->from.empty() && !select->where && select->items.size() == 1 &&
           select->items.front().value && std::holds_alternative<Literal>(select->items.front().value->node);
}

// The views of the catalogue lack columns that they have in SQL Server.
SqlError missingColumn(const ColumnRef& column, std::span<const Source> sources) {
    for (const Source& source : sources)
        if (!source.systemView.empty())
            return unsupported("the column " + column.path.back() + " of " + source.systemView);
    return sqlError(kInvalidColumnName, {column.path.back()});
}

}  // namespace

Typed Translator::value(const Expr& expr) {
    const std::size_t loose = m_scope ? m_scope->loose.size() : 0;
    Typed result = std::visit(
        [this](const auto& each) -> Typed {
            if constexpr (requires { node(each); }) return node(each);
            throw std::logic_error("The parser allows no condition here.");
        },
        expr.node);
    // A whole GROUP BY expression is allowed anywhere, including its columns.
    const bool isNull = m_scope && m_scope->isNullKey(result.sql);
    if (isNull || (m_scope && m_scope->groupKeys.contains(result.sql))) m_scope->loose.resize(loose);
    return isNull ? Typed{"NULL", result.type} : result;
}

std::string Translator::condition(const Expr& expr) {
    return std::visit(
        [this](const auto& each) -> std::string {
            if constexpr (requires { test(each); }) return test(each);
            throw std::logic_error("The parser allows no value here.");
        },
        expr.node);
}

std::vector<Typed> Translator::values(const std::vector<ExprPtr>& exprs) {
    std::vector<Typed> typed(exprs.size());
    std::ranges::transform(exprs, typed.begin(), [this](const ExprPtr& expr) { return value(*expr); });
    return typed;
}

Typed Translator::node(const VariableRef& variable) {
    const std::string& name = variable.name;
    const SqlType type = m_names.variableType(name);
    if (const auto live = m_live.find(name); live != m_live.end()) {
        if (m_sorted && live->second == liveValue(live->first))
            throw unsupported("SELECT @variable = ... of the same variable with ORDER BY");
        return {live->second, type};
    }
    auto found = std::ranges::find_if(m_parameters,
                                      [&](const Parameter& each) { return sameWord(each.variable, name); });
    if (found == m_parameters.end()) found = m_parameters.insert(found, {name});
    return {"?" + std::to_string(found - m_parameters.begin() + 1), type};
}

// qualifier: [database .] [schema .] table; empty for any source.
bool Translator::isNamed(const Source& source, std::span<const std::string> qualifier) {
    const std::string* const names[] = {&source.exposed, &source.schemaName, &source.database};
    for (std::size_t i = 0; i < std::min(qualifier.size(), std::size(names)); ++i) {
        const std::string& part = qualifier[qualifier.size() - 1 - i];
        if (!part.empty() && !sameText(part, *names[i])) return false;
    }
    return true;
}

const SourceColumn* Translator::findColumn(const ColumnRef& column, Scope& scope, const Source*& source) {
    const std::string& name = column.path.back();
    const SourceColumn* found = nullptr;
    for (const auto& each : std::span(scope.sources).subspan(scope.firstSource)) {
        if (!isNamed(each, std::span(column.path).first(column.path.size() - 1))) continue;
        if (column.path.size() > 1 && !found) source = &each;
        for (const auto& candidate : each.columns) {
            if (!sameText(candidate.name, name)) continue;
            if (found) throw sqlError(kAmbiguousColumnName, {name});
            found = &candidate;
            source = &each;
        }
    }
    return found;
}

Typed Translator::node(const ColumnRef& column) {
    for (Scope* scope = m_scope; scope; scope = scope->outer) {
        const Source* source = nullptr;
        const SourceColumn* found = findColumn(column, *scope, source);
        if (!found && source) throw missingColumn(column, {source, 1});  // its table is known
        if (!found) continue;
        if (scope->isNullKey(found->sql)) return {"NULL", found->type};
        if (scope->aggregateDepth == 0 && !scope->groupKeys.contains(found->sql))
            scope->loose.push_back(source->shown(found->name));
        Typed typed{found->sql, found->type};
        typed.nullable = found->nullable;
        return typed;
    }
    if (column.path.size() == 1)
        throw missingColumn(column, m_scope ? m_scope->sources : std::span<const Source>());
    std::string path;
    for (const auto& part : column.path) path += (path.empty() ? "" : ".") + part;
    throw sqlError(kUnboundIdentifier, {path});
}

Typed Translator::node(const Case& choice) {
    const Temporarily inner(m_nextValue, kNextValueInCase);
    std::vector<std::string> conditions;
    std::vector<Typed> results;
    for (const auto& [when, then] : choice.branches) {
        conditions.push_back(condition(*when));
        results.push_back(value(*then));
    }
    results.push_back(choice.otherwise ? value(*choice.otherwise) : nullLiteral());
    if (std::ranges::all_of(results, &Typed::nullLiteral)) throw sqlError(kCaseOfNulls);
    const SqlType type = tsql::commonType(results);
    std::string sql = "CASE";
    for (std::size_t i = 0; i < conditions.size(); ++i)
        sql += " WHEN " + conditions[i] + " THEN " + coerce(results[i], type).sql;
    const bool nullable = std::ranges::any_of(results, &Typed::nullable);
    return {"(" + sql + " ELSE " + coerce(results.back(), type).sql + " END)", type, false, {}, 0, nullable};
}

Typed Translator::node(const Cast& cast) {
    const Typed operand = value(*cast.operand), style = cast.style ? value(*cast.style) : Typed();
    return emitConvert(operand, cast.type, cast.style ? &style : nullptr, cast.kind);
}

// The call without its OVER and WITHIN GROUP.
Typed Translator::plainCall(const FunctionInfo& function, const Call& call) {
    std::vector<Typed> arguments;
    for (const auto& argument : call.arguments) {
        const auto* name = std::get_if<ColumnRef>(&argument->node);
        const bool isWord = function.takesDatePart() && arguments.empty() && name && name->path.size() == 1;
        arguments.push_back(isWord ? Typed{name->path.front(), {}} : value(*argument));
    }
    if (call.star) arguments.push_back({"*", {}});
    return emitCall(function, arguments, call.distinct);
}

Typed Translator::node(const Call& call) {
    if (!call.name.schema.empty() || !call.name.database.empty()) return userCall(call);
    if (hasWord("GROUPING GROUPING_ID", toUpper(call.name.name))) return grouping(call);
    const FunctionInfo& function = functionNamed(call.name.name);
    const FunctionKind kind = function.kind;
    if (!call.within.empty() && function.name != "string_agg")
        throw sqlError(kWithinGroupNotAllowed, {toUpper(call.name.name)});
    if (call.over || kind >= FunctionKind::Ranking) return windowCall(function, call);
    if (kind == FunctionKind::Aggregate) return aggregateCall(function, call);
    const bool chooses = function.name == "nullif" || function.arguments.find('R') != std::string_view::npos;
    const Temporarily inner(m_nextValue, chooses ? kNextValueInCase : m_nextValue);
    return plainCall(function, call);
}

// GROUPING(key), GROUPING_ID(key, ...): 1, as bits, for keys of other grouping sets
Typed Translator::grouping(const Call& call) {
    const bool isId = sameWord(call.name.name, "GROUPING_ID");
    if (!isId && call.arguments.size() != 1) throw sqlError(kFunctionNeedsArguments, {"grouping", "1"});
    Scope none;
    Scope& scope = m_scope ? *m_scope : none;
    const Temporarily asWritten(scope.aggregateDepth, 1);
    int bits = 0;
    for (const auto& argument : call.arguments) {
        const std::string key = value(*argument).sql;
        const bool isNull = scope.nullKeys.contains(key);
        if (!isNull && !scope.groupKeys.contains(key))
            throw sqlError(kGroupingOfOther,
                           {std::to_string(&argument - call.arguments.data() + 1), toUpper(call.name.name)});
        bits = bits * 2 + isNull;
    }
    return {std::to_string(bits), simpleType(isId ? TypeId::Int : TypeId::TinyInt)};
}

// An aggregate of outer columns alone belongs to their query. SQLite accepts it only in a select list.
Typed Translator::aggregateCall(const FunctionInfo& function, const Call& call) {
    if (!m_scope) throw unsupported("an aggregate outside of a query");
    if (m_scope->aggregateDepth > 0) throw sqlError(kAggregateOfAggregate);
    std::vector<std::size_t> loose;  // numbers of columns outside aggregates, from the inner query outwards
    for (const Scope* each = m_scope; each; each = each->outer) loose.push_back(each->loose.size());
    ++m_scope->aggregateDepth;
    Typed result = plainCall(function, call);
    if (!call.within.empty()) {
        std::string keys;
        for (auto& item : call.within) {
            Typed key[] = {value(*item.value), literal(numericLiteral("0"))};
            const bool isZoned = key[0].type.id == TypeId::DateTimeOffset;  // compared as strings, in UTC
            if (isZoned) key[0] = emitCall(functionNamed("switchoffset"), key);
            keys += (item.descending ? ",1," : ",0,") + key[0].sql;
        }
        result.sql.insert(result.sql.size() - 1, keys);
    }
    --m_scope->aggregateDepth;
    const int source = lastSource(result.sql, m_aliases);
    Scope* owner = m_scope;
    std::size_t level = 0;
    for (; source > 0 && owner->outer && owner->outerSources >= source; owner = owner->outer) ++level;
    owner->sawAggregate = true;
    owner->loose.resize(loose[level]);
    if (level > 0) result.sql = "(SELECT " + result.sql + ")";
    return result;
}

// The arguments and the OVER clause operate on the groups of the query, if there are any.
Typed Translator::windowCall(const FunctionInfo& function, const Call& call) {
    const std::string name = toUpper(call.name.name);
    const FunctionKind kind = function.kind;
    const bool windowOnly = kind >= FunctionKind::Ranking;
    if (!call.over) throw sqlError(kOverRequired, {name});
    if (kind == FunctionKind::Scalar || !call.within.empty() || sameWord(name, "STRING_AGG"))
        throw sqlError(kNotAWindowFunction, {name});
    if (call.distinct) throw sqlError(kDistinctWithOver);
    if (windowOnly && call.over->order.empty()) throw sqlError(kOverWithOrderByRequired, {name});
    if (kind == FunctionKind::Ranking && !call.over->frame.empty()) throw sqlError(kFrameNotAllowed, {name});
    if (!m_scope || !m_scope->windows) throw sqlError(kWindowNotAllowedHere);
    if (!m_scope->nullKeys.empty()) throw unsupported("window functions with GROUPING SETS, CUBE or ROLLUP");
    m_scope->windows = false;
    Typed result = plainCall(function, call);
    const std::string partition = commaList(values(call.over->partition), comparable);
    std::string keys;
    for (const auto& item : call.over->order) {
        const Typed key = value(*item.value);
        if (std::holds_alternative<Literal>(item.value->node))  // not a position in the select list here
            throw sqlError(key.integer ? kIntegerIndexInWindow : kConstantInWindow);
        if (isConstantQuery(*item.value)) continue;
        keys += (keys.empty() ? " ORDER BY " : ", ") + comparable(key) + (item.descending ? " DESC" : "");
    }
    m_scope->windows = true;
    result.sql += " OVER (" + (partition.empty() ? "" : "PARTITION BY " + partition) + keys + " " +
                  call.over->frame + ")";
    return result;
}

Typed Translator::userCall(const Call& call) {
    const auto function = m_names.module(call.name, kFunction);
    if (!function && hasWord("exist modify nodes query value", call.name.name))
        throw unsupported("methods of xml");
    if (!function) throw sqlError(kFunctionNotFound, {call.name.schema, call.name.schema, call.name.name});
    std::string sql = "ts_call(" + quotedText(function->database) + ", " +
                      quotedText(storedName(function->schemaName, function->name));
    for (const auto& argument : argumentsOf(*function, call.arguments)) sql += ", " + argument;
    return {sql + ")", function->module->returns};
}

std::vector<std::string> Translator::argumentsOf(const StoredModule& function,
                                                 const std::vector<ExprPtr>& arguments) {
    const auto& parameters = function.module->parameters;
    if (arguments.size() != parameters.size())
        throw sqlError(arguments.size() < parameters.size() ? kTooFewArguments : kTooManyArguments,
                       {function.schemaName + "." + function.name});
    std::vector<std::string> values;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const auto& given = arguments[i] ? arguments[i] : parameters[i].value;
        if (!given) throw sqlError(kMissingParameter, {function.name, parameters[i].name});
        values.push_back(coerce(value(*given), parameters[i].type).sql);
    }
    return values;
}

// Two values of a row would have to be the same.
Typed Translator::node(const NextValue& next) {
    if (m_nextValue) throw sqlError(m_nextValue);
    m_isLasting = false;  // the sequence is locked for each run
    const Typed value = m_names.nextValue(next.sequence);
    if (!m_sequences.insert(value.sql).second)
        throw unsupported("several NEXT VALUE FOR of a sequence in a row");
    return value;
}

Typed Translator::node(const ScalarQuery& scalar) {
    const Temporarily inner(m_nextValue, kNextValueInSubquery);
    const QueryText text = query(*scalar.query);
    if (text.columns.size() != 1) throw sqlError(kSubqueryWithSeveralColumns);
    const OutputColumn& column = text.columns.front();
    if (text.oneRow) return {"(" + text.sql + ")", column.type};
    // ts_single reports more than one row as an error; SQLite alone would use the first row.
    return {"(SELECT ts_single(count(*), " + column.alias + ") FROM (" + text.sql + "))", column.type};
}

// Binds the number of: column = number. For a parameter SQLite does not use an index with a filter, which is
// rarely one of numbers.
std::string Translator::test(const Compare& compare) {
    const Typed left = value(*compare.left);
    const auto* number = std::get_if<Literal>(&compare.right->node);
    const bool isKey = m_inWhere && number && number->constant.type.id == TypeId::Int &&
                       compare.op == CompareOp::Equal &&
                       std::holds_alternative<ColumnRef>(compare.left->node);
    return emitCompare(compare.op, left, isKey ? cell(*compare.right) : value(*compare.right));
}

std::string Translator::test(const Logic& logic) {
    const auto* inner = std::get_if<Logic>(&logic.left->node);
    const std::string left = condition(*logic.left);
    const bool joins = inner && inner->isAnd == logic.isAnd;  // a AND b: "(a AND b" AND c
    return (joins ? left.substr(0, left.size() - 1) : "(" + left) + (logic.isAnd ? " AND " : " OR ") +
           condition(*logic.right) + ")";
}

std::string Translator::test(const InList& in) {
    std::vector<Typed> items = values(in.items);
    items.push_back(value(*in.operand));
    const SqlType type = comparedType(items);
    const auto key = [&](const Typed& item) { return comparable(coerce(item, type)); };
    return "(" + key(items.back()) + " IN (" + commaList(std::span(items).first(in.items.size()), key) + "))";
}

// A false comparison decides ALL, a true one ANY. Without it, an unknown one makes the result unknown.
std::string Translator::test(const CompareQuery& compare) {
    const bool before = m_scope && std::exchange(m_scope->sawAggregate, false);
    const Typed operand = value(*compare.operand);
    const bool aggregate = m_scope && std::exchange(m_scope->sawAggregate, before || m_scope->sawAggregate);
    const QueryText text = query(*compare.query);
    if (text.columns.size() != 1) throw sqlError(kSubqueryWithSeveralColumns);
    const Typed column{text.columns.front().alias, text.columns.front().type};
    if (compare.op == CompareOp::Equal && !compare.all) {
        const Typed both[] = {operand, column};
        const SqlType type = comparedType(both);
        const Typed coerced = coerce(column, type);
        const std::string inner = isBinary(type.id) ? comparable(coerced) : coerced.sql;
        return "(" + comparable(coerce(operand, type)) + " IN (" +
               (inner == column.sql ? text.sql : "SELECT " + inner + " FROM (" + text.sql + ")") + "))";
    }
    if (aggregate) throw unsupported("an aggregate compared with ALL, ANY or SOME");
    const std::string decisive = compare.all ? "0" : "1", otherwise = compare.all ? "1" : "0";
    return "(SELECT CASE WHEN sum(t IS " + decisive + ") > 0 THEN " + decisive +
           " WHEN count(t) = count(*) THEN " + otherwise + " END FROM (SELECT " +
           emitCompare(compare.op, operand, column) + " AS t FROM (" + text.sql + ")))";
}

std::string Translator::test(const Like& like) {
    const Typed operand = value(*like.operand);
    const Typed pattern = value(*like.pattern), escape = like.escape ? value(*like.escape) : Typed();
    return emitLike(operand, pattern, like.escape ? &escape : nullptr);
}

}  // namespace tsql
