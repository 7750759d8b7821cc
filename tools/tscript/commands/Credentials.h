// Stored credentials of the suite's databases.
#pragma once

#include <string>

#include "console/Secret.h"

// Enciphers user and password and puts them into the store as the database's credentials. Throws Failure:
// usage for a text that cannot be stored, installation for the key or the store.
void storeCredentials(const std::string& database, const std::string& user, const Secret& password);
