#include "cipher/Nonces.h"

#include <sodium.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <utility>

namespace hostlayer {

struct Nonces::Page {
    bool isInitialized;  // false in a new page, and after fork() in the child
    unsigned char prefix[kNoncePrefixBytes];
    std::uint64_t counter;
};

namespace {

constexpr std::size_t kPageBytes = 4096;

// Returns a page of zeros that fork() clears in the child, or null.
void* allocatePageWipedOnFork() {
    void* page = ::mmap(nullptr, kPageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) return nullptr;
    if (::madvise(page, kPageBytes, MADV_WIPEONFORK) == 0) return page;
    ::munmap(page, kPageBytes);
    return nullptr;
}

}  // namespace

Nonces::~Nonces() {
    if (m_page != nullptr) ::munmap(m_page, kPageBytes);
}

void Nonces::next(unsigned char nonce[kNonceBytes]) {
    if (!std::exchange(m_isPageRequested, true)) m_page = static_cast<Page*>(allocatePageWipedOnFork());
    if (m_page == nullptr) {
        ::randombytes_buf(nonce, kNonceBytes);
        return;
    }
    if (!m_page->isInitialized) {
        ::randombytes_buf(m_page->prefix, sizeof m_page->prefix);
        m_page->counter = 0;
        m_page->isInitialized = true;
    }
    const std::uint64_t counter = m_page->counter++;
    std::memcpy(nonce, m_page->prefix, kNoncePrefixBytes);
    std::memcpy(nonce + kNoncePrefixBytes, &counter, sizeof counter);
}

}  // namespace hostlayer
