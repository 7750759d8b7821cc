// The platform's cipher: stored credentials and lines of enciphered files.
#pragma once

#include <memory>

#include "PlatformExport.h"

// Texts are NUL-terminated. `size` holds the size in bytes of the output buffer, its NUL included, and
// receives the length written, without it. A nonzero result means success; after a failure nothing of
// the plain text stands in the output buffer and getLastError() tells why. What an object holds of a
// secret is wiped when it is destroyed.
class VT_PLATFORM_EXPORT VTPassword {
  public:
    VTPassword();
    ~VTPassword();
    VTPassword(const VTPassword&) = delete;
    VTPassword& operator=(const VTPassword&) = delete;

    // Stored credentials: hand in the enciphered text, then have it deciphered.
    void putEncPwd(const char* enciphered);
    int decrypt(char* plain, unsigned long* size);
    // The reverse: makes the text that putEncPwd() takes.
    int encryptPwd(const char* plain, char* enciphered, unsigned long* size);

    // One line of a file. A credentials text is no file record and the other way round.
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
        kRecordCut = 7,          // shorter than any record
        kNotAuthentic = 8,       // changed, or enciphered with another key
        kWrongKind = 9,          // a credentials text where a file record is wanted, or the reverse
        kCipherUnavailable = 10  // the cipher library could not be started
    };
    long getLastError() const;

  private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
