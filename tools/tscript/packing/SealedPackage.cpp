#include "packing/SealedPackage.h"

#include <array>
#include <chrono>

#include "HostSetup.h"
#include "VTPassword.h"
#include "console/Outcome.h"
#include "installation/Installation.h"

SealedPackageWriter::SealedPackageWriter(const std::string& file, const hostlayer::PackageSeal& seal,
                                         const std::string& signingKey)
    : m_file(file), m_out(file, std::ios::binary), m_sealer(seal) {
    checkScriptName(seal.name);
    std::string problem;
    if (!signingKey.empty() && !m_sealer.setSigningKey(signingKey, problem))
        throw Failure(ExitCode::kInstallation,
                      "the signing key " + signingKey + " cannot be used: " + problem,
                      "tscript key create --signing FILE makes one.");
    m_out << sealRecord() << '\n';  // a seal of nothing, as long as the one that finish() writes in its place
}

void SealedPackageWriter::addRecord(std::string_view record, std::string_view plain) {
    m_sealer.addLine(record, plain);
    m_out << record << '\n';
}

void SealedPackageWriter::finish() {
    m_out.seekp(0);
    m_out << sealRecord();
    m_out.close();
    if (!m_out) throw Failure(ExitCode::kInstallation, m_file + " cannot be written; is the disk full?");
}

std::string SealedPackageWriter::sealRecord() const {
    std::string text;
    std::string problem;
    if (!m_sealer.makeText(text, problem)) throw Failure(ExitCode::kInstallation, problem);
    VTPassword cipher;
    std::array<char, 2048> record{};
    unsigned long size = record.size();
    if (cipher.encrypt(text.c_str(), record.data(), &size) == 0)
        throw Failure(ExitCode::kInstallation, hostlayer::cipherErrorText(cipher.getLastError()));
    return {record.data(), size};
}

std::uint64_t currentPackageVersion() {
    using namespace std::chrono;
    return static_cast<std::uint64_t>(duration_cast<seconds>(system_clock::now().time_since_epoch()).count());
}
