#include "Credentials.h"

#include <sodium.h>

#include <stdexcept>

#include "types/Text.h"

namespace tds {

Credentials::Credentials(std::string_view name, std::string_view password)
    : m_name(name), m_key(crypto_generichash_KEYBYTES, '\0') {
    if (sodium_init() < 0) throw std::runtime_error("the password cannot be hashed");
    randombytes_buf(m_key.data(), m_key.size());
    m_hash = hashOf(password);
}

bool Credentials::match(std::string_view name, std::string_view password) const {
    const bool same = sodium_memcmp(hashOf(password).data(), m_hash.data(), m_hash.size()) == 0;
    return same && tsql::sameText(name, m_name);
}

// A fast hash: it is in memory only, the password's file is readable to whoever can read that memory, and a
// delay after each refused login limits the guesses of clients.
std::string Credentials::hashOf(std::string_view password) const {
    const auto bytes = [](auto* text) { return reinterpret_cast<const unsigned char*>(text); };
    std::string hash(crypto_generichash_BYTES, '\0');
    crypto_generichash(reinterpret_cast<unsigned char*>(hash.data()), hash.size(), bytes(password.data()),
                       password.size(), bytes(m_key.data()), m_key.size());
    return hash;
}

}  // namespace tds
