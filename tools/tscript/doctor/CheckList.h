// Findings of `tscript doctor`.
#pragma once

#include <string>
#include <vector>

#include "console/Outcome.h"

enum class Health { kGood, kWarning, kFailed, kSkipped };

struct Check {
    std::string name;
    Health health = Health::kGood;
    std::string detail;
    std::string advice;               // empty for a check that is good
    ExitCode code = ExitCode::kDone;  // of a failed check
};

class CheckList {
  public:
    void addGood(std::string name, std::string detail);
    void addWarning(std::string name, std::string detail, std::string advice);
    void addFailure(std::string name, ExitCode code, std::string detail, std::string advice);
    void addSkipped(std::string name, std::string detail);

    const std::vector<Check>& checks() const { return m_checks; }
    bool hasFailed(const std::string& name) const;
    // Exit code of the failure to repair first: kInstallation, kRefused, kConnection in that order, because
    // an earlier one may cause a later one. kDone without failures.
    ExitCode exitCode() const;

  private:
    std::vector<Check> m_checks;
};

// Checks store, key, folders, driver and query tool.
void checkInstallation(CheckList& list);
// Checks the installed components and, for the database of each, credentials, connection, query tool, schema
// and clock.
void checkDatabases(CheckList& list);
