// Decryption of a package to an open file.
#pragma once

#include <string>

class FileDescriptor;

// DecryptFile() for a package, whose target must not be opened by its name; `targetName` is used in the error
// text only. Refuses, in addition, a package without a record, with a NUL byte or with a last line of one
// byte (DecryptFile() skips such lines), and one whose seal does not allow its use. Leaves the target's
// position at its end.
bool decryptPackage(const char* sourceFile, const FileDescriptor& target, const char* targetName,
                    std::string& errorText);
