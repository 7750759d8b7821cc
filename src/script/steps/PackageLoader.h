// Load of a script package: finds, decrypts and parses it, chooses its database, catalogues it.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "FileDescriptor.h"
#include "catalogue/ScriptCatalogue.h"
#include "catalogue/ScriptSession.h"
#include "catalogue/SiteCheck.h"
#include "package/PackageParser.h"
#include "state/ScriptParts.h"
#include "state/ScriptReport.h"

class PackageLoader {
  public:
    // `dbName`: the database for a package that names none; empty for no choice.
    explicit PackageLoader(const ScriptParts& script, std::string dbName = {});

    // A null `path` means that the package is found by the script's name. A path that the script already has
    // is kept. No plain copy has a name when this returns, nor while it is written. `accept` may end the load
    // before a database is used.
    bool run(const char* path, const std::function<bool()>& accept = {});
    // Finds, decrypts and parses the package without a database.
    bool read(const char* path);
    // The package's own database, else the chosen one. Empty before the package is read.
    const std::string& databaseName() const { return m_databaseName; }

    // Derives the package's path from the script's name, unless there is one. The path stays empty when the
    // configuration names no base folder.
    void findByName();

  private:
    bool choosePath(const char* path);
    bool openPackage();
    void reserveCopy();
    bool decrypt();
    bool parse();
    bool copyUnreadable();
    bool agreeOnDatabase();
    bool bindDatabase();
    bool catalogue();

    PackageContent moveContentOut();
    void storeContent(PackageContent&& content);

    SessionParts m_session;
    PackageParts m_package;
    bool& m_fromPackage;
    std::string& m_lastMessage;
    ScriptReport m_report;
    ScriptSession m_scriptSession;
    SiteCheck m_siteCheck;
    ScriptCatalogue m_scriptCatalogue;
    FileDescriptor m_file;  // the package; open until it is decrypted, so that no other file takes its place
    std::string m_copyPath;
    FileDescriptor m_copy;  // open from its creation until it is read; without a name
    std::string m_chosenDatabase;
    std::string m_databaseName;  // in the header's spelling
};
