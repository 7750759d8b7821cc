#include "storage/Backup.h"

#include <fcntl.h>
#include <poll.h>
#include <sodium.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "OpenFile.h"
#include "storage/Connection.h"
#include "types/Text.h"

namespace tsql {
namespace {

namespace fs = std::filesystem;

// A backup is a SQLite file, in which the table tsqlbox_backup describes the backup, followed by the file's
// checksum. SQLite's header has the application id at offset 68.
constexpr std::string_view kApplication = "TSQL";
constexpr int kApplicationId = 0x5453514C;
constexpr std::size_t kApplicationAt = 68, kChecksum = crypto_generichash_BYTES, kBlock = 1 << 16;

constexpr const char* kNoJournal = "PRAGMA journal_mode = OFF";  // an incomplete copy is deleted

constexpr int kPagesAtATime = 1024, kTriesToLock = 100, kPauseMilliseconds = 100;

[[noreturn]] void throwCannotOpen(const fs::path& file, int error) {
    throw sqlError(kBackupDeviceNotOpened, {file.string(), std::to_string(error), std::strerror(error)});
}

// Returns fewer bytes than `size` at the end of the file.
std::string read(std::FILE* stream, std::size_t size) {
    std::string bytes(size, '\0');
    bytes.resize(std::fread(bytes.data(), 1, size, stream));
    return bytes;
}

bool isBackup(std::FILE* stream) {
    const std::string head = read(stream, kApplicationAt + kApplication.size());
    return head.size() > kApplicationAt && head.ends_with(kApplication);
}

// Opens a backup. Throws SqlError 3241 for another file. Waits for the content of a pipe, although none can
// be restored, but never beyond `progress`.
OpenFile openBackup(const fs::path& file, const Progress& progress) {
    OpenFile stream(FileDescriptor(file.c_str(), O_RDONLY | O_NONBLOCK), "rb");
    if (!stream.isOpen()) throwCannotOpen(file, errno);
    pollfd content{::fileno(stream.get()), POLLIN, 0};
    while (::poll(&content, 1, kPauseMilliseconds) == 0) progress(0);
    const bool opened = isBackup(stream.get()) && fs::is_regular_file(file);
    if (std::ferror(stream.get())) throwCannotOpen(file, errno);
    if (!opened) throw sqlError(kBadMediaFamily, {file.string()});
    return stream;
}

// Temporary file in the directory of another. The destructor deletes it unless it was renamed.
struct TemporaryFile {
    explicit TemporaryFile(const fs::path& beside) {
        std::string name = beside.string() + ".XXXXXX";
        const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
        if (descriptor < 0) throwCannotOpen(beside, errno);
        ::close(descriptor);
        path = name;
    }
    ~TemporaryFile() {
        std::error_code error;
        for (const char* suffix : {"", "-wal", "-shm", "-journal"}) fs::remove(path.string() + suffix, error);
    }
    TemporaryFile(TemporaryFile&&) = delete;  // neither moved nor copied

    void renameTo(const fs::path& target) const {
        if (::rename(path.c_str(), target.c_str()) != 0) throwCannotOpen(target, errno);
    }

    fs::path path;
};

std::string checksumOf(std::FILE* stream, std::uintmax_t size, const Progress& progress) {
    crypto_generichash_state state;
    crypto_generichash_init(&state, nullptr, 0, kChecksum);
    std::rewind(stream);
    for (std::uintmax_t done = 0; done < size;) {
        const std::string block = read(stream, std::min<std::uintmax_t>(kBlock, size - done));
        if (block.empty()) break;
        crypto_generichash_update(&state, reinterpret_cast<const unsigned char*>(block.data()), block.size());
        done += block.size();
        progress(static_cast<int>(done * 100 / size));
    }
    std::string sum(kChecksum, '\0');
    crypto_generichash_final(&state, reinterpret_cast<unsigned char*>(sum.data()), sum.size());
    return sum;
}

void appendChecksum(const fs::path& file, const Progress& progress) {
    const OpenFile stream(file.c_str(), "rb+");
    if (!stream.isOpen()) throwCannotOpen(file, errno);
    const std::string sum = checksumOf(stream.get(), fs::file_size(file), progress);
    std::fseek(stream.get(), 0, SEEK_END);
    if (std::fwrite(sum.data(), 1, sum.size(), stream.get()) != sum.size() ||
        std::fflush(stream.get()) != 0 || ::fsync(::fileno(stream.get())) != 0)
        throwCannotOpen(file, errno);
}

// Replaces the content of `to` by a consistent view of `from`, atomically. Waits for locks on `to`.
void copyDatabase(sqlite3* from, sqlite3* to, const Progress& progress) {
    sqlite3_busy_timeout(to, 0);
    execute(from, "BEGIN; SELECT 1 FROM sqlite_master");
    const std::unique_ptr<sqlite3_backup, int (*)(sqlite3_backup*)> copy(
        sqlite3_backup_init(to, "main", from, "main"), sqlite3_backup_finish);
    if (!copy) throw SqliteFailure(to);
    for (int code = SQLITE_OK, tries = 0; code != SQLITE_DONE;) {
        code = sqlite3_backup_step(copy.get(), kPagesAtATime);
        const bool locked = code == SQLITE_BUSY || code == SQLITE_LOCKED;
        if (locked && ++tries == kTriesToLock) throw sqlError(kNoExclusiveAccess);
        if (!locked && code != SQLITE_OK && code != SQLITE_DONE)
            throw SqliteFailure(code, sqlite3_errstr(code));
        const int pages = std::max(sqlite3_backup_pagecount(copy.get()), 1);
        progress(locked ? 0 : 100 - sqlite3_backup_remaining(copy.get()) * 100 / pages);
        if (locked) sqlite3_sleep(kPauseMilliseconds);
    }
}

void writeHeader(sqlite3* copy, const BackupHeader& header) {
    execute(copy, "PRAGMA journal_mode = DELETE; PRAGMA application_id = " + std::to_string(kApplicationId) +
                      "; DROP TABLE IF EXISTS tsqlbox_backup; CREATE TABLE tsqlbox_backup AS SELECT " +
                      quotedText(header.database) + " AS database, " + quotedText(header.started) +
                      " AS started, " + quotedText(header.finished) + " AS finished, " +
                      quotedText(header.dataFile) + " AS data_file, " + quotedText(header.name) +
                      " AS name, " + quotedText(header.description) + " AS description");
}

std::string now() {
    return toStorage(timeNow(), simpleType(TypeId::DateTime));
}

// Overwrites an existing database in one SQLite transaction, which is atomic for other connections. A new
// database is built in a temporary file, which is renamed when it is complete.
void putInPlace(const fs::path& file, const fs::path& target, const Progress& progress) {
    const auto backup = openFile(file, SQLITE_OPEN_READONLY, kNoJournal);
    if (fs::exists(target)) return copyDatabase(backup.get(), openDatabaseFile(target).get(), progress);
    TemporaryFile image(target);
    copyDatabase(backup.get(), openFile(image.path, SQLITE_OPEN_READWRITE, kNoJournal).get(), progress);
    openDatabaseFile(image.path);  // turns the journal on
    image.renameTo(target);
}

}  // namespace

BackupHeader backupDatabase(const Storage& storage, std::string_view database, const fs::path& file,
                            const Progress& progress, const std::string& name,
                            const std::string& description) {
    const std::string from = storage.canonicalName(database);
    if (from.empty()) throw sqlError(kUnknownDatabase, {database});
    if (from == "tempdb") throw sqlError(kBackupNotAllowed, {from});
    BackupHeader header{from, now(), {}, storage.pathOf(from).string(), name, description, 0};
    std::error_code ignored;
    if (fs::is_other(file, ignored))
        throwCannotOpen(file, EINVAL);  // the backup would replace the device file
    if (fs::is_regular_file(file, ignored) && !fs::is_empty(file)) {
        const OpenFile old(file.c_str(), "rb");
        if (!old.isOpen()) throwCannotOpen(file, errno);
        if (!isBackup(old.get())) throw sqlError(kNotABackupSet, {file.string()});
    }
    TemporaryFile whole(file);
    try {
        const auto copy = openFile(whole.path, SQLITE_OPEN_READWRITE, kNoJournal);
        copyDatabase(openDatabaseFile(storage.pathOf(from)).get(), copy.get(), progress);
        header.finished = now();
        writeHeader(copy.get(), header);
    } catch (const SqliteFailure& error) {
        throw sqlError(kBackupWriteFailed, {file.string(), error.what()});
    }
    appendChecksum(whole.path, progress);
    whole.renameTo(file);
    return readBackupHeader(file);
}

BackupHeader readBackupHeader(const fs::path& file, const Progress& progress) {
    openBackup(file, progress);
    BackupHeader header;
    const auto take = [](void* into, int, char** cells, char**) {
        *static_cast<BackupHeader*>(into) = {cells[0], cells[1], cells[2], cells[3], cells[4], cells[5], 0};
        return 0;
    };
    constexpr const char* kQuery =
        "SELECT ifnull(database, ''), ifnull(started, ''), ifnull(finished, ''), ifnull(data_file, ''), "
        "ifnull(name, ''), ifnull(description, '') FROM tsqlbox_backup";
    try {
        sqlite3_exec(openFile(file, SQLITE_OPEN_READONLY, kNoJournal).get(), kQuery, take, &header, nullptr);
    } catch (const SqliteFailure&) {  // too damaged for SQLite
    }
    if (header.database.empty()) throw sqlError(kBackupReadFailed, {file.string()});
    header.bytes = static_cast<std::int64_t>(fs::file_size(file) - kChecksum);
    return header;
}

void verifyBackup(const fs::path& file, const Progress& progress) {
    const OpenFile stream = openBackup(file, progress);
    const std::uintmax_t size = fs::file_size(file);
    const std::string sum = checksumOf(stream.get(), size - kChecksum, progress);
    if (read(stream.get(), kChecksum) != sum) throw sqlError(kBackupReadFailed, {file.string()});
}

BackupHeader restoreDatabase(Storage& storage, const fs::path& file, std::string_view database, bool replace,
                             std::span<const std::string> movedNames, const Progress& progress) {
    BackupHeader header = readBackupHeader(file, progress);
    if (const std::string to = storage.canonicalName(database); to == "master" || to == "tempdb")
        throw sqlError(to == "master" ? kRestoreOfMaster : kBackupNotAllowed, {to});
    for (const std::string& name : movedNames)
        if (name != header.database && name != header.logName())
            throw sqlError(kUnknownLogicalFile, {name, database});
    const bool sameName = sameText(header.database, database);
    if (storage.exists(database) && !replace)
        throw sqlError(sameName ? kTailOfLogNotBackedUp : kBackupOfOtherDatabase, {database});
    if (!sameName && movedNames.empty() && storage.exists(header.database) &&
        storage.pathOf(header.database) == header.dataFile)
        throw sqlError(kFileInUse, {header.dataFile, header.database});
    verifyBackup(file, progress);
    try {
        putInPlace(file, storage.pathOf(database), progress);
    } catch (const SqliteFailure& error) {
        throw sqlError(kInternalConsistency, {error.what()});
    }
    return header;
}

}  // namespace tsql
