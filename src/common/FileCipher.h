// Decryption to an open file.
#pragma once

#include <string>

class FileDescriptor;

// DecryptFile() for a target that must not be opened by its name; `targetName` is used in the error text
// only. Leaves the target's position at its end.
bool decryptInto(const char* sourceFile, const FileDescriptor& target, const char* targetName,
                 std::string& errorText);
