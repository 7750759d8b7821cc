#include "backup/BackupFile.h"

#include <unistd.h>

#include <ctime>
#include <vector>

#include "backup/ServerScript.h"
#include "console/Console.h"
#include "console/Times.h"
#include "installation/ServerQuery.h"

namespace {

// Columns of RESTORE HEADERONLY and FILELISTONLY.
constexpr std::size_t kPosition = 5;
constexpr std::size_t kFinish = 18;
constexpr std::size_t kDatabase = 9;
constexpr int kHeaderColumns = 19;
constexpr std::size_t kLogicalName = 0;
constexpr std::size_t kPhysicalName = 1;
constexpr std::size_t kFileType = 2;
constexpr int kFileColumns = 3;

constexpr int kMostDrops = 10;  // attempts; an interrupted restore holds the database for a moment
constexpr unsigned int kDropInterval = 1;

struct BackupSet {
    std::string position;  // in its file, from 1
    std::string database;
    std::string finish;
};

BackupSet newestBackup(DBBase& db, const std::string& file) {
    const auto sets = rowsOf(db, "RESTORE HEADERONLY FROM DISK = " + sqlLiteral(file), kHeaderColumns);
    if (sets.empty()) throw Failure(ExitCode::kScriptFailed, file + " holds no backup");
    const std::vector<std::string>& last = sets.back();
    return {last[kPosition], last[kDatabase], last[kFinish]};
}

[[noreturn]] void throwRefused(const std::string& what, const ServerReply& reply) {
    writeNote(reply.output);
    throw Failure(ExitCode::kScriptFailed, what, "See the server's message above.");
}

// Database of a test; dropped by the destructor. After a failed restore it is dropped only if it is not
// online: then it is the unfinished one and not a database that another login has created meanwhile.
class TestDatabase {
  public:
    TestDatabase(DBBase& db, const RestoreTest& test) : m_db(db), m_test(test) {
        if (!state().empty())
            throw Failure(ExitCode::kUsage, "the database " + test.name + " exists",
                          "Choose another name: the test creates and drops it.");
    }
    ~TestDatabase();
    TestDatabase(const TestDatabase&) = delete;
    TestDatabase& operator=(const TestDatabase&) = delete;

    void restore(const BackupSet& backup);
    void check();
    std::string countTables();
    void drop();

  private:
    std::string state();  // "ONLINE", "RESTORING" etc.; empty if there is no such database
    std::string moves(const std::string& source) const;

    DBBase& m_db;
    const RestoreTest& m_test;
    bool m_isRestored = false;
    bool m_isDropped = false;
};

std::string TestDatabase::state() {
    const auto rows =
        rowsOf(m_db, "SELECT state_desc FROM sys.databases WHERE name = " + sqlLiteral(m_test.name), 1);
    return rows.empty() ? std::string() : rows.front().front();
}

// File names are made from the test's name, so that the original files are not in the way.
std::string TestDatabase::moves(const std::string& source) const {
    std::string moves;
    int number = 0;
    for (const auto& file : rowsOf(m_db, "RESTORE FILELISTONLY " + source, kFileColumns)) {
        const std::string& original = file[kPhysicalName];
        std::string folder =
            m_test.folder.empty() ? original.substr(0, original.find_last_of("/\\") + 1) : m_test.folder;
        if (folder.find_last_of("/\\") != folder.size() - 1) folder += '/';
        const char* extension = file[kFileType] == "D" ? ".mdf" : file[kFileType] == "L" ? ".ldf" : "";
        const std::string name = m_test.name + "_" + std::to_string(++number) + extension;
        moves += ", MOVE " + sqlLiteral(file[kLogicalName]) + " TO " + sqlLiteral(folder + name);
    }
    return moves;
}

void TestDatabase::restore(const BackupSet& backup) {
    const std::string source = "FROM DISK = " + sqlLiteral(m_test.file) + " WITH FILE = " + backup.position;
    const ServerReply reply = runOnServer(
        m_db, "RESTORE DATABASE " + sqlName(m_test.name) + " " + source + moves(source) + ", RECOVERY", {});
    if (!reply.succeeded) throwRefused("the backup cannot be restored", reply);
    m_isRestored = true;
}

void TestDatabase::check() {
    const ServerReply reply =
        runOnServer(m_db, "DBCC CHECKDB (" + sqlName(m_test.name) + ") WITH NO_INFOMSGS, ALL_ERRORMSGS", {});
    if (!reply.succeeded) throwRefused("the restored database has faults", reply);
}

std::string TestDatabase::countTables() {
    return rowsOf(m_db, "SELECT COUNT(*) FROM " + sqlName(m_test.name) + ".sys.tables", 1).at(0).at(0);
}

void TestDatabase::drop() {
    m_isDropped = true;
    for (int attempt = 1;; ++attempt) {
        const ServerReply reply = runOnServer(m_db, "DROP DATABASE " + sqlName(m_test.name),
                                              "The database " + m_test.name + " is left; drop it.");
        if (reply.succeeded) return;
        if (attempt == kMostDrops)
            throwRefused("the database " + m_test.name + " cannot be dropped; drop it by hand", reply);
        sleep(kDropInterval);
    }
}

TestDatabase::~TestDatabase() {
    if (m_isDropped) return;
    try {
        const std::string found = state();
        if (m_isRestored || (!found.empty() && found != "ONLINE")) {
            drop();
        } else if (!found.empty()) {
            writeNote("The database " + m_test.name + " exists now; drop it if it is the test's.");
        }
    } catch (const std::exception& error) {
        writeNote(error.what());
    }
}

}  // namespace

std::string backUpVerified(DBBase& db, const std::string& database, const std::string& file) {
    const std::string place = "DISK = " + sqlLiteral(file);
    const ServerReply backup =
        runOnServer(db, "BACKUP DATABASE " + sqlName(database) + " TO " + place + " WITH CHECKSUM", {});
    if (!backup.succeeded) throwRefused("the database was not backed up", backup);
    const ServerReply verified = runOnServer(
        db,
        "RESTORE VERIFYONLY FROM " + place + " WITH FILE = " + newestBackup(db, file).position + ", CHECKSUM",
        "The backup was made, but not verified.");
    if (!verified.succeeded) throwRefused("the backup was made, but it is not valid", verified);
    return "backed up " + database + " to " + file + " and verified it";
}

std::string testRestore(DBBase& db, const RestoreTest& test) {
    const std::time_t begin = std::time(nullptr);
    const BackupSet backup = newestBackup(db, test.file);
    TestDatabase database(db, test);
    database.restore(backup);
    database.check();
    const std::string tables = database.countTables();
    database.drop();
    return "backup " + backup.position + " of " + test.file + ": " + backup.database + ", finished " +
           backup.finish + "\nrestored as " + test.name + ", checked with DBCC CHECKDB (" + tables +
           " table(s)), dropped; " + spanText(std::time(nullptr) - begin);
}
