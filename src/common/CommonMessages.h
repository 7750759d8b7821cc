// Messages of the configuration reader, the log writers and the file cipher. Callers rely on the spelling.
#pragma once

namespace common_messages {

inline constexpr char kInvalidArgument[] = "Error: invalid argument.\n";
inline constexpr char kNoTextValue[] = "Error getting string key [%s] from registry.\n";
inline constexpr char kNoNumberValue[] = "Error getting number key [%s] from registry.\n";
inline constexpr char kUnknownMachine[] = "The input virtual machine name doesn't exist.";
inline constexpr char kUnknownVersion[] = "Unknown version <%s>\n";

inline constexpr char kInvalidLogName[] = "Invalid log file name.";
inline constexpr char kCannotOpenLog[] = "Cannot open log file [%s], Error [%d]\n";
inline constexpr char kCannotWriteLog[] = "Cannot write log file [%s], Error [%d]\n";
inline constexpr char kCannotOpenReport[] =
    "Failed to printout the report on demand: Can't open the Media errors Report [%s]";

inline constexpr char kCannotOpenCipherFile[] =
    "Failed to open source file [%s]";  // used for the target, too
inline constexpr char kCannotReadSource[] = "Failed to read source file [%s]";
inline constexpr char kCannotWriteTarget[] = "Failed to write target file [%s]";
inline constexpr char kCipherFailed[] = "%s failed with error [%ld]";
inline constexpr char kEncryptName[] = "EncryptFile";
inline constexpr char kDecryptName[] = "DescryptFile";  // misspelled in the message; callers look for it

// Causes
inline constexpr char kLineNotEncrypted[] = "Line %s cannot be encrypted.";
inline constexpr char kLineNotDecrypted[] = "Line %s cannot be decrypted.";
inline constexpr char kBrokenLine[] = "Line %s is cut off or holds a NUL byte.";
inline constexpr char kNoRecord[] = "The package has no record.";
inline constexpr char kSameFile[] = "Source and target are the same file.";
inline constexpr char kStopped[] = "The operation was stopped, most likely for lack of memory.";
inline constexpr char kValueMissing[] = "The value is missing or empty.";

}  // namespace common_messages
