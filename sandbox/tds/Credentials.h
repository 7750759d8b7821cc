// Login name and password of a server, which has exactly one login.
#pragma once

#include <openssl/crypto.h>

#include "types/Text.h"

namespace tds {

// The password is not hashed: whoever can read the server's memory can also read the password's file.
struct Credentials {
    std::string name, password;

    // Compares the name without regard to case and the password exactly. The time does not depend on where
    // they differ.
    bool match(std::string_view givenName, std::string_view given) const {
        const bool same = given.size() == password.size() &&
                          CRYPTO_memcmp(given.data(), password.data(), password.size()) == 0;
        return same && tsql::sameText(givenName, name);
    }
};

}  // namespace tds
