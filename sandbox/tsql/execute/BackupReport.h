// What RESTORE FILELISTONLY and HEADERONLY show of a backup.
#pragma once

#include <vector>

#include "storage/Backup.h"
#include "types/SqlType.h"
#include "types/Values.h"

namespace tsql {

struct BackupReport {
    std::vector<Column> columns;
    std::vector<std::vector<Value>> rows;
};
BackupReport fileListOf(const BackupHeader& header);
BackupReport headerOf(const BackupHeader& header);

}  // namespace tsql
