#include <gtest/gtest.h>

#include <string>

#include "DVUtilities/DBBase.h"
#include "SampleInstallation.h"

namespace {

using Lines = std::vector<std::string>;

// Discovery up to the probe, which nothing answers here.
class AccountDiscovery : public testing::Test {
  protected:
    AccountDiscovery() { installation.useServer("127.0.0.1,1", "sa", "secret-word"); }

    bool find(const char* dbName) {
        std::filesystem::remove(log);
        return db.GetAccountInfo("MainHost", "Instance001", log.c_str(), dbName);
    }
    Lines logLines() const { return support::logTexts(log); }

    support::SampleInstallation installation;
    const std::string log = installation.logFolder() / "db.log";
    DBBase db{true};
};

TEST_F(AccountDiscovery, ComponentThatIsNotInstalled) {
    installation.set("Base", "nPLATTYPE", 4);
    for (const char* number : {"803", "808", "809", "810"})
        installation.set(std::string("InstalledPackages\\") + number, "sInstallState", "Removed");
    const std::pair<const char*, const char*> cases[] = {
        {nullptr, "Invalid db name [Dorvas]. This is not a Dorvaser."},
        {"", "Invalid db name [Dorvas]. This is not a Dorvaser."},
        {"dorvas", "Invalid db name [dorvas]. This is not a Dorvaser."},
        {"nq2", "Invalid db name [nq2]. NQ2 is not installed."},
        {"VTCLOUD", "Invalid db name [VTCLOUD]. VtCloud is not installed."},
        {"WFEngine", "Invalid db name [WFEngine]. WfEngine is not installed."},
        {"HistoryDB", "Invalid db name [HistoryDB]. HistoryDB is not installed."}};
    for (const auto& [name, message] : cases) {
        EXPECT_FALSE(find(name));
        EXPECT_STREQ(db.getErrorMsg(), message);
        EXPECT_EQ(logLines(), Lines{message});
    }
}

TEST_F(AccountDiscovery, OtherProductTypeStopsAtTheHostCheck) {
    db.setProductTypeZephra(0);
    EXPECT_FALSE(find("Dorvas"));
    EXPECT_EQ(logLines(), (Lines{"", "This program can be run only on the Dorvase."}));
}

TEST_F(AccountDiscovery, ServerInstanceMissing) {
    const std::string message = "Unable to get SQL Server name from the registry";
    EXPECT_FALSE(find("Unknown"));
    EXPECT_EQ(db.getErrorMsg(), message);
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    ASSERT_EQ(causes.size(), 1U);
    EXPECT_EQ(causes[0].text, "The configuration has no values for a database [Unknown].");
    installation.set("Database", "sNQ2INSTANCE", "");
    EXPECT_FALSE(find("NQ2"));
    EXPECT_EQ(logLines(), Lines{message});
    installation.remove("Database", "sWFINSTANCE");
    EXPECT_FALSE(DBBase(true).GetAccountInfo("", "", log.c_str(), "WFEngine"));
    EXPECT_EQ(logLines(), (Lines{message, message}));
}

TEST_F(AccountDiscovery, EachFailureLogsItsReasonThenTheDatabaseAsGiven) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        // every value is there, and the probe of the connection fails
        {"sNothing", nullptr, "Error getting number key [nSQLAuthType] from registry.\n"},
        {"sConnection", nullptr, "Error getting string key [sConnection] from registry.\n"},
        {"pACCESS", "no record", "Failed to decrypt username/password"},
        {"pACCESS", "", "Failed to decrypt username/password"},
        {"pACCESS", nullptr, "Error getting string key [pACCESS] from registry.\n"}};
    for (const auto& [valueName, text, firstLine] : cases) {
        if (text != nullptr) installation.set("Database", valueName, text);
        if (text == nullptr) installation.remove("Database", valueName);
        EXPECT_FALSE(find(nullptr));
        EXPECT_STREQ(db.getErrorMsg(), "GetDBUser failed for database []");
        std::string logged;
        for (const std::string& line : logLines()) logged += line;
        std::string reason = firstLine;
        if (reason.back() == '\n') reason.replace(reason.size() - 1, 1, "untimed: ");
        EXPECT_EQ(logged, reason + "GetDBUser failed for database []");
        EXPECT_EQ(support::readFile(log).find("secret-word"), std::string::npos);
        installation.set("Database", "sConnection", "DSN");
    }
}

TEST_F(AccountDiscovery, CredentialsThatDoNotFitTheirLayout) {
    for (const char* text : {"00secret", "xx", "0", "-5abc"}) {
        installation.set("Database", "pACCESS", support::SampleInstallation::encipheredCredentials(text));
        std::string error;
        EXPECT_FALSE(find("Dorvas"));
        EXPECT_FALSE(db.GetDBUser("", "Dorvas", error));
        EXPECT_EQ(error, "Failed to decrypt username/password") << text;
    }
    // A length beyond the text takes what is there; the run gets as far as the probe.
    installation.set("Database", "pACCESS", support::SampleInstallation::encipheredCredentials("99sa"));
    std::string error = "untouched";
    EXPECT_FALSE(find("Dorvas"));
    EXPECT_FALSE(db.GetDBUser("", "Dorvas", error));
    EXPECT_EQ(error, "untouched");
}

}  // namespace
