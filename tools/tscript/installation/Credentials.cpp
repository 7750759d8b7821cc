#include "installation/Credentials.h"

#include <algorithm>
#include <vector>

#include "HostSetup.h"
#include "VTPassword.h"
#include "console/Outcome.h"
#include "installation/Installation.h"

namespace {

constexpr std::size_t kLongestUser = 99;  // its length is stored as two digits
constexpr std::size_t kStoredCapacity = 8192;
constexpr const char* kCredentialsMark = "ZC1.";

// Both are arguments of sqlcmd: the command line quotes the password but not the user.
void checkCredentials(const std::string& user, const std::string& password) {
    const auto endsArgument = [](char c) { return c == '"' || static_cast<unsigned char>(c) <= 0x20; };
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
    if (user.empty() || user.size() > kLongestUser || std::any_of(user.begin(), user.end(), endsArgument))
        throw Failure(ExitCode::kUsage,
                      "the user name must have 1 to 99 bytes, without blanks and double quotes");
    if (password.empty() || password.size() > kLongestPassword || password.find('"') != std::string::npos ||
        std::any_of(password.begin(), password.end(), isControl))
        throw Failure(ExitCode::kUsage,
                      "the password must have 1 to 128 bytes, without double quotes and control characters");
}

// Two digits with the length of the user name, the user name, the password.
Secret joined(const std::string& user, const std::string& password) {
    Secret text(2 + kLongestUser + kLongestPassword + 1);
    text.text() += static_cast<char>('0' + user.size() / 10);
    text.text() += static_cast<char>('0' + user.size() % 10);
    text.text() += user;
    text.text() += password;
    return text;
}

std::string encrypted(const Secret& plain) {
    std::vector<char> stored(kStoredCapacity);
    unsigned long size = stored.size();
    VTPassword cipher;
    if (cipher.encryptPwd(plain.text().c_str(), stored.data(), &size) != 0)
        return std::string(stored.data(), size);
    throw Failure(ExitCode::kInstallation, std::string("the credentials cannot be encrypted: ") +
                                               hostlayer::cipherErrorText(cipher.getLastError()));
}

}  // namespace

bool isStoredCredentials(const std::string& text) {
    return text.starts_with(kCredentialsMark);
}

std::optional<std::string> withKey(const std::string& stored, const std::string& oldKeyFile,
                                   const std::string& newKeyFile) {
    Secret plain(kStoredCapacity);
    plain.text().resize(kStoredCapacity);
    unsigned long size = kStoredCapacity;
    {
        const hostlayer::KeyFileChoice choice(oldKeyFile);
        VTPassword cipher;
        cipher.putEncPwd(stored.c_str());
        if (cipher.decrypt(plain.text().data(), &size) == 0) return std::nullopt;
    }
    plain.text().resize(size);
    const hostlayer::KeyFileChoice choice(newKeyFile);
    return encrypted(plain);
}

void storeCredentials(const std::string& database, const std::string& user, const Secret& password) {
    checkCredentials(user, password.text());
    const std::string stored = encrypted(joined(user, password.text()));
    setDatabaseValue(suiteDatabase(database).credentials, stored);
}
