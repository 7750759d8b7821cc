#include "Credentials.h"

#include <sodium.h>

#include <stdexcept>

#include "types/Text.h"

namespace tds {
namespace {

// Cheap parameters (a few milliseconds for each login), since the server is meant for local use.
constexpr unsigned long long kHashOperations = 3;
constexpr std::size_t kHashMemory = 4u << 20;

}  // namespace

Credentials::Credentials(std::string_view name, std::string_view password)
    : m_name(name), m_hash(crypto_pwhash_STRBYTES, '\0') {
    if (sodium_init() < 0 ||
        crypto_pwhash_str(m_hash.data(), password.data(), password.size(), kHashOperations, kHashMemory) != 0)
        throw std::runtime_error("the password cannot be hashed");
}

bool Credentials::match(std::string_view name, std::string_view password) const {
    m_hashSlots.acquire();
    const bool same = crypto_pwhash_str_verify(m_hash.c_str(), password.data(), password.size()) == 0;
    m_hashSlots.release();
    return same && tsql::sameText(name, m_name);
}

}  // namespace tds
