#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>

#include "DVUtilities/Diagnostics.h"
#include "DVUtilities/commonFunc.h"
#include "FileCipher.h"
#include "FileDescriptor.h"
#include "SampleInstallation.h"
#include "VTPassword.h"

namespace {

using support::readFile;
using support::writeFile;

class FileCipher : public testing::Test {
  protected:
    long lines(const std::string& path) {
        const std::string content = readFile(path);
        return std::count(content.begin(), content.end(), '\n');
    }

    support::SampleInstallation installation;
    const std::string plain = installation.folder("plain");
    const std::string secret = installation.folder("secret");
    const std::string back = installation.folder("back");
    std::string error = "untouched";
};

TEST_F(FileCipher, RoundTripKeepsLinesButForTheShortest) {
    const std::tuple<std::string, std::string, long> cases[] = {
        {"", "", 0},
        {"SELECT 1\nGO\n", "SELECT 1\nGO\n", 2},
        {"a line\n\n\nanother\n", "a line\nanother\n", 2},  // blank lines vanish
        {"last line without its end", "last line without its end", 1},
        {"ab\nx", "ab\n", 1},                                             // one character alone is skipped
        {std::string(599, 'p') + "\n", std::string(599, 'p') + "\n", 2},  // 509 and 91 characters
        {std::string(509, 'p') + "\nq\n", std::string(509, 'p') + "q\n",
         2},  // the newline was a piece of its own
        {"ä 100%s\r\n", "ä 100%s\r\n", 1}};
    for (const auto& [content, restored, records] : cases) {
        writeFile(plain, content);
        ASSERT_TRUE(EncryptFile(plain.c_str(), secret.c_str(), error)) << error;
        EXPECT_EQ(lines(secret), records);
        ASSERT_TRUE(DecryptFile(secret.c_str(), back.c_str(), error)) << error;
        EXPECT_EQ(readFile(back), restored);
    }
    EXPECT_EQ(error, "untouched");
}

TEST_F(FileCipher, CarriageReturnsAndBlankLinesOfRecordsDoNotCount) {
    writeFile(plain, "one\ntwo\n");
    ASSERT_TRUE(EncryptFile(plain.c_str(), secret.c_str(), error));
    std::string records = readFile(secret);
    for (std::size_t at = 0; (at = records.find('\n', at)) != std::string::npos; at += 4)
        records.replace(at, 1, "\r\n\r\n");
    writeFile(secret, records);
    ASSERT_TRUE(DecryptFile(secret.c_str(), back.c_str(), error)) << error;
    EXPECT_EQ(readFile(back), "one\ntwo\n");
}

TEST_F(FileCipher, TamperedRecordFailsAndKeepsWhatCameBefore) {
    writeFile(plain, "one\ntwo\n");
    ASSERT_TRUE(EncryptFile(plain.c_str(), secret.c_str(), error));
    std::string records = readFile(secret);
    char& changed = records[records.size() - 10];
    changed = changed == 'A' ? 'B' : 'A';
    writeFile(secret, records);
    EXPECT_FALSE(DecryptFile(secret.c_str(), back.c_str(), error));
    EXPECT_EQ(error, "DescryptFile failed with error [" + std::to_string(VTPassword::kNotAuthentic) + "]");
    EXPECT_EQ(readFile(back), "one\n");
}

TEST_F(FileCipher, RecordOfMoreThan510CharactersIsRefused) {
    std::string record(2048, '\0');
    unsigned long size = record.size();
    ASSERT_NE(VTPassword().encrypt(std::string(511, 'p').c_str(), record.data(), &size), 0);
    writeFile(secret, record.substr(0, size));
    EXPECT_FALSE(DecryptFile(secret.c_str(), back.c_str(), error));
    EXPECT_EQ(error, "DescryptFile failed with error [" + std::to_string(VTPassword::kBufferTooSmall) + "]");
}

#if !defined(__SANITIZE_ADDRESS__)  // its runtime opens descriptors to check the type of an object
TEST_F(FileCipher, ADescriptorLimitIsTheCause) {
    writeFile(plain, "text\n");
    ASSERT_TRUE(EncryptFile(plain.c_str(), secret.c_str(), error)) << error;
    FileDescriptor source(secret.c_str(), O_RDONLY);
    const FileDescriptor target(back.c_str(), O_RDWR | O_CREAT, 0600);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit noneLeft{static_cast<rlim_t>(target.get()) + 1, before.rlim_max};
    const DVUCauses collector;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &noneLeft), 0);
    const bool isDecrypted = decryptPackage(std::move(source), secret.c_str(), target, back.c_str(), error);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    std::vector<DVUCause_t> causes;
    collector.get(causes);
    ASSERT_TRUE(!isDecrypted && causes.size() == 1);
    EXPECT_EQ(causes[0].systemError, EMFILE);
}
#endif

TEST_F(FileCipher, FailuresAreReported) {
    EXPECT_FALSE(EncryptFile(nullptr, secret.c_str(), error));
    EXPECT_FALSE(EncryptFile(plain.c_str(), nullptr, error));
    EXPECT_EQ(error, "untouched");
    writeFile(plain, "text\n");
    const std::string link = plain + ".link";
    std::filesystem::create_hard_link(plain, link);
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"/no/such", secret, "Failed to open source file [/no/such]"},
        {plain, "/no/such/target", "Failed to open source file [/no/such/target]"},
        {installation.folder("."), secret,
         "Failed to read source file [" + installation.folder(".").string() + "]"},
        {plain, plain, "Failed to open source file [" + plain + "]"},
        {plain, link, "Failed to open source file [" + link + "]"},
        {plain, "/dev/full", "Failed to write target file [/dev/full]"}};
    std::vector<DVUCause_t> causes;
    for (const auto& [source, target, message] : cases) {
        const DVUCauses collector;
        EXPECT_FALSE(EncryptFile(source.c_str(), target.c_str(), error));
        EXPECT_EQ(error, message);
        collector.get(causes);
        ASSERT_EQ(causes.size(), 1U);
        EXPECT_EQ(causes[0].where, kDVUFile);
        EXPECT_NE(message.find("[" + causes[0].subject + "]"), std::string::npos);
        EXPECT_TRUE(causes[0].systemError != 0 || causes[0].text.find("same file") != std::string::npos);
    }
    EXPECT_EQ(readFile(plain), "text\n");
    writeFile(secret, "no record\n");
    DVUCauses collector;
    EXPECT_FALSE(DecryptFile(secret.c_str(), (plain + "2").c_str(), error));
    collector.get(causes);
    ASSERT_EQ(causes.size(), 2U);
    EXPECT_EQ(causes[0].text, "the text is not an encrypted record");
    EXPECT_EQ(causes[1].subject + ": " + causes[1].text, secret + ": Line 1 cannot be decrypted.");
    std::filesystem::remove(installation.folder("cipher.key"));
    collector.clear();
    EXPECT_FALSE(EncryptFile(plain.c_str(), secret.c_str(), error));
    collector.get(causes);
    ASSERT_EQ(causes.size(), 2U);
    EXPECT_EQ(causes[0].systemError, ENOENT);
    EXPECT_EQ(error, "EncryptFile failed with error [" + std::to_string(VTPassword::kKeyUnreadable) + "]");
    ::setenv("ZEPHRA_REGISTRY", "/no/store", 1);
    collector.clear();
    EXPECT_FALSE(EncryptFile(plain.c_str(), secret.c_str(), error));
    collector.get(causes);
    ASSERT_EQ(causes.size(), 2U);
    EXPECT_EQ(causes[0].text, "Configuration store [/no/store]: No such file or directory");
}

}  // namespace
