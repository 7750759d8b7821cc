// Loading of a script package: found, deciphered, parsed, bound to its database, catalogued.
#pragma once

#include <string>
#include <utility>

#include "FileDescriptor.h"
#include "PackageParser.h"
#include "ScriptReport.h"

class TScript;

class PackageLoader {
  public:
    // `dbName`: the database for a package that names none; empty for no choice.
    explicit PackageLoader(TScript& script, std::string dbName = {})
        : m_script(script), m_report(script), m_chosenDatabase(std::move(dbName)) {}

    // `path` may be null: the package is then found by the script's name. A path that the script already has
    // is kept. The plain copy never outlives this call.
    bool run(const char* path);
    // The same without any database: found, deciphered, parsed.
    bool read(const char* path);
    // The package's own database, else the chosen one; known once it has been read.
    const std::string& databaseName() const { return m_databaseName; }

    // Fills in the script's path from its name, when it has none. It stays empty when the configuration names
    // no base folder.
    void findByName();

  private:
    bool open(const char* path);
    bool choosePath(const char* path);
    bool checkReadable();
    void reserveCopy();
    bool decipher();
    bool parse();
    bool copyUnreadable();
    bool agreeOnDatabase();
    bool bindDatabase();
    bool enterIntoCatalogue();

    PackageContent takeContent();
    void storeContent(PackageContent&& content);

    TScript& m_script;
    ScriptReport m_report;
    std::string m_copyPath;
    FileDescriptor m_copy;  // open from its making until it has been read
    std::string m_chosenDatabase;
    std::string m_databaseName;  // as the header gives it
};
