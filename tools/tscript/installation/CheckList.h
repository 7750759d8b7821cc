// Findings of a look over the installation.
#pragma once

#include <string>
#include <vector>

#include "console/Outcome.h"

enum class Health { kGood, kWarning, kFailed, kSkipped };

struct Check {
    std::string name;
    Health health = Health::kGood;
    std::string detail;
    std::string advice;               // what to do; empty for what is good
    ExitCode code = ExitCode::kDone;  // a failure's kind
};

class CheckList {
  public:
    void good(std::string name, std::string detail);
    void warn(std::string name, std::string detail, std::string advice);
    void fail(std::string name, ExitCode code, std::string detail, std::string advice);
    void skip(std::string name, std::string detail);

    const std::vector<Check>& checks() const { return m_checks; }
    bool failed(const std::string& name) const;
    // The worst failure's: the installation's faults, then refusals, then connections, since the earlier ones
    // may be why the later ones fail. Done when there is none.
    ExitCode worst() const;

  private:
    std::vector<Check> m_checks;
};

// Each adds its findings. The installation's: store, key, folders, driver, query tool.
void checkInstallation(CheckList& list);
// Credentials, probe, catalogue tables and clock of every database whose component is installed.
void checkDatabases(CheckList& list);
