// Folder of run records: one file a run, named by its start, database and journal id.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FileDescriptor.h"
#include "record/RunRecord.h"

class RecordFolder {
  public:
    enum class Access { kRead, kWrite };

    // Opens the folder. For writing, creates it with mode 0700 unless its parent is missing, too. A folder
    // that others may write to, or of another user (for writing), is refused. Links are not followed.
    RecordFolder(const std::string& path, Access access);
    bool isOpen() const { return m_folder.isOpen(); }
    // Reason of the last failure.
    const std::string& problem() const { return m_problem; }
    int systemError() const { return m_systemError; }  // its errno; 0 if there is none

    // Writes the record to a new file of mode 0600, which appears complete or not at all.
    bool write(const RunRecord& record);
    // Deletes records beyond the newest `keep` and records older than `days`, oldest first, at most 1,000. 0
    // is no limit. Also deletes what writers left incomplete an hour ago or earlier. Other files stay.
    void prune(std::size_t keep, std::size_t days, std::int64_t now);

    // Returns the names of the records, newest first. Looks at 200,000 files at most.
    std::vector<std::string> names() const;
    // Returns those of the names `all` whose records belong to a row of the database's journal.
    static std::vector<std::string> namesOf(const std::vector<std::string>& all, const std::string& database,
                                            int run);
    // Reads a record of names(). False for a file that is no record; problem() names the reason.
    bool read(const std::string& name, RunRecord& record);

  private:
    bool fail(int error);
    bool fail(std::string problem);
    void checkTrust(Access access);
    bool writeFile(const std::string& name, const std::string& text);
    bool readFile(const std::string& name, std::string& text);

    FileDescriptor m_folder;
    std::string m_problem;
    int m_systemError = 0;
};
