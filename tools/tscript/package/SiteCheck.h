// Check of the site that a package is bound to.
#pragma once

#include <optional>
#include <string>

#include "package/PackageParser.h"

// Names by which packages are bound to an installation; each is read from the database when it is first
// needed. Empty if the database does not return it.
class Site {
  public:
    const std::string& number();
    const std::string& guid();

  private:
    std::optional<std::string> m_number;
    std::optional<std::string> m_guid;
};

struct SiteFault {
    std::string what;
    std::string advice;
};

// Returns whether the package is bound to a site or an NQ2 database, and the database does not return the
// name of the one here. A run then fails.
bool isSiteUnknown(const PackageContent& package, Site& site);

// Empty if the package may run at this site, or if isSiteUnknown().
std::optional<SiteFault> siteFault(const PackageContent& package, Site& site);
