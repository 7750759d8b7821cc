// repack: packages from one key to another.
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

constexpr std::size_t kRecordRoom = 2048;
constexpr std::size_t kPlainRoom = 511;

struct RepackOptions {
    std::string oldKey;
    std::string newKey;
    std::vector<std::string> files;
};

// A record's text, wiped when it goes.
struct PlainText {
    PlainText() = default;
    ~PlainText() { explicit_bzero(bytes.data(), bytes.size()); }
    PlainText(const PlainText&) = delete;
    PlainText& operator=(const PlainText&) = delete;
    std::array<char, kPlainRoom> bytes{};
};

// The cipher with the key of a file.
class KeyedCipher {
  public:
    // Throws Failure (installation) when there is no usable key in the file.
    explicit KeyedCipher(const std::string& keyFile) : m_keyFile(keyFile) {
        std::string ignored;
        if (encipher({}, ignored)) return;
        throw Failure(ExitCode::kInstallation,
                      "the key file " + keyFile + " cannot be used: " + reason(m_cipher.getLastError()));
    }

    bool decipher(const std::string& record, PlainText& plain) {
        const hostlayer::KeyFileChoice choice(m_keyFile);
        unsigned long size = plain.bytes.size();
        return m_cipher.decrypt(record.c_str(), plain.bytes.data(), &size) != 0;
    }
    bool encipher(const PlainText& plain, std::string& record) {
        const hostlayer::KeyFileChoice choice(m_keyFile);
        std::array<char, kRecordRoom> room{};
        unsigned long size = room.size();
        const bool done = m_cipher.encrypt(plain.bytes.data(), room.data(), &size) != 0;
        record.assign(room.data(), done ? size : 0);
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

// Why a file is not wholly of this key: its first bad record, or none at all. Empty: it is.
std::string foreignRecord(const std::string& file, KeyedCipher& cipher) {
    RecordReader reader(file);
    PlainText plain;
    std::size_t records = 0;
    for (std::string record; reader.next(record); ++records)
        if (!cipher.decipher(record, plain))
            return "line " + std::to_string(reader.line()) + ": " + cipher.lastReason();
    return records == 0 ? "there is no record in it" : "";
}

void copyRecords(const std::string& file, const std::string& target, KeyedCipher& from, KeyedCipher& to) {
    RecordReader reader(file);
    std::ofstream out(target, std::ios::binary);
    PlainText plain;
    for (std::string record; reader.next(record);) {
        if (!from.decipher(record, plain))
            throw Failure(ExitCode::kInstallation,
                          "line " + std::to_string(reader.line()) + ": " + from.lastReason());
        if (!to.encipher(plain, record)) throw Failure(ExitCode::kInstallation, to.lastReason());
        out << record << '\n';
    }
    out.close();
    if (!out) throw Failure(ExitCode::kInstallation, target + " cannot be written; is the disk full?");
}

// A link stays one: the file that it leads to is replaced. Throws Failure when the file was left alone.
void repackFile(const std::string& file, KeyedCipher& from, KeyedCipher& to) {
    if (const std::string problem = foreignRecord(file, from); !problem.empty()) {
        if (foreignRecord(file, to).empty()) return writeNote(file + " has the new key already");
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
    std::size_t left = 0;
    for (const std::string& file : options.files) {
        try {
            repackFile(file, from, to);
        } catch (const Failure& failure) {
            writeNote("tscript: " + file + " was left as it is: " + failure.what());
            ++left;
        }
    }
    if (left == 0) return ExitCode::kDone;
    throw Failure(
        ExitCode::kInstallation,
        std::to_string(left) + " of " + std::to_string(options.files.size()) + " file(s) were not repacked",
        "Keep the old key until every package has the new one.");
}

}  // namespace

void addRepackCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<RepackOptions>();
    CLI::App* command =
        addCommand(&app, action, "repack",
                   "Encipher packages with another key; one that is not authentic is named and left alone",
                   options, repack);
    command->add_option("--old-key", options->oldKey, "Key file that the packages are enciphered with")
        ->required()
        ->type_name("FILE");
    command->add_option("--new-key", options->newKey, "Key file that they shall have")
        ->required()
        ->type_name("FILE");
    command->add_option("FILE", options->files, "The packages")->required();
}
