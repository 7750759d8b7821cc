#include "packing/Packing.h"

#include <filesystem>

#include "DVUtilities/commonFunc.h"
#include "HostSetup.h"
#include "VTPassword.h"
#include "console/Console.h"
#include "console/Outcome.h"
#include "installation/Diagnosis.h"
#include "package/PackageFile.h"
#include "package/PlainRecord.h"
#include "package/RecordReader.h"
#include "packing/PlainPackage.h"
#include "packing/SealedPackage.h"
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

void sealRecords(const std::string& records, const std::string& target, const std::string& name,
                 const SealOptions& options) {
    const std::uint64_t version = options.version != 0 ? options.version : currentPackageVersion();
    SealedPackageWriter sealed(target, {.version = version, .name = name}, options.signingKey);
    RecordReader reader(records);
    VTPassword cipher;
    for (std::string record; reader.next(record);) {
        PlainRecord plain;
        if (!plain.decrypt(cipher, record))
            throw Failure(ExitCode::kInstallation, hostlayer::cipherErrorText(cipher.getLastError()));
        sealed.addRecord(record, plain.text());
    }
    sealed.finish();
}

}  // namespace

void packFile(const std::string& plain, const std::string& target, const SealOptions& options) {
    reportFindings(plain, checkPlainPackage(plain));
    std::error_code ignored;
    if (std::filesystem::equivalent(plain, target, ignored))
        throw Failure(ExitCode::kUsage, "the package would take the place of its plain text " + plain,
                      "Name another file with -o.");
    ScratchFile encrypted(target);
    std::string error;
    if (!EncryptFile(plain.c_str(), encrypted.path().c_str(), error))
        throw Failure(ExitCode::kInstallation, plain + " cannot be encrypted: " + explainCipherError(error));
    ScratchFile sealed(target);
    sealRecords(encrypted.path(), sealed.path(), packageName(target), options);
    sealed.moveTo(target);
}
