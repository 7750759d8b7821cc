// Command `repack`: encrypts packages with another key.
#include <string.h>

#include <array>
#include <filesystem>
#include <memory>
#include <vector>

#include "HostSetup.h"
#include "VTPassword.h"
#include "commands/Commands.h"
#include "console/Console.h"
#include "package/RecordReader.h"
#include "system/ScratchFile.h"

namespace {

constexpr std::size_t kRecordCapacity = 2048;
constexpr std::size_t kPlainCapacity = 511;

struct RepackOptions {
    std::string oldKey;
    std::string newKey;
    std::vector<std::string> files;
};

// Plain text of a record, wiped by the destructor.
struct PlainText {
    PlainText() = default;
    ~PlainText() { explicit_bzero(bytes.data(), bytes.size()); }
    PlainText(const PlainText&) = delete;
    PlainText& operator=(const PlainText&) = delete;
    std::array<char, kPlainCapacity> bytes{};
};

// Cipher that uses the key of a given file.
class KeyedCipher {
  public:
    // Throws Failure (kInstallation) if the file does not hold a usable key.
    explicit KeyedCipher(const std::string& keyFile) : m_keyFile(keyFile) {
        std::string ignored;
        if (encrypt({}, ignored)) return;
        throw Failure(ExitCode::kInstallation,
                      "the key file " + keyFile + " cannot be used: " + reason(m_cipher.getLastError()));
    }

    bool decrypt(const std::string& record, PlainText& plain) {
        const hostlayer::KeyFileChoice choice(m_keyFile);
        unsigned long size = plain.bytes.size();
        return m_cipher.decrypt(record.c_str(), plain.bytes.data(), &size) != 0;
    }
    bool encrypt(const PlainText& plain, std::string& record) {
        const hostlayer::KeyFileChoice choice(m_keyFile);
        std::array<char, kRecordCapacity> buffer{};
        unsigned long size = buffer.size();
        const bool done = m_cipher.encrypt(plain.bytes.data(), buffer.data(), &size) != 0;
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

// Reason why the cipher cannot decrypt the file: its first bad record, or no records at all. Empty if it can.
std::string decryptionProblem(const std::string& file, KeyedCipher& cipher) {
    RecordReader reader(file);
    PlainText plain;
    std::size_t records = 0;
    for (std::string record; reader.next(record); ++records)
        if (!cipher.decrypt(record, plain))
            return "line " + std::to_string(reader.line()) + ": " + cipher.lastReason();
    return records == 0 ? "there is no record in it" : "";
}

void copyRecords(const std::string& file, const std::string& target, KeyedCipher& from, KeyedCipher& to) {
    RecordReader reader(file);
    std::ofstream out(target, std::ios::binary);
    PlainText plain;
    for (std::string record; reader.next(record);) {
        if (!from.decrypt(record, plain))
            throw Failure(ExitCode::kInstallation,
                          "line " + std::to_string(reader.line()) + ": " + from.lastReason());
        if (!to.encrypt(plain, record)) throw Failure(ExitCode::kInstallation, to.lastReason());
        out << record << '\n';
    }
    out.close();
    if (!out) throw Failure(ExitCode::kInstallation, target + " cannot be written; is the disk full?");
}

// Replaces the file that a link points to, not the link. Throws Failure if the file is unchanged.
void repackFile(const std::string& file, KeyedCipher& from, KeyedCipher& to) {
    if (const std::string problem = decryptionProblem(file, from); !problem.empty()) {
        if (decryptionProblem(file, to).empty()) return writeNote(file + " has the new key already");
        throw Failure(ExitCode::kInstallation, problem);
    }
    const std::string real = std::filesystem::canonical(file).string();
    ScratchFile repacked(real);
    copyRecords(real, repacked.path(), from, to);
    repacked.replace(real);
    writeNote("repacked " + file);
}

ExitCode repack(const RepackOptions& options) {
    std::error_code ignored;
    if (std::filesystem::equivalent(options.oldKey, options.newKey, ignored))
        throw Failure(ExitCode::kUsage, "the old and the new key are the same file");
    KeyedCipher from(options.oldKey);
    KeyedCipher to(options.newKey);
    std::size_t unchangedFiles = 0;
    for (const std::string& file : options.files) {
        try {
            repackFile(file, from, to);
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
        "Encrypt packages with another key; one that is not authentic is reported and left unchanged",
        options, repack);
    command->add_option("--old-key", options->oldKey, "Key file that the packages are encrypted with")
        ->required()
        ->type_name("FILE");
    command->add_option("--new-key", options->newKey, "Key file to encrypt them with")
        ->required()
        ->type_name("FILE");
    command->add_option("FILE", options->files, "The packages")->required();
}
