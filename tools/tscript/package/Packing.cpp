#include "package/Packing.h"

#include <filesystem>

#include "DVUtilities/commonFunc.h"
#include "console/Console.h"
#include "console/Outcome.h"
#include "installation/Diagnosis.h"
#include "package/PlainPackage.h"
#include "system/ScratchFile.h"

namespace {

// Throws Failure (kUsage) if there are errors.
void reportFindings(const std::string& plain, const PackageCheck& check) {
    for (const PackageFinding& finding : check.warnings)
        writeNote(plain + ": warning: " + textWithLine(finding));
    for (const PackageFinding& finding : check.errors) writeNote(plain + ": " + textWithLine(finding));
    if (!check.errors.empty())
        throw Failure(ExitCode::kUsage, plain + " cannot be packed",
                      "See docs/package-format.md for the format.");
}

}  // namespace

void packFile(const std::string& plain, const std::string& target) {
    reportFindings(plain, checkPlainPackage(plain));
    std::error_code ignored;
    if (std::filesystem::equivalent(plain, target, ignored))
        throw Failure(ExitCode::kUsage, "the package would take the place of its plain text " + plain,
                      "Name another file with -o.");
    ScratchFile encrypted(target);
    std::string error;
    if (!EncryptFile(plain.c_str(), encrypted.path().c_str(), error))
        throw Failure(ExitCode::kInstallation, plain + " cannot be encrypted: " + explainCipherError(error));
    encrypted.moveTo(target);
}
