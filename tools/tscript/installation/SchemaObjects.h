// The database objects that script runs need: catalogue, journal, function and procedure.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "DVUtilities/DBBase.h"

enum class ObjectState { kGood, kMissing, kDifferent };
const char* nameOf(ObjectState state);

struct SchemaObject {
    std::string name;
    ObjectState state = ObjectState::kGood;
    std::string detail;  // of a different one: what differs
};

// Compares the objects of a connected database with what runs need. Changes nothing. Throws Failure
// (kConnection) if the database cannot be asked.
std::vector<SchemaObject> inspectSchema(DBBase& db);

// Creates the objects that are missing, from the files "NAME.sql" in `folder`. Others stay as they are.
// Throws Failure (kInstallation) with the server's message.
void createMissing(DBBase& db, const std::string& database, const std::vector<SchemaObject>& objects,
                   const std::filesystem::path& folder);
