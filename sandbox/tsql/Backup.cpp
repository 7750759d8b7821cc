#include "Backup.h"

#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>

#include "Messages.h"

namespace tsql {
namespace {

namespace fs = std::filesystem;

// A backup file: the magic, the size of the header (8 bytes, low one first), the header, the checksum of
// header and image, and the image, a whole SQLite database.
constexpr std::string_view kMagic = "TSQLBOX BACKUP 1\n";
constexpr std::size_t kMaxHeader = 1 << 16;
constexpr std::size_t kChecksum = crypto_generichash_BYTES;
constexpr std::size_t kBlock = 1 << 16;
using Checksum = std::array<unsigned char, kChecksum>;

[[noreturn]] void cannotOpen(const fs::path& file, int error) {
    throw sqlError(3201, {file.string(), std::to_string(error), std::strerror(error)});
}

[[noreturn]] void damaged(const fs::path& file) {
    throw sqlError(3203, {file.string()});
}

class File {
  public:
    File(fs::path path, int flags)
        : m_path(std::move(path)), m_descriptor(::open(m_path.c_str(), flags | O_CLOEXEC, 0600)) {
        if (m_descriptor < 0) cannotOpen(m_path, errno);
    }
    ~File() { ::close(m_descriptor); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    void write(std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t written = ::write(m_descriptor, bytes.data(), bytes.size());
            if (written < 0 && errno != EINTR) cannotOpen(m_path, errno);
            if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    // Fewer bytes than asked for only at the end of the file.
    std::string read(std::size_t size) {
        std::string bytes(size, '\0');
        std::size_t done = 0;
        while (done < size) {
            const ssize_t got = ::read(m_descriptor, bytes.data() + done, size - done);
            if (got < 0 && errno != EINTR) cannotOpen(m_path, errno);
            if (got == 0) break;
            if (got > 0) done += static_cast<std::size_t>(got);
        }
        bytes.resize(done);
        return bytes;
    }
    void rewindTo(std::size_t offset) { ::lseek(m_descriptor, static_cast<off_t>(offset), SEEK_SET); }
    void sync() {
        if (::fsync(m_descriptor) != 0) cannotOpen(m_path, errno);
    }
    const fs::path& path() const { return m_path; }

  private:
    fs::path m_path;
    int m_descriptor;
};

// A file of ours beside another, gone with this object unless it was renamed into place.
class TemporaryFile {
  public:
    explicit TemporaryFile(const fs::path& beside) {
        std::string name = beside.string() + ".XXXXXX";
        const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
        if (descriptor < 0) cannotOpen(beside, errno);
        ::close(descriptor);
        m_path = name;
    }
    ~TemporaryFile() {
        std::error_code ignored;
        for (const char* suffix : {"", "-wal", "-shm", "-journal"})
            if (!m_path.empty()) fs::remove(m_path.string() + suffix, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void renameTo(const fs::path& target) {
        if (::rename(m_path.c_str(), target.c_str()) != 0) cannotOpen(target, errno);
        m_path.clear();
    }
    const fs::path& path() const { return m_path; }

  private:
    fs::path m_path;
};

std::string encodeSize(std::uint64_t value) {
    std::string bytes;
    for (int shift = 0; shift < 64; shift += 8) bytes += static_cast<char>(value >> shift);
    return bytes;
}

std::uint64_t decodeSize(std::string_view bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = 8; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

// Six fields, each with its size in front.
std::string encodeHeader(const BackupHeader& header) {
    std::string bytes;
    for (const std::string& field : {header.database, header.started, header.finished, header.dataFile,
                                     std::to_string(header.pages), std::to_string(header.bytes)})
        bytes += encodeSize(field.size()) + field;
    return bytes;
}

std::optional<BackupHeader> decodeHeader(std::string_view bytes) {
    std::array<std::string, 6> fields;
    for (std::string& field : fields) {
        if (bytes.size() < 8 || decodeSize(bytes) > bytes.size() - 8) return std::nullopt;
        field = bytes.substr(8, decodeSize(bytes));
        bytes.remove_prefix(8 + field.size());
    }
    try {
        return BackupHeader{
            fields[0], fields[1], fields[2], fields[3], std::stoll(fields[4]), std::stoll(fields[5])};
    } catch (const std::logic_error&) {
        return std::nullopt;
    }
}

class Hash {
  public:
    explicit Hash(std::string_view first) {
        crypto_generichash_init(&m_state, nullptr, 0, kChecksum);
        add(first);
    }
    void add(std::string_view bytes) {
        crypto_generichash_update(&m_state, reinterpret_cast<const unsigned char*>(bytes.data()),
                                  bytes.size());
    }
    std::string value() {
        Checksum sum{};
        crypto_generichash_final(&m_state, sum.data(), sum.size());
        return std::string(sum.begin(), sum.end());
    }

  private:
    crypto_generichash_state m_state{};
};

// Hands the rest of the file to `take`, block by block.
template <typename Take>
void eachBlock(File& file, Take take) {
    for (std::string block; !(block = file.read(kBlock)).empty();) take(block);
}

void copyDatabase(sqlite3* from, sqlite3* to) {
    sqlite3_backup* copy = sqlite3_backup_init(to, "main", from, "main");
    if (!copy) throw std::runtime_error(sqlite3_errmsg(to));
    int code = SQLITE_OK;
    for (int tries = 0; tries < 100; ++tries) {  // up to 10 s while others write
        code = sqlite3_backup_step(copy, -1);
        if (code != SQLITE_BUSY && code != SQLITE_LOCKED) break;
        sqlite3_sleep(100);
    }
    sqlite3_backup_finish(copy);
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED) throw sqlError(3101);
    if (code != SQLITE_DONE) throw std::runtime_error(sqlite3_errstr(code));
}

// The database as one file that needs no side files.
std::int64_t writeImage(const fs::path& database, const fs::path& image) {
    const auto source = openDatabaseFile(database, false);
    sqlite3* raw = nullptr;
    const int code = sqlite3_open(image.c_str(), &raw);
    const SqliteConnection target(raw);
    if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errstr(code));
    copyDatabase(source.get(), target.get());
    execute(target.get(), "PRAGMA journal_mode=DELETE");
    std::int64_t pages = 0;
    const auto take = [](void* result, int, char** cells, char**) {
        *static_cast<std::int64_t*>(result) = std::stoll(cells[0]);
        return 0;
    };
    sqlite3_exec(raw, "PRAGMA page_count", take, &pages, nullptr);
    return pages;
}

void writeBackup(const fs::path& target, const std::string& header, const fs::path& image) {
    File out(target, O_WRONLY | O_TRUNC);
    File in(image, O_RDONLY);
    Hash hash(header);
    eachBlock(in, [&](std::string_view block) { hash.add(block); });
    in.rewindTo(0);
    out.write(std::string(kMagic) + encodeSize(header.size()) + header + hash.value());
    eachBlock(in, [&](std::string_view block) { out.write(block); });
    out.sync();
}

struct OpenBackup {
    explicit OpenBackup(const fs::path& path) : file(path, O_RDONLY) {
        struct stat status {};
        if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) cannotOpen(path, EISDIR);
        const std::string start = file.read(kMagic.size() + 8);
        if (start.size() < kMagic.size() + 8 || !start.starts_with(kMagic))
            throw sqlError(3241, {path.string()});
        const std::uint64_t size = decodeSize(std::string_view(start).substr(kMagic.size()));
        if (size > kMaxHeader) damaged(path);
        headerBytes = file.read(size);
        checksum = file.read(kChecksum);
        const auto decoded = decodeHeader(headerBytes);
        if (!decoded || checksum.size() != kChecksum) damaged(path);
        header = *decoded;
    }

    // Copies the image while its checksum is taken; a damaged one is found before it is used.
    void extractTo(const fs::path& target) {
        File out(target, O_WRONLY | O_TRUNC);
        Hash hash(headerBytes);
        eachBlock(file, [&](std::string_view block) {
            hash.add(block);
            out.write(block);
        });
        if (hash.value() != checksum) damaged(file.path());
        out.sync();
    }

    File file;
    std::string headerBytes;
    std::string checksum;
    BackupHeader header;
};

void checkMoves(const BackupHeader& header, std::span<const std::string> movedNames,
                std::string_view database) {
    for (const std::string& name : movedNames) {
        const bool known =
            name == dataLogicalName(header.database) || name == logLogicalName(header.database);
        if (!known) throw sqlError(3234, {name, database});
    }
}

// From here on the image is whole: an existing database is overwritten in one SQLite transaction, which other
// connections see at once or not at all; a new one is renamed into place.
void putInPlace(Storage& storage, TemporaryFile& image, std::string_view database) {
    if (!storage.exists(database)) {
        openDatabaseFile(image.path(), false);
        image.renameTo(storage.pathOf(database));
        return;
    }
    const auto source = openDatabaseFile(image.path(), false);
    const auto target = openDatabaseFile(storage.pathOf(database), false);
    copyDatabase(source.get(), target.get());
}

std::string now() {
    return toStorage(localNow(), simpleType(TypeId::DateTime));
}

}  // namespace

std::string dataLogicalName(std::string_view database) {
    return std::string(database);
}
std::string logLogicalName(std::string_view database) {
    return std::string(database) + "_log";
}

BackupHeader backupDatabase(const Storage& storage, std::string_view database, const fs::path& file) {
    const std::string name = storage.canonicalName(database);
    if (name.empty()) throw sqlError(911, {database});
    BackupHeader header{name, now(), {}, storage.pathOf(name).string(), 0, 0};
    TemporaryFile image(file);
    TemporaryFile whole(file);
    try {
        header.pages = writeImage(storage.pathOf(name), image.path());
    } catch (const std::runtime_error& error) {
        throw sqlError(3202, {file.string(), error.what()});
    }
    header.bytes = static_cast<std::int64_t>(fs::file_size(image.path()));
    header.finished = now();
    writeBackup(whole.path(), encodeHeader(header), image.path());
    whole.renameTo(file);
    return header;
}

BackupHeader readBackupHeader(const fs::path& file) {
    return OpenBackup(file).header;
}

std::span<const Column> fileListColumns() {
    static const SqlType kLsn = decimalType(25, 0), kSize = decimalType(20, 0),
                         kId = simpleType(TypeId::UniqueIdentifier);
    static const std::vector<Column> columns = {
        {"LogicalName", nvarcharType(128)},
        {"PhysicalName", nvarcharType(260)},
        {"Type", {TypeId::Char, 1, 0, 0}},
        {"FileGroupName", nvarcharType(128)},
        {"Size", kSize},
        {"MaxSize", kSize},
        {"FileId", simpleType(TypeId::BigInt)},
        {"CreateLSN", kLsn},
        {"DropLSN", kLsn},
        {"UniqueId", kId},
        {"ReadOnlyLSN", kLsn},
        {"ReadWriteLSN", kLsn},
        {"BackupSizeInBytes", simpleType(TypeId::BigInt)},
        {"SourceBlockSize", simpleType(TypeId::Int)},
        {"FileGroupId", simpleType(TypeId::Int)},
        {"LogGroupGUID", kId},
        {"DifferentialBaseLSN", kLsn},
        {"DifferentialBaseGUID", kId},
        {"IsReadOnly", simpleType(TypeId::Bit)},
        {"IsPresent", simpleType(TypeId::Bit)},
    };
    return columns;
}

std::vector<std::vector<Value>> fileListRows(const BackupHeader& header) {
    constexpr std::int64_t kUnlimited = 35'184'372'080'640, kBlockSize = 4096;
    const std::string nobody = "00000000-0000-0000-0000-000000000000";
    const auto row = [&](bool data) -> std::vector<Value> {
        const std::int64_t size = data ? header.bytes : 0;
        const std::string path = data ? header.dataFile : header.dataFile + "-wal";
        return {data ? dataLogicalName(header.database) : logLogicalName(header.database),
                path,
                std::string(data ? "D" : "L"),
                data ? Value(std::string("PRIMARY")) : Value(Null{}),
                size,
                kUnlimited,
                std::int64_t{data ? 1 : 2},
                std::int64_t{0},
                std::int64_t{0},
                nobody,
                std::int64_t{0},
                std::int64_t{0},
                size,
                kBlockSize,
                std::int64_t{data ? 1 : 0},
                Null{},
                std::int64_t{0},
                nobody,
                std::int64_t{0},
                std::int64_t{1}};
    };
    return {row(true), row(false)};
}

BackupHeader restoreDatabase(Storage& storage, const fs::path& file, std::string_view database, bool replace,
                             std::span<const std::string> movedNames) {
    OpenBackup backup(file);
    checkMoves(backup.header, movedNames, database);
    if (storage.exists(database) && !replace) throw sqlError(3159, {database});
    TemporaryFile image(storage.directory() / "restore");
    backup.extractTo(image.path());
    try {
        putInPlace(storage, image, database);
    } catch (const SqlError&) {
        throw;
    } catch (const std::runtime_error& error) {
        throw sqlError(3270, {error.what()});
    }
    return backup.header;
}

std::string terminatedText(std::string_view statement) {
    return std::string(statement) + " is terminating abnormally.";
}

}  // namespace tsql
