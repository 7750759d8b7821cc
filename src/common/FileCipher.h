// Decryption of an open package to an open file.
#pragma once

#include <string>

class FileDescriptor;

// DecryptFile() for a package. Neither file is opened by its name: the paths are used in error texts, and the
// source's for the name that the seal must have. Refuses, in addition, a package without a record, with a NUL
// byte or with a last line of one byte (DecryptFile() skips such lines), and one whose seal does not allow
// its use. Leaves the target's position at its end.
bool decryptPackage(FileDescriptor source, const char* sourcePath, const FileDescriptor& target,
                    const char* targetPath, std::string& errorText);
