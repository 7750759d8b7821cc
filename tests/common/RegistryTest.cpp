#include <gtest/gtest.h>

#include <array>
#include <string>

#include "DVUtilities/commonFunc.h"
#include "HostIdentity.h"
#include "SampleInstallation.h"

namespace {

class Registry : public testing::Test {
  protected:
    bool readText(const char* key, const char* name) {
        return GetRegistryItemValue(nullptr, key, name, nullptr, text.data(), error);
    }

    support::SampleInstallation installation;
    std::array<char, 8192> text{};
    std::string error;
};

TEST_F(Registry, TextWinsOverNumberAndNeitherIsAnError) {
    unsigned int number = 7;
    installation.set("Base", "nPLATTYPE", 5);
    ASSERT_TRUE(GetRegistryItemValue("any", "Base", "nPLATTYPE", &number, text.data(), error));
    EXPECT_STREQ(text.data(), "5");
    EXPECT_EQ(number, 7U);
    EXPECT_FALSE(GetRegistryItemValue("any", "Base", "nPLATTYPE", nullptr, nullptr, error));
    EXPECT_EQ(error, "Error: invalid argument.\n");
}

TEST_F(Registry, FailureLeavesOutputsAloneAndNamesTheValue) {
    unsigned int number = 7;
    text[0] = 'x';
    EXPECT_FALSE(readText("Base", "sMISSING"));
    EXPECT_EQ(error, "Error getting string key [sMISSING] from registry.\n");
    EXPECT_STREQ(text.data(), "x");
    EXPECT_FALSE(GetRegistryItemValue(nullptr, "Base", "nMISSING", &number, nullptr, error));
    EXPECT_EQ(error, "Error getting number key [nMISSING] from registry.\n");
    EXPECT_EQ(number, 7U);
    EXPECT_FALSE(readText(nullptr, nullptr));
    EXPECT_EQ(error, "Error getting string key [] from registry.\n");
}

TEST_F(Registry, TextIsAFormatCutTo8191BytesAndANumberIsCutToItsLow32Bits) {
    installation.set("Base", "nBIG", 0x100000005LL);
    unsigned int number = 0;
    ASSERT_TRUE(GetRegistryItemValue(nullptr, "Base", "nBIG", &number, nullptr, error));
    EXPECT_EQ(number, 5U);
    installation.set("Base", "sTEXT", "50%% of %s");
    ASSERT_TRUE(readText("Base", "sTEXT"));
    EXPECT_STREQ(text.data(), "50% of %s");
    installation.set("Base", "sTEXT", std::string(9000, 'a'));
    ASSERT_TRUE(readText("Base", "sTEXT"));
    EXPECT_EQ(std::string(text.data()), std::string(8191, 'a'));
}

TEST_F(Registry, PlatformChecks) {
    const std::tuple<long long, bool, bool> types[] = {
        {5, true, true}, {4, false, true}, {1, true, false}, {0, false, false}, {2, false, false}};
    for (const auto& [platformType, managementServer, console] : types) {
        installation.set("Base", "nPLATTYPE", platformType);
        EXPECT_EQ(isPlatformDV(nullptr, error), managementServer) << platformType;
        EXPECT_EQ(isPlatformPX(nullptr, error), console) << platformType;
    }
    installation.remove("Base", "nPLATTYPE");
    EXPECT_FALSE(isPlatformDV(nullptr, error));
    EXPECT_FALSE(isPlatformPX(nullptr, error));
    EXPECT_EQ(error, "Error getting number key [nPLATTYPE] from registry.\n");

    const struct {
        const char* key;
        bool (*check)(const char*, std::string&);
    } packages[] = {{"InstalledPackages\\803", isPlatformNQ2},
                    {"InstalledPackages\\808", isPlatformWFEngine},
                    {"InstalledPackages\\809", isPlatformVTCloud},
                    {"InstalledPackages\\810", isPlatformHistory}};
    for (const auto& package : packages) {
        EXPECT_TRUE(package.check(nullptr, error)) << package.key;
        installation.set(package.key, "sInstallState", "installed");  // the case counts
        EXPECT_FALSE(package.check(nullptr, error)) << package.key;
    }
    EXPECT_FALSE(isPlatformTNet(nullptr, error));
}

TEST_F(Registry, HostIdentityKeepsToTheBuffers) {
    EXPECT_FALSE(GetNetHostName(nullptr, nullptr, error));
    EXPECT_TRUE(GetNetHostName(nullptr, text.data(), error));
    EXPECT_STREQ(text.data(), "MainHost");
    EXPECT_FALSE(GetInstanceName(nullptr));
    EXPECT_TRUE(GetInstanceName(text.data()));
    EXPECT_STREQ(text.data(), "Instance001");
    EXPECT_EQ(DVUtil_GetModuleFileName(nullptr, text.data(), 100), 0U);
    unsigned int size = 8192;
    EXPECT_FALSE(DVUtil_GetComputerName(nullptr, &size));
    ASSERT_TRUE(DVUtil_GetComputerName(text.data(), &size));
    EXPECT_EQ(size, text.size());
    size = 1;
    EXPECT_FALSE(DVUtil_GetComputerName(text.data(), &size));
}

TEST_F(Registry, MarkerFileNamesTheInstance) {
    const std::string module = installation.folder("library.so").string();
    EXPECT_EQ(instanceFromMarkerFile(module), "");
    const std::pair<std::string, std::string> cases[] = {{"Instance007\nmore\n", "Instance007"},
                                                         {"NoNewline", "NoNewline"},
                                                         {"\nsecond", ""},
                                                         {std::string(2000, 'i'), std::string(1023, 'i')}};
    for (const auto& [content, expected] : cases) {
        support::writeFile(installation.folder("VorlentVM"), content);
        EXPECT_EQ(instanceFromMarkerFile(module), expected);
    }
    EXPECT_EQ(instanceFromMarkerFile("no-folder"), "");
}

}  // namespace
