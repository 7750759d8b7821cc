// Command `repack`: encrypts packages with another key.
#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <vector>

#include "HostSetup.h"
#include "VTPassword.h"
#include "commands/Commands.h"
#include "console/Console.h"
#include "package/PackageFile.h"
#include "package/PlainRecord.h"
#include "package/RecordReader.h"
#include "package/SealedPackage.h"
#include "system/ScratchFile.h"

namespace {

constexpr std::size_t kRecordCapacity = 2048;

struct RepackOptions {
    std::string oldKey;
    std::string newKey;
    std::vector<std::string> files;
    bool seal = false;
};

// Cipher that uses the key of a given file.
class KeyedCipher {
  public:
    // Throws Failure (kInstallation) if the file does not hold a usable key.
    explicit KeyedCipher(const std::string& keyFile) : m_keyFile(keyFile) {
        std::string ignored;
        if (encrypt("", ignored)) return;
        throw Failure(ExitCode::kInstallation,
                      "the key file " + keyFile + " cannot be used: " + reason(m_cipher.getLastError()));
    }

    const std::string& keyFile() const { return m_keyFile; }
    bool decrypt(const std::string& record, PlainRecord& plain) {
        const hostlayer::KeyFileChoice choice(m_keyFile);
        return plain.decrypt(m_cipher, record);
    }
    bool encrypt(const char* plain, std::string& record) {
        const hostlayer::KeyFileChoice choice(m_keyFile);
        std::array<char, kRecordCapacity> buffer{};
        unsigned long size = buffer.size();
        const bool done = m_cipher.encrypt(plain, buffer.data(), &size) != 0;
        record.assign(buffer.data(), done ? size : 0);
        return done;
    }
    const char* lastReason() const { return hostlayer::cipherErrorText(m_cipher.getLastError()); }

  private:
    static const char* reason(long error) {
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

    std::string m_keyFile;
    VTPassword m_cipher;
};

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

// Replaces the file that a link points to, not the link. Throws Failure if the file is unchanged.
void repackFile(const std::string& file, KeyedCipher& from, KeyedCipher& to, bool sealsAll) {
    PackageState state = readPackage(file, from);
    if (!state.problem.empty()) {
        if (readPackage(file, to).problem.empty()) return writeNote(file + " has the new key already");
        throw Failure(ExitCode::kInstallation, state.problem);
    }
    if (!state.seal && sealsAll)
        state.seal = hostlayer::PackageSeal{.version = currentPackageVersion(), .name = packageName(file)};
    const std::string real = std::filesystem::canonical(file).string();
    ScratchFile repacked(real);
    if (state.seal) {
        copySealed(real, repacked.path(), *state.seal, from, to);
    } else {
        copyRecords(real, repacked.path(), from, to);
    }
    repacked.replace(real);
    writeNote("repacked " + file);
}

ExitCode repack(const RepackOptions& options) {
    std::error_code ignored;
    if (!options.seal && std::filesystem::equivalent(options.oldKey, options.newKey, ignored))
        throw Failure(ExitCode::kUsage, "the old and the new key are the same file");
    KeyedCipher from(options.oldKey);
    KeyedCipher to(options.newKey);
    std::size_t unchangedFiles = 0;
    for (const std::string& file : options.files) {
        try {
            repackFile(file, from, to, options.seal);
        } catch (const Failure& failure) {
            writeNote("tscript: " + file + " was left as it is: " + failure.what());
            ++unchangedFiles;
        }
    }
    if (unchangedFiles == 0) return ExitCode::kDone;
    throw Failure(ExitCode::kInstallation,
                  std::to_string(unchangedFiles) + " of " + std::to_string(options.files.size()) +
                      " file(s) were not repacked",
                  "Keep the old key until every package has the new one.");
}

}  // namespace

void addRepackCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<RepackOptions>();
    CLI::App* command = addCommand(
        &app, action, "repack",
        "Encrypt packages with another key and renew their seals; one that is not authentic is reported and "
        "left unchanged",
        options, repack);
    addOption(command, "--old-key", options->oldKey, "Key file that the packages are encrypted with",
              {.type = "FILE", .required = true});
    addOption(command, "--new-key", options->newKey, "Key file to encrypt them with",
              {.type = "FILE", .required = true});
    addFlag(command, "--seal", options->seal,
            "Seal packages that have no seal, too; the keys may be the same file");
    addOption(command, "FILE", options->files, "The packages", {.required = true});
}
