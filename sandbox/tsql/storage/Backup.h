// Backup files, for BACKUP and RESTORE. A backup contains one database as a SQLite file.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "storage/Storage.h"

namespace tsql {

// Description of a backup, stored in its file.
struct BackupHeader {
    std::string database;
    std::string started;  // datetime in storage form, local time
    std::string finished;
    std::string dataFile;  // physical path of the database when it was backed up
    std::string name, description;
    std::int64_t bytes = 0;  // size of the image, in pages of 4096

    std::int64_t pages() const { return bytes / 4096; }
    std::string logName() const { return database + "_log"; }  // logical name of its log file
};

// Called repeatedly with the completed share of the work, in percent. An exception from it cancels the work,
// which then changes nothing.
using Progress = std::function<void(int percent)>;

// Copies `database` into `file`. An existing backup is replaced only by a complete copy. Throws SqlError 3201
// (the file cannot be opened or written; the text has the system's reason), 3242 (the file exists and is not
// a backup), 911 (no such database), 3147 (tempdb), 3202 (the copy fails).
BackupHeader backupDatabase(
    const Storage& storage, std::string_view database, const std::filesystem::path& file,
    const Progress& progress = [](int) {}, const std::string& name = {}, const std::string& description = {});

// Throws SqlError 3201 (the file cannot be opened), 3241 (it is not a backup of tsqlbox), 3203 (damaged).
BackupHeader readBackupHeader(
    const std::filesystem::path& file, const Progress& progress = [](int) {});

// Reads the whole file. Throws SqlError 3201, 3241 and 3203 as readBackupHeader() does.
void verifyBackup(
    const std::filesystem::path& file, const Progress& progress = [](int) {});

// Puts the backup in the place of `database`, which may be another name than the one it was taken from.
// Throws SqlError 3201, 3241, 3203; 3159 or 3154 when the database exists and `replace` is false; 3101 when
// it is in use; 3108 and 3147 for master and tempdb; 3234 for a logical file that the backup does not have;
// 1834 when files of another database are in the way and not moved. Nothing is changed then.
BackupHeader restoreDatabase(
    Storage& storage, const std::filesystem::path& file, std::string_view database, bool replace,
    std::span<const std::string> movedNames = {}, const Progress& progress = [](int) {});

}  // namespace tsql
