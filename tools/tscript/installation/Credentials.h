// Stored credentials of the suite's databases.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "console/Secret.h"

inline constexpr std::size_t kLongestPassword = 128;  // in bytes

// Encrypts user and password and stores them as the database's credentials. Throws Failure: kUsage if one of
// them cannot be stored, kInstallation for the key or the store.
void storeCredentials(const std::string& database, const std::string& user, const Secret& password);

// Returns whether a string of the store looks like encrypted credentials.
bool isStoredCredentials(const std::string& text);
// Decrypts credentials with the key of one file and encrypts them with that of another. Empty if the first
// key does not decrypt them; throws Failure (kInstallation) if the second cannot be used.
std::optional<std::string> withKey(const std::string& stored, const std::string& oldKeyFile,
                                   const std::string& newKeyFile);
