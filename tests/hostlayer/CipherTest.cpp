#include <gtest/gtest.h>
#include <sodium.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>
#include <vector>

#include "PackageSeal.h"
#include "TestStore.h"
#include "VTPassword.h"

namespace {

constexpr unsigned long kRecordRoom = 2048;

class Cipher : public ::testing::Test {
  protected:
    Cipher() : m_store("[host]\ncipherKeyFile = '" + std::string(m_folder / "cipher.key") + "'\n") {
        writeKey(std::string(32, 'k'), 0600);
    }

    void writeKey(const std::string& bytes, mode_t mode) const {
        support::writeFile(m_folder / "cipher.key", bytes);
        ::chmod((m_folder / "cipher.key").c_str(), mode);
    }

    static std::string encrypted(VTPassword& cipher, const std::string& plain) {
        char record[kRecordRoom];
        unsigned long size = sizeof record;
        return cipher.encrypt(plain.c_str(), record, &size) != 0 ? std::string(record, size) : "";
    }

    // The plain text, or the number of the error.
    static std::string decrypted(const std::string& record, unsigned long size = kRecordRoom) {
        VTPassword cipher;
        std::string plain(size + 1, '#');
        const bool isDone = cipher.decrypt(record.c_str(), plain.data(), &size) != 0;
        EXPECT_EQ(plain.back(), '#');
        if (isDone) return plain.substr(0, size);
        EXPECT_EQ(plain.front(), size > 0 ? '\0' : '#');
        return "error " + std::to_string(cipher.getLastError());
    }

    support::TempDir m_folder;
    TestStore m_store;
};

TEST_F(Cipher, DecryptsWhatItEncrypted) {
    VTPassword cipher;
    for (std::size_t length = 0; length <= 510; ++length) {
        const std::string plain(length, static_cast<char>('A' + length % 26));
        const std::string record = encrypted(cipher, plain);
        EXPECT_LE(record.size(), 2046U);
        EXPECT_EQ(decrypted(record), plain);
    }
    EXPECT_EQ(decrypted(encrypted(cipher, "select 'Grüße';\r\n")), "select 'Grüße';\r\n");
}

TEST_F(Cipher, FormatIsXChaCha20Poly1305) {
    VTPassword cipher;
    const std::string record = encrypted(cipher, "PRINT 1\n");
    unsigned char bytes[256];
    std::size_t length = 0;
    ASSERT_EQ(::sodium_base642bin(bytes, sizeof bytes, record.c_str() + 4, record.size() - 4, nullptr,
                                  &length, nullptr, sodium_base64_VARIANT_ORIGINAL_NO_PADDING),
              0);
    unsigned char plain[64];
    unsigned long long plainLength = 0;
    ASSERT_EQ(::crypto_aead_xchacha20poly1305_ietf_decrypt(
                  plain, &plainLength, nullptr, bytes + 24, length - 24,
                  reinterpret_cast<const unsigned char*>(record.data()), 4, bytes,
                  reinterpret_cast<const unsigned char*>(std::string(32, 'k').data())),
              0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(plain), plainLength), "PRINT 1\n");
}

TEST_F(Cipher, RejectsForeignAndChangedRecords) {
    VTPassword cipher;
    const std::string record = encrypted(cipher, "a secret of this file");
    for (std::size_t i = 0; i < record.size(); ++i) {  // no character can be changed, nor a record cut there
        std::string changed = record;
        changed[i] = changed[i] == 'A' ? 'B' : 'A';
        EXPECT_EQ(decrypted(changed).rfind("error ", 0), 0U) << i;
        EXPECT_EQ(decrypted(record.substr(0, i)).rfind("error ", 0), 0U) << i;
    }
    char credentials[kRecordRoom];
    unsigned long size = sizeof credentials;
    ASSERT_NE(cipher.encryptPwd("02sapassword", credentials, &size), 0);
    std::string renamed = credentials;
    renamed[1] = record[1];
    std::string swapped = record;
    std::swap(swapped[20], swapped[21]);
    for (const auto& [text, error] : std::vector<std::pair<std::string, int>>{
             {"", VTPassword::kNotARecord},
             {"PRINT 1", VTPassword::kNotARecord},
             {record + "=", VTPassword::kNotARecord},
             {record.substr(0, 40) + "\n" + record.substr(40), VTPassword::kNotARecord},
             {record.substr(0, 20), VTPassword::kRecordCut},
             {record.substr(0, record.size() - 2), VTPassword::kNotAuthentic},
             {credentials, VTPassword::kWrongKind},
             {renamed, VTPassword::kNotAuthentic}}) {
        EXPECT_EQ(decrypted(text), "error " + std::to_string(error)) << text;
    }
    writeKey(std::string(32, 'q'), 0600);
    EXPECT_EQ(decrypted(record), "error " + std::to_string(VTPassword::kNotAuthentic));
}

TEST_F(Cipher, NeverWritesBeyondTheGivenSize) {
    VTPassword cipher;
    const std::string record = encrypted(cipher, "12345");
    EXPECT_EQ(decrypted(record, 6), "12345");
    for (const unsigned long size : {5UL, 1UL, 0UL})
        EXPECT_EQ(decrypted(record, size), "error " + std::to_string(VTPassword::kBufferTooSmall));
    char buffer[8] = "#######";
    unsigned long size = 4;
    EXPECT_EQ(cipher.encrypt("12345", buffer, &size), 0);
    EXPECT_EQ(cipher.getLastError(), VTPassword::kBufferTooSmall);
    EXPECT_EQ(std::string(buffer + 1), "######");
}

TEST_F(Cipher, DecryptsCredentialsSetOnTheObject) {
    VTPassword maker;
    char enciphered[kRecordRoom];
    unsigned long size = sizeof enciphered;
    ASSERT_NE(maker.encryptPwd("02sapass;}word", enciphered, &size), 0);
    VTPassword reader;
    char plain[3076];
    size = 3075;
    EXPECT_EQ(reader.decrypt(plain, &size), 0);  // nothing was handed in
    reader.putEncPwd(enciphered);
    size = 3075;
    ASSERT_NE(reader.decrypt(plain, &size), 0);
    EXPECT_EQ(std::string(plain), "02sapass;}word");
}

TEST_F(Cipher, RejectsUnusableKeyFiles) {
    VTPassword maker;
    const std::string record = encrypted(maker, "x");
    for (const auto& [length, mode, error] : {std::tuple(32U, 0640U, VTPassword::kKeyExposed),
                                              {32, 0604, VTPassword::kKeyExposed},
                                              {32, 0601, VTPassword::kKeyExposed},
                                              {31, 0600, VTPassword::kKeyMalformed},
                                              {33, 0600, VTPassword::kKeyMalformed}}) {
        writeKey(std::string(length, 'k'), mode);
        EXPECT_EQ(decrypted(record), "error " + std::to_string(error)) << length;
    }
    std::filesystem::remove(m_folder / "cipher.key");
    EXPECT_EQ(decrypted(record), "error " + std::to_string(VTPassword::kKeyUnreadable));
    ::mkfifo((m_folder / "cipher.key").c_str(), 0600);
    EXPECT_EQ(decrypted(record), "error " + std::to_string(VTPassword::kKeyMalformed));
    m_store.write("[host]\n");
    EXPECT_EQ(decrypted(record), "error " + std::to_string(VTPassword::kKeyNotConfigured));
}

TEST_F(Cipher, DecryptsWithThePreviousKeyWhileTheStoreNamesIt) {
    const auto recordOf = [this](const std::string& key) {
        writeKey(key, 0600);
        VTPassword cipher;
        return encrypted(cipher, "text");
    };
    const std::string withOld = recordOf(std::string(32, 'o')), withZeros = recordOf(std::string(32, '\0'));
    const std::string store = support::readFile(m_store.path());
    const std::string withNew = recordOf(std::string(32, 'n'));
    support::writeFile(m_folder / "old.key", std::string(32, 'o'));
    ::chmod((m_folder / "old.key").c_str(), 0600);
    const auto previous = [&](const char* file) {
        return store + "previousKeyFile = '" + std::string(m_folder / file) + "'\n";
    };
    const std::string refused = "error " + std::to_string(VTPassword::kNotAuthentic);
    EXPECT_EQ(decrypted(withOld), refused);
    m_store.write(previous("old.key"));
    for (const std::string& record : {withOld, withNew, withOld}) EXPECT_EQ(decrypted(record), "text");
    EXPECT_EQ(decrypted(withZeros), refused);
    // A key that cannot be read is no key of zeros.
    m_store.write(previous("missing.key"));
    VTPassword cipher;
    for (const std::string& record : {withOld, withZeros, withZeros}) {
        char plain[kRecordRoom];
        unsigned long size = sizeof plain;
        EXPECT_EQ(cipher.decrypt(record.c_str(), plain, &size), 0);
    }
}

TEST_F(Cipher, AKeyThatCannotVerifyASealIsNamed) {
    std::string text, problem;
    hostlayer::PackageSealer sealer({.version = 1, .name = "purge"});
    ASSERT_TRUE(sealer.makeText(text, problem)) << problem;
    writeKey(std::string(32, 'n'), 0600);  // not the key of the seal
    hostlayer::PackageSealCheck check;
    check.addLine("record", "\n", text);
    EXPECT_EQ(check.sealProblem().rfind("the package differs", 0), 0U);
    const std::string previous = m_folder / "absent.key";
    support::writeFile(m_store.path(),
                       support::readFile(m_store.path()) + "previousKeyFile = '" + previous + "'\n");
    EXPECT_EQ(check.sealProblem(),
              "the previous key [" + previous + "] cannot be used: it is missing or cannot be read");
    writeKey(std::string(31, 'n'), 0600);
    EXPECT_EQ(check.sealProblem(), "the key file is not a regular file of exactly 32 bytes");
}

TEST_F(Cipher, NeverReusesANonceNotEvenInAForkedChild) {
    VTPassword cipher;
    std::set<std::string> nonces{encrypted(cipher, "x").substr(4, 32)};
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    for (int i = 0; i < 100; ++i) {
        const std::string nonce = encrypted(cipher, "x").substr(4, 32);
        if (child == 0) {
            if (::write(ends[1], nonce.data(), 32) != 32) ::_exit(1);
        } else {
            EXPECT_TRUE(nonces.insert(nonce).second);
        }
    }
    if (child == 0) ::_exit(0);
    ::close(ends[1]);
    char nonce[32];
    int count = 0;
    for (; ::read(ends[0], nonce, sizeof nonce) == sizeof nonce; ++count)
        EXPECT_TRUE(nonces.insert(std::string(nonce, sizeof nonce)).second);
    EXPECT_EQ(count, 100);
    ::close(ends[0]);
    ::waitpid(child, nullptr, 0);
}

}  // namespace
