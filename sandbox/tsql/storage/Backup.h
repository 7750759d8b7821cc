// BACKUP and RESTORE as files: a backup holds one database as a SQLite file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "storage/Storage.h"
#include "types/Values.h"

namespace tsql {

// What a backup file tells of itself.
struct BackupHeader {
    std::string database;
    std::string started;  // datetime in storage form, local time
    std::string finished;
    std::string dataFile;  // physical path of the database when it was backed up
    std::string name, description;
    std::int64_t pages = 0;
    std::int64_t bytes = 0;  // of the image

    std::string logName() const { return database + "_log"; }  // logical name of its log file
};

// Told again and again how much of the work is done, in percent. What it throws ends the work, which then has
// changed nothing.
using Progress = std::function<void(int percent)>;

// Copies `database` into `file`, which it replaces only when the copy is whole.
// Throws SqlError 3201 (the file cannot be opened or written, with the system's text), 3242 (it is there and
// no backup), 911 (no such database), 3147 (tempdb), 3202 (while it is written).
BackupHeader backupDatabase(
    const Storage& storage, std::string_view database, const std::filesystem::path& file,
    const Progress& progress = [](int) {}, const std::string& name = {}, const std::string& description = {});

// Throws SqlError 3201 (cannot be opened), 3241 (no backup of ours), 3203 (damaged).
BackupHeader readBackupHeader(const std::filesystem::path& file);

// Reads the whole file, and throws as restoreDatabase() does when it is damaged.
void verifyBackup(
    const std::filesystem::path& file, const Progress& progress = [](int) {});

// Puts the backup in the place of `database`, which may be another name than the one it was taken from.
// Throws SqlError 3201, 3241, 3203; 3159 or 3154 when the database exists and `replace` is false; 3101 when
// it is in use; 3108 and 3147 for master and tempdb; 3234 when `moves` names a logical file that the backup
// does not have; 1834 when the files of another database are in the way because they are not moved. Nothing
// is changed then. The moves' target paths are checked for their names alone: the data stays in the data
// directory.
BackupHeader restoreDatabase(
    Storage& storage, const std::filesystem::path& file, std::string_view database, bool replace,
    std::span<const std::string> movedNames = {}, const Progress& progress = [](int) {});

}  // namespace tsql
