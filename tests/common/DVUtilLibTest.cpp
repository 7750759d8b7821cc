#include "DVUtilities/DVUtilLib.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>

#include "SampleInstallation.h"

namespace {

class DVUtilLibTest : public testing::Test {
  protected:
    support::SampleInstallation installation;
    DVUtilLib util{"purge", true};
    std::array<char, 8192> text{};
};

TEST_F(DVUtilLibTest, InitializeFixesTheRunsFiles) {
    std::array<char, 1024> logFile{};
    std::array<char, 1024> sqlFile{};
    ASSERT_TRUE(util.Initialize(logFile.data(), sqlFile.data())) << util.getErrorText();
    const std::string base = installation.logFolder() / "purge";
    EXPECT_EQ(std::string(logFile.data()), base + ".log");
    EXPECT_EQ(std::string(sqlFile.data()), base + "_" + std::to_string(getpid()) + ".sql");

    const std::string longName(1100, 'n');
    ASSERT_TRUE(DVUtilLib(longName.c_str(), true).Initialize(logFile.data(), sqlFile.data()));
    const std::string cut = (installation.logFolder() / longName).string().substr(0, 1023);
    EXPECT_EQ(std::string(logFile.data()), cut);
    EXPECT_EQ(std::string(sqlFile.data()), cut);

    installation.remove("EventManager", "dEVLOGDIR");
    EXPECT_FALSE(DVUtilLib("purge", true).Initialize(logFile.data(), nullptr));
}

TEST_F(DVUtilLibTest, ScratchFileIsDeletedUnlessTheSettingKeepsIt) {
    for (const long long keep : {0LL, 1LL, -1LL}) {
        if (keep >= 0) installation.set("Database", "dUTILKEEPSQLFILE", keep);
        if (keep < 0) installation.remove("Database", "dUTILKEEPSQLFILE");
        std::array<char, 1024> logFile{};
        std::array<char, 1024> sqlFile{};
        {
            DVUtilLib run("purge", false);
            ASSERT_TRUE(run.Initialize(logFile.data(), sqlFile.data()));
            support::writeFile(sqlFile.data(), "SELECT 1");
        }
        EXPECT_EQ(std::filesystem::exists(sqlFile.data()), keep == 1) << keep;
    }
}

TEST_F(DVUtilLibTest, MachineAndInstanceNames) {
    std::string machine;
    std::string controlSet = "untouched";
    EXPECT_TRUE(util.GetMachineName(machine, controlSet));
    EXPECT_EQ(machine, "MainHost");
    EXPECT_EQ(controlSet, "Instance001");

    controlSet = "untouched";
    machine = "mainhost";  // the comparison is exact
    EXPECT_FALSE(util.GetMachineName(machine, controlSet));
    EXPECT_STREQ(util.getErrorText(), "The input virtual machine name doesn't exist.");
    EXPECT_EQ(controlSet, "untouched");
    EXPECT_TRUE(util.GetMachineNameFromReg("MainHost"));
    EXPECT_TRUE(util.GetControlSetName(controlSet));
    EXPECT_EQ(controlSet, "Instance001");

    installation.remove("Dorvase", "sDVHOSTNAME");
    EXPECT_TRUE(util.GetMachineName(machine)) << "kept once read";
    EXPECT_FALSE(DVUtilLib("other", true).GetMachineName(machine));
}

TEST_F(DVUtilLibTest, Version) {
    const std::tuple<const char*, bool, int> cases[] = {{"8.0.0(1)", true, 800},
                                                        {"3.7.1(BUILD2)", true, 371},
                                                        {"11.0.0(BUILD80)", true, 0},
                                                        {"8.0.0", false, -1},
                                                        {"(", true, 0}};
    for (const auto& [version, known, expected] : cases) {
        installation.set("Base", "sVERSION", version);
        int number = -1;
        EXPECT_EQ(util.GetZephraVersion(text.data(), number), known) << version;
        EXPECT_STREQ(text.data(), version);
        EXPECT_EQ(number, expected) << version;
    }
    int number = 0;
    installation.set("Base", "sVERSION", "8.0.0");
    EXPECT_FALSE(util.GetZephraVersion(nullptr, number));
    EXPECT_STREQ(util.getErrorText(), "Unknown version <8.0.0>\n");
}

TEST_F(DVUtilLibTest, DirectoriesUnderBothProductTypes) {
    installation.set("Session", "pCntInfo", "as stored");
    installation.set("Base", "dBin", "/tnet/bin");
    installation.set("Base", "dHome", "/tnet/home");
    installation.set("Directory", "dLog", "/tnet/log");
    installation.set("Install", "TNetServerVersion", "4.1.0(2)");
    const struct {
        bool (DVUtilLib::*getter)(char*);
        std::string zephra, tnet;
    } cases[] = {{&DVUtilLib::GetZephraBaseDir, installation.baseFolder(), "/tnet/bin"},
                 {&DVUtilLib::GetZephraInstallDir, installation.homeFolder(), "/tnet/home"},
                 {&DVUtilLib::GetZephraLogDir, installation.logFolder(), "/tnet/log"},
                 {&DVUtilLib::GetZephraNetworkPassword, "as stored", "as stored"}};
    for (const bool zephra : {true, false, true}) {
        util.setProductTypeZephra(zephra);
        for (const auto& c : cases) {
            ASSERT_TRUE((util.*c.getter)(text.data())) << util.getErrorText();
            EXPECT_EQ(std::string(text.data()), zephra ? c.zephra : c.tnet);
        }
        int number = 0;
        EXPECT_TRUE(util.GetZephraVersion(nullptr, number));
        EXPECT_EQ(number, zephra ? 800 : 410);
    }
}

TEST_F(DVUtilLibTest, PlatformTypeIsCachedUnlessZeroAndTheClusterNever) {
    unsigned int type = 9;
    installation.set("Base", "nPLATTYPE", 0);
    EXPECT_TRUE(util.GetZephraPlatform(type));
    EXPECT_EQ(type, 0U);
    installation.set("Base", "nPLATTYPE", 5);
    EXPECT_TRUE(util.GetZephraPlatform(type));
    installation.set("Base", "nPLATTYPE", 4);
    EXPECT_TRUE(util.GetZephraPlatform(type));
    EXPECT_EQ(type, 5U);

    EXPECT_FALSE(util.IsMachineClusterConfigured());
    installation.set("Cluster", "ClusterName", "");
    EXPECT_FALSE(util.IsMachineClusterConfigured());
    installation.set("Cluster", "ClusterName", "pair");
    EXPECT_TRUE(util.IsMachineClusterConfigured());
}

TEST_F(DVUtilLibTest, ManagementServersAndTheirInstances) {
    for (const std::size_t length : {1022, 1023, 1024, 1025}) {
        installation.set("Dorvase", "sDVHOSTNAME", std::string(length, 'h'));
        EXPECT_EQ(util.getDVHostList().at(0).size(), std::min<std::size_t>(length, 1023));
    }
    installation.set("Dorvase", "sDVHOSTNAME", "MainHost");
    EXPECT_EQ(util.getDVHostList(), std::vector<std::string>{"MainHost"});
    std::string host = "MAINHOST";  // the case does not count here
    ASSERT_TRUE(util.getInstanceNameFromDVHostName(host.data(), text.data()));
    EXPECT_STREQ(text.data(), "Instance001");
    std::string unknown = "elsewhere";
    std::string empty;
    EXPECT_FALSE(util.getInstanceNameFromDVHostName(unknown.data(), text.data()));
    EXPECT_FALSE(util.getInstanceNameFromDVHostName(empty.data(), text.data()));
    installation.set("Base", "nPLATTYPE", 4);
    EXPECT_TRUE(util.getDVHostList().empty());
}

}  // namespace
