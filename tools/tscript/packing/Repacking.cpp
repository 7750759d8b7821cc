#include "packing/Repacking.h"

#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <optional>

#include "HostSetup.h"
#include "console/Outcome.h"
#include "package/PackageFile.h"
#include "package/RecordReader.h"
#include "packing/SealedPackage.h"
#include "system/ScratchFile.h"

namespace {

constexpr std::size_t kRecordCapacity = 2048;

const char* keyFileReason(long error) {
    switch (error) {
        case VTPassword::kKeyUnreadable:
            return "it is missing or cannot be read";
        case VTPassword::kKeyExposed:
            return "others than its owner may read it; set its mode to 0600";
        case VTPassword::kKeyMalformed:
            return "it does not hold exactly 32 bytes";
        default:
            return hostlayer::cipherErrorText(error);
    }
}

struct PackageState {
    std::string problem;  // first bad record, no record at all, or a broken seal; empty if there is none
    std::optional<hostlayer::PackageSeal> seal;
};

PackageState readPackage(const std::string& file, KeyedCipher& cipher) {
    RecordReader reader(file);
    PlainRecord plain;
    hostlayer::PackageSealCheck check;
    std::size_t records = 0;
    const auto addBlankLines = [&] {
        if (!reader.blankLines().empty()) check.addLine({}, reader.blankLines(), {});
    };
    for (std::string record; reader.next(record); ++records) {
        if (!cipher.decrypt(record, plain))
            return {"line " + std::to_string(reader.line()) + ": " + cipher.lastReason(), {}};
        addBlankLines();
        check.addLine(record, reader.lineEnd(), plain.text());
    }
    addBlankLines();
    if (records == 0) return {"there is no record in it", {}};
    const hostlayer::KeyFileChoice choice(cipher.keyFile());
    PackageState state{check.sealProblem(), {}};
    if (check.seal() != nullptr) state.seal = *check.seal();
    return state;
}

template <typename AddRecord>
void convertRecords(const std::string& file, KeyedCipher& from, KeyedCipher& to, AddRecord addRecord) {
    RecordReader reader(file);
    PlainRecord plain;
    for (std::string record; reader.next(record);) {
        if (!from.decrypt(record, plain))
            throw Failure(ExitCode::kInstallation,
                          "line " + std::to_string(reader.line()) + ": " + from.lastReason());
        if (hostlayer::isSealText(plain.text())) continue;  // the new package has its own
        if (!to.encrypt(plain.text(), record)) throw Failure(ExitCode::kInstallation, to.lastReason());
        addRecord(record, plain.text());
    }
}

void copyRecords(const std::string& file, const std::string& target, KeyedCipher& from, KeyedCipher& to) {
    std::ofstream out(target, std::ios::binary);
    convertRecords(file, from, to, [&](const std::string& record, const char*) { out << record << '\n'; });
    out.close();
    if (!out) throw Failure(ExitCode::kInstallation, target + " cannot be written; is the disk full?");
}

void copySealed(const std::string& file, const std::string& target, const hostlayer::PackageSeal& seal,
                KeyedCipher& from, KeyedCipher& to) {
    const hostlayer::KeyFileChoice choice(to.keyFile());
    SealedPackageWriter out(target, seal, /*signingKey=*/{});
    convertRecords(file, from, to,
                   [&](const std::string& record, const char* plain) { out.addRecord(record, plain); });
    out.finish();
}

struct FileIdentity {
    explicit FileIdentity(const std::string& file) {
        if (stat(file.c_str(), &status) != 0) throw Failure(ExitCode::kInstallation, file + " has vanished");
    }
    bool operator==(const FileIdentity& other) const {
        return status.st_ino == other.status.st_ino && status.st_size == other.status.st_size &&
               status.st_mtim.tv_sec == other.status.st_mtim.tv_sec &&
               status.st_mtim.tv_nsec == other.status.st_mtim.tv_nsec;
    }
    struct stat status {};
};

}  // namespace

KeyedCipher::KeyedCipher(const std::string& keyFile) : m_keyFile(keyFile) {
    std::string ignored;
    if (encrypt("", ignored)) return;
    throw Failure(ExitCode::kInstallation,
                  "the key file " + keyFile + " cannot be used: " + keyFileReason(m_cipher.getLastError()));
}

bool KeyedCipher::decrypt(const std::string& record, PlainRecord& plain) {
    const hostlayer::KeyFileChoice choice(m_keyFile);
    return plain.decrypt(m_cipher, record);
}

bool KeyedCipher::encrypt(const char* plain, std::string& record) {
    const hostlayer::KeyFileChoice choice(m_keyFile);
    std::array<char, kRecordCapacity> buffer{};
    unsigned long size = buffer.size();
    const bool done = m_cipher.encrypt(plain, buffer.data(), &size) != 0;
    record.assign(buffer.data(), done ? size : 0);
    return done;
}

const char* KeyedCipher::lastReason() const {
    return hostlayer::cipherErrorText(m_cipher.getLastError());
}

bool isAuthentic(const std::string& file, KeyedCipher& cipher) {
    return readPackage(file, cipher).problem.empty();
}

Repacked repackFile(const std::string& file, KeyedCipher& from, KeyedCipher& to, Unsealed unsealed,
                    const std::string& temporaryName) {
    std::error_code error;
    const std::string real = std::filesystem::canonical(file, error).string();
    if (error) throw Failure(ExitCode::kUsage, error.message());
    const FileIdentity before(real);
    PackageState state = readPackage(file, from);
    if (!state.problem.empty()) {
        if (readPackage(file, to).problem.empty()) return Repacked::kHadNewKey;
        throw Failure(ExitCode::kInstallation, state.problem);
    }
    if (!state.seal && unsealed == Unsealed::kIsSealed)
        state.seal = hostlayer::PackageSeal{.version = currentPackageVersion(), .name = packageName(file)};
    ScratchFile repacked(temporaryName.empty() ? real : temporaryName);
    if (state.seal) {
        copySealed(real, repacked.path(), *state.seal, from, to);
    } else {
        copyRecords(real, repacked.path(), from, to);
    }
    if (!(FileIdentity(real) == before))
        throw Failure(ExitCode::kInstallation, "another program has replaced it meanwhile");
    repacked.replace(real);
    return Repacked::kDone;
}
