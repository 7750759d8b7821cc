#include "Credentials.h"

#include <sodium.h>

#include <stdexcept>

#include "types/Text.h"

namespace tds {

namespace {

const unsigned char* bytesOf(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

// A fast hash: it is in memory only, the password's file is readable to whoever can read that memory, and a
// delay after each refused login limits the guesses of clients.
Credentials::Credentials(std::string_view name, std::string_view password)
    : m_name(name), m_key(crypto_auth_KEYBYTES, 0), m_hash(crypto_auth_BYTES, 0) {
    if (sodium_init() < 0) throw std::runtime_error("the password cannot be hashed");
    crypto_auth_keygen(m_key.data());
    crypto_auth(m_hash.data(), bytesOf(password), password.size(), m_key.data());
}

bool Credentials::match(std::string_view name, std::string_view password) const {
    const bool same =
        crypto_auth_verify(m_hash.data(), bytesOf(password), password.size(), m_key.data()) == 0;
    return same && tsql::sameText(name, m_name);
}

}  // namespace tds
