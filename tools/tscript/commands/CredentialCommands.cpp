// credentials: user and password of a suite database.
#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "DVUtilities/DVUtilLib.h"
#include "HostSetup.h"
#include "VTPassword.h"
#include "commands/Commands.h"
#include "commands/Credentials.h"
#include "console/Console.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"

namespace {

constexpr std::size_t kLongestUser = 99;  // its length is stored as two digits
constexpr std::size_t kLongestPassword = 128;
constexpr std::size_t kStoredRoom = 8192;

// Both travel to sqlcmd on a command line: the password between double quotes, the user without.
void checkTexts(const std::string& user, const std::string& password) {
    const auto splits = [](char c) { return c == '"' || static_cast<unsigned char>(c) <= 0x20; };
    const auto control = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
    if (user.empty() || user.size() > kLongestUser || std::any_of(user.begin(), user.end(), splits))
        throw Failure(ExitCode::kUsage,
                      "the user name must have 1 to 99 bytes, without blanks and double quotes");
    if (password.empty() || password.size() > kLongestPassword || password.find('"') != std::string::npos ||
        std::any_of(password.begin(), password.end(), control))
        throw Failure(ExitCode::kUsage,
                      "the password must have 1 to 128 bytes, without double quotes and control characters");
}

// Two digits with the user's length, the user, the password.
Secret credentialText(const std::string& user, const std::string& password) {
    Secret text(2 + kLongestUser + kLongestPassword + 1);
    text.text() += static_cast<char>('0' + user.size() / 10);
    text.text() += static_cast<char>('0' + user.size() % 10);
    text.text() += user;
    text.text() += password;
    return text;
}

std::string encipher(const Secret& plain) {
    std::vector<char> stored(kStoredRoom);
    unsigned long size = stored.size();
    VTPassword cipher;
    if (cipher.encryptPwd(plain.text().c_str(), stored.data(), &size) != 0)
        return std::string(stored.data(), size);
    throw Failure(ExitCode::kInstallation, std::string("the credentials cannot be enciphered: ") +
                                               hostlayer::cipherErrorText(cipher.getLastError()));
}

ExitCode setCredentials(const std::string& database, const std::string& user) {
    suiteDatabase(database);
    requireStore();
    const Secret password = readSecret("Password of " + user, kLongestPassword);
    storeCredentials(database, user, password);
    writeNote("stored the credentials of " + std::string(suiteDatabase(database).name));
    return ExitCode::kDone;
}

ExitCode testCredentials(const std::string& name) {
    const SuiteDatabase& database = suiteDatabase(name);
    requireStore();
    std::string machine;
    std::string instance;
    DBBase db(false);
    const std::string log = sessionLogFile().string();
    const bool named = DVUtilLib("tscript", false).GetMachineName(machine, instance);
    if (!named || !db.GetAccountInfo(machine.c_str(), instance.c_str(), log.c_str(), database.name)) {
        const Diagnosis diagnosis = diagnoseDatabase(database.name);
        throw Failure(diagnosis.code, diagnosis.what, diagnosis.advice);
    }
    writeNote(std::string("the credentials of ") + database.name + " work");
    return ExitCode::kDone;
}

}  // namespace

void storeCredentials(const std::string& database, const std::string& user, const Secret& password) {
    checkTexts(user, password.text());
    const std::string stored = encipher(credentialText(user, password.text()));
    setDatabaseValue(suiteDatabase(database).credentials, stored);
}

void addCredentialCommands(CLI::App& app, Action& action) {
    struct Options {
        std::string database;
        std::string user;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* family = app.add_subcommand("credentials", "User and password of the suite's databases");
    family->require_subcommand(1);
    CLI::App* set = family->add_subcommand(
        "set",
        "Store a database's user and password; the password is asked for, or read from standard input");
    set->add_option("DB", options->database, "The database")->required();
    set->add_option("--user", options->user, "The login's name")->required()->type_name("USER");
    set->callback([&action, options] {
        action = [options] { return setCredentials(options->database, options->user); };
    });
    CLI::App* test = family->add_subcommand("test", "Try a database's credentials: connect and probe");
    test->add_option("DB", options->database, "The database")->required();
    test->callback([&action, options] { action = [options] { return testCredentials(options->database); }; });
}
