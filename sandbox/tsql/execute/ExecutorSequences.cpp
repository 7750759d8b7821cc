// Counters of a database: sequences and rowversions.
#include "execute/Executor.h"
#include "messages/Messages.h"

namespace tsql {

namespace {

// Name of a sequence in SQLite's table of counters.
std::string counterOf(std::int64_t id) {
    return "@sequence " + std::to_string(id);
}

Sequence rangeOf(const SqlType& type) {
    Sequence range;
    const bool isDecimal = type.id == TypeId::Decimal, isSigned = type.id != TypeId::TinyInt;
    const int unused = isDecimal ? 0 : 64 - 8 * maxLength(type);
    range.most = isDecimal ? powerOfTen(type.precision) - 1 : INT64_MAX >> (unused - !isSigned);
    range.least = isDecimal ? -range.most : isSigned ? INT64_MIN >> unused : 0;
    return range;
}

void requireConsistent(const Sequence& sequence, const std::string& name, bool starts) {
    const auto& [start, increment, least, most, cycles, base] = sequence;
    const Int128 step = increment < 0 ? -Int128{increment} : increment;
    if (increment == 0) throw sqlError(kSequenceWithoutIncrement, {name});
    if (least >= most) throw sqlError(kSequenceRangeEmpty, {name});
    if (step > Int128{most} - least) throw sqlError(kSequenceIncrementTooLarge, {name});
    if (base >= least && base <= most) return;
    throw starts ? sqlError(kSequenceStartOutside, {name})
                 : sqlError(kSequenceValueOutside, {std::to_string(base), name});
}

}  // namespace

void Executor::setCounter(const std::string& schema, const std::string& name, std::int64_t value) {
    m_connection.run("DELETE FROM " + schema + ".sqlite_sequence WHERE name = ?1", {name});
    m_connection.run("INSERT INTO " + schema + ".sqlite_sequence (name, seq) VALUES (?1, ?2)", {name, value});
    m_givenIdentities.erase({schema, name});
}

std::optional<std::int64_t> Executor::counter(const std::string& schema, const std::string& name) {
    return m_connection.number("SELECT seq FROM " + schema + ".sqlite_sequence WHERE name = ?1", {name});
}

void Executor::run(const DefineSequence& statement) {
    const ObjectName& name = statement.name;
    const auto has = [&](std::string_view option) { return statement.options.contains(option); };
    const auto set = [&](std::string_view option, std::int64_t& part) {
        if (has(option)) part = *statement.options.at(option);
    };
    if (isTemporaryName(name.name)) throw unsupported("temporary sequences");
    if (!isExact(statement.type.id) || statement.type.id == TypeId::Bit || statement.type.scale > 0)
        throw sqlError(kInvalidSequenceType, {name.name});
    if (isWide(statement.type)) throw unsupported("a sequence of more than 18 digits");
    if (statement.alter && has("START WITH")) throw sqlError(kNotInAlterSequence, {"START WITH"});
    define(name, [&](Catalogue& owner) {
        const auto existing = object(name);
        if (existing && !statement.alter) throw sqlError(kObjectExists, {name.name});
        if (!existing && statement.alter) throw sqlError(kInvalidObjectName, {asWritten(name)});
        ObjectInfo stored = existing ? *existing : newObject(owner, name, kSequence);
        if (stored.type != kSequence) throw sqlError(kNotASequence, {asWritten(name)});
        const SqlType type = existing ? owner.columns(stored.id).front().type : statement.type;
        const Sequence before = Sequence::read(stored.stored), range = rangeOf(type);
        Sequence next = existing ? before : range;
        if (has("NO MINVALUE")) next.least = range.least;
        if (has("NO MAXVALUE")) next.most = range.most;
        next.cycles = has("CYCLE") || (next.cycles && !has("NO CYCLE"));
        set("INCREMENT BY", next.increment);
        set("MINVALUE", next.least);
        set("MAXVALUE", next.most);
        if (next.least < range.least) throw sqlError(kSequenceArgumentInvalid, {"MINVALUE"});
        if (next.most > range.most) throw sqlError(kSequenceArgumentInvalid, {"MAXVALUE"});
        if (!existing) next.start = next.increment > 0 ? next.least : next.most;
        set(existing ? "RESTART WITH" : "START WITH", next.start);
        const bool restarts = !existing || has("RESTART") || has("RESTART WITH");
        const std::int64_t given = restarts ? 0 : *counter(owner.schema(), counterOf(stored.id));
        next.base = restarts ? next.start : given > 0 ? *before.value(given - 1) : before.base;
        requireConsistent(next, name.name, restarts);
        stored.stored = next.text();
        owner.save(stored);
        if (!existing) owner.saveColumns(stored.id, {{{"", type}}});
        setCounter(owner.schema(), counterOf(stored.id), given > 0);
    });
}

Typed Executor::nextValue(const ObjectName& name) {
    if (m_frames.back()->isFunction || m_frames.back()->isQuery) throw sqlError(kNextValueInSubquery);
    const bool changes = !m_checking && !m_settings.describeOnly;
    if (changes) claim(name);
    const auto found = visibleObject(name);
    if (!found) throw sqlError(kInvalidObjectName, {asWritten(name)});
    if (found->type != kSequence) throw sqlError(kNotASequence, {asWritten(name)});
    if (changes) beforeWrite();
    return {"ts_next_value(" + quotedText(databaseOf(name)) + ", " + std::to_string(found->id) + ")",
            catalogue(name).columns(found->id).front().type};
}

Value Executor::nextValue(std::string_view database, std::int64_t id) {
    const Catalogue owner = catalogue({std::string(database), {}, {}});
    const auto stored = owner.findById(id);
    const std::int64_t given = *counter(owner.schema(), counterOf(id));
    const auto value = Sequence::read(stored->stored).value(given);
    if (!value) throw sqlError(kSequenceExhausted, {stored->name});
    m_givenIdentities[{owner.schema(), counterOf(id)}] = given + 1;
    skipIdentities();
    return *value;
}

Value Executor::rowVersion(int ahead) {
    const auto last = counter(catalogue({}).schema(), kRowVersions).value_or(kBeforeRowVersions);
    return convertValue(last + ahead, simpleType(TypeId::BigInt), simpleType(TypeId::RowVersion));
}

// Other sessions do not see the changes of a transaction before its end.
Value Executor::leastActiveRowVersion() {
    if (m_givenIdentities.contains({catalogue({}).schema(), kRowVersions}))
        throw unsupported("MIN_ACTIVE_ROWVERSION in a transaction that has changed a rowversion");
    return rowVersion(1);
}

}  // namespace tsql
