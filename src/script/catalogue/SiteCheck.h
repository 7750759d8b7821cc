// Checks that a package runs at the site that it was made for.
#pragma once

#include "state/ScriptParts.h"
#include "state/ScriptReport.h"

class SiteCheck {
  public:
    explicit SiteCheck(const ScriptParts& script)
        : m_session(script.session), m_package(script.package), m_report(script) {}

    // TScript::checkPlexumId()
    bool checkSite();
    // TScript::checkGUID()
    bool checkGuid();

  private:
    SessionParts m_session;
    PackageParts m_package;
    ScriptReport m_report;
};
