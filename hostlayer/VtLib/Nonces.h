// Nonces for XChaCha20-Poly1305: 24 bytes that no other record of any process carries.
#pragma once

#include <cstddef>

namespace hostlayer {

constexpr std::size_t kNonceBytes = 24;
constexpr std::size_t kNoncePrefixBytes = 16;  // the part that selects the record's own key

// Sixteen fresh random bytes for each source, then a counter: one call for randomness and one derived key
// serve all records of a source. The state stands in a page that the kernel empties in a forked child, which
// therefore starts with random bytes of its own; where it cannot do so, every nonce is drawn at random.
class Nonces {
  public:
    Nonces() = default;
    ~Nonces();
    Nonces(const Nonces&) = delete;
    Nonces& operator=(const Nonces&) = delete;

    void next(unsigned char nonce[kNonceBytes]);

  private:
    struct Page;
    Page* m_page = nullptr;
    bool m_isAsked = false;  // whether a page was asked for
};

}  // namespace hostlayer
