// Run records of the runs in a database's journal.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "DVUtilities/TScriptRecords.h"
#include "record/RecordFolder.h"
#include "record/RunRecord.h"

// Seconds by which times of one event in journal, records and log may differ.
inline constexpr std::int64_t kTolerance = 5;

struct FoundRecord {
    std::optional<RunRecord> record;
    std::string problem;  // why there is none
};

// One line: place, SQL Server's message or error number, text.
std::string causeText(const DVUCause_t& cause);
// The cause of a failed run that names most: a message of SQL Server if there is one. Null without causes.
const DVUCause_t* mainCause(const RunRecord& record);

class RunRecords {
  public:
    // Lists the folder that the store names.
    explicit RunRecords(const std::string& database);

    // The record of that row: same script and start, same server or same installation. A server's address may
    // change, and hosts may share a server.
    FoundRecord find(const TScriptRun_t& run);
    // The newest record with that number, for a row that was deleted.
    FoundRecord findByNumber(int run);

  private:
    bool isOfThisDatabase(const RunRecord& record) const;
    template <typename Matches>
    FoundRecord newest(int run, Matches matches);

    std::string m_database;
    std::string m_server;
    std::string m_host;
    std::string m_installation;
    std::string m_folderProblem;
    std::optional<RecordFolder> m_folder;
    std::string m_path;
    std::vector<std::string> m_names;
};
