// CREATE, ALTER and DROP of tables and indexes.

#include "execute/Executor.h"

namespace tsql {

namespace {

// A key of the identity column alone needs no index, since that column is SQLite's row id.
bool needsIndex(const ObjectInfo& key, const TableInfo& table) {
    const TableColumn* identity = table.identityColumn();
    const bool isKey = key.type == kPrimaryKey || key.type == kUnique;
    return isKey && (!identity || key.columns.size() > 1 || !sameText(identity->name, key.columns.front()));
}

std::string indexName(const std::string& name, std::int64_t table, std::string_view suffix) {
    return name + "@" + std::to_string(table) + std::string(suffix);
}

// NULLs are equal in a unique key of T-SQL, but not of SQLite. Therefore rows with NULL have a second index.
// Returns the end of its CREATE INDEX; empty if no column accepts NULL.
std::string nullsOf(const TableInfo& table, const ObjectInfo& index) {
    std::string list, condition;
    for (const auto& name : index.columns) {
        const TableColumn& column = *table.column(name);
        const std::string isNull = quotedName(name) + " IS NULL";
        list += (list.empty() ? "" : ", ") + isNull + ", " +
                collated({"ifnull(" + quotedName(name) + ", 0)", column.type});
        if (column.nullable) condition += (condition.empty() ? "" : " OR ") + isNull;
    }
    return condition.empty() ? "" : list + ") WHERE (" + condition + ")";
}

// Whether the constraint is a condition of rows, which can be disabled.
bool isCondition(const ObjectInfo& key) {
    return key.type == kCheck || key.type == kForeignKey;
}

void setState(Catalogue& catalogue, ObjectInfo& constraint, std::string_view state) {
    for (const auto old : {kDisabled, kUntrusted})
        if (constraint.source.starts_with(old)) constraint.source.erase(0, old.size());
    constraint.source.insert(0, state);
    catalogue.save(constraint);
}

bool isConstraint(const ObjectInfo& key) {
    return key.type != kIndex;
}

std::optional<ObjectInfo> keyNamed(const std::vector<ObjectInfo>& keys, std::string_view name,
                                   bool (*isMeant)(const ObjectInfo&)) {
    for (const auto& key : keys)
        if (isMeant(key) && sameText(key.name, name)) return key;
    return std::nullopt;
}

void refuseSecondIndex(const std::vector<ObjectInfo>& keys, std::string_view name, const TableInfo& table) {
    if (keyNamed(keys, name, isIndexed)) throw sqlError(kIndexExists, {name, table.qualifiedName()});
}

void requireKeyType(const TableInfo& table, const TableColumn& column) {
    if (column.type.length == SqlType::kMax || isLob(column.type.id))
        throw sqlError(kInvalidKeyColumnType, {column.name, table.name});
}

void requireIdentityType(const TableInfo& table, const ColumnDefinition& given) {
    if (!isExact(given.type.id) || given.type.scale > 0) throw sqlError(kInvalidIdentityType, {given.name});
    if (isWide(given.type)) throw unsupported("an identity of more than 18 digits");
    if (given.nullable.value_or(false)) throw sqlError(kIdentityOnNullable, {given.name, table.name});
}

// Enters the identity of a new column, if it is one. A table has one identity and one rowversion at most.
void setIdentity(TableInfo& table, const ColumnDefinition& given) {
    if (given.type.id == TypeId::RowVersion && std::ranges::any_of(table.columns, &TableColumn::isRowVersion))
        throw sqlError(kSeveralRowVersions, {table.name, given.name});
    if (!given.identity) return;
    requireIdentityType(table, given);
    if (table.identityColumn()) throw sqlError(kSeveralIdentityColumns, {table.name});
    if (given.identity->increment == 0) throw sqlError(kInvalidIdentityIncrement, {given.name});
    table.seed = given.identity->seed;
    table.increment = given.identity->increment;
}

// Returns a new column. create: has its constraints; it may be part of the primary key.
TableColumn columnOf(TableInfo& table, const ColumnDefinition& given, const Settings& settings,
                     const CreateTable& create) {
    const bool losesBlanks =
        hasLength(given.type.id) && !isNational(given.type.id) && given.type.length != SqlType::kMax;
    if (losesBlanks && !settings.padding)
        throw unsupported("columns of type " + displayName(given.type) + " with ANSI_PADDING OFF");
    requireColumnName(given.name);
    if (table.column(given.name)) throw sqlError(kRepeatedColumnName, {given.name, table.name});
    setIdentity(table, given);
    const bool isNullable = !given.identity && given.type.id != TypeId::RowVersion;
    TableColumn column{{given.name, given.type, isNullable, given.identity.has_value()}};
    for (const auto& constraint : create.constraints) {
        if (std::ranges::none_of(constraint.columns, std::bind_front(sameText, column.name))) continue;
        if (constraint.type == kPrimaryKey) column.nullable = false;
        if (constraint.type == kDefault) column.byDefault = constraint.text;
    }
    column.nullable = given.nullable.value_or(column.nullable);
    column.computed = given.computed;
    column.userType = given.userType;
    column.persisted = given.persisted;
    return column;
}

// Returns a column of a constraint, which must fit it.
const TableColumn& constrainedColumn(const TableInfo& table, const Constraint& constraint,
                                     const std::string& name) {
    const TableColumn* column = table.column(name);
    if (!column && constraint.type == kForeignKey)
        throw sqlError(kReferencingColumnUnknown, {constraint.name, name, table.name});
    if (!column) throw sqlError(kUnknownIndexColumn, {name});
    if (constraint.type == kDefault && column->isRowVersion())
        throw sqlError(kDefaultOnRowVersion, {table.name, name});
    if (!column->nullable && constraint.does("SET NULL"))
        throw sqlError(kSetNullOnNotNullable, {constraint.name});
    if (!column->nullable && column->byDefault.empty() && constraint.does("SET DEFAULT"))
        throw sqlError(kSetDefaultWithoutDefault, {constraint.name});
    if (constraint.type == kPrimaryKey && column->nullable)
        throw sqlError(kPrimaryKeyOnNullable, {table.name});
    if (constraint.type == kPrimaryKey || constraint.type == kUnique) requireKeyType(table, *column);
    return *column;
}

std::string storedColumns(const TableInfo& table) {
    std::vector<std::string> names;
    for (const auto& column : table.columns)
        if (column.computed.empty()) names.push_back(column.name);
    return quotedNames(names);
}

}  // namespace

// Changes the catalogue that `name` belongs to and the objects it describes, atomically.
void Executor::define(const ObjectName& name, const std::function<void(Catalogue&)>& work) {
    if (!name.name.starts_with('@')) beginImplicitly();  // not for a table variable
    claim(name);
    Catalogue owner = catalogue(name);
    beforeWrite();
    forget();
    m_defined = true;
    const Finally atEnd([this] { forget(); });  // behind the commit or the rollback
    Atomic atomic(m_connection, owner.schema());
    work(owner);
    if (owner.isTemporary()) return atomic.commit();
    const Finally changed([this] { m_storage.noteCatalogueChange(); });
    m_storage.noteCatalogueChange();
    m_translated.reset();
    atomic.commit();
}

TableInfo Executor::createTable(const CreateTable& create) {
    const std::string& name = create.table.name;
    TableInfo table;
    table.name = name;
    for (const auto& definition : create.columns) {
        if (definition.userType && name.starts_with('#')) throw unsupported("user-defined types in tempdb");
        table.columns.push_back(columnOf(table, definition, m_settings, create));
    }
    if (std::ranges::none_of(table.columns, &std::string::empty, &TableColumn::computed))
        throw unsupported("a table of computed columns only");
    for (auto& column : table.columns)
        if (!column.computed.empty()) column.type = computed(table, column).type;
    if (std::ranges::count(create.constraints, kPrimaryKey, &Constraint::type) > 1)
        throw sqlError(kSeveralPrimaryKeys, {name});
    define(create.table, [&](Catalogue& owner) {
        ObjectInfo object = newObject(owner, create.table, kTable);
        const auto taken = owner.find(object.key());
        // A procedure may create a temporary table with the name of its caller's.
        const auto& own = m_frames.back()->temporary;
        const bool isCallers = taken && owner.isTemporary() && m_frames.size() > 1 &&
                               std::ranges::count(own, taken->stored, &TableInfo::stored) == 0;
        if (taken && !name.starts_with('@') && !isCallers) throw sqlError(kObjectExists, {name});
        object.columns = {std::to_string(table.seed), std::to_string(table.increment)};
        if (!owner.isTemporary()) object.stored = object.key();
        owner.save(object);
        owner.saveColumns(object.id, table.columns);
        table = owner.tableOf(object);
        const auto keys = noteConstraints(owner, table, create);
        table.columns = owner.columns(table.id);
        m_connection.run("CREATE TABLE " + table.sqlName() + " (" + tableBody(owner, table) + ")");
        for (const auto& key : keys)
            if (needsIndex(key, table)) makeIndex(table, key, quotedNames(key.columns));
        for (const auto& index : create.indexes) addIndex(owner, table, index);
        startIdentity(table);
    });
    if (table.name.starts_with('#')) m_frames.back()->temporary.push_back(table);
    return table;
}

// Sets the value that the next identity follows.
void Executor::startIdentity(const TableInfo& table) {
    if (!table.identityColumn()) return;
    setCounter(table.schema, table.stored, table.counted(table.seed - table.increment));
}

// Runs `work`. An error in it is reported and followed by `failure`.
void Executor::failingAs(const SqlError& failure, const std::function<void()>& work) {
    try {
        work();
    } catch (const SqlError& cause) {
        if (m_tries == 0) report(messageOf(cause, m_line));  // a CATCH block sees only the last error
        throw failure;
    }
}

// The texts of the defaults are translated alone, as inserts do later, so that variables in them are errors.
std::vector<ObjectInfo> Executor::noteConstraints(Catalogue& catalogue, TableInfo table,
                                                  const CreateTable& definition) {
    std::vector<ObjectInfo> keys;
    for (const auto& each : definition.constraints)
        if (each.type == kDefault) Translator(*this).value(*parseExpression(each.text));
    failingAs(sqlError(kConstraintNotCreated), [&] {
        for (const auto& constraint : definition.constraints) {
            table.columns = catalogue.columns(table.id);  // with defaults that were entered before
            ObjectInfo key = constraintOf(catalogue, table, constraint);
            if (constraint.type == kForeignKey && catalogue.isTemporary()) {
                inform(kForeignKeySkipped, {key.name});
                continue;
            }
            catalogue.save(key);
            keys.push_back(key);
        }
        for (const auto& key : keys)
            if (key.type == kForeignKey) referencedColumns(catalogue, key);
    });
    return keys;
}

// Returns the catalogue entry of a constraint. A default is entered into its column.
ObjectInfo Executor::constraintOf(Catalogue& owner, const TableInfo& table, const Constraint& constraint) {
    const std::string type(constraint.type);
    const ObjectName& to = constraint.references;
    ObjectInfo key{0, constraint.name, type, table.id, storedName(to.schema, to.name)};
    key.source = constraint.source;
    key.table = storedName(table.schemaName, table.name);
    key.schemaName = table.schemaName;
    for (const auto& name : constraint.columns)
        key.columns.push_back(constrainedColumn(table, constraint, name).name);
    if (constraint.type == kCheck) {
        const auto read = Translator(*this).check(table, *constraint.check).columns;
        for (const auto& name : read)
            if (!key.columns.empty() && name != key.columns.front())
                throw sqlError(kCheckOfOtherColumn, {key.columns.front(), table.name});
        key.columns.assign(read.begin(), read.end());
    }
    const std::string prefix = type == kDefault ? "DF" : type.size() == 1 ? type + "K" : type;
    if (key.name.empty())  // "PK__Orders__7_42"
        key.name = prefix + "__" + table.name.substr(0, 9) + "__" + std::to_string(table.id) + "_" +
                   std::to_string(owner.lastId() + 1);
    if (owner.find(key.key()) && !owner.isTemporary()) throw sqlError(kObjectExists, {key.name}, 5);
    const auto others = owner.keysOf(table.id);
    if (isUniqueKey(key)) refuseSecondIndex(others, key.name, table);
    for (const auto& other : others) {
        if (other.type != type) continue;
        if (type == kPrimaryKey) throw sqlError(kPrimaryKeyAlreadyDefined, {table.name});
        if (type == kDefault && other.columns == key.columns) throw sqlError(kDefaultAlreadyBound);
    }
    if (type == kDefault) {
        TableColumn column = *table.column(key.columns.front());
        column.byDefault = constraint.text;
        owner.saveColumns(table.id, {column});
    }
    return key;
}

// Other computed columns are not allowed in the expression.
CheckText Executor::computed(const TableInfo& table, const TableColumn& column) {
    CheckText text = Translator(*this).check(table, *parseExpression(column.computed));
    for (const auto& name : text.columns)
        if (!table.column(name)->computed.empty()) throw sqlError(kComputedOfComputed, {name, table.name});
    return text;
}

// Returns the column and constraint list of SQLite's CREATE TABLE. Unique keys are separate indexes.
std::string Executor::tableBody(Catalogue& catalogue, const TableInfo& table) {
    const auto keys = catalogue.keysOf(table.id);
    WordSet reset;  // columns that foreign keys set to their defaults
    for (const auto& key : keys)
        if (key.type == kForeignKey && parseConstraint(key.source).does("SET DEFAULT"))
            reset.insert(key.columns.begin(), key.columns.end());
    std::string body = commaList(table.columns, [&](const TableColumn& column) {
        std::string text = quotedName(column.name) + " ";
        if (!column.identity)
            text.append(storageClass(column.type)).append(column.nullable ? "" : " NOT NULL");
        else if (!table.isCountedBySqlite())
            text += "INTEGER PRIMARY KEY";
        else
            text += "INTEGER PRIMARY KEY AUTOINCREMENT CHECK (" +
                    emitIdentity(quotedName(column.name), column.type).sql + " IS NOT NULL)";
        if (reset.contains(column.name))  // not a constant, which rows older than the column would get
            text += " DEFAULT (ifnull(" + Translator(*this).rowText(table, {&column}, {}) + ", NULL))";
        return text + (column.computed.empty() ? "" : " AS (" + computed(table, column).sql + ")");
    });
    for (const auto& key : keys) {
        if (isDisabled(key)) continue;
        const std::string name = ", CONSTRAINT " + quotedName(key.name);
        if (key.type == kCheck)
            body += name + " CHECK (" +
                    Translator(*this).check(table, *parseConstraint(key.source).check).sql + ")";
        if (key.type != kForeignKey) continue;
        const Constraint constraint = parseConstraint(key.source);
        const bool changes = constraint.onUpdate != kNoAction || constraint.onDelete.starts_with("SET");
        if (changes && std::ranges::any_of(table.columns, &TableColumn::isRowVersion))
            throw unsupported("a foreign key that changes rows with a rowversion");
        body += name + " FOREIGN KEY (" + quotedNames(key.columns) + ") REFERENCES " +
                quotedName(key.stored) + " (" + quotedNames(referencedColumns(catalogue, key)) +
                ") ON DELETE " + constraint.onDelete + " ON UPDATE " + constraint.onUpdate;
    }
    return body;
}

// filter: condition of the rows in the index; empty: all. With a constant among its columns, a filtered index
// is named in SQLite's message.
void Executor::makeIndex(const TableInfo& table, const ObjectInfo& index, const std::string& list,
                         const std::string& filter) {
    m_change.target = table;
    m_change.verb = "CREATE INDEX";
    const std::string on = " ON " + quotedName(table.stored) + " (";
    const auto make = [&](std::string_view suffix, const std::string& definition) {
        m_connection.run(std::string("CREATE ") + (isUniqueKey(index) ? "UNIQUE" : "") + " INDEX " +
                         table.schema + "." + quotedName(indexName(index.name, table.id, suffix)) + on +
                         definition);
    };
    try {
        make("", list + (filter.empty() ? ")" : ", (1)) WHERE " + filter));
        const std::string nulls = isUniqueKey(index) ? nullsOf(table, index) : "";
        if (!nulls.empty()) make(kNullsSuffix, nulls + (filter.empty() ? "" : " AND " + filter));
    } catch (const SqliteFailure& failure) {
        if (failure.code != SQLITE_CONSTRAINT_UNIQUE) throw;
        m_change.newRows = "incoming AS (SELECT *, _rowid_ AS ts_row FROM " + table.sqlName() + ")";
        m_change.values.clear();
        throw sqlError(kDuplicateKeyForIndex,
                       {table.qualifiedName(), index.name, duplicateValue(m_connection, m_change, index)});
    }
    m_change.verb.clear();
}

void Executor::dropIndex(const TableInfo& table, const std::string& name) {
    for (const auto suffix : {std::string_view(), kNullsSuffix})
        m_connection.run("DROP INDEX IF EXISTS " + table.schema + "." +
                         quotedName(indexName(name, table.id, suffix)));
}

// ---- ALTER TABLE

// Replaces the table's definition in SQLite without changing its rows.
void Executor::redefine(Catalogue& catalogue, const TableInfo& table) {
    const std::string definition = quotedName(table.stored) + " (" + tableBody(catalogue, table) + ")";
    changeSchema(table, "sql = ?2 WHERE type = 'table' AND name = ?1",
                 {table.stored, "CREATE TABLE " + definition});
}

// Without effect on constraints that have no index.
void Executor::renameIndex(const TableInfo& table, const std::string& name, const std::string& newName) {
    for (const auto suffix : {std::string_view(), kNullsSuffix}) {
        const std::string old = indexName(name, table.id, suffix), now = indexName(newName, table.id, suffix);
        changeSchema(table, "name = ?2, sql = replace(sql, ?3, ?4) WHERE type = 'index' AND name = ?1",
                     {old, now, quotedName(old), quotedName(now)});
    }
}

void Executor::changeSchema(const TableInfo& table, const std::string& change,
                            std::initializer_list<Value> values) {
    m_connection.run("PRAGMA writable_schema = ON");
    m_connection.run("UPDATE " + table.schema + ".sqlite_master SET " + change, values);
    const std::string version = "PRAGMA " + table.schema + ".schema_version";
    m_connection.run(version + " = " + std::to_string(*m_connection.number(version) + 1));
    m_connection.run("PRAGMA writable_schema = RESET");
}

// Checks the existing rows against a new constraint.
void Executor::checkRows(Catalogue& catalogue, const TableInfo& table, const ObjectInfo& key) {
    const bool isCheck = key.type == kCheck;
    const std::string broken =
        isCheck ? "NOT (" + Translator(*this).check(table, *parseConstraint(key.source).check).sql + ")"
                : orphans(catalogue, table, key, quotedName(table.stored));
    if (!anyRow(m_connection, table, broken)) return;
    constexpr std::string_view kVerb = "ALTER TABLE";
    throw isCheck ? conflict(kVerb, "CHECK", table, key) : foreignKeyConflict(kVerb, catalogue, key);
}

// ALTER TABLE ... CHECK or NOCHECK CONSTRAINT
void Executor::switchConstraints(Catalogue& catalogue, const TableInfo& table, const AlterTable& alter) {
    auto keys = catalogue.keysOf(table.id);
    failingAs(sqlError(kConstraintNotSwitched), [&] {
        for (const auto& name : alter.switched) {
            const auto key = keyNamed(keys, name, isConstraint);
            if (!key) throw sqlError(kSwitchedConstraintNotFound, {name});
            if (!isCondition(*key)) throw sqlError(kConstraintNotSwitchable, {name});
        }
    });
    for (auto& key : keys) {
        const bool isMeant = alter.switched.empty() ||
                             std::ranges::any_of(alter.switched, std::bind_front(sameText, key.name));
        if (!isMeant || !isCondition(key)) continue;
        const bool checks = *alter.enables && alter.checksRows.value_or(false);
        if (checks) checkRows(catalogue, table, key);
        if (checks || !*alter.enables || isDisabled(key))
            setState(catalogue, key, checks ? "" : *alter.enables ? kUntrusted : kDisabled);
    }
}

void Executor::addColumn(Catalogue& catalogue, TableInfo& table, const ColumnDefinition& definition,
                         const CreateTable& added) {
    TableColumn column = columnOf(table, definition, m_settings, added);
    const bool isComputed = !column.computed.empty(), isStored = !isComputed && !column.identity;
    if (isComputed) column.type = computed(table, column).type;
    const TableColumn given = column;
    column.byDefault.clear();
    const bool hasDefault = !given.byDefault.empty() && (!column.nullable || definition.withValues);
    const bool filled = hasDefault || column.isRowVersion();
    if (isStored && !column.nullable && !filled && anyRow(m_connection, table, "1"))
        throw sqlError(kAddedColumnNotNull, {column.name, table.name});
    if (isStored)
        m_connection.run("ALTER TABLE " + table.sqlName() + " ADD COLUMN " + quotedName(column.name) + " " +
                         std::string(storageClass(column.type)));
    catalogue.saveColumns(table.id, {column});
    table.columns = catalogue.columns(table.id);
    if (filled) fillColumn(table, column, Translator(*this).defaultOf(table, given));
    if (column.identity) renumber(catalogue, table);
    if (isComputed || column.isRowVersion()) redefine(catalogue, table);
}

// Makes the row ids of existing rows identities, in the order of the rows, by way of numbers that are free.
void Executor::renumber(Catalogue& catalogue, const TableInfo& table) {
    ObjectInfo object = *catalogue.findById(table.id);
    object.columns = {std::to_string(table.seed), std::to_string(table.increment)};
    catalogue.save(object);
    const std::string update = "UPDATE " + table.sqlName() + " SET _rowid_ = ";
    m_connection.run(
        "WITH found AS MATERIALIZED (SELECT _rowid_ AS ts_id, row_number() OVER (ORDER BY _rowid_) "
        "AS ts_n FROM " +
        table.sqlName() + ") " + update + "(1 << 62) + ts_n - 1 FROM found WHERE _rowid_ = ts_id");
    const std::string identity =
        emitIdentity("?1 + ?2 * (_rowid_ - (1 << 62))", table.identityColumn()->type).sql;
    m_connection.run(update + identity, {table.seed, table.increment});
    startIdentity(table);
    noteHighest(table);
}

void Executor::fillColumn(const TableInfo& table, const TableColumn& column, const Typed& value) {
    m_connection.run("UPDATE " + table.sqlName() + " SET " + quotedName(column.name) + " = " +
                     emitAssign(value, column.type, table.fullName(), column.name).sql);
}

std::set<std::string> Executor::filterColumns(const TableInfo& table, const ObjectInfo& index) {
    return Translator(*this).check(table, *parseConstraint("CHECK (" + index.stored + ")").check).columns;
}

void Executor::refuseDependents(const TableInfo& table, std::string_view column, std::string_view verb,
                                const std::vector<ObjectInfo>& keys) {
    const auto refuseIfUsed = [&](const auto& columns, std::string_view kind, const std::string& name) {
        if (std::ranges::none_of(columns, std::bind_front(sameText, column))) return;
        failingAs(sqlError(kColumnHasDependents, {verb, column}), [&] {
            throw sqlError(kDependentOnColumn, {kind, name, column});
        });
    };
    for (const auto& key : keys) {
        const bool isIndex = key.type == kIndex;
        if (isIndex && !key.stored.empty()) refuseIfUsed(filterColumns(table, key), "index", key.name);
        refuseIfUsed(key.columns, isIndex ? "index" : "object", key.name);
    }
    for (const auto& other : table.columns)
        if (!other.computed.empty()) refuseIfUsed(computed(table, other).columns, "column", other.name);
    if (!table.column(column)) throw sqlError(kAlteredColumnNotFound, {verb, column, table.name});
}

void Executor::alterColumn(Catalogue& catalogue, TableInfo& table, const ColumnDefinition& definition) {
    refuseDependents(table, definition.name, "ALTER", {});
    TableColumn column = *table.column(definition.name);
    const SqlType before = column.type;
    if (!column.computed.empty()) throw sqlError(kCannotAlterColumn, {column.name, "COMPUTED"});
    if (column.isRowVersion()) throw sqlError(kCannotAlterColumn, {column.name, "timestamp"});
    if (definition.type.id == TypeId::RowVersion)
        throw sqlError(kCannotAlterColumnTo, {column.name, "timestamp"});
    if (column.identity) requireIdentityType(table, definition);
    if (column.identity && !definition.nullable)
        throw unsupported("ALTER COLUMN of an identity without NOT NULL");
    const bool longer =
        before.id == definition.type.id &&
        (before.length <= definition.type.length || definition.type.length == SqlType::kMax) &&
        before.scale == definition.type.scale && before.precision <= definition.type.precision &&
        isWide(before) == isWide(definition.type);
    const bool wasNullable = std::exchange(column.nullable, definition.nullable.value_or(true));
    const bool narrowed = wasNullable && !column.nullable, widened = !wasNullable && column.nullable;
    auto keys = catalogue.keysOf(table.id);
    if (longer)
        std::erase_if(keys, [&](const ObjectInfo& key) {
            const bool isFixed = key.type == kPrimaryKey || key.type == kForeignKey;
            return !(isFixed && before != definition.type) && !(isIndexed(key) && narrowed) &&
                   !(isUniqueKey(key) && widened);  // it lacks the index of rows with NULL
        });
    refuseDependents(table, column.name, "ALTER", keys);
    column.type = definition.type;
    column.userType = definition.userType;
    catalogue.saveColumns(table.id, {column});
    table.columns = catalogue.columns(table.id);
    m_change.verb = "UPDATE";
    if (!column.nullable && anyRow(m_connection, table, quotedName(column.name) + " IS NULL"))
        throw sqlError(kNullInColumn, {column.name, table.fullName(), m_change.verb});
    redefine(catalogue, table);
    if (!longer) fillColumn(table, column, {quotedName(column.name), before});
    m_change.verb.clear();
}

void Executor::dropConstraint(Catalogue& catalogue, const TableInfo& table, const std::string& name,
                              bool ifExists) {
    const auto key = keyNamed(catalogue.keysOf(table.id), name, isConstraint);
    if (!key && ifExists) return;
    failingAs(sqlError(kConstraintNotDropped), [&] {
        if (!key) throw sqlError(kNotAConstraint, {name});
        for (const auto& foreign : catalogue.keysTo(table.id))
            if (isUniqueKey(*key) &&
                std::ranges::is_permutation(referencedColumns(catalogue, foreign), key->columns, sameText))
                throw sqlError(kConstraintReferenced, {name, bareName(foreign.table), foreign.name});
    });
    if (key->type == kDefault) {
        TableColumn column = *table.column(key->columns.front());
        column.byDefault.clear();
        catalogue.saveColumns(table.id, {column});
    }
    if (needsIndex(*key, table)) dropIndex(table, key->name);
    catalogue.remove(key->id);
}

void Executor::run(const AlterTable& alter) {
    define(alter.added.table, [&](Catalogue& owner) {
        TableInfo target = table(alter.added.table, kAlteredTableNotFound);
        for (const auto& column : alter.added.columns) addColumn(owner, target, column, alter.added);
        for (auto& key : noteConstraints(owner, target, alter.added)) {
            if (isCondition(key))
                alter.checksRows.value_or(true) ? checkRows(owner, target, key)
                                                : setState(owner, key, kUntrusted);
            failingAs(sqlError(kConstraintNotCreated), [&] {
                if (needsIndex(key, target)) makeIndex(target, key, quotedNames(key.columns));
            });
        }
        if (alter.enables) switchConstraints(owner, target, alter);
        for (const auto& name : alter.dropConstraints) dropConstraint(owner, target, name, alter.ifExists);
        target.columns = owner.columns(target.id);
        alter.altered ? alterColumn(owner, target, *alter.altered) : redefine(owner, target);
        for (const auto& name : alter.dropColumns) {
            if (alter.ifExists && !target.column(name)) continue;
            refuseDependents(target, name, "DROP", owner.keysOf(target.id));
            if (target.column(name)->identity) throw unsupported("ALTER TABLE DROP of an identity");
            const auto columns = owner.columns(target.id);
            if (target.column(name)->computed.empty() &&
                std::ranges::count(columns, std::string(), &TableColumn::computed) == 1)
                throw sqlError(kOnlyDataColumn, {target.column(name)->name, target.name});
            m_connection.run("ALTER TABLE " + target.sqlName() + " DROP COLUMN " + quotedName(name));
            owner.removeColumn(target.id, name);
        }
    });
}

void Executor::addIndex(Catalogue& catalogue, const TableInfo& table, const CreateIndex& create) {
    if (create.name.empty()) throw sqlError(kMissingColumnName);
    ObjectInfo index{0, create.name, std::string(kIndex), table.id, create.filterText};
    refuseSecondIndex(catalogue.keysOf(table.id), create.name, table);
    if (create.unique) index.source = kUniqueIndex;
    const std::string list = commaList(create.columns, [&](const auto& each) {
        const TableColumn* column = table.column(each.first);
        if (!column) throw sqlError(kUnknownIndexColumn, {each.first});
        requireKeyType(table, *column);
        index.columns.push_back(column->name);
        return quotedName(column->name) + (each.second ? " DESC" : "");
    });
    for (const auto& name : create.included)
        if (!table.column(name)) throw sqlError(kUnknownIndexColumn, {name});
    makeIndex(table, index, list, create.filter ? Translator(*this).check(table, *create.filter).sql : "");
    catalogue.save(index);
}

void Executor::run(const CreateIndex& create) {
    define(create.table, [&](auto& owner) { addIndex(owner, table(create.table, kObjectNotFound), create); });
}

void Executor::run(const AlterIndex& alter) {
    define(alter.table, [&](Catalogue& owner) {
        const TableInfo target = table(alter.table, kObjectNotFound, 9);
        if (!alter.name.empty() && !keyNamed(owner.keysOf(target.id), alter.name, isIndexed))
            throw sqlError(kIndexNotFound, {alter.name});
        m_connection.run("REINDEX " + target.sqlName());
    });
}

void Executor::run(const Drop& drop) {
    for (const auto& index : drop.indexes) dropIndex(index, drop.ifExists);
    for (const auto& name : drop.names)
        drop.kind == "database" ? dropDatabase(name.name, drop.ifExists) : dropObject(name, drop);
}

void Executor::dropIndex(const AlterIndex& drop, bool ifExists) {
    define(drop.table, [&](Catalogue& owner) {
        const auto target = findTable(drop.table);
        const auto index = target ? keyNamed(owner.keysOf(target->id), drop.name, isIndexed) : std::nullopt;
        const std::string written = asWritten(drop.table) + "." + drop.name;
        if (index && isConstraint(*index))
            throw sqlError(kCannotDropKeyIndex, {written, index->type == kPrimaryKey ? "PRIMARY" : "UNIQUE"});
        if (!index && !ifExists) throw sqlError(kCannotDropMissing, {"index", written}, 7);
        if (!index) return;
        dropIndex(*target, index->name);
        owner.remove(index->id);
    });
}

void Executor::dropObject(const ObjectName& name, const Drop& drop) {
    // Words and types.
    constexpr std::pair<std::string_view, std::string_view> kKinds[] = {
        {"table", "U"},    {"view", "V"},      {"procedure", "P"},  {"function", "FN; IF; TF"},
        {"trigger", "TR"}, {"sequence", "SO"}, {"type", "TYPE; TT"}};
    const std::string written = asWritten(name);
    define(name, [&](Catalogue& owner) {
        const bool isType = drop.kind == "type";
        const auto found = isType ? owner.find(storedName(name.schema, name.name), kUserTypes) : object(name);
        const auto* other = std::ranges::find_if(kKinds, [&](const auto& each) {
            return found && std::ranges::count(listItems(each.second), found->type) > 0;
        });
        if (other == std::end(kKinds) || other->first != drop.kind) {
            if (drop.ifExists) return;
            if (isType) throw sqlError(kTypeNotFound, {written});
            if (other == std::end(kKinds)) throw sqlError(kCannotDropMissing, {drop.kind, written});
            throw sqlError(kDropOfOtherKind,
                           {toUpper(drop.kind), name.name, name.name, other->first, toUpper(other->first)});
        }
        if (const auto user = isType ? owner.userOfType(found->id) : std::nullopt)
            throw sqlError(kTypeInUse, {written, user->name});
        if (drop.kind == "table") {
            for (const auto& key : owner.keysTo(found->id))
                if (key.parent != found->id) throw sqlError(kTableReferenced, {written});
            m_connection.run("DROP TABLE " + owner.schema() + "." + quotedName(found->stored));
        }
        owner.remove(found->id);
    });
}

void Executor::dropTable(const TableInfo& table) {
    m_connection.run("DROP TABLE IF EXISTS " + table.sqlName());
    temporary().remove(table.id);
    forget();
}

// Drops all temporary tables and procedures of the session, which a rollback across a reset restores.
void Executor::dropTemporary() {
    for (auto id = temporary().lastId(); id > 0; --id)
        if (const auto object = temporary().findById(id); object && object->parent == 0)
            dropTable(temporary().tableOf(*object));
}

// The stored name is compared, too, since the id of a rolled-back table may have been reused.
void Executor::dropTemporary(Frame& frame) {
    for (const auto& [name, table] : frame.tables)
        if (table.use_count() == 1) frame.temporary.push_back(table->info);
    for (const auto& table : frame.temporary)
        if (const auto object = temporary().findById(table.id); object && object->stored == table.stored)
            dropTable(table);
    frame.temporary.clear();
}

// In a loop, an existing table variable is kept.
void Executor::declareTable(const Declaration& declaration) {
    auto& tables = m_frames.back()->tables;
    if (tables.contains(declaration.name)) return;
    tables[declaration.name] = std::make_shared<TableVariable>(
        TableVariable{declaration.table, createTable(*declaration.table), declaration.userType});
}

void Executor::keepTables(const std::function<void()>& rollback) {
    std::vector<std::pair<TableVariable*, std::vector<std::vector<Value>>>> kept;  // with their rows
    for (Frame* frame : m_frames)
        for (auto& [name, table] : frame->tables) {
            if (frame->readOnly.contains(name) && table.use_count() > 1) continue;  // the caller's
            kept.push_back({table.get(), {}});
            PreparedStatement query(
                m_connection, "SELECT " + storedColumns(table->info) + " FROM " + table->info.sqlName());
            while (query.step()) {
                auto& row = kept.back().second.emplace_back();
                for (int i = 0; i < query.columnCount(); ++i) row.push_back(ownedValue(query.cell(i)));
            }
        }
    rollback();
    for (auto& [table, rows] : kept) {
        TableInfo& info = table->info;
        dropTable(info);
        info = createTable(*table->definition);
        const std::string sql = "INSERT INTO " + info.sqlName() + " (" + storedColumns(info) + ") VALUES (";
        for (const auto& row : rows)
            m_connection.run(sql + commaList(row, [](const Value&) { return "?"; }) + ")", row);
        noteHighest(info);
    }
}

}  // namespace tsql
