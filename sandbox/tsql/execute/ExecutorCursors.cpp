// Cursors: DECLARE, OPEN, FETCH, CLOSE, DEALLOCATE.

#include "execute/Executor.h"

namespace tsql {

std::span<const std::vector<Value>> Cursor::move(FetchFrom from, std::int64_t offset, std::int64_t most) {
    const auto count = static_cast<std::int64_t>(rows.size());
    const std::int64_t places[] = {at + block,  // in the order of FetchFrom
                                   std::max<std::int64_t>(at - most, at > 1),
                                   1,
                                   count - std::min(most, count) + 1,
                                   offset < 0 ? count + 1 + offset : offset,
                                   at + offset};
    at = std::clamp<std::int64_t>(places[static_cast<int>(from)], 0, count + 1);
    const std::int64_t found = at == 0 ? 0 : std::clamp<std::int64_t>(most, 0, count + 1 - at);
    block = std::max<std::int64_t>(found, 1);
    return std::span(rows).subspan(static_cast<std::size_t>(std::max<std::int64_t>(at - 1, 0)),
                                   static_cast<std::size_t>(found));
}

// Returns the place of a cursor in the current frame or the session.
std::shared_ptr<Cursor>& Executor::cursorNamed(const CursorName& cursor) {
    const std::string name = toLower(cursor.name);
    const bool isVariable = name.starts_with('@');
    auto& local = m_frames.back()->cursors[name];
    auto& found = isVariable || (local && !cursor.global) ? local : m_cursors[name];
    if (!found) throw sqlError(isVariable ? kNoCursorAllocated : kCursorNotFound, {cursor.name});
    return found;
}

Value Executor::cursorStatus(std::string_view scope, std::string_view name) {
    const bool ofVariable = sameWord(scope, "variable");
    const Cursors& cursors = ofVariable || sameWord(scope, "local") ? m_frames.back()->cursors : m_cursors;
    const auto found = cursors.find(toLower(name));
    if (found == cursors.end() || name.starts_with('@') != ofVariable) return std::int64_t{-3};
    const Cursor* cursor = found->second.get();
    if (!cursor) return std::int64_t{ofVariable ? -2 : -3};
    return std::int64_t{cursor->open ? !cursor->rows.empty() : -1};
}

Flow Executor::run(const DeclareCursor& declare) {
    auto& place = (declare.local ? m_frames.back()->cursors : m_cursors)[toLower(declare.name)];
    if (place && !declare.name.starts_with('@')) throw sqlError(kCursorExists, {declare.name});
    const auto made = translated(*declare.query);
    if (!made->translator.assignments().empty())
        throw sqlError(kNotAllowedHere, {"Variable assignment", "a cursor declaration"});
    place = std::make_shared<Cursor>(
        Cursor{made->text, parameterValues(made->translator), declare.scroll, declare.counted});
    place->declared = declare.query;
    place->version = m_storage.catalogueVersion();
    return finished(1);
}

void Executor::run(const ChangeCursor& change) {
    auto& place = cursorNamed(change.cursor);
    const std::shared_ptr<Cursor> kept = place;  // a function in the query may deallocate it
    Cursor& cursor = *kept;
    if (change.verb == CursorVerb::Open) {
        beginImplicitly();
        if (cursor.open) throw sqlError(kCursorAlreadyOpen);
        const std::uint64_t version = m_storage.catalogueVersion();
        if (cursor.declared && std::exchange(cursor.version, version) != version)
            cursor.query = translated(*cursor.declared)->text;
        cursor.rows.clear();
        cursor.at = 0, cursor.block = 1;
        PreparedStatement statement(m_connection, cursor.query.sql, cursor.parameters);
        constexpr std::size_t kMostRows = 1'000'000;  // all rows are kept in memory
        const RowHandler keep = [&](std::span<const Column>, Cells cells) {
            if (cursor.rows.size() == kMostRows)
                throw unsupported("a cursor over more than " + std::to_string(kMostRows) + " rows");
            std::vector<Value>& row = cursor.rows.emplace_back();
            for (const auto& cell : cells) row.push_back(ownedValue(cell));
        };
        const Temporarily diverted(m_rowHandler, &keep);
        sendRows(statement, cursor.query.shown(), m_settings.mostRows);
        cursor.open = true;
        m_cursorRows = cursor.counted ? static_cast<std::int64_t>(cursor.rows.size()) : -1;
    } else if (change.verb == CursorVerb::Deallocate) {
        place.reset();
    } else if (change.verb == CursorVerb::Assign) {
        m_frames.back()->cursors[toLower(change.variable)] = place;
    } else {
        if (!cursor.open) throw sqlError(kCursorNotOpen);
        cursor.open = false;
        cursor.rows.clear();
    }
}

Flow Executor::run(const Fetch& fetch) {
    beginImplicitly();
    const std::shared_ptr<Cursor> cursor = cursorNamed(fetch.cursor);
    const auto& columns = cursor->query.columns;
    if (!cursor->open) throw sqlError(kCursorNotOpen);
    constexpr std::string_view kTypes[] = {"next", "prior", "first", "last", "absolute", "relative"};
    if (!cursor->scroll && fetch.from != FetchFrom::Next)
        throw sqlError(kForwardOnlyCursor, {kTypes[static_cast<std::size_t>(fetch.from)]});
    if (!fetch.into.empty() && fetch.into.size() != columns.size()) throw sqlError(kCursorColumnCount);
    const auto rows = cursor->move(fetch.from, fetch.offset ? evaluateInteger(*fetch.offset) : 0, 1);
    const bool found = !rows.empty();
    m_fetchStatus = found ? 0 : -1;
    if (fetch.into.empty()) return sendTable(cursor->query, rows);
    for (std::size_t i = 0; found && i < columns.size(); ++i) try {
            setVariable(fetch.into[i], viewOf(rows[0][i]), columns[i].type);
        } catch (const SqlError& error) {
            if (error.number != kOperandTypeClash && error.number != kNoImplicitConversion) throw;
            throw sqlError(kCursorTypeMismatch,
                           {baseName(columns[i].type.id), baseName(local(fetch.into[i]).type.id)});
        }
    return finished(found);
}

}  // namespace tsql
