// Plain functions: configuration values, host identity, log files, line-by-line file encryption.
//
// Conventions of all exported headers: strings are NUL-terminated; text for people is UTF-8. Sizes are in
// bytes and count the NUL. No function throws; a failure is a false result, with the reason in the error text
// if there is one. One thread at a time may use an object; the library itself keeps no state.
#pragma once

#include <cstdio>
#include <string>

#include "DVUtilities/Export.h"

// ---- Configuration -------------------------------------------------------------------------------------

// Reads a configuration value. With `text` (8,192 bytes) it is read as a string and `number` stays unchanged;
// otherwise it is read as a number, of which the low 32 bits are stored. Both null: fails with "Error:
// invalid argument.\n". The string is interpreted as a format string: "%%" becomes "%" (docs/quirks.md).
// `instance` is not used: every read goes to the default instance. On failure the outputs are unchanged and
// `errorText` names the value.
DVU_EXPORT bool GetRegistryItemValue(const char* instance, const char* key, const char* valueName,
                                     unsigned int* number, char* text, std::string& errorText);

// Returns the management server's host name in 8,192 bytes, interpreted as a format string. `instance` is not
// used.
DVU_EXPORT bool GetNetHostName(const char* instance, char* hostName, std::string& errorText);

// Returns the installation instance of this host ("Instance001") in at least 1,024 bytes. False only for a
// null buffer.
DVU_EXPORT bool GetInstanceName(char* instanceName);

// Returns the computer's name from gethostname(2) in `*size` bytes; `*size` is not updated. False when the
// name does not fit.
DVU_EXPORT bool DVUtil_GetComputerName(char* name, unsigned int* size);

// The path of a loaded module. Not supported on this platform: returns 0 and writes nothing.
DVU_EXPORT unsigned int DVUtil_GetModuleFileName(void* module, char* path, unsigned int size);

// Return whether a component is installed on this host. False, with the reason in `errorText`, also when the
// configuration cannot be read. `instance` is not used.
DVU_EXPORT bool isPlatformDV(const char* instance, std::string& errorText);        // management server
DVU_EXPORT bool isPlatformPX(const char* instance, std::string& errorText);        // console
DVU_EXPORT bool isPlatformNQ2(const char* instance, std::string& errorText);       // web-service database
DVU_EXPORT bool isPlatformWFEngine(const char* instance, std::string& errorText);  // workflow engine
DVU_EXPORT bool isPlatformVTCloud(const char* instance, std::string& errorText);   // cloud component
DVU_EXPORT bool isPlatformHistory(const char* instance, std::string& errorText);   // history database
DVU_EXPORT bool isPlatformTNet(const char* instance, std::string& errorText);      // always false

// ---- Log files -----------------------------------------------------------------------------------------

// Formats a time (seconds since 1970) as local time, "YYYY/MM/DD" or "YYYY/MM/DD hh:mm:ss", cut to `length`
// bytes with the NUL. Returns `buffer`.
DVU_EXPORT const char* GetTimeString(char* buffer, int length, long when, bool dateOnly);

// Appends an entry to a log file: "<time> - <text>\n", or in raw mode the text only. Failures are printed on
// standard output and not reported otherwise.
DVU_EXPORT void LogToFile(const char* logFile, const char* text, bool raw);

// Copies a text file line by line to a log file or to standard output. A line longer than 8,191 bytes is
// handled in pieces of that size; a line ends at its first NUL.
//   - Without `echo`: each line becomes an entry of the log file, with its own time. If the log file is null,
//     nothing is written.
//   - With `echo`: the lines and one more line break are printed on standard output. The log file gets the
//     same, without times, only if the setting "dTScriptResultLogOutput" is nonzero and `instance` is not
//     null. The setting is read from the default instance, whatever `instance` names.
// The source must be writable: otherwise the log file gets a message that it cannot be opened. The lines of
// the log file itself, under whatever name, are echoed and not logged.
DVU_EXPORT void LogFileContent(const char* sourceFile, const char* logFile, bool echo, const char* instance);

// Opens a file by fopen(). Returns 0; -1 for a null argument, with the stream unchanged; otherwise errno,
// with a null stream. The caller closes the stream.
DVU_EXPORT int DVUtilities_fopen_s(FILE** stream, const char* path, const char* mode);

// ---- File encryption -----------------------------------------------------------------------------------

// Encrypt or decrypt a text file line by line with the platform's cipher. The target is created or truncated,
// so it must differ from the source. A new target has mode 0666 less the umask, also for decrypted text; an
// existing one keeps its mode. After a failure the target keeps the lines written so far; the caller deletes
// it. `errorText` names the file that cannot be opened, read or written, or the cipher's error number
// (VTPassword::Error). Null paths: false, with `errorText` unchanged.
//
// A round trip does not preserve every file. Lines of less than two bytes, line break included, are skipped:
// above all empty lines. Lines longer than 509 bytes (encryption) or 2,046 bytes (decryption) are handled in
// pieces of that size. A line whose length without its line break is 509 bytes, or a multiple of it, loses
// the line break and is joined to the next line.
DVU_EXPORT bool EncryptFile(const char* sourceFile, const char* targetFile, std::string& errorText);
DVU_EXPORT bool DecryptFile(const char* sourceFile, const char* targetFile, std::string& errorText);
DVU_EXPORT bool EncryptDecryptFile(const char* sourceFile, const char* targetFile, std::string& errorText,
                                   bool encrypt);
