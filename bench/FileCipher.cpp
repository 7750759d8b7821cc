// EncryptFile() and DecryptFile() against libsodium's secretbox and base64 on the same lines in memory.
#include <sodium.h>

#include <vector>

#include "Bench.h"
#include "DVUtilities/commonFunc.h"
#include "Rows.h"

namespace bench {
namespace {

constexpr int kBase64 = sodium_base64_VARIANT_ORIGINAL_NO_PADDING;
constexpr std::size_t kLineLength = 99;  // without its newline

using Texts = std::vector<std::string>;

class Secretbox {
  public:
    Secretbox() { crypto_secretbox_keygen(m_key); }

    std::string seal(const std::string& line) {
        m_bytes.resize(crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES + line.size());
        randombytes_buf(m_bytes.data(), crypto_secretbox_NONCEBYTES);
        crypto_secretbox_easy(m_bytes.data() + crypto_secretbox_NONCEBYTES,
                              reinterpret_cast<const unsigned char*>(line.data()), line.size(),
                              m_bytes.data(), m_key);
        std::string record(sodium_base64_encoded_len(m_bytes.size(), kBase64), '\0');
        sodium_bin2base64(record.data(), record.size(), m_bytes.data(), m_bytes.size(), kBase64);
        record.pop_back();  // the NUL
        return record;
    }

    std::string open(const std::string& record) {
        m_bytes.resize(record.size());
        std::size_t size = 0;
        check(sodium_base642bin(m_bytes.data(), m_bytes.size(), record.data(), record.size(), nullptr, &size,
                                nullptr, kBase64) == 0,
              "base64");
        std::string line(size - crypto_secretbox_NONCEBYTES - crypto_secretbox_MACBYTES, '\0');
        check(crypto_secretbox_open_easy(reinterpret_cast<unsigned char*>(line.data()),
                                         m_bytes.data() + crypto_secretbox_NONCEBYTES,
                                         size - crypto_secretbox_NONCEBYTES, m_bytes.data(), m_key) == 0,
              "secretbox");
        return line;
    }

  private:
    unsigned char m_key[crypto_secretbox_KEYBYTES];
    std::vector<unsigned char> m_bytes;
};

void printMemory(const std::string& name, std::size_t fileSize, const Step& step) {
    const PeakMemory memory;
    step();
    Bench::print(name, static_cast<double>(memory.bytes()) / static_cast<double>(fileSize), atMost(0.05),
                 megabytes(memory.bytes()) + " for " + megabytes(fileSize));
}

}  // namespace

void fileCipher(Bench& bench) {
    check(sodium_init() >= 0, "libsodium");
    const std::string plain = bench.installation().folder("plain.txt");
    const std::string encrypted = bench.installation().folder("encrypted.txt");
    const std::string decrypted = bench.installation().folder("decrypted.txt");
    const std::string line(kLineLength, 'q');
    const std::size_t count = bench.scaled(100'000'000) / (kLineLength + 1);
    {
        std::string content;
        for (std::size_t i = 0; i < count; ++i) content.append(line).append("\n");
        support::writeFile(plain, content);
    }
    std::string error;
    const Step encrypt = [&] { check(EncryptFile(plain.c_str(), encrypted.c_str(), error), error); };
    const Step decrypt = [&] { check(DecryptFile(encrypted.c_str(), decrypted.c_str(), error), error); };
    printMemory("file-cipher/encrypt-memory", count * (kLineLength + 1), encrypt);
    printMemory("file-cipher/decrypt-memory", count * (kLineLength + 1), decrypt);
    check(support::readFile(plain) == support::readFile(decrypted), "the files differ");

    Secretbox box;
    Texts records(count);
    const Step sealAll = [&] {
        for (std::string& record : records) record = box.seal(line + "\n");
    };
    const Step openAll = [&] {
        for (const std::string& record : records) check(box.open(record).size() > kLineLength, "secretbox");
    };
    bench.compare("file-cipher/encrypt", atLeast(2.2), {encrypt, sealAll});
    bench.compare("file-cipher/decrypt", atLeast(2.2), {decrypt, openAll});
}

}  // namespace bench
