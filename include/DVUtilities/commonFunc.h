// Plain functions: configuration values, host identity, log files, line-by-line file encryption.
//
// Conventions of all exported headers: texts are NUL-terminated and, where they are text for people, UTF-8.
// Sizes are in bytes and count the NUL. Nothing is thrown; a failure is a false result with a reason in the
// error text where one is named. Objects are used by one thread at a time; the library itself keeps no state.
#pragma once

#include <cstdio>
#include <string>

#include "DVUtilities/Export.h"

// ---- Configuration -------------------------------------------------------------------------------------

// Reads one value of the installation's configuration. With `text` (8,192 bytes) the value is read as text
// and `number` is left alone; otherwise it is read as a number, of which the low 32 bits are stored. Both
// null: "Error: invalid argument.\n". The text is interpreted as a format string: "%%" becomes "%"
// (docs/quirks.md). `instance` is accepted and not used: every read goes to the default instance. On
// failure the outputs are untouched and `errorText` says which value could not be read.
DVU_EXPORT bool GetRegistryItemValue(const char* instance, const char* key, const char* valueName,
                                     unsigned int* number, char* text, std::string& errorText);

// The management server's host name, into 8,192 bytes.
DVU_EXPORT bool GetNetHostName(const char* instance, char* hostName, std::string& errorText);

// The installation instance this host belongs to ("Instance001"), into at least 1,024 bytes. False only for
// a null buffer.
DVU_EXPORT bool GetInstanceName(char* instanceName);

// The computer's name, as gethostname(2) gives it, into `*size` bytes; `*size` is not updated. False when it
// does not fit.
DVU_EXPORT bool DVUtil_GetComputerName(char* name, unsigned int* size);

// The path of a loaded module. It is not available on this platform: 0, and nothing is written.
DVU_EXPORT unsigned int DVUtil_GetModuleFileName(void* module, char* path, unsigned int size);

// Is the component installed on this host? False as well when the configuration cannot be read; the reason
// is then in `errorText`.
DVU_EXPORT bool isPlatformDV(const char* instance, std::string& errorText);        // management server
DVU_EXPORT bool isPlatformPX(const char* instance, std::string& errorText);        // console
DVU_EXPORT bool isPlatformNQ2(const char* instance, std::string& errorText);       // web-service database
DVU_EXPORT bool isPlatformWFEngine(const char* instance, std::string& errorText);  // workflow engine
DVU_EXPORT bool isPlatformVTCloud(const char* instance, std::string& errorText);   // cloud component
DVU_EXPORT bool isPlatformHistory(const char* instance, std::string& errorText);   // history database
DVU_EXPORT bool isPlatformTNet(const char* instance, std::string& errorText);      // always false

// ---- Log files -----------------------------------------------------------------------------------------

// Writes a moment (seconds since 1970) in local time as "YYYY/MM/DD" or "YYYY/MM/DD hh:mm:ss", cut to
// `length` bytes, the NUL included. Returns `buffer`.
DVU_EXPORT const char* GetTimeString(char* buffer, int length, long when, bool dateOnly);

// Appends one entry to a log file: "<time> - <text>\n", or in raw mode the text alone. Problems are printed
// on standard output and not reported otherwise.
DVU_EXPORT void LogToFile(const char* logFile, const char* text, bool raw);

// Copies a text file line by line into a log file (null: nowhere) and, with `echo`, onto standard output. The
// source must not be the log file itself, and must be writable too: otherwise the log says that it cannot be
// opened.
// `instance` (may be null) names the instance whose setting "dTScriptResultLogOutput" decides whether
// echoed lines are logged as well. A line longer than 8,191 bytes is handled in pieces of that size.
DVU_EXPORT void LogFileContent(const char* sourceFile, const char* logFile, bool echo, const char* instance);

// Opens a file: 0 and the stream; -1 when an argument is null (the stream is untouched); otherwise errno (the
// stream is null). The caller closes the stream.
DVU_EXPORT int DVUtilities_fopen_s(FILE** stream, const char* path, const char* mode);

// ---- File encryption -----------------------------------------------------------------------------------

// Encipher a text file line by line with the platform's cipher, or decipher it. The target is created or
// truncated; after a failure it keeps the lines written so far and removing it is the caller's business.
// `errorText` names the file that cannot be opened, read or written, or the cipher's error number
// (VTPassword::Error). Null paths: false, `errorText` unchanged. Lines of fewer than two bytes are skipped;
// longer ones than 509 (enciphering) or 2,046 bytes (deciphering) are handled in pieces of that size.
DVU_EXPORT bool EncryptFile(const char* sourceFile, const char* targetFile, std::string& errorText);
DVU_EXPORT bool DecryptFile(const char* sourceFile, const char* targetFile, std::string& errorText);
DVU_EXPORT bool EncryptDecryptFile(const char* sourceFile, const char* targetFile, std::string& errorText,
                                   bool encrypt);
