// The platform's cipher for stored credentials and lines of files.
#pragma once

#include <memory>

#include "PlatformExport.h"

// Strings are NUL-terminated. `size` is the size in bytes of the output buffer, the NUL included, and
// receives the length written, without the NUL. A nonzero result means success. After a failure the output
// buffer contains no plain text and getLastError() returns the reason. The destructor wipes all secrets.
class VT_PLATFORM_EXPORT VTPassword {
  public:
    VTPassword();
    ~VTPassword();
    VTPassword(const VTPassword&) = delete;
    VTPassword& operator=(const VTPassword&) = delete;

    // Stored credentials: set the encrypted string, then decrypt it.
    void putEncPwd(const char* enciphered);
    int decrypt(char* plain, unsigned long* size);
    // Encrypts credentials for putEncPwd().
    int encryptPwd(const char* plain, char* enciphered, unsigned long* size);

    // One line of a file. Encrypted credentials are not accepted as a line of a file, nor the reverse.
    int encrypt(const char* plain, char* enciphered, unsigned long* size);
    int decrypt(const char* enciphered, char* plain, unsigned long* size);

    enum Error : long {
        kNoError = 0,
        kKeyNotConfigured = 1,   // the store names no key file
        kKeyUnreadable = 2,      // the key file is missing or cannot be read
        kKeyExposed = 3,         // others than its owner may read the key file
        kKeyMalformed = 4,       // the key file does not hold exactly 32 bytes
        kBufferTooSmall = 5,     // the output does not fit
        kNotARecord = 6,         // no version mark, or not base64
        kRecordCut = 7,          // shorter than the shortest record
        kNotAuthentic = 8,       // changed, or encrypted with another key
        kWrongKind = 9,          // credentials in place of a line of a file, or the reverse
        kCipherUnavailable = 10  // the cipher library could not be started
    };
    long getLastError() const;

  private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
