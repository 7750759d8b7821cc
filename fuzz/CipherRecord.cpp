// Records of the platform's cipher: what it did not write is refused, what it wrote comes back.
#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "Fuzz.h"
#include "TempDir.h"
#include "VTPassword.h"

namespace {

// A store with a key, in a folder that goes when the target ends.
class KeyedStore {
  public:
    KeyedStore() {
        const std::string key = m_folder / "key";
        support::writeFile(key, "sample key of thirty-two bytes..");
        std::filesystem::permissions(key, std::filesystem::perms::owner_read);
        support::writeFile(m_folder / "registry.toml", "[host]\ncipherKeyFile = '" + key + "'\n");
        setenv("ZEPHRA_REGISTRY", (m_folder / "registry.toml").c_str(), 1);
    }

  private:
    support::TempDir m_folder;
};

using Buffer = std::array<char, 8192>;

void refused(const char* record) {
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
    static const KeyedStore store;
    const std::string text(fuzz::textOf(data, std::min<std::size_t>(size, 2000)));
    refused(text.c_str());

    // A record that the cipher wrote, and the same with one byte changed.
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
    refused(record.data());
    return 0;
}
