// CREATE and DROP SCHEMA.
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

}  // namespace tsql
