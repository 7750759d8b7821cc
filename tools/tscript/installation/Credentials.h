// Stored credentials of the suite's databases.
#pragma once

#include <cstddef>
#include <string>

#include "console/Secret.h"

inline constexpr std::size_t kLongestPassword = 128;  // in bytes

// Encrypts user and password and stores them as the database's credentials. Throws Failure: kUsage if one of
// them cannot be stored, kInstallation for the key or the store.
void storeCredentials(const std::string& database, const std::string& user, const Secret& password);
