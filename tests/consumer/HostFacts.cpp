// Configuration, host identity, logs and the file cipher.
#include <DVUtilities/DVUtilLib.h>
#include <DVUtilities/commonFunc.h>
#include <unistd.h>

#include <ctime>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Check.h"

namespace {

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void checkConfiguration(Checks& checks) {
    std::string error;
    std::vector<char> text(8192);
    unsigned int number = 0;
    CHECK(GetRegistryItemValue(nullptr, "Base", "sVERSION", nullptr, text.data(), error));
    CHECK(GetRegistryItemValue(nullptr, "Base", "nPLATTYPE", &number, nullptr, error));
    CHECK(!GetRegistryItemValue(nullptr, "Base", "sNoSuch", nullptr, text.data(), error));
    CHECK(error == "Error getting string key [sNoSuch] from registry.\n");
    CHECK(GetNetHostName(nullptr, text.data(), error) && text[0] != '\0');
    char instance[1024];
    CHECK(GetInstanceName(instance) && std::string(instance) == "Instance001");
    char computer[256];
    unsigned int size = sizeof computer;
    CHECK(DVUtil_GetComputerName(computer, &size));
    CHECK(DVUtil_GetModuleFileName(nullptr, computer, size) == 0);

    CHECK(isPlatformDV(instance, error) == ((number & 1U) != 0));
    CHECK(isPlatformPX(instance, error) == ((number & 4U) != 0));
    CHECK(isPlatformNQ2(instance, error));
    isPlatformWFEngine(instance, error);
    isPlatformVTCloud(instance, error);
    isPlatformHistory(instance, error);
    CHECK(!isPlatformTNet(instance, error));
}

void checkUtilities(const Site& site, Checks& checks) {
    DVUtilLib utilities("consumer", false);
    utilities.setProductTypeZephra(true);
    char log[1024];
    char sql[1024];
    CHECK(utilities.Initialize(log, sql));
    CHECK(contains(sql, std::to_string(getpid()).c_str()));
    std::string machine;
    std::string controlSet;
    CHECK(utilities.GetMachineName(machine) && !machine.empty());
    CHECK(utilities.GetMachineName(machine, controlSet) && controlSet == "Instance001");
    CHECK(utilities.GetMachineNameFromReg(machine.c_str()));
    CHECK(!utilities.GetMachineNameFromReg("no such host"));
    CHECK(std::string(utilities.getErrorText()) == "The input virtual machine name doesn't exist.");
    CHECK(utilities.GetControlSetName(controlSet) && utilities.getInstanceName());

    std::vector<char> text(8192);
    CHECK(utilities.GetZephraInstallDir(text.data()) && contains(text.data(), site.folder.c_str()));
    CHECK(utilities.GetZephraLogDir(text.data()));
    utilities.GetZephraBaseDir(text.data());
    utilities.GetZephraNetworkPassword(text.data());
    int version = 0;
    CHECK(utilities.GetZephraVersion(text.data(), version) && version == 800);
    unsigned int platform = 0;
    CHECK(utilities.GetZephraPlatform(platform) && platform != 0);
    CHECK(!utilities.IsMachineClusterConfigured());
    CHECK(utilities.GetRegItemValue("Base", "sVERSION", text.data(), nullptr));
    CHECK(utilities.GetRegItemValue("Instance001", "Base", "nPLATTYPE", nullptr, &platform));
    CHECK(utilities.getDVHostList() == std::vector<std::string>{machine});
    CHECK(utilities.getInstanceNameFromDVHostName(machine.data(), text.data()));
    CHECK(std::string(text.data()) == "Instance001");

    const std::string scriptLog = site.folder + "/logs/consumer-script.log";
    utilities.LogTScript(scriptLog.c_str(), "", "consumer", "hello");
    CHECK(contains(contentOf(scriptLog), "  xx..consumer hello\n"));
    utilities.printoutContent(scriptLog.c_str(), site.logFile.c_str(), false);
    CHECK(contains(contentOf(site.logFile), "xx..consumer hello"));
}

void checkLogs(const Site& site, Checks& checks) {
    char when[1024];
    CHECK(std::string(GetTimeString(when, sizeof when, std::time(nullptr), true)).size() == 10);
    LogToFile(site.logFile.c_str(), "a line of the consumer", false);
    CHECK(contains(contentOf(site.logFile), " - a line of the consumer\n"));
    const std::string copy = site.folder + "/logs/consumer-copy.log";
    LogFileContent(site.logFile.c_str(), copy.c_str(), false, nullptr);
    CHECK(contains(contentOf(copy), "a line of the consumer"));
    FILE* stream = nullptr;
    CHECK(DVUtilities_fopen_s(&stream, copy.c_str(), "r") == 0 && stream != nullptr);
    if (stream) std::fclose(stream);
}

void checkFileCipher(const Site& site, Checks& checks) {
    const std::string plain = site.folder + "/consumer.txt";
    const std::string enciphered = plain + ".enc";
    const std::string back = plain + ".dec";
    const std::string text = "first line\nzweite Zeile: \xc3\xa4\n";
    std::ofstream(plain) << text;
    std::string error;
    CHECK(EncryptFile(plain.c_str(), enciphered.c_str(), error));
    CHECK(!contains(contentOf(enciphered), "first"));
    CHECK(DecryptFile(enciphered.c_str(), back.c_str(), error) && contentOf(back) == text);
    CHECK(EncryptDecryptFile(enciphered.c_str(), back.c_str(), error, false));
    CHECK(!DecryptFile(plain.c_str(), back.c_str(), error) && contains(error, "DescryptFile failed"));
}

}  // namespace

void checkHostFacts(const Site& site, Checks& checks) {
    checkConfiguration(checks);
    checkLogs(site, checks);
    checkUtilities(site, checks);
    checkFileCipher(site, checks);
}
