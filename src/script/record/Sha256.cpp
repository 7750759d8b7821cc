#include "record/Sha256.h"

#include <sodium/crypto_hash_sha256.h>
#include <sodium/utils.h>
#include <unistd.h>

#include <array>

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

std::string sha256OfFile(const FileDescriptor& file) {
    Sha256 hash;
    std::array<char, 65536> buffer{};
    for (off_t offset = 0;;) {
        const ssize_t count = ::pread(file.get(), buffer.data(), buffer.size(), offset);
        if (count < 0) return {};
        if (count == 0) return hash.digits();
        hash.add({buffer.data(), static_cast<std::size_t>(count)});
        offset += count;
    }
}
