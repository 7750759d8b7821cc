#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "TestStore.h"
#include "VTPI.h"
#include "VTPlatformInfo.h"

namespace {

constexpr const char* kRoot = "SOFTWARE\\Veltrane Systems\\Zephra";

constexpr const char* kStore = R"(
[host]
loginTimeout = 15
[Instance001.Base]
nPLATTYPE = 5
sHex = "0x1F"
sDigits = "42"
sMixed = "42 "
sHuge = "18446744073709551616"
nNegative = -1
nWide = 4294967296
bTrue = true
fRatio = 1.5
sText = "Grüße"
sEmpty = ""
lList = [1]
dZEPHRATEMPDIR = "/var/tmp/zephra//"
[Instance001.'InstalledPackages\803']
sInstallState = "Installed"
[Instance002.Base]
nPLATTYPE = 4
)";

std::string text(const char* key, const char* name) {
    std::string value = "unset";
    return VTPlatformInfo().getString(key, name, &value) != 0 ? value : "failed, " + value;
}

TEST(Store, ReturnsStringsAndNumbers) {
    const TestStore store(kStore);
    struct Case {
        const char* name;
        const char* text;  // null: the read fails
        bool isNumber;
        std::uint64_t number;
    };
    for (const Case& value :
         {Case{"nPLATTYPE", "5", true, 5}, Case{"sHex", "0x1F", true, 31}, Case{"sDigits", "42", true, 42},
          Case{"sMixed", "42 ", false, 0}, Case{"sHuge", "18446744073709551616", false, 0},
          Case{"nNegative", "-1", true, ~0ULL}, Case{"bTrue", "1", true, 1}, Case{"fRatio", "1.5", false, 0},
          Case{"sText", "Grüße", false, 0}, Case{"sEmpty", "", false, 0}, Case{"lList", nullptr, false, 0},
          Case{"nPlattype", nullptr, false, 0}, Case{"", nullptr, false, 0}}) {
        EXPECT_EQ(text("Base", value.name), value.text != nullptr ? value.text : "failed, unset")
            << value.name;
        std::uint64_t number = 77;
        EXPECT_EQ(VTPlatformInfo().getNumber("Base", value.name, &number) != 0, value.isNumber) << value.name;
        EXPECT_EQ(number, value.isNumber ? value.number : 77) << value.name;
    }
    EXPECT_EQ(text("InstalledPackages\\803", "sInstallState"), "Installed");
    EXPECT_EQ(text("installedpackages\\803", "sInstallState"), "failed, unset");
    EXPECT_EQ(text("host", "loginTimeout"), "failed, unset");
    EXPECT_EQ(text(nullptr, "nPLATTYPE"), "failed, unset");
}

TEST(Store, ReturnsRawBytes) {
    const TestStore store(kStore);
    const VTPlatformInfo info;
    struct Case {
        const char* name;
        unsigned long size;
        std::string bytes;  // empty: the read fails
        unsigned long type;
    };
    for (const Case& value :
         {Case{"nPLATTYPE", 4, {"\5\0\0\0", 4}, 4}, Case{"nPLATTYPE", 3, "", 0},
          Case{"nWide", 8, {"\0\0\0\0\1\0\0\0", 8}, 4}, Case{"nWide", 7, "", 0},
          Case{"sDigits", 3, {"42\0", 3}, 1}, Case{"sDigits", 2, "42", 1}, Case{"sDigits", 1, "", 0}}) {
        char buffer[16];
        std::fill(std::begin(buffer), std::end(buffer), '#');
        unsigned long type = 0;
        EXPECT_EQ(info.getRegValue("Base", value.name, &type, buffer, value.size) != 0, !value.bytes.empty());
        EXPECT_EQ(type, value.type);
        EXPECT_EQ(std::string(buffer, value.bytes.size() + 1), value.bytes + "#") << value.name << value.size;
    }
}

TEST(Store, ListsInstancesAndValuesOfAKey) {
    const TestStore store(kStore);
    std::map<std::string, std::string> values;
    ASSERT_NE(VTPlatformInfo().getRegValues(kRoot, &values), 0);
    EXPECT_EQ(values, (std::map<std::string, std::string>{{"Instance001", ""}, {"Instance002", ""}}));
    ASSERT_NE(VTPlatformInfo("Instance002").getRegValues("Base", &values), 0);
    EXPECT_EQ(values, (std::map<std::string, std::string>{{"nPLATTYPE", "4"}}));
    EXPECT_EQ(VTPlatformInfo("Instance003").getRegValues("Base", &values), 0);
    EXPECT_EQ(values.size(), 1U);
}

TEST(Store, FollowsTheInstanceInFocus) {
    const TestStore store(kStore);
    const VTPlatformInfo info;
    std::string value;
    VTPI_Focus::setFocus("Instance002");
    EXPECT_NE(info.getString("Base", "nPLATTYPE", &value), 0);
    EXPECT_EQ(value, "4");
    EXPECT_EQ(VTPI_Base().getZephraTempDirectory(), "/tmp");
    VTPI_Focus::setFocus(nullptr);
    EXPECT_NE(info.getString("Base", "nPLATTYPE", &value), 0);
    EXPECT_EQ(value, "5");
    const VTPI_Base base;
    EXPECT_EQ(base.getZephraTempDirectory(), "/var/tmp/zephra");
    EXPECT_EQ(VTPI_EventManager(base).getLogFilesDirectory(), "/var/tmp/zephra");
}

TEST(Store, ReadsAChangedFileAgainAndKeepsTheLastGoodContent) {
    const TestStore store("[Instance001.Base]\nsText = 'one'\n");
    EXPECT_EQ(text("Base", "sText"), "one");
    store.write("[Instance001.Base]\nsText = 'two'\n");  // the same size, within the same clock step
    EXPECT_EQ(text("Base", "sText"), "two");
    store.write("[Instance001.Base]\nsText = 'three\n");
    EXPECT_EQ(text("Base", "sText"), "two");
    std::filesystem::remove(store.path());
    EXPECT_EQ(text("Base", "sText"), "two");
    store.write("[Instance001.Base]\nsText = 'four'\n");
    EXPECT_EQ(text("Base", "sText"), "four");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their runtimes open descriptors
// The failure is not remembered for the unchanged file.
TEST(Store, IsReadAgainAfterTooFewDescriptors) {
    const TestStore store("[Instance001.Base]\nsText = 'one'\n");
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // a young file is read again in any case
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const std::string failed = text("Base", "sText");
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(failed, "failed, unset");
    EXPECT_EQ(text("Base", "sText"), "one");
}
#endif

// A key of 50,000 levels between `start` and `end`.
std::string deepKey(const std::string& start, const std::string& end) {
    std::string key = start;
    for (int i = 0; i < 50000; ++i) key += ".b";
    return key + end;
}

TEST(Store, FailsWithoutAnyGoodContent) {
    for (const std::string& content :
         {std::string("[Instance001.Base\n"), std::string("a = \"\xff\"\n"), "#" + std::string(5U << 20, 'x'),
          deepKey("[a", "]\n"), deepKey("[Instance001.Base]\na", " = 1\n"),
          deepKey("a = {b = \"\"\"'\\\"\"\"\"\", c = '\\', d = \"\", 'e'", " = 1}\n")}) {
        const TestStore store(content);
        EXPECT_EQ(text("Base", "sText"), "failed, unset");
    }
    const TestStore pipe("");
    std::filesystem::remove(pipe.path());
    std::filesystem::create_directory(pipe.path());
    EXPECT_EQ(text("Base", "sText"), "failed, unset");
}

TEST(Store, ThreadsReadWhileAWriterReplacesTheFile) {
    const TestStore store("[Instance001.Base]\nsA = 'x0'\nsB = 'x0'\n");
    std::atomic<bool> isOver{false};
    std::atomic<int> wrong{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 8; ++i) {
        readers.emplace_back([&] {
            while (!isOver) {
                std::map<std::string, std::string> values;
                const bool isRead = VTPlatformInfo().getRegValues("Base", &values) != 0;
                if (!isRead || values["sA"] != values["sB"] || values["sA"].empty()) ++wrong;
            }
        });
    }
    for (int i = 1; i <= 200; ++i) {
        const std::string value = "'x" + std::string(static_cast<std::size_t>(i), 'y') + "'\n";
        support::writeFile(store.folder / "next", "[Instance001.Base]\nsA = " + value + "sB = " + value);
        std::filesystem::rename(store.folder / "next", store.path());
    }
    isOver = true;
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(text("Base", "sA"), "x" + std::string(200, 'y'));
}

}  // namespace
