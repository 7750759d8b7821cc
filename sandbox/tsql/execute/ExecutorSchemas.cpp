// CREATE, ALTER and DROP SCHEMA.
#include "execute/Executor.h"

namespace tsql {

void Executor::run(const CreateSchema& create) {
    if (!create.owner.empty() && !sameWord(create.owner, "dbo"))
        throw sqlError(kSecurableNotFound, {"find", "user", create.owner});
    define({}, [&](Catalogue& owner) {
        failingAs(sqlError(kSchemaNotCreated), [&] {
            if (owner.schemaNamed(create.name)) throw sqlError(kObjectExists, {create.name});
        });
        ObjectInfo schema{0, create.name, std::string(kSchema)};
        owner.save(schema);
    });
}

void Executor::dropSchema(const std::string& name, bool ifExists) {
    define({}, [&](Catalogue& owner) {
        const auto schema = owner.schemaNamed(name);
        if (!schema && ifExists) return;
        if (!schema) throw sqlError(kSecurableNotFound, {"drop", "schema", name});
        if (schema->object == 0) throw sqlError(kCannotDropBuiltIn, {"drop", "schema", name});
        if (const auto objects = owner.objectsIn(name); !objects.empty())
            throw sqlError(kReferencedByObject, {"drop schema", name, objects.front().name});
        owner.remove(schema->object);
    });
}

// A module keeps its text, which has its old name.
void Executor::run(const TransferObject& transfer) {
    define({}, [&](Catalogue& owner) {
        const auto schema = owner.schemaNamed(transfer.schema);
        if (!schema || schema->isOfSystem)
            throw sqlError(kSecurableNotFound, {"alter", "schema", transfer.schema});
        auto moved = object(transfer.object);
        if (!moved || moved->parent != 0 || !transfer.object.database.empty())
            throw sqlError(kSecurableNotFound, {"find", "object", asWritten(transfer.object)});
        if (sameText(moved->schemaName, schema->name)) return;
        auto references = owner.keysTo(moved->id);
        const auto move = [&](ObjectInfo& each) {
            each.schemaName = schema->name;
            if (owner.find(each.key())) throw sqlError(kTransferNameTaken, {each.name});
            owner.save(each);
        };
        const std::string before = moved->stored;
        if (moved->type == kTable) moved->stored = storedName(schema->name, moved->name);
        move(*moved);
        if (moved->type == kTable)
            m_connection.run("ALTER TABLE " + owner.schema() + "." + quotedName(before) + " RENAME TO " +
                             quotedName(moved->stored));
        for (auto& key : references) {
            key.stored = moved->stored;
            owner.save(key);
        }
        for (auto& key : owner.keysOf(moved->id))
            if (key.type != kIndex) move(key);
        for (auto& trigger : owner.triggersOf(moved->id)) move(trigger);
    });
}

}  // namespace tsql
