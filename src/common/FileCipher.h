// Deciphering into a file that is open already.
#pragma once

#include <string>

class FileDescriptor;

// As DecryptFile(), for a target that must not be opened by its name; `targetName` serves the error text. The
// target's position is left at its end.
bool decipherInto(const char* sourceFile, const FileDescriptor& target, const char* targetName,
                  std::string& errorText);
