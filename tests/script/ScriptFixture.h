// A sample installation with a running server, for runs of whole tscripts.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "DVUtilities/TScriptApi.h"
#include "DVUtilities/commonFunc.h"
#include "SampleInstallation.h"
#include "TsqlBox.h"

class ScriptFixture : public testing::Test {
  protected:
    using Texts = std::vector<std::string>;

    static void SetUpTestSuite() {
        s_box = std::make_unique<support::TsqlBox>();
        support::SampleInstallation::loadSchema(*s_box);
    }
    static void TearDownTestSuite() { s_box.reset(); }
    ScriptFixture() { m_installation.useServer(*s_box); }
    void TearDown() override { EXPECT_EQ(leftovers(), m_expectedLeftovers); }

    struct Result {
        bool done = false;
        std::string output, logFile, database = {};
        int auditLevel = 0;
    };
    static Result runPackage(const std::string& name, const Texts& parameters = {}, int operation = 1,
                             const char* recordedInput = nullptr) {
        Result r;
        r.done = TS_ExecTscript_SQL(name.c_str(), &r.database, &parameters, recordedInput, operation,
                                    &r.logFile, &r.output);
        return r;
    }
    static Result runProcedure(const char* name, int operation, const char* arguments = nullptr,
                               const char* recordedInput = nullptr) {
        Result r;
        r.done = TS_ExecTscript_SP(name, "Dorvas", arguments, recordedInput, operation, &r.logFile, &r.output,
                                   &r.auditLevel);
        return r;
    }

    std::string packagePath(const std::string& name) const {
        return m_installation.homeFolder() / "Scripts" / (name + ".sql");
    }
    // Enciphers a plain text as the package of that name.
    std::string writePackage(const std::string& name, const std::string& plainText) const {
        const support::TempDir folder;
        support::writeFile(folder / "plain", plainText);
        std::string error;
        EXPECT_TRUE(EncryptFile((folder / "plain").c_str(), packagePath(name).c_str(), error)) << error;
        return packagePath(name);
    }

    // Rows of a query on one of the databases, their columns joined by "|".
    Texts query(const std::string& sql, int columns = 1, const char* database = "Dorvas") const {
        DBBase db(false);
        EXPECT_TRUE(db.GetAccountInfo("host", "Instance001",
                                      (m_installation.baseFolder() / "query.log").c_str(), database))
            << db.getErrorMsg();
        Texts rows;
        EXPECT_TRUE(db.GetDBValueList(sql.c_str(), rows, columns)) << sql;
        for (std::string& row : rows) std::replace(row.begin(), row.end(), '\x12', '|');
        return rows;
    }
    // The newest journal row of a script: "<status>|<0: its start is of today and its end not before it>|
    // <recorded input>"; empty without one.
    std::string lastRun(const std::string& name) const {
        const Texts rows = query(
            "SELECT TOP 1 status, CASE WHEN timeEnd >= timeStart AND ABS(DATEDIFF(day, timeStart, "
            "GETDATE())) <= 1 THEN 0 ELSE 1 END, inputParams FROM ZpTscriptExec WHERE name = '" +
                name + "' ORDER BY id DESC",
            3);
        return rows.empty() ? "" : rows.front();
    }
    std::string runCount() const { return query("SELECT COUNT(*) FROM ZpTscriptExec").front(); }

    // Files that runs left in the temporary and log folders, logs aside. Checked after every test.
    Texts leftovers() const {
        Texts names;
        for (const auto& folder : {m_installation.tempFolder(), m_installation.logFolder()}) {
            if (!std::filesystem::exists(folder)) continue;
            for (const auto& entry : std::filesystem::directory_iterator(folder)) {
                const std::string name = entry.path().filename();
                if (name != "Tscript.log" && name.rfind("ZephraDebug", 0) != 0) names.push_back(name);
            }
        }
        return names;
    }
    Texts m_expectedLeftovers;

    inline static std::unique_ptr<support::TsqlBox> s_box;
    support::SampleInstallation m_installation;
};
