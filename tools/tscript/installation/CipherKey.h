// Key file that packages and credentials are encrypted with.
#pragma once

#include <string>

// Creates a key file; an existing one is left unchanged. Throws Failure (kInstallation).
void createKeyFile(const std::string& file);

// Reason why the key of the store cannot be used; empty if it can.
std::string keyProblem();
