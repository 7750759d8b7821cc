#include "Backup.h"

#include <fcntl.h>
#include <sodium.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

#include "Messages.h"
#include "Parser.h"
#include "Text.h"

namespace tsql {
namespace {

namespace fs = std::filesystem;

// A backup file: the magic, the size of the header (8 bytes, low one first), the header, the checksum of
// header and image, and the image, a whole SQLite database.
constexpr std::string_view kMagic = "TSQLBOX BACKUP 1\n";
constexpr std::size_t kMaxHeader = 1 << 16;
constexpr std::size_t kChecksum = crypto_generichash_BYTES;
constexpr std::size_t kBlock = 1 << 16;
constexpr std::int64_t kPage = 4096;  // of every SQLite file that is made here
using Checksum = std::array<unsigned char, kChecksum>;

[[noreturn]] void cannotOpen(const fs::path& file, int error) {
    throw sqlError(3201, {file.string(), std::to_string(error), std::strerror(error)});
}

[[noreturn]] void damaged(const fs::path& file) {
    throw sqlError(3203, {file.string()});
}

class File {
  public:
    File(fs::path path, const char* mode)
        : m_path(std::move(path)), m_stream(std::fopen(m_path.c_str(), mode)) {
        if (!m_stream) cannotOpen(m_path, errno);
    }

    void write(std::string_view bytes) {
        if (std::fwrite(bytes.data(), 1, bytes.size(), m_stream.get()) != bytes.size())
            cannotOpen(m_path, errno);
    }
    // Fewer bytes than asked for only at the end of the file.
    std::string read(std::size_t size) {
        std::string bytes(size, '\0');
        bytes.resize(std::fread(bytes.data(), 1, size, m_stream.get()));
        if (std::ferror(m_stream.get())) cannotOpen(m_path, errno);
        return bytes;
    }
    void rewind() { std::rewind(m_stream.get()); }
    void sync() {
        if (std::fflush(m_stream.get()) != 0 || ::fsync(::fileno(m_stream.get())) != 0)
            cannotOpen(m_path, errno);
    }
    const fs::path& path() const { return m_path; }

  private:
    struct Closer {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };
    fs::path m_path;
    std::unique_ptr<std::FILE, Closer> m_stream;
};
constexpr const char *kRead = "rbe", *kWrite = "wbe";  // closed in programs that are started meanwhile

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
void writeImage(const fs::path& database, const fs::path& image) {
    const auto source = openDatabaseFile(database, false);
    sqlite3* raw = nullptr;
    const int code = sqlite3_open(image.c_str(), &raw);
    const SqliteConnection target(raw);
    if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errstr(code));
    copyDatabase(source.get(), target.get());
    execute(target.get(), "PRAGMA journal_mode=DELETE");
}

// Calls `progress` as the copied bytes approach `total`.
class Meter {
  public:
    Meter(const Progress& progress, std::int64_t total)
        : m_progress(progress), m_total(std::max<std::int64_t>(total, 1)) {}
    void add(std::size_t bytes) {
        m_done += static_cast<std::int64_t>(bytes);
        if (m_progress) m_progress(static_cast<int>(m_done * 100 / m_total));
    }

  private:
    const Progress& m_progress;
    std::int64_t m_total, m_done = 0;
};

void writeBackup(const fs::path& target, const std::string& header, const fs::path& image, Meter meter) {
    File out(target, kWrite);
    File in(image, kRead);
    Hash hash(header);
    eachBlock(in, [&](std::string_view block) { hash.add(block); });
    in.rewind();
    out.write(std::string(kMagic) + encodeSize(header.size()) + header + hash.value());
    eachBlock(in, [&](std::string_view block) {
        out.write(block);
        meter.add(block.size());
    });
    out.sync();
}

struct OpenBackup {
    explicit OpenBackup(const fs::path& path) : file(path, kRead) {
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

    // Copies the image, when there is a target, while its checksum is taken; a damaged one is found before it
    // is used.
    void copyTo(File* out, const Progress& progress) {
        Hash hash(headerBytes);
        Meter meter(progress, header.bytes);
        eachBlock(file, [&](std::string_view block) {
            hash.add(block);
            if (out) out->write(block);
            meter.add(block.size());
        });
        if (hash.value() != checksum) damaged(file.path());
        if (out) out->sync();
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

BackupReport emptyReport(std::string_view columns) {
    BackupReport report;
    for (const std::string& item : listItems(columns))
        report.columns.push_back(
            {item.substr(0, item.find(' ')), parseType(item.substr(item.find(' ') + 1))});
    return report;
}

// What is not told is 0 or NULL.
void addRow(BackupReport& report, std::initializer_list<std::pair<std::string_view, Value>> known) {
    auto& row = report.rows.emplace_back();
    for (const auto& column : report.columns) {
        Value& cell = row.emplace_back();
        if (isNumber(column.type.id)) cell = std::int64_t{0};
        for (const auto& [name, value] : known)
            if (name == column.name) cell = value;
    }
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

BackupHeader backupDatabase(const Storage& storage, std::string_view database, const fs::path& file,
                            const Progress& progress) {
    const std::string name = storage.canonicalName(database);
    if (name.empty()) throw sqlError(911, {database});
    BackupHeader header{name, now(), {}, storage.pathOf(name).string(), 0, 0};
    TemporaryFile image(file);
    TemporaryFile whole(file);
    try {
        writeImage(storage.pathOf(name), image.path());
    } catch (const std::runtime_error& error) {
        throw sqlError(3202, {file.string(), error.what()});
    }
    header.bytes = static_cast<std::int64_t>(fs::file_size(image.path()));
    header.pages = header.bytes / kPage;
    header.finished = now();
    writeBackup(whole.path(), encodeHeader(header), image.path(), Meter(progress, header.bytes));
    whole.renameTo(file);
    return header;
}

BackupHeader readBackupHeader(const fs::path& file) {
    return OpenBackup(file).header;
}

void verifyBackup(const fs::path& file) {
    OpenBackup(file).copyTo(nullptr, {});
}

BackupReport fileListOf(const BackupHeader& header) {
    constexpr std::int64_t kUnlimited = 35'184'372'080'640, kBlockSize = 4096;
    BackupReport report = emptyReport(
        R"(LogicalName nvarchar(128); PhysicalName nvarchar(260); Type char(1); FileGroupName nvarchar(128);
Size numeric(20); MaxSize numeric(20); FileId bigint; CreateLSN numeric(25); DropLSN numeric(25); UniqueId
uniqueidentifier; ReadOnlyLSN numeric(25); ReadWriteLSN numeric(25); BackupSizeInBytes bigint;
SourceBlockSize int; FileGroupId int; LogGroupGUID uniqueidentifier; DifferentialBaseLSN numeric(25);
DifferentialBaseGUID uniqueidentifier; IsReadOnly bit; IsPresent bit)");
    addRow(report, {{"LogicalName", dataLogicalName(header.database)},
                    {"PhysicalName", header.dataFile},
                    {"Type", std::string("D")},
                    {"FileGroupName", std::string("PRIMARY")},
                    {"Size", header.bytes},
                    {"MaxSize", kUnlimited},
                    {"FileId", std::int64_t{1}},
                    {"BackupSizeInBytes", header.bytes},
                    {"SourceBlockSize", kBlockSize},
                    {"FileGroupId", std::int64_t{1}},
                    {"IsPresent", std::int64_t{1}}});
    addRow(report, {{"LogicalName", logLogicalName(header.database)},
                    {"PhysicalName", header.dataFile + "-wal"},
                    {"Type", std::string("L")},
                    {"MaxSize", kUnlimited},
                    {"FileId", std::int64_t{2}},
                    {"SourceBlockSize", kBlockSize},
                    {"IsPresent", std::int64_t{1}}});
    return report;
}

BackupReport headerOf(const BackupHeader& header) {
    BackupReport report = emptyReport(
        R"(BackupName nvarchar(128); BackupDescription nvarchar(255); BackupType smallint; ExpirationDate
datetime; Compressed bit; Position smallint; DeviceType tinyint; UserName nvarchar(128); ServerName
nvarchar(128); DatabaseName nvarchar(128); DatabaseVersion int; DatabaseCreationDate datetime; BackupSize
numeric(20); FirstLSN numeric(25); LastLSN numeric(25); CheckpointLSN numeric(25); DatabaseBackupLSN
numeric(25); BackupStartDate datetime; BackupFinishDate datetime; SortOrder smallint; CodePage smallint;
UnicodeLocaleId int; UnicodeComparisonStyle int; CompatibilityLevel tinyint; SoftwareVendorId int;
SoftwareVersionMajor int; SoftwareVersionMinor int; SoftwareVersionBuild int; MachineName nvarchar(128);
Flags int; BindingID uniqueidentifier; RecoveryForkID uniqueidentifier; Collation nvarchar(128))");
    constexpr std::int64_t kDatabase = 1, kDisk = 2, kLevel = 150, kMajor = 15, kBuild = 2000;
    addRow(report, {{"BackupType", kDatabase},
                    {"Position", std::int64_t{1}},
                    {"DeviceType", kDisk},
                    {"DatabaseName", header.database},
                    {"BackupSize", header.bytes},
                    {"BackupStartDate", header.started},
                    {"BackupFinishDate", header.finished},
                    {"CompatibilityLevel", kLevel},
                    {"SoftwareVersionMajor", kMajor},
                    {"SoftwareVersionBuild", kBuild},
                    {"Collation", std::string("SQL_Latin1_General_CP1_CI_AS")}});
    return report;
}

BackupHeader restoreDatabase(Storage& storage, const fs::path& file, std::string_view database, bool replace,
                             std::span<const std::string> movedNames, const Progress& progress) {
    OpenBackup backup(file);
    checkMoves(backup.header, movedNames, database);
    const std::string& origin = backup.header.database;
    const bool sameName = compareText(origin, database) == 0;
    if (storage.exists(database) && !replace) throw sqlError(sameName ? 3159 : 3154, {database});
    if (!sameName && movedNames.empty() && storage.exists(origin) &&
        storage.pathOf(origin) == backup.header.dataFile)
        throw sqlError(1834, {backup.header.dataFile, origin});
    TemporaryFile image(storage.directory() / "restore");
    {
        File out(image.path(), kWrite);
        backup.copyTo(&out, progress);
    }
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
