#include "installation/CipherKey.h"

#include <array>

#include "HostSetup.h"
#include "VTPassword.h"
#include "console/Outcome.h"

void createKeyFile(const std::string& file) {
    std::string problem;
    if (!hostlayer::createCipherKeyFile(file, problem))
        throw Failure(ExitCode::kInstallation, "the key cannot be created: " + problem);
}

std::string keyProblem() {
    std::array<char, 2048> record{};
    unsigned long size = record.size();
    VTPassword cipher;
    const bool works = cipher.encrypt("", record.data(), &size) != 0;
    return works ? "" : hostlayer::cipherErrorText(cipher.getLastError());
}
