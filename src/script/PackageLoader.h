// Loading of a script package: found, deciphered, parsed, bound to its database, catalogued.
#pragma once

#include <string>

#include "FileDescriptor.h"
#include "PackageParser.h"
#include "ScriptReport.h"

class TScript;

class PackageLoader {
  public:
    explicit PackageLoader(TScript& script) : m_script(script), m_report(script) {}

    // `path` may be null: the package is then found by the script's name. A path that the script already has
    // is kept. The plain copy never outlives this call.
    bool run(const char* path);

    // Fills in the script's path from its name, when it has none. It stays empty when the configuration names
    // no base folder.
    void findByName();

  private:
    bool choosePath(const char* path);
    bool checkReadable();
    void reserveCopy();
    bool decipher();
    bool parse();
    bool copyUnreadable();
    bool bindDatabase();
    bool enterIntoCatalogue();

    PackageContent takeContent();
    void storeContent(PackageContent&& content);

    TScript& m_script;
    ScriptReport m_report;
    std::string m_copyPath;
    FileDescriptor m_copy;       // open from its making until it has been read
    std::string m_databaseName;  // as the header gives it
};
