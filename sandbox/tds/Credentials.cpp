#include "Credentials.h"

#include <sodium.h>

#include <stdexcept>

#include "types/Text.h"

namespace tds {

// The cheapest hash: it is in memory only, the password's file is readable to whoever can read that memory,
// and a delay after each refused login limits the guesses of clients.
Credentials::Credentials(std::string_view name, std::string_view password)
    : m_name(name), m_hash(crypto_pwhash_STRBYTES, '\0') {
    if (sodium_init() < 0 || crypto_pwhash_str(m_hash.data(), password.data(), password.size(),
                                               crypto_pwhash_OPSLIMIT_MIN, crypto_pwhash_MEMLIMIT_MIN) != 0)
        throw std::runtime_error("the password cannot be hashed");
}

bool Credentials::match(std::string_view name, std::string_view password) const {
    const bool same = crypto_pwhash_str_verify(m_hash.c_str(), password.data(), password.size()) == 0;
    return same && tsql::sameText(name, m_name);
}

}  // namespace tds
