// Generator of nonces for XChaCha20-Poly1305: 24 bytes, never used twice with one key.
#pragma once

#include <cstddef>

namespace hostlayer {

constexpr std::size_t kNonceBytes = 24;
constexpr std::size_t kNoncePrefixBytes = 16;  // the input of HChaCha20, which derives the record's key

// Nonces of one generator are 16 random bytes followed by an 8-byte counter: consecutive records share a
// derived key and need no random bytes. The state is in a page that the kernel clears in a forked child
// (MADV_WIPEONFORK), so that the child draws a new prefix. Where the kernel cannot do that, every nonce is
// random. One thread at a time.
class Nonces {
  public:
    Nonces() = default;
    ~Nonces();
    Nonces(const Nonces&) = delete;
    Nonces& operator=(const Nonces&) = delete;

    void next(unsigned char nonce[kNonceBytes]);

  private:
    struct Page;
    Page* m_page = nullptr;  // null: not allocated yet, or not available
    bool m_isPageRequested = false;
};

}  // namespace hostlayer
