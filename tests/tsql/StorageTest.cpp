#include "storage/Storage.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "messages/Messages.h"
#include "storage/Backup.h"

namespace {

namespace fs = std::filesystem;
using namespace tsql;

class StorageTest : public testing::Test {
  protected:
    StorageTest() {
        std::string name = (fs::temp_directory_path() / "storageXXXXXX").string();
        m_folder = ::mkdtemp(name.data());
        m_storage.emplace(m_folder / "data");
    }
    ~StorageTest() override { fs::remove_all(m_folder); }

    void run(const std::string& database, const std::string& sql) {
        execute(openDatabaseFile(m_storage->pathOf(database)).get(), sql);
    }
    template <typename Act>
    static int errorOf(Act act) {
        try {
            act();
        } catch (const SqlError& error) {
            return error.number;
        }
        return 0;
    }
    std::size_t filesIn(const fs::path& folder) {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
    }

    fs::path m_folder;
    std::optional<Storage> m_storage;
};

TEST_F(StorageTest, KeepsADatabaseOfAnyNameInAFile) {
    const std::vector<std::string> system = {"master", "tempdb", "model", "msdb"};
    EXPECT_EQ(m_storage->databases(), system);
    const std::string odd = "../Über.db %41";
    m_storage->create(odd);
    EXPECT_EQ(m_storage->canonicalName("../üBER.DB %41"), odd);
    EXPECT_EQ(m_storage->pathOf(odd).parent_path(), m_folder / "data");
    EXPECT_EQ(errorOf([&] { m_storage->create("MASTER"); }), 1801);
    EXPECT_EQ(errorOf([&] { m_storage->create(std::string(129, 'x')); }), 103);
    m_storage->drop(odd);
    EXPECT_EQ(errorOf([&] { m_storage->drop(odd); }), 3701);
    EXPECT_EQ(errorOf([&] { m_storage->drop("msdb"); }), 3708);
    try {
        const Storage second(m_folder / "data");
        ADD_FAILURE() << "one server per directory";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), (m_folder / "data").string() + " is in use by another server");
    }
    m_storage.reset();
    EXPECT_EQ(Storage(m_folder / "data").databases(), system);
}

TEST_F(StorageTest, RestoresABackupUnderAnotherName) {
    m_storage->create("shop");
    run("shop", "CREATE TABLE t(x); INSERT INTO t VALUES (1), (2)");
    const fs::path file = m_folder / "shop.bak";
    EXPECT_GT(backupDatabase(*m_storage, "SHOP", file).pages(), 0);
    EXPECT_EQ(readBackupHeader(file).logName(), "shop_log");

    const std::string moved[] = {"shop", "shop_log"};
    restoreDatabase(*m_storage, file, "copy", false, moved);
    run("copy", "DELETE FROM t WHERE x = 1");
    EXPECT_EQ(errorOf([&] { restoreDatabase(*m_storage, file, "Copy", false, moved); }), 3154);
    EXPECT_EQ(errorOf([&] { restoreDatabase(*m_storage, file, "shop", false); }), 3159);
    EXPECT_EQ(errorOf([&] { restoreDatabase(*m_storage, file, "Copy", true); }), 1834);
    const auto open = openDatabaseFile(m_storage->pathOf("copy"));  // sees the restored data, too
    restoreDatabase(*m_storage, file, "Copy", true, moved);
    EXPECT_NO_THROW(
        execute(open.get(), "CREATE TABLE c(ok CHECK(ok = 2)); INSERT INTO c SELECT count(*) FROM t"));
    EXPECT_EQ(
        errorOf([&] { restoreDatabase(*m_storage, file, "x", true, std::vector<std::string>{"nope"}); }),
        3234);
    EXPECT_FALSE(m_storage->exists("x"));
    EXPECT_EQ(filesIn(m_folder), 2u);  // the data folder and the backup, no temporary file
}

TEST_F(StorageTest, RejectsDamagedAndForeignBackups) {
    m_storage->create("shop");
    run("shop", "CREATE TABLE t(x)");
    const fs::path file = m_folder / "b.bak";
    backupDatabase(*m_storage, "shop", file);
    const auto size = fs::file_size(file);
    for (const std::uintmax_t at : {std::uintmax_t{40}, size / 2, size - 1}) {
        backupDatabase(*m_storage, "shop", file);
        std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
        bytes.seekp(static_cast<std::streamoff>(at));
        bytes.put('\x5A');
        bytes.close();
        EXPECT_EQ(errorOf([&] { restoreDatabase(*m_storage, file, "shop", true); }), 3203) << at;
        EXPECT_EQ(errorOf([&] { verifyBackup(file); }), 3203) << at;
    }
    for (const std::uintmax_t left : {size - 1, size - 100, size / 2, std::uintmax_t{100}}) {
        backupDatabase(*m_storage, "shop", file);
        fs::resize_file(file, left);
        EXPECT_EQ(errorOf([&] { restoreDatabase(*m_storage, file, "shop", true); }), 3203) << left;
        EXPECT_EQ(errorOf([&] { verifyBackup(file); }), 3203) << left;
    }
    EXPECT_EQ(errorOf([&] { readBackupHeader(file); }), 3203);
    std::ofstream(file) << "not a backup";
    EXPECT_EQ(errorOf([&] { readBackupHeader(file); }), 3241);
    EXPECT_EQ(errorOf([&] { backupDatabase(*m_storage, "shop", file); }), 3242)
        << "a file that is not a backup is kept";
    EXPECT_EQ(errorOf([&] { readBackupHeader(m_folder / "absent"); }), 3201);
    EXPECT_EQ(errorOf([&] { readBackupHeader(m_folder); }), 3201);
    EXPECT_EQ(errorOf([&] { backupDatabase(*m_storage, "shop", m_folder / "no" / "b.bak"); }), 3201);
    ASSERT_EQ(::mkfifo((m_folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(errorOf([&] { backupDatabase(*m_storage, "shop", m_folder / "pipe"); }), 3201);
    EXPECT_TRUE(fs::is_fifo(m_folder / "pipe"));
    EXPECT_EQ(errorOf([&] { backupDatabase(*m_storage, "nope", file); }), 911);
    EXPECT_EQ(m_storage->databases().size(), 5u);
    EXPECT_NO_THROW(run("shop", "INSERT INTO t VALUES (1)"));
    EXPECT_EQ(filesIn(m_folder / "data"), 6u);  // and the lock
}

}  // namespace
