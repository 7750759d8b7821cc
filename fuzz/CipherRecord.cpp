// Records of the platform's cipher: its own are decrypted to the same text, all others are rejected.
#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "Fuzz.h"
#include "StoreWithKey.h"
#include "VTPassword.h"

namespace {

using Buffer = std::array<char, 8192>;

void requireRejected(const char* record) {
    Buffer plain{};
    unsigned long size = plain.size();
    VTPassword cipher;
    fuzz::require(cipher.decrypt(record, plain.data(), &size) == 0 && cipher.getLastError() != 0);
    size = plain.size();
    cipher.putEncPwd(record);
    fuzz::require(cipher.decrypt(plain.data(), &size) == 0 && cipher.getLastError() != 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMaxText = 2000;
    static const StoreWithKey store;
    const std::string text(fuzz::textOf(data, std::min(size, kMaxText)));
    requireRejected(text.c_str());

    // Encrypt the text, decrypt the record, then change one byte of the record.
    Buffer record{};
    Buffer plain{};
    unsigned long length = record.size();
    VTPassword cipher;
    fuzz::require(cipher.encrypt(text.c_str(), record.data(), &length) != 0 &&
                  length == std::strlen(record.data()));
    unsigned long plainLength = plain.size();
    fuzz::require(cipher.decrypt(record.data(), plain.data(), &plainLength) != 0 &&
                  std::strcmp(plain.data(), text.c_str()) == 0);
    if (size < 3) return 0;
    char& changed = record[(data[0] * 256U + data[1]) % length];
    if (data[2] == 0 || changed == static_cast<char>(data[2])) return 0;
    changed = static_cast<char>(data[2]);
    requireRejected(record.data());
    return 0;
}
