// New names of objects: sp_rename, and ALTER SCHEMA ... TRANSFER.
#include "execute/Executor.h"

namespace tsql {

namespace {

// Returns the source of a foreign key that references these columns of the table.
std::string sourceOf(const ObjectInfo& key, const TableInfo& table, const std::vector<std::string>& columns) {
    const Constraint constraint = parseConstraint(key.source);
    std::string state;
    for (const auto each : {kDisabled, kUntrusted})
        if (key.source.starts_with(each)) state = each;
    return state + "FOREIGN KEY (" + quotedNames(key.columns) + ") REFERENCES " +
           quotedName(table.schemaName) + "." + quotedName(table.name) + " (" + quotedNames(columns) +
           ") ON DELETE " + constraint.onDelete + " ON UPDATE " + constraint.onUpdate;
}

bool replaceName(std::vector<std::string>& names, std::string_view name, const std::string& newName) {
    const auto found = std::ranges::find_if(names, std::bind_front(sameText, name));
    if (found == names.end()) return false;
    *found = newName;
    return true;
}

}  // namespace

// Gives an object a schema and a name, also in SQLite and in the foreign keys that reference it. A module
// keeps its text, which has its old name.
void Executor::place(Catalogue& owner, ObjectInfo moved, const std::string& schema, const std::string& name) {
    const bool isTable = moved.type == kTable;
    auto references = isTable ? owner.keysTo(moved.id) : std::vector<ObjectInfo>();
    moved.schemaName = schema;
    moved.name = name;
    if (isTable && !sameText(moved.stored, moved.key())) {
        m_connection.run("ALTER TABLE " + owner.schema() + "." + quotedName(moved.stored) + " RENAME TO " +
                         quotedName(moved.key()));
        moved.stored = moved.key();
    }
    owner.save(moved);
    for (auto& key : references) {
        key.stored = moved.stored;
        owner.save(key);
    }
}

void Executor::run(const TransferObject& transfer) {
    define({}, [&](Catalogue& owner) {
        const auto schema = owner.schema(transfer.schema);
        if (!schema || schema->isOfSystem())
            throw sqlError(kSecurableNotFound, {"alter", "schema", transfer.schema});
        const auto moved = object(transfer.object);
        if (!moved || moved->parent != 0 || !transfer.object.database.empty())
            throw sqlError(kSecurableNotFound, {"find", "object", asWritten(transfer.object)});
        if (sameText(moved->schemaName, schema->name)) return;
        const auto move = [&](const ObjectInfo& each) {
            if (owner.find(storedName(schema->name, each.name))) throw sqlError(kNameTaken, {each.name});
            place(owner, each, schema->name, each.name);
        };
        move(*moved);
        m_connection.run(
            "DELETE FROM " + owner.schema() + ".tsqlbox_permissions WHERE class = 1 AND major = ?1",
            {moved->id});
        for (const auto& key : owner.keysOf(moved->id))
            if (key.type != kIndex) move(key);
        for (const auto& trigger : owner.triggersOf(moved->id)) move(trigger);
    });
}

// sp_rename: without a type, an object, an index or a column.
int Executor::rename(const Frame& frame) {
    const std::string type = frame.text("@objtype"), newName = frame.text("@newname");
    if (newName.empty()) throw sqlError(kParameterIsNull, {"@newname"});
    const auto isType = [&](std::string_view each) { return type.empty() || sameWord(each, type); };
    if (!isType("OBJECT") && !isType("INDEX") && !isType("COLUMN"))
        throw hasWord("DATABASE STATISTICS USERDATATYPE", toUpper(type))
            ? unsupported("sp_rename of the type '" + type + "'")
            : sqlError(kUnknownRenameType, {type});
    ObjectName name = parseObjectName(frame.text("@objname"));
    const ObjectName parent{frame.database, name.database, name.schema};
    if (isTemporaryName(name.name) || isTemporaryName(parent.name) || isTemporaryName(newName))
        throw unsupported("sp_rename of a temporary table");
    const bool isHere = name.database.empty() || sameText(name.database, frame.database);
    if (!isHere && sameWord(type, "OBJECT")) throw sqlError(kOtherDatabase);
    name.database = frame.database;
    define(name, [&](Catalogue& owner) {
        if (isType("OBJECT") && isHere)
            if (const auto found = object(name)) return renameObject(owner, *found, newName);
        const auto table = sameWord(type, "OBJECT") ? std::nullopt : findTable(parent);
        for (const auto& key : table ? owner.keysOf(table->id) : std::vector<ObjectInfo>())
            if (isType("INDEX") && isIndexed(key) && sameText(key.name, name.name))
                return renameObject(owner, key, newName);
        if (table && isType("COLUMN") && table->column(name.name))
            return renameColumn(owner, *table, *table->column(name.name), newName);
        if (!isType("OBJECT")) throw sqlError(kAmbiguousItem, {type});
        throw sqlError(kItemNotFound, {frame.text("@objname"), frame.database,
                                       type.empty() ? "(null)" : std::string_view(type)});
    });
    inform(kRenameCaution);
    return 0;
}

void Executor::renameObject(Catalogue& owner, const ObjectInfo& object, const std::string& newName) {
    const std::string_view type = object.type;
    if (type == kFunction || type == kTableFunction || type == kSequence)
        throw unsupported("sp_rename of a function or sequence");
    const auto taken = owner.find(storedName(object.schemaName, newName));
    if (taken && taken->id != object.id && type != kIndex) throw sqlError(kNewNameInUse, {newName, "object"});
    for (const auto& other : owner.keysOf(object.parent))
        if (isIndexed(object) && isIndexed(other) && other.id != object.id && sameText(other.name, newName))
            throw sqlError(kNewNameInUse, {newName, "INDEX"});
    place(owner, object, object.schemaName, newName);
    if (object.parent == 0 || type == kTrigger) return;
    const TableInfo table = owner.tableOf(*owner.findById(object.parent));
    renameIndex(table, object.name, newName);
    redefine(owner, table);  // which names checks and foreign keys
}

void Executor::renameColumn(Catalogue& owner, const TableInfo& table, TableColumn column,
                            const std::string& newName) {
    const std::string name = column.name;
    const auto refuseUse = [&](const auto& columns) {
        if (std::ranges::any_of(columns, std::bind_front(sameText, name)))
            throw sqlError(kRenamedHasDependents, {table.qualifiedName() + "." + name});
    };
    requireColumnName(newName);
    if (table.column(newName) && !sameText(name, newName)) throw sqlError(kNewNameInUse, {newName, "COLUMN"});
    for (const auto& other : table.columns)
        if (!other.computed.empty()) refuseUse(computed(table, other).columns);
    for (const auto& key : owner.keysOf(table.id)) {
        if (key.type == kCheck) refuseUse(key.columns);
        if (key.type == kIndex && !key.stored.empty()) refuseUse(filterColumns(table, key));
    }
    for (auto& key : owner.keysTo(table.id)) {
        auto columns = referencedColumns(owner, key);
        if (!replaceName(columns, name, newName)) continue;
        key.source = sourceOf(key, table, columns);
        owner.save(key);
    }
    column.name = newName;
    owner.saveColumns(table.id, {column});
    for (auto& key : owner.keysOf(table.id))
        if (replaceName(key.columns, name, newName)) owner.save(key);
    m_connection.run("ALTER TABLE " + table.sqlName() + " RENAME COLUMN " + quotedName(name) + " TO " +
                     quotedName(newName));
}

}  // namespace tsql
