#include "record/Sha256.h"

#include <sodium/crypto_hash_sha256.h>
#include <sodium/utils.h>
#include <sys/stat.h>

#include <array>
#include <cstdio>

#include "OpenFile.h"

namespace {

class Sha256 {
  public:
    Sha256() { crypto_hash_sha256_init(&m_state); }
    void add(std::string_view bytes) {
        crypto_hash_sha256_update(&m_state, reinterpret_cast<const unsigned char*>(bytes.data()),
                                  bytes.size());
    }
    std::string digits() {
        std::array<unsigned char, crypto_hash_sha256_BYTES> hash{};
        crypto_hash_sha256_final(&m_state, hash.data());
        std::array<char, 2 * crypto_hash_sha256_BYTES + 1> text{};
        return sodium_bin2hex(text.data(), text.size(), hash.data(), hash.size());
    }

  private:
    crypto_hash_sha256_state m_state{};
};

}  // namespace

std::string sha256Of(std::string_view text) {
    Sha256 hash;
    hash.add(text);
    return hash.digits();
}

std::string sha256OfFile(const char* path) {
    struct stat status {};
    if (::stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return {};
    const OpenFile file(path, "rb");
    if (!file.isOpen()) return {};
    Sha256 hash;
    std::array<char, 65536> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file.get()))
        hash.add({buffer.data(), count});
    return std::ferror(file.get()) == 0 ? hash.digits() : std::string();
}
